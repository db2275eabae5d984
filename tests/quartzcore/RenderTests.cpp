#include "quartzcore/RenderServer.h"
#include "rastergraphics/RasterGraphics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <numbers>

namespace tallyforge {
namespace {

constexpr double pi = std::numbers::pi;
const CGColor white{1, 1, 1, 1}, black{0, 0, 0, 1}, red{1, 0, 0, 1}, green{0, 1, 0, 1}, blue{0, 0, 1, 1};
constexpr uint32_t whitePixel = 0xFFFFFFFF, redPixel = 0xFFFF0000, greenPixel = 0xFF00FF00,
                   bluePixel = 0xFF0000FF;

struct Channels {
    int red, green, blue;
};
Channels channels(uint32_t pixel) {
    return {int(pixel >> 16 & 255), int(pixel >> 8 & 255), int(pixel & 255)};
}
void expectColour(uint32_t pixel, Channels expected, int tolerance, const std::string& what) {
    const Channels actual = channels(pixel);
    EXPECT_LE(std::abs(actual.red - expected.red), tolerance) << what << " red " << actual.red;
    EXPECT_LE(std::abs(actual.green - expected.green), tolerance) << what << " green " << actual.green;
    EXPECT_LE(std::abs(actual.blue - expected.blue), tolerance) << what << " blue " << actual.blue;
}

// How much of a white picture is covered by black, in pixels, and where its weight lies.
struct Ink {
    double area = 0, x = 0, y = 0;
    int left = 1 << 20, right = -1, top = 1 << 20, bottom = -1;
};
Ink inkOf(const CGImage& picture) {
    Ink ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const double share = (255 - channels(picture.pixel(x, y)).green) / 255.0;
            if (share <= 0) continue;
            ink.area += share;
            ink.x += share * (x + 0.5);
            ink.y += share * (y + 0.5);
            ink.left = std::min(ink.left, x);
            ink.right = std::max(ink.right, x + 1);
            ink.top = std::min(ink.top, y);
            ink.bottom = std::max(ink.bottom, y + 1);
        }
    }
    ink.x /= ink.area;
    ink.y /= ink.area;
    return ink;
}

template <typename Layer = CALayer>
std::shared_ptr<Layer> makeLayer(CGRect frame) {
    auto layer = std::make_shared<Layer>();
    layer->setFrame(frame);
    return layer;
}
std::shared_ptr<CALayer> makeBox(CGRect frame, const CGColor& color) {
    auto layer = makeLayer(frame);
    layer->setBackgroundColor(color);
    return layer;
}

class Render : public testing::TestWithParam<double> {
  protected:
    static void SetUpTestSuite() { Graphics::install(MakeRasterGraphics()); }
    static void TearDownTestSuite() { Graphics::install(nullptr); }

    Render() : root_(makeLayer({{0, 0}, {60, 60}})) {}
    double scale() const { return GetParam(); }
    std::shared_ptr<CGImage> picture() const { return RenderServer::render(*root_, 0, scale()); }
    // The pixel at a place in points.
    uint32_t at(const CGImage& image, double x, double y) const {
        return image.pixel(int(x * scale()), int(y * scale()));
    }

    std::shared_ptr<CALayer> root_;
};

TEST_P(Render, SolidBoxesOnPixelEdgesAreExact) {
    root_->addSublayer(makeBox({{10, 20}, {30, 24}}, {0.2, 0.4, 0.6, 1})); // whole pixels at every scale here
    const auto image = picture();
    const uint32_t colour = 0xFF336699;
    for (int y = 0; y < image->height(); ++y) {
        for (int x = 0; x < image->width(); ++x) {
            const bool inside =
                x >= 10 * scale() && x < 40 * scale() && y >= 20 * scale() && y < 44 * scale();
            ASSERT_EQ(image->pixel(x, y), inside ? colour : whitePixel) << x << ' ' << y;
        }
    }
}

TEST_P(Render, TheRootsOwnPlaceDoesNotCount) {
    root_->setBackgroundColor(blue);
    root_->setPosition({900, 900});
    root_->setBounds({{5, 7}, {60, 60}});
    root_->setTransform(CATransform3DMakeScale(3, 3, 1));
    root_->addSublayer(makeBox({{5, 7}, {20, 20}}, red));
    const auto image = picture();
    EXPECT_EQ(image->width(), int(60 * scale()));
    EXPECT_EQ(at(*image, 1, 1), redPixel);
    EXPECT_EQ(at(*image, 19, 19), redPixel);
    EXPECT_EQ(at(*image, 21, 19), bluePixel);
    EXPECT_EQ(image->pixel(image->width() - 1, image->height() - 1), bluePixel);
}

