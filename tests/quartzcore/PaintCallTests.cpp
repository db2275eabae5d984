#include "quartzcore/RenderServer.h"
#include "quartzcore/TextLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace tallyforge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Writes down what is painted.
class Recorder final : public Canvas {
  public:
    struct Text {
        std::string string;
        CGPoint baseline;
        CGFloat alpha;
    };
    std::vector<std::string> calls;
    std::vector<CGRect> rects;   // of fillRect and drawImage, in user space
    std::vector<CGFloat> alphas; // of everything painted and of groups
    std::vector<CGRect> groups;
    std::vector<Text> texts;
    std::vector<CGAffineTransform> transforms; // in which fillRect and drawImage were called

    void save() override { saved_.push_back(transform_); }
    void restore() override {
        transform_ = saved_.back();
        saved_.pop_back();
    }
    void setTransform(const CGAffineTransform& t) override { transform_ = t; }
    CGAffineTransform transform() const override { return transform_; }
    void clipToRect(const CGRect&) override { calls.emplace_back("clipRect"); }
    void clipToPath(const CGPath&) override { calls.emplace_back("clipPath"); }
    void fillRect(const CGRect& rect, const CGColor&, CGFloat alpha, CGBlendMode) override {
        note("rect", alpha);
        rects.push_back(rect);
        transforms.push_back(transform_);
    }
    void fillPath(const CGPath&, const CGColor&, CGFloat alpha, CGBlendMode) override { note("path", alpha); }
    void strokePath(const CGPath&, const CGColor& color, CGFloat, bool) override {
        note("stroke", color.alpha);
    }
    void drawImage(const CGImageRef&, const CGRect& rect, CGFloat alpha, CGBlendMode) override {
        note("image", alpha);
        rects.push_back(rect);
        transforms.push_back(transform_);
    }
    void drawText(std::string_view text, const FontFace&, const CGPoint& at, const CGColor&,
                  CGFloat alpha) override {
        note("text", alpha);
        texts.push_back({std::string(text), at, alpha});
    }
    void beginGroup(const CGRect& bounds, CGFloat alpha) override {
        note("group", alpha);
        groups.push_back(bounds);
    }
    void endGroup() override { calls.emplace_back("end"); }
    void flush() override {}

  private:
    void note(const char* what, CGFloat alpha) {
        calls.emplace_back(what);
        alphas.push_back(alpha);
    }
    CGAffineTransform transform_;
    std::vector<CGAffineTransform> saved_;
};

// Every character is half the font size wide; lines are 0.8 above and 0.2 of the size below the baseline.
class PlainGraphics final : public Graphics {
  public:
    explicit PlainGraphics(int& measured) : measured_(measured) {}
    std::unique_ptr<Canvas> makeCanvas(CGImage&) override { return std::make_unique<Recorder>(); }
    CGImageRef decodeImage(std::span<const uint8_t>) override { return nullptr; }
    std::vector<uint8_t> encodePNG(const CGImage&) override { return {}; }
    TextMeasure measureText(std::string_view text, const FontFace& font) override {
        ++measured_;
        return {CGFloat(characterBoundaries(text).size() - 1) * font.size / 2, font.size * 0.8,
                font.size * 0.2};
    }
    std::vector<size_t> characterBoundaries(std::string_view text) override {
        std::vector<size_t> boundaries;
        for (size_t i = 0; i < text.size(); ++i) {
            if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) boundaries.push_back(i);
        }
        boundaries.push_back(text.size());
        return boundaries;
    }

  private:
    int& measured_;
};

class PaintCalls : public testing::Test {
  protected:
    void SetUp() override { Graphics::install(std::make_unique<PlainGraphics>(measured_)); }
    void TearDown() override { Graphics::install(nullptr); }

    std::vector<std::string> linesOf(std::string_view text, CGSize room, bool wrapped) {
        std::vector<std::string> lines;
        for (const auto& line : CALayOutText(text, {20, weight_}, room, wrapped)->lines)
            lines.push_back(line.text);
        return lines;
    }
    Recorder paint(const CALayer& layer) {
        Recorder canvas;
        RenderServer::paint(layer, 0, canvas, {});
        return canvas;
    }

    int measured_ = 0;
    int weight_ = 400;
};

