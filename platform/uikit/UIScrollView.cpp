#include "uikit/UIScrollView.h"

#include "foundation/Dispatch.h"
#include "quartzcore/Presentation.h"
#include "uikit/ControlDrawing.h"
#include "uikit/UIDevice.h"
#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIViewAnimation.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kDecelerationRate = 0.998;               // of the speed, kept each millisecond
const CGFloat kDecay = 1000 * std::log(kDecelerationRate); // of the speed, a second; negative
constexpr CGFloat kSlowest = 10;                           // points a second at which momentum ends
constexpr CGFloat kRubber = 0.55;
constexpr CGFloat kSpring = 12;          // stiffness of the way back from beyond an end, a second
constexpr CGFloat kAtRest = 0.25;        // points from its end at which a spring is done
constexpr double kSpringLeast = 0.05;    // seconds before which it is not
constexpr double kAnimatedScroll = 0.3;  // seconds
constexpr double kIndicatorLinger = 0.8; // seconds after the last movement
constexpr double kIndicatorFade = 0.25;  // seconds
constexpr CGFloat kIndicatorWidth = 2.5;

// The rubber band the other way round: how far the finger is when the content has followed it by y.
CGFloat FingerDistance(CGFloat y, CGFloat d) {
    return y < d ? (1 / (1 - y / d) - 1) * d / kRubber : 0;
}

} // namespace

UIScrollView::UIScrollView(const CGRect& frame)
    : UIView(frame), pan_(std::make_shared<UIPanGestureRecognizer>(
                         [this] { pan(); }, UIPanGestureRecognizer::Direction::vertical)),
      link_([this](double seconds) { step(seconds); }) {
    setClipsToBounds(true);
    pan_->shouldBegin = [this](const UIGestureRecognizer&) { return scrollEnabled_; };
    addGestureRecognizer(pan_);
}

UIScrollView::~UIScrollView() = default;

void UIScrollView::setContentSize(const CGSize& size) {
    contentSize_ = size;
    keepWithinEnds();
}

void UIScrollView::setFrame(const CGRect& frame) {
    UIView::setFrame(frame);
    keepWithinEnds();
}

CGFloat UIScrollView::nearestRest(CGFloat offset) const {
    return std::clamp(offset, minimumOffset(), maximumOffset());
}

// An offset between the ends at which what lies on whole pixels is drawn on whole pixels.
CGFloat UIScrollView::wholePixels(CGFloat offset) const {
    return nearestRest(WholePixels(offset));
}

// After the ends have moved. A finger, or momentum, finds out by itself.
void UIScrollView::keepWithinEnds() {
    const CGFloat offset = contentOffset().y;
    if (dragging_ || motion_ == Motion::momentum) return;
    if (motion_ == Motion::animated)
        motionTo_ = nearestRest(motionTo_);
    else if (motion_ == Motion::spring && motionTo_ != nearestRest(offset))
        springFrom(offset, 0, CACurrentMediaTime());
    else if (motion_ == Motion::none && offset > maximumOffset())
        setContentOffset({0, maximumOffset()});
}

void UIScrollView::setTopInset(CGFloat points) {
    bool atTop = contentOffset().y <= minimumOffset();
    topInset_ = points;
    if (atTop) setContentOffset({0, minimumOffset()});
}

CGFloat UIScrollView::maximumOffset() const {
    constexpr CGFloat kNearly = 1e-6; // what sums of lengths may leave of a whole pixel
    const CGFloat scale = UIScreen::mainScreen().scale();
    const CGFloat below = contentSize_.height - bounds().size.height;
    return std::max(minimumOffset(), std::ceil(below * scale - kNearly) / scale);
}

void UIScrollView::setContentOffset(const CGPoint& offset) {
    CGRect shown = bounds();
    if (shown.origin == offset) return;
    const auto self = weak_from_this().lock(); // what has come into view may end this view
    shown.origin = offset;
    layer()->setBounds(shown);
    didScroll();
    showIndicator();
}

