#include "Drawing.h"

#include <chrono>
#include <limits>
#include <numbers>
#include <random>

namespace tallyforge {
namespace {

constexpr double kPi = std::numbers::pi;

CGPath circle(double x, double y, double radius) {
    CGPath path;
    path.addEllipseInRect({{x - radius, y - radius}, {2 * radius, 2 * radius}});
    return path;
}

CGPath polygon(std::initializer_list<CGPoint> points) {
    CGPath path;
    for (const CGPoint& p : points)
        path.addLineToPoint(p.x, p.y);
    path.closeSubpath();
    return path;
}

TEST(CanvasFill, WholePixelRectHasNoFringe) {
    for (double scale : {1.0, 1.5, 2.0, 3.0}) {
        CGImage image = painted(60, 60, [&](Canvas& c) {
            c.setTransform(CGAffineTransformMakeScale(scale, scale));
            c.fillRect({{2, 4}, {10, 6}}, kRed);
        });
        for (int y = 0; y < 60; ++y) {
            for (int x = 0; x < 60; ++x) {
                bool inside = x >= 2 * scale && x < 12 * scale && y >= 4 * scale && y < 10 * scale;
                ASSERT_EQ(image.pixel(x, y), inside ? 0xffff0000U : 0U) << x << "," << y << " at " << scale;
            }
        }
    }
}

TEST(CanvasFill, PartlyCoveredPixelsTakeTheirShare) {
    CGImage image = painted(10, 10, [](Canvas& c) { c.fillRect({{2.25, 3}, {3, 2.5}}, kBlack); });
    EXPECT_NEAR(alphaOf(image.pixel(2, 3)), 0.75 * 255, 1);
    EXPECT_EQ(alphaOf(image.pixel(3, 4)), 255);
    EXPECT_NEAR(alphaOf(image.pixel(5, 3)), 0.25 * 255, 1);
    EXPECT_NEAR(alphaOf(image.pixel(3, 5)), 0.5 * 255, 1);
    EXPECT_NEAR(alphaOf(image.pixel(5, 5)), 0.125 * 255, 1);
    EXPECT_EQ(alphaOf(image.pixel(6, 3)), 0);
    EXPECT_NEAR(inkArea(image), 7.5, 0.05);
}

TEST(CanvasFill, NegativeSizeIsTheSameArea) {
    CGImage image = painted(10, 10, [](Canvas& c) { c.fillRect({{8, 9}, {-4, -5}}, kRed); });
    EXPECT_EQ(inkArea(image), 20);
    EXPECT_EQ(image.pixel(4, 4), 0xffff0000U);
}

TEST(CanvasFill, CircleCoversItsArea) {
    for (double radius : {1.0, 3.7, 20.0, 90.0}) {
        CGImage image =
            painted(200, 200, [&](Canvas& c) { c.fillPath(circle(100.3, 99.6, radius), kBlack); });
        EXPECT_NEAR(inkArea(image), kPi * radius * radius, 0.01 * kPi * radius * radius) << radius;
    }
}

TEST(CanvasFill, TriangleCoversItsArea) {
    CGImage image = painted(100, 100, [](Canvas& c) {
        c.fillPath(polygon({{50, 3}, {97, 91}, {4, 70}}), kBlack);
    });
    double area = 0.5 * std::fabs((97 - 50) * (70.0 - 3) - (4 - 50) * (91.0 - 3));
    EXPECT_NEAR(inkArea(image), area, 0.002 * area);
}

TEST(CanvasFill, EdgeThroughAPixelCoversTheExactPart) {
    // A right triangle with legs 4 and 2: in row 0 it spans x from 0 to 3 on average, in row 1 to 1.
    CGImage image = painted(6, 4, [](Canvas& c) { c.fillPath(polygon({{0, 0}, {4, 0}, {0, 2}}), kBlack); });
    const double row0[] = {1, 1, 0.75, 0.25, 0};
    const double row1[] = {0.75, 0.25, 0, 0, 0};
    for (int x = 0; x < 5; ++x) {
        EXPECT_NEAR(alphaOf(image.pixel(x, 0)) / 255.0, row0[x], 0.003) << x;
        EXPECT_NEAR(alphaOf(image.pixel(x, 1)) / 255.0, row1[x], 0.003) << x;
    }
}

TEST(CanvasFill, CircleIsSymmetric) {
    CGImage image = painted(64, 64, [](Canvas& c) { c.fillPath(circle(32, 32, 25.3), kBlack); });
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            EXPECT_NEAR(alphaOf(image.pixel(x, y)), alphaOf(image.pixel(63 - x, y)), 1);
            EXPECT_NEAR(alphaOf(image.pixel(x, y)), alphaOf(image.pixel(x, 63 - y)), 1);
            EXPECT_NEAR(alphaOf(image.pixel(x, y)), alphaOf(image.pixel(y, x)), 1);
        }
    }
}

