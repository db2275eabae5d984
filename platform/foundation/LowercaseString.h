#pragma once

#include <string>
#include <string_view>

namespace tallyforge {

/// `lowercaseString`: every character's lower-case mapping, whatever the user's language. What is no UTF-8 is
/// kept as it is.
std::string NSStringLowercaseString(std::string_view text);

} // namespace tallyforge
