#pragma once

#include "coregraphics/CGPath.h"
#include "rastergraphics/PixelRect.h"

#include <cstdint>

namespace tallyforge {

/// Takes the pixels of a shape, row by row from the top, each row from the left.
class CoverageSink {
  public:
    virtual ~CoverageSink() = default;
    /// n pixels from (x, y) on; coverage 0 to 255 each, or nullptr when all are fully covered.
    virtual void span(int y, int x, int n, const uint8_t* coverage) = 0;
    /// True for one that rather has a row's pixels together than the fully covered ones by themselves.
    virtual bool wantsThemTogether() const { return false; }
};

/// Finds how much of each pixel in the clip lies inside the path (non-zero winding), by exact areas. The path
/// is in user space; numbers that are not finite produce nothing.
void ScanConvert(const CGPath& path, const CGAffineTransform& toPixels, const PixelRect& clip,
                 CoverageSink& sink);

/// The pixels that the rectangle touches, within the clip. Empty when a number is not finite.
PixelRect TouchedPixels(const CGRect& rect, const CGAffineTransform& toPixels, const PixelRect& clip);

} // namespace tallyforge
