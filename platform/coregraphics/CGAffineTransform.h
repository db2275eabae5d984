#pragma once

#include "coregraphics/CGGeometry.h"

namespace tallyforge {

/// x' = a x + c y + tx, y' = b x + d y + ty.
struct CGAffineTransform {
    CGFloat a = 1;
    CGFloat b = 0;
    CGFloat c = 0;
    CGFloat d = 1;
    CGFloat tx = 0;
    CGFloat ty = 0;
    bool operator==(const CGAffineTransform&) const = default;
};

inline constexpr CGAffineTransform CGAffineTransformIdentity{};

CGAffineTransform CGAffineTransformMakeTranslation(CGFloat tx, CGFloat ty);
CGAffineTransform CGAffineTransformMakeScale(CGFloat sx, CGFloat sy);
CGAffineTransform CGAffineTransformMakeRotation(CGFloat radians);
/// First the translation, scale or rotation, then t.
CGAffineTransform CGAffineTransformTranslate(const CGAffineTransform& t, CGFloat tx, CGFloat ty);
CGAffineTransform CGAffineTransformScale(const CGAffineTransform& t, CGFloat sx, CGFloat sy);
CGAffineTransform CGAffineTransformRotate(const CGAffineTransform& t, CGFloat radians);
/// First t1, then t2.
CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& t1, const CGAffineTransform& t2);
/// t itself when it cannot be inverted.
CGAffineTransform CGAffineTransformInvert(const CGAffineTransform& t);
CGPoint CGPointApplyAffineTransform(const CGPoint& p, const CGAffineTransform& t);
/// The smallest upright rectangle around the transformed one.
CGRect CGRectApplyAffineTransform(const CGRect& r, const CGAffineTransform& t);
bool CGAffineTransformIsIdentity(const CGAffineTransform& t);
/// All six numbers are finite.
bool CGAffineTransformIsFinite(const CGAffineTransform& t);

} // namespace tallyforge