TEST_P(Render, BordersLieInsideAndAboveTheRest) {
    const auto box = makeBox({{10, 10}, {40, 40}}, red);
    box->setBorderWidth(4);
    box->setBorderColor(green);
    box->addSublayer(makeBox({{0, 0}, {20, 20}}, blue));
    root_->addSublayer(box);
    const auto image = picture();
    const std::tuple<double, double, uint32_t> expected[] = {
        {9, 30, whitePixel},    {10.5, 30, greenPixel}, {13.4, 30, greenPixel},   {14.1, 35, redPixel},
        {14.5, 20, bluePixel},  {45.5, 45.5, redPixel}, {46.5, 46.5, greenPixel}, {49.4, 11, greenPixel},
        {11, 49.4, greenPixel}, {30, 51, whitePixel},   {30, 13.4, greenPixel}};
    for (const auto& [x, y, colour] : expected)
        EXPECT_EQ(at(*image, x, y), colour) << x << ' ' << y;
}

TEST_P(Render, BordersAreAsWideAsAskedFor) {
    const auto box = makeLayer({{10, 10}, {40, 40}});
    box->setBorderWidth(4);
    box->setBorderColor(black);
    root_->addSublayer(box);
    EXPECT_NEAR(inkOf(*picture()).area, (1600 - 32 * 32) * scale() * scale(), 0.01);
    box->setBorderColor(CGColor{0, 0, 0, 0.5}); // corners are not painted twice
    EXPECT_NEAR(inkOf(*picture()).area, (1600 - 32 * 32) * scale() * scale() * 0.5, 8 * scale() * scale());
    expectColour(at(*picture(), 11, 11), {128, 128, 128}, 1, "corner");
    box->setBorderWidth(25); // wider than there is room
    expectColour(at(*picture(), 30, 30), {128, 128, 128}, 1, "middle");
}

TEST_P(Render, CornersAreRounded) {
    const auto box = makeBox({{10, 10}, {40, 30}}, black);
    box->setCornerRadius(10);
    root_->addSublayer(box);
    const auto image = picture();
    // A rounded box lacks four corners of (1 - pi/4) r r.
    const double area = (40 * 30 - (4 - pi) * 100) * scale() * scale();
    EXPECT_NEAR(inkOf(*image).area, area, area * 0.002);
    EXPECT_EQ(at(*image, 10.5, 10.5), whitePixel);
    EXPECT_EQ(at(*image, 49.2, 39.2), whitePixel);
    EXPECT_EQ(at(*image, 14, 14), 0xFF000000);
    EXPECT_EQ(at(*image, 30, 10.2), 0xFF000000);
    box->setCornerRadius(500); // no more than half a side: two half circles of 15 and what is between
    const double pill = (pi * 225 + 10 * 30) * scale() * scale();
    EXPECT_NEAR(inkOf(*picture()).area, pill, pill * 0.002);
}

TEST_P(Render, RoundedBordersAreRings) {
    const auto box = makeLayer({{10, 10}, {40, 40}});
    box->setCornerRadius(20);
    box->setBorderWidth(5);
    box->setBorderColor(black);
    root_->addSublayer(box);
    const double ring = pi * (400 - 225) * scale() * scale();
    EXPECT_NEAR(inkOf(*picture()).area, ring, ring * 0.003);
    EXPECT_EQ(at(*picture(), 30, 30), whitePixel);
    EXPECT_EQ(at(*picture(), 12, 30), 0xFF000000);
    // With a radius below the width the inside is square.
    box->setCornerRadius(3);
    const double thick = (1600 - (4 - pi) * 9 - 900) * scale() * scale();
    EXPECT_NEAR(inkOf(*picture()).area, thick, thick * 0.003);
    EXPECT_EQ(at(*picture(), 15.5, 15.5), whitePixel);
}

