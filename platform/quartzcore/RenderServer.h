#pragma once

#include "quartzcore/CALayer.h"

#include <memory>

namespace tallyforge {

/// Turns a layer tree and a time into pixels.
class RenderServer {
  public:
    /// Paints the layer and all below it over what the canvas holds. `toPixels` maps the superlayer's
    /// coordinates of `root` to pixels.
    static void paint(const CALayer& root, CGFloat seconds, Canvas& canvas,
                      const CGAffineTransform& toPixels);

    /// A picture of the root's bounds at this many pixels a point, on white unless the tree covers it.
    /// Nothing when a side would be under one pixel or over 4096, or nothing draws on this machine.
    static std::shared_ptr<CGImage> render(const CALayer& root, CGFloat seconds, CGFloat scale);
};

} // namespace tallyforge
