#pragma once

#include "coregraphics/CGImage.h"
#include "quartzcore/FrameUpdate.h"

#include <QBackingStore>
#include <QPointF>
#include <QRect>

#include <memory>
#include <vector>

namespace tallyforge {

/// The device's screen in a window of any size: as large as fits, in its own proportions, in the middle.
/// Everything is in whole pixels of the display.
class ScreenPicture {
  public:
    ScreenPicture(QWindow& window, const CGSize& points);

    /// Fits the screen into the window as it is now; false when nothing has changed.
    bool fit();
    /// Pixels a point.
    CGFloat scale() const { return scale_; }
    /// From the window's coordinates to points of the screen.
    CGPoint pointAt(const QPointF& inWindow) const;
    QRectF rectInWindow(const CGRect& points) const;

    /// Paints what has changed. Returns the areas, in pixels of the screen.
    std::vector<CGRect> paint(const CALayer& screen, CGFloat seconds);
    /// Shows these areas in the window, or all of the window after it has been fitted.
    void show(const std::vector<CGRect>& areas);
    /// What the display holds is lost: show all of it next time.
    void showAll() { showAll_ = true; }

  private:
    QWindow& window_;
    CGSize points_;
    QSize size_;          // of the window, in its own units
    CGFloat density_ = 0; // pixels of the display per such unit
    CGFloat scale_ = 0;
    QRect place_; // of the screen, in pixels
    std::unique_ptr<CGImage> bitmap_;
    CAFrameUpdater updater_;
    QBackingStore store_;
    bool showAll_ = true;
};

} // namespace tallyforge
