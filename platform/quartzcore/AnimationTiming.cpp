#include "quartzcore/AnimationTiming.h"

#include <cmath>

namespace tallyforge {
namespace {

// Clocks count nanoseconds; seconds made from them may be off by less than half of one.
constexpr CGFloat clockStep = 5e-10;

CGFloat repeatsOf(const CAAnimation& animation) {
    const auto count = CGFloat(animation.repeatCount());
    return count > 0 ? count : 1; // also for what is not a number
}

CGFloat cycleOf(const CAAnimation& animation) {
    return CADurationOf(animation) * (animation.autoreverses() ? 2 : 1);
}

CACyclePosition positionWithin(const CAAnimation& animation, CGFloat sinceCycle, CGFloat finishedRepeats) {
    CGFloat share = sinceCycle / CADurationOf(animation);
    if (animation.autoreverses() && share > 1) share = 2 - share;
    share = share > 0 ? std::fmin(share, 1) : 0;
    if (animation.timingFunction()) share = animation.timingFunction()->solve(share);
    return {share, finishedRepeats};
}

CACyclePosition positionAtEnd(const CAAnimation& animation) {
    const CGFloat repeats = repeatsOf(animation);
    const CGFloat whole = std::floor(repeats);
    if (whole == repeats) return positionWithin(animation, cycleOf(animation), whole - 1);
    return positionWithin(animation, (repeats - whole) * cycleOf(animation), whole);
}

} // namespace

CGFloat CADurationOf(const CAAnimation& animation) {
    return animation.duration() > 0 ? animation.duration() : 0.25;
}

CGFloat CAActiveDurationOf(const CAAnimation& animation) {
    return cycleOf(animation) * repeatsOf(animation);
}

std::optional<CACyclePosition> CACyclePositionAt(const CAAnimation& animation, CGFloat elapsed,
                                                 bool inGroup) {
    if (!std::isfinite(elapsed)) return std::nullopt;
    const CAFillMode fill = animation.fillMode();
    if (elapsed < -clockStep) {
        if (fill != kCAFillModeBackwards && fill != kCAFillModeBoth) return std::nullopt;
        return positionWithin(animation, 0, 0);
    }
    elapsed = std::fmax(elapsed, 0);
    const CGFloat rest = CAActiveDurationOf(animation) - elapsed;
    if (rest < clockStep) {
        if (inGroup && rest > -clockStep) return positionAtEnd(animation);
        if (!inGroup && animation.removedOnCompletion()) return std::nullopt;
        if (fill != kCAFillModeForwards && fill != kCAFillModeBoth) return std::nullopt;
        return positionAtEnd(animation);
    }
    const CGFloat cycle = cycleOf(animation);
    if (!std::isfinite(cycle)) return positionWithin(animation, elapsed, 0);
    const CGFloat repeats = std::floor(elapsed / cycle);
    if (!std::isfinite(repeats)) return positionWithin(animation, 0, 0);
    return positionWithin(animation, std::fmod(elapsed, cycle), repeats);
}

} // namespace tallyforge
