#include "quartzcore/Presentation.h"

#include "foundation/Dispatch.h"
#include "quartzcore/AnimationTiming.h"
#include "quartzcore/AnimationValues.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {
namespace {

// Groups within groups further down than this do not count.
constexpr int deepestGroup = 16;

class Evaluation {
  public:
    explicit Evaluation(const CALayer& layer) : layer_(layer), values_(layer) {}

    void apply(const CAAnimation& animation, CGFloat elapsed, int depth) {
        const auto place = CACyclePositionAt(animation, elapsed, depth > 0);
        if (!place) return;
        if (const auto* basic = dynamic_cast<const CABasicAnimation*>(&animation)) {
            const bool open = !basic->fromValue().index() || !basic->toValue().index();
            const CAValue model = open ? CAAnimatedValues(layer_).get(basic->keyPath()) : CAValue{};
            const CAValue& end = basic->toValue().index() ? basic->toValue() : model;
            put(*basic, CABasicValue(*basic, model, place->progress), end, place->finishedRepeats);
        } else if (const auto* keyframes = dynamic_cast<const CAKeyframeAnimation*>(&animation)) {
            const CAValue end = keyframes->cumulative() ? CAKeyframeEnd(*keyframes) : CAValue{};
            put(*keyframes, CAKeyframeValue(*keyframes, place->progress), end, place->finishedRepeats);
        } else if (const auto* group = dynamic_cast<const CAAnimationGroup*>(&animation)) {
            applyGroup(*group, place->progress * CADurationOf(*group), depth);
        }
    }

    const CAPresentation& result() { return values_.result(); }

  private:
    void put(const CAPropertyAnimation& animation, const CAValue& value, const CAValue& end,
             CGFloat repeats) {
        const bool accumulates = animation.cumulative() && repeats > 0;
        values_.set(animation.keyPath(), accumulates ? CAAccumulate(value, end, repeats) : value,
                    animation.additive());
    }

    void applyGroup(const CAAnimationGroup& group, CGFloat groupTime, int depth) {
        if (depth >= deepestGroup) return;
        for (const auto& child : group.animations()) {
            if (child) apply(*child, groupTime - child->beginTime(), depth + 1);
        }
    }

    const CALayer& layer_;
    CAAnimatedValues values_;
};

bool changesAnything(const CAAnimation& animation, int depth = 0) {
    if (const auto* property = dynamic_cast<const CAPropertyAnimation*>(&animation))
        return CAAnimatedValues::knows(property->keyPath());
    const auto* group = dynamic_cast<const CAAnimationGroup*>(&animation);
    if (!group || depth >= deepestGroup) return false;
    return std::any_of(group->animations().begin(), group->animations().end(),
                       [depth](const auto& child) { return child && changesAnything(*child, depth + 1); });
}

bool hasEnded(const CAAnimation& animation, CGFloat seconds) {
    return seconds - animation.beginTime() > CAActiveDurationOf(animation) - 5e-10;
}

} // namespace

CAPresentation CAPresentationAt(const CALayer& layer, CGFloat seconds) {
    Evaluation evaluation(layer);
    for (const auto& [key, animation] : layer.animations())
        evaluation.apply(*animation, seconds - animation->beginTime(), 0);
    return evaluation.result();
}

CGFloat CACurrentMediaTime() {
    return CGFloat(MainQueue::main().clock().nanoseconds()) / CGFloat(NSEC_PER_SEC);
}

bool CAHasUnfinishedAnimation(const CALayer& layer, CGFloat seconds) {
    return std::any_of(layer.animations().begin(), layer.animations().end(), [seconds](const auto& present) {
        return !hasEnded(*present.animation, seconds) && changesAnything(*present.animation);
    });
}

bool CAIsAnimating(const CALayer& root, CGFloat seconds) {
    if (root.hidden()) return false;
    if (CAHasUnfinishedAnimation(root, seconds)) return true;
    return std::any_of(root.sublayers().begin(), root.sublayers().end(),
                       [seconds](const auto& sublayer) { return CAIsAnimating(*sublayer, seconds); });
}

void CARemoveFinishedAnimations(CALayer& root, CGFloat seconds) {
    std::vector<std::string> finished;
    for (const auto& [key, animation] : root.animations()) {
        if (animation->removedOnCompletion() && hasEnded(*animation, seconds)) finished.push_back(key);
    }
    for (const std::string& key : finished)
        root.removeAnimationForKey(key);
    for (const auto& sublayer : root.sublayers())
        CARemoveFinishedAnimations(*sublayer, seconds);
}

} // namespace tallyforge