TEST_P(Render, OverlappingSublayersFadeAsOne) {
    const auto container = makeLayer({{0, 0}, {60, 60}});
    container->addSublayer(makeBox({{10, 10}, {24, 24}}, red));
    container->addSublayer(makeBox({{22, 22}, {24, 24}}, blue));
    container->setOpacity(0.5F);
    root_->addSublayer(container);
    const auto image = picture();
    expectColour(at(*image, 15, 15), {255, 128, 128}, 1, "first");
    expectColour(at(*image, 28, 28), {128, 128, 255}, 1, "both"); // nothing of the first shines through
    expectColour(at(*image, 42, 42), {128, 128, 255}, 1, "second");
    EXPECT_EQ(at(*image, 5, 5), whitePixel);
    EXPECT_EQ(at(*image, 50, 50), whitePixel);
}

TEST_P(Render, GroupsWithinGroupsMultiply) {
    const auto outer = makeBox({{0, 0}, {60, 60}}, white), inner = makeBox({{6, 6}, {40, 40}}, black);
    inner->addSublayer(makeBox({{0, 0}, {20, 40}}, black));
    outer->addSublayer(inner);
    outer->setOpacity(0.5F);
    inner->setOpacity(0.5F);
    root_->addSublayer(outer);
    const auto image = picture();
    expectColour(at(*image, 10, 30), {191, 191, 191}, 2, "left");
    expectColour(at(*image, 40, 30), {191, 191, 191}, 2, "right");
}

TEST_P(Render, MaskingClipsSublayers) {
    const auto box = makeBox({{10, 10}, {40, 40}}, red);
    box->addSublayer(makeBox({{-20, 20}, {80, 80}}, blue));
    root_->addSublayer(box);
    EXPECT_EQ(at(*picture(), 5, 35), bluePixel);
    box->setMasksToBounds(true);
    auto image = picture();
    EXPECT_EQ(at(*image, 5, 35), whitePixel);
    EXPECT_EQ(at(*image, 30, 55), whitePixel);
    EXPECT_EQ(at(*image, 11, 49), bluePixel);
    box->setCornerRadius(12);
    image = picture();
    EXPECT_EQ(at(*image, 11, 48.6), whitePixel);
    EXPECT_EQ(at(*image, 30, 48.6), bluePixel);
    const auto after = makeBox({{0, 0}, {8, 60}}, green); // clips end with their layer
    root_->addSublayer(after);
    EXPECT_EQ(at(*picture(), 2, 55), greenPixel);
}

TEST_P(Render, AQuarterTurnSwapsTheSides) {
    const auto box = makeBox({{10, 20}, {40, 20}}, black);
    box->setTransform(CATransform3DMakeRotation(pi / 2, 0, 0, 1));
    root_->addSublayer(box);
    const auto image = picture();
    for (int y = 0; y < image->height(); ++y) {
        for (int x = 0; x < image->width(); ++x) {
            const bool inside =
                x >= 20 * scale() && x < 40 * scale() && y >= 10 * scale() && y < 50 * scale();
            ASSERT_EQ(image->pixel(x, y), inside ? 0xFF000000 : whitePixel) << x << ' ' << y;
        }
    }
}

TEST_P(Render, TurnsRunClockwise) {
    const auto box = makeLayer({{10, 10}, {40, 40}});
    box->addSublayer(makeBox({{0, 0}, {20, 20}}, red)); // at the top left
    box->setTransform(CATransform3DMakeRotation(pi / 2, 0, 0, 1));
    root_->addSublayer(box);
    EXPECT_EQ(at(*picture(), 45, 15), redPixel); // at the top right
    EXPECT_EQ(at(*picture(), 15, 15), whitePixel);
}

TEST_P(Render, AnEighthTurnStandsOnItsCorner) {
    const auto box = makeBox({{15, 15}, {30, 30}}, black);
    box->setTransform(CATransform3DMakeRotation(pi / 4, 0, 0, 1));
    root_->addSublayer(box);
    const Ink ink = inkOf(*picture());
    EXPECT_NEAR(ink.area, 900 * scale() * scale(), 900 * scale() * scale() * 0.004);
    EXPECT_NEAR(ink.x, 30 * scale(), 0.05);
    EXPECT_NEAR(ink.y, 30 * scale(), 0.05);
    const double reach = 15 * std::numbers::sqrt2 * scale();
    EXPECT_NEAR(ink.right - ink.left, 2 * reach, 2.1);
    EXPECT_NEAR(ink.bottom - ink.top, 2 * reach, 2.1);
    // Edges are smoothed: there are greys.
    const auto image = picture();
    int greys = 0;
    for (const uint32_t pixel : image->pixels())
        greys += pixel != whitePixel && pixel != 0xFF000000 ? 1 : 0;
    EXPECT_GT(greys, int(30 * scale()));
}

