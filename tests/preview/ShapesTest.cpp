#include "preview/imaging/MarkImages.h"

#include "PreviewFixture.h"

#include <cmath>
#include <numbers>

namespace tallyforge::test {
namespace {

using Polygon = std::vector<CGPoint>;

/// How often the polygon runs around the point; not 0 is inside.
int windings(const Polygon& polygon, CGFloat x, CGFloat y) {
    int count = 0;
    for (size_t i = 0; i < polygon.size(); ++i) {
        const CGPoint &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        CGFloat side = (b.x - a.x) * (y - a.y) - (x - a.x) * (b.y - a.y);
        if (a.y <= y && b.y > y && side > 0) ++count;
        if (a.y > y && b.y <= y && side < 0) --count;
    }
    return count;
}

/// The share of the pixel inside the polygon, from 32 x 32 points.
CGFloat share(const Polygon& polygon, int px, int py) {
    int inside = 0;
    for (int j = 0; j < 32; ++j)
        for (int i = 0; i < 32; ++i)
            inside += windings(polygon, px + (i + 0.5) / 32, py + (j + 0.5) / 32) != 0;
    return inside / 1024.0;
}

Polygon triangle(CGFloat w, CGFloat h) {
    return {{w / 2, 0}, {w, h}, {0, h}};
}
Polygon hexagon(CGFloat w, CGFloat h) {
    Polygon points;
    for (int i = 0; i < 6; ++i)
        points.push_back({w / 2 + std::sin(i * std::numbers::pi / 3) * h / 2,
                          h / 2 + std::cos(i * std::numbers::pi / 3) * h / 2});
    return points;
}
/// Seven spikes: a point near the centre, one far out a radian on, one near again another radian on.
Polygon star(CGFloat w, CGFloat h) {
    const CGFloat outer = std::trunc(w / 2);
    const CGFloat inner = std::trunc(std::trunc(w / 2) - w / 6);
    Polygon points;
    for (int spike = 0; spike < 7; ++spike) {
        const CGFloat angle = spike * 2 * std::numbers::pi / 7;
        for (int radians = 0; radians < 3; ++radians) {
            const CGFloat radius = radians == 1 ? outer : inner;
            points.push_back({std::trunc(w / 2 + std::sin(angle + radians) * radius),
                              std::trunc(h / 2 + std::cos(angle + radians) * radius)});
        }
    }
    return points;
}

class ShapesTest : public PreviewFixture {
  protected:
    /// Every pixel holds the colour by the share of it that lies inside: exactly when all or nothing of it
    /// does, else within `tolerance`.
    static void expectShape(int shape, Polygon (*outline)(CGFloat, CGFloat), CGFloat tolerance = 0.07) {
        for (auto [w, h] : {std::pair(24, 24), std::pair(30, 20), std::pair(20, 30), std::pair(45, 45),
                            std::pair(8, 8), std::pair(76, 76)}) {
            UIImage image = ShapeImage(imageOf(filled(w, h, kPlateColor)), UIColor::whiteColor(), shape, 1);
            ASSERT_EQ(image.size(), CGSizeMake(w, h));
            Polygon polygon = outline(w, h);
            int covered = 0;
            for (int y = 0; y < h; ++y) {
                for (int x = 0; x < w; ++x) {
                    const int alpha = int(image.bitmap()->pixel(x, y) >> 24);
                    covered += alpha;
                    const CGFloat inside = share(polygon, x, y);
                    const bool edge = inside > 0 && inside < 1;
                    ASSERT_NEAR(alpha / 255.0, inside, edge ? tolerance : 0.03)
                        << "shape " << shape << " of " << w << " x " << h << " at " << x << ", " << y;
                }
            }
            ASSERT_GT(covered, 255);
        }
    }
};

TEST_F(ShapesTest, TheTriangleHasItsTopInTheMiddle) {
    expectShape(kShapeTriangle, triangle);
    expectShape(kShapeTriangleDown, triangle);
}

TEST_F(ShapesTest, TheHexagonStandsOnAVertex) {
    expectShape(kShapeHexagon, hexagon);
    UIImage image = ShapeImage(imageOf(filled(30, 20, kPlateColor)), UIColor::whiteColor(), kShapeHexagon, 1);
    // Vertices at (15, 20), (23.66, 15), (23.66, 5), (15, 0), (6.34, 5), (6.34, 15).
    for (auto [x, y] : {std::pair(15, 1), std::pair(15, 18), std::pair(7, 10), std::pair(22, 10)})
        EXPECT_EQ(image.bitmap()->pixel(x, y), 0xFFFFFFFF) << x << ", " << y;
    for (auto [x, y] : {std::pair(5, 10), std::pair(24, 10), std::pair(10, 0), std::pair(20, 19)})
        EXPECT_EQ(image.bitmap()->pixel(x, y), 0u) << x << ", " << y;
}

TEST_F(ShapesTest, TheStarHasSevenSpikesThatOverlap) {
    // Where spikes cross within a pixel, smoothing counts what both cover twice.
    expectShape(kShapeStar, star, 0.35);
    // 24 x 24: near points at 8, far ones at 12. The first spike runs (12, 20), (22, 18), (19, 8).
    Polygon first = star(24, 24);
    EXPECT_EQ(first[0], CGPointMake(12, 20));
    EXPECT_EQ(first[1], CGPointMake(22, 18));
    EXPECT_EQ(first[2], CGPointMake(19, 8));
}

TEST_F(ShapesTest, TheSquareIsFull) {
    for (auto [w, h] : {std::pair(24, 24), std::pair(30, 20)}) {
        UIImage image = ShapeImage(imageOf(filled(w, h, 0)), UIColor::redColor(), kShapeSquare, 1);
        EXPECT_EQ(image.size(), CGSizeMake(w, h));
        for (uint32_t pixel : image.bitmap()->pixels())
            ASSERT_EQ(pixel, 0xFFFF0000);
    }
}

TEST_F(ShapesTest, UnknownShapesAreEmpty) {
    for (int shape : {0, 5, 7, 10, -1, 1 << 30}) {
        UIImage image = ShapeImage(imageOf(filled(30, 20, kPlateColor)), UIColor::redColor(), shape, 1);
        EXPECT_EQ(image.size(), CGSizeMake(30, 20));
        for (uint32_t pixel : image.bitmap()->pixels())
            ASSERT_EQ(pixel, 0u) << shape;
    }
}

TEST_F(ShapesTest, TheAlphaMultipliesTheColours) {
    UIImage model = imageOf(filled(10, 10, kPlateColor));
    EXPECT_TRUE(isPixel(ShapeImage(model, UIColor::redColor(), kShapeSquare, 0.6).bitmap()->pixel(5, 5),
                        0x99990000, 1));
    EXPECT_TRUE(isPixel(
        ShapeImage(model, UIColor::colorWithRed(1, 1, 1, 0.5), kShapeSquare, 0.5).bitmap()->pixel(5, 5),
        0x40404040, 1));
    EXPECT_EQ(ShapeImage(model, UIColor::clearColor(), kShapeSquare, 1).bitmap()->pixel(5, 5), 0u);
}

TEST_F(ShapesTest, ItIsAlwaysOnePixelAPoint) {
    for (CGFloat screen : {1.0, 1.5, 2.0, 3.0}) {
        be(UIUserInterfaceIdiomPhone, screen);
        UIImage image =
            ShapeImage(imageOf(filled(72, 48, kPlateColor), 3), UIColor::redColor(), kShapeSquare, 1);
        EXPECT_EQ(image.scale(), 1);
        EXPECT_EQ(image.bitmap()->width(), 24);
        EXPECT_EQ(image.bitmap()->height(), 16);
    }
}

TEST_F(ShapesTest, NoModelIsNoShape) {
    for (int shape = 0; shape <= 7; ++shape)
        EXPECT_EQ(ShapeImage({}, UIColor::redColor(), shape, 1).size(), CGSizeZero) << shape;
}

} // namespace
} // namespace tallyforge::test
