#pragma once

#include "quartzcore/CALayer.h"

#include <memory>
#include <vector>

namespace tallyforge {

/// Keeps a bitmap equal to what the render server would paint of a layer tree on white, by painting again
/// only what has changed since the last time.
class CAFrameUpdater {
  public:
    CAFrameUpdater();
    ~CAFrameUpdater();
    CAFrameUpdater(const CAFrameUpdater&) = delete;
    CAFrameUpdater& operator=(const CAFrameUpdater&) = delete;

    /// Brings the bitmap up to date and returns what was painted again: whole pixels within the bitmap, a few
    /// rectangles that do not overlap. `toPixels` maps the superlayer's coordinates of `root` to pixels. With
    /// another root, transform or bitmap, or a time before the last one, everything is painted. Nothing
    /// happens where nothing draws on this machine.
    std::vector<CGRect> update(const CALayer& root, CGFloat seconds, const CGAffineTransform& toPixels,
                               CGImage& bitmap);
    /// Everything is painted by the next update: the bitmap's pixels are not those of the last one any more.
    void forget();

  private:
    class Comparison;
    struct Seen;
    std::unique_ptr<Seen> seen_; // the tree as it was painted, or nullptr
    CGAffineTransform toPixels_;
    CGFloat seconds_ = 0;
    const CGImage* bitmap_ = nullptr;
    CGSize size_;
};

} // namespace tallyforge