void UIScrollView::setContentOffsetAnimated(const CGPoint& offset) {
    stopScrolling();
    if (!UIViewAnimationsEnabled()) return setContentOffset(offset);
    motion_ = Motion::animated;
    motionStart_ = CACurrentMediaTime();
    motionFrom_ = contentOffset().y;
    motionTo_ = offset.y;
    link_.setPaused(false);
}

void UIScrollView::scrollBy(CGFloat points) {
    stopScrolling();
    setContentOffset({0, nearestRest(contentOffset().y + points)});
}

void UIScrollView::scrollSmoothlyBy(CGFloat points) {
    const CGFloat from = motion_ == Motion::animated ? motionTo_ : contentOffset().y;
    setContentOffsetAnimated({0, wholePixels(nearestRest(from + points))});
}

void UIScrollView::scrollRectToVisible(const CGRect& rect, bool animated) {
    CGFloat top = contentOffset().y + topInset_;
    CGFloat height = bounds().size.height - topInset_;
    CGFloat to = top;
    if (CGRectGetMaxY(rect) > top + height) to = CGRectGetMaxY(rect) - height;
    if (rect.origin.y < to) to = rect.origin.y;
    to = wholePixels(to - topInset_);
    if (animated) return setContentOffsetAnimated({0, to});
    stopScrolling();
    setContentOffset({0, to});
}

void UIScrollView::stopScrolling() {
    motion_ = Motion::none;
}

UIView* UIScrollView::hitTest(const CGPoint& point) {
    UIView* const hit = UIView::hitTest(point);
    return hit && motion_ == Motion::momentum ? this : hit;
}

void UIScrollView::fingerCameDown() {
    caught_ = motion_ == Motion::momentum;
    if (motion_ == Motion::momentum || motion_ == Motion::animated) stopScrolling();
}

CGFloat UIScrollView::RubberBandDistance(CGFloat x, CGFloat d) {
    return d > 0 ? (1 - 1 / (x * kRubber / d + 1)) * d : 0;
}

void UIScrollView::pan() {
    const CGFloat height = bounds().size.height;
    const CGFloat low = minimumOffset(), high = maximumOffset();
    switch (pan_->state()) {
    case UIGestureRecognizerState::began: {
        stopScrolling();
        dragging_ = true;
        CGFloat offset = contentOffset().y;
        if (offset < low) offset = low - FingerDistance(low - offset, height);
        if (offset > high) offset = high + FingerDistance(offset - high, height);
        dragStart_ = offset + pan_->translation().y; // what it took to begin does not move
        [[fallthrough]];
    }
    case UIGestureRecognizerState::changed: {
        CGFloat wanted = dragStart_ - pan_->translation().y;
        if (wanted < low) wanted = low - RubberBandDistance(low - wanted, height);
        if (wanted > high) wanted = high + RubberBandDistance(wanted - high, height);
        setContentOffset({0, wanted});
        break;
    }
    case UIGestureRecognizerState::ended:
        dragging_ = false;
        letGo(-pan_->velocity().y);
        break;
    case UIGestureRecognizerState::cancelled:
        dragging_ = false;
        letGo(0);
        break;
    default:
        break;
    }
}

void UIScrollView::letGo(CGFloat velocity) {
    const double now = CACurrentMediaTime();
    const CGFloat offset = contentOffset().y;
    if (offset != nearestRest(offset)) {
        if (UIViewAnimationsEnabled()) return springFrom(offset, velocity, now);
        return setContentOffset({0, nearestRest(offset)});
    }
    if (std::abs(velocity) < 4 * kSlowest) return setContentOffset({0, wholePixels(offset)});
    if (!UIViewAnimationsEnabled()) {
        const CGFloat way = (std::copysign(kSlowest, velocity) - velocity) / kDecay;
        return setContentOffset({0, wholePixels(offset + way)});
    }
    motion_ = Motion::momentum;
    motionStart_ = now;
    motionFrom_ = offset;
    motionVelocity_ = velocity;
    link_.setPaused(false);
}

// From beyond an end, or from the end itself with a speed that leads beyond it, to the end.
void UIScrollView::springFrom(CGFloat from, CGFloat velocity, double seconds) {
    motion_ = Motion::spring;
    motionStart_ = seconds;
    motionFrom_ = from;
    motionTo_ = nearestRest(from);
    motionVelocity_ = velocity;
    link_.setPaused(false);
}

