#include "StockFolder.h"

#include <QTransform>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace tallyforge::test {

namespace {

struct Mark {
    QString stem;
    int points;
};

const Mark plate{systemMarks + "IconBadgeAndCloseBox", 24};
const Mark fallbackPlate{bundle + "IconBadgeAndCloseBox", 24};
const Mark cross{systemMarks + "IconCloseBoxX", 12};
const Mark dot{systemMarks + "IconNewDot", 8};
const Mark iconShape{bundle + "icon_shape", 24};

/// How many pixels the picture covers, part-covered ones by their part.
double coveredPixels(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            sum += alphaAt(image, x, y) / 255.0;
        }
    }
    return sum;
}

QImage transposed(const QImage& image) {
    return image.transformed(QTransform(0, 1, 1, 0, 0, 0));
}

void expectRound(const Mark& mark) {
    for (int scale : {1, 2, 3}) {
        const QImage image = stockPicture(mark.stem, scale);
        ASSERT_FALSE(image.isNull());
        const double radius = mark.points * scale / 2.0;
        EXPECT_NEAR(coveredPixels(image), std::numbers::pi * radius * radius, 0.01 * radius * radius);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const double distance = std::hypot(x + 0.5 - radius, y + 0.5 - radius);
                if (distance < radius - 1) {
                    EXPECT_EQ(alphaAt(image, x, y), 255) << x << "," << y;
                }
                if (distance > radius + 1) {
                    EXPECT_EQ(alphaAt(image, x, y), 0) << x << "," << y;
                }
            }
        }
    }
}

} // namespace

TEST(MarkPictures, HaveTheirSizeAtEveryScaleAndClearCorners) {
    for (const Mark& mark : {plate, fallbackPlate, cross, dot, iconShape}) {
        for (int scale : {1, 2, 3}) {
            SCOPED_TRACE(mark.stem.toStdString() + " at " + std::to_string(scale));
            const QImage image = stockPicture(mark.stem, scale);
            ASSERT_EQ(image.size(), QSize(mark.points * scale, mark.points * scale));
            const int last = image.width() - 1;
            for (QPoint corner : {QPoint(0, 0), QPoint(last, 0), QPoint(0, last), QPoint(last, last)}) {
                EXPECT_EQ(alphaAt(image, corner.x(), corner.y()), 0);
            }
        }
    }
}

TEST(MarkPictures, PlateIsARoundPlateThatFillsItsSquare) {
    expectRound(plate);
    expectRound(fallbackPlate);
}

TEST(MarkPictures, DotIsRound) {
    expectRound(dot);
}

TEST(MarkPictures, PlateIsLightAndNeutral) {
    const QImage image = stockPicture(plate.stem, 3);
    for (int y = 6; y < 66; ++y) {
        const QRgb p = image.pixel(36, y);
        EXPECT_GE(qMin(qMin(qRed(p), qGreen(p)), qBlue(p)), 215);
        EXPECT_LE(qMax(qMax(qRed(p), qGreen(p)), qBlue(p)) - qMin(qMin(qRed(p), qGreen(p)), qBlue(p)), 6);
    }
}

TEST(MarkPictures, CrossIsTheSameFromEverySide) {
    for (int scale : {1, 2, 3}) {
        SCOPED_TRACE(scale);
        const QImage image = stockPicture(cross.stem, scale);
        ASSERT_FALSE(image.isNull());
        EXPECT_LE(alphaDifference(image, image.mirrored(true, false)), 1);
        EXPECT_LE(alphaDifference(image, image.mirrored(false, true)), 1);
        EXPECT_LE(alphaDifference(image, transposed(image)), 1);
    }
}

TEST(MarkPictures, CrossHasItsBarsOnTheDiagonalsOnly) {
    const QImage image = stockPicture(cross.stem, 3);
    ASSERT_EQ(image.width(), 36);
    for (int i = 8; i <= 27; ++i) {
        EXPECT_EQ(alphaAt(image, i, i), 255) << i;
        EXPECT_EQ(alphaAt(image, i, 35 - i), 255) << i;
    }
    for (int i = 0; i < 36; ++i) {
        if (i >= 12 && i <= 23) continue;
        EXPECT_EQ(alphaAt(image, i, 18), 0) << i;
        EXPECT_EQ(alphaAt(image, 18, i), 0) << i;
    }
}

TEST(MarkPictures, IconShapeIsARoundedSquare) {
    for (int scale : {1, 2, 3}) {
        SCOPED_TRACE(scale);
        const QImage image = stockPicture(iconShape.stem, scale);
        ASSERT_FALSE(image.isNull());
        EXPECT_LE(alphaDifference(image, image.mirrored(true, false)), 1);
        EXPECT_LE(alphaDifference(image, image.mirrored(false, true)), 1);
        EXPECT_LE(alphaDifference(image, transposed(image)), 1);
        const double square = 24.0 * 24.0 * scale * scale;
        EXPECT_LT(coveredPixels(image), square * 0.98);
        EXPECT_GT(coveredPixels(image), square * 0.9);
        const int middle = image.width() / 2;
        EXPECT_GE(alphaAt(image, middle, 0), 250);
        EXPECT_GE(alphaAt(image, image.width() - 1, middle), 250);
    }
}

} // namespace tallyforge::test
