#pragma once

#include "coregraphics/CGGeometry.h"

#include <optional>
#include <string_view>

namespace tallyforge {

inline constexpr std::string_view kCAMediaTimingFunctionLinear = "linear";
inline constexpr std::string_view kCAMediaTimingFunctionEaseIn = "easeIn";
inline constexpr std::string_view kCAMediaTimingFunctionEaseOut = "easeOut";
inline constexpr std::string_view kCAMediaTimingFunctionEaseInEaseOut = "easeInEaseOut";
inline constexpr std::string_view kCAMediaTimingFunctionDefault = "default";

/// A pace: a cubic Bezier from (0, 0) to (1, 1) that maps the share of the time to the share of the way.
class CAMediaTimingFunction {
  public:
    /// The named one; linear for a name that is not known.
    static CAMediaTimingFunction functionWithName(std::string_view name);
    static CAMediaTimingFunction functionWithControlPoints(CGFloat c1x, CGFloat c1y, CGFloat c2x,
                                                           CGFloat c2y);

    /// The share of the way at this share of the time, which is held to [0, 1]; to 1e-7.
    CGFloat solve(CGFloat t) const;
    /// The name it was made with; empty for control points.
    std::string_view name() const { return name_; }

  private:
    CGPoint c1_{0, 0};
    CGPoint c2_{1, 1};
    std::string_view name_ = kCAMediaTimingFunctionLinear;
};

} // namespace tallyforge
