#pragma once

#include "coregraphics/CGImage.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tallyforge {

constexpr int kLargestImageSide = 4096;

/// See Graphics::decodeImage.
CGImageRef DecodeImageFile(std::span<const uint8_t> bytes);
/// Eight bits a channel, with alpha only where there is any. Empty for an image without pixels.
std::vector<uint8_t> EncodePNGFile(const CGImage& image);

} // namespace tallyforge
