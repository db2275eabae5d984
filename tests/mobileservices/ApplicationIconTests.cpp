#include "mobileservices/ApplicationIcon.h"

#include "coregraphics/Canvas.h"
#include "rastergraphics/RasterGraphics.h"
#include "support/AppBundles.h"
#include "support/CpuTime.h"
#include "uikit/UIDevice.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tallyforge {
namespace {

using test::DictionaryOf;
using test::InstallApp;
using test::TextList;

constexpr uint32_t kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kBlue = 0xFF0000FF, kBlack = 0xFF000000;
constexpr const char* kBundle = "/Applications/A.app/";

class ApplicationIconTest : public testing::Test {
  protected:
    ApplicationIconTest() { Graphics::install(MakeRasterGraphics()); }
    ~ApplicationIconTest() override {
        UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
        Graphics::install(nullptr);
    }

    void icon(const std::string& name, int side, uint32_t color) const {
        CGImage picture(side, side);
        std::fill_n(picture.row(0), size_t(side) * size_t(side), color);
        device.write(kBundle + name, Graphics::current()->encodePNG(picture));
    }
    void app(const Dictionary& info) const { InstallApp(device, "/Applications/A.app", "a", "A", info); }
    static PropertyList icons(std::initializer_list<const char*> names) {
        return PropertyList::dictionary(DictionaryOf(
            {{"CFBundlePrimaryIcon",
              PropertyList::dictionary(DictionaryOf({{"CFBundleIconFiles", TextList(names)}}))}}));
    }
    static UIImage ask(CGFloat scale = 2, int format = 0) {
        return UIImageApplicationIconForBundleIdentifier("a", format, scale);
    }
    // The colour in the middle; 0 without an icon.
    static uint32_t color(CGFloat scale = 2, int format = 0) {
        const UIImage image = ask(scale, format);
        if (!image) return 0;
        const CGImage& bitmap = *image.bitmap();
        return bitmap.row(bitmap.height() / 2)[bitmap.width() / 2];
    }
    static void pad() { UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPad); }
    test::TestDevice device;
};

TEST_F(ApplicationIconTest, HasTheSizeOfItsFormat) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon@2x.png", 120, kRed);
    EXPECT_EQ(ask(2, 0).size().width, 29);
    EXPECT_EQ(ask(3, 0).bitmap()->width(), 87);
    EXPECT_EQ(ask(2, 1).size().height, 40);
    EXPECT_EQ(ask(2, 2).size().width, 60);
    pad();
    EXPECT_EQ(ask(2, 2).size().width, 76);
    EXPECT_FALSE(ask(2, 3));
    EXPECT_FALSE(ask(2, -1));
    EXPECT_FALSE(ask(0));
}

TEST_F(ApplicationIconTest, HasRoundCornersAndItsOwnColours) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon@2x.png", 120, kRed);
    const UIImage image = ask();
    EXPECT_EQ(image.bitmap()->row(0)[0], 0U);
    EXPECT_EQ(image.bitmap()->row(57)[57], 0U);
    EXPECT_EQ(image.bitmap()->row(0)[29], kRed);
    EXPECT_EQ(image.bitmap()->row(29)[29], kRed);
}

TEST_F(ApplicationIconTest, TheFileOfTheScreensScaleIsTaken) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon.png", 60, kRed);
    icon("Icon@2x.png", 120, kGreen);
    icon("Icon@3x.png", 180, kBlue);
    EXPECT_EQ(color(1), kRed);
    EXPECT_EQ(color(2), kGreen);
    EXPECT_EQ(color(3), kBlue);
    EXPECT_EQ(color(1.5), kGreen) << "the next sharper one";
}

TEST_F(ApplicationIconTest, WithoutItASharperOneThenTheLargest) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon.png", 60, kRed);
    icon("Icon@3x.png", 180, kBlue);
    EXPECT_EQ(color(2), kBlue);
    EXPECT_EQ(color(4), kBlue);
}

TEST_F(ApplicationIconTest, TheTabletTakesItsOwnIcons) {
    app(DictionaryOf(
        {{"CFBundleIcons", icons({"Icon60"})}, {"CFBundleIcons~ipad", icons({"Icon60", "Icon76"})}}));
    icon("Icon60@2x.png", 120, kRed);
    icon("Icon76@2x.png", 152, kGreen);
    EXPECT_EQ(color(), kRed);
    pad();
    EXPECT_EQ(color(), kGreen);
}

TEST_F(ApplicationIconTest, FilesMarkedForTheOtherDeviceAreLeftOut) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon@2x~ipad.png", 152, kGreen);
    icon("Icon@2x~iphone.png", 120, kRed);
    EXPECT_EQ(color(), kRed);
    pad();
    EXPECT_EQ(color(), kGreen);
}

