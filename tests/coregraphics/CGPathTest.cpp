#include "coregraphics/CGPath.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tallyforge {
namespace {

using Verb = CGPath::Verb;

CGPoint cubicAt(const CGPoint& p0, const CGPath::Element& e, double t) {
    double u = 1 - t;
    auto mix = [&](double a, double b, double c, double d) {
        return u * u * u * a + 3 * u * u * t * b + 3 * u * t * t * c + t * t * t * d;
    };
    return {mix(p0.x, e.points[0].x, e.points[1].x, e.points[2].x),
            mix(p0.y, e.points[0].y, e.points[1].y, e.points[2].y)};
}

TEST(CGPath, LineWithoutACurrentPointMoves) {
    CGPath path;
    path.addLineToPoint(3, 4);
    ASSERT_EQ(path.elements().size(), 1U);
    EXPECT_EQ(path.elements()[0].verb, Verb::move);
    EXPECT_EQ(path.elements()[0].points[0], CGPointMake(3, 4));
}

TEST(CGPath, CurveWithoutACurrentPointBeginsAtItsFirstControlPoint) {
    CGPath path;
    path.addCurveToPoint({1, 2}, {3, 4}, {5, 6});
    ASSERT_EQ(path.elements().size(), 2U);
    EXPECT_EQ(path.elements()[0].verb, Verb::move);
    EXPECT_EQ(path.elements()[0].points[0], CGPointMake(1, 2));
}

TEST(CGPath, ClosingNothingAddsNothing) {
    CGPath path;
    path.closeSubpath();
    EXPECT_TRUE(path.empty());
    path.addRect(CGRectMake(0, 0, 1, 1));
    size_t count = path.elements().size();
    path.closeSubpath();
    EXPECT_EQ(path.elements().size(), count);
}

TEST(CGPath, BoundingBoxHoldsControlPoints) {
    CGPath path;
    EXPECT_EQ(path.boundingBox(), CGRectZero);
    path.moveToPoint(10, 10);
    path.addCurveToPoint({-5, 12}, {30, 40}, {20, 10});
    EXPECT_EQ(path.boundingBox(), CGRectMake(-5, 10, 35, 30));
}

TEST(CGPath, TransformMovesEveryPoint) {
    CGPath path;
    path.moveToPoint(1, 2);
    path.addCurveToPoint({3, 4}, {5, 6}, {7, 8});
    CGPath moved = path.transformed(CGAffineTransformMakeTranslation(10, 20));
    EXPECT_EQ(moved.elements()[0].points[0], CGPointMake(11, 22));
    EXPECT_EQ(moved.elements()[1].points[2], CGPointMake(17, 28));
    EXPECT_EQ(path.elements()[0].points[0], CGPointMake(1, 2));
}

TEST(CGPath, EllipseStaysNearTheCircle) {
    CGPath path;
    path.addEllipseInRect(CGRectMake(-100, -100, 200, 200));
    CGPoint current;
    for (const CGPath::Element& e : path.elements()) {
        if (e.verb == Verb::cubic) {
            for (double t = 0; t <= 1; t += 0.125) {
                CGPoint p = cubicAt(current, e, t);
                EXPECT_NEAR(std::hypot(p.x, p.y), 100, 0.03);
            }
            current = e.points[2];
        } else if (e.verb != Verb::close) {
            current = e.points[0];
        }
    }
}

TEST(CGPath, CornersAreAtMostHalfASide) {
    CGPath path;
    path.addRoundedRect(CGRectMake(0, 0, 10, 20), 100, 100);
    EXPECT_EQ(path.boundingBox(), CGRectMake(0, 0, 10, 20));
    EXPECT_EQ(path.elements()[0].points[0], CGPointMake(5, 0));
    CGPath square;
    square.addRoundedRect(CGRectMake(0, 0, 10, 20), 0, 5);
    for (const CGPath::Element& e : square.elements())
        EXPECT_NE(e.verb, Verb::cubic);
}

TEST(CGPath, FunctionsApplyTheirTransform) {
    CGMutablePathRef path = CGPathCreateMutable();
    CGAffineTransform doubled = CGAffineTransformMakeScale(2, 2);
    CGPathMoveToPoint(path, nullptr, 1, 1);
    CGPathAddLineToPoint(path, &doubled, 1, 1);
    EXPECT_EQ(path->elements()[0].points[0], CGPointMake(1, 1));
    EXPECT_EQ(path->elements()[1].points[0], CGPointMake(2, 2));
    CGPathRelease(path);
    EXPECT_EQ(path, nullptr);
}

} // namespace
} // namespace tallyforge
