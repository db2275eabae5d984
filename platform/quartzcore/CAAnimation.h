#pragma once

#include "coregraphics/CGPath.h"
#include "quartzcore/CAMediaTimingFunction.h"
#include "quartzcore/CATransform3D.h"

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tallyforge {

/// What an animation drives a property to: nothing, a number, a point, or a transform.
using CAValue = std::variant<std::monostate, CGFloat, CGPoint, CATransform3D>;

enum class CAFillMode { removed, forwards, backwards, both };
inline constexpr CAFillMode kCAFillModeRemoved = CAFillMode::removed;
inline constexpr CAFillMode kCAFillModeForwards = CAFillMode::forwards;
inline constexpr CAFillMode kCAFillModeBackwards = CAFillMode::backwards;
inline constexpr CAFillMode kCAFillModeBoth = CAFillMode::both;

/// What all animations share: when and how often. Times are seconds.
class CAAnimation {
  public:
    virtual ~CAAnimation() = default;
    virtual std::shared_ptr<CAAnimation> copy() const = 0;
    /// The class's name on the platform.
    virtual const char* className() const = 0;

    CGFloat duration() const { return duration_; }
    void setDuration(CGFloat seconds) { duration_ = seconds; }
    float repeatCount() const { return repeatCount_; }
    void setRepeatCount(float count) { repeatCount_ = count; }
    bool autoreverses() const { return autoreverses_; }
    void setAutoreverses(bool on) { autoreverses_ = on; }
    CAFillMode fillMode() const { return fillMode_; }
    void setFillMode(CAFillMode mode) { fillMode_ = mode; }
    bool removedOnCompletion() const { return removedOnCompletion_; }
    void setRemovedOnCompletion(bool on) { removedOnCompletion_ = on; }
    /// Nothing means linear.
    const std::optional<CAMediaTimingFunction>& timingFunction() const { return timingFunction_; }
    void setTimingFunction(std::optional<CAMediaTimingFunction> function) { timingFunction_ = function; }
    /// On the layer's clock; 0 means the moment at which it is added. Within a group: from the group's begin.
    CGFloat beginTime() const { return beginTime_; }
    void setBeginTime(CGFloat seconds) { beginTime_ = seconds; }

  private:
    CGFloat duration_ = 0;  // 0 means a quarter of a second
    float repeatCount_ = 0; // 0 means once
    bool autoreverses_ = false;
    CAFillMode fillMode_ = kCAFillModeRemoved;
    bool removedOnCompletion_ = true;
    std::optional<CAMediaTimingFunction> timingFunction_;
    CGFloat beginTime_ = 0;
};

/// An animation of one property, named by its key path ("position", "position.x", "transform",
/// "transform.rotation.z", "transform.scale", "opacity", ...).
class CAPropertyAnimation : public CAAnimation {
  public:
    const std::string& keyPath() const { return keyPath_; }
    void setKeyPath(std::string keyPath) { keyPath_ = std::move(keyPath); }
    /// Added to the model value instead of replacing it.
    bool additive() const { return additive_; }
    void setAdditive(bool on) { additive_ = on; }
    /// The end value is added once for every finished repeat.
    bool cumulative() const { return cumulative_; }
    void setCumulative(bool on) { cumulative_ = on; }

  private:
    std::string keyPath_;
    bool additive_ = false;
    bool cumulative_ = false;
};

/// From one value to another. Without a from value it runs from the layer's live model value.
class CABasicAnimation final : public CAPropertyAnimation {
  public:
    static std::shared_ptr<CABasicAnimation> animationWithKeyPath(std::string keyPath);
    std::shared_ptr<CAAnimation> copy() const override { return std::make_shared<CABasicAnimation>(*this); }
    const char* className() const override { return "CABasicAnimation"; }

    const CAValue& fromValue() const { return fromValue_; }
    void setFromValue(CAValue value) { fromValue_ = value; }
    const CAValue& toValue() const { return toValue_; }
    void setToValue(CAValue value) { toValue_ = value; }

  private:
    CAValue fromValue_;
    CAValue toValue_;
};

/// Through several values, or along a path (which counts before the values). Without key times the values are
/// evenly spaced. On a path the end of every line is a keyframe, the move is the first.
class CAKeyframeAnimation final : public CAPropertyAnimation {
  public:
    static std::shared_ptr<CAKeyframeAnimation> animationWithKeyPath(std::string keyPath);
    std::shared_ptr<CAAnimation> copy() const override {
        return std::make_shared<CAKeyframeAnimation>(*this);
    }
    const char* className() const override { return "CAKeyframeAnimation"; }

    const std::vector<CAValue>& values() const { return values_; }
    void setValues(std::vector<CAValue> values) { values_ = std::move(values); }
    const std::vector<CGFloat>& keyTimes() const { return keyTimes_; }
    void setKeyTimes(std::vector<CGFloat> keyTimes) { keyTimes_ = std::move(keyTimes); }
    const CGPathRef& path() const { return path_; }
    void setPath(CGPathRef path) { path_ = std::move(path); }

  private:
    std::vector<CAValue> values_;
    std::vector<CGFloat> keyTimes_;
    CGPathRef path_;
};

/// Several at once, clipped to the group's duration and repeated with it.
class CAAnimationGroup final : public CAAnimation {
  public:
    static std::shared_ptr<CAAnimationGroup> animation() { return std::make_shared<CAAnimationGroup>(); }
    std::shared_ptr<CAAnimation> copy() const override;
    const char* className() const override { return "CAAnimationGroup"; }

    const std::vector<std::shared_ptr<CAAnimation>>& animations() const { return animations_; }
    void setAnimations(std::vector<std::shared_ptr<CAAnimation>> animations) {
        animations_ = std::move(animations);
    }

  private:
    std::vector<std::shared_ptr<CAAnimation>> animations_;
};

} // namespace tallyforge
