#include "Drawing.h"

#include "rastergraphics/PixelOps.h"

#include <random>
#include <vector>

namespace tallyforge {
namespace {

/// Valid premultiplied pixels of every kind.
std::vector<uint32_t> somePixels(size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<uint32_t> pixels;
    for (size_t i = 0; i < count; ++i) {
        uint32_t alpha = i % 7 == 0 ? 255 : i % 11 == 0 ? 0 : random() % 256;
        auto channel = [&] { return alpha == 0 ? 0U : uint32_t(random() % (alpha + 1)); };
        pixels.push_back(alpha << 24 | channel() << 16 | channel() << 8 | channel());
    }
    return pixels;
}

double channelOf(uint32_t pixel, int shift) {
    return pixel >> shift & 255;
}

TEST(PixelOps, AtopIsTheExactFormulaRounded) {
    const CGColor colors[] = {{1, 0, 0, 1}, {0.2, 0.7, 0.9, 1}, {1, 1, 1, 0.4}, {0.5, 0.25, 0.125, 0.9}};
    for (const CGColor& color : colors) {
        for (double alpha : {1.0, 0.65, 0.3, 0.01}) {
            std::vector<uint32_t> pixels = somePixels(1003, 1);
            std::vector<uint32_t> before = pixels;
            InkAtop(pixels.data(), int(pixels.size()), MakeInk(color, alpha));
            double total = color.alpha * alpha;
            for (size_t i = 0; i < pixels.size(); ++i) {
                ASSERT_EQ(alphaOf(pixels[i]), alphaOf(before[i]));
                const double channels[3] = {color.blue, color.green, color.red};
                for (int c = 0; c < 3; ++c) {
                    double exact =
                        channels[c] * total * alphaOf(before[i]) + channelOf(before[i], 8 * c) * (1 - total);
                    ASSERT_NEAR(channelOf(pixels[i], 8 * c), exact, 0.52);
                    ASSERT_LE(channelOf(pixels[i], 8 * c), alphaOf(pixels[i]));
                }
            }
        }
    }
}

TEST(PixelOps, AtopGivesTheSameWhateverTheLengthAndPlaceOfTheRun) {
    Ink ink = MakeInk({0.9, 0.3, 0.1, 1}, 0.65);
    std::vector<uint32_t> all = somePixels(100, 2);
    std::vector<uint32_t> single = all;
    InkAtop(all.data(), int(all.size()), ink);
    for (uint32_t& pixel : single)
        InkAtop(&pixel, 1, ink);
    EXPECT_EQ(all, single);
    std::vector<uint32_t> odd = somePixels(100, 2);
    InkAtop(odd.data() + 3, 40, ink);
    EXPECT_TRUE(std::equal(all.begin() + 3, all.begin() + 43, odd.begin() + 3));
    EXPECT_EQ(odd[2], somePixels(100, 2)[2]);
    EXPECT_EQ(odd[43], somePixels(100, 2)[43]);
}

TEST(PixelOps, OverIsWithinOneStepOfTheExactFormula) {
    CGColor color{0.8, 0.4, 0.1, 0.7};
    std::vector<uint32_t> pixels = somePixels(1003, 3);
    std::vector<uint32_t> before = pixels;
    InkOver(pixels.data(), int(pixels.size()), MakeInk(color, 0.5));
    for (size_t i = 0; i < pixels.size(); ++i) {
        const double channels[4] = {color.blue, color.green, color.red, 1};
        for (int c = 0; c < 4; ++c) {
            double exact = channels[c] * 0.35 * 255 + channelOf(before[i], 8 * c) * 0.65;
            ASSERT_NEAR(channelOf(pixels[i], 8 * c), exact, 1.3);
            ASSERT_LE(channelOf(pixels[i], 8 * c), alphaOf(pixels[i]));
        }
    }
}

TEST(PixelOps, PixelsOverPixels) {
    std::vector<uint32_t> below = somePixels(517, 4);
    std::vector<uint32_t> above = somePixels(517, 5);
    std::vector<uint8_t> coverage(517);
    for (size_t i = 0; i < coverage.size(); ++i)
        coverage[i] = uint8_t(i);
    for (const uint8_t* mask :
         {static_cast<const uint8_t*>(nullptr), static_cast<const uint8_t*>(coverage.data())}) {
        for (int alpha : {255, 128}) {
            std::vector<uint32_t> over = below;
            std::vector<uint32_t> atop = below;
            PixelsOver(over.data(), above.data(), 517, alpha, mask);
            PixelsAtop(atop.data(), above.data(), 517, alpha, mask);
            for (size_t i = 0; i < below.size(); ++i) {
                double fade = alpha / 255.0 * (mask ? mask[i] / 255.0 : 1);
                double rest = 1 - alphaOf(above[i]) / 255.0 * fade;
                double belowAlpha = alphaOf(below[i]) / 255.0;
                ASSERT_EQ(alphaOf(atop[i]), alphaOf(below[i]));
                for (int shift = 0; shift < 32; shift += 8) {
                    double source = channelOf(above[i], shift) * fade;
                    ASSERT_NEAR(channelOf(over[i], shift), source + channelOf(below[i], shift) * rest, 2);
                    ASSERT_LE(channelOf(over[i], shift), alphaOf(over[i]));
                    ASSERT_LE(channelOf(atop[i], shift), alphaOf(atop[i]));
                    if (shift < 24) {
                        ASSERT_NEAR(channelOf(atop[i], shift),
                                    source * belowAlpha + channelOf(below[i], shift) * rest, 2);
                    }
                }
            }
        }
    }
}

TEST(PixelOps, MixGoesFromOneToTheOther) {
    std::vector<uint32_t> before = somePixels(512, 6);
    std::vector<uint32_t> after = somePixels(512, 7);
    std::vector<uint8_t> coverage(512);
    for (size_t i = 0; i < coverage.size(); ++i)
        coverage[i] = uint8_t(i);
    std::vector<uint32_t> mixed = after;
    Mix(mixed.data(), before.data(), coverage.data(), 512);
    EXPECT_EQ(mixed[0], before[0]);
    EXPECT_EQ(mixed[256], before[256]);
    EXPECT_EQ(mixed[255], after[255]);
    for (size_t i = 0; i < mixed.size(); ++i) {
        double t = coverage[i] / 255.0;
        for (int shift = 0; shift < 32; shift += 8)
            ASSERT_NEAR(channelOf(mixed[i], shift),
                        channelOf(before[i], shift) * (1 - t) + channelOf(after[i], shift) * t, 1);
    }
}

TEST(PixelOps, ColoursRoundToTheNearestAndAreHeldToTheirRange) {
    EXPECT_EQ(PixelFromColor({1, 0.5, 0, 1}), 0xffff8000U);
    EXPECT_EQ(PixelFromColor({1, 1, 1, 0.5}), 0x80808080U);
    EXPECT_EQ(PixelFromColor({2, -1, 0, 7}), 0xffff0000U);
    EXPECT_TRUE(MakeInk({1, std::nan(""), 0, 1}, 1).nothing());
    EXPECT_TRUE(MakeInk({1, 0, 0, 1}, std::nan("")).nothing());
    EXPECT_TRUE(MakeInk({1, 0, 0, 1}, -1).nothing());
    EXPECT_TRUE(MakeInk({1, 0, 0, 1}, 5).opaque());
}

} // namespace
} // namespace tallyforge