template <typename Layer = CALayer>
std::shared_ptr<Layer> makeLayer(CGRect frame = {{0, 0}, {100, 50}}) {
    auto layer = std::make_shared<Layer>();
    layer->setFrame(frame);
    return layer;
}

const CGColor red{1, 0, 0, 1};

TEST_F(PaintCalls, GoBackToFront) {
    const auto layer = makeLayer(), child = makeLayer();
    layer->setBackgroundColor(red);
    layer->setContents(std::make_shared<CGImage>(4, 4));
    layer->setBorderWidth(1);
    layer->setBorderColor(red);
    layer->setCornerRadius(3);
    layer->setMasksToBounds(true);
    child->setBackgroundColor(red);
    layer->addSublayer(child);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("path", "clipPath", "image", "rect", "path"));
}

TEST_F(PaintCalls, WhatCannotBeSeenIsNotPainted) {
    const auto layer = makeLayer();
    EXPECT_THAT(paint(*layer).calls, IsEmpty()); // nothing in it
    layer->setBackgroundColor(CGColor{1, 1, 1, 0});
    EXPECT_THAT(paint(*layer).calls, IsEmpty());
    layer->setBackgroundColor(red);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("rect"));
    layer->setHidden(true);
    EXPECT_THAT(paint(*layer).calls, IsEmpty());
    layer->setHidden(false);
    for (const float opacity : {0.001F, 0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        layer->setOpacity(opacity);
        EXPECT_THAT(paint(*layer).calls, IsEmpty()) << opacity;
    }
    layer->setOpacity(7); // no more than all
    EXPECT_THAT(paint(*layer).alphas, ElementsAre(1));
}

TEST_F(PaintCalls, OddGeometryIsNotPainted) {
    const double nan = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();
    for (const double odd : {nan, infinity, -infinity}) {
        const auto layer = makeLayer();
        layer->setBackgroundColor(red);
        layer->setPosition({odd, 0});
        EXPECT_THAT(paint(*layer).calls, IsEmpty());
        layer->setPosition({0, 0});
        layer->setBounds({{0, 0}, {odd, 1}});
        EXPECT_THAT(paint(*layer).calls, IsEmpty());
        layer->setBounds({{0, 0}, {10, 10}});
        layer->setAnchorPoint({odd, 0});
        EXPECT_THAT(paint(*layer).calls, IsEmpty());
        layer->setAnchorPoint({0, 0});
        layer->setTransform(CATransform3DMakeScale(odd, 1, 1));
        EXPECT_THAT(paint(*layer).calls, IsEmpty());
        layer->setTransform(CATransform3DIdentity);
        EXPECT_THAT(paint(*layer).calls, ElementsAre("rect"));
    }
}

TEST_F(PaintCalls, EdgeOnAndShrunkToNothingIsNotPainted) {
    const auto layer = makeLayer();
    layer->setBackgroundColor(red);
    for (const CATransform3D& t : {CATransform3DMakeRotation(3.14159265358979323846 / 2, 0, 1, 0),
                                   CATransform3DMakeRotation(3.14159265358979323846 / 2, 1, 0, 0),
                                   CATransform3DMakeScale(0, 1, 1), CATransform3DMakeScale(0, 0, 0)}) {
        layer->setTransform(t);
        EXPECT_THAT(paint(*layer).calls, IsEmpty());
    }
    layer->setTransform(CATransform3DMakeScale(1e-6, 1e-6, 1)); // tiny, but not flat
    EXPECT_THAT(paint(*layer).calls, ElementsAre("rect"));
}

TEST_F(PaintCalls, OneThingFadesAloneSeveralAsAGroup) {
    const auto layer = makeLayer();
    layer->setContents(std::make_shared<CGImage>(4, 4));
    layer->setOpacity(0.5F);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("image"));
    EXPECT_THAT(paint(*layer).alphas, ElementsAre(0.5));
    layer->setBackgroundColor(red);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("group", "rect", "image", "end"));
    EXPECT_THAT(paint(*layer).alphas, ElementsAre(0.5, 1, 1));
}

