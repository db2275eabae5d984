#include "Drawing.h"

#include <numbers>

namespace tallyforge {
namespace {

CGPath circle(double x, double y, double radius) {
    CGPath path;
    path.addEllipseInRect({{x - radius, y - radius}, {2 * radius, 2 * radius}});
    return path;
}

constexpr CGRect kEverything{{-10, -10}, {200, 200}};

TEST(CanvasClip, PathClipCutsLikeAFillOfThePath) {
    CGPath shape = circle(30.4, 29.7, 25);
    CGImage clipped = painted(64, 64, [&](Canvas& c) {
        c.clipToPath(shape);
        c.fillRect(kEverything, kRed);
    });
    CGImage filled = painted(64, 64, [&](Canvas& c) { c.fillPath(shape, kRed); });
    EXPECT_LE(largestDifference(clipped, filled), 1);
}

TEST(CanvasClip, ManyPaintsUnderAClipLeaveNoFringe) {
    CGPath shape = circle(32, 32, 25);
    CGImage image = painted(64, 64, [&](Canvas& c) {
        c.fillRect(kEverything, kWhite);
        c.clipToPath(shape);
        for (int i = 0; i < 20; ++i)
            c.fillRect(kEverything, kRed);
        c.fillRect(kEverything, kWhite);
    });
    for (uint32_t pixel : image.pixels())
        EXPECT_EQ(pixel, 0xffffffffU);
}

TEST(CanvasClip, EndsWithRestore) {
    CGImage image = painted(64, 64, [](Canvas& c) {
        c.save();
        c.clipToPath(circle(32, 32, 10));
        c.restore();
        c.fillRect(kEverything, kRed);
    });
    EXPECT_EQ(inkArea(image), 64 * 64);
}

TEST(CanvasClip, NestedClipsMultiply) {
    double r = 20;
    CGImage image = painted(64, 64, [&](Canvas& c) {
        c.clipToPath(circle(22, 32, r));
        c.clipToPath(circle(42, 32, r));
        c.fillRect(kEverything, kRed);
    });
    double d = 20; // between the centres: the lens of two circles
    double lens = 2 * r * r * std::acos(d / (2 * r)) - d / 2 * std::sqrt(4 * r * r - d * d);
    EXPECT_NEAR(inkArea(image), lens, 0.01 * lens);
}

TEST(CanvasClip, OtherStateComesBackWithRestoreAndTooManyRestoresDoNothing) {
    CGImage image = painted(16, 16, [](Canvas& c) {
        c.restore();
        c.save();
        c.setTransform(CGAffineTransformMakeScale(3, 3));
        c.clipToRect({{0, 0}, {1, 1}});
        c.restore();
        c.restore();
        c.restore();
        EXPECT_EQ(c.transform(), CGAffineTransformIdentity);
        c.fillRect({{0, 0}, {16, 16}}, kRed);
    });
    EXPECT_EQ(inkArea(image), 256);
}

TEST(CanvasClip, WholePixelRectIsExactAndFractionalOneAntialiased) {
    CGImage whole = painted(16, 16, [](Canvas& c) {
        c.clipToRect({{2, 3}, {5, 6}});
        c.fillRect(kEverything, kRed);
    });
    EXPECT_EQ(inkArea(whole), 30);
    CGImage part = painted(16, 16, [](Canvas& c) {
        c.clipToRect({{2.5, 3}, {5, 6.25}});
        c.fillRect(kEverything, kRed);
    });
    EXPECT_NEAR(inkArea(part), 5 * 6.25, 0.1);
    EXPECT_NEAR(alphaOf(part.pixel(2, 4)), 128, 1);
    EXPECT_NEAR(alphaOf(part.pixel(4, 9)), 64, 1);
}

TEST(CanvasClip, EmptyOrOutsideClipLetsNothingThrough) {
    CGImage image = painted(16, 16, [](Canvas& c) {
        c.save();
        c.clipToPath(circle(100, 100, 5));
        c.fillRect(kEverything, kRed);
        c.restore();
        c.save();
        c.clipToRect({{3, 3}, {0, 5}});
        c.fillRect(kEverything, kRed);
        c.restore();
        c.save();
        c.clipToPath(CGPath());
        c.fillRect(kEverything, kRed);
        c.beginGroup(kEverything, 1);
        c.fillRect(kEverything, kRed);
        c.endGroup();
    });
    EXPECT_TRUE(blank(image));
}

TEST(CanvasClip, SourceAtopUnderAClipSeesWhatLiesBelow) {
    CGImage image = painted(32, 32, [](Canvas& c) {
        c.fillRect({{0, 0}, {16, 32}}, kBlue);
        c.clipToPath(circle(16, 16, 10));
        c.fillRect(kEverything, kRed, 1, kCGBlendModeSourceAtop);
    });
    EXPECT_EQ(image.pixel(12, 16), 0xffff0000U);
    EXPECT_EQ(image.pixel(2, 2), 0xff0000ffU);
    EXPECT_EQ(image.pixel(20, 16), 0U);
}

TEST(CanvasClip, FlushShowsTheClippedResultAndPaintingGoesOn) {
    CGImage bitmap(32, 32);
    auto canvas = testGraphics().makeCanvas(bitmap);
    canvas->clipToPath(circle(16, 16, 10));
    canvas->fillRect(kEverything, kRed);
    canvas->flush();
    double area = std::numbers::pi * 100;
    EXPECT_NEAR(inkArea(bitmap), area, 0.01 * area);
    CGImage first = bitmap;
    canvas->flush();
    EXPECT_EQ(bitmap.pixels(), first.pixels());
    canvas->fillRect(kEverything, kBlue);
    canvas.reset();
    EXPECT_EQ(bitmap.pixel(16, 16), 0xff0000ffU);
    EXPECT_EQ(bitmap.pixel(1, 1), 0U);
}

TEST(CanvasGroup, IsFadedAsOne) {
    CGImage image = painted(30, 10, [](Canvas& c) {
        c.fillRect({{0, 0}, {30, 10}}, kWhite);
        c.beginGroup({{0, 0}, {30, 10}}, 0.5);
        c.fillRect({{0, 0}, {20, 10}}, kRed);
        c.fillRect({{10, 0}, {20, 10}}, kBlue);
        c.endGroup();
    });
    EXPECT_LE(largestDifference(image.pixel(5, 5), 0xffff8080U), 1);
    EXPECT_LE(largestDifference(image.pixel(15, 5), 0xff8080ffU), 1); // no red shines through the blue
    EXPECT_LE(largestDifference(image.pixel(25, 5), 0xff8080ffU), 1);
}

TEST(CanvasGroup, ReachesNoFartherThanItsBounds) {
    CGImage image = painted(20, 20, [](Canvas& c) {
        c.beginGroup({{5, 5}, {4, 4}}, 1);
        c.fillRect(kEverything, kRed);
        c.endGroup();
    });
    EXPECT_EQ(inkArea(image), 16);
    EXPECT_EQ(image.pixel(5, 5), 0xffff0000U);
}

TEST(CanvasGroup, NestsWithClipsAndStates) {
    CGImage image = painted(40, 40, [](Canvas& c) {
        c.save();
        c.clipToPath(circle(20, 20, 15));
        c.beginGroup(kEverything, 0.5);
        c.setTransform(CGAffineTransformMakeScale(2, 2));
        c.save();
        c.beginGroup({{0, 0}, {20, 20}}, 0.5);
        c.fillRect({{0, 0}, {20, 20}}, kRed);
        c.endGroup();
        // The save is left open: the group's end closes it.
        c.endGroup();
        EXPECT_EQ(c.transform(), CGAffineTransformIdentity);
        c.restore();
        c.endGroup(); // one too many
    });
    double area = std::numbers::pi * 225 * 0.25;
    EXPECT_NEAR(inkArea(image), area, 0.015 * area);
}

TEST(CanvasGroup, RestoreDoesNotReachOutOfTheGroup) {
    CGImage image = painted(20, 20, [](Canvas& c) {
        c.save();
        c.clipToRect({{0, 0}, {10, 20}});
        c.beginGroup(kEverything, 1);
        c.restore();
        c.restore();
        c.fillRect(kEverything, kRed);
        c.endGroup();
        c.fillRect(kEverything, kRed);
    });
    EXPECT_EQ(inkArea(image), 200);
}

TEST(CanvasGroup, InvisibleGroupPaintsNothing) {
    CGImage image = painted(20, 20, [](Canvas& c) {
        for (double alpha : {0.0, -1.0, std::nan("")}) {
            c.beginGroup(kEverything, alpha);
            c.fillRect(kEverything, kRed);
            c.endGroup();
        }
        c.beginGroup({{std::nan(""), 0}, {10, 10}}, 1);
        c.fillRect(kEverything, kRed);
        c.endGroup();
    });
    EXPECT_TRUE(blank(image));
}

TEST(CanvasGroup, LeftOpenIsFinishedWithTheCanvas) {
    CGImage image = painted(20, 20, [](Canvas& c) {
        c.beginGroup(kEverything, 0.5);
        c.clipToPath(circle(10, 10, 8));
        c.fillRect(kEverything, kRed);
    });
    EXPECT_NEAR(inkArea(image), std::numbers::pi * 64 * 0.5, 1.5);
}

} // namespace
} // namespace tallyforge
