#include "preview/imaging/MarkImages.h"

#include "PreviewFixture.h"

#include "mobileservices/UIAssetManager.h"

#include <map>

namespace tallyforge::test {
namespace {

constexpr uint32_t kRed = 0xFFFF0000;
constexpr uint32_t kGreen = 0xFF00FF00;
constexpr uint32_t kBlue = 0xFF0000FF;

UIColor red() {
    return UIColor::redColor();
}
UIColor blue() {
    return UIColor::colorWithRed(0, 0, 1, 1);
}
/// The pixel that holds this point.
uint32_t at(const UIImage& image, CGFloat x, CGFloat y) {
    return image.uprightBitmap()->pixel(int(x * image.scale()), int(y * image.scale()));
}

/// A catalogue with one rendition in red for each of the names.
class CatalogueOfTheTest : public UIAssetManager {
  public:
    static inline std::vector<std::string> names;
    static inline std::string openedName, openedBundle;
    static inline UIUserInterfaceIdiom openedIdiom{};
    static inline std::string askedKeyPath;

    bool initWithNameInBundleIdiom(std::string_view name, std::string_view bundlePath,
                                   UIUserInterfaceIdiom idiom) override {
        openedName = name;
        openedBundle = bundlePath;
        openedIdiom = idiom;
        return true;
    }
    std::vector<std::string> valueForKeyPath(std::string_view keyPath) const override {
        askedKeyPath = keyPath;
        return names;
    }
    UIImage imageNamed(std::string_view) const override { return imageOf(filled(9, 9, kRed)); }
};

class ImagesTest : public PreviewFixture {
  protected:
    ~ImagesTest() override { RegisterClass("_UIAssetManager", {}); }
    static void registerCatalogue(std::vector<std::string> names) {
        CatalogueOfTheTest::names = std::move(names);
        CatalogueOfTheTest::openedName.clear();
        CatalogueOfTheTest::openedBundle.clear();
        RegisterClass("_UIAssetManager", {[] { return std::make_shared<CatalogueOfTheTest>(); }});
    }
};

TEST_F(ImagesTest, SystemArtworkComesFromItsFileFirst) {
    registerCatalogue({"IconNewDot"});
    writePicture(kBundle + "IconBadgeAndCloseBox.png", *filled(5, 5, kGreen));
    EXPECT_EQ(SystemMarkImage("IconBadgeAndCloseBox").size(), CGSizeMake(30, 20));
    EXPECT_EQ(SystemMarkImage("IconNewDot").size(), CGSizeMake(10, 6));
    EXPECT_EQ(CatalogueOfTheTest::openedName, "") << "the catalogue is not opened";
}

TEST_F(ImagesTest, ThenFromTheCatalogue) {
    be(UIUserInterfaceIdiomPad, 2);
    remove(kSpringBoard + "IconNewDot.png");
    registerCatalogue({"Another", "IconNewDot", "IconNewDotX"});
    EXPECT_EQ(SystemMarkImage("IconNewDot").size(), CGSizeMake(9, 9));
    EXPECT_EQ(CatalogueOfTheTest::openedName, "Assets");
    EXPECT_TRUE(CatalogueOfTheTest::openedBundle + "/" == kSpringBoard ||
                CatalogueOfTheTest::openedBundle == kSpringBoard)
        << CatalogueOfTheTest::openedBundle;
    EXPECT_EQ(CatalogueOfTheTest::openedIdiom, UIUserInterfaceIdiomPad);
    EXPECT_EQ(CatalogueOfTheTest::askedKeyPath, "catalog.themeStore.store.allRenditionNames");
}

TEST_F(ImagesTest, OnlyTheExactRenditionNameCounts) {
    remove(kSpringBoard + "IconNewDot.png");
    registerCatalogue({"iconnewdot", "IconNewDot@2x", "IconNewDo"});
    EXPECT_FALSE(SystemMarkImage("IconNewDot"));
}

TEST_F(ImagesTest, ThenThePlateFromTheBundle) {
    remove(kSpringBoard + "IconBadgeAndCloseBox.png");
    writePicture(kBundle + "IconBadgeAndCloseBox.png", *filled(5, 5, kGreen));
    writePicture("/bootstrap" + kBundle + "IconBadgeAndCloseBox.png", *filled(7, 7, kGreen));
    registerCatalogue({"Another"});
    EXPECT_EQ(SystemMarkImage("IconBadgeAndCloseBox").size(), CGSizeMake(5, 5));
    RegisterClass("_UIAssetManager", {});
    EXPECT_EQ(SystemMarkImage("IconBadgeAndCloseBox").size(), CGSizeMake(5, 5)) << "no such class";
    remove(kBundle + "IconBadgeAndCloseBox.png");
    EXPECT_EQ(SystemMarkImage("IconBadgeAndCloseBox").size(), CGSizeMake(7, 7));
    device_.write(kBundle + "IconBadgeAndCloseBox.png", {'n', 'o'});
    EXPECT_EQ(SystemMarkImage("IconBadgeAndCloseBox").size(), CGSizeMake(7, 7)) << "it does not load";
    registerCatalogue({"IconBadgeAndCloseBox"});
    EXPECT_EQ(SystemMarkImage("IconBadgeAndCloseBox").size(), CGSizeMake(9, 9)) << "the catalogue goes first";
}

TEST_F(ImagesTest, OtherNamesAreNotInTheBundle) {
    remove(kSpringBoard + "IconNewDot.png");
    writePicture(kBundle + "IconNewDot.png", *filled(5, 5, kGreen));
    writePicture("/bootstrap" + kBundle + "IconNewDot.png", *filled(5, 5, kGreen));
    EXPECT_FALSE(SystemMarkImage("IconNewDot"));
    EXPECT_FALSE(SystemMarkImage("Nothing"));
}

TEST_F(ImagesTest, AFileThatIsNoPictureIsNoImage) {
    device_.write(kSpringBoard + "IconNewDot.png", {'n', 'o'});
    registerCatalogue({"IconNewDot"});
    EXPECT_FALSE(SystemMarkImage("IconNewDot")) << "it exists, so it is the one";
}

TEST_F(ImagesTest, ResizeStretchesAtTheScreensScale) {
    auto halves = filled(40, 20, kRed);
    for (int y = 0; y < 20; ++y)
        for (int x = 20; x < 40; ++x)
            halves->row(y)[x] = kBlue;
    for (CGFloat scale : {1.0, 2.0, 3.0}) {
        be(UIUserInterfaceIdiomPhone, scale);
        UIImage result = ResizeImage(imageOf(halves), 24, 30);
        EXPECT_EQ(result.size(), CGSizeMake(24, 30));
        EXPECT_EQ(result.scale(), scale);
        EXPECT_TRUE(isPixel(at(result, 4, 28), kRed));
        EXPECT_TRUE(isPixel(at(result, 20, 2), kBlue));
    }
    UIImage clear = ResizeImage(imageOf(filled(4, 4, 0)), 8, 8);
    EXPECT_EQ(at(clear, 4, 4), 0u) << "not opaque";
}

TEST_F(ImagesTest, TintCoversWhatIsOpaque) {
    auto artwork = filled(3, 1, 0);
    artwork->row(0)[0] = kBlue;
    artwork->row(0)[1] = 0x80808080;
    UIImage full = TintImage(imageOf(artwork), red(), 1);
    EXPECT_TRUE(isPixel(full.bitmap()->pixel(0, 0), kRed));
    EXPECT_TRUE(isPixel(full.bitmap()->pixel(5, 1), 0));
    // Far from the seams, in flat pictures: half there stays half there.
    UIImage half = TintImage(imageOf(filled(6, 6, 0x80808080)), red(), 1);
    EXPECT_TRUE(isPixel(half.bitmap()->pixel(6, 6), 0x80800000));
    UIImage quarter = TintImage(imageOf(filled(6, 6, kBlue)), red(), 0.25);
    EXPECT_TRUE(isPixel(quarter.bitmap()->pixel(6, 6), 0xFF4000BF));
    UIImage none = TintImage(imageOf(filled(6, 6, kBlue)), red(), 0);
    EXPECT_TRUE(isPixel(none.bitmap()->pixel(6, 6), kBlue));
    UIImage clear = TintImage(imageOf(filled(6, 6, kBlue)), UIColor::clearColor(), 1);
    EXPECT_TRUE(isPixel(clear.bitmap()->pixel(6, 6), kBlue)) << "a clear colour covers nothing";
}

TEST_F(ImagesTest, TintAlwaysHasTwoPixelsAPoint) {
    for (CGFloat screen : {1.0, 1.5, 2.0, 3.0}) {
        be(UIUserInterfaceIdiomPhone, screen);
        for (CGFloat own : {1.0, 3.0}) {
            UIImage result = TintImage(imageOf(filled(30, 18, kBlue), own), red(), 1);
            EXPECT_EQ(result.scale(), 2);
            EXPECT_EQ(result.size(), CGSizeMake(30 / own, 18 / own));
            EXPECT_EQ(result.bitmap()->width(), int(60 / own));
        }
    }
}

TEST_F(ImagesTest, UpsideDownIsHalfATurn) {
    // Red, green over blue, white.
    auto quarters = filled(40, 40, kRed);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x)
            quarters->row(y)[x] = y < 20 ? (x < 20 ? kRed : kGreen) : (x < 20 ? kBlue : 0xFFFFFFFF);
    UIImage turned = TurnImageUpsideDown(imageOf(quarters));
    EXPECT_EQ(turned.size(), CGSizeMake(40, 40));
    EXPECT_TRUE(isPixel(at(turned, 10, 10), 0xFFFFFFFF));
    EXPECT_TRUE(isPixel(at(turned, 30, 10), kBlue));
    EXPECT_TRUE(isPixel(at(turned, 10, 30), kGreen));
    EXPECT_TRUE(isPixel(at(turned, 30, 30), kRed));
}

TEST_F(ImagesTest, UpsideDownChangesWidthAndHeight) {
    auto halves = filled(40, 20, kRed);
    for (int y = 0; y < 20; ++y)
        for (int x = 20; x < 40; ++x)
            halves->row(y)[x] = kBlue;
    UIImage turned = TurnImageUpsideDown(imageOf(halves));
    EXPECT_EQ(turned.size(), CGSizeMake(20, 40));
    EXPECT_TRUE(isPixel(at(turned, 5, 20), kBlue));
    EXPECT_TRUE(isPixel(at(turned, 15, 20), kRed));
    EXPECT_EQ(TurnImageUpsideDown(imageOf(halves, 2)).size(), CGSizeMake(10, 20)) << "by its points";
}

TEST_F(ImagesTest, ABorderLeavesTheShareOfTheFill) {
    UIImage base = imageOf(filled(20, 40, kPlateColor));
    // k is 0.8: 2 at the sides, 4 above and below.
    UIImage plate = BorderedShapeImage(kShapeSquare, base, red(), blue(), 2);
    EXPECT_EQ(plate.size(), CGSizeMake(20, 40));
    for (CGFloat x : {0.5, 1.5, 18.5, 19.5})
        EXPECT_TRUE(isPixel(at(plate, x, 20.5), kBlue)) << x;
    for (CGFloat x : {2.5, 10.5, 17.5})
        EXPECT_TRUE(isPixel(at(plate, x, 20.5), kRed)) << x;
    for (CGFloat y : {0.5, 3.5, 36.5, 39.5})
        EXPECT_TRUE(isPixel(at(plate, 10.5, y), kBlue)) << y;
    for (CGFloat y : {4.5, 35.5})
        EXPECT_TRUE(isPixel(at(plate, 10.5, y), kRed)) << y;
}

TEST_F(ImagesTest, NoBorderWidthOrColourIsTheFillAlone) {
    UIImage base = imageOf(filled(20, 20, kPlateColor));
    for (const UIImage& plate : {BorderedShapeImage(kShapeSquare, base, red(), blue(), 0),
                                 BorderedShapeImage(kShapeSquare, base, red(), std::nullopt, 3)})
        for (uint32_t pixel : plate.uprightBitmap()->pixels())
            ASSERT_TRUE(isPixel(pixel, kRed));
}

TEST_F(ImagesTest, ABorderOf10IsAllBorder) {
    UIImage base = imageOf(filled(20, 20, kPlateColor));
    UIImage plate = BorderedShapeImage(kShapeSquare, base, red(), blue(), 10);
    for (uint32_t pixel : plate.uprightBitmap()->pixels())
        ASSERT_TRUE(isPixel(pixel, kBlue));
}

TEST_F(ImagesTest, TheTrianglesFillStandsLower) {
    UIImage base = imageOf(filled(20, 20, kPlateColor));
    // The fill lies in (2, 2 + 1, 16, 16).
    UIImage triangle = BorderedShapeImage(kShapeTriangle, base, red(), blue(), 2);
    EXPECT_TRUE(isPixel(at(triangle, 10.5, 18.5), kRed));
    EXPECT_TRUE(isPixel(at(triangle, 10.5, 19.5), kBlue));
    EXPECT_TRUE(isPixel(at(triangle, 1.5, 19.5), kBlue, 24));
    EXPECT_TRUE(isPixel(at(triangle, 0.5, 0.5), 0));
    EXPECT_EQ(triangle.size(), CGSizeMake(20, 20));
}

TEST_F(ImagesTest, TheTurnedTrianglePointsDownOnlyWithABorderColour) {
    UIImage base = imageOf(filled(20, 20, kPlateColor));
    UIImage down = BorderedShapeImage(kShapeTriangleDown, base, red(), blue(), 2);
    // Turned, the fill (2, 2, 16, 16) begins at 2; it is not moved down first.
    EXPECT_TRUE(isPixel(at(down, 10.5, 1.5), kBlue));
    EXPECT_TRUE(isPixel(at(down, 10.5, 2.5), kRed));
    EXPECT_TRUE(isPixel(at(down, 2.5, 0.5), kBlue));
    EXPECT_EQ(at(down, 0.5, 19.5), 0u);
    UIImage noWidth = BorderedShapeImage(kShapeTriangleDown, base, red(), blue(), 0);
    EXPECT_TRUE(isPixel(at(noWidth, 10.5, 0.5), kRed));
    EXPECT_EQ(at(noWidth, 0.5, 19.5), 0u);
    UIImage up = BorderedShapeImage(kShapeTriangleDown, base, red(), std::nullopt, 2);
    EXPECT_TRUE(isPixel(at(up, 10.5, 19.5), kRed));
    EXPECT_EQ(at(up, 0.5, 0.5), 0u);
    UIImage wide = imageOf(filled(30, 20, kPlateColor));
    EXPECT_EQ(BorderedShapeImage(kShapeTriangleDown, wide, red(), blue(), 2).size(), CGSizeMake(20, 30));
    EXPECT_EQ(BorderedShapeImage(kShapeTriangleDown, wide, red(), blue(), 0).size(), CGSizeMake(20, 30));
    EXPECT_EQ(BorderedShapeImage(kShapeTriangleDown, wide, red(), std::nullopt, 2).size(),
              CGSizeMake(30, 20));
}

TEST_F(ImagesTest, ArtworkShapesTintTheArtwork) {
    // Opaque within a margin of 4.
    auto artwork = filled(40, 40, 0);
    for (int y = 8; y < 32; ++y)
        for (int x = 8; x < 32; ++x)
            artwork->row(y)[x] = kPlateColor;
    for (int shape : {kShapeArtwork, kShapeIcon}) {
        UIImage plate = BorderedShapeImage(shape, imageOf(artwork, 1), red(), blue(), 5);
        // k is 0.5: the fill's opaque part is (14, 14, 12, 12).
        EXPECT_TRUE(isPixel(at(plate, 3, 20), 0));
        EXPECT_TRUE(isPixel(at(plate, 11, 20), kBlue));
        EXPECT_TRUE(isPixel(at(plate, 20, 20), kRed));
        EXPECT_TRUE(isPixel(at(plate, 28, 20), kBlue));
    }
}

TEST_F(ImagesTest, UnknownShapesAreEmptyButKeepTheSize) {
    UIImage base = imageOf(filled(30, 20, kPlateColor));
    for (int shape : {7, 10, -1}) {
        UIImage plate = BorderedShapeImage(shape, base, red(), blue(), 2);
        EXPECT_EQ(plate.size(), CGSizeMake(30, 20));
        for (uint32_t pixel : plate.uprightBitmap()->pixels())
            ASSERT_EQ(pixel, 0u);
    }
}

TEST_F(ImagesTest, BordersBeyondTheirRangeAreSurvived) {
    UIImage base = imageOf(filled(30, 20, kPlateColor));
    for (int shape = 0; shape <= 6; ++shape)
        for (CGFloat width : {-3.0, 15.0, 1e9, -1e9, 1e300, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()})
            EXPECT_EQ(BorderedShapeImage(shape, base, red(), blue(), width).size(),
                      shape == 6 ? CGSizeMake(20, 30) : CGSizeMake(30, 20));
    UIImage outside = BorderedShapeImage(kShapeSquare, base, red(), blue(), -3);
    EXPECT_TRUE(isPixel(at(outside, 0.5, 0.5), kRed)) << "the fill is larger than the border";
}

class GlowTest : public ImagesTest {
  protected:
    GlowTest() {
        int side = 40;
        for (const char* name : {"circle", "square", "triangle", "hexagon", "star", "icon"}) {
            widths_[name] = side;
            writePicture(kBundle + "glow_" + name + ".png", *filled(side, side + 10, kPlateColor));
            side += 2;
        }
    }
    std::shared_ptr<UIImageView> glow(int shape, CGFloat tint = 1) {
        return MakeGlowView(parent_, red(), shape, tint, 0.5, 1.5);
    }
    std::map<std::string, int> widths_;
    UIView parent_{CGRectMake(0, 0, 24, 24)};
};

TEST_F(GlowTest, EveryRowOfTheTable) {
    const std::pair<int, const char*> table[] = {{1, "square"},  {2, "triangle"}, {3, "hexagon"},
                                                 {4, "star"},    {0, "circle"},   {7, "circle"},
                                                 {10, "circle"}, {-1, "circle"}};
    for (auto [shape, name] : table) {
        auto view = glow(shape);
        ASSERT_TRUE(view);
        int width = widths_[name];
        EXPECT_TRUE(isRect(view->bounds(), 0, 0, width, width + 10)) << shape;
        EXPECT_TRUE(isPoint(view->center(), -10.5 + width / 2.0, -10.5 + (width + 10) / 2.0)) << shape;
    }
}

TEST_F(GlowTest, TheIconsGlowIsOnePointLarger) {
    auto view = glow(5);
    int width = widths_["icon"];
    EXPECT_TRUE(isRect(view->bounds(), 0, 0, width + 1, width + 11));
    EXPECT_TRUE(isPoint(view->center(), -11 + (width + 1) / 2.0, -11 + (width + 11) / 2.0));
}

TEST_F(GlowTest, TheTurnedTrianglesGlowIsTurned) {
    auto artwork = filled(40, 40, 0xFF000000);
    for (int x = 0; x < 40; ++x)
        for (int y = 0; y < 20; ++y)
            artwork->row(y)[x] = 0;
    writePicture(kBundle + "glow_triangle.png", *artwork);
    EXPECT_TRUE(isPixel(at(glow(2)->image(), 20, 30), kRed));
    EXPECT_TRUE(isPixel(at(glow(2)->image(), 20, 10), 0));
    EXPECT_TRUE(isPixel(at(glow(6)->image(), 20, 30), 0));
    EXPECT_TRUE(isPixel(at(glow(6)->image(), 20, 10), kRed));
    writePicture(kBundle + "glow_triangle.png", *filled(50, 40, kPlateColor));
    EXPECT_TRUE(isRect(glow(6)->bounds(), 0, 0, 40, 50));
}

TEST_F(GlowTest, ItLiesBehindAllElseWithItsOpacityAndScale) {
    auto other = std::make_shared<UIView>();
    parent_.addSubview(other);
    auto view = glow(1, 0.25);
    ASSERT_EQ(parent_.subviews().size(), 2u);
    EXPECT_EQ(parent_.subviews()[0], view);
    EXPECT_EQ(view->alpha(), 0.5);
    EXPECT_TRUE(isTransform(view->transform(), 1.5, 0, 0, 1.5));
    // A quarter of red over 128.
    EXPECT_TRUE(isPixel(at(view->image(), 20, 20), 0xFFA06060));
}

TEST_F(GlowTest, NoColourOrNoStrengthIsNoGlow) {
    EXPECT_FALSE(MakeGlowView(parent_, std::nullopt, 1, 1, 1, 1));
    EXPECT_FALSE(glow(1, 0));
    EXPECT_TRUE(parent_.subviews().empty());
    EXPECT_TRUE(glow(1, -0.5)) << "only exactly nothing";
    EXPECT_TRUE(MakeGlowView(parent_, UIColor::clearColor(), 1, 1, 1, 1)) << "a clear colour is one";
}

TEST_F(GlowTest, ArtworkBelowBootstrapServesWhenTheOtherDoesNotLoad) {
    remove(kBundle + "glow_star.png");
    writePicture("/bootstrap" + kBundle + "glow_star.png", *filled(33, 33, kPlateColor));
    EXPECT_TRUE(isRect(glow(4)->bounds(), 0, 0, 33, 33));
    device_.write(kBundle + "glow_star.png", {'n', 'o'});
    EXPECT_TRUE(isRect(glow(4)->bounds(), 0, 0, 33, 33));
}

TEST_F(GlowTest, WithoutArtworkNothingIsDrawn) {
    for (int shape : {0, 1, 2, 3, 4, 5, 6}) {
        for (const char* name : {"circle", "square", "triangle", "hexagon", "star", "icon"})
            remove(kBundle + "glow_" + name + ".png");
        auto view = glow(shape);
        if (!view || !view->image()) continue;
        // The icon's glow is made a point larger even than nothing; that point is empty.
        UIImage image = view->image();
        for (uint32_t pixel : image.uprightBitmap()->pixels())
            EXPECT_EQ(pixel, 0u) << shape;
    }
}

} // namespace
} // namespace tallyforge::test
