#pragma once

#include "rastergraphics/TextEngine.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tallyforge {

/// Lays out one line in the interface font with its own design widths: no hinting, nothing rounded to pixels.
/// Control characters count as spaces; of a text longer than 4096 characters only the beginning is laid out.
/// Nothing when the program runs a toolkit application object that knows no fonts.
std::shared_ptr<const TextLine> ShapeText(std::string_view utf8, int weight);

/// Byte offsets between characters as people see them, 0 and the length included.
std::vector<size_t> FindCharacterBoundaries(std::string_view utf8);

} // namespace tallyforge
