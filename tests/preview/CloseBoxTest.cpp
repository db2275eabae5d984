#include "PreviewFixture.h"

#include "uikit/UIImageView.h"

#include <numbers>

namespace tallyforge::test {
namespace {

// The plate artwork is 30 x 20, the cross 12 x 8, the phone's icon 60 x 60: cx is 15, cy is 20.
class CloseBoxTest : public PreviewFixture {
  protected:
    /// Without a glow, so that the children are back plate, plate and cross.
    std::shared_ptr<UIView> box(Values values, bool glow = false) {
        if (!glow) values.emplace_back("closeboxglowalpha", number(0));
        cell_ = cell(values);
        return cell_->closeBoxView();
    }
    UIImageView& child(const Values& values, size_t index) {
        return dynamic_cast<UIImageView&>(*box(values)->subviews().at(index));
    }
    /// Where the container was put, whatever its scale and rotation.
    static CGRect placed(const UIView& view) {
        CGSize size = view.bounds().size;
        return {{view.center().x - size.width / 2, view.center().y - size.height / 2}, size};
    }
    static uint32_t centre(const UIImageView& view) {
        CGImageRef bitmap = view.image().uprightBitmap();
        return bitmap ? bitmap->pixel(bitmap->width() / 2, bitmap->height() / 2) : 0;
    }

