#pragma once

#include "quartzcore/CADisplayLink.h"
#include "uikit/UIView.h"

namespace tallyforge {

class UIPanGestureRecognizer;

/// Shows a part of something higher than itself, and is moved by the finger: with momentum, and a rubber band
/// at the ends. Up and down only.
class UIScrollView : public UIView {
  public:
    explicit UIScrollView(const CGRect& frame);
    ~UIScrollView() override;

    const char* className() const override { return "UIScrollView"; }
    CGSize contentSize() const { return contentSize_; }
    void setContentSize(const CGSize& size);
    CGPoint contentOffset() const { return bounds().origin; }
    void setContentOffset(const CGPoint& offset);
    /// To there within 0.3 seconds; at once where animations are off.
    void setContentOffsetAnimated(const CGPoint& offset);
    CGFloat topInset() const { return topInset_; }
    void setTopInset(CGFloat points);
    bool scrollEnabled() const { return scrollEnabled_; }
    void setScrollEnabled(bool enabled) { scrollEnabled_ = enabled; }

    /// The nearest and farthest offsets at rest.
    CGFloat minimumOffset() const { return -topInset_; }
    CGFloat maximumOffset() const;
    /// Moves at once, no further than the ends.
    void scrollBy(CGFloat points);
    /// The same within 0.3 seconds, from where an earlier one is on its way to.
    void scrollSmoothlyBy(CGFloat points);
    /// Moves as little as is needed to show the rectangle (of the content).
    void scrollRectToVisible(const CGRect& rect, bool animated = false);
    bool dragging() const { return dragging_; }
    bool decelerating() const { return motion_ != Motion::none; }
    void stopScrolling();

    void setFrame(const CGRect& frame) override;
    /// While it glides a finger only stops it, and reaches nothing in it.
    UIView* hitTest(const CGPoint& point) override;
    void fingerCameDown() override;

    /// Rubber band: how far the content follows a finger that is x points past the end of a view d high.
    static CGFloat RubberBandDistance(CGFloat x, CGFloat d);

  protected:
    virtual void didScroll() {}
    /// Whether the finger that is on it stopped it from moving.
    bool caughtByFinger() const { return caught_; }

  private:
    enum class Motion { none, momentum, spring, animated };
    void pan();
    void letGo(CGFloat velocity);
    void step(double seconds);
    void stepMomentum(double seconds);
    void stepSpring(double seconds);
    void springFrom(CGFloat from, CGFloat velocity, double seconds);
    void keepWithinEnds();
    CGFloat nearestRest(CGFloat offset) const;
    CGFloat wholePixels(CGFloat offset) const;
    void showIndicator();

    CGSize contentSize_;
    CGFloat topInset_ = 0;
    bool scrollEnabled_ = true;
    bool dragging_ = false;
    bool caught_ = false;
    CGFloat dragStart_ = 0; // the offset, as if there were no rubber band
    std::shared_ptr<UIPanGestureRecognizer> pan_;
    Motion motion_ = Motion::none;
    double motionStart_ = 0; // seconds
    CGFloat motionFrom_ = 0, motionTo_ = 0, motionVelocity_ = 0;
    CADisplayLink link_;
    std::shared_ptr<UIView> indicator_;
    double indicatorUntil_ = 0;
};

} // namespace tallyforge