TEST(CanvasFill, ShapesPartlyOutsideLookAsIfTheBitmapWereLarger) {
    CGPath shape = circle(30, 30, 29.5);
    CGImage whole = painted(60, 60, [&](Canvas& c) { c.fillPath(shape, kBlack); });
    for (CGPoint corner : {CGPoint{20, 20}, CGPoint{0, 35}, CGPoint{41, 3}}) {
        CGImage part = painted(17, 19, [&](Canvas& c) {
            c.setTransform(CGAffineTransformMakeTranslation(-corner.x, -corner.y));
            c.fillPath(shape, kBlack);
        });
        for (int y = 0; y < 19; ++y) {
            for (int x = 0; x < 17; ++x)
                ASSERT_NEAR(alphaOf(part.pixel(x, y)),
                            alphaOf(whole.pixel(x + int(corner.x), y + int(corner.y))), 1);
        }
    }
}

TEST(CanvasFill, OverlapsOfOneDirectionAreFilledAndHolesStayOpen) {
    CGPath overlapping;
    overlapping.addRect({{2, 2}, {10, 10}});
    overlapping.addRect({{6, 6}, {10, 10}});
    CGImage filled = painted(20, 20, [&](Canvas& c) { c.fillPath(overlapping, kBlack); });
    EXPECT_NEAR(inkArea(filled), 100 + 100 - 36, 0.01);

    CGPath ring = polygon({{2, 2}, {18, 2}, {18, 18}, {2, 18}});
    for (CGPoint p : {CGPoint{6, 6}, CGPoint{6, 14}, CGPoint{14, 14}, CGPoint{14, 6}}) {
        if (p == CGPoint{6, 6})
            ring.moveToPoint(p.x, p.y);
        else
            ring.addLineToPoint(p.x, p.y);
    }
    CGImage open = painted(20, 20, [&](Canvas& c) { c.fillPath(ring, kBlack); });
    EXPECT_EQ(open.pixel(10, 10), 0U);
    EXPECT_NEAR(inkArea(open), 256 - 64, 0.01);
}

TEST(CanvasFill, AlphaMultipliesTheColoursOwn) {
    CGImage image = painted(4, 4, [](Canvas& c) { c.fillRect({{0, 0}, {4, 4}}, {1, 0, 0, 0.5}, 0.5); });
    EXPECT_NEAR(alphaOf(image.pixel(1, 1)), 64, 1);
    EXPECT_NEAR(redOf(image.pixel(1, 1)), 64, 1);
    EXPECT_EQ(greenOf(image.pixel(1, 1)), 0);
}

