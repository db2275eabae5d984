#pragma once

#include "coregraphics/CGAffineTransform.h"
#include "coregraphics/CGImage.h"
#include "rastergraphics/PixelRect.h"

#include <cstdint>
#include <vector>

namespace tallyforge {

/// An image seen through a transform, interpolated linearly: (0.5, 0.5) is the middle of the image's first
/// pixel, and beyond the middles of the border pixels their colours go on. The image is not empty. What a
/// pixel gets does not depend on where the line begins that it is part of.
class SampleGrid {
  public:
    SampleGrid(const CGImage& image, const CGAffineTransform& pixelsToImage);
    /// The pixels of a row from x on.
    void line(int y, int x, int count, uint32_t* result) const;

    /// Whether the image's places can be told exactly, as lineInside() needs it.
    bool exact() const { return exact_; }
    struct Steps {
        int begin, end;
    };
    /// Of such a row only the pixels whose four neighbours lie in that part of the image: which of the row's
    /// they are, counted from x, and what they show. False when there are none.
    bool lineInside(int y, int x, int count, const PixelRect& part, Steps& steps,
                    std::vector<uint32_t>& result) const;

  private:
    Steps within(int64_t x, int64_t y, const PixelRect& part, int count) const;
    void lineFarOut(int y, int x, int count, uint32_t* result) const;

    const CGImage& image_;
    CGAffineTransform t_;
    bool exact_ = false;
    int64_t a_ = 0, b_ = 0, c_ = 0, d_ = 0, tx_ = 0, ty_ = 0;
    double perStepX_ = 0, perStepY_ = 0;
};

} // namespace tallyforge
