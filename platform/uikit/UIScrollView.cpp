#include "uikit/UIScrollView.h"

#include "foundation/Dispatch.h"
#include "quartzcore/Presentation.h"
#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIViewAnimation.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kDecelerationRate = 0.998;    // of the speed, kept each millisecond
constexpr CGFloat kSlowest = 10;                // points a second at which momentum ends
constexpr CGFloat kRubber = 0.55;
constexpr CGFloat kSpring = 12;                 // stiffness of the way back from beyond an end, a second
constexpr double kAnimatedScroll = 0.3;         // seconds
constexpr double kIndicatorLinger = 0.8;        // seconds after the last movement
constexpr CGFloat kIndicatorWidth = 2.5;

} // namespace

UIScrollView::UIScrollView(const CGRect& frame)
    : UIView(frame), pan_(std::make_shared<UIPanGestureRecognizer>([this] { pan(); },
                                                                   UIPanGestureRecognizer::Direction::vertical)),
      link_([this](double seconds) { step(seconds); }) {
    setClipsToBounds(true);
    pan_->shouldBegin = [this](const UIGestureRecognizer&) { return scrollEnabled_; };
    addGestureRecognizer(pan_);
}

UIScrollView::~UIScrollView() = default;

void UIScrollView::setContentSize(const CGSize& size) {
    contentSize_ = size;
    if (!dragging_ && motion_ == Motion::none && contentOffset().y > maximumOffset())
        setContentOffset({0, maximumOffset()});
}

void UIScrollView::setTopInset(CGFloat points) {
    bool atTop = contentOffset().y <= minimumOffset();
    topInset_ = points;
    if (atTop) setContentOffset({0, minimumOffset()});
}

CGFloat UIScrollView::maximumOffset() const {
    return std::max(minimumOffset(), contentSize_.height - bounds().size.height);
}

void UIScrollView::setContentOffset(const CGPoint& offset) {
    CGRect shown = bounds();
    if (shown.origin == offset) return;
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
    setContentOffset({0, std::clamp(contentOffset().y + points, minimumOffset(), maximumOffset())});
}

void UIScrollView::scrollRectToVisible(const CGRect& rect, bool animated) {
    CGFloat top = contentOffset().y + topInset_;
    CGFloat height = bounds().size.height - topInset_;
    CGFloat to = top;
    if (CGRectGetMaxY(rect) > top + height) to = CGRectGetMaxY(rect) - height;
    if (rect.origin.y < to) to = rect.origin.y;
    to = std::clamp(to - topInset_, minimumOffset(), maximumOffset());
    if (animated)
        setContentOffsetAnimated({0, to});
    else {
        stopScrolling();
        setContentOffset({0, to});
    }
}

void UIScrollView::stopScrolling() {
    motion_ = Motion::none;
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
    switch (pan_->state()) {
    case UIGestureRecognizerState::began:
        stopScrolling();
        dragging_ = true;
        dragStart_ = contentOffset().y + pan_->translation().y; // what it took to begin does not move
        [[fallthrough]];
    case UIGestureRecognizerState::changed: {
        CGFloat wanted = dragStart_ - pan_->translation().y;
        CGFloat low = minimumOffset(), high = maximumOffset();
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
    if (offset < minimumOffset() || offset > maximumOffset())
        return springTo(offset < minimumOffset() ? minimumOffset() : maximumOffset(), velocity, now);
    if (std::abs(velocity) < 4 * kSlowest) return;
    motion_ = Motion::momentum;
    motionStart_ = now;
    motionFrom_ = offset;
    motionVelocity_ = velocity;
    link_.setPaused(false);
}

void UIScrollView::springTo(CGFloat offset, CGFloat velocity, double seconds) {
    motion_ = Motion::spring;
    motionStart_ = seconds;
    motionFrom_ = contentOffset().y;
    motionTo_ = offset;
    motionVelocity_ = velocity;
    link_.setPaused(false);
}

void UIScrollView::step(double seconds) {
    const double t = std::max(0.0, seconds - motionStart_);
    switch (motion_) {
    case Motion::none:
        if (!indicator_ || seconds >= indicatorUntil_) {
            link_.setPaused(true);
            if (indicator_) UIViewAnimateAlpha(*indicator_, 0, 0.25);
        }
        return;
    case Motion::momentum: {
        // The speed falls to the rate's share every millisecond; its integral is the way.
        const double k = 1000 * std::log(kDecelerationRate); // a second, negative
        CGFloat speed = motionVelocity_ * std::exp(k * t);
        CGFloat offset = motionFrom_ + motionVelocity_ * (std::exp(k * t) - 1) / k;
        bool beyond = offset < minimumOffset() || offset > maximumOffset();
        setContentOffset({0, offset});
        if (beyond)
            springTo(offset < minimumOffset() ? minimumOffset() : maximumOffset(), speed, seconds);
        else if (std::abs(speed) < kSlowest)
            motion_ = Motion::none;
        return;
    }
    case Motion::spring: {
        // Critically damped: no swinging over.
        const CGFloat away = motionFrom_ - motionTo_;
        const CGFloat b = motionVelocity_ + kSpring * away;
        CGFloat x = (away + b * t) * std::exp(-kSpring * t);
        if (std::abs(x) < 0.25 && t > 0.05) {
            motion_ = Motion::none;
            x = 0;
        }
        setContentOffset({0, motionTo_ + x});
        return;
    }
    case Motion::animated: {
        CGFloat share = std::min(1.0, t / kAnimatedScroll);
        if (share >= 1) motion_ = Motion::none;
        CGFloat eased = share * share * (3 - 2 * share);
        setContentOffset({0, motionFrom_ + (motionTo_ - motionFrom_) * eased});
        return;
    }
    }
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
    if (!subviews().empty() && subviews().back() != indicator_) addSubview(indicator_);
    const CGFloat offset = contentOffset().y;
    CGFloat beyond = std::max({0.0, minimumOffset() - offset, offset - maximumOffset()});
    CGFloat room = height - 6;
    CGFloat length = std::max<CGFloat>(7, room * height / contentSize_.height - beyond);
    CGFloat share = std::clamp((offset - minimumOffset()) / std::max(1.0, maximumOffset() - minimumOffset()), 0.0, 1.0);
    indicator_->setFrame(CGRectMake(bounds().size.width - kIndicatorWidth - 3,
                                    offset + topInset_ + 3 + (room - length) * share, kIndicatorWidth, length));
    indicator_->layer()->removeAnimationForKey("alpha");
    indicator_->setAlpha(1);
    indicatorUntil_ = CACurrentMediaTime() + kIndicatorLinger;
    link_.setPaused(false);
}

} // namespace tallyforge
