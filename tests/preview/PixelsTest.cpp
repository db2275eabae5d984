// The colours that end up on the screen: a cell is rendered whole and single points of it are looked at. All
// artwork is flat, so that every expected colour can be worked out by hand. Points are given in the cell's
// coordinates and lie in the middle of a point, away from edges that smoothing blurs.

#include "PreviewFixture.h"

#include "quartzcore/RenderServer.h"

#include <cmath>

namespace tallyforge::test {
namespace {

constexpr uint32_t kWhite = 0xFFFFFFFF;

struct Screen {
    UIUserInterfaceIdiom idiom;
    CGFloat scale;
};

void PrintTo(const Screen& screen, std::ostream* out) {
    *out << (screen.idiom == UIUserInterfaceIdiomPad ? "tablet" : "phone") << " at " << screen.scale;
}

class PixelsTest : public PreviewFixture, public testing::WithParamInterface<Screen> {
  protected:
    void SetUp() override {
        be(GetParam().idiom, GetParam().scale);
        writePicture(kSpringBoard + "IconBadgeAndCloseBox.png", *filled(24, 24, kPlateColor));
        writePicture(kSpringBoard + "IconCloseBoxX.png", *filled(12, 12, kCrossColor));
        writePicture(kSpringBoard + "IconNewDot.png", *filled(8, 8, kDotColor));
        for (const char* name : {"circle", "square", "triangle", "hexagon", "star", "icon"})
            writePicture(kBundle + "glow_" + name + ".png", *filled(45, 45, kWhite));
        side_ = GetParam().idiom == UIUserInterfaceIdiomPad ? 76 : 60;
        left_ = 200 - side_ / 2;
        top_ = 75 - side_ / 2;
    }
    /// Nothing of the other marks is seen.
    static Values without(const std::vector<std::string>& marks, Values values) {
        for (const std::string& mark : marks)
            values.emplace_back(mark + "alpha", number(0));
        return values;
    }
    void show(const Values& values, CGFloat seconds = 0) {
        cell_ = cell(values);
        render(seconds);
    }
    void render(CGFloat seconds = 0) {
        cell_->setFrame(CGRectMake(0, 0, 320, 160));
        picture_ = RenderServer::render(*cell_->layer(), seconds, GetParam().scale);
        ASSERT_TRUE(picture_);
        ASSERT_EQ(picture_->width(), int(320 * GetParam().scale));
        ASSERT_EQ(picture_->height(), int(160 * GetParam().scale));
    }
    uint32_t at(CGFloat x, CGFloat y) const {
        return picture_->pixel(int(x * GetParam().scale), int(y * GetParam().scale));
    }
    /// In the icon's coordinates.
    uint32_t onIcon(CGFloat x, CGFloat y) const { return at(left_ + x, top_ + y); }
    /// In the coordinates of the badge at the top right.
    uint32_t onBadge(CGFloat x, CGFloat y) const { return onIcon(side_ + 9 - 24 + x, y - 9); }
    /// In the coordinates of a mark of 24 x 24 in the icon's middle.
    uint32_t inMiddle(CGFloat x, CGFloat y) const { return at(188 + x, 63 + y); }
    /// How many pixels of a rectangle satisfy the condition.
    template <class Condition>
    int count(CGFloat x, CGFloat y, CGFloat width, CGFloat height, Condition&& condition) const {
        int found = 0;
        const CGFloat scale = GetParam().scale;
        for (int py = int(y * scale); py < int((y + height) * scale); ++py)
            for (int px = int(x * scale); px < int((x + width) * scale); ++px)
                found += condition(picture_->pixel(px, py));
        return found;
    }
    static bool isWhiteInk(uint32_t pixel) {
        return (pixel >> 16 & 255) > 220 && (pixel >> 8 & 255) > 220 && (pixel & 255) > 220;
    }

