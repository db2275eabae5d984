#include "StockFolder.h"

#include <QPointF>
#include <QTransform>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace tallyforge::test {

namespace {

constexpr double margin = 10.5;

struct Shape {
    const char* name;
    /// How far the point, given from the mark's own corner in points, lies inside the shape (negative:
    /// outside).
    std::function<double(QPointF)> depth;
    /// The middle of the shape's upper edge, or what comes nearest to it.
    QPointF upperEdge;
};

double squareDepth(QPointF p) {
    return std::min({p.x(), p.y(), 24 - p.x(), 24 - p.y()});
}

double triangleDepth(QPointF p) {
    // Apex (12, 0), base from (0, 24) to (24, 24): the slopes are the lines y = 2 |x - 12|.
    return std::min(24 - p.y(), (p.y() - 2 * std::abs(p.x() - 12)) / std::sqrt(5.0));
}

double hexagonDepth(QPointF p) {
    // Vertices above and below the centre at distance 12: all six edges are 12 cos 30 degrees away from it.
    const double inner = 12 * std::sqrt(3.0) / 2;
    const QPointF c = p - QPointF(12, 12);
    const double slanted = std::abs(c.x()) / 2 + std::abs(c.y()) * std::sqrt(3.0) / 2;
    return inner - std::max(std::abs(c.x()), slanted);
}

double circleDepth(QPointF p) {
    return 12 - std::hypot(p.x() - 12, p.y() - 12);
}

/// The star's body, inside all of its notches.
double starDepth(QPointF p) {
    return 6 - std::hypot(p.x() - 12, p.y() - 12);
}

/// The part of the icon outline that its corners do not touch.
double iconDepth(QPointF p) {
    return std::max(std::min(squareDepth(p), 0.0), 9 - std::max(std::abs(p.x() - 12), std::abs(p.y() - 12)));
}

const std::vector<Shape>& shapes() {
    static const std::vector<Shape> all = {
        {"glow_circle", circleDepth, QPointF(12, 0)},     {"glow_square", squareDepth, QPointF(12, 0)},
        {"glow_triangle", triangleDepth, QPointF(6, 12)}, {"glow_hexagon", hexagonDepth, QPointF(6.8038, 3)},
        {"glow_star", starDepth, QPointF(12, 4.5)},       {"glow_icon", iconDepth, QPointF(12, 0)}};
    return all;
}

int alphaAtPoint(const QImage& image, int scale, QPointF markPoint) {
    return alphaAt(image, static_cast<int>(std::floor((markPoint.x() + margin) * scale)),
                   static_cast<int>(std::floor((markPoint.y() + margin) * scale)));
}

void forEachPicture(const std::function<void(const Shape&, const QImage&, int)>& check) {
    for (const Shape& shape : shapes()) {
        for (int scale : {1, 2, 3}) {
            SCOPED_TRACE(std::string(shape.name) + " at " + std::to_string(scale));
            const QImage image = stockPicture(bundle + shape.name, scale);
            ASSERT_EQ(image.size(), QSize(45 * scale, 45 * scale));
            check(shape, image, scale);
        }
    }
}

QImage transposed(const QImage& image) {
    return image.transformed(QTransform(0, 1, 1, 0, 0, 0));
}

} // namespace

TEST(GlowPictures, NothingTouchesTheBorder) {
    forEachPicture([](const Shape&, const QImage& image, int) {
        const int last = image.width() - 1;
        for (int i = 0; i <= last; ++i) {
            EXPECT_EQ(alphaAt(image, i, 0), 0);
            EXPECT_EQ(alphaAt(image, i, last), 0);
            EXPECT_EQ(alphaAt(image, 0, i), 0);
            EXPECT_EQ(alphaAt(image, last, i), 0);
        }
    });
}

TEST(GlowPictures, AreFullInsideTheShape) {
    forEachPicture([](const Shape& shape, const QImage& image, int scale) {
        int inside = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QPointF point((x + 0.5) / scale - margin, (y + 0.5) / scale - margin);
                if (shape.depth(point) < 2) continue;
                ++inside;
                EXPECT_EQ(alphaAt(image, x, y), 255) << point.x() << "," << point.y();
            }
        }
        EXPECT_GT(inside, 40 * scale * scale);
    });
}

TEST(GlowPictures, AreStrongAtTheEdgeAndHalfStrongAFewPointsBeyondIt) {
    forEachPicture([](const Shape& shape, const QImage& image, int scale) {
        EXPECT_GE(alphaAtPoint(image, scale, shape.upperEdge), 230);
    });
    for (const char* name : {"glow_circle", "glow_square", "glow_icon"}) {
        const QImage image = stockPicture(bundle + name, 3);
        EXPECT_GT(alphaAtPoint(image, 3, QPointF(12, -3)), 128) << name;
        EXPECT_LT(alphaAtPoint(image, 3, QPointF(12, -6)), 128) << name;
        EXPECT_GT(alphaAtPoint(image, 3, QPointF(12, -8)), 0) << name;
    }
}

TEST(GlowPictures, FadeOutwardAlongEveryRay) {
    forEachPicture([](const Shape&, const QImage& image, int) {
        const int centre = image.width() / 2;
        for (int dx = -3; dx <= 3; ++dx) {
            for (int dy = -3; dy <= 3; ++dy) {
                if (dx == 0 && dy == 0) continue;
                int before = 255;
                for (int x = centre, y = centre; image.rect().contains(x, y); x += dx, y += dy) {
                    EXPECT_LE(alphaAt(image, x, y), before)
                        << "ray " << dx << "," << dy << " at " << x << "," << y;
                    before = alphaAt(image, x, y);
                }
            }
        }
    });
}

TEST(GlowPictures, AreWhite) {
    forEachPicture([](const Shape&, const QImage& image, int) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (alphaAt(image, x, y) == 0) continue;
                EXPECT_EQ(image.pixel(x, y) & 0xffffffU, 0xffffffU);
            }
        }
    });
}

TEST(GlowPictures, AreAsSymmetricAsTheirShape) {
    forEachPicture([](const Shape& shape, const QImage& image, int) {
        const std::string name = shape.name;
        if (name == "glow_star") return;
        EXPECT_LE(alphaDifference(image, image.mirrored(true, false)), 1);
        if (name == "glow_triangle") return;
        EXPECT_LE(alphaDifference(image, image.mirrored(false, true)), 1);
        if (name == "glow_hexagon") return;
        EXPECT_LE(alphaDifference(image, transposed(image)), 1);
    });
}

TEST(GlowPictures, StarReachesEveryTipOfTheStar) {
    const QImage image = stockPicture(bundle + "glow_star", 3);
    ASSERT_FALSE(image.isNull());
    for (int pass = 0; pass < 7; ++pass) {
        const double angle = 3 * pass * 0.2991993 + 1;
        const QPointF tip(std::trunc(12 + std::sin(angle) * 12), std::trunc(12 + std::cos(angle) * 12));
        EXPECT_GE(alphaAtPoint(image, 3, tip), 200) << tip.x() << "," << tip.y();
        // Half a spike's angle away the light is weaker at the same distance.
        const double reach = std::hypot(tip.x() - 12, tip.y() - 12);
        const double tipAngle = std::atan2(tip.x() - 12, tip.y() - 12);
        const double notch = tipAngle + 0.4488;
        EXPECT_LT(alphaAtPoint(image, 3, QPointF(12 + std::sin(notch) * reach, 12 + std::cos(notch) * reach)),
                  alphaAtPoint(image, 3, tip));
    }
}

} // namespace tallyforge::test