void UIScrollView::step(double seconds) {
    switch (motion_) {
    case Motion::none:
        if (indicator_ && seconds < indicatorUntil_) return;
        link_.setPaused(true);
        if (indicator_) UIViewAnimateAlpha(*indicator_, 0, kIndicatorFade);
        return;
    case Motion::momentum:
        return stepMomentum(seconds);
    case Motion::spring:
        return stepSpring(seconds);
    case Motion::animated: {
        const CGFloat share = std::clamp((seconds - motionStart_) / kAnimatedScroll, 0.0, 1.0);
        const CGFloat eased = share * share * (3 - 2 * share);
        if (share >= 1) motion_ = Motion::none;
        const CGFloat there = motionFrom_ + (motionTo_ - motionFrom_) * eased;
        setContentOffset({0, share >= 1 ? WholePixels(there) : there});
        return;
    }
    }
}

// The speed falls to the rate's share every millisecond; its integral is the way.
void UIScrollView::stepMomentum(double seconds) {
    const double t = std::max(0.0, seconds - motionStart_);
    const CGFloat speed = motionVelocity_ * std::exp(kDecay * t);
    const CGFloat offset = motionFrom_ + (speed - motionVelocity_) / kDecay;
    const CGFloat end = nearestRest(offset);
    if (offset != end) {
        // It was at the end a little before this frame; from then on the end pulls.
        const CGFloat share = std::clamp(1 + kDecay * (end - motionFrom_) / motionVelocity_, 0.0, 1.0);
        springFrom(end, motionVelocity_ * share, motionStart_ + std::log(std::max(share, 1e-6)) / kDecay);
        return stepSpring(seconds);
    }
    if (std::abs(speed) < kSlowest) motion_ = Motion::none;
    setContentOffset({0, motion_ == Motion::none ? wholePixels(offset) : offset});
}

// Critically damped: no swinging over.
void UIScrollView::stepSpring(double seconds) {
    const double t = std::max(0.0, seconds - motionStart_);
    const CGFloat away = motionFrom_ - motionTo_;
    CGFloat x = (away + (motionVelocity_ + kSpring * away) * t) * std::exp(-kSpring * t);
    if (std::abs(x) < kAtRest && t > kSpringLeast) {
        motion_ = Motion::none;
        x = 0;
    }
    setContentOffset({0, motionTo_ + x});
}

// A bar at the right as long as the share that is shown; it goes away when nothing moves.
void UIScrollView::showIndicator() {
    const CGFloat height = bounds().size.height - topInset_;
    if (!UIViewAnimationsEnabled() || contentSize_.height <= height || height <= 0) return;
    if (!indicator_) {
        indicator_ = std::make_shared<UIView>(CGRectZero);
        indicator_->setBackgroundColor(UIColor::colorWithWhite(0, 0.35));
        indicator_->layer()->setCornerRadius(kIndicatorWidth / 2);
        indicator_->setUserInteractionEnabled(false);
    }
    if (subviews().empty() || subviews().back() != indicator_) addSubview(indicator_);
    const CGFloat offset = contentOffset().y;
    CGFloat beyond = std::max({0.0, minimumOffset() - offset, offset - maximumOffset()});
    CGFloat room = height - 6;
    CGFloat length = std::max<CGFloat>(7, room * height / contentSize_.height - beyond);
    CGFloat share =
        std::clamp((offset - minimumOffset()) / std::max(1.0, maximumOffset() - minimumOffset()), 0.0, 1.0);
    indicator_->setFrame(CGRectMake(bounds().size.width - kIndicatorWidth - 3,
                                    offset + topInset_ + 3 + (room - length) * share, kIndicatorWidth,
                                    length));
    indicator_->layer()->removeAnimationForKey("alpha");
    indicator_->setAlpha(1);
    indicatorUntil_ = CACurrentMediaTime() + kIndicatorLinger;
    link_.setPaused(false);
}

} // namespace tallyforge
