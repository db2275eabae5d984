#include "colorpicker/UIColorZintara.h"

#include "coregraphics/Canvas.h"
#include "rastergraphics/RasterGraphics.h"
#include "uikit/UIDevice.h"
#include "uikit/UIGraphics.h"

#include <gtest/gtest.h>

namespace tallyforge::test {
namespace {

class ThumbnailTest : public testing::Test {
  protected:
    ThumbnailTest() { Graphics::install(MakeRasterGraphics()); }
    ~ThumbnailTest() override { UIScreen::mainScreen().setScale(2); }
};

TEST_F(ThumbnailTest, IsFilledToItsEdgesAtScaleOneOnAnyScreen) {
    for (CGFloat screen : {1.0, 1.5, 2.0, 3.0}) {
        UIScreen::mainScreen().setScale(screen);
        const UIImage image =
            UIColorZintara::thumbnailWithSize(UIColorZintara::colorFromHexString("#12AB34"), {48, 24});
        EXPECT_EQ(image.size(), (CGSize{48, 24}));
        EXPECT_EQ(image.scale(), 1);
        ASSERT_EQ(image.bitmap()->width(), 48);
        ASSERT_EQ(image.bitmap()->height(), 24);
        for (int y = 0; y < 24; ++y) {
            for (int x = 0; x < 48; ++x)
                ASSERT_EQ(image.bitmap()->pixel(x, y), 0xFF12AB34U) << x << ' ' << y;
        }
    }
}

TEST_F(ThumbnailTest, IsNotOpaque) {
    const UIImage clear = UIColorZintara::thumbnailWithSize(UIColor::clearColor(), {4, 4});
    ASSERT_TRUE(clear);
    EXPECT_EQ(clear.bitmap()->pixel(2, 2), 0U);
}

TEST_F(ThumbnailTest, AnImpossibleSizeGivesNoImageAndLeavesNoContext) {
    EXPECT_FALSE(UIColorZintara::thumbnailWithSize(UIColor::redColor(), {0, 24}));
    EXPECT_FALSE(UIColorZintara::thumbnailWithSize(UIColor::redColor(), {-1, 24}));
    EXPECT_FALSE(UIColorZintara::thumbnailWithSize(UIColor::redColor(), {1e9, 1e9}));
    EXPECT_EQ(UIGraphicsGetCurrentContext(), nullptr);
}

TEST_F(ThumbnailTest, TheCategoryParsesAsTheSettingsDo) {
    EXPECT_EQ(UIColorZintara::colorFromHexString("#00ff00"), UIColor::colorWithRed(0, 1, 0, 1));
    EXPECT_EQ(UIColorZintara::colorFromHexString("FF0000"), UIColor::colorWithRed(15.0 / 255, 0, 0, 1));
    EXPECT_EQ(UIColorZintara::colorFromHexString("automatic"), UIColor::blackColor());
    EXPECT_EQ(UIColorZintara::colorFromHexString(""), UIColor::blackColor());
}

} // namespace
} // namespace tallyforge::test