TEST_F(PaintCalls, AFadedContainerOfOneHandsItsAlphaDown) {
    const auto layer = makeLayer(), child = makeLayer();
    child->setBackgroundColor(red);
    child->setOpacity(0.5F);
    layer->addSublayer(child);
    layer->setOpacity(0.5F);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("rect"));
    EXPECT_THAT(paint(*layer).alphas, ElementsAre(0.25));
    const auto other = makeLayer();
    layer->addSublayer(other);
    other->setHidden(true);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("rect"));
    other->setHidden(false);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("group", "rect", "end"));
}

TEST_F(PaintCalls, AGroupReachesAsFarAsItsLayers) {
    const auto layer = makeLayer({{10, 10}, {100, 50}}), child = makeLayer({{-20, 30}, {40, 40}});
    layer->setBackgroundColor(red);
    child->setBackgroundColor(red);
    layer->addSublayer(child);
    layer->setOpacity(0.5F);
    EXPECT_THAT(paint(*layer).groups, ElementsAre(CGRect{{-20, 0}, {120, 70}}));
    layer->setMasksToBounds(true);
    EXPECT_THAT(paint(*layer).groups, ElementsAre(CGRect{{0, 0}, {100, 50}}));
}

TEST_F(PaintCalls, OddSublayersDoNotTakeTheGroupAway) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto layer = makeLayer(), child = makeLayer();
    layer->setBackgroundColor(red);
    layer->setOpacity(0.5F);
    const auto text = makeLayer<CATextLayer>({{0, 0}, {100, 50}});
    text->setFont({nan, 400});
    layer->addSublayer(text);
    const auto shape = makeLayer<CAShapeLayer>({{0, 0}, {100, 50}});
    auto path = std::make_shared<CGPath>();
    path->moveToPoint(nan, 0);
    shape->setPath(path);
    layer->addSublayer(shape);
    child->setPosition({nan, nan});
    layer->addSublayer(child);
    EXPECT_THAT(paint(*layer).groups, ElementsAre(CGRect{{0, 0}, {100, 50}}));
}

TEST_F(PaintCalls, SublayersLieInTheBoundsOfTheirSuperlayer) {
    const auto layer = makeLayer({{10, 20}, {100, 50}}), child = makeLayer({{3, 4}, {5, 6}});
    layer->setBounds({{1, 2}, {100, 50}}); // scrolled by 1 and 2
    child->setBackgroundColor(red);
    layer->addSublayer(child);
    const Recorder canvas = paint(*layer);
    ASSERT_EQ(canvas.transforms.size(), 1U);
    EXPECT_EQ(CGRectApplyAffineTransform(canvas.rects[0], canvas.transforms[0]), (CGRect{{12, 22}, {5, 6}}));
}

TEST_F(PaintCalls, TransformsActAboutTheAnchorPoint) {
    const auto layer = makeLayer({{10, 20}, {100, 50}});
    layer->setBackgroundColor(red);
    layer->setAnchorPoint({0, 1}); // now at 60, 45 to 160, 45 - 50
    layer->setTransform(CATransform3DTranslate(CATransform3DMakeScale(2, 3, 1), 1, 1, 0));
    Recorder canvas;
    RenderServer::paint(*layer, 0, canvas, {2, 0, 0, 2, 5, 5});
    // In the superlayer: left 60 + 2, bottom 45 + 3, 200 by 150; then doubled and moved by 5.
    EXPECT_EQ(CGRectApplyAffineTransform(canvas.rects[0], canvas.transforms[0]),
              (CGRect{{129, -199}, {400, 300}}));
    EXPECT_EQ(canvas.transform(), CGAffineTransformIdentity);
}