TEST(CanvasFill, SourceAtopKeepsTheShape) {
    CGImage image = painted(40, 40, [](Canvas& c) {
        c.fillPath(circle(20, 20, 15), kBlack);
        c.fillRect({{0, 0}, {40, 40}}, kRed, 1, kCGBlendModeSourceAtop);
    });
    CGImage plain = painted(40, 40, [](Canvas& c) { c.fillPath(circle(20, 20, 15), kBlack); });
    for (size_t i = 0; i < image.pixels().size(); ++i) {
        EXPECT_EQ(alphaOf(image.pixels()[i]), alphaOf(plain.pixels()[i]));
        EXPECT_EQ(redOf(image.pixels()[i]), alphaOf(plain.pixels()[i]));
        EXPECT_EQ(blueOf(image.pixels()[i]), 0);
    }
}

TEST(CanvasFill, SourceAtopOnNothingPaintsNothing) {
    CGImage image = painted(10, 10, [](Canvas& c) {
        c.fillRect({{0, 0}, {10, 10}}, kRed, 1, kCGBlendModeSourceAtop);
        c.fillPath(circle(5, 5, 4.5), kRed, 0.7, kCGBlendModeSourceAtop);
    });
    EXPECT_TRUE(blank(image));
}

TEST(CanvasFill, PartlyCoveringSourceAtopMixesByCoverage) {
    CGImage image = painted(4, 1, [](Canvas& c) {
        c.fillRect({{0, 0}, {4, 1}}, kWhite);
        c.fillRect({{0.5, 0}, {2, 1}}, kBlack, 1, kCGBlendModeSourceAtop);
    });
    EXPECT_NEAR(redOf(image.pixel(0, 0)), 128, 1);
    EXPECT_EQ(image.pixel(1, 0), 0xff000000U);
    EXPECT_EQ(alphaOf(image.pixel(0, 0)), 255);
}

TEST(CanvasStroke, LineCoversLengthTimesWidth) {
    for (double scale : {1.0, 1.5, 2.0, 3.0}) {
        CGImage image = painted(150, 150, [&](Canvas& c) {
            c.setTransform(CGAffineTransformMakeScale(scale, scale));
            CGPath line;
            line.moveToPoint(10, 10);
            line.addLineToPoint(40, 30);
            c.strokePath(line, kBlack, 3);
        });
        double area = std::hypot(30, 20) * 3 * scale * scale;
        EXPECT_NEAR(inkArea(image), area, 0.005 * area);
    }
}

TEST(CanvasStroke, MiterMakesTheCornerFullAndRoundCutsIt) {
    CGPath corner;
    corner.moveToPoint(10, 40);
    corner.addLineToPoint(10, 10);
    corner.addLineToPoint(40, 10);
    CGImage miter = painted(50, 50, [&](Canvas& c) { c.strokePath(corner, kBlack, 10); });
    EXPECT_NEAR(inkArea(miter), 2 * 25 * 10 + 10 * 10, 1); // two arms and the corner's full square
    CGImage round = painted(50, 50, [&](Canvas& c) { c.strokePath(corner, kBlack, 10, true); });
    EXPECT_EQ(miter.pixel(5, 5), 0xff000000U);
    EXPECT_EQ(alphaOf(round.pixel(5, 5)), 0);
    // Two half discs at the ends and a quarter disc at the corner.
    EXPECT_NEAR(inkArea(round), 2 * 30 * 10 - 25 + kPi * 25 * 1.25, 0.01 * 600);
}

TEST(CanvasStroke, CircleStrokeIsARing) {
    CGImage image = painted(120, 120, [](Canvas& c) { c.strokePath(circle(60, 60, 40), kBlack, 4); });
    EXPECT_NEAR(inkArea(image), kPi * (42 * 42 - 38 * 38), 0.01 * kPi * 320);
    EXPECT_EQ(image.pixel(60, 60), 0U);
}

