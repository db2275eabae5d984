// Offscreen pictures: which context is current, how many pixels it has, and what comes out of it.
#include "UIKitFixture.h"

#include "uikit/UIGraphics.h"

#include <limits>

namespace tallyforge::test {
namespace {

using UIGraphicsTest = UIKitFixture;

constexpr uint32_t kRed = 0xFFFF0000u;
constexpr uint32_t kBlue = 0xFF0000FFu;

TEST_F(UIGraphicsTest, NoContextUntilOneIsBegun) {
    EXPECT_EQ(UIGraphicsGetCurrentContext(), nullptr);
    EXPECT_FALSE(UIGraphicsGetImageFromCurrentImageContext());
    UIGraphicsEndImageContext();
    EXPECT_EQ(UIGraphicsGetCurrentContext(), nullptr);
}

TEST_F(UIGraphicsTest, PlainContextHasOnePixelAPoint) {
    UIScreen::mainScreen().setScale(3);
    UIGraphicsBeginImageContext(CGSizeMake(4, 5));
    CGContextSetFillColorWithColor(UIGraphicsGetCurrentContext(), UIColor::redColor());
    CGContextFillRect(UIGraphicsGetCurrentContext(), CGRectMake(0, 0, 2, 5));
    UIImage image = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();

    EXPECT_EQ(image.scale(), 1);
    EXPECT_EQ(image.size(), CGSizeMake(4, 5));
    ASSERT_EQ(image.bitmap()->width(), 4);
    EXPECT_EQ(image.bitmap()->pixel(0, 0), kRed);
    EXPECT_EQ(image.bitmap()->pixel(1, 4), kRed);
    EXPECT_EQ(image.bitmap()->pixel(2, 0), 0u);
}

TEST_F(UIGraphicsTest, ScaleMultipliesThePixelsNotThePoints) {
    UIGraphicsBeginImageContextWithOptions(CGSizeMake(4, 5), false, 3);
    CGContextSetFillColorWithColor(UIGraphicsGetCurrentContext(), UIColor::redColor());
    CGContextFillRect(UIGraphicsGetCurrentContext(), CGRectMake(1, 0, 1, 5));
    UIImage image = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();

    EXPECT_EQ(image.scale(), 3);
    EXPECT_EQ(image.size(), CGSizeMake(4, 5));
    ASSERT_EQ(image.bitmap()->width(), 12);
    ASSERT_EQ(image.bitmap()->height(), 15);
    for (int x = 0; x < 12; ++x)
        EXPECT_EQ(image.bitmap()->pixel(x, 14), x >= 3 && x < 6 ? kRed : 0u) << x;
}

TEST_F(UIGraphicsTest, ScaleZeroIsTheScreens) {
    for (CGFloat scale : {1.0, 1.5, 2.0, 3.0}) {
        UIScreen::mainScreen().setScale(scale);
        UIGraphicsBeginImageContextWithOptions(CGSizeMake(4, 6), false, 0);
        UIImage image = UIGraphicsGetImageFromCurrentImageContext();
        UIGraphicsEndImageContext();
        EXPECT_EQ(image.scale(), scale);
        EXPECT_EQ(image.bitmap()->width(), int(4 * scale));
        EXPECT_EQ(image.bitmap()->height(), int(6 * scale));
    }
}

TEST_F(UIGraphicsTest, PartsOfAPixelTakeAWholeOne) {
    UIGraphicsBeginImageContextWithOptions(CGSizeMake(10.3, 0.2), false, 2);
    UIImage image = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    EXPECT_EQ(image.bitmap()->width(), 21);
    EXPECT_EQ(image.bitmap()->height(), 1);
}

TEST_F(UIGraphicsTest, OpaqueContextsBeginBlack) {
    UIGraphicsBeginImageContextWithOptions(CGSizeMake(1, 1), true, 1);
    EXPECT_EQ(UIGraphicsGetImageFromCurrentImageContext().bitmap()->pixel(0, 0), 0xFF000000u);
    UIGraphicsEndImageContext();
}

TEST_F(UIGraphicsTest, InnerContextsLeaveTheOuterOneAlone) {
    UIGraphicsBeginImageContext(CGSizeMake(2, 1));
    CGContextRef outer = UIGraphicsGetCurrentContext();
    UIImage(UIImage::imageWithCGImage(plain(1, 1, kRed), 1, UIImageOrientationUp)).drawAtPoint({0, 0});

    UIGraphicsBeginImageContext(CGSizeMake(3, 3));
    EXPECT_NE(UIGraphicsGetCurrentContext(), outer);
    UIImage::imageWithCGImage(plain(1, 1, kBlue), 1, UIImageOrientationUp).drawAtPoint({0, 0});
    UIImage inner = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();

    EXPECT_EQ(UIGraphicsGetCurrentContext(), outer);
    UIImage image = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    EXPECT_EQ(inner.bitmap()->pixel(0, 0), kBlue);
    EXPECT_EQ(image.bitmap()->pixel(0, 0), kRed);
    EXPECT_EQ(image.bitmap()->pixel(1, 0), 0u);
    EXPECT_EQ(UIGraphicsGetCurrentContext(), nullptr);
}

// The device has no context for such a size either, but its end still has to match its beginning.
TEST_F(UIGraphicsTest, SizesThatAreNoneGiveNoContextButCount) {
    UIGraphicsBeginImageContext(CGSizeMake(2, 2));
    CGContextRef outer = UIGraphicsGetCurrentContext();
    for (CGSize size : {CGSizeMake(0, 5), CGSizeMake(5, 0), CGSizeMake(-3, 5), CGSizeMake(1e9, 1),
                        CGSizeMake(5000, 1), CGSizeMake(std::numeric_limits<double>::quiet_NaN(), 1),
                        CGSizeMake(std::numeric_limits<double>::infinity(), 1)}) {
        UIGraphicsBeginImageContext(size);
        EXPECT_EQ(UIGraphicsGetCurrentContext(), nullptr) << size.width << " x " << size.height;
        EXPECT_FALSE(UIGraphicsGetImageFromCurrentImageContext());
        UIImage::imageWithCGImage(plain(1, 1, kBlue), 1, UIImageOrientationUp).drawAtPoint({0, 0});
        UIGraphicsEndImageContext();
        EXPECT_EQ(UIGraphicsGetCurrentContext(), outer);
    }
    EXPECT_EQ(UIGraphicsGetImageFromCurrentImageContext().bitmap()->pixel(0, 0), 0u);
    UIGraphicsEndImageContext();
}

// A picture that was taken out stays as it was when it was taken.
TEST_F(UIGraphicsTest, TakenImagesDoNotChange) {
    UIGraphicsBeginImageContext(CGSizeMake(1, 1));
    UIImage before = UIGraphicsGetImageFromCurrentImageContext();
    CGContextSetFillColorWithColor(UIGraphicsGetCurrentContext(), UIColor::redColor());
    CGContextFillRect(UIGraphicsGetCurrentContext(), CGRectMake(0, 0, 1, 1));
    UIImage after = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    EXPECT_EQ(before.bitmap()->pixel(0, 0), 0u);
    EXPECT_EQ(after.bitmap()->pixel(0, 0), kRed);
}

TEST_F(UIGraphicsTest, WhereNothingDrawsThereIsNoContext) {
    Graphics::install(nullptr);
    UIGraphicsBeginImageContext(CGSizeMake(1, 1));
    EXPECT_EQ(UIGraphicsGetCurrentContext(), nullptr);
    EXPECT_FALSE(UIGraphicsGetImageFromCurrentImageContext());
    UIGraphicsEndImageContext();
}

TEST_F(UIGraphicsTest, ImagesAreDrawnInPointsAndTheirWayUp) {
    UIImage image =
        UIImage::imageWithCGImage(bitmap(2, 2, {kRed, kRed, kBlue, kBlue}), 2, UIImageOrientationDown);
    UIGraphicsBeginImageContextWithOptions(CGSizeMake(2, 2), false, 2);
    image.drawAtPoint({1, 0});
    UIImage drawn = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    EXPECT_EQ(drawn.bitmap()->pixel(1, 0), 0u);
    EXPECT_EQ(drawn.bitmap()->pixel(2, 0), kBlue);
    EXPECT_EQ(drawn.bitmap()->pixel(3, 1), kRed);
    EXPECT_EQ(drawn.bitmap()->pixel(2, 2), 0u);
}

} // namespace
} // namespace tallyforge::test