TEST_P(Render, ATurnOutOfThePlaneSqueezes) {
    const auto box = makeBox({{10, 10}, {40, 40}}, black);
    box->setTransform(CATransform3DMakeRotation(pi / 3, 0, 1, 0));
    root_->addSublayer(box);
    Ink ink = inkOf(*picture());
    EXPECT_NEAR(ink.area, 20 * 40 * scale() * scale(), 1);
    EXPECT_EQ(ink.left, int(20 * scale()));
    EXPECT_EQ(ink.right, int(40 * scale()));
    EXPECT_EQ(ink.top, int(10 * scale()));
    box->setTransform(CATransform3DMakeRotation(-pi / 3, 1, 0, 0));
    ink = inkOf(*picture());
    EXPECT_EQ(ink.top, int(20 * scale()));
    EXPECT_EQ(ink.bottom, int(40 * scale()));
    EXPECT_EQ(ink.left, int(10 * scale()));
    box->setTransform(CATransform3DMakeRotation(pi / 2, 0, 1, 0)); // edge-on
    const auto image = picture();
    for (const uint32_t pixel : image->pixels())
        ASSERT_EQ(pixel, whitePixel);
}

TEST_P(Render, HalfATurnOutOfThePlaneMirrors) {
    const auto box = makeLayer({{10, 10}, {40, 40}});
    box->addSublayer(makeBox({{0, 0}, {10, 40}}, red));
    box->setTransform(CATransform3DMakeRotation(pi, 0, 1, 0));
    root_->addSublayer(box);
    EXPECT_EQ(at(*picture(), 45, 30), redPixel);
    EXPECT_EQ(at(*picture(), 15, 30), whitePixel);
}

TEST_P(Render, ContentsFillTheBounds) {
    auto image = std::make_shared<CGImage>(2, 2);
    image->row(0)[0] = redPixel;
    image->row(0)[1] = greenPixel;
    image->row(1)[0] = bluePixel;
    image->row(1)[1] = 0xFF000000;
    const auto layer = makeLayer({{10, 10}, {40, 40}});
    layer->setContents(image);
    root_->addSublayer(layer);
    const auto picture1 = picture();
    EXPECT_EQ(at(*picture1, 10.7, 10.7), redPixel);
    EXPECT_EQ(at(*picture1, 49, 10.7), greenPixel);
    EXPECT_EQ(at(*picture1, 10.7, 49), bluePixel);
    EXPECT_EQ(at(*picture1, 49, 49), 0xFF000000);
    EXPECT_EQ(at(*picture1, 9, 30), whitePixel);
    EXPECT_EQ(at(*picture1, 51, 30), whitePixel);
    layer->setOpacity(0.5F);
    expectColour(at(*picture(), 10.7, 10.7), {255, 128, 128}, 1, "faded");
}

TEST_P(Render, AnAnimationIsShownAtItsTime) {
    const auto box = makeBox({{0, 0}, {12, 12}}, red);
    const auto slide = CABasicAnimation::animationWithKeyPath("position.x");
    slide->setToValue(46.0);
    slide->setDuration(2);
    slide->setBeginTime(5);
    box->addAnimation(*slide, "slide");
    root_->addSublayer(box);
    const auto shown = RenderServer::render(*root_, 6, scale()); // centred on 26
    EXPECT_EQ(at(*shown, 20.7, 6), redPixel);
    EXPECT_EQ(at(*shown, 31, 6), redPixel);
    EXPECT_EQ(at(*shown, 19, 6), whitePixel);
    EXPECT_EQ(at(*shown, 33, 6), whitePixel);
    EXPECT_EQ(at(*RenderServer::render(*root_, 8, scale()), 6, 6), redPixel);
}

