#include "uikit/UISlider.h"

#include "uikit/ControlDrawing.h"
#include "uikit/UIImageView.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kTrackHeight = 2;
constexpr CGFloat kTrackInset = 2; // from the control's sides to the track's ends
constexpr CGFloat kTouchSize = 44; // what a finger needs, in both directions
constexpr uint32_t kRestOfTrack = 0xB7B8B7;
constexpr CGFloat kDisabledAlpha = 0.5;
constexpr double kRounding = 1e-12; // of the range: what sums of coordinates may leave

} // namespace

UISlider::UISlider(const CGRect& frame)
    : UIControl(frame), minimumTrack_(std::make_shared<UIView>()), maximumTrack_(std::make_shared<UIView>()),
      thumb_(MakeThumb()) {
    setMinimumTrackTintColor(ControlColor(kControlTint));
    maximumTrack_->setBackgroundColor(ControlColor(kRestOfTrack));
    for (const auto& track : {maximumTrack_, minimumTrack_}) {
        track->setUserInteractionEnabled(false);
        track->layer()->setCornerRadius(kTrackHeight / 2);
        addSubview(track);
    }
    addSubview(thumb_);
}

void UISlider::setValue(float value) {
    value_ = std::isnan(value) ? minimum_ : std::clamp(value, minimum_, maximum_);
    setNeedsLayout();
}

void UISlider::setMinimumValue(float minimum) {
    if (!std::isfinite(minimum)) return;
    minimum_ = minimum;
    maximum_ = std::max(maximum_, minimum);
    setValue(value_);
}

void UISlider::setMaximumValue(float maximum) {
    if (!std::isfinite(maximum)) return;
    maximum_ = maximum;
    minimum_ = std::min(minimum_, maximum);
    setValue(value_);
}

void UISlider::setMinimumTrackTintColor(const UIColor& color) {
    minimumTrack_->setBackgroundColor(color);
}

void UISlider::setThumbTintColor(const UIColor& color) {
    SetThumbColor(*thumb_, color);
}

CGPoint UISlider::thumbCentreForValue(float value) const {
    const double range = double(maximum_) - minimum_;
    const double held = std::isnan(value) ? minimum_ : std::clamp(value, minimum_, maximum_);
    const double share = range > 0 ? (held - minimum_) / range : 0;
    const CGRect box = bounds();
    const CGFloat travel = box.size.width - kThumbSize;
    return {travel > 0 ? box.origin.x + kThumbSize / 2 + share * travel : CGRectGetMidX(box),
            CGRectGetMidY(box)};
}

// Where the thumb's centre would be at x; the inverse of thumbCentreForValue.
float UISlider::valueForThumbCentre(CGFloat x) const {
    const CGRect box = bounds();
    const CGFloat travel = box.size.width - kThumbSize;
    if (!(travel > 0) || std::isnan(x)) return value_;
    const CGFloat share = (x - box.origin.x - kThumbSize / 2) / travel;
    if (share <= kRounding) return minimum_;
    if (share >= 1 - kRounding) return maximum_;
    const double range = double(maximum_) - minimum_;
    double value = minimum_ + share * range;
    if (std::abs(value) <= range * kRounding) value = 0;
    return std::clamp(static_cast<float>(value), minimum_, maximum_);
}

void UISlider::setEnabled(bool enabled) {
    UIControl::setEnabled(enabled);
    minimumTrack_->setAlpha(enabled ? 1 : kDisabledAlpha);
    maximumTrack_->setAlpha(enabled ? 1 : kDisabledAlpha);
}

void UISlider::layoutSubviews() {
    const CGRect box = bounds();
    const CGPoint centre = thumbCentreForValue(value_);
    const CGFloat left = box.origin.x + kTrackInset, right = CGRectGetMaxX(box) - kTrackInset;
    const CGFloat top = centre.y - kTrackHeight / 2;
    minimumTrack_->setFrame(
        AlignedToPixels(*this, CGRectMake(left, top, std::max(centre.x - left, 0.0), kTrackHeight)));
    maximumTrack_->setFrame(
        AlignedToPixels(*this, CGRectMake(centre.x, top, std::max(right - centre.x, 0.0), kTrackHeight)));
    thumb_->setCenter({centre.x, CGRectGetMidY(minimumTrack_->frame())});
}

bool UISlider::pointInside(const CGPoint& point) const {
    const CGFloat aside = (kTouchSize - kThumbSize) / 2; // for a thumb at an end
    const CGFloat above = std::max((kTouchSize - bounds().size.height) / 2, 0.0);
    return CGRectContainsPoint(CGRectInset(bounds(), -aside, -above), point);
}

bool UISlider::gestureRecognizerShouldBegin(const UIGestureRecognizer&) {
    return !tracking();
}

bool UISlider::pressKey(UIKey key) {
    if (!enabled()) return false;
    const float range = maximum_ - minimum_;
    const float step = keyStep_ > 0 ? keyStep_ : range / 100;
    float wanted = value_;
    switch (key) {
    case UIKey::left:
        wanted -= step;
        break;
    case UIKey::right:
        wanted += step;
        break;
    case UIKey::home:
        wanted = minimum_;
        break;
    case UIKey::end:
        wanted = maximum_;
        break;
    default:
        return false;
    }
    const float before = value_;
    setValue(wanted);
    if (value_ == before) return true;
    const auto self = weak_from_this().lock();
    sendActionsForControlEvents(UIControlEventValueChanged);
    sendActionsForControlEvents(UIControlEventTouchUpInside);
    return true;
}

bool UISlider::beginTracking(const UITouch& touch) {
    const CGFloat distance = thumbCentreForValue(value_).x - touch.locationInView(*this).x;
    if (!(std::abs(distance) <= kTouchSize / 2)) return false;
    grip_ = distance;
    valueWhenGrabbed_ = value_;
    return true;
}

void UISlider::continueTracking(const UITouch& touch) {
    const float before = value_;
    setValue(valueForThumbCentre(touch.locationInView(*this).x + grip_));
    if (continuous_ && value_ != before) sendActionsForControlEvents(UIControlEventValueChanged);
}

void UISlider::endTracking(const UITouch& touch) {
    continueTracking(touch);
    if (!continuous_ && value_ != valueWhenGrabbed_) sendActionsForControlEvents(UIControlEventValueChanged);
}

// What has been told stays; what has not been told is taken back.
void UISlider::cancelTracking() {
    if (!continuous_) setValue(valueWhenGrabbed_);
}

} // namespace tallyforge