    CGFloat side_ = 60, left_ = 170, top_ = 45;
    std::shared_ptr<PreviewCell> cell_;
    std::shared_ptr<CGImage> picture_;
};

TEST_P(PixelsTest, TheIconIsRoundedOnAWhiteCell) {
    show(without({"badge", "closebox", "newdot"}, {}));
    EXPECT_TRUE(isPixel(at(200.5, 75.5), kIconColor));
    EXPECT_TRUE(isPixel(onIcon(14.5, 1.5), kIconColor));
    EXPECT_TRUE(isPixel(onIcon(1.5, side_ / 2), kIconColor));
    EXPECT_TRUE(isPixel(onIcon(5.5, 5.5), kIconColor));
    const CGFloat far = side_ - 0.5;
    EXPECT_TRUE(isPixel(onIcon(0.5, 0.5), kWhite));
    EXPECT_TRUE(isPixel(onIcon(far, 0.5), kWhite));
    EXPECT_TRUE(isPixel(onIcon(0.5, far), kWhite));
    EXPECT_TRUE(isPixel(onIcon(far, far), kWhite));
    EXPECT_TRUE(isPixel(onIcon(-2, side_ / 2), kWhite));
}

TEST_P(PixelsTest, TheNameStandsUnderTheIconInBlack) {
    show(without({"badge", "closebox", "newdot"}, {}));
    // The label's line is centred 89 below the icon's top edge.
    const CGFloat width = cell_->iconLabel()->bounds().size.width;
    auto isInk = [](uint32_t pixel) { return (pixel & 0xFF) < 110; };
    EXPECT_GT(count(200 - width / 2, top_ + 89 - 8, width, 16, isInk), 20);
    EXPECT_EQ(count(200 - width / 2 - 12, top_ + 81, 10, 16, isInk), 0);
    EXPECT_EQ(count(200 + width / 2 + 2, top_ + 81, 10, 16, isInk), 0);
}

TEST_P(PixelsTest, TheBadgeNobodyHasSetIsGreenInRedWithAWhiteSix) {
    show(without({"closebox", "newdot"}, {}));
    // k is 0.85: 1.8 of the 24 on each side are the border.
    for (CGFloat far : {12.5, 6.5, 18.5}) {
        EXPECT_TRUE(isPixel(onBadge(0.6, far), 0xFFFF0000));
        EXPECT_TRUE(isPixel(onBadge(23.4, far), 0xFFFF0000));
        EXPECT_TRUE(isPixel(onBadge(far, 0.6), 0xFFFF0000));
        EXPECT_TRUE(isPixel(onBadge(far, 23.4), 0xFFFF0000));
    }
    EXPECT_TRUE(isPixel(onBadge(3.5, 3.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(onBadge(20.5, 3.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(onBadge(3.5, 20.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(onBadge(20.5, 20.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(onBadge(-1, 4), kWhite)) << "left of it, above the icon";
    EXPECT_TRUE(isPixel(onBadge(25, 12), kWhite));
    const CGFloat x = left_ + side_ - 15, y = top_ - 9;
    EXPECT_GT(count(x + 6, y + 5, 12, 14, isWhiteInk), 4);
    EXPECT_EQ(count(x + 2.5, y + 2.5, 3, 19, isWhiteInk), 0) << "the number stands in the middle";
    EXPECT_EQ(count(x + 18.5, y + 2.5, 3, 19, isWhiteInk), 0);
}

TEST_P(PixelsTest, ATransparentBadgeShowsTheNumberOnTheIcon) {
    show(without(
        {"closebox", "newdot"},
        {{"badgebgcol", text("transparent")}, {"badgetxtcol", text("#FF0000")}, {"badgepos", number(7)}}));
    EXPECT_TRUE(isPixel(inMiddle(1.5, 1.5), kIconColor));
    EXPECT_TRUE(isPixel(inMiddle(22.5, 22.5), kIconColor));
    auto isRed = [](uint32_t pixel) { return (pixel >> 16 & 255) > 200 && (pixel & 255) < 60; };
    EXPECT_GT(count(194, 67, 12, 16, isRed), 4);
    EXPECT_EQ(count(188, 63, 5, 24, isRed), 0);
}

TEST_P(PixelsTest, ABadgesOpacityLetsTheIconThrough) {
    show(without({"closebox", "newdot"}, {{"badgealpha", number(50)},
                                          {"badgepos", number(7)},
                                          {"badgebgcol", text("#FF8000")},
                                          {"badgebordercol", text("none")}}));
    // Half of (255, 128, 0), half of (32, 64, 192).
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), 0xFF906060));
}

TEST_P(PixelsTest, PlateAndCrossOfTheCloseBoxAreFadedEachOnItsOwn) {
    const Values values = {{"closeboxshape", number(1)},        {"closeboxpos", number(7)},
                           {"closeboxalpha", number(50)},       {"closeboxbgcol", text("#FFA500")},
                           {"closeboxtxtcol", text("#00FF00")}, {"closeboxglowalpha", number(0)},
                           {"closeboxbordercol", text("none")}};
    show(without({"badge", "newdot"}, values));
    // Half of (255, 165, 0) over (32, 64, 192); then half of green over that.
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), 0xFF907360));
    EXPECT_TRUE(isPixel(inMiddle(21.5, 21.5), 0xFF907360));
    EXPECT_TRUE(isPixel(inMiddle(12.5, 12.5), 0xFF48B930));
    EXPECT_TRUE(isPixel(inMiddle(7.5, 7.5), 0xFF48B930)) << "the cross is 12 x 12 in the middle";
    EXPECT_TRUE(isPixel(inMiddle(4.5, 12.5), 0xFF907360));
    EXPECT_TRUE(isPixel(inMiddle(-1.5, 12.5), kIconColor));
}

TEST_P(PixelsTest, TheCrossAloneWithoutPlates) {
    show(without({"badge", "newdot"}, {{"presetcloseboxbg", PropertyList::integer(98)},
                                       {"closeboxpos", number(7)},
                                       {"closeboxalpha", number(100)},
                                       {"closeboxglowalpha", number(0)},
                                       {"closeboxtxtcol", text("#FFFF00")}}));
    EXPECT_TRUE(isPixel(inMiddle(12.5, 12.5), 0xFFFFFF00));
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), kIconColor));
}

TEST_P(PixelsTest, TheSystemBoxHasGreyUnderAFadedPlate) {
    show(without({"badge", "newdot"}, {{"closeboxshape", number(10)},
                                       {"closeboxpos", number(7)},
                                       {"closeboxalpha", number(50)},
                                       {"closeboxrotation", number(0)},
                                       {"closeboxglowalpha", number(0)},
                                       {"closeboxbgcol", text("#FF0000")},
                                       {"closeboxbordercol", text("#0000FF")},
                                       {"closeboxbordersize", number(3)}}));
    // Back: half of (207, 203, 219) over 128: (167.5, 165.5, 173.5). Plate: 0.65 of red over 128:
    // (210.55, 44.8, 44.8). Half of the plate over the back: (189, 105.2, 109.2). The plate is not cut round.
    EXPECT_TRUE(isPixel(inMiddle(12.5, 4.5), 0xFFBD696D));
    EXPECT_TRUE(isPixel(inMiddle(0.5, 0.5), 0xFFBD696D));
    // The border, 3 wide: 0.65 of blue over the plate: (73.7, 15.7, 181.4), half of that over the back.
    EXPECT_TRUE(isPixel(inMiddle(12.5, 1.5), 0xFF795BB1));
    EXPECT_TRUE(isPixel(inMiddle(1.5, 12.5), 0xFF795BB1));
}

TEST_P(PixelsTest, AGlowLiesBehindTheBadgeAndEndsWithItsArtwork) {
    show(without({"closebox", "newdot"}, {{"badgepos", number(7)},
                                          {"badgebgcol", text("#FF0000")},
                                          {"badgebordercol", text("none")},
                                          {"badgeglowalpha", number(40)},
                                          {"badgeglowcol", text("#00FF00")},
                                          {"badgetxtcol", text("#FF0000")}}));
    // 0.4 of green over the white artwork, from 10.5 left of the plate to 10.5 right of it.
    for (CGFloat x : {-8.5, -1.5, 25.5, 32.5})
        EXPECT_TRUE(isPixel(inMiddle(x, 12.5), 0xFF99FF99)) << x;
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), 0xFFFF0000)) << "the plate is in front";
    EXPECT_TRUE(isPixel(inMiddle(-12.5, 12.5), kIconColor));
    EXPECT_TRUE(isPixel(inMiddle(36.5, 12.5), kIconColor));
}

