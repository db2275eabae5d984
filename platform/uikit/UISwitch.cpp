#include "uikit/UISwitch.h"

#include "uikit/ControlDrawing.h"
#include "uikit/UIImageView.h"
#include "uikit/UIViewAnimation.h"

#include <cmath>

namespace tallyforge {

namespace {

constexpr CGSize kSize{51, 31};
constexpr CGFloat kRim = 1.5;
constexpr CGFloat kDragSlop = 10;
constexpr double kTurnTime = 0.2; // seconds
constexpr uint32_t kGreen = 0x4CD964;
constexpr uint32_t kRimGrey = 0xE5E5E5;
constexpr CGFloat kDisabledAlpha = 0.5;

std::shared_ptr<UIView> pill() {
    auto view = std::make_shared<UIView>(CGRectMake(0, 0, kSize.width, kSize.height));
    view->setUserInteractionEnabled(false);
    view->layer()->setCornerRadius(kSize.height / 2);
    return view;
}

} // namespace

UISwitch::UISwitch(const CGRect& frame)
    : UIControl({frame.origin, kSize}), rim_(pill()), track_(pill()), thumb_(MakeThumb()) {
    rim_->layer()->setBorderWidth(kRim);
    addSubview(rim_);
    addSubview(track_);
    addSubview(thumb_);
    applyColors();
    show(false, false);
}

void UISwitch::setOn(bool on, bool animated) {
    on_ = on;
    show(on, animated);
}

void UISwitch::setOnTintColor(const UIColor& color) {
    onTint_ = color;
    applyColors();
}

void UISwitch::setTintColor(const UIColor& color) {
    tint_ = color;
    applyColors();
}

void UISwitch::setFrame(const CGRect& frame) {
    UIControl::setFrame({frame.origin, kSize});
}

void UISwitch::setEnabled(bool enabled) {
    UIControl::setEnabled(enabled);
    applyColors();
}

// The thumb stays solid on a disabled switch; what is below it fades.
void UISwitch::applyColors() {
    const auto faded = [this](const UIColor& color) {
        return enabled() ? color : color.colorWithAlphaComponent(color.alpha() * kDisabledAlpha);
    };
    track_->setBackgroundColor(faded(onTint_.value_or(ControlColor(kGreen))));
    rim_->layer()->setBorderColor(faded(tint_.value_or(ControlColor(kRimGrey))).cgColor());
}

void UISwitch::layoutSubviews() {
    show(shown_, false);
}

bool UISwitch::gestureRecognizerShouldBegin(const UIGestureRecognizer&) {
    return !(tracking() && dragged_);
}

bool UISwitch::pressKey(UIKey key) {
    if (!enabled()) return false;
    switch (key) {
    case UIKey::space:
    case UIKey::enter:
        turn(!on_);
        return true;
    case UIKey::left:
        turn(false);
        return true;
    case UIKey::right:
        turn(true);
        return true;
    default:
        return false;
    }
}

bool UISwitch::beginTracking(const UITouch& touch) {
    dragged_ = false;
    start_ = touch.locationInView(*this).x;
    return true;
}

void UISwitch::continueTracking(const UITouch& touch) {
    const CGFloat x = touch.locationInView(*this).x;
    dragged_ = dragged_ || std::abs(x - start_) > kDragSlop;
    if (dragged_) show(x >= kSize.width / 2, true);
}

void UISwitch::endTracking(const UITouch& touch) {
    continueTracking(touch);
    if (dragged_)
        turn(shown_);
    else if (isTouchInside(touch))
        turn(!on_);
}

void UISwitch::cancelTracking() {
    show(on_, true);
}

void UISwitch::turn(bool on) {
    show(on, true);
    if (on_ == on) return;
    on_ = on;
    sendActionsForControlEvents(UIControlEventValueChanged);
}

void UISwitch::show(bool on, bool animated) {
    shown_ = on;
    constexpr CGFloat kNear = kRim + kThumbSize / 2;
    const CGPoint centre{on ? kSize.width - kNear : kNear, kSize.height / 2};
    const CGFloat alpha = on ? 1 : 0;
    if (thumb_->center() == centre && track_->alpha() == alpha) return; // what still moves there goes on
    if (animated) {
        UIViewAnimateCenter(*thumb_, centre, kTurnTime);
        UIViewAnimateAlpha(*track_, alpha, kTurnTime);
        UIViewAnimateAlpha(*rim_, 1 - alpha, kTurnTime);
        return;
    }
    for (const auto& view : {rim_, track_, std::shared_ptr<UIView>(thumb_)})
        view->layer()->removeAllAnimations();
    thumb_->setCenter(centre);
    track_->setAlpha(alpha);
    rim_->setAlpha(1 - alpha);
}

} // namespace tallyforge
