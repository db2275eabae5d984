#include "Drawing.h"
#include "PNGBuilder.h"
#include "support/CpuTime.h"

#include <random>

namespace tallyforge {
namespace {

CGImageRef decode(const Bytes& bytes) {
    return testGraphics().decodeImage(bytes);
}

/// A JPEG of 8 x 8 grey pixels (128): one Huffman code of each kind, one block of all zeros.
Bytes smallJPEG() {
    Bytes jpeg;
    jpeg.reserve(256);
    for (int byte : {0xFF, 0xD8, 0xFF, 0xDB, 0x00, 0x43, 0x00})
        jpeg.push_back(uint8_t(byte));
    jpeg.insert(jpeg.end(), 64, 1);
    const Bytes rest = {0xFF, 0xC0, 0x00, 0x0B, 8,    0, 8,    0, 8,  1, 1,    0x11, 0, // frame
                        0xFF, 0xC4, 0x00, 0x14, 0x00, 1, 0,    0, 0,  0, 0,    0,    0,
                        0,    0,    0,    0,    0,    0, 0,    0, 0, // DC code
                        0xFF, 0xC4, 0x00, 0x14, 0x10, 1, 0,    0, 0,  0, 0,    0,    0,
                        0,    0,    0,    0,    0,    0, 0,    0, 0, // AC code
                        0xFF, 0xDA, 0x00, 0x08, 1,    1, 0x00, 0, 63, 0, 0x3F, 0xFF, 0xD9};
    jpeg.insert(jpeg.end(), rest.begin(), rest.end());
    return jpeg;
}

TEST(ImageFiles, PNGIsReadAndPremultiplied) {
    CGImageRef image =
        decode(buildPNG(false, pngHeader(2, 1, 8, 6), {0, 255, 100, 0, 255, 255, 100, 0, 128}));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width(), 2);
    EXPECT_EQ(image->height(), 1);
    EXPECT_EQ(image->pixel(0, 0), 0xffff6400U);
    EXPECT_EQ(image->pixel(1, 0), 0x80803200U);
}

TEST(ImageFiles, JPEGIsRead) {
    CGImageRef image = decode(smallJPEG());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width(), 8);
    EXPECT_EQ(image->height(), 8);
    for (uint32_t pixel : image->pixels())
        EXPECT_EQ(pixel, 0xff808080U);
}

TEST(ImageFiles, CutFilesAreNoImages) {
    Bytes rows;
    for (int y = 0; y < 8; ++y) {
        rows.push_back(0);
        for (int i = 0; i < 32; ++i)
            rows.push_back(uint8_t(i * 37 + y * 11));
    }
    Bytes png = buildPNG(false, pngHeader(8, 8, 8, 6), rows);
    ASSERT_NE(decode(png), nullptr);
    // Without the empty end chunk (12 bytes) and the checksum before it nothing of the picture is missing.
    for (size_t length = 0; length + 16 < png.size(); ++length)
        EXPECT_EQ(decode(Bytes(png.begin(), png.begin() + long(length))), nullptr) << length;
    Bytes jpeg = smallJPEG();
    for (size_t length = 0; length < jpeg.size(); ++length)
        EXPECT_EQ(decode(Bytes(jpeg.begin(), jpeg.begin() + long(length))), nullptr) << length;
}

TEST(ImageFiles, WrongChecksumIsNoImage) {
    Bytes png = buildPNG(false, pngHeader(2, 1, 8, 6), {0, 255, 100, 0, 255, 255, 100, 0, 128});
    png[8 + 8 + 13] ^= 1; // the header's checksum
    EXPECT_EQ(decode(png), nullptr);
}

TEST(ImageFiles, TextsAreNoImages) {
    for (std::string_view text :
         {std::string_view(""), std::string_view("hello"),
          std::string_view("/* XPM */ static char* x[] = {\"1 1 1 1\"};"),
          std::string_view("<svg xmlns='http://www.w3.org/2000/svg' width='5' height='5'/>"),
          std::string_view("P1 1 1 1"), std::string_view("\x89PNG"), std::string_view("\xFF\xD8\xFF")})
        EXPECT_EQ(decode(Bytes(text.begin(), text.end())), nullptr) << text;
}

TEST(ImageFiles, TooLargeOrEmptyIsRefusedAtOnce) {
    const double begin = test::CpuMilliseconds();
    for (auto [width, height] : {std::pair{4097U, 1U},
                                 {1U, 4097U},
                                 {0U, 1U},
                                 {1U, 0U},
                                 {0x7fffffffU, 0x7fffffffU},
                                 {0xffffffffU, 0xffffffffU},
                                 {65536U, 65536U}})
        EXPECT_EQ(decode(buildPNG(false, pngHeader(width, height, 8, 6), {0, 0, 0, 0, 0})), nullptr);
    EXPECT_LT(test::CpuMilliseconds() - begin, 50 * test::kSlowdown);
}

TEST(ImageFiles, LargestAllowedWithoutPixelsIsRefusedQuickly) {
    const double begin = test::CpuMilliseconds();
    EXPECT_EQ(decode(buildPNG(false, pngHeader(4096, 4096, 16, 6), {0, 0, 0, 0, 0})), nullptr);
    EXPECT_LT(test::CpuMilliseconds() - begin, 50 * test::kSlowdown);
}

TEST(ImageFiles, SixteenBitsAreReduced) {
    CGImageRef image = decode(buildPNG(false, pngHeader(1, 1, 16, 0), {0, 0x80, 0x80}));
    ASSERT_NE(image, nullptr);
    EXPECT_LE(largestDifference(image->pixel(0, 0), 0xff808080U), 1);
}

TEST(EncodePNG, ComesBackAsItWas) {
    CGImage image(61, 37);
    std::mt19937 random(1);
    for (int y = 0; y < 37; ++y) {
        for (int x = 0; x < 61; ++x) {
            uint32_t alpha = random() % 256;
            auto channel = [&] { return uint32_t(random() % (alpha + 1)); };
            image.row(y)[x] = alpha << 24 | channel() << 16 | channel() << 8 | channel();
        }
    }
    CGImageRef back = decode(testGraphics().encodePNG(image));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->pixels(), image.pixels());
}

TEST(EncodePNG, OpaqueImagesNeedNoAlpha) {
    CGImage image(3, 2);
    for (int i = 0; i < 6; ++i)
        image.row(0)[i] = 0xff000000U + uint32_t(i) * 0x102030U;
    std::vector<uint8_t> png = testGraphics().encodePNG(image);
    ASSERT_GT(png.size(), 26U);
    EXPECT_EQ(png[25], 2); // colour type: RGB
    CGImageRef back = decode(png);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->pixels(), image.pixels());
}

TEST(EncodePNG, NoPixelsNoFile) {
    EXPECT_TRUE(testGraphics().encodePNG(CGImage(0, 5)).empty());
}

} // namespace
} // namespace tallyforge