TEST_P(PixelsTest, AGlowTakesTheOpacityOfItsMark) {
    show(without({"badge", "newdot"}, {{"closeboxshape", number(1)},
                                       {"closeboxpos", number(7)},
                                       {"closeboxalpha", number(50)},
                                       {"closeboxglowcol", text("#00FF00")},
                                       {"closeboxglowalpha", number(100)}}));
    // Half of green over (32, 64, 192).
    EXPECT_TRUE(isPixel(inMiddle(-5.5, 12.5), 0xFF10A060));
}

TEST_P(PixelsTest, TheNewDotIsRightOfTheName) {
    show(without({"badge", "closebox"}, {}));
    // Red at 0.6 over white, 8.8 x 8.8 from 5 right of the name on, centred in height before it grew.
    const CGFloat x = 200 + cell_->iconLabel()->bounds().size.width / 2 + 5;
    const CGFloat y = top_ + 89 - 4;
    EXPECT_TRUE(isPixel(at(x + 4.4, y + 4.4), 0xFFFF6666));
    EXPECT_TRUE(isPixel(at(x + 7.4, y + 7.4), 0xFFFF6666));
    EXPECT_TRUE(isPixel(at(x + 1.4, y + 1.4), 0xFFFF6666));
    EXPECT_TRUE(isPixel(at(x - 1.5, y + 4.4), kWhite));
    EXPECT_TRUE(isPixel(at(x + 10.5, y + 4.4), kWhite));
    EXPECT_TRUE(isPixel(at(x + 4.4, y - 1.5), kWhite));
    EXPECT_TRUE(isPixel(at(x + 4.4, y + 10.5), kWhite));
}

