#include "quartzcore/CATransform3D.h"

#include <array>
#include <cmath>

namespace tallyforge {
namespace {

struct Vector {
    CGFloat x = 0, y = 0, z = 0;
};

Vector operator*(const Vector& v, CGFloat s) {
    return {v.x * s, v.y * s, v.z * s};
}
Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
CGFloat dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
CGFloat length(const Vector& v) {
    return std::hypot(v.x, v.y, v.z);
}
Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// What is left of a row after taking its parts along earlier rows away is direction only above this share.
constexpr CGFloat parallel = 1e-12;

// Fills the missing directions of a right-handed frame, as close to the coordinate axes as they can be.
void completeFrame(std::array<Vector, 3>& frame, const std::array<bool, 3>& known) {
    static constexpr std::array<Vector, 3> axes{Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}};
    const int count = int(known[0]) + int(known[1]) + int(known[2]);
    if (count == 3) return;
    if (count == 0) {
        frame = axes;
        return;
    }
    size_t missing = known[0] ? (known[1] ? 2 : 1) : 0;
    if (count == 1) {
        const size_t base = known[0] ? 0 : (known[1] ? 1 : 2);
        Vector side = axes[missing] - frame[base] * dot(axes[missing], frame[base]);
        if (length(side) < 1e-6) side = axes[base] - frame[base] * dot(axes[base], frame[base]);
        frame[missing] = side * (1 / length(side));
        missing = 3 - base - missing;
    }
    frame[missing] = cross(frame[(missing + 1) % 3], frame[(missing + 2) % 3]);
}

} // namespace

CATransform3D CATransform3DMakeTranslation(CGFloat tx, CGFloat ty, CGFloat tz) {
    CATransform3D t;
    t.m41 = tx;
    t.m42 = ty;
    t.m43 = tz;
    return t;
}

CATransform3D CATransform3DMakeScale(CGFloat sx, CGFloat sy, CGFloat sz) {
    CATransform3D t;
    t.m11 = sx;
    t.m22 = sy;
    t.m33 = sz;
    return t;
}

CATransform3D CATransform3DMakeRotation(CGFloat radians, CGFloat x, CGFloat y, CGFloat z) {
    const CGFloat norm = std::hypot(x, y, z);
    if (!(norm > 0) || !std::isfinite(norm) || !std::isfinite(radians)) return CATransform3DIdentity;
    x /= norm;
    y /= norm;
    z /= norm;
    const CGFloat c = std::cos(radians), s = std::sin(radians), k = 1 - c;
    CATransform3D t;
    t.m11 = c + x * x * k;
    t.m12 = x * y * k + z * s;
    t.m13 = x * z * k - y * s;
    t.m21 = x * y * k - z * s;
    t.m22 = c + y * y * k;
    t.m23 = y * z * k + x * s;
    t.m31 = x * z * k + y * s;
    t.m32 = y * z * k - x * s;
    t.m33 = c + z * z * k;
    return t;
}

CATransform3D CATransform3DMakeAffineTransform(const CGAffineTransform& a) {
    CATransform3D t;
    t.m11 = a.a;
    t.m12 = a.b;
    t.m21 = a.c;
    t.m22 = a.d;
    t.m41 = a.tx;
    t.m42 = a.ty;
    return t;
}

CATransform3D CATransform3DScale(const CATransform3D& t, CGFloat sx, CGFloat sy, CGFloat sz) {
    return CATransform3DConcat(CATransform3DMakeScale(sx, sy, sz), t);
}

CATransform3D CATransform3DRotate(const CATransform3D& t, CGFloat radians, CGFloat x, CGFloat y, CGFloat z) {
    return CATransform3DConcat(CATransform3DMakeRotation(radians, x, y, z), t);
}

CATransform3D CATransform3DTranslate(const CATransform3D& t, CGFloat tx, CGFloat ty, CGFloat tz) {
    return CATransform3DConcat(CATransform3DMakeTranslation(tx, ty, tz), t);
}

CATransform3D CATransform3DConcat(const CATransform3D& a, const CATransform3D& b) {
    CATransform3D r;
    r.m11 = a.m11 * b.m11 + a.m12 * b.m21 + a.m13 * b.m31 + a.m14 * b.m41;
    r.m12 = a.m11 * b.m12 + a.m12 * b.m22 + a.m13 * b.m32 + a.m14 * b.m42;
    r.m13 = a.m11 * b.m13 + a.m12 * b.m23 + a.m13 * b.m33 + a.m14 * b.m43;
    r.m14 = a.m11 * b.m14 + a.m12 * b.m24 + a.m13 * b.m34 + a.m14 * b.m44;
    r.m21 = a.m21 * b.m11 + a.m22 * b.m21 + a.m23 * b.m31 + a.m24 * b.m41;
    r.m22 = a.m21 * b.m12 + a.m22 * b.m22 + a.m23 * b.m32 + a.m24 * b.m42;
    r.m23 = a.m21 * b.m13 + a.m22 * b.m23 + a.m23 * b.m33 + a.m24 * b.m43;
    r.m24 = a.m21 * b.m14 + a.m22 * b.m24 + a.m23 * b.m34 + a.m24 * b.m44;
    r.m31 = a.m31 * b.m11 + a.m32 * b.m21 + a.m33 * b.m31 + a.m34 * b.m41;
    r.m32 = a.m31 * b.m12 + a.m32 * b.m22 + a.m33 * b.m32 + a.m34 * b.m42;
    r.m33 = a.m31 * b.m13 + a.m32 * b.m23 + a.m33 * b.m33 + a.m34 * b.m43;
    r.m34 = a.m31 * b.m14 + a.m32 * b.m24 + a.m33 * b.m34 + a.m34 * b.m44;
    r.m41 = a.m41 * b.m11 + a.m42 * b.m21 + a.m43 * b.m31 + a.m44 * b.m41;
    r.m42 = a.m41 * b.m12 + a.m42 * b.m22 + a.m43 * b.m32 + a.m44 * b.m42;
    r.m43 = a.m41 * b.m13 + a.m42 * b.m23 + a.m43 * b.m33 + a.m44 * b.m43;
    r.m44 = a.m41 * b.m14 + a.m42 * b.m24 + a.m43 * b.m34 + a.m44 * b.m44;
    return r;
}

