#include "Drawing.h"

#include <limits>
#include <span>

namespace tallyforge {
namespace {

class CGContextTest : public testing::Test {
  protected:
    void SetUp() override { testGraphics(); }
};

TEST_F(CGContextTest, RefusesImpossibleSizesAndScales) {
    EXPECT_EQ(CGContext::create(0, 10, 1, false), nullptr);
    EXPECT_EQ(CGContext::create(10, -1, 1, false), nullptr);
    EXPECT_EQ(CGContext::create(4097, 1, 1, false), nullptr);
    EXPECT_EQ(CGContext::create(10, 10, 0, false), nullptr);
    EXPECT_EQ(CGContext::create(10, 10, std::numeric_limits<double>::infinity(), false), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(0, 10), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(size_t(1) << 40, 1), nullptr);
    EXPECT_NE(CGBitmapContextCreate(4096, 1), nullptr);
}

TEST_F(CGContextTest, WithoutGraphicsThereIsNoContext) {
    Graphics::install(nullptr);
    EXPECT_EQ(Graphics::current(), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(10, 10), nullptr);
    Graphics::install(MakeRasterGraphics());
}

TEST_F(CGContextTest, BeginsTransparentOrOpaqueBlack) {
    EXPECT_TRUE(blank(CGContext::create(4, 4, 1, false)->bitmap()));
    EXPECT_EQ(CGContext::create(4, 4, 1, true)->bitmap().pixel(3, 3), 0xff000000U);
}

TEST_F(CGContextTest, UserSpaceIsScaled) {
    CGContextRef context = CGContext::create(30, 30, 3, false);
    CGContextSetFillColor(context, kRed);
    CGContextFillRect(context, CGRectMake(1, 2, 4, 5));
    EXPECT_EQ(inkArea(context->bitmap()), 12 * 15);
    EXPECT_EQ(context->bitmap().pixel(3, 6), 0xffff0000U);
}

TEST_F(CGContextTest, ImageIsACopyOfTheMoment) {
    CGContextRef context = CGBitmapContextCreate(8, 8);
    CGContextFillRect(context, CGRectMake(0, 0, 8, 8));
    CGImageRef image = CGBitmapContextCreateImage(context);
    CGContextSetFillColor(context, kRed);
    CGContextFillRect(context, CGRectMake(0, 0, 8, 8));
    EXPECT_EQ(image->pixel(0, 0), 0xff000000U);
    EXPECT_EQ(CGBitmapContextCreateImage(context)->pixel(0, 0), 0xffff0000U);
}

// An image that is drawn at a size of its own is remembered; another one from the same context is another
// one.
TEST_F(CGContextTest, EveryImageOfAContextIsDrawnAsItself) {
    CGContextRef context = CGBitmapContextCreate(8, 8);
    for (const CGColor& color : {kRed, CGColor{0, 0, 1, 1}, CGColor{0, 1, 0, 1}, kRed}) {
        CGContextSetFillColor(context, color);
        CGContextFillRect(context, CGRectMake(0, 0, 8, 8));
        const CGImageRef image = CGBitmapContextCreateImage(context);
        for (int time = 0; time < 3; ++time) {
            const CGImage drawn =
                painted(5, 5, [&](Canvas& canvas) { canvas.drawImage(image, CGRectMake(0, 0, 5, 5)); });
            EXPECT_EQ(drawn.pixel(2, 2), PixelFromColor(color)) << time;
        }
    }
}

TEST_F(CGContextTest, ImagesOutliveTheirContext) {
    CGContextRef context = CGBitmapContextCreate(40, 40);
    CGPath rounded;
    rounded.addRoundedRect(CGRectMake(0, 0, 40, 40), 12, 12);
    CGContextSaveGState(context);
    CGContextAddPath(context, rounded);
    CGContextClip(context);
    CGContextSetFillColor(context, {1, 0.5, 0.25, 0.6});
    CGContextFillRect(context, CGRectMake(0, 0, 40, 40));
    const CGImageRef clipped = CGBitmapContextCreateImage(context);
    const CGImage was = *clipped;
    // The end of the clip touches pixels at its edge.
    CGContextRestoreGState(context);
    EXPECT_EQ(clipped->pixels(), was.pixels());
    EXPECT_EQ(CGBitmapContextCreateImage(context)->pixels(), was.pixels());

    CGContextSetFillColor(context, kRed);
    CGContextFillRect(context, CGRectMake(0, 0, 40, 40));
    const CGImageRef red = CGBitmapContextCreateImage(context);
    context.reset();
    EXPECT_EQ(clipped->pixels(), was.pixels());
    EXPECT_TRUE(std::ranges::all_of(red->pixels(), [](uint32_t pixel) { return pixel == 0xffff0000U; }));
}

TEST_F(CGContextTest, LargeBitmapsBeginClearEveryTime) {
    // Around two megabytes, from where their memory comes from elsewhere.
    for (const int side : {700, 723, 724, 725, 726, 1500}) {
        for (int time = 0; time < 2; ++time) {
            CGImage bitmap(side, side);
            ASSERT_TRUE(blank(bitmap)) << side;
            std::ranges::fill(std::span(bitmap.row(0), size_t(side) * size_t(side)), 0xff00ff00U);
            const CGImage copy = bitmap;
            EXPECT_EQ(copy.pixels(), bitmap.pixels());
            EXPECT_EQ(copy.pixel(side - 1, side - 1), 0xff00ff00U);
        }
    }
}

TEST_F(CGContextTest, ImageShowsAClipStillInForce) {
    CGContextRef context = CGBitmapContextCreate(60, 60);
    CGPath rounded;
    rounded.addRoundedRect(CGRectMake(0, 0, 60, 60), 12, 12);
    CGContextAddPath(context, rounded);
    CGContextClip(context);
    CGContextSetFillColor(context, kRed);
    CGContextFillRect(context, CGRectMake(0, 0, 60, 60));
    CGImageRef image = CGBitmapContextCreateImage(context);
    EXPECT_EQ(image->pixel(0, 0), 0U);
    EXPECT_EQ(image->pixel(59, 59), 0U);
    EXPECT_EQ(image->pixel(30, 0), 0xffff0000U);
    double corners = (4 - 3.14159265) * 144;
    EXPECT_NEAR(inkArea(*image), 3600 - corners, 2);
}

TEST_F(CGContextTest, FillingAndClippingUseUpThePath) {
    CGContextRef context = CGBitmapContextCreate(20, 20);
    CGContextMoveToPoint(context, 0, 0);
    CGContextAddLineToPoint(context, 20, 0);
    CGContextAddLineToPoint(context, 0, 20);
    CGContextClosePath(context);
    CGContextFillPath(context);
    EXPECT_TRUE(context->path.empty());
    EXPECT_NEAR(inkArea(context->bitmap()), 200, 0.5);
    CGContextClip(context); // without a path: nothing changes
    CGContextFillRect(context, CGRectMake(0, 0, 20, 20));
    EXPECT_EQ(inkArea(context->bitmap()), 400);
}

TEST_F(CGContextTest, StatesComeBack) {
    CGContextRef context = CGBitmapContextCreate(20, 20);
    CGContextRestoreGState(context); // one too many
    CGContextSetFillColor(context, kBlue);
    CGContextSaveGState(context);
    CGContextSetFillColor(context, kRed);
    CGContextSetAlpha(context, 0.5);
    CGContextSetBlendMode(context, kCGBlendModeSourceAtop);
    CGPath half;
    half.addRect(CGRectMake(0, 0, 10, 20));
    CGContextAddPath(context, half);
    CGContextClip(context);
    CGContextRestoreGState(context);
    EXPECT_EQ(context->fillColor, kBlue);
    EXPECT_EQ(context->alpha, 1);
    EXPECT_EQ(context->blendMode, kCGBlendModeNormal);
    CGContextFillRect(context, CGRectMake(0, 0, 20, 20));
    EXPECT_EQ(inkArea(context->bitmap()), 400);
}

TEST_F(CGContextTest, TintTakesTheColourWhereTheImageIsOpaque) {
    auto artwork = std::make_shared<CGImage>(4, 1);
    const uint32_t pixels[] = {0xffffffff, 0x80808080, 0x00000000, 0xff000000};
    std::copy_n(pixels, 4, artwork->row(0));
    CGContextRef context = CGBitmapContextCreate(4, 1);
    CGContextDrawImage(context, CGRectMake(0, 0, 4, 1), artwork);
    CGContextSetFillColor(context, {1, 0, 0, 1});
    CGContextSetBlendMode(context, kCGBlendModeSourceAtop);
    CGContextSetAlpha(context, 0.6);
    CGContextFillRect(context, CGRectMake(0, 0, 4, 1));
    // colour x 0.6 x alpha of the pixel + pixel x 0.4
    EXPECT_EQ(context->bitmap().pixel(0, 0), 0xffff6666U);
    EXPECT_LE(largestDifference(context->bitmap().pixel(1, 0), 0x80803333U), 1);
    EXPECT_EQ(context->bitmap().pixel(2, 0), 0U);
    EXPECT_EQ(context->bitmap().pixel(3, 0), 0xff990000U);
}

TEST_F(CGContextTest, AlphaIsHeldToItsRange) {
    CGContextRef context = CGBitmapContextCreate(1, 1);
    CGContextSetAlpha(context, 7);
    EXPECT_EQ(context->alpha, 1);
    CGContextSetAlpha(context, -2);
    EXPECT_EQ(context->alpha, 0);
    CGContextSetAlpha(context, std::nan(""));
    EXPECT_EQ(context->alpha, 0);
}

TEST_F(CGContextTest, NoContextIsNoError) {
    CGContextRef none;
    CGContextSetFillColor(none, kRed);
    CGContextSetAlpha(none, 1);
    CGContextSetBlendMode(none, kCGBlendModeNormal);
    CGContextFillRect(none, CGRectMake(0, 0, 1, 1));
    CGContextMoveToPoint(none, 0, 0);
    CGContextAddLineToPoint(none, 0, 0);
    CGContextClosePath(none);
    CGContextAddPath(none, CGPath());
    CGContextFillPath(none);
    CGContextClip(none);
    CGContextSaveGState(none);
    CGContextRestoreGState(none);
    CGContextDrawImage(none, CGRectMake(0, 0, 1, 1), nullptr);
    EXPECT_EQ(CGBitmapContextCreateImage(none), nullptr);
}

} // namespace
} // namespace tallyforge