TEST_P(PixelsTest, ATintedNewDotAboveTheIcon) {
    show(without({"badge", "closebox"}, {{"newdotshape", number(0)},
                                         {"newdotpos", number(2)},
                                         {"newdotsize", number(0)},
                                         {"newdotalpha", number(50)},
                                         {"newdotbgcol", text("#0000FF")}}));
    // Its top is icon height + 2 above the label's, which is 44 high around 89 below the icon's top.
    const CGFloat y = top_ + 89 - 22 - side_ - 2;
    // Blue at 0.6 over green: (0, 102, 153); half of that over white or over the icon.
    const CGFloat middle = y + 4.5;
    const bool overIcon = middle > top_;
    EXPECT_TRUE(isPixel(at(200.5, middle), overIcon ? 0xFF1053AC : 0xFF80B3CC));
}

TEST_P(PixelsTest, InsideAndOutsideOfTheShapes) {
    struct Point {
        float shape;
        CGFloat x, y;
        bool inside;
    };
    // In a mark of 24 x 24. The hexagon's vertices are (12, 24), (22.4, 18), (22.4, 6), (12, 0), (1.6, 6) and
    // (1.6, 18); the star's first spike is (12, 20), (22, 18), (19, 8).
    const Point points[] = {
        {1, 1.5, 1.5, true},   {1, 22.5, 22.5, true},  {2, 12.0, 3.5, true},   {2, 2.5, 22.5, true},
        {2, 21.5, 22.5, true}, {2, 1.5, 2.5, false},   {2, 22.5, 2.5, false},  {3, 12.0, 1.8, true},
        {3, 12.0, 22.2, true}, {3, 3.5, 12.5, true},   {3, 20.5, 12.5, true},  {3, 1.5, 1.5, false},
        {3, 22.5, 1.5, false}, {3, 1.5, 22.5, false},  {3, 22.5, 22.5, false}, {4, 19.5, 16.5, true},
        {4, 1.5, 1.5, false},  {4, 22.5, 22.5, false}, {6, 12.0, 3.5, true},   {6, 2.5, 22.5, true},
        {6, 1.5, 2.5, false},  {7, 12.0, 12.0, false}};
    for (const Point& point : points) {
        show(without({"closebox", "newdot"}, {{"badgeshape", number(point.shape)},
                                              {"badgepos", number(7)},
                                              {"badgebgcol", text("#FF0000")},
                                              {"badgetxtcol", text("#FF0000")},
                                              {"badgetxtoffsetX", number(-100)},
                                              {"badgebordercol", text("none")}}));
        EXPECT_TRUE(isPixel(inMiddle(point.x, point.y), point.inside ? 0xFFFF0000 : kIconColor, 3))
            << "shape " << point.shape << " at " << point.x << ", " << point.y;
    }
}