    std::shared_ptr<PreviewCell> cell_;
};

TEST_F(CloseBoxTest, AnEmptyDomain) {
    auto view = box({}, true);
    EXPECT_EQ(view->superview(), cell_->iconView().get());
    EXPECT_TRUE(isRect(placed(*view), 15, -9, 30, 20));
    EXPECT_TRUE(isTransform(view->transform(), -1, 0, 0, -1)) << "upside down";
    EXPECT_EQ(view->alpha(), 1);
    EXPECT_TRUE(view->layer()->animations().empty());

    ASSERT_EQ(view->subviews().size(), 4u);
    auto& glow = dynamic_cast<UIImageView&>(*view->subviews()[0]);
    EXPECT_TRUE(isRect(glow.frame(), -10.5, -10.5, 46, 44));
    EXPECT_NEAR(glow.alpha(), 0.85, 1e-6);
    EXPECT_EQ(glow.transform(), CGAffineTransformIdentity);
    EXPECT_TRUE(isPixel(centre(glow), 0xFFFF0000)) << "red at full strength";
    auto& back = dynamic_cast<UIImageView&>(*view->subviews()[1]);
    EXPECT_FALSE(back.image());
    EXPECT_EQ(back.alpha(), 1);
    auto& plate = dynamic_cast<UIImageView&>(*view->subviews()[2]);
    EXPECT_TRUE(isRect(plate.frame(), 0, 0, 30, 20));
    EXPECT_NEAR(plate.alpha(), 0.85, 1e-6);
    // A triangle in the fallback colours; its border width is 0, so all of it is the fill.
    EXPECT_TRUE(isPixel(centre(plate), 0xFFFFA500));
    CGImageRef bitmap = plate.image().uprightBitmap();
    EXPECT_EQ(bitmap->pixel(0, 0), 0u);
    EXPECT_EQ(plate.layer()->borderWidth(), 0);
    auto& cross = dynamic_cast<UIImageView&>(*view->subviews()[3]);
    EXPECT_TRUE(isRect(cross.frame(), 9, 6, 12, 8));
    EXPECT_NEAR(cross.alpha(), 0.85, 1e-6);
    EXPECT_EQ(cross.contentMode(), UIViewContentModeScaleAspectFit);
    EXPECT_TRUE(isPixel(centre(cross), 0xFFFFFFFF));
}

TEST_F(CloseBoxTest, NoneIsWhiteForThePlateAndGreyForTheCross) {
    EXPECT_TRUE(isPixel(centre(child({{"closeboxbgcol", text("none")}}, 1)), 0xFFFFFFFF));
    EXPECT_TRUE(isPixel(centre(child({{"closeboxtxtcol", text("none")}}, 2)), 0xFF808080));
}

TEST_F(CloseBoxTest, EveryPlaceOfTheTable) {
    const CGPoint places[] = {{-7, -4}, {17, -4}, {41, -4}, {-7, 55}, {17, 55},
                              {41, 55}, {-7, 25}, {17, 25}, {41, 25}};
    for (int code = 0; code <= 8; ++code) {
        auto view = box({{"closeboxpos", number(float(code))},
                         {"closeboxoffsetX", number(2)},
                         {"closeboxoffsetY", number(5)},
                         {"closeboxsize", number(0.5f)}});
        EXPECT_TRUE(isRect(placed(*view), places[code].x, places[code].y, 30, 20)) << code;
    }
}

TEST_F(CloseBoxTest, EveryPlaceOnATablet) {
    be(UIUserInterfaceIdiomPad, 2);
    const CGPoint places[] = {{-9, -9}, {23, -9}, {55, -9}, {-9, 66}, {23, 66},
                              {55, 66}, {-9, 28}, {23, 28}, {55, 28}};
    for (int code = 0; code <= 8; ++code)
        EXPECT_TRUE(isRect(placed(*box({{"closeboxpos", number(float(code))}})), places[code].x,
                           places[code].y, 30, 20))
            << code;
}

TEST_F(CloseBoxTest, AnUnknownPlaceLeavesItAboveTheIcon) {
    for (float code : {9.f, -1.f, 1e9f})
        EXPECT_TRUE(
            isPoint(box({{"closeboxpos", number(code)}, {"closeboxoffsetX", number(4)}})->center(), 200, 35))
            << code;
    be(UIUserInterfaceIdiomPad, 2);
    EXPECT_TRUE(isPoint(box({{"closeboxpos", number(9)}})->center(), 200, 35));
    // By the width of the cell as it was made.
    domain({{"closeboxpos", number(9)}});
    EXPECT_TRUE(isPoint(cell({{"closeboxpos", number(9)}}, 400, 90)->closeBoxView()->center(), 250, 35));
}

TEST_F(CloseBoxTest, MiddleLeftIsAsHighAsTheBadge) {
    // The badge as a turned triangle is 20 x 30.
    auto view = box({{"closeboxpos", number(6)}, {"badgeshape", number(6)}});
    EXPECT_TRUE(isRect(placed(*view), -9, 20, 30, 30));
    // The badge as the icon is 24 x 24.
    view = box({{"closeboxpos", number(6)}, {"badgeshape", number(5)}});
    EXPECT_TRUE(isRect(placed(*view), -9, 20, 30, 24));
}

TEST_F(CloseBoxTest, MiddleLeftWithoutABadgeHasNoHeight) {
    box({{"closeboxpos", number(6)}});
    cell_->badgeView()->removeFromSuperview();
    ASSERT_EQ(cell_->badgeView(), nullptr);
    cell_->reloadCloseBox();
    EXPECT_TRUE(isRect(placed(*cell_->closeBoxView()), -9, 20, 30, 0));
}

TEST_F(CloseBoxTest, GrowingCountsInFullAndShrinkingByHalf) {
    const std::pair<float, CGFloat> factors[] = {{-0.5f, 0.75}, {0.5f, 1.5}, {-1.5f, 0.25}, {0.f, 1}};
    for (auto [size, factor] : factors) {
        auto view = box({{"closeboxsize", number(size)}, {"closeboxrotation", number(0)}});
        EXPECT_TRUE(isTransform(view->transform(), factor, 0, 0, factor)) << size;
        for (const auto& part : view->subviews())
            EXPECT_EQ(part->transform(), CGAffineTransformIdentity);
    }
}

TEST_F(CloseBoxTest, RotationIsInDegreesAndAbsentIsHalfATurn) {
    box({});
    EXPECT_EQ(PreviewCell::CloseBoxRotation(), static_cast<float>(std::numbers::pi));
    auto view = box({{"closeboxrotation", number(90)}, {"closeboxsize", number(1)}});
    EXPECT_EQ(PreviewCell::CloseBoxRotation(), static_cast<float>(std::numbers::pi / 2));
    EXPECT_TRUE(isTransform(view->transform(), 0, 2, -2, 0));
    box({{"closeboxrotation", text("45 degrees")}});
    EXPECT_EQ(PreviewCell::CloseBoxRotation(), static_cast<float>(std::numbers::pi / 4));
    box({{"closeboxrotation", number(0)}});
    EXPECT_EQ(PreviewCell::CloseBoxRotation(), 0.f);
}

TEST_F(CloseBoxTest, TheCrossMovesAndGrowsAboutItsCentre) {
    auto cross = [this](float size, float x, float y) {
        return child({{"closeboxtxtsize", number(size)},
                      {"closeboxtxtoffsetX", number(x)},
                      {"closeboxtxtoffsetY", number(y)}},
                     2)
            .frame();
    };
    EXPECT_TRUE(isRect(cross(0, 4, -3), 13, 3, 12, 8));
    EXPECT_TRUE(isRect(cross(-1, 0, 0), 12, 8, 6, 4));
    EXPECT_TRUE(isRect(cross(1, 0, 0), 3, 2, 24, 16));
    EXPECT_TRUE(isRect(cross(1, 4, -3), 7, -1, 24, 16));
}

TEST_F(CloseBoxTest, PresetShowsTheCrossAlone) {
    for (const PropertyList& preset : {PropertyList::integer(98), number(98), text("98")}) {
        auto view = box({{"presetcloseboxbg", preset}, {"closeboxsize", number(1)}});
        ASSERT_EQ(view->subviews().size(), 1u);
        EXPECT_TRUE(isPixel(centre(dynamic_cast<UIImageView&>(*view->subviews()[0])), 0xFFFFFFFF));
        EXPECT_TRUE(isRect(view->subviews()[0]->frame(), 9, 6, 12, 8));
        EXPECT_TRUE(isRect(placed(*view), 15, -9, 30, 20));
        EXPECT_TRUE(isTransform(view->transform(), -2, 0, 0, -2));
    }
    EXPECT_EQ(box({{"presetcloseboxbg", PropertyList::integer(97)}})->subviews().size(), 3u);
    EXPECT_EQ(box({{"presetcloseboxbg", PropertyList::integer(98)}}, true)->subviews().size(), 2u)
        << "the glow stays";
}

TEST_F(CloseBoxTest, TheSystemBoxHasARoundBorderOnItsLayer) {
    auto view = box({{"closeboxshape", number(10)},
                     {"closeboxbordersize", number(2.5f)},
                     {"closeboxbordercol", text("#0000FF")},
                     {"closeboxbgcol", text("#FF0000")},
                     {"closeboxalpha", number(50)}});
    ASSERT_EQ(view->subviews().size(), 3u);
    auto& back = dynamic_cast<UIImageView&>(*view->subviews()[0]);
    auto& plate = dynamic_cast<UIImageView&>(*view->subviews()[1]);
    EXPECT_EQ(back.alpha(), 1);
    EXPECT_TRUE(isRect(back.frame(), 0, 0, 30, 20));
    // The system grey (207, 203, 219) at a half over the artwork's 128.
    EXPECT_TRUE(isPixel(centre(back), 0xFFA8A6AE));
    // Red at 0.65 over 128: 255 x 0.65 + 128 x 0.35 = 210.6, 128 x 0.35 = 44.8.
    EXPECT_TRUE(isPixel(centre(plate), 0xFFD32D2D));
    EXPECT_NEAR(plate.alpha(), 0.5, 1e-6);
    EXPECT_EQ(plate.layer()->borderWidth(), 2.5);
    EXPECT_EQ(plate.layer()->cornerRadius(), 15);
    ASSERT_TRUE(plate.layer()->borderColor());
    EXPECT_EQ(plate.layer()->borderColor()->blue, 1);
    EXPECT_NEAR(plate.layer()->borderColor()->alpha, 0.65, 1e-6);
    EXPECT_EQ(back.layer()->borderWidth(), 0);
}

TEST_F(CloseBoxTest, TheSystemBoxWithoutABorderColour) {
    auto& plate = child({{"closeboxshape", number(10)},
                         {"closeboxbordersize", number(3)},
                         {"closeboxbordercol", text("none")}},
                        1);
    EXPECT_FALSE(plate.layer()->borderColor());
    EXPECT_EQ(plate.layer()->borderWidth(), 3);
}

TEST_F(CloseBoxTest, TheSystemBoxMakesEvenAClearBorderSeen) {
    auto& plate = child({{"closeboxshape", number(10)},
                         {"closeboxbordersize", number(3)},
                         {"closeboxbordercol", text("transparent")}},
                        1);
    ASSERT_TRUE(plate.layer()->borderColor());
    EXPECT_EQ(plate.layer()->borderColor()->red, 0);
    EXPECT_NEAR(plate.layer()->borderColor()->alpha, 0.65, 1e-6);
}

TEST_F(CloseBoxTest, TheSystemBoxTakes85PercentAndNoBorderWhenNothingIsSet) {
    auto view = box({{"closeboxshape", number(10)}});
    auto& back = dynamic_cast<UIImageView&>(*view->subviews()[0]);
    // 207 x 0.85 + 128 x 0.15 = 195.2, 203 x 0.85 + 19.2 = 191.8, 219 x 0.85 + 19.2 = 205.4.
    EXPECT_TRUE(isPixel(centre(back), 0xFFC3C0CD));
    EXPECT_EQ(view->subviews()[1]->layer()->borderWidth(), 0);
}

TEST_F(CloseBoxTest, OtherShapesHaveTheirBorderInThePicture) {
    auto& plate = child({{"closeboxshape", number(1)}, {"closeboxbordersize", number(4)}}, 1);
    EXPECT_EQ(plate.layer()->borderWidth(), 0);
    EXPECT_EQ(plate.layer()->cornerRadius(), 0);
    CGImageRef bitmap = plate.image().uprightBitmap();
    EXPECT_TRUE(isPixel(bitmap->pixel(1, 1), 0xFF000000));
    EXPECT_TRUE(isPixel(centre(plate), 0xFFFFA500));
}

TEST_F(CloseBoxTest, ABorderOf10LeavesOnlyTheBorderColour) {
    auto& plate = child({{"closeboxshape", number(1)},
                         {"closeboxbordersize", number(10)},
                         {"closeboxbordercol", text("#0000FF")}},
                        1);
    CGImageRef bitmap = plate.image().uprightBitmap();
    for (uint32_t pixel : bitmap->pixels())
        ASSERT_TRUE(isPixel(pixel, 0xFF0000FF));
}

TEST_F(CloseBoxTest, Shape5StandsOnTheBundlesOutline) {
    auto view = box({{"closeboxshape", number(5)}});
    EXPECT_TRUE(isRect(placed(*view), 60 / 2.0 - 13, -9, 26, 18));
    EXPECT_TRUE(isRect(view->subviews()[2]->frame(), 7, 5, 12, 8)) << "the cross is centred on it";
}

TEST_F(CloseBoxTest, TheOutlineMayAlsoBeBelowBootstrap) {
    std::filesystem::create_directories(device_.file("/bootstrap" + kBundle));
    std::filesystem::rename(device_.file(kBundle + "icon_shape.png"),
                            device_.file("/bootstrap" + kBundle + "icon_shape.png"));
    EXPECT_TRUE(child({{"closeboxshape", number(5)}}, 1).image());
    std::filesystem::remove(device_.file("/bootstrap" + kBundle + "icon_shape.png"));
    EXPECT_FALSE(child({{"closeboxshape", number(5)}}, 1).image());
}

TEST_F(CloseBoxTest, TheTurnedTriangleSwapsWidthAndHeight) {
    EXPECT_TRUE(isRect(placed(*box({{"closeboxshape", number(6)}})), 20, -9, 20, 30));
    EXPECT_TRUE(isRect(placed(*box({{"closeboxshape", number(6)}, {"closeboxbordercol", text("none")}})), 15,
                       -9, 30, 20));
}

TEST_F(CloseBoxTest, OpacityIsTheParts) {
    auto view = box({{"closeboxalpha", number(30)}}, true);
    EXPECT_EQ(view->alpha(), 1);
    EXPECT_NEAR(view->subviews()[0]->alpha(), 0.3, 1e-6) << "glow";
    EXPECT_EQ(view->subviews()[1]->alpha(), 1) << "back plate";
    EXPECT_NEAR(view->subviews()[2]->alpha(), 0.3, 1e-6) << "plate";
    EXPECT_NEAR(view->subviews()[3]->alpha(), 0.3, 1e-6) << "cross";
}

TEST_F(CloseBoxTest, TheGlowIsNotScaledByItself) {
    auto view = box({{"closeboxsize", number(1)}, {"closeboxglowalpha", number(50)}}, true);
    ASSERT_EQ(view->subviews().size(), 4u);
    EXPECT_EQ(view->subviews()[0]->transform(), CGAffineTransformIdentity);
    EXPECT_TRUE(isPixel(centre(dynamic_cast<UIImageView&>(*view->subviews()[0])), 0xFFFF8080));
    EXPECT_EQ(box({{"closeboxglowcol", text("none")}}, true)->subviews().size(), 3u);
}

TEST_F(CloseBoxTest, TheAnimationIsMadeForItsScaleAndOpacity) {
    auto view = box({{"closeboxanimtype", number(6)},
                     {"closeboxanimspd", number(2)},
                     {"closeboxsize", number(0.5f)},
                     {"closeboxrotation", number(90)}});
    auto* bounce = dynamic_cast<const CAKeyframeAnimation*>(view->layer()->animationForKey("badgeAnim"));
    ASSERT_TRUE(bounce);
    EXPECT_EQ(bounce->duration(), 2);
    ASSERT_EQ(bounce->values().size(), 22u);
    // Turned by a quarter, 30 x 20 scaled by 1.5 stands 45 high.
    auto top = std::get<CATransform3D>(bounce->values()[6]);
    EXPECT_NEAR(top.m42, -45, 1e-4);
    EXPECT_EQ(top.m11, 1.5);
    EXPECT_EQ(top.m22, 1.5);

    view = box({{"closeboxanimtype", number(11)}});
    auto* blink = dynamic_cast<const CABasicAnimation*>(view->layer()->animationForKey("badgeAnim"));
    ASSERT_TRUE(blink);
    EXPECT_NEAR(std::get<CGFloat>(blink->fromValue()), 0.85, 1e-6);
    EXPECT_EQ(blink->duration(), 1);
}

TEST_F(CloseBoxTest, EveryRunReplacesTheBox) {
    auto first = box({});
    cell_->reloadCloseBox();
    EXPECT_EQ(first->superview(), nullptr);
    EXPECT_EQ(cell_->iconView()->subviews().size(), 3u);
    EXPECT_EQ(cell_->iconView()->subviews().back(), cell_->closeBoxView());
}

TEST_F(CloseBoxTest, MissingArtworkLeavesThatPieceOut) {
    remove(kSpringBoard + "IconCloseBoxX.png");
    auto view = box({});
    ASSERT_EQ(view->subviews().size(), 3u);
    EXPECT_FALSE(dynamic_cast<UIImageView&>(*view->subviews()[2]).image());
    EXPECT_TRUE(isPoint(view->subviews()[2]->center(), 15, 10));
}

} // namespace
} // namespace tallyforge::test
