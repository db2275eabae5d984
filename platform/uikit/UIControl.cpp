#include "uikit/UIControl.h"

#include "uikit/UITextField.h"
#include "uikit/UIWindow.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr CGFloat kSlack = 70; // points around the control that a finger may stray

} // namespace

void UIControl::setEnabled(bool enabled) {
    if (enabled_ == enabled) return;
    enabled_ = enabled;
    if (enabled || !tracking_) return;
    tracking_ = false;
    setHighlighted(false);
    cancelTracking();
    sendActionsForControlEvents(UIControlEventTouchCancel);
}

void UIControl::addTargetForControlEvents(Action action, uint32_t events) {
    if (action) targets_.push_back(std::make_shared<const Target>(Target{std::move(action), events}));
}

void UIControl::sendActionsForControlEvents(uint32_t events) {
    const auto self = weak_from_this().lock(); // an action may end this control
    const auto targets = targets_;
    for (const auto& target : targets) {
        const bool stillThere = std::find(targets_.begin(), targets_.end(), target) != targets_.end();
        if (stillThere && (target->events & events)) target->action(*this);
    }
}

void UIControl::setFocused(bool focused) {
    UIView::setFocused(focused);
    UIWindow* const in = focused ? window() : nullptr;
    UITextField* const field = in ? in->editedField() : nullptr;
    if (field && field != this) field->endEditing();
}

void UIControl::touchesBegan(const UITouch& touch) {
    if (!enabled_ || tracking_) return;
    const auto self = weak_from_this().lock();
    tracking_ = true;
    if (!beginTracking(touch)) {
        tracking_ = false;
        return;
    }
    setHighlighted(true);
    sendActionsForControlEvents(UIControlEventTouchDown);
}

void UIControl::touchesMoved(const UITouch& touch) {
    if (!tracking_) return;
    const auto self = weak_from_this().lock();
    setHighlighted(isTouchInside(touch));
    continueTracking(touch);
}

void UIControl::touchesEnded(const UITouch& touch) {
    if (!tracking_) return;
    const auto self = weak_from_this().lock();
    const bool inside = isTouchInside(touch);
    tracking_ = false;
    setHighlighted(false);
    endTracking(touch);
    sendActionsForControlEvents(inside ? UIControlEventTouchUpInside : UIControlEventTouchUpOutside);
}

void UIControl::touchesCancelled(const UITouch&) {
    if (!tracking_) return;
    const auto self = weak_from_this().lock();
    tracking_ = false;
    setHighlighted(false);
    cancelTracking();
    sendActionsForControlEvents(UIControlEventTouchCancel);
}

bool UIControl::isTouchInside(const UITouch& touch) const {
    return CGRectContainsPoint(CGRectInset(bounds(), -kSlack, -kSlack), touch.locationInView(*this));
}

} // namespace tallyforge
