#include "quartzcore/CATransform3D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace tallyforge {
namespace {

constexpr double pi = std::numbers::pi;

constexpr CGFloat CATransform3D::*entries[16] = {
    &CATransform3D::m11, &CATransform3D::m12, &CATransform3D::m13, &CATransform3D::m14,
    &CATransform3D::m21, &CATransform3D::m22, &CATransform3D::m23, &CATransform3D::m24,
    &CATransform3D::m31, &CATransform3D::m32, &CATransform3D::m33, &CATransform3D::m34,
    &CATransform3D::m41, &CATransform3D::m42, &CATransform3D::m43, &CATransform3D::m44};

void expectNear(const CATransform3D& actual, const CATransform3D& expected, double tolerance) {
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(actual.*entries[i], expected.*entries[i], tolerance) << "m" << i / 4 + 1 << i % 4 + 1;
}

TEST(Transform3D, MakesTheMatricesOfRowVectors) {
    const CATransform3D move = CATransform3DMakeTranslation(3, -4, 5);
    EXPECT_EQ(move.m41, 3);
    EXPECT_EQ(move.m42, -4);
    EXPECT_EQ(move.m43, 5);
    EXPECT_EQ(move.m11, 1);
    const CATransform3D scale = CATransform3DMakeScale(2, 3, 4);
    EXPECT_EQ(scale.m11, 2);
    EXPECT_EQ(scale.m22, 3);
    EXPECT_EQ(scale.m33, 4);
    // A quarter turn about z takes the x axis to the y axis, about x y to z, about y z to x.
    const CATransform3D z = CATransform3DMakeRotation(pi / 2, 0, 0, 7);
    EXPECT_NEAR(z.m12, 1, 1e-15);
    EXPECT_NEAR(z.m21, -1, 1e-15);
    EXPECT_NEAR(z.m11, 0, 1e-15);
    EXPECT_EQ(z.m33, 1);
    EXPECT_NEAR(CATransform3DMakeRotation(pi / 2, 1, 0, 0).m23, 1, 1e-15);
    EXPECT_NEAR(CATransform3DMakeRotation(pi / 2, 0, 1, 0).m31, 1, 1e-15);
}

TEST(Transform3D, RotatesAboutASlantedAxis) {
    // A third of a turn about the diagonal sends x to y, y to z and z to x.
    const CATransform3D t = CATransform3DMakeRotation(2 * pi / 3, 1, 1, 1);
    EXPECT_NEAR(t.m12, 1, 1e-15);
    EXPECT_NEAR(t.m23, 1, 1e-15);
    EXPECT_NEAR(t.m31, 1, 1e-15);
    EXPECT_NEAR(t.m11, 0, 1e-15);
}

TEST(Transform3D, WithoutAnAxisThereIsNoRotation) {
    EXPECT_EQ(CATransform3DMakeRotation(1, 0, 0, 0), CATransform3DIdentity);
    EXPECT_EQ(CATransform3DMakeRotation(std::numeric_limits<double>::infinity(), 0, 0, 1),
              CATransform3DIdentity);
}

TEST(Transform3D, ScaleRotateAndTranslateComeBeforeTheTransform) {
    const CATransform3D base = CATransform3DMakeTranslation(10, 20, 0);
    // Scaling first leaves the translation as it is; translating first scales it.
    const CATransform3D scaled = CATransform3DScale(base, 2, 3, 1);
    EXPECT_EQ(scaled.m11, 2);
    EXPECT_EQ(scaled.m22, 3);
    EXPECT_EQ(scaled.m41, 10);
    EXPECT_EQ(scaled.m42, 20);
    const CATransform3D moved = CATransform3DTranslate(CATransform3DMakeScale(2, 3, 1), 5, 7, 0);
    EXPECT_EQ(moved.m41, 10);
    EXPECT_EQ(moved.m42, 21);
    const CATransform3D turned = CATransform3DRotate(base, pi / 2, 0, 0, 1);
    EXPECT_EQ(turned.m41, 10);
    EXPECT_NEAR(turned.m12, 1, 1e-15);
    const CATransform3D concat = CATransform3DConcat(CATransform3DMakeTranslation(1, 0, 0),
                                                     CATransform3DMakeRotation(pi / 2, 0, 0, 1));
    EXPECT_NEAR(concat.m41, 0, 1e-15);
    EXPECT_NEAR(concat.m42, 1, 1e-15);
}

TEST(Transform3D, DropsTheDepthForThePlane) {
    const CGAffineTransform affine{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(CATransform3DGetAffineTransform(CATransform3DMakeAffineTransform(affine)), affine);
    // A turn of 60 degrees about y halves the width.
    const CGAffineTransform squeezed =
        CATransform3DGetAffineTransform(CATransform3DMakeRotation(pi / 3, 0, 1, 0));
    EXPECT_NEAR(squeezed.a, 0.5, 1e-15);
    EXPECT_NEAR(squeezed.b, 0, 1e-15);
    EXPECT_NEAR(squeezed.d, 1, 1e-15);
}

TEST(TransformComponents, FindsScaleAndRotation) {
    CATransform3D t = CATransform3DMakeRotation(0.4, 0, 0, 1);
    t = CATransform3DScale(t, 1.5, 1.5, 1);
    t.m41 = 8;
    t.m42 = -9;
    const CATransformComponents c = CATransform3DDecompose(t);
    EXPECT_NEAR(c.rotationZ, 0.4, 1e-14);
    EXPECT_NEAR(c.rotationX, 0, 1e-14);
    EXPECT_NEAR(c.rotationY, 0, 1e-14);
    EXPECT_NEAR(c.scaleX, 1.5, 1e-14);
    EXPECT_NEAR(c.scaleY, 1.5, 1e-14);
    EXPECT_NEAR(c.scaleZ, 1, 1e-14);
    EXPECT_NEAR(c.shearXY, 0, 1e-14);
    EXPECT_EQ(c.translationX, 8);
    EXPECT_EQ(c.translationY, -9);
}

TEST(TransformComponents, ReplacingTheRotationKeepsTheScale) {
    for (const double old : {-3.0, -1.0, 0.0, 0.7, 2.0, 3.1}) {
        CATransformComponents c =
            CATransform3DDecompose(CATransform3DScale(CATransform3DMakeRotation(old, 0, 0, 1), 0.6, 0.6, 1));
        c.rotationZ = 1.1;
        const CATransform3D t = CATransform3DCompose(c);
        EXPECT_NEAR(t.m11, 0.6 * std::cos(1.1), 1e-14);
        EXPECT_NEAR(t.m12, 0.6 * std::sin(1.1), 1e-14);
        EXPECT_NEAR(t.m21, -0.6 * std::sin(1.1), 1e-14);
        EXPECT_NEAR(t.m22, 0.6 * std::cos(1.1), 1e-14);
    }
}

TEST(TransformComponents, AHalfTurnIsNoNegativeScale) {
    const CATransformComponents c = CATransform3DDecompose(CATransform3DMakeScale(-2, -2, 1));
    EXPECT_NEAR(c.scaleX, 2, 1e-14);
    EXPECT_NEAR(c.scaleY, 2, 1e-14);
    EXPECT_NEAR(std::abs(c.rotationZ), pi, 1e-14);
}

TEST(TransformComponents, AMirrorImageKeepsItsAxis) {
    const CATransformComponents x = CATransform3DDecompose(CATransform3DMakeScale(-2, 3, 1));
    EXPECT_EQ(x.scaleX, -2);
    EXPECT_EQ(x.scaleY, 3);
    EXPECT_EQ(x.rotationZ, 0);
    const CATransformComponents y = CATransform3DDecompose(CATransform3DMakeScale(2, -3, 1));
    EXPECT_EQ(y.scaleX, 2);
    EXPECT_EQ(y.scaleY, -3);
    EXPECT_EQ(y.rotationZ, 0);
    const CATransformComponents z = CATransform3DDecompose(CATransform3DMakeScale(2, 3, -1));
    EXPECT_EQ(z.scaleZ, -1);
    EXPECT_EQ(z.rotationX, 0);
}

TEST(TransformComponents, ZeroScaleStaysZero) {
    const CATransformComponents all = CATransform3DDecompose(CATransform3DMakeScale(0, 0, 0));
    EXPECT_EQ(all.scaleX, 0);
    EXPECT_EQ(all.scaleY, 0);
    EXPECT_EQ(all.scaleZ, 0);
    EXPECT_EQ(all.rotationZ, 0);
    const CATransformComponents plane = CATransform3DDecompose(CATransform3DMakeScale(0, 0, 1));
    EXPECT_EQ(plane.scaleX, 0);
    EXPECT_EQ(plane.scaleY, 0);
    EXPECT_EQ(plane.scaleZ, 1);
    EXPECT_EQ(plane.rotationZ, 0);
    expectNear(CATransform3DCompose(plane), CATransform3DMakeScale(0, 0, 1), 0);
    // What the remaining axis tells about the rotation is kept.
    const CATransformComponents turned =
        CATransform3DDecompose(CATransform3DScale(CATransform3DMakeRotation(0.3, 0, 0, 1), 0, 2, 1));
    EXPECT_EQ(turned.scaleX, 0);
    EXPECT_NEAR(turned.scaleY, 2, 1e-14);
    EXPECT_NEAR(turned.rotationZ, 0.3, 1e-14);
}

TEST(TransformComponents, RowsOnOneLineAreSurvived) {
    CATransform3D t;
    t.m11 = 1;
    t.m12 = 2;
    t.m21 = 2;
    t.m22 = 4;
    const CATransformComponents c = CATransform3DDecompose(t);
    EXPECT_NEAR(c.scaleX, std::sqrt(5), 1e-14);
    EXPECT_EQ(c.scaleY, 0);
    EXPECT_TRUE(std::isfinite(CATransform3DCompose(c).m22));
}

TEST(TransformComponents, NumbersThatAreNoneAreSurvived) {
    for (const double odd : {std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity(), 1e308, -1e308, 1e-308}) {
        for (const auto entry : entries) {
            CATransform3D t;
            t.*entry = odd;
            const CATransformComponents c = CATransform3DDecompose(t);
            EXPECT_TRUE(std::isfinite(c.rotationX) && std::isfinite(c.rotationY) &&
                        std::isfinite(c.rotationZ));
        }
    }
}

TEST(TransformComponents, ComposeUndoesDecompose) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> any(-3, 3);
    for (int i = 0; i < 2000; ++i) {
        CATransform3D t;
        for (const auto entry :
             {&CATransform3D::m11, &CATransform3D::m12, &CATransform3D::m13, &CATransform3D::m21,
              &CATransform3D::m22, &CATransform3D::m23, &CATransform3D::m31, &CATransform3D::m32,
              &CATransform3D::m33, &CATransform3D::m41, &CATransform3D::m42, &CATransform3D::m43})
            t.*entry = any(random);
        expectNear(CATransform3DCompose(CATransform3DDecompose(t)), t, 1e-9);
    }
}

TEST(TransformComponents, AQuarterTurnAboutYComesBack) {
    const CATransform3D t = CATransform3DConcat(CATransform3DMakeRotation(pi / 2, 0, 1, 0),
                                                CATransform3DMakeRotation(0.5, 0, 0, 1));
    expectNear(CATransform3DCompose(CATransform3DDecompose(t)), t, 1e-9);
}

TEST(TransformComponents, AnExactQuarterTurnAboutYKeepsTheOtherTurn) {
    CATransform3D t; // a quarter turn about y, then half a radian about z, without rounding
    t.m11 = 0;
    t.m13 = -1;
    t.m21 = -std::sin(0.5);
    t.m22 = std::cos(0.5);
    t.m31 = std::cos(0.5);
    t.m32 = std::sin(0.5);
    t.m33 = 0;
    EXPECT_NEAR(CATransform3DDecompose(t).rotationZ, 0.5, 1e-12);
    expectNear(CATransform3DCompose(CATransform3DDecompose(t)), t, 1e-12);
}

TEST(TransformComponents, TurnsAboutXThenYThenZ) {
    CATransformComponents c;
    c.rotationX = 0.3;
    c.rotationY = -0.4;
    c.rotationZ = 0.5;
    c.scaleX = 2;
    const CATransform3D expected =
        CATransform3DConcat(CATransform3DConcat(CATransform3DConcat(CATransform3DMakeScale(2, 1, 1),
                                                                    CATransform3DMakeRotation(0.3, 1, 0, 0)),
                                                CATransform3DMakeRotation(-0.4, 0, 1, 0)),
                            CATransform3DMakeRotation(0.5, 0, 0, 1));
    expectNear(CATransform3DCompose(c), expected, 1e-15);
}

} // namespace
} // namespace tallyforge