CGAffineTransform CATransform3DGetAffineTransform(const CATransform3D& t) {
    return {t.m11, t.m12, t.m21, t.m22, t.m41, t.m42};
}

CATransformComponents CATransform3DDecompose(const CATransform3D& t) {
    CATransformComponents c;
    c.translationX = t.m41;
    c.translationY = t.m42;
    c.translationZ = t.m43;

    const std::array<Vector, 3> rows{Vector{t.m11, t.m12, t.m13}, Vector{t.m21, t.m22, t.m23},
                                     Vector{t.m31, t.m32, t.m33}};
    std::array<Vector, 3> frame;
    std::array<bool, 3> known{};
    std::array<CGFloat, 3> scale{};
    std::array<std::array<CGFloat, 3>, 3> along{}; // how much of each row lies along the directions before it
    for (size_t i = 0; i < 3; ++i) {
        const CGFloat whole = length(rows[i]);
        if (!(whole > 0) || !std::isfinite(whole)) continue;
        Vector rest = rows[i] * (1 / whole);
        for (size_t j = 0; j < i; ++j) {
            if (!known[j]) continue;
            const CGFloat part = dot(rest, frame[j]);
            along[i][j] = part * whole;
            rest = rest - frame[j] * part;
        }
        const CGFloat remaining = length(rest);
        if (!(remaining > parallel)) continue;
        frame[i] = rest * (1 / remaining);
        scale[i] = remaining * whole;
        known[i] = true;
    }
    completeFrame(frame, known);

    // A mirror image: the axis that points most against its own direction takes the sign, so that plain
    // negative scales come out as they were put in.
    if (dot(cross(frame[0], frame[1]), frame[2]) < 0) {
        size_t axis = frame[1].y < frame[0].x ? 1 : 0;
        if (frame[2].z < (axis == 1 ? frame[1].y : frame[0].x)) axis = 2;
        frame[axis] = frame[axis] * -1;
        scale[axis] = -scale[axis];
        for (size_t i = axis + 1; i < 3; ++i)
            along[i][axis] = -along[i][axis];
    }

    c.scaleX = scale[0];
    c.scaleY = scale[1];
    c.scaleZ = scale[2];
    if (scale[1] != 0) c.shearXY = along[1][0] / scale[1];
    if (scale[2] != 0) {
        c.shearXZ = along[2][0] / scale[2];
        c.shearYZ = along[2][1] / scale[2];
    }

    const CGFloat flat = std::hypot(frame[0].x, frame[0].y);
    c.rotationY = std::atan2(-frame[0].z, flat);
    if (flat > 1e-9) {
        c.rotationX = std::atan2(frame[1].z, frame[2].z);
        c.rotationZ = std::atan2(frame[0].y, frame[0].x);
    } else { // a quarter turn about y, where x and z turn about the same axis
        c.rotationZ = std::atan2(-frame[1].x, frame[1].y);
    }
    return c;
}

CATransform3D CATransform3DCompose(const CATransformComponents& c) {
    const CGFloat cx = std::cos(c.rotationX), sx = std::sin(c.rotationX);
    const CGFloat cy = std::cos(c.rotationY), sy = std::sin(c.rotationY);
    const CGFloat cz = std::cos(c.rotationZ), sz = std::sin(c.rotationZ);
    const Vector x{cy * cz, cy * sz, -sy};
    const Vector y{sx * sy * cz - cx * sz, sx * sy * sz + cx * cz, sx * cy};
    const Vector z{cx * sy * cz + sx * sz, cx * sy * sz - sx * cz, cx * cy};
    CATransform3D t;
    t.m11 = c.scaleX * x.x;
    t.m12 = c.scaleX * x.y;
    t.m13 = c.scaleX * x.z;
    t.m21 = c.scaleY * (c.shearXY * x.x + y.x);
    t.m22 = c.scaleY * (c.shearXY * x.y + y.y);
    t.m23 = c.scaleY * (c.shearXY * x.z + y.z);
    t.m31 = c.scaleZ * (c.shearXZ * x.x + c.shearYZ * y.x + z.x);
    t.m32 = c.scaleZ * (c.shearXZ * x.y + c.shearYZ * y.y + z.y);
    t.m33 = c.scaleZ * (c.shearXZ * x.z + c.shearYZ * y.z + z.z);
    t.m41 = c.translationX;
    t.m42 = c.translationY;
    t.m43 = c.translationZ;
    return t;
}

} // namespace tallyforge
