#pragma once

#include "quartzcore/CAAnimation.h"

#include <optional>

namespace tallyforge {

/// How long one run from the first value to the last takes, in seconds; always above 0.
CGFloat CADurationOf(const CAAnimation& animation);

/// How long the animation goes on from its begin time, repeats and ways back included; may be infinite.
CGFloat CAActiveDurationOf(const CAAnimation& animation);

/// Where an animation is: the share of the way, already paced by the timing function, and how many repeats
/// lie behind it.
struct CACyclePosition {
    CGFloat progress = 0;
    CGFloat finishedRepeats = 0;
};

/// The place this many seconds after its begin time, or nothing when it does not count at that time. Inside
/// a group nothing is removed on completion, so there only the fill mode counts after the end, and the last
/// moment still belongs to the animation.
std::optional<CACyclePosition> CACyclePositionAt(const CAAnimation& animation, CGFloat elapsed, bool inGroup);

} // namespace tallyforge
