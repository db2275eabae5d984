#pragma once

#include "coregraphics/CGAffineTransform.h"

namespace tallyforge {

/// A 4 x 4 transform for row vectors: x' = x m11 + y m21 + z m31 + m41, and so on.
struct CATransform3D {
    CGFloat m11 = 1, m12 = 0, m13 = 0, m14 = 0;
    CGFloat m21 = 0, m22 = 1, m23 = 0, m24 = 0;
    CGFloat m31 = 0, m32 = 0, m33 = 1, m34 = 0;
    CGFloat m41 = 0, m42 = 0, m43 = 0, m44 = 1;
    bool operator==(const CATransform3D&) const = default;
};

inline constexpr CATransform3D CATransform3DIdentity{};

CATransform3D CATransform3DMakeTranslation(CGFloat tx, CGFloat ty, CGFloat tz);
CATransform3D CATransform3DMakeScale(CGFloat sx, CGFloat sy, CGFloat sz);
CATransform3D CATransform3DMakeRotation(CGFloat radians, CGFloat x, CGFloat y, CGFloat z);
CATransform3D CATransform3DMakeAffineTransform(const CGAffineTransform& t);
/// First the scale, rotation or translation, then t.
CATransform3D CATransform3DScale(const CATransform3D& t, CGFloat sx, CGFloat sy, CGFloat sz);
CATransform3D CATransform3DRotate(const CATransform3D& t, CGFloat radians, CGFloat x, CGFloat y, CGFloat z);
CATransform3D CATransform3DTranslate(const CATransform3D& t, CGFloat tx, CGFloat ty, CGFloat tz);
/// First a, then b.
CATransform3D CATransform3DConcat(const CATransform3D& a, const CATransform3D& b);
/// What remains in the plane when the depth is dropped: there is no perspective, so this is how it draws.
CGAffineTransform CATransform3DGetAffineTransform(const CATransform3D& t);

/// The parts of a transform that key paths like "transform.rotation.z" address. Composed they are the
/// transform again: scale, then shear, then rotations about x, y and z, then translation.
struct CATransformComponents {
    CGFloat translationX = 0, translationY = 0, translationZ = 0;
    CGFloat rotationX = 0, rotationY = 0, rotationZ = 0; ///< radians
    CGFloat scaleX = 1, scaleY = 1, scaleZ = 1;
    CGFloat shearXY = 0, shearXZ = 0, shearYZ = 0;
};
CATransformComponents CATransform3DDecompose(const CATransform3D& t);
CATransform3D CATransform3DCompose(const CATransformComponents& c);

} // namespace tallyforge
