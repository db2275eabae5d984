#pragma once

#include "coregraphics/CGImage.h"
#include "rastergraphics/PixelRect.h"

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

/// The image at `count` places between its pixels, from `start` on at intervals of `step`, interpolated
/// linearly; (0.5, 0.5) is the middle of the first pixel, and beyond the middles of the border pixels their
/// colours go on. The image is not empty.
void SampleLine(const CGImage& image, CGPoint start, CGPoint step, int count, uint32_t* result);

} // namespace tallyforge
