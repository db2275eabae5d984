#include "Drawing.h"
#include "PNGBuilder.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace tallyforge {
namespace {

CGImageRef decode(const Bytes& bytes) {
    return testGraphics().decodeImage(bytes);
}

Bytes readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// The same file with every chunk's checksum set right.
Bytes withSoundChecksums(Bytes png) {
    for (size_t at = 8; at + 12 <= png.size();) {
        size_t length =
            size_t(png[at]) << 24 | size_t(png[at + 1]) << 16 | size_t(png[at + 2]) << 8 | png[at + 3];
        if (length > png.size() - at - 12) break;
        Bytes checksum;
        append32(checksum, uint32_t(crc32(0, png.data() + at + 4, uInt(length + 4))));
        std::copy(checksum.begin(), checksum.end(), png.begin() + long(at + 8 + length));
        at += 12 + length;
    }
    return png;
}

TEST(DevicePNG, ColourWithAlphaIsBlueGreenRedAndPremultiplied) {
    Bytes rows = {0, 10, 20, 30, 255, 1, 2, 3, 128};
    CGImageRef image = decode(buildPNG(true, pngHeader(2, 1, 8, 6), rows));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixel(0, 0), 0xff1e140aU);
    EXPECT_EQ(image->pixel(1, 0), 0x80030201U);
}

TEST(DevicePNG, ColourAboveItsAlphaIsHeldToIt) {
    Bytes rows = {0, 200, 100, 50, 100};
    CGImageRef image = decode(buildPNG(true, pngHeader(1, 1, 8, 6), rows));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixel(0, 0), 0x64326464U);
}

TEST(DevicePNG, ColourWithoutAlpha) {
    Bytes rows = {0, 10, 20, 30, 200, 100, 50};
    CGImageRef image = decode(buildPNG(true, pngHeader(2, 1, 8, 2), rows));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixel(0, 0), 0xff1e140aU);
    EXPECT_EQ(image->pixel(1, 0), 0xff3264c8U);
    // The transparent colour is named red, green, blue.
    image = decode(buildPNG(true, pngHeader(2, 1, 8, 2), rows, {{"tRNS", {0, 30, 0, 20, 0, 10}}}));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixel(0, 0), 0U);
    EXPECT_EQ(image->pixel(1, 0), 0xff3264c8U);
}

TEST(DevicePNG, GreyOfEveryDepth) {
    struct Case {
        int depth;
        Bytes row;
        std::vector<int> greys;
    };
    const Case cases[] = {
        {1, {0, 0b10100000}, {255, 0, 255}},
        {2, {0, 0b00011000}, {0, 85, 170}},
        {4, {0, 0x0f, 0x80}, {0, 255, 136}},
        {8, {0, 7, 200, 255}, {7, 200, 255}},
        {16, {0, 0, 0, 0x80, 0x80, 0xff, 0xff}, {0, 128, 255}},
    };
    for (const Case& one : cases) {
        CGImageRef image = decode(buildPNG(true, pngHeader(3, 1, one.depth, 0), one.row));
        ASSERT_NE(image, nullptr) << one.depth;
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(alphaOf(image->pixel(x, 0)), 255);
            EXPECT_EQ(redOf(image->pixel(x, 0)), one.greys[size_t(x)]) << one.depth;
            EXPECT_EQ(blueOf(image->pixel(x, 0)), one.greys[size_t(x)]) << one.depth;
        }
    }
}

TEST(DevicePNG, PaletteWithTransparency) {
    std::vector<PNGChunk> palette = {{"PLTE", {255, 0, 0, 0, 255, 0, 0, 0, 255}}, {"tRNS", {255, 128}}};
    CGImageRef image = decode(buildPNG(true, pngHeader(3, 1, 2, 3), {0, 0b00011000}, palette));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixel(0, 0), 0xffff0000U);
    EXPECT_EQ(image->pixel(1, 0), 0x80008000U);
    EXPECT_EQ(image->pixel(2, 0), 0xff0000ffU);
    EXPECT_EQ(decode(buildPNG(true, pngHeader(3, 1, 2, 3), {0, 0b00011100}, palette)), nullptr); // no entry 3
    EXPECT_EQ(decode(buildPNG(true, pngHeader(3, 1, 2, 3), {0, 0})), nullptr);                   // no palette
}

TEST(DevicePNG, EveryFilterIsUndone) {
    // Four grey rows of 10, 20, 30 (each pixel 10 more), written with the four filters.
    Bytes rows = {
        1,  10, 10,
        10, // from the left
        2,  5,  5,
        5, // from above: 15 25 35
        3,  8,  3,
        3, // from the mean: left 0, above 15 -> 7 + 8 = 15; (15 + 25) / 2 + 3 = 23; (23 + 35) / 2 + 3 = 32
        4,  1,  2,
        3, // above 15 -> 16; left 16, above 23, corner 15: estimate 24 -> above: 25;
           // left 25, above 32, corner 23: estimate 34 -> above: 35
    };
    const int expected[4][3] = {{10, 20, 30}, {15, 25, 35}, {15, 23, 32}, {16, 25, 35}};
    for (bool device : {true, false}) {
        CGImageRef image = decode(buildPNG(device, pngHeader(3, 4, 8, 0), rows));
        ASSERT_NE(image, nullptr);
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 3; ++x)
                EXPECT_EQ(redOf(image->pixel(x, y)), expected[y][x]) << x << "," << y;
        }
    }
    EXPECT_EQ(decode(buildPNG(true, pngHeader(3, 1, 8, 0), {5, 0, 0, 0})), nullptr); // there is no filter 5
}

