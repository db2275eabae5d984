#include "preview/animation/MarkAnimation.h"

#include "foundation/Dispatch.h"

#include <limits>

namespace tallyforge {

namespace {

constexpr float kTwoPi = 6.2831855F;
constexpr float kForever = std::numeric_limits<float>::infinity();
constexpr int64_t kPulseDelay = 200'000'000; // nanoseconds

void Add(CALayer& layer, const CAAnimation& animation) {
    layer.addAnimation(animation, kMarkAnimationKey);
}

std::shared_ptr<CABasicAnimation> Basic(const char* keyPath, CAValue from, CAValue to, double duration) {
    auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
    animation->setFromValue(from);
    animation->setToValue(to);
    animation->setDuration(duration);
    animation->setRepeatCount(kForever);
    return animation;
}

std::shared_ptr<CAKeyframeAnimation> Keyframes(const char* keyPath, double duration) {
    auto animation = CAKeyframeAnimation::animationWithKeyPath(keyPath);
    animation->setDuration(duration);
    animation->setRepeatCount(kForever);
    return animation;
}

void AddSpin(CALayer& layer, float radians, double duration) {
    Add(layer, *Basic("transform.rotation.z", CGFloat{0}, CGFloat{radians}, duration));
}

void AddFlip(CALayer& layer, const char* keyPath, float radians, double duration) {
    auto flip = Basic(keyPath, {}, CGFloat{radians}, duration);
    flip->setCumulative(true);
    flip->setFillMode(kCAFillModeForwards);
    Add(layer, *flip);
}

// 30 points up and back, quick at first.
std::shared_ptr<CAKeyframeAnimation> MakeHop(const CALayer& layer, double duration) {
    CGPoint p = layer.position();
    CGMutablePathRef path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, p.x, p.y);
    CGPathAddLineToPoint(path, nullptr, p.x, p.y - 30);
    CGPathAddLineToPoint(path, nullptr, p.x, p.y);
    auto hop = Keyframes("position", duration);
    hop->setPath(path);
    CGPathRelease(path);
    hop->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseOut));
    return hop;
}

void AddHopAndSpin(CALayer& layer, double duration) {
    auto spin = Basic("transform.rotation.z", {}, CGFloat{kTwoPi}, duration);
    spin->setCumulative(true);
    auto group = CAAnimationGroup::animation();
    group->setAnimations({MakeHop(layer, duration), spin});
    group->setDuration(duration);
    group->setRepeatCount(kForever);
    Add(layer, *group);
}

// Up to the layer's own height, down again, and a second hop of a quarter of it.
void AddBounce(CALayer& layer, double duration, float scale, MarkKind kind) {
    constexpr int kHeights[] = {0,  60, 83, 100, 114, 124, 128, 128, 124, 114, 100,
                                83, 60, 32, 0,   0,   18,  28,  32,  28,  18,  0}; // in 128ths
    CGFloat height = layer.frame().size.height;
    std::vector<CAValue> values;
    for (int v : kHeights) {
        CATransform3D transform = CATransform3DMakeTranslation(0, v * (-1.0 / 128) * height, 0);
        if (kind != MarkKind::badge) // these two carry their scale on the animated layer itself
            transform = CATransform3DScale(transform, scale, scale, 1);
        values.emplace_back(transform);
    }
    auto bounce = Keyframes("transform", duration);
    bounce->setValues(std::move(values));
    bounce->setAutoreverses(false);
    bounce->setFillMode(kCAFillModeForwards);
    Add(layer, *bounce);
}

// The layer is held until then, even if its mark has been built anew meanwhile.
void AddPulseLater(const std::shared_ptr<CALayer>& layer, float share, double duration, float scale) {
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, kPulseDelay), dispatch_get_main_queue(),
                   [layer, share, duration, scale] {
                       float to = scale + scale * share;
                       auto pulse = Basic("transform.scale", CGFloat{scale}, CGFloat{to}, duration);
                       pulse->setAutoreverses(true);
                       Add(*layer, *pulse);
                   });
}

void AddSqueeze(CALayer& layer, double duration) {
    auto squeeze = Keyframes("transform.scale", duration);
    squeeze->setValues({CGFloat{1.0}, CGFloat{0.7}, CGFloat{1.0}});
    squeeze->setKeyTimes({0, 0.5, 1.0});
    squeeze->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn));
    squeeze->setFillMode(kCAFillModeBoth);
    Add(layer, *squeeze);
}

void AddBlink(CALayer& layer, double duration, float alpha) {
    auto blink = Basic("opacity", CGFloat{alpha}, CGFloat{0}, duration);
    blink->setAutoreverses(true);
    Add(layer, *blink);
}

void AddShake(CALayer& layer, double duration) {
    auto shake = Keyframes("position.x", duration);
    shake->setValues({CGFloat{0}, CGFloat{8}, CGFloat{-8}, CGFloat{4}, CGFloat{0}});
    shake->setKeyTimes({0, 1.0 / 6, 0.5, 5.0 / 6, 1});
    shake->setAdditive(true);
    Add(layer, *shake);
}

} // namespace

void ApplyMarkAnimation(const std::shared_ptr<CALayer>& layer, int32_t type, float duration, float scale,
                        float alpha, MarkKind kind) {
    switch (type) {
    case 0:
        layer->removeAllAnimations();
        break;
    case 1:
        AddSpin(*layer, kTwoPi, duration);
        break;
    case 2:
        AddSpin(*layer, -kTwoPi, duration);
        break;
    case 3:
        AddFlip(*layer, "transform.rotation.x", kTwoPi, duration);
        break;
    case 4:
        AddFlip(*layer, "transform.rotation.y", -kTwoPi, duration);
        break;
    case 5:
        Add(*layer, *MakeHop(*layer, duration));
        break;
    case 6:
        AddBounce(*layer, duration, scale, kind);
        break;
    case 7:
        AddHopAndSpin(*layer, duration);
        break;
    case 8:
        AddPulseLater(layer, 0.3F, duration, scale);
        break;
    case 9:
        AddPulseLater(layer, -0.3F, duration, scale);
        break;
    case 10:
        AddSqueeze(*layer, duration);
        break;
    case 11:
        AddBlink(*layer, duration, alpha);
        break;
    case 12:
        AddShake(*layer, duration);
        break;
    default: // no such animation: what runs goes on
        break;
    }
}

} // namespace tallyforge
