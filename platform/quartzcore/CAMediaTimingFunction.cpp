#include "quartzcore/CAMediaTimingFunction.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {
namespace {

// One coordinate of the curve whose ends are 0 and 1.
CGFloat bezier(CGFloat c1, CGFloat c2, CGFloat u) {
    const CGFloat v = 1 - u;
    return 3 * v * v * u * c1 + 3 * v * u * u * c2 + u * u * u;
}

CGFloat bezierSlope(CGFloat c1, CGFloat c2, CGFloat u) {
    const CGFloat v = 1 - u;
    return 3 * v * v * c1 + 6 * v * u * (c2 - c1) + 3 * u * u * (1 - c2);
}

// The parameter at which the curve is at this x; x only grows with it.
CGFloat parameterAt(CGFloat c1, CGFloat c2, CGFloat x) {
    CGFloat low = 0, high = 1, u = x;
    for (int i = 0; i < 64; ++i) {
        const CGFloat error = bezier(c1, c2, u) - x;
        if (std::abs(error) < 1e-15) break;
        (error > 0 ? high : low) = u;
        const CGFloat slope = bezierSlope(c1, c2, u);
        const CGFloat newton = u - error / slope;
        u = newton > low && newton < high ? newton : (low + high) / 2;
    }
    return u;
}

} // namespace

CAMediaTimingFunction CAMediaTimingFunction::functionWithName(std::string_view name) {
    const auto named = [](std::string_view known, CGFloat c1x, CGFloat c1y, CGFloat c2x, CGFloat c2y) {
        CAMediaTimingFunction function = functionWithControlPoints(c1x, c1y, c2x, c2y);
        function.name_ = known;
        return function;
    };
    if (name == kCAMediaTimingFunctionEaseIn) return named(kCAMediaTimingFunctionEaseIn, 0.42, 0, 1, 1);
    if (name == kCAMediaTimingFunctionEaseOut) return named(kCAMediaTimingFunctionEaseOut, 0, 0, 0.58, 1);
    if (name == kCAMediaTimingFunctionEaseInEaseOut)
        return named(kCAMediaTimingFunctionEaseInEaseOut, 0.42, 0, 0.58, 1);
    if (name == kCAMediaTimingFunctionDefault)
        return named(kCAMediaTimingFunctionDefault, 0.25, 0.1, 0.25, 1);
    return {};
}

CAMediaTimingFunction CAMediaTimingFunction::functionWithControlPoints(CGFloat c1x, CGFloat c1y, CGFloat c2x,
                                                                       CGFloat c2y) {
    CAMediaTimingFunction function;
    function.name_ = {};
    // Time only runs forward, so x stays within the unit; y may swing beyond it.
    if (std::isfinite(c1x) && std::isfinite(c1y)) function.c1_ = {std::clamp<CGFloat>(c1x, 0, 1), c1y};
    if (std::isfinite(c2x) && std::isfinite(c2y)) function.c2_ = {std::clamp<CGFloat>(c2x, 0, 1), c2y};
    return function;
}

CGFloat CAMediaTimingFunction::solve(CGFloat t) const {
    if (!(t > 0)) return 0;
    if (t >= 1) return 1;
    if (c1_.x == c1_.y && c2_.x == c2_.y) return t;
    return bezier(c1_.y, c2_.y, parameterAt(c1_.x, c2_.x, t));
}

} // namespace tallyforge
