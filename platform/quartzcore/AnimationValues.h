#pragma once

#include "quartzcore/CAAnimation.h"
#include "quartzcore/Presentation.h"

#include <optional>
#include <string_view>

namespace tallyforge {

/// The value this share of the way between two of the same kind; nothing when the kinds differ. Transforms
/// are taken apart, their rotation goes the shortest way.
CAValue CAInterpolate(const CAValue& from, const CAValue& to, CGFloat share);

/// The value with `end` added so many times; transforms are applied after one another instead.
CAValue CAAccumulate(const CAValue& value, const CAValue& end, CGFloat times);

/// What a basic or keyframe animation's values come to at this place; `model` stands in for missing ends.
CAValue CABasicValue(const CABasicAnimation& animation, const CAValue& model, CGFloat progress);
CAValue CAKeyframeValue(const CAKeyframeAnimation& animation, CGFloat progress);
/// Where the values end, which is what a cumulative animation adds.
CAValue CAKeyframeEnd(const CAKeyframeAnimation& animation);

/// The values of a layer as key paths address them.
class CAAnimatedValues {
  public:
    /// The model values.
    explicit CAAnimatedValues(const CALayer& layer);

    static bool knows(std::string_view keyPath);
    /// Nothing for a key path that is not known. "transform.scale" is the mean of the three scales.
    CAValue get(std::string_view keyPath);
    /// Replaces the value or adds to it. Unknown key paths, values of another kind and values that are not
    /// finite change nothing.
    void set(std::string_view keyPath, const CAValue& value, bool add);
    /// All values, the transform put together.
    const CAPresentation& result();

  private:
    CGFloat* number(std::string_view keyPath);
    CGPoint* point(std::string_view keyPath);
    CATransformComponents& components();

    CAPresentation values_;
    // Kept apart from one component to the next, because a transform put together can be taken apart in
    // more than one way.
    std::optional<CATransformComponents> components_;
};

} // namespace tallyforge
