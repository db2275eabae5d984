#include "coregraphics/CGAffineTransform.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

CGAffineTransform CGAffineTransformMakeTranslation(CGFloat tx, CGFloat ty) {
    return {1, 0, 0, 1, tx, ty};
}

CGAffineTransform CGAffineTransformMakeScale(CGFloat sx, CGFloat sy) {
    return {sx, 0, 0, sy, 0, 0};
}

CGAffineTransform CGAffineTransformMakeRotation(CGFloat radians) {
    CGFloat sine = std::sin(radians);
    CGFloat cosine = std::cos(radians);
    return {cosine, sine, -sine, cosine, 0, 0};
}

CGAffineTransform CGAffineTransformTranslate(const CGAffineTransform& t, CGFloat tx, CGFloat ty) {
    return CGAffineTransformConcat(CGAffineTransformMakeTranslation(tx, ty), t);
}

CGAffineTransform CGAffineTransformScale(const CGAffineTransform& t, CGFloat sx, CGFloat sy) {
    return CGAffineTransformConcat(CGAffineTransformMakeScale(sx, sy), t);
}

CGAffineTransform CGAffineTransformRotate(const CGAffineTransform& t, CGFloat radians) {
    return CGAffineTransformConcat(CGAffineTransformMakeRotation(radians), t);
}

CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& t1, const CGAffineTransform& t2) {
    return {t1.a * t2.a + t1.b * t2.c,           t1.a * t2.b + t1.b * t2.d,
            t1.c * t2.a + t1.d * t2.c,           t1.c * t2.b + t1.d * t2.d,
            t1.tx * t2.a + t1.ty * t2.c + t2.tx, t1.tx * t2.b + t1.ty * t2.d + t2.ty};
}

CGAffineTransform CGAffineTransformInvert(const CGAffineTransform& t) {
    CGFloat determinant = t.a * t.d - t.b * t.c;
    if (determinant == 0 || !std::isfinite(determinant)) return t;
    CGAffineTransform inverse{t.d / determinant,
                              -t.b / determinant,
                              -t.c / determinant,
                              t.a / determinant,
                              (t.c * t.ty - t.d * t.tx) / determinant,
                              (t.b * t.tx - t.a * t.ty) / determinant};
    return CGAffineTransformIsFinite(inverse) ? inverse : t;
}

CGPoint CGPointApplyAffineTransform(const CGPoint& p, const CGAffineTransform& t) {
    return {t.a * p.x + t.c * p.y + t.tx, t.b * p.x + t.d * p.y + t.ty};
}

CGRect CGRectApplyAffineTransform(const CGRect& r, const CGAffineTransform& t) {
    CGFloat left = CGRectGetMinX(r);
    CGFloat top = CGRectGetMinY(r);
    CGFloat right = CGRectGetMaxX(r);
    CGFloat bottom = CGRectGetMaxY(r);
    const CGPoint corners[4] = {
        CGPointApplyAffineTransform({left, top}, t), CGPointApplyAffineTransform({right, top}, t),
        CGPointApplyAffineTransform({right, bottom}, t), CGPointApplyAffineTransform({left, bottom}, t)};
    auto [minX, maxX] = std::minmax({corners[0].x, corners[1].x, corners[2].x, corners[3].x});
    auto [minY, maxY] = std::minmax({corners[0].y, corners[1].y, corners[2].y, corners[3].y});
    return {{minX, minY}, {maxX - minX, maxY - minY}};
}

bool CGAffineTransformIsIdentity(const CGAffineTransform& t) {
    return t == CGAffineTransformIdentity;
}

bool CGAffineTransformIsFinite(const CGAffineTransform& t) {
    return std::isfinite(t.a) && std::isfinite(t.b) && std::isfinite(t.c) && std::isfinite(t.d) &&
           std::isfinite(t.tx) && std::isfinite(t.ty);
}

} // namespace tallyforge