TEST(CanvasFill, NumbersThatAreNotFinitePaintNothing) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    CGImage image = painted(20, 20, [&](Canvas& c) {
        for (double bad : {inf, -inf, nan}) {
            c.fillRect({{bad, 0}, {10, 10}}, kRed);
            c.fillRect({{0, 0}, {bad, 10}}, kRed);
            c.fillRect({{0, 0}, {10, 10}}, {bad, 0, 0, 1});
            c.fillRect({{0, 0}, {10, 10}}, kRed, bad);
            c.fillPath(polygon({{0, 0}, {bad, 0}, {10, 10}}), kRed);
            c.strokePath(polygon({{0, 0}, {bad, 0}, {10, 10}}), kRed, 2);
            c.strokePath(polygon({{0, 0}, {5, 0}, {10, 10}}), kRed, bad);
            c.drawText("text", {bad, 400}, {0, 10}, kRed);
            c.drawText("text", {12, 400}, {0, bad}, kRed);
            c.save();
            c.setTransform({1, 0, 0, 1, bad, 0});
            c.fillRect({{0, 0}, {10, 10}}, kRed);
            c.fillPath(circle(5, 5, 5), kRed);
            c.strokePath(circle(5, 5, 5), kRed, 2);
            c.drawText("text", {12, 400}, {0, 10}, kRed);
            c.restore();
            c.save();
            c.clipToRect({{bad, 0}, {10, 10}});
            c.fillRect({{0, 0}, {20, 20}}, kRed);
            c.restore();
        }
        c.setTransform({1, 1, 1, 1, 0, 0}); // flattens everything onto a line
        c.fillRect({{0, 0}, {10, 10}}, kRed);
        c.fillPath(circle(5, 5, 5), kRed);
    });
    EXPECT_TRUE(blank(image));
}

TEST(CanvasFill, ExtremeTransformsAreQuickAndSafe) {
    auto begin = std::chrono::steady_clock::now();
    CGImage source(40, 40);
    std::fill_n(source.row(0), 1600, 0xff00ff00U);
    auto image = std::make_shared<CGImage>(source);
    for (double scale : {1e6, 1e30, 1e100, 1e300, 1e-6, 1e-30, 1e-300}) {
        for (double angle : {0.0, 0.3}) {
            CGImage result = painted(64, 64, [&](Canvas& c) {
                c.setTransform(CGAffineTransformRotate(CGAffineTransformMakeScale(scale, scale), angle));
                c.save();
                c.clipToPath(circle(0, 0, 1));
                c.fillRect({{-1, -1}, {2, 2}}, kRed);
                c.fillPath(circle(0, 0, 1), kBlue, 0.5);
                c.strokePath(circle(0, 0, 1), kBlack, 1, true);
                c.drawImage(image, {{-1, -1}, {2, 2}}, 0.5);
                c.drawText("Extreme", {12, 400}, {-1, 1}, kBlack);
                c.beginGroup({{-1, -1}, {2, 2}}, 0.5);
                c.fillRect({{-1, -1}, {2, 2}}, kRed);
                c.endGroup();
                c.restore();
            });
            EXPECT_TRUE(validPremultiplied(result));
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST(CanvasFill, HugeRectCoversEverything) {
    for (double size : {1e7, 1e30, 1e300}) {
        CGImage image = painted(16, 16, [&](Canvas& c) {
            c.fillRect({{-size / 2, -size / 2}, {size, size}}, kRed);
        });
        EXPECT_EQ(inkArea(image), 256);
        CGImage turned = painted(16, 16, [&](Canvas& c) {
            c.setTransform(CGAffineTransformMakeRotation(0.5));
            c.fillRect({{-size / 2, -size / 2}, {size, size}}, kRed);
        });
        EXPECT_EQ(inkArea(turned), 256);
    }
}

TEST(CanvasFill, QuarterTurnedWholePixelsStayExact) {
    CGImage image = painted(20, 20, [](Canvas& c) {
        c.setTransform({0, 1, -1, 0, 20, 0});
        c.fillRect({{2, 3}, {5, 4}}, kRed);
    });
    // x' = 20 - y, y' = x.
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x)
            ASSERT_EQ(image.pixel(x, y), x >= 13 && x < 17 && y >= 2 && y < 7 ? 0xffff0000U : 0U);
    }
}

/// How a large opaque rectangle is painted.
using FillLarge = void (*)(Canvas&, const CGRect&, const CGColor&);

void fillWhole(Canvas& canvas, const CGRect& rect, const CGColor& color) {
    canvas.fillRect(rect, color);
}

/// By pieces that are too small to be put off.
void fillByPieces(Canvas& canvas, const CGRect& rect, const CGColor& color) {
    for (int row = 0; row < int(rect.size.height); ++row)
        canvas.fillRect({{rect.origin.x, rect.origin.y + row}, {rect.size.width, 1}}, color);
}

/// One of all kinds of painting, somewhere.
void paintSomething(Canvas& canvas, std::mt19937& random, const CGImageRef& picture, int& open,
                    FillLarge fillLarge) {
    const auto number = [&random](double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random);
    };
    const auto whole = [&](double from, double to) { return std::floor(number(from, to)); };
    const CGColor color{number(0, 1), number(0, 1), number(0, 1), 1};
    const CGRect large{{whole(-30, 120), whole(-30, 120)}, {whole(60, 200), whole(60, 200)}};
    const CGRect any{{number(0, 150), number(0, 150)}, {number(1, 90), number(1, 90)}};
    CGPath round;
    round.addRoundedRect(any, 9, 9);
    switch (random() % 11) {
    case 0:
    case 1:
    case 2:
        return fillLarge(canvas, large, color);
    case 3:
        return canvas.fillRect(large, color, 0.5);
    case 4:
        return canvas.fillRect(large, color, 0.5, kCGBlendModeSourceAtop);
    case 5:
        return canvas.fillPath(round, color);
    case 6:
        return canvas.strokePath(round, color, 2);
    case 7:
        return canvas.drawImage(picture, any, 0.8);
    case 8:
        return canvas.drawText("Text", {20, 400}, any.origin, color);
    case 9:
        canvas.save();
        ++open;
        return random() % 2 ? canvas.clipToPath(round) : canvas.clipToRect(any);
    default:
        if (open > 0) canvas.restore();
        open = std::max(0, open - 1);
        if (random() % 2) return;
        canvas.beginGroup(large, 0.6);
        fillLarge(canvas, large, color);
        canvas.fillPath(round, kWhite);
        canvas.endGroup();
    }
}