TEST_F(PaintCalls, GravityPlacesTheContents) {
    const auto layer = makeLayer(); // 100 x 50
    layer->setContents(std::make_shared<CGImage>(40, 40));
    layer->setContentsScale(2); // 20 x 20 points
    const std::pair<CAGravity, CGRect> expected[] = {{CAGravity::resize, {{0, 0}, {100, 50}}},
                                                     {CAGravity::resizeAspect, {{25, 0}, {50, 50}}},
                                                     {CAGravity::resizeAspectFill, {{0, -25}, {100, 100}}},
                                                     {CAGravity::center, {{40, 15}, {20, 20}}},
                                                     {CAGravity::top, {{40, 0}, {20, 20}}},
                                                     {CAGravity::bottom, {{40, 30}, {20, 20}}},
                                                     {CAGravity::left, {{0, 15}, {20, 20}}},
                                                     {CAGravity::right, {{80, 15}, {20, 20}}},
                                                     {CAGravity::topLeft, {{0, 0}, {20, 20}}},
                                                     {CAGravity::topRight, {{80, 0}, {20, 20}}},
                                                     {CAGravity::bottomLeft, {{0, 30}, {20, 20}}},
                                                     {CAGravity::bottomRight, {{80, 30}, {20, 20}}}};
    for (const auto& [gravity, rect] : expected) {
        layer->setContentsGravity(gravity);
        EXPECT_EQ(paint(*layer).rects[0], rect) << int(gravity);
    }
    layer->setContentsScale(0); // taken for 1
    EXPECT_EQ(paint(*layer).rects[0].size, (CGSize{40, 40}));
}

TEST_F(PaintCalls, ShapesAreFilledThenStroked) {
    const auto layer = makeLayer<CAShapeLayer>();
    EXPECT_THAT(paint(*layer).calls, IsEmpty());
    auto path = std::make_shared<CGPath>();
    path->addRect({{0, 0}, {10, 10}});
    layer->setPath(path);
    layer->setStrokeColor(red);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("path", "stroke"));
    layer->setOpacity(0.5F);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("group", "path", "stroke", "end"));
    layer->setFillColor(std::nullopt);
    EXPECT_THAT(paint(*layer).calls, ElementsAre("stroke"));
    EXPECT_THAT(paint(*layer).alphas, ElementsAre(0.5));
    layer->setLineWidth(0);
    EXPECT_THAT(paint(*layer).calls, IsEmpty());
}

TEST_F(PaintCalls, TextIsCentredOnItsLineHeight) {
    const auto layer = makeLayer<CATextLayer>({{0, 0}, {100, 50}});
    layer->setString("abcd"); // 40 wide, 20 high, 16 of it above the baseline
    layer->setFont({20, 400});
    layer->setOpacity(0.5F);
    const Recorder left = paint(*layer);
    ASSERT_EQ(left.texts.size(), 1U);
    EXPECT_EQ(left.texts[0].baseline, (CGPoint{0, 31}));
    EXPECT_EQ(left.texts[0].alpha, 0.5);
    EXPECT_THAT(left.calls, ElementsAre("text"));
    layer->setAlignmentMode(CATextAlignment::center);
    EXPECT_EQ(paint(*layer).texts[0].baseline, (CGPoint{30, 31}));
    layer->setAlignmentMode(CATextAlignment::right);
    layer->setBounds({{7, 9}, {100, 50}});
    EXPECT_EQ(paint(*layer).texts[0].baseline, (CGPoint{67, 40}));
}

TEST_F(PaintCalls, WrappedTextIsCentredAsAWhole) {
    const auto layer = makeLayer<CATextLayer>({{0, 0}, {50, 70}});
    layer->setString("abcd ef");
    layer->setFont({20, 400});
    layer->setWrapped(true);
    layer->setAlignmentMode(CATextAlignment::center);
    const Recorder canvas = paint(*layer);
    ASSERT_EQ(canvas.texts.size(), 2U);
    EXPECT_EQ(canvas.texts[0].baseline, (CGPoint{5, 31})); // 15 above, then 16
    EXPECT_EQ(canvas.texts[1].baseline, (CGPoint{15, 51}));
}

TEST_F(PaintCalls, LongLinesEndWithAnEllipsis) {
    EXPECT_THAT(linesOf("abcdef", {60, 20}, false), ElementsAre("abcdef"));
    EXPECT_THAT(linesOf("abcdef", {59.995, 20}, false), ElementsAre("abcdef")); // within the tolerance
    EXPECT_THAT(linesOf("abcdef", {59.98, 20}, false), ElementsAre("abcd\u2026"));
    EXPECT_THAT(linesOf("abc defg", {59, 20}, false),
                ElementsAre("abc\u2026")); // without the space before it
    EXPECT_THAT(linesOf("äöüß€ë", {40, 20}, false), ElementsAre("äöü\u2026"));
    EXPECT_THAT(linesOf("abcdef", {10, 20}, false), ElementsAre("\u2026"));
    EXPECT_THAT(linesOf("abcdef", {9, 20}, false), IsEmpty());
    EXPECT_THAT(linesOf("ab\ncd", {90, 20}, false), ElementsAre("ab cd"));
}

