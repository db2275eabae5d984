#include "PreviewFixture.h"

#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

namespace tallyforge::test {
namespace {

// The plate artwork is 30 x 20, the phone's icon 60 x 60: cx is 15, cy is 20.
class BadgeTest : public PreviewFixture {
  protected:
    std::shared_ptr<UIView> badge(const Values& values) {
        cell_ = cell(values);
        return cell_->badgeView();
    }
    /// The badge's children are the plate and the label, in this order, when there is no glow.
    UIImageView& plate(const Values& values) {
        return dynamic_cast<UIImageView&>(*badge(values)->subviews().at(0));
    }
    UILabel& label(const Values& values) { return dynamic_cast<UILabel&>(*badge(values)->subviews().back()); }
    uint32_t platePixel(const Values& values, int x, int y) {
        CGImageRef bitmap = plate(values).image().uprightBitmap();
        return bitmap ? bitmap->pixel(x, y) : 0;
    }

    std::shared_ptr<PreviewCell> cell_;
};

TEST_F(BadgeTest, AnEmptyDomainIsAGreenSquareInARedOneAtTheTopRight) {
    auto view = badge({});
    ASSERT_EQ(view->subviews().size(), 2u);
    EXPECT_STREQ(view->className(), "UIView");
    EXPECT_EQ(view->superview(), cell_->iconView().get());
    // The right edge stands 9 beyond the icon's, the top edge 9 above it.
    EXPECT_TRUE(isRect(view->frame(), 39, -9, 30, 20));
    EXPECT_NEAR(view->frame().origin.x + view->frame().size.width, 69, 1e-4);

    auto& image = dynamic_cast<UIImageView&>(*view->subviews()[0]);
    EXPECT_TRUE(isRect(image.frame(), 0, 0, 30, 20));
    EXPECT_EQ(image.alpha(), 1);
    // k is 0.85: 30 x 0.15 / 2 = 2.25 at the sides, 20 x 0.15 / 2 = 1.5 above and below.
    CGImageRef bitmap = image.image().uprightBitmap();
    CGFloat scale = image.image().scale();
    auto at = [&](CGFloat x, CGFloat y) { return bitmap->pixel(int(x * scale), int(y * scale)); };
    EXPECT_TRUE(isPixel(at(0.5, 10.5), 0xFFFF0000));
    EXPECT_TRUE(isPixel(at(29.5, 10.5), 0xFFFF0000));
    EXPECT_TRUE(isPixel(at(15.5, 0.5), 0xFFFF0000));
    EXPECT_TRUE(isPixel(at(15.5, 19.5), 0xFFFF0000));
    EXPECT_TRUE(isPixel(at(3.5, 10.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(at(26.5, 10.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(at(15.5, 2.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(at(15.5, 17.5), 0xFF00FF00));

    auto& number = dynamic_cast<UILabel&>(*view->subviews()[1]);
    EXPECT_EQ(number.text(), "6");
    EXPECT_EQ(number.textColor(), UIColor::whiteColor());
    EXPECT_EQ(number.font(), UIFont::systemFontOfSize(15));
    EXPECT_EQ(number.textAlignment(), NSTextAlignmentCenter);
    EXPECT_EQ(number.contentMode(), UIViewContentModeScaleAspectFit);
    EXPECT_EQ(number.alpha(), 1);
    EXPECT_EQ(number.backgroundColor().value_or(UIColor::clearColor()).alpha(), 0);
    EXPECT_TRUE(isRect(number.frame(), 0, 0, 30, 20));
    EXPECT_TRUE(view->layer()->animations().empty());
    EXPECT_EQ(view->transform(), CGAffineTransformIdentity);
}

TEST_F(BadgeTest, EveryPlaceOfTheTable) {
    const CGPoint places[] = {{-6, -13}, {18, -13}, {42, -13}, {-6, 46}, {18, 46},
                              {42, 46},  {-6, 16},  {18, 16},  {42, 16}};
    for (int code = 0; code <= 8; ++code) {
        SCOPED_TRACE(code);
        auto view = badge(
            {{"badgepos", number(float(code))}, {"badgeoffsetX", number(3)}, {"badgeoffsetY", number(-4)}});
        EXPECT_TRUE(isRect(view->frame(), places[code].x, places[code].y, 30, 20));
    }
}

TEST_F(BadgeTest, EveryPlaceOnATablet) {
    be(UIUserInterfaceIdiomPad, 2);
    // The icon is 76 x 76: cx is 23, cy is 28.
    const CGPoint places[] = {{-9, -9}, {23, -9}, {55, -9}, {-9, 66}, {23, 66},
                              {55, 66}, {-9, 28}, {23, 28}, {55, 28}};
    for (int code = 0; code <= 8; ++code) {
        SCOPED_TRACE(code);
        EXPECT_TRUE(isRect(badge({{"badgepos", number(float(code))}})->frame(), places[code].x,
                           places[code].y, 30, 20));
    }
}

TEST_F(BadgeTest, BottomCentreHasItsCentreOnTheIconsBottomEdge) {
    EXPECT_TRUE(isPoint(badge({{"badgepos", number(4)}})->center(), 30, 60));
}

TEST_F(BadgeTest, AnUnknownPlaceLeavesItWhereItWasMade) {
    for (float code : {9.f, -1.f, 100.f, 1e9f}) {
        auto view =
            badge({{"badgepos", number(code)}, {"badgeoffsetX", number(5)}, {"badgeoffsetY", number(7)}});
        EXPECT_TRUE(isRect(view->frame(), 0, 0, 30, 20)) << code;
    }
}

TEST_F(BadgeTest, CodesAreReadAsWholeNumbersFromAnyKindOfValue) {
    EXPECT_TRUE(isRect(badge({{"badgepos", text("4")}})->frame(), 15, 50, 30, 20));
    EXPECT_TRUE(isRect(badge({{"badgepos", text("4.9x")}})->frame(), 15, 50, 30, 20));
    EXPECT_TRUE(isRect(badge({{"badgepos", text("#00FF00")}})->frame(), -9, -9, 30, 20));
    EXPECT_TRUE(isRect(badge({{"badgepos", PropertyList::boolean(true)}})->frame(), 15, -9, 30, 20));
    EXPECT_TRUE(isRect(badge({{"badgepos", PropertyList::integer(8)}})->frame(), 39, 20, 30, 20));
    EXPECT_TRUE(isRect(badge({{"badgepos", PropertyList::doubleNumber(7.99)}})->frame(), 15, 20, 30, 20));
}

TEST_F(BadgeTest, GrowingCountsInFullAndShrinkingByHalf) {
    const std::pair<float, CGFloat> factors[] = {{0.f, 1},      {-1.f, 0.5},   {2.f, 3},
                                                 {2.25f, 3.25}, {-1.5f, 0.25}, {0.5f, 1.5}};
    for (auto [size, factor] : factors) {
        auto view = badge({{"badgesize", number(size)}});
        EXPECT_TRUE(isTransform(view->subviews()[0]->transform(), factor, 0, 0, factor)) << size;
        EXPECT_TRUE(isTransform(view->subviews()[1]->transform(), factor, 0, 0, factor)) << size;
        EXPECT_EQ(view->transform(), CGAffineTransformIdentity);
        EXPECT_TRUE(isRect(view->frame(), 39, -9, 30, 20)) << "the container keeps its size";
    }
}

TEST_F(BadgeTest, PlateAndNumberAreTurnedAfterTheyWereScaled) {
    auto view = badge({{"badgesize", number(1)}, {"badgerotation", number(90)}});
    EXPECT_TRUE(isTransform(view->subviews()[0]->transform(), 0, 2, -2, 0));
    EXPECT_TRUE(isTransform(view->subviews()[1]->transform(), 0, 2, -2, 0));
    view = badge({{"badgerotation", number(30)}});
    EXPECT_TRUE(isTransform(view->subviews()[0]->transform(), 0.8660254, 0.5, -0.5, 0.8660254));
}

TEST_F(BadgeTest, TextSizeScalesTheFontAndTheLabelAboutItsCentre) {
    auto& grown = label({{"badgetxtsize", number(1)}});
    EXPECT_EQ(grown.font().pointSize(), 30);
    EXPECT_TRUE(isRect(grown.frame(), -15, -10, 60, 40));
    auto& shrunk = label({{"badgetxtsize", number(-1)}});
    EXPECT_EQ(shrunk.font().pointSize(), 7.5);
    EXPECT_TRUE(isRect(shrunk.frame(), 7.5, 5, 15, 10));
}

TEST_F(BadgeTest, TextOffsetsMoveTheLabel) {
    EXPECT_TRUE(isRect(label({{"badgetxtoffsetX", number(5)}, {"badgetxtoffsetY", number(-3)}}).frame(), 5,
                       -3, 30, 20));
}

TEST_F(BadgeTest, TheNumberStandsAtTheShapesOwnHeight) {
    // The height divided by 2, but by 1.6 for the triangle, 2.2 for the star, 3 for the turned triangle.
    const std::pair<float, CGFloat> heights[] = {{0.f, 10},       {1.f, 10}, {2.f, 12.5}, {3.f, 10},
                                                 {4.f, 20 / 2.2}, {7.f, 10}, {-1.f, 10}};
    for (auto [shape, y] : heights)
        EXPECT_TRUE(isPoint(label({{"badgeshape", number(shape)}}).center(), 15, y)) << shape;
    // The icon as a shape is 24 x 24.
    EXPECT_TRUE(isPoint(label({{"badgeshape", number(5)}}).center(), 12, 12));
    // Turned upside down, 30 x 20 becomes 20 x 30; without a border colour it is not turned.
    EXPECT_TRUE(isPoint(label({{"badgeshape", number(6)}}).center(), 10, 10));
    EXPECT_TRUE(
        isPoint(label({{"badgeshape", number(6)}, {"badgebordercol", text("none")}}).center(), 15, 20 / 3.0));
}

TEST_F(BadgeTest, TheTurnedTriangleSwapsWidthAndHeightOnlyWithABorderColour) {
    EXPECT_TRUE(isRect(badge({{"badgeshape", number(6)}})->frame(), 60 - 20 + 9, -9, 20, 30));
    EXPECT_TRUE(
        isRect(badge({{"badgeshape", number(6)}, {"badgebordersize", number(0)}})->frame(), 49, -9, 20, 30));
    EXPECT_TRUE(isRect(badge({{"badgeshape", number(6)}, {"badgebordercol", text("none")}})->frame(), 39, -9,
                       30, 20));
}

TEST_F(BadgeTest, TheIconItselfAsShapeIs24PointsLarge) {
    EXPECT_TRUE(isRect(badge({{"badgeshape", number(5)}})->frame(), 60 - 24 + 9, -9, 24, 24));
    be(UIUserInterfaceIdiomPad, 2);
    EXPECT_TRUE(isRect(badge({{"badgeshape", number(5)}})->frame(), 76 - 24 + 9, -9, 24, 24));
}

TEST_F(BadgeTest, RomanNumeralsReadVThenI) {
    EXPECT_EQ(label({{"convertbadgeroman", number(1)}}).text(), "VI");
    EXPECT_EQ(label({{"convertbadgeroman", PropertyList::boolean(true)}}).text(), "VI");
    EXPECT_EQ(label({{"convertbadgeroman", PropertyList::integer(1)}}).text(), "VI");
    EXPECT_EQ(label({{"convertbadgeroman", number(0)}}).text(), "6");
    EXPECT_EQ(label({{"convertbadgeroman", PropertyList::boolean(false)}}).text(), "6");
}

TEST_F(BadgeTest, OpacityBelongsToPlateAndNumberNotToTheContainer) {
    auto view = badge({{"badgealpha", number(40)}});
    EXPECT_NEAR(view->subviews()[0]->alpha(), 0.4, 1e-6);
    EXPECT_NEAR(view->subviews()[1]->alpha(), 0.4, 1e-6);
    EXPECT_EQ(view->alpha(), 1);
}

TEST_F(BadgeTest, NoneIsRedForTheFillAndWhiteForTheNumber) {
    EXPECT_TRUE(isPixel(platePixel({{"badgebgcol", text("none")}, {"badgebordercol", text("none")}}, 15, 10),
                        0xFFFF0000));
    EXPECT_EQ(label({{"badgetxtcol", text("none")}}).textColor(), UIColor::whiteColor());
}

TEST_F(BadgeTest, ColoursAreReadFromStrings) {
    EXPECT_TRUE(isPixel(
        platePixel({{"badgebgcol", text("#123456")}, {"badgebordercol", text("none")}}, 15, 10), 0xFF123456));
    EXPECT_EQ(label({{"badgetxtcol", text("#FF0000")}}).textColor(), UIColor::redColor());
    // Numbers are no colours.
    EXPECT_EQ(label({{"badgetxtcol", number(5)}}).textColor(), UIColor::blackColor());
}

TEST_F(BadgeTest, AutomaticIsTheIconsAverageColour) {
    be(UIUserInterfaceIdiomPhone, 1);
    auto& number = label({{"badgetxtcol", text("automatic_bright")}});
    // The icon is all 2040C0; the rounded corners are dark and do not count, but for a few pixels of their
    // edges.
    EXPECT_NEAR(number.textColor().red() * 255, 0x20, 2);
    EXPECT_NEAR(number.textColor().green() * 255, 0x40, 2);
    EXPECT_NEAR(number.textColor().blue() * 255, 0xC0, 3);
    EXPECT_EQ(number.textColor().alpha(), 1);
}

TEST_F(BadgeTest, ATransparentBadgeIsTheNumberAlone) {
    auto view = badge({{"badgebgcol", text("transparent")}});
    ASSERT_EQ(view->subviews().size(), 1u);
    EXPECT_STREQ(view->subviews()[0]->className(), "UILabel");
    EXPECT_TRUE(isRect(view->frame(), 39, -9, 30, 20));
    // Only that very word.
    EXPECT_EQ(badge({{"badgebgcol", text("Transparent")}})->subviews().size(), 2u);
    // The glow stays.
    view = badge({{"badgebgcol", text("transparent")}, {"badgeglowalpha", number(100)}});
    ASSERT_EQ(view->subviews().size(), 2u);
    EXPECT_STREQ(view->subviews()[0]->className(), "UIImageView");
    EXPECT_STREQ(view->subviews()[1]->className(), "UILabel");
}

TEST_F(BadgeTest, TheGlowLiesBehindAndTakesScaleAndOpacity) {
    auto view = badge({{"badgeglowalpha", number(50)}, {"badgealpha", number(80)}, {"badgesize", number(1)}});
    ASSERT_EQ(view->subviews().size(), 3u);
    auto& glow = dynamic_cast<UIImageView&>(*view->subviews()[0]);
    // 46 x 44 from (-10.5, -10.5), then scaled about its centre.
    EXPECT_TRUE(isRect(glow.bounds(), 0, 0, 46, 44));
    EXPECT_TRUE(isPoint(glow.center(), 12.5, 11.5));
    EXPECT_TRUE(isTransform(glow.transform(), 2, 0, 0, 2));
    EXPECT_NEAR(glow.alpha(), 0.8, 1e-6);
    // Half of the glow colour (green unless set) over the white artwork.
    EXPECT_TRUE(isPixel(glow.image().uprightBitmap()->pixel(40, 40), 0xFF80FF80));
}

TEST_F(BadgeTest, NoGlowWithoutStrengthOrColour) {
    EXPECT_EQ(badge({{"badgeglowalpha", number(0)}})->subviews().size(), 2u);
    EXPECT_EQ(badge({{"badgeglowalpha", number(50)}, {"badgeglowcol", text("none")}})->subviews().size(), 2u);
}

TEST_F(BadgeTest, TheAnimationIsOnTheContainer) {
    auto view = badge({{"badgeanimtype", number(11.9f)}, {"badgealpha", number(50)}});
    auto* blink = dynamic_cast<const CABasicAnimation*>(view->layer()->animationForKey("badgeAnim"));
    ASSERT_TRUE(blink);
    EXPECT_EQ(blink->keyPath(), "opacity");
    EXPECT_NEAR(std::get<CGFloat>(blink->fromValue()), 0.5, 1e-6);
    EXPECT_EQ(blink->duration(), 1);
    view = badge({{"badgeanimtype", number(1)}, {"badgeanimspd", number(2.5f)}});
    ASSERT_TRUE(view->layer()->animationForKey("badgeAnim"));
    EXPECT_EQ(view->layer()->animationForKey("badgeAnim")->duration(), 2.5);
}

TEST_F(BadgeTest, TheBounceOfTheBadgeIsByItsUnscaledHeight) {
    auto view = badge({{"badgeanimtype", number(6)}, {"badgesize", number(1)}});
    auto* bounce = dynamic_cast<const CAKeyframeAnimation*>(view->layer()->animationForKey("badgeAnim"));
    ASSERT_TRUE(bounce);
    ASSERT_EQ(bounce->values().size(), 22u);
    EXPECT_EQ(std::get<CATransform3D>(bounce->values()[6]), CATransform3DMakeTranslation(0, -20, 0));
}

TEST_F(BadgeTest, EveryRunReplacesTheBadge) {
    auto first = badge({});
    cell_->reloadBadge();
    EXPECT_EQ(first->superview(), nullptr);
    EXPECT_NE(cell_->badgeView(), first);
    // The name, the close box, the new badge in front.
    ASSERT_EQ(cell_->iconView()->subviews().size(), 3u);
    EXPECT_EQ(cell_->iconView()->subviews()[2], cell_->badgeView());
}

TEST_F(BadgeTest, WithoutArtworkTheNumberStillShows) {
    remove(kSpringBoard + "IconBadgeAndCloseBox.png");
    auto view = badge({});
    ASSERT_EQ(view->subviews().size(), 2u);
    EXPECT_FALSE(dynamic_cast<UIImageView&>(*view->subviews()[0]).image());
    EXPECT_EQ(dynamic_cast<UILabel&>(*view->subviews()[1]).text(), "6");
    EXPECT_TRUE(isRect(view->frame(), 69, -9, 0, 0));
}

} // namespace
} // namespace tallyforge::test