TEST_P(Render, TextIsCentredInItsLayer) {
    const auto text = makeLayer<CATextLayer>({{0, 0}, {60, 40}});
    text->setString("ooo");
    text->setFont({17, 400});
    text->setAlignmentMode(CATextAlignment::center);
    root_->addSublayer(text);
    const Ink first = inkOf(*picture());
    EXPECT_GT(first.area, 20 * scale() * scale());
    EXPECT_NEAR(first.x, 30 * scale(), 0.6 * scale());
    text->setFrame({{0, 10}, {60, 40}});
    const Ink moved = inkOf(*picture());
    EXPECT_NEAR(moved.y - first.y, 10 * scale(), 0.1 * scale());
    text->setFrame({{0, 0}, {60, 60}}); // 20 higher: the middle goes down by 10
    EXPECT_NEAR(inkOf(*picture()).y, moved.y, 0.1 * scale());
    // The baseline lies where the font's own measures put it.
    const TextMeasure measure = Graphics::current()->measureText("ooo", {17, 400});
    const double baseline = (60 - measure.lineHeight()) / 2 + measure.ascent;
    EXPECT_NEAR(inkOf(*picture()).bottom, baseline * scale(), 0.5 * scale() + 1);
}

TEST_P(Render, TextIsAlignedAndStaysInItsLayer) {
    const auto text = makeLayer<CATextLayer>({{5, 0}, {50, 30}});
    text->setString("HH");
    text->setFont({17, 400});
    root_->addSublayer(text);
    const double width = Graphics::current()->measureText("HH", {17, 400}).width * scale();
    const Ink left = inkOf(*picture());
    EXPECT_NEAR(left.x, 5 * scale() + width / 2, scale());
    text->setAlignmentMode(CATextAlignment::right);
    const Ink right = inkOf(*picture());
    EXPECT_NEAR(right.x, 55 * scale() - width / 2, scale());
    text->setString("A line that is much too long for this");
    const Ink cut = inkOf(*picture());
    EXPECT_GE(cut.left, int(4 * scale()));
    EXPECT_LE(cut.right, int(56 * scale()) + 1);
    EXPECT_GT(cut.area, left.area);
}

TEST_P(Render, ShapesAreDrawnInTheirOwnCoordinates) {
    const auto shape = makeLayer<CAShapeLayer>({{10, 10}, {40, 40}});
    auto path = std::make_shared<CGPath>();
    path->addEllipseInRect({{5, 5}, {30, 30}});
    shape->setPath(path);
    shape->setFillColor(black);
    root_->addSublayer(shape);
    const double disc = pi * 225 * scale() * scale();
    const Ink ink = inkOf(*picture());
    EXPECT_NEAR(ink.area, disc, disc * 0.003);
    EXPECT_NEAR(ink.x, 30 * scale(), 0.05);
    shape->setFillColor(std::nullopt);
    shape->setStrokeColor(black);
    shape->setLineWidth(4);
    const double ring = pi * (17 * 17 - 13 * 13) * scale() * scale();
    EXPECT_NEAR(inkOf(*picture()).area, ring, ring * 0.01);
}

TEST_P(Render, HugeAndOddLayersAreSurvived) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double odd : {1e5, 1e9, 1e18, 1e300, std::numeric_limits<double>::infinity(), nan, -1e12}) {
        const auto box = makeBox({{0, 0}, {odd, odd}}, red);
        box->setCornerRadius(odd);
        box->setBorderWidth(odd);
        box->setMasksToBounds(true);
        box->setContents(std::make_shared<CGImage>(3, 3));
        box->addSublayer(makeBox({{odd, -odd}, {5, odd}}, green));
        box->addSublayer(makeBox({{0, 0}, {5, 5}}, green));
        box->setOpacity(0.5F);
        root_->addSublayer(box);
        const auto text = makeLayer<CATextLayer>({{0, 0}, {odd, 20}});
        text->setString("text");
        text->setFont({odd, 400});
        root_->addSublayer(text);
        const auto turned = makeBox({{0, 0}, {5, 5}}, blue);
        turned->setTransform(CATransform3DScale(CATransform3DMakeRotation(odd, 0, 0, 1), odd, odd, 1));
        root_->addSublayer(turned);
    }
    root_->addSublayer(makeBox({{0, 0}, {12, 12}}, green));
    EXPECT_EQ(at(*picture(), 6, 6), greenPixel); // what comes after them is painted as ever
}

TEST_P(Render, AHugePlainBoxCoversThePicture) {
    root_->addSublayer(makeBox({{-1e6, -1e6}, {2e6, 2e6}}, red));
    const auto image = picture();
    for (const uint32_t pixel : image->pixels())
        ASSERT_EQ(pixel, redPixel);
}

INSTANTIATE_TEST_SUITE_P(Scales, Render, testing::Values(1.0, 1.5, 2.0, 3.0));

} // namespace
} // namespace tallyforge
