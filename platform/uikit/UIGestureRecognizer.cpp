#include "uikit/UIGestureRecognizer.h"

#include "uikit/UIView.h"

#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kSlop = 10;                    // points that a resting finger may move
constexpr int64_t kVelocityWindow = 100'000'000; // nanoseconds over which a velocity is taken

CGFloat distance(const CGPoint& a, const CGPoint& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

} // namespace

bool UIGestureRecognizer::mayBegin() const {
    if (shouldBegin && !shouldBegin(*this)) return false;
    for (UIView* view = touched_; view; view = view->superview()) {
        if (!view->gestureRecognizerShouldBegin(*this)) return false;
        if (view == view_) break;
    }
    return true;
}

void UITapGestureRecognizer::touchesBegan(const UITouch& touch) {
    start_ = touch.locationInWindow;
}

void UITapGestureRecognizer::touchesMoved(const UITouch& touch) {
    if (distance(touch.locationInWindow, start_) > kSlop) setState(UIGestureRecognizerState::failed);
}

void UITapGestureRecognizer::touchesEnded(const UITouch& touch) {
    touchesMoved(touch);
    if (state() == UIGestureRecognizerState::failed || !mayBegin()) return;
    setState(UIGestureRecognizerState::ended);
    fire();
}

CGPoint UIPanGestureRecognizer::velocity() const {
    if (samples_.size() < 2) return {};
    const Sample &first = samples_.front(), &last = samples_.back();
    const double seconds = static_cast<double>(last.nanoseconds - first.nanoseconds) / 1e9;
    if (seconds <= 0) return {};
    return {(last.location.x - first.location.x) / seconds, (last.location.y - first.location.y) / seconds};
}

void UIPanGestureRecognizer::note(const UITouch& touch) {
    samples_.push_back({touch.locationInWindow, touch.nanoseconds});
    std::erase_if(samples_, [&](const Sample& sample) {
        return touch.nanoseconds - sample.nanoseconds > kVelocityWindow;
    });
}

void UIPanGestureRecognizer::touchesBegan(const UITouch& touch) {
    start_ = touch.locationInWindow;
    translation_ = {};
    samples_.clear();
    note(touch);
}

void UIPanGestureRecognizer::touchesMoved(const UITouch& touch) {
    if (state() == UIGestureRecognizerState::failed) return;
    note(touch);
    translation_ = {touch.locationInWindow.x - start_.x, touch.locationInWindow.y - start_.y};
    if (state() == UIGestureRecognizerState::possible) {
        if (std::hypot(translation_.x, translation_.y) < kSlop) return;
        bool flat = std::abs(translation_.x) > std::abs(translation_.y);
        bool wanted = direction_ == Direction::any || flat == (direction_ == Direction::horizontal);
        if (!wanted || !mayBegin()) {
            setState(UIGestureRecognizerState::failed);
            return;
        }
        setState(UIGestureRecognizerState::began);
    } else {
        setState(UIGestureRecognizerState::changed);
    }
    fire();
}

void UIPanGestureRecognizer::touchesEnded(const UITouch& touch) {
    if (state() != UIGestureRecognizerState::began && state() != UIGestureRecognizerState::changed) return;
    note(touch);
    translation_ = {touch.locationInWindow.x - start_.x, touch.locationInWindow.y - start_.y};
    setState(UIGestureRecognizerState::ended);
    fire();
}

void UIPanGestureRecognizer::touchesCancelled(const UITouch&) {
    if (state() != UIGestureRecognizerState::began && state() != UIGestureRecognizerState::changed) return;
    setState(UIGestureRecognizerState::cancelled);
    fire();
}

} // namespace tallyforge
