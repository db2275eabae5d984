#pragma once

#include "coregraphics/CGImage.h"
#include "rastergraphics/PixelRect.h"

#include <cstdint>
#include <vector>

namespace tallyforge {

/// Edges in pixels, not necessarily whole; right > left, bottom > top.
struct StretchTarget {
    double left, top, right, bottom;
};

/// The pixels of `area` when the image is stretched over the target: averaged by area where it shrinks,
/// interpolated linearly where it grows. A pixel that the target covers in part is faded accordingly.
void Stretch(const CGImage& image, const StretchTarget& target, const PixelRect& area,
             std::vector<uint32_t>& result);

} // namespace tallyforge
