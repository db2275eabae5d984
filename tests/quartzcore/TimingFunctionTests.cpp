#include "quartzcore/CAMediaTimingFunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tallyforge {
namespace {

// The way by bisection on the parameter, from the definition of the curve.
double reference(double c1x, double c1y, double c2x, double c2y, double time) {
    const auto curve = [](double a, double b, double u) {
        return 3 * (1 - u) * (1 - u) * u * a + 3 * (1 - u) * u * u * b + u * u * u;
    };
    double low = 0, high = 1;
    for (int i = 0; i < 200; ++i) {
        const double middle = (low + high) / 2;
        (curve(c1x, c2x, middle) < time ? low : high) = middle;
    }
    return curve(c1y, c2y, low);
}

TEST(TimingFunction, HasThePlatformsCurves) {
    const auto easeIn = CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn);
    EXPECT_NEAR(easeIn.solve(0.25), 0.093465, 5e-7);
    EXPECT_NEAR(easeIn.solve(0.5), 0.315357, 5e-7);
    EXPECT_NEAR(easeIn.solve(0.75), 0.621861, 1e-6);
    const auto easeInEaseOut = CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseInEaseOut);
    EXPECT_NEAR(easeInEaseOut.solve(0.25), 0.129162, 5e-7);
    // Symmetric curves mirror each other.
    EXPECT_NEAR(easeInEaseOut.solve(0.5), 0.5, 1e-9);
    EXPECT_NEAR(easeInEaseOut.solve(0.75), 1 - 0.129162, 5e-7);
    const auto easeOut = CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseOut);
    EXPECT_NEAR(easeOut.solve(0.75), 1 - 0.093465, 5e-7);
    EXPECT_NEAR(easeOut.solve(0.5), 1 - 0.315357, 5e-7);
    EXPECT_NEAR(easeOut.solve(0.25), 1 - 0.621861, 1e-6);
    const auto normal = CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionDefault);
    for (const double t : {0.1, 0.25, 0.5, 0.75, 0.9})
        EXPECT_NEAR(normal.solve(t), reference(0.25, 0.1, 0.25, 1, t), 1e-7);
}

TEST(TimingFunction, LinearIsExact) {
    const auto linear = CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionLinear);
    for (const double t : {0.0, 0.1, 0.3, 0.7, 1.0})
        EXPECT_EQ(linear.solve(t), t);
}

TEST(TimingFunction, KeepsItsName) {
    for (const auto name :
         {kCAMediaTimingFunctionLinear, kCAMediaTimingFunctionEaseIn, kCAMediaTimingFunctionEaseOut,
          kCAMediaTimingFunctionEaseInEaseOut, kCAMediaTimingFunctionDefault})
        EXPECT_EQ(CAMediaTimingFunction::functionWithName(name).name(), name);
    const auto unknown = CAMediaTimingFunction::functionWithName("sideways");
    EXPECT_EQ(unknown.name(), "linear");
    EXPECT_EQ(unknown.solve(0.3), 0.3);
    EXPECT_EQ(CAMediaTimingFunction::functionWithControlPoints(0.1, 0.2, 0.3, 0.4).name(), "");
}

TEST(TimingFunction, HoldsItsInputToTheUnit) {
    const auto function = CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn);
    EXPECT_EQ(function.solve(-3), 0);
    EXPECT_EQ(function.solve(0), 0);
    EXPECT_EQ(function.solve(1), 1);
    EXPECT_EQ(function.solve(17), 1);
    EXPECT_EQ(function.solve(std::numeric_limits<double>::infinity()), 1);
    EXPECT_EQ(function.solve(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(TimingFunction, SolvesSteepCurvesToo) {
    for (const double c1x : {0.0, 0.05, 0.5, 0.99, 1.0}) {
        for (const double c2x : {0.0, 0.01, 0.3, 0.95, 1.0}) {
            const auto function = CAMediaTimingFunction::functionWithControlPoints(c1x, 0.9, c2x, 0.2);
            for (int step = 1; step < 80; ++step) {
                const double t = step / 80.0;
                if (c1x == 1.0 && c2x == 0.0 && std::abs(t - 0.5) < 1e-9)
                    continue; // upright there: any way is right
                EXPECT_NEAR(function.solve(t), reference(c1x, 0.9, c2x, 0.2, t), 1e-7)
                    << c1x << ' ' << c2x << ' ' << t;
            }
        }
    }
}

TEST(TimingFunction, MayOvershoot) {
    const auto function = CAMediaTimingFunction::functionWithControlPoints(0.3, 0, 0.5, 2.5);
    EXPECT_NEAR(function.solve(0.7), reference(0.3, 0, 0.5, 2.5, 0.7), 1e-7);
    EXPECT_GT(function.solve(0.7), 1);
}

TEST(TimingFunction, OddControlPointsAreSurvived) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(CAMediaTimingFunction::functionWithControlPoints(nan, 0, nan, nan).solve(0.25), 0.25);
    // Held to the unit: the same as with 0 and 1.
    const auto held = CAMediaTimingFunction::functionWithControlPoints(-5, 0.5, 9, 0.5);
    EXPECT_NEAR(held.solve(0.4), reference(0, 0.5, 1, 0.5, 0.4), 1e-7);
}

} // namespace
} // namespace tallyforge