TEST_P(PixelsTest, TheTurnedTriangleWithItsBorder) {
    show(without({"closebox", "newdot"}, {{"badgeshape", number(6)},
                                          {"badgepos", number(7)},
                                          {"badgebgcol", text("#00FF00")},
                                          {"badgebordersize", number(3)},
                                          {"badgetxtoffsetX", number(-100)}}));
    // k is 0.7: the fill lies in (3.6, 3.6, 16.8, 16.8).
    EXPECT_TRUE(isPixel(inMiddle(12.0, 1.5), 0xFFFF0000));
    EXPECT_TRUE(isPixel(inMiddle(3.5, 1.5), 0xFFFF0000));
    EXPECT_TRUE(isPixel(inMiddle(12.0, 8.5), 0xFF00FF00));
    EXPECT_TRUE(isPixel(inMiddle(1.5, 21.5), kIconColor));
    EXPECT_TRUE(isPixel(inMiddle(22.5, 21.5), kIconColor));
}

TEST_P(PixelsTest, ATurnedAndGrownBadgeKeepsItsCentre) {
    show(without({"closebox", "newdot"}, {{"badgepos", number(7)},
                                          {"badgesize", number(1)},
                                          {"badgerotation", number(45)},
                                          {"badgebgcol", text("#FF0000")},
                                          {"badgetxtcol", text("#FF0000")},
                                          {"badgebordercol", text("none")}}));
    // A square of 48 on its corner reaches 33.9 from its centre along the axes, and 24 along the diagonals.
    EXPECT_TRUE(isPixel(at(200 - 28, 75), 0xFFFF0000));
    EXPECT_TRUE(isPixel(at(200, 75 + 28), 0xFFFF0000));
    EXPECT_TRUE(isPixel(at(200 + 20, 75 + 20), kIconColor));
    EXPECT_TRUE(isPixel(at(200 + 15, 75 - 15), 0xFFFF0000));
}

TEST_P(PixelsTest, ABlinkingBadgeIsGoneAfterOneCycleAndBackAfterTwo) {
    show(without({"closebox", "newdot"}, {{"badgepos", number(7)},
                                          {"badgebgcol", text("#FF0000")},
                                          {"badgebordercol", text("none")},
                                          {"badgeanimtype", number(11)},
                                          {"badgeanimspd", number(2)}}));
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), 0xFFFF0000));
    render(1);
    // Half of red over (32, 64, 192).
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), 0xFF902060));
    render(2);
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), kIconColor));
    render(4);
    EXPECT_TRUE(isPixel(inMiddle(2.5, 2.5), 0xFFFF0000));
}

TEST_P(PixelsTest, TheStockArtwork) {
    TestDevice stock;
    stock.furnish();
    auto shown = std::make_shared<PreviewCell>();
    ASSERT_TRUE(shown->initWithSpecifier(std::make_shared<PSSpecifier>()));
    cell_ = shown;
    render();
    // The badge is as nobody has set it; the close box's glow only reaches its left side.
    EXPECT_TRUE(isPixel(onBadge(23.4, 12.5), 0xFFFF0000));
    EXPECT_TRUE(isPixel(onBadge(20.5, 3.5), 0xFF00FF00));
    // The close box's glow is red above the icon's top edge and ends well before the cell's sides.
    const uint32_t glow = at(200.5, top_ - 11);
    EXPECT_GT(glow >> 16 & 255, 230u);
    EXPECT_LT(glow & 255, 200u);
    EXPECT_TRUE(isPixel(at(120.5, top_ - 11), kWhite));
    // The orange plate in front of it, at 0.85 over its own glow.
    const uint32_t plate = at(200.5 - 6, top_ - 8);
    EXPECT_GT(plate >> 16 & 255, 240u);
    EXPECT_NEAR(int(plate >> 8 & 255), 140, 45);
    EXPECT_LT(plate & 255, 60u);
    device_.use();
}

INSTANTIATE_TEST_SUITE_P(
    Screens, PixelsTest,
    testing::Values(Screen{UIUserInterfaceIdiomPhone, 1}, Screen{UIUserInterfaceIdiomPhone, 1.5},
                    Screen{UIUserInterfaceIdiomPhone, 2}, Screen{UIUserInterfaceIdiomPhone, 3},
                    Screen{UIUserInterfaceIdiomPad, 1}, Screen{UIUserInterfaceIdiomPad, 1.5},
                    Screen{UIUserInterfaceIdiomPad, 2}, Screen{UIUserInterfaceIdiomPad, 3}));

} // namespace
} // namespace tallyforge::test
