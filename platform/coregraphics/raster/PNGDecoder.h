#pragma once

#include "coregraphics/CGImage.h"

#include <cstdint>
#include <span>

namespace tallyforge {

/// Reads PNG files, ordinary ones and the device's own kind, which begins with a "CgBI" chunk: its pixels are
/// deflated without a zlib header, and colours of 8 bits stand as blue, green, red, premultiplied where there
/// is alpha. All colour types and depths, interlaced or not; colour profiles are not applied.
///
/// nullptr when the file is broken, cut or larger than 4096 x 4096. Memory stays in proportion to the size
/// that the header declares. Writes no message anywhere.
CGImageRef DecodePNG(std::span<const uint8_t> bytes);

} // namespace tallyforge