TEST_F(ApplicationIconTest, OneDeviceTakesTheOthersIconsRatherThanNone) {
    app(DictionaryOf({{"CFBundleIcons~ipad", icons({"Icon76"})}}));
    icon("Icon76.png", 76, kGreen);
    EXPECT_EQ(color(), kGreen);
}

TEST_F(ApplicationIconTest, OldKeysCount) {
    app(DictionaryOf({{"CFBundleIconFiles", TextList({"Old.png"})}}));
    icon("Old.png", 57, kRed);
    EXPECT_EQ(color(), kRed);
    app(DictionaryOf({{"CFBundleIconFile", PropertyList::string("Older.png")}}));
    icon("Older@2x.png", 114, kBlue);
    EXPECT_EQ(color(), kBlue);
}

TEST_F(ApplicationIconTest, NamesInTheFolderAreTheLastResort) {
    app({});
    icon("Splash.png", 120, kRed);
    EXPECT_FALSE(ask());
    icon("icon.png", 57, kGreen);
    EXPECT_EQ(color(), kGreen);
    icon("AppIcon60x60@2x.png", 120, kBlue);
    EXPECT_EQ(color(), kBlue);
}

TEST_F(ApplicationIconTest, ABrokenFileGivesWayToTheNextPlace) {
    app(DictionaryOf(
        {{"CFBundleIcons", icons({"Broken"})}, {"CFBundleIconFile", PropertyList::string("Good")}}));
    icon("Broken@2x.png", 120, kRed);
    std::filesystem::resize_file(device.file(std::string(kBundle) + "Broken@2x.png"), 60);
    icon("Good.png", 57, kGreen);
    EXPECT_EQ(color(), kGreen);
}

// Its beginning is good, the rest is not.
TEST_F(ApplicationIconTest, ABrokenFileGivesWayToItsSisters) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon@2x.png", 120, kRed);
    std::filesystem::resize_file(device.file(std::string(kBundle) + "Icon@2x.png"), 60);
    icon("Icon@3x.png", 180, kGreen);
    EXPECT_EQ(color(), kGreen);
}

TEST_F(ApplicationIconTest, NamesThatLeadOutOfTheBundleAreNoNames) {
    app(DictionaryOf({{"CFBundleIcons", icons({"../B.app/Secret", "/Applications/B.app/Secret"})}}));
    icon("../B.app/Secret.png", 120, kRed);
    EXPECT_FALSE(ask());
}

TEST_F(ApplicationIconTest, AnUnknownApplicationHasNone) {
    EXPECT_FALSE(ask());
    app({});
    EXPECT_FALSE(ask());
}

TEST_F(ApplicationIconTest, KeysOfOtherKindsNameNothing) {
    app(DictionaryOf({{"CFBundleIcons", PropertyList::string("Icon")},
                      {"CFBundleIcons~ipad", icons({})},
                      {"CFBundleIconFiles", PropertyList::integer(3)},
                      {"CFBundleIconFile", TextList({})}}));
    EXPECT_FALSE(ask());
}

TEST_F(ApplicationIconTest, WithoutGraphicsThereIsNone) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon@2x.png", 120, kRed);
    Graphics::install(nullptr);
    EXPECT_FALSE(ask());
}

TEST_F(ApplicationIconTest, HostileFilesAreNoIcons) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Fifo", "Wide", "Folder", "Loop", "Zero"})}}));
    ASSERT_EQ(mkfifo(device.file(std::string(kBundle) + "Fifo@2x.png").c_str(), 0644), 0);
    std::filesystem::create_directory(device.file(std::string(kBundle) + "Folder@2x.png"));
    std::filesystem::create_symlink("Loop@2x.png", device.file(std::string(kBundle) + "Loop@2x.png"));
    std::filesystem::create_symlink("/dev/zero", device.file(std::string(kBundle) + "Zero@2x.png"));
    icon("Wide@2x.png", 1025, kBlack);
    const double begin = test::CpuMilliseconds();
    EXPECT_FALSE(ask());
    EXPECT_LT(test::CpuMilliseconds() - begin, 50 * test::kSlowdown);
}

TEST_F(ApplicationIconTest, TheLargestPictureThatIsReadIsReadQuickly) {
    app(DictionaryOf({{"CFBundleIcons", icons({"Icon"})}}));
    icon("Icon.png", 1024, kBlue);
    ask();
    const double begin = test::CpuMilliseconds();
    EXPECT_EQ(color(), kBlue);
    EXPECT_LT(test::CpuMilliseconds() - begin, 50 * test::kSlowdown);
}

} // namespace
} // namespace tallyforge
