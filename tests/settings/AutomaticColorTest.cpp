// The average colour of an icon. Images are given as pixels, expected averages are worked out by hand.
#include "SettingsFixture.h"

#include "settings/ColorValues.h"

namespace tallyforge::test {
namespace {

using AutomaticColor = SettingsFixture;
constexpr auto kAll = AutomaticColorMode::all;
constexpr auto kDark = AutomaticColorMode::ignoreBright;
constexpr auto kBright = AutomaticColorMode::ignoreDark;
constexpr uint32_t kClear = 0;

TEST_F(AutomaticColor, AveragesEachChannelByWholeNumberDivision) {
    UIImage image = imageOf(3, 1, {rgb(10, 1, 255), rgb(10, 1, 255), rgb(11, 0, 254)});
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kAll), 10, 0, 254)); // 31/3, 2/3, 764/3
}

TEST_F(AutomaticColor, CountsEveryPixelOfEveryRow) {
    UIImage image = imageOf(
        2, 3, {rgb(60, 0, 0), rgb(0, 60, 0), rgb(0, 0, 60), rgb(60, 0, 0), rgb(0, 120, 0), rgb(0, 0, 240)});
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kAll), 20, 30, 50));
}

TEST_F(AutomaticColor, DarkIgnoresPixelsBrightInAllChannels) {
    uint32_t other = rgb(100, 50, 10);
    for (uint32_t bright : {rgb(211, 211, 211), rgb(255, 255, 255), rgb(211, 255, 230)})
        EXPECT_TRUE(isBytes(AutomaticColorFromImage(imageOf(2, 1, {bright, other}), kDark), 100, 50, 10));
    struct Case {
        uint32_t pixel;
        int red, green, blue;
    };
    for (const Case& c : {Case{rgb(210, 255, 255), 155, 152, 132}, Case{rgb(255, 210, 255), 177, 130, 132},
                          Case{rgb(255, 255, 210), 177, 152, 110}, Case{rgb(210, 210, 210), 155, 130, 110}})
        EXPECT_TRUE(
            isBytes(AutomaticColorFromImage(imageOf(2, 1, {c.pixel, other}), kDark), c.red, c.green, c.blue));
}

TEST_F(AutomaticColor, BrightIgnoresPixelsDarkInAllChannels) {
    uint32_t other = rgb(200, 100, 50);
    for (uint32_t dark : {rgb(44, 44, 44), rgb(0, 0, 0), rgb(44, 0, 20)})
        EXPECT_TRUE(isBytes(AutomaticColorFromImage(imageOf(2, 1, {dark, other}), kBright), 200, 100, 50));
    struct Case {
        uint32_t pixel;
        int red, green, blue;
    };
    for (const Case& c : {Case{rgb(45, 0, 0), 122, 50, 25}, Case{rgb(0, 45, 0), 100, 72, 25},
                          Case{rgb(0, 0, 45), 100, 50, 47}})
        EXPECT_TRUE(isBytes(AutomaticColorFromImage(imageOf(2, 1, {c.pixel, other}), kBright), c.red, c.green,
                            c.blue));
}

TEST_F(AutomaticColor, AllModeIgnoresNothing) {
    UIImage image = imageOf(2, 1, {rgb(255, 255, 255), rgb(0, 0, 0)});
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kAll), 127, 127, 127));
}

TEST_F(AutomaticColor, NothingLeftToAverageIsBlack) {
    UIImage white = imageOf(2, 2, std::vector<uint32_t>(4, rgb(255, 255, 255)));
    UIImage black = imageOf(2, 2, std::vector<uint32_t>(4, rgb(0, 0, 0)));
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(white, kDark), 0, 0, 0));
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(black, kBright), 0, 0, 0));
}

TEST_F(AutomaticColor, TransparentPixelsCountAsBlack) {
    UIImage image = imageOf(2, 1, {rgb(255, 255, 255), kClear});
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kAll), 127, 127, 127));
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kBright), 255, 255, 255));
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kDark), 0, 0, 0));
}

// A half transparent white pixel reads as its premultiplied bytes, which are no longer bright.
TEST_F(AutomaticColor, TranslucentPixelsCountPremultiplied) {
    UIImage image = imageOf(1, 1, {0x80808080u});
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kAll), 128, 128, 128));
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kDark), 128, 128, 128));
}

// Four pixels of one point: as pixels, the three white ones would be ignored and the rest be black; as one
// point they are 191 bright, which is not bright enough to be ignored.
TEST_F(AutomaticColor, LooksAtPointsNotAtPixels) {
    UIImage image =
        imageOf(2, 2, {rgb(255, 255, 255), rgb(255, 255, 255), rgb(255, 255, 255), rgb(0, 0, 0)}, 2);
    UIColor color = AutomaticColorFromImage(image, kDark);
    EXPECT_NEAR(color.red() * 255, 191.25, 1.01);
    EXPECT_EQ(color.red(), color.green());
    EXPECT_EQ(color.red(), color.blue());
    EXPECT_EQ(color.alpha(), 1);
}

// 3 pixels at scale 2 are one and a half points: one is looked at, into which the whole image is drawn.
TEST_F(AutomaticColor, PartsOfAPointAreCutOff) {
    std::vector<uint32_t> pixels(9, rgb(90, 0, 0));
    pixels[2] = pixels[5] = pixels[8] = rgb(0, 0, 90);
    UIColor color = AutomaticColorFromImage(imageOf(3, 3, pixels, 2), kAll);
    EXPECT_NEAR(color.red() * 255, 60, 1.01);
    EXPECT_NEAR(color.blue() * 255, 30, 1.01);
}

TEST_F(AutomaticColor, WithoutAWholePointIsBlack) {
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(imageOf(1, 1, {rgb(255, 0, 0)}, 2), kAll), 0, 0, 0));
    EXPECT_TRUE(isBytes(
        AutomaticColorFromImage(imageOf(4, 1, std::vector<uint32_t>(4, rgb(255, 0, 0)), 2), kAll), 0, 0, 0));
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(UIImage(), kAll), 0, 0, 0));
}

TEST_F(AutomaticColor, IsTheSameUpsideDown) {
    UIImage up = imageOf(1, 2, {rgb(255, 0, 0), rgb(0, 0, 100)});
    UIImage down = UIImage::imageWithCGImage(up.bitmap(), 1, UIImageOrientationDown);
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(down, kAll), 127, 0, 50));
}

TEST_F(AutomaticColor, IsBlackWhereNothingDraws) {
    Graphics::install(nullptr);
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(imageOf(1, 1, {rgb(255, 0, 0)}), kAll), 0, 0, 0));
}

// The sums of a large icon go far beyond 16 bits.
TEST_F(AutomaticColor, SumsOfManyPixelsDoNotOverflow) {
    UIImage image = imageOf(512, 512, std::vector<uint32_t>(512 * 512, rgb(255, 200, 3)));
    EXPECT_TRUE(isBytes(AutomaticColorFromImage(image, kAll), 255, 200, 3));
}

} // namespace
} // namespace tallyforge::test
