#pragma once

#include "coregraphics/CGGeometry.h"

#include <vector>

namespace tallyforge {

/// Areas of pixels that have to be painted again: few and without overlap, at the cost of some pixels more.
class DamageList {
  public:
    /// Rectangles of whole pixels; empty ones are left out.
    void add(CGRect pixels);
    const std::vector<CGRect>& rects() const { return rects_; }

  private:
    std::vector<CGRect> rects_;
};

} // namespace tallyforge
