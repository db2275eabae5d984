#include "coregraphics/CGGeometry.h"
#include "coregraphics/CGAffineTransform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace tallyforge {
namespace {

constexpr double kQuarterTurn = std::numbers::pi / 2;

void expectPoint(const CGPoint& p, double x, double y) {
    EXPECT_NEAR(p.x, x, 1e-12);
    EXPECT_NEAR(p.y, y, 1e-12);
}

TEST(CGRect, EdgesOfANegativeSizeAreThoseOfTheSameArea) {
    CGRect r = CGRectMake(10, 20, -4, -6);
    EXPECT_EQ(CGRectGetMinX(r), 6);
    EXPECT_EQ(CGRectGetMaxX(r), 10);
    EXPECT_EQ(CGRectGetMinY(r), 14);
    EXPECT_EQ(CGRectGetMaxY(r), 20);
    EXPECT_EQ(CGRectGetWidth(r), 4);
    EXPECT_EQ(CGRectGetMidX(r), 8);
    EXPECT_EQ(CGRectStandardize(r), CGRectMake(6, 14, 4, 6));
}

TEST(CGRect, InsetAndOffset) {
    EXPECT_EQ(CGRectInset(CGRectMake(0, 0, 10, 20), 2, 3), CGRectMake(2, 3, 6, 14));
    EXPECT_EQ(CGRectInset(CGRectMake(0, 0, 10, 20), -1, -1), CGRectMake(-1, -1, 12, 22));
    EXPECT_EQ(CGRectInset(CGRectMake(5, 5, 10, 20), 5, 0), CGRectMake(10, 5, 0, 20));
    EXPECT_EQ(CGRectInset(CGRectMake(5, 5, 10, 20), 6, 0), CGRectZero);
    EXPECT_EQ(CGRectOffset(CGRectMake(1, 2, 3, 4), 10, -10), CGRectMake(11, -8, 3, 4));
}

TEST(CGRect, UnionAndIntersection) {
    CGRect a = CGRectMake(0, 0, 10, 10);
    CGRect b = CGRectMake(5, -5, 10, 10);
    EXPECT_EQ(CGRectUnion(a, b), CGRectMake(0, -5, 15, 15));
    EXPECT_EQ(CGRectIntersection(a, b), CGRectMake(5, 0, 5, 5));
    EXPECT_TRUE(CGRectIntersectsRect(a, b));
}

TEST(CGRect, TouchingIsNoIntersection) {
    CGRect a = CGRectMake(0, 0, 10, 10);
    CGRect b = CGRectMake(10, 0, 10, 10);
    EXPECT_FALSE(CGRectIntersectsRect(a, b));
    EXPECT_EQ(CGRectIntersection(a, b), CGRectZero);
}

TEST(CGRect, HoldsItsLeftAndTopEdgeOnly) {
    CGRect r = CGRectMake(0, 0, 10, 10);
    EXPECT_TRUE(CGRectContainsPoint(r, {0, 0}));
    EXPECT_FALSE(CGRectContainsPoint(r, {10, 5}));
    EXPECT_FALSE(CGRectContainsPoint(r, {5, 10}));
}

TEST(CGAffineTransform, NewOperationComesFirst) {
    CGAffineTransform moved = CGAffineTransformMakeTranslation(10, 0);
    // Rotated first, moved then.
    expectPoint(CGPointApplyAffineTransform({1, 0}, CGAffineTransformRotate(moved, kQuarterTurn)), 10, 1);
    expectPoint(CGPointApplyAffineTransform({1, 1}, CGAffineTransformScale(moved, 2, 3)), 12, 3);
    CGAffineTransform doubled = CGAffineTransformMakeScale(2, 2);
    expectPoint(CGPointApplyAffineTransform({1, 1}, CGAffineTransformTranslate(doubled, 5, 7)), 12, 16);
}

TEST(CGAffineTransform, RotationTurnsXTowardsY) {
    expectPoint(CGPointApplyAffineTransform({1, 0}, CGAffineTransformMakeRotation(kQuarterTurn)), 0, 1);
    expectPoint(CGPointApplyAffineTransform({0, 1}, CGAffineTransformMakeRotation(kQuarterTurn)), -1, 0);
}

TEST(CGAffineTransform, ConcatAppliesTheFirstFirst) {
    CGAffineTransform both =
        CGAffineTransformConcat(CGAffineTransformMakeScale(2, 2), CGAffineTransformMakeTranslation(1, 0));
    expectPoint(CGPointApplyAffineTransform({3, 3}, both), 7, 6);
}

TEST(CGAffineTransform, InverseUndoes) {
    CGAffineTransform t{2, 0.5, -1, 3, 7, -9};
    CGPoint p = CGPointApplyAffineTransform({4, 5}, t);
    expectPoint(CGPointApplyAffineTransform(p, CGAffineTransformInvert(t)), 4, 5);
}

TEST(CGAffineTransform, WithoutInverseStaysWhatItIs) {
    CGAffineTransform flat{1, 2, 2, 4, 0, 0};
    EXPECT_EQ(CGAffineTransformInvert(flat), flat);
    CGAffineTransform huge = CGAffineTransformMakeScale(1e200, 1e200);
    EXPECT_EQ(CGAffineTransformInvert(huge), huge);
}

TEST(CGAffineTransform, RectBecomesItsBoundingBox) {
    CGRect r =
        CGRectApplyAffineTransform(CGRectMake(0, 0, 10, 20), CGAffineTransformMakeRotation(kQuarterTurn));
    EXPECT_NEAR(r.origin.x, -20, 1e-12);
    EXPECT_NEAR(r.origin.y, 0, 1e-12);
    EXPECT_NEAR(r.size.width, 20, 1e-12);
    EXPECT_NEAR(r.size.height, 10, 1e-12);
    EXPECT_EQ(CGRectApplyAffineTransform(CGRectMake(1, 2, -3, 4), CGAffineTransformMakeScale(-1, 1)),
              CGRectMake(-1, 2, 3, 4));
}

TEST(CGAffineTransform, IdentityAndFiniteness) {
    EXPECT_TRUE(CGAffineTransformIsIdentity({}));
    EXPECT_FALSE(CGAffineTransformIsIdentity(CGAffineTransformMakeScale(1, 1.0000001)));
    EXPECT_TRUE(CGAffineTransformIsFinite(CGAffineTransformMakeScale(1e300, 1)));
    EXPECT_FALSE(CGAffineTransformIsFinite({1, 0, 0, 1, std::numeric_limits<double>::infinity(), 0}));
    EXPECT_FALSE(CGAffineTransformIsFinite({1, 0, std::nan(""), 1, 0, 0}));
}

} // namespace
} // namespace tallyforge
