#include "PreviewFixture.h"

#include "uikit/UIImageView.h"

namespace tallyforge::test {
namespace {

// The dot's artwork is 10 x 6; the name's label is as wide as its text and 44 high, as the cell.
class NewDotTest : public PreviewFixture {
  protected:
    UIImageView& dot(const Values& values) {
        cell_ = cell(values);
        return dynamic_cast<UIImageView&>(*cell_->newDotView());
    }
    CGFloat labelWidth() const { return cell_->iconLabel()->frame().size.width; }
    static uint32_t centre(const UIImageView& view) {
        CGImageRef bitmap = view.image().uprightBitmap();
        return bitmap ? bitmap->pixel(bitmap->width() / 2, bitmap->height() / 2) : 0;
    }

    std::shared_ptr<PreviewCell> cell_;
};

TEST_F(NewDotTest, AnEmptyDomain) {
    auto& view = dot({});
    EXPECT_EQ(view.superview(), cell_->iconLabel().get());
    ASSERT_EQ(cell_->iconLabel()->subviews().size(), 1u);
    EXPECT_TRUE(view.subviews().empty());
    EXPECT_TRUE(isPoint(view.layer()->anchorPoint(), 0, 0));
    // 5 to the right of the label; width and height change places.
    EXPECT_TRUE(isPoint(view.center(), labelWidth() + 5, 22 - 3));
    EXPECT_TRUE(isRect(view.bounds(), 0, 0, 6, 10));
    EXPECT_TRUE(isTransform(view.transform(), 1.1, 0, 0, 1.1));
    EXPECT_TRUE(isRect(view.frame(), labelWidth() + 5, 19, 6.6, 11)) << "about its top left corner";
    EXPECT_EQ(view.alpha(), 1);
    EXPECT_TRUE(view.layer()->animations().empty());
    // A square of red at 0.6, alone.
    EXPECT_EQ(view.image().scale(), 1);
    for (uint32_t pixel : view.image().uprightBitmap()->pixels())
        ASSERT_TRUE(isPixel(pixel, 0x99990000));
}

TEST_F(NewDotTest, NoneIsBlue) {
    // (0, 105, 255) at 0.6.
    EXPECT_TRUE(isPixel(centre(dot({{"newdotbgcol", text("none")}})), 0x99003F99));
}

TEST_F(NewDotTest, EveryPlaceOfTheTable) {
    auto at = [this](float code) -> UIImageView& {
        return dot(
            {{"newdotpos", number(code)}, {"newdotoffsetX", number(2)}, {"newdotoffsetY", number(-7)}});
    };
    EXPECT_TRUE(isPoint(at(0).center(), 2 - 13, -7 + 22 - 3));
    EXPECT_TRUE(isRect(cell_->newDotView()->bounds(), 0, 0, 6, 10));
    EXPECT_TRUE(isPoint(at(1).center(), 2 + labelWidth() + 5, -7 + 22 - 3));
    EXPECT_TRUE(isRect(cell_->newDotView()->bounds(), 0, 0, 6, 10));
    EXPECT_TRUE(isPoint(at(2).center(), 2 + labelWidth() / 2 - 5, -7 - 2 - 60));
    EXPECT_TRUE(isRect(cell_->newDotView()->bounds(), 0, 0, 6, 10));
    EXPECT_TRUE(isPoint(at(3).center(), 2 + labelWidth() / 2 - 5, -7 + 44 / 1.55));
    EXPECT_TRUE(isRect(cell_->newDotView()->bounds(), 0, 0, 6, 10));
    EXPECT_TRUE(isPoint(at(4).center(), 200, 20));
    EXPECT_TRUE(isRect(cell_->newDotView()->bounds(), 0, 0, 10, 6)) << "not placed, not swapped";
    EXPECT_TRUE(isPoint(at(-1).center(), 200, 20));
}

TEST_F(NewDotTest, ATabletRaisesItByItsLargerIcon) {
    be(UIUserInterfaceIdiomPad, 2);
    auto& view = dot({{"newdotpos", number(2)}});
    EXPECT_TRUE(isPoint(view.center(), labelWidth() / 2 - 5, -2 - 76));
    EXPECT_TRUE(isPoint(dot({{"newdotpos", number(4)}}).center(), 200, 20));
}

TEST_F(NewDotTest, PlacesGoByTheCellsSizeWhenItWasMade) {
    cell_ = cell({{"newdotpos", number(4)}}, 480, 100);
    EXPECT_TRUE(isPoint(cell_->newDotView()->center(), 300, 20));
    cell_ = cell({{"newdotpos", number(3)}}, 480, 93);
    EXPECT_TRUE(isPoint(cell_->newDotView()->center(), labelWidth() / 2 - 5, 60));
}

TEST_F(NewDotTest, GrowingCountsInFullAndShrinkingByHalf) {
    const std::pair<float, CGFloat> factors[] = {{-1.f, 0.5}, {0.f, 1}, {1.f, 2}, {0.25f, 1.25}};
    for (auto [size, factor] : factors)
        EXPECT_TRUE(isTransform(dot({{"newdotsize", number(size)}}).transform(), factor, 0, 0, factor))
            << size;
}

TEST_F(NewDotTest, ShapesOneToThreeAreDrawnAndAllOthersAreTheTintedDot) {
    for (float shape : {1.f, 2.f, 3.f}) {
        auto& view = dot({{"newdotshape", number(shape)}});
        EXPECT_TRUE(isPixel(centre(view), 0x99990000)) << shape;
        EXPECT_EQ(view.image().scale(), 1);
    }
    // The corners of a triangle's top are empty, those of its bottom nearly full.
    EXPECT_EQ(dot({{"newdotshape", number(2)}}).image().uprightBitmap()->pixel(0, 0), 0u);
    for (float shape : {0.f, 4.f, 5.f, 6.f, 10.f, -1.f}) {
        auto& view = dot({{"newdotshape", number(shape)}});
        // Red at 0.6 over the green artwork.
        EXPECT_TRUE(isPixel(centre(view), 0xFF996600)) << shape;
        EXPECT_EQ(view.image().scale(), 2);
    }
}

TEST_F(NewDotTest, OpacityIsTheViewsOwn) {
    EXPECT_NEAR(dot({{"newdotalpha", number(25)}}).alpha(), 0.25, 1e-6);
    EXPECT_NEAR(dot({{"newdotalpha", text("12.5x")}}).alpha(), 0.125, 1e-6);
}

TEST_F(NewDotTest, TheAnimationIsMadeForItsScaleAndOpacity) {
    auto& view =
        dot({{"newdotanimtype", number(6)}, {"newdotsize", number(1)}, {"newdotanimspd", number(3)}});
    auto* bounce = dynamic_cast<const CAKeyframeAnimation*>(view.layer()->animationForKey("badgeAnim"));
    ASSERT_TRUE(bounce);
    EXPECT_EQ(bounce->duration(), 3);
    // 10 high after the swap, scaled by 2.
    auto top = std::get<CATransform3D>(bounce->values().at(6));
    EXPECT_NEAR(top.m42, -20, 1e-4);
    EXPECT_EQ(top.m11, 2);
    auto& faint = dot({{"newdotanimtype", number(11)}, {"newdotalpha", number(40)}});
    auto* blink = dynamic_cast<const CABasicAnimation*>(faint.layer()->animationForKey("badgeAnim"));
    ASSERT_TRUE(blink);
    EXPECT_NEAR(std::get<CGFloat>(blink->fromValue()), 0.4, 1e-6);
}

TEST_F(NewDotTest, EveryRunReplacesTheDot) {
    dot({});
    auto first = cell_->newDotView();
    cell_->reloadNewDot();
    EXPECT_EQ(first->superview(), nullptr);
    ASSERT_EQ(cell_->iconLabel()->subviews().size(), 1u);
    EXPECT_EQ(cell_->iconLabel()->subviews()[0], cell_->newDotView());
}

TEST_F(NewDotTest, WithoutArtworkThereIsAnEmptyDot) {
    remove(kSpringBoard + "IconNewDot.png");
    auto& view = dot({});
    EXPECT_FALSE(view.image());
    EXPECT_TRUE(isPoint(view.center(), labelWidth() + 5, 22));
}

} // namespace
} // namespace tallyforge::test
