#pragma once

#include "coregraphics/CGAffineTransform.h"
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

/// An image seen through a transform, interpolated linearly: (0.5, 0.5) is the middle of the image's first
/// pixel, and beyond the middles of the border pixels their colours go on. The image is not empty. What a
/// pixel gets does not depend on where the line begins that it is part of.
class SampleGrid {
  public:
    SampleGrid(const CGImage& image, const CGAffineTransform& pixelsToImage);
    /// The pixels of a row from x on.
    void line(int y, int x, int count, uint32_t* result) const;

  private:
    void lineFarOut(int y, int x, int count, uint32_t* result) const;

    const CGImage& image_;
    CGAffineTransform t_;
    bool exact_ = false;
    int64_t a_ = 0, b_ = 0, c_ = 0, d_ = 0, tx_ = 0, ty_ = 0;
};

} // namespace tallyforge
