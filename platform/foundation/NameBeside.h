#pragma once

#include <string>
#include <string_view>

namespace tallyforge {

/// A file name for something that belongs to a file: prefix + name + suffix, the name shortened to its
/// beginning and a hash where the whole would be too long for a file system.
std::string NameBeside(std::string_view prefix, std::string_view name, std::string_view suffix);

} // namespace tallyforge