TEST_F(PaintCalls, ThereMayBeNothingToSet) {
    EXPECT_THAT(linesOf("", {60, 20}, false), IsEmpty());
    for (const double odd :
         {0.0, -5.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_THAT(linesOf("abc", {odd, 20}, false), IsEmpty());
        EXPECT_THAT(linesOf("abc", {60, odd}, true), IsEmpty());
        EXPECT_TRUE(CALayOutText("abc", {odd, 400}, {60, 20}, false)->lines.empty());
    }
    Graphics::install(nullptr);
    EXPECT_THAT(linesOf("abc", {60, 20}, false), IsEmpty());
}

TEST_F(PaintCalls, WrappedTextBreaksAtSpaces) {
    EXPECT_THAT(linesOf("aa bb cc dd", {50, 200}, true), ElementsAre("aa bb", "cc dd"));
    EXPECT_THAT(linesOf("aa bb cc dd", {49, 200}, true), ElementsAre("aa", "bb", "cc", "dd"));
    EXPECT_THAT(linesOf("aa   bb", {30, 200}, true), ElementsAre("aa", "bb"));
    EXPECT_THAT(linesOf("aa\nbb\n\ncc", {90, 200}, true), ElementsAre("aa", "bb", "", "cc"));
    EXPECT_THAT(linesOf("aa\n", {90, 200}, true), ElementsAre("aa"));
    EXPECT_THAT(linesOf("a bcdefgh", {40, 200}, true),
                ElementsAre("a", "bcde", "fgh")); // no room for the word
    EXPECT_THAT(linesOf("abc", {5, 60}, true), ElementsAre("a", "b", "c"));
    EXPECT_THAT(linesOf("   ", {20, 60}, true), ElementsAre(""));
}

TEST_F(PaintCalls, WrappedTextIsShortenedInItsLastLine) {
    EXPECT_THAT(linesOf("aa bb cc dd", {50, 40}, true), ElementsAre("aa bb", "cc dd")); // exactly fits
    EXPECT_THAT(linesOf("aa bb cc dd ee", {50, 40}, true), ElementsAre("aa bb", "cc d\u2026"));
    EXPECT_THAT(linesOf("aa bb", {30, 5}, true), ElementsAre("aa\u2026")); // one line at least
    EXPECT_THAT(linesOf("aa\nbb", {90, 20}, true), ElementsAre("aa\u2026"));
    EXPECT_FALSE(CALayOutText("aa bb", {20, 400}, {50, 20}, true)->truncated);
    EXPECT_TRUE(CALayOutText("aa bb", {20, 400}, {30, 20}, true)->truncated);
}

TEST_F(PaintCalls, LaidOutTextIsKept) {
    weight_ = 417; // no other test asks for it
    linesOf("abcdef", {30, 20}, false);
    const int before = measured_;
    EXPECT_GT(before, 0);
    linesOf("abcdef", {30, 20}, false);
    EXPECT_EQ(measured_, before);
    linesOf("abcdef", {40, 20}, false);
    EXPECT_GT(measured_, before);
}

TEST_F(PaintCalls, PicturesHaveASensibleSize) {
    const auto layer = makeLayer({{0, 0}, {10, 20}});
    const auto picture = RenderServer::render(*layer, 0, 1.5);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->width(), 15);
    EXPECT_EQ(picture->height(), 30);
    EXPECT_EQ(picture->pixel(3, 3), 0xFFFFFFFFU);
    EXPECT_NE(RenderServer::render(*layer, 0, 204.8), nullptr);
    for (const double scale : {0.0, -1.0, 0.04, 204.9, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity()})
        EXPECT_EQ(RenderServer::render(*layer, 0, scale), nullptr) << scale;
    layer->setBounds({{0, 0}, {0, 20}});
    EXPECT_EQ(RenderServer::render(*layer, 0, 2), nullptr);
    layer->setBounds({{0, 0}, {10, 20}});
    Graphics::install(nullptr);
    EXPECT_EQ(RenderServer::render(*layer, 0, 2), nullptr);
}

} // namespace
} // namespace tallyforge
