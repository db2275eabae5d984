#include "uikit/UIViewAnimation.h"

#include "quartzcore/CAAnimation.h"

namespace tallyforge {

namespace {

bool enabled = true;

std::shared_ptr<CABasicAnimation> eased(const char* keyPath, CAValue from, CAValue to, double duration) {
    auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
    animation->setFromValue(from);
    animation->setToValue(to);
    animation->setDuration(duration);
    animation->setTimingFunction(
        CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseInEaseOut));
    return animation;
}

} // namespace

bool UIViewAnimationsEnabled() {
    return enabled;
}

void UIViewSetAnimationsEnabled(bool on) {
    enabled = on;
}

void UIViewAnimateCenter(UIView& view, const CGPoint& center, double duration) {
    CGPoint from = view.center();
    view.layer()->removeAnimationForKey("center");
    view.setCenter(center);
    if (enabled && duration > 0 && !(from == center))
        view.layer()->addAnimation(*eased("position", from, center, duration), "center");
}

void UIViewAnimateAlpha(UIView& view, CGFloat alpha, double duration) {
    CGFloat from = view.alpha();
    view.layer()->removeAnimationForKey("alpha");
    view.setAlpha(alpha);
    if (enabled && duration > 0 && from != alpha)
        view.layer()->addAnimation(*eased("opacity", from, alpha, duration), "alpha");
}

} // namespace tallyforge
