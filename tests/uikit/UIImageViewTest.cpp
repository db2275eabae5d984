#include "UIKitFixture.h"

#include "uikit/UIImageView.h"

namespace tallyforge::test {
namespace {

using UIImageViewTest = UIKitFixture;

TEST_F(UIImageViewTest, TakesTheImagesSizeInPoints) {
    UIImage image = UIImage::imageWithCGImage(plain(120, 90, 0xFF000000u), 2, UIImageOrientationUp);
    UIImageView view(image);
    EXPECT_EQ(view.frame(), CGRectMake(0, 0, 60, 45));
    EXPECT_EQ(view.layer()->contents(), image.bitmap());
    EXPECT_EQ(view.layer()->contentsScale(), 2);
    EXPECT_STREQ(view.className(), "UIImageView");
}

TEST_F(UIImageViewTest, NoImageHasNoSizeAndShowsNothing) {
    UIImageView view{UIImage()};
    EXPECT_EQ(view.frame(), CGRectZero);
    EXPECT_EQ(view.layer()->contents(), nullptr);
    EXPECT_FALSE(view.image());
}

TEST_F(UIImageViewTest, AnotherImageKeepsTheFrame) {
    UIImageView view(UIImage::imageWithCGImage(plain(10, 10, 0xFF000000u), 1, UIImageOrientationUp));
    UIImage other = UIImage::imageWithCGImage(plain(90, 30, 0xFFFFFFFFu), 3, UIImageOrientationUp);
    view.setImage(other);
    EXPECT_EQ(view.frame(), CGRectMake(0, 0, 10, 10));
    EXPECT_EQ(view.layer()->contents(), other.bitmap());
    EXPECT_EQ(view.layer()->contentsScale(), 3);
    view.setImage({});
    EXPECT_EQ(view.frame(), CGRectMake(0, 0, 10, 10));
    EXPECT_EQ(view.layer()->contents(), nullptr);
}

TEST_F(UIImageViewTest, ShowsImagesTheirWayUp) {
    UIImageView view(UIImage::imageWithCGImage(bitmap(2, 1, {7, 8}), 1, UIImageOrientationDown));
    EXPECT_EQ(view.layer()->contents()->pixels(), (CGImage::Pixels{8, 7}));
}

TEST_F(UIImageViewTest, ContentModesAreTheLayersGravities) {
    UIImageView view{UIImage()};
    EXPECT_EQ(static_cast<int>(view.contentMode()), 0);
    EXPECT_EQ(view.layer()->contentsGravity(), CAGravity::resize);
    view.setContentMode(UIViewContentModeScaleAspectFit);
    EXPECT_EQ(static_cast<int>(view.contentMode()), 1);
    EXPECT_EQ(view.layer()->contentsGravity(), CAGravity::resizeAspect);
    view.setContentMode(UIViewContentMode::scaleAspectFill);
    EXPECT_EQ(view.layer()->contentsGravity(), CAGravity::resizeAspectFill);
    view.setContentMode(UIViewContentMode::center);
    EXPECT_EQ(static_cast<int>(view.contentMode()), 4);
    EXPECT_EQ(view.layer()->contentsGravity(), CAGravity::center);
    view.setContentMode(UIViewContentModeScaleToFill);
    EXPECT_EQ(view.layer()->contentsGravity(), CAGravity::resize);
}

} // namespace
} // namespace tallyforge::test
