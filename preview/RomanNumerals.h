#pragma once

#include <cstdint>
#include <string>

namespace tallyforge {

/// The number in Roman letters: empty for 0, and as many letters M as it takes for large ones.
std::string RomanNumeral(uint32_t n);

} // namespace tallyforge