TEST(DevicePNG, InterlacedPixelsComeToTheirPlaces) {
    for (int side : {1, 3, 8, 11}) {
        const int passes[7][4] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                  {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
        Bytes rows;
        for (const auto& pass : passes) {
            for (int y = pass[1]; y < side && pass[0] < side; y += pass[3]) {
                rows.push_back(0);
                for (int x = pass[0]; x < side; x += pass[2])
                    rows.push_back(uint8_t(y * side + x));
            }
        }
        for (bool device : {true, false}) {
            CGImageRef image =
                decode(buildPNG(device, pngHeader(uint32_t(side), uint32_t(side), 8, 0, true), rows));
            ASSERT_NE(image, nullptr) << side;
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x)
                    ASSERT_EQ(greenOf(image->pixel(x, y)), y * side + x);
            }
        }
    }
}

TEST(DevicePNG, CutAnywhereIsNoImage) {
    Bytes rows;
    for (int y = 0; y < 8; ++y) {
        rows.push_back(4);
        for (int i = 0; i < 32; ++i)
            rows.push_back(uint8_t(i * 37 + y * 11));
    }
    Bytes whole = buildPNG(true, pngHeader(8, 8, 8, 6), rows);
    ASSERT_NE(decode(whole), nullptr);
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(decode(Bytes(whole.begin(), whole.begin() + long(length))), nullptr) << length;
}

TEST(DevicePNG, AnyChangedByteIsHarmless) {
    Bytes rows;
    for (int y = 0; y < 4; ++y) {
        rows.push_back(1);
        for (int i = 0; i < 16; ++i)
            rows.push_back(uint8_t(i * 37 + y * 11));
    }
    Bytes whole = buildPNG(true, pngHeader(4, 4, 8, 6), rows);
    for (size_t at = 0; at < whole.size(); ++at) {
        for (int change : {0x01, 0x80, 0xff}) {
            Bytes broken = whole;
            broken[at] = uint8_t(broken[at] ^ change);
            CGImageRef image = decode(broken);
            // Only the mark's own chunk carries nothing that matters.
            EXPECT_TRUE(!image || at < 8U + 16U) << at;
        }
    }
}

TEST(DevicePNG, DeclaredSizesAreChecked) {
    Bytes row = {0, 0, 0, 0, 0};
    for (auto [width, height] : {std::pair{0U, 1U},
                                 {1U, 0U},
                                 {4097U, 1U},
                                 {1U, 4097U},
                                 {0x7fffffffU, 0x7fffffffU},
                                 {0xffffffffU, 1U}})
        EXPECT_EQ(decode(buildPNG(true, pngHeader(width, height, 8, 6), row)), nullptr);
    EXPECT_EQ(decode(buildPNG(true, pngHeader(4096, 4096, 16, 6), row)), nullptr); // far too few pixels
    for (auto [depth, type] : {std::pair{3, 0}, {16, 3}, {4, 2}, {8, 5}, {0, 0}, {8, 1}})
        EXPECT_EQ(decode(buildPNG(true, pngHeader(1, 1, depth, type), row)), nullptr) << depth << " " << type;
}

TEST(DevicePNG, PixelsThatAreTooManyAreLeftAlone) {
    Bytes rows(1000000, 0);
    CGImageRef image = decode(buildPNG(true, pngHeader(1, 1, 8, 0), rows));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixel(0, 0), 0xff000000U);
}

TEST(DevicePNG, RealFileMatchesItsDecodedTwin) {
    std::string folder = TALLYFORGE_FIXTURES "/png/";
    if (!std::filesystem::exists(folder + "cgbi-image.png")) GTEST_SKIP() << "no fixtures on this machine";
    CGImageRef device = decode(readFile(folder + "cgbi-image.png"));
    // The twin was written with a wrong checksum, for which it would be refused.
    CGImageRef twin = decode(withSoundChecksums(readFile(folder + "png-image.expected.png")));
    ASSERT_NE(device, nullptr);
    ASSERT_NE(twin, nullptr);
    ASSERT_EQ(device->width(), twin->width());
    ASSERT_EQ(device->height(), twin->height());
    // The twin has its channels in the usual order but still premultiplied, which an ordinary PNG never is:
    // reading it multiplies by alpha once more. The same is done here to ours.
    for (int y = 0; y < device->height(); ++y) {
        for (int x = 0; x < device->width(); ++x) {
            uint32_t pixel = device->pixel(x, y);
            double alpha = alphaOf(pixel) / 255.0;
            ASSERT_EQ(alphaOf(twin->pixel(x, y)), alphaOf(pixel));
            ASSERT_EQ(redOf(twin->pixel(x, y)), std::lround(redOf(pixel) * alpha));
            ASSERT_EQ(greenOf(twin->pixel(x, y)), std::lround(greenOf(pixel) * alpha));
            ASSERT_EQ(blueOf(twin->pixel(x, y)), std::lround(blueOf(pixel) * alpha));
        }
    }
    EXPECT_TRUE(validPremultiplied(*device));
}

TEST(DevicePNG, RealFileWithProfileIsRead) {
    std::string path = TALLYFORGE_FIXTURES "/png/sample_fried.png";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no fixtures on this machine";
    CGImageRef image = decode(readFile(path));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width(), 128);
    EXPECT_EQ(image->height(), 68);
    EXPECT_FALSE(blank(*image));
}

} // namespace
} // namespace tallyforge