// Large opaque rectangles are put off until something needs them; nobody can tell.
TEST(CanvasFill, PutOffRectanglesAreThereWhenTheyAreNeeded) {
    auto picture = std::make_shared<CGImage>(16, 16);
    for (int i = 0; i < 256; ++i)
        picture->row(0)[i] = 0xff000000U | unsigned(i) << 8 | unsigned(255 - i);
    for (unsigned seed = 0; seed < 400; ++seed) {
        const auto paint = [&](FillLarge fillLarge) {
            return painted(200, 200, [&](Canvas& canvas) {
                std::mt19937 random(seed);
                int open = 0;
                for (int step = 0; step < 40; ++step)
                    paintSomething(canvas, random, picture, open, fillLarge);
            });
        };
        ASSERT_EQ(paint(fillWhole).pixels(), paint(fillByPieces).pixels()) << seed;
    }
}

TEST(CanvasFill, PutOffRectanglesWithoutClipsAreThereExactly) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        const auto paint = [seed](bool atOnce) {
            return painted(200, 200, [&](Canvas& canvas) {
                std::mt19937 random(seed);
                for (int step = 0; step < 120; ++step) {
                    const auto place = [&random](int most) { return CGFloat(random() % unsigned(most)); };
                    const CGRect rect{{place(180), place(180)}, {1 + place(180), 1 + place(180)}};
                    const CGColor color{place(256) / 255, place(256) / 255, place(256) / 255, 1};
                    canvas.fillRect(rect, color, random() % 4 ? 1 : 0.4);
                    if (atOnce) canvas.flush();
                }
            });
        };
        ASSERT_EQ(paint(false).pixels(), paint(true).pixels()) << seed;
    }
}

} // namespace
} // namespace tallyforge
