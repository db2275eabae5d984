// Images: their size and turning, and which file of several is read.
#include "UIKitFixture.h"

#include "uikit/UIImage.h"

#include <filesystem>

namespace tallyforge::test {
namespace {

const std::string kFolder = "/Library/Pictures/";

// Every file of a test has a colour of its own, by which it is known again.
class UIImageTest : public UIKitFixture {
  protected:
    void put(const std::string& name) {
        uint32_t color = 0xFF000000u + 0x102030u * uint32_t(names_.size() + 1);
        names_.push_back(name);
        writePicture(kFolder + name, 6, 6, color);
    }
    std::string chosen(const std::string& name) const {
        UIImage image = UIImage::imageWithContentsOfFile(kFolder + name);
        if (!image) return "none";
        uint32_t number = (image.bitmap()->pixel(0, 0) - 0xFF000000u) / 0x102030u;
        return names_.at(number - 1) + " at " + std::to_string(int(image.scale()));
    }
    void chooseForScreens(const std::vector<std::pair<CGFloat, std::string>>& expected) const {
        for (const auto& [scale, name] : expected) {
            UIScreen::mainScreen().setScale(scale);
            EXPECT_EQ(chosen("icon.png"), name) << "screen of scale " << scale;
        }
    }

    std::vector<std::string> names_;
};

TEST_F(UIImageTest, NoImageHasNoSize) {
    UIImage none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.size(), CGSizeZero);
    EXPECT_EQ(none.uprightBitmap(), nullptr);
    EXPECT_FALSE(UIImage::imageWithCGImage(nullptr, 2, UIImageOrientationUp));
}

TEST_F(UIImageTest, SizeIsInPoints) {
    CGImageRef bitmap = plain(9, 6, 0xFF000000u);
    EXPECT_EQ(UIImage::imageWithCGImage(bitmap, 1, UIImageOrientationUp).size(), CGSizeMake(9, 6));
    EXPECT_EQ(UIImage::imageWithCGImage(bitmap, 2, UIImageOrientationUp).size(), CGSizeMake(4.5, 3));
    EXPECT_EQ(UIImage::imageWithCGImage(bitmap, 3, UIImageOrientationDown).size(), CGSizeMake(3, 2));
    EXPECT_EQ(UIImage::imageWithCGImage(bitmap, 0, UIImageOrientationUp).size(), CGSizeMake(9, 6));
}

TEST_F(UIImageTest, DownIsTurnedByHalfATurn) {
    CGImageRef six = bitmap(3, 2, {1, 2, 3, 4, 5, 6});
    UIImage up = UIImage::imageWithCGImage(six, 1, UIImageOrientationUp);
    UIImage down = UIImage::imageWithCGImage(six, 1, UIImageOrientationDown);
    EXPECT_EQ(up.uprightBitmap(), six);
    EXPECT_EQ(down.uprightBitmap()->pixels(), (CGImage::Pixels{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(down.uprightBitmap()->width(), 3);
    EXPECT_EQ(down.bitmap(), six);
    EXPECT_EQ(six->pixels(), (CGImage::Pixels{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(static_cast<int>(down.imageOrientation()), 1);
}

TEST_F(UIImageTest, EveryScreenTakesItsOwnFile) {
    for (const char* name : {"icon.png", "icon@2x.png", "icon@3x.png"})
        put(name);
    chooseForScreens(
        {{1, "icon.png at 1"}, {1.5, "icon@2x.png at 2"}, {2, "icon@2x.png at 2"}, {3, "icon@3x.png at 3"}});
}

TEST_F(UIImageTest, SharperFilesCountBeforeCoarserOnes) {
    put("icon.png");
    put("icon@3x.png");
    chooseForScreens(
        {{1, "icon.png at 1"}, {1.5, "icon@3x.png at 3"}, {2, "icon@3x.png at 3"}, {3, "icon@3x.png at 3"}});
}

TEST_F(UIImageTest, CoarserFilesServeWhereNoOtherIs) {
    put("icon.png");
    chooseForScreens(
        {{1, "icon.png at 1"}, {1.5, "icon.png at 1"}, {2, "icon.png at 1"}, {3, "icon.png at 1"}});
    put("icon@2x.png");
    chooseForScreens({{3, "icon@2x.png at 2"}});
}

TEST_F(UIImageTest, ScreensOfScaleOneDoWithSharperFiles) {
    put("icon@3x.png");
    chooseForScreens({{1, "icon@3x.png at 3"}});
    put("icon@2x.png");
    chooseForScreens({{1, "icon@2x.png at 2"}});
}

TEST_F(UIImageTest, FilesForTheDeviceCountFirst) {
    for (const char* name : {"icon.png", "icon~iphone.png", "icon~ipad.png", "icon@2x.png",
                             "icon@2x~iphone.png", "icon@2x~ipad.png", "icon@3x.png"})
        put(name);
    chooseForScreens({{1, "icon~iphone.png at 1"},
                      {1.5, "icon@2x~iphone.png at 2"},
                      {2, "icon@2x~iphone.png at 2"},
                      {3, "icon@3x.png at 3"}}); // its own scale counts before the device's file of another
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPad);
    chooseForScreens({{1, "icon~ipad.png at 1"}, {2, "icon@2x~ipad.png at 2"}, {3, "icon@3x.png at 3"}});
    UIDevice::currentDevice().setUserInterfaceIdiom(std::nullopt);
    chooseForScreens({{2, "icon@2x~iphone.png at 2"}});
}

TEST_F(UIImageTest, FilesForOtherDevicesDoNotCount) {
    put("icon@2x~ipad.png");
    chooseForScreens({{1, "none"}, {2, "none"}, {3, "none"}});
    put("icon.png");
    chooseForScreens({{2, "icon.png at 1"}});
}

TEST_F(UIImageTest, ANameWithItsScaleMeansThatFile) {
    put("icon.png");
    put("icon@2x.png");
    UIScreen::mainScreen().setScale(1);
    EXPECT_EQ(chosen("icon@2x.png"), "icon@2x.png at 2");
    EXPECT_EQ(chosen("icon@3x.png"), "none");
}

TEST_F(UIImageTest, DotsOfFoldersAreNoEndings) {
    put("some.folder/icon");
    EXPECT_EQ(chosen("some.folder/icon"), "some.folder/icon at 1");
    put("some.folder/icon@2x");
    EXPECT_EQ(chosen("some.folder/icon"), "some.folder/icon@2x at 2");
}

TEST_F(UIImageTest, FilesThatAreNoPicturesAreNoImages) {
    EXPECT_FALSE(UIImage::imageWithContentsOfFile(kFolder + "absent.png"));
    EXPECT_FALSE(UIImage::imageWithContentsOfFile(""));
    device_.write(kFolder + "text.png", {'n', 'o', 't', ' ', 'a', ' ', 'p', 'i', 'c', 't', 'u', 'r', 'e'});
    EXPECT_FALSE(UIImage::imageWithContentsOfFile(kFolder + "text.png"));
    device_.write(kFolder + "empty.png", {});
    EXPECT_FALSE(UIImage::imageWithContentsOfFile(kFolder + "empty.png"));
    std::filesystem::create_directories(device_.file(kFolder + "folder.png"));
    EXPECT_FALSE(UIImage::imageWithContentsOfFile(kFolder + "folder.png"));
}

TEST_F(UIImageTest, FilesAreReadOnceUntilTheyChange) {
    writePicture(kFolder + "a.png", 4, 4, 0xFF112233u);
    UIImage first = UIImage::imageWithContentsOfFile(kFolder + "a.png");
    ASSERT_TRUE(first);
    EXPECT_EQ(UIImage::imageWithContentsOfFile(kFolder + "a.png").bitmap(), first.bitmap());

    writePicture(kFolder + "a.png", 40, 30, 0xFF445566u);
    UIImage second = UIImage::imageWithContentsOfFile(kFolder + "a.png");
    EXPECT_EQ(second.size(), CGSizeMake(40, 30));
    EXPECT_EQ(second.bitmap()->pixel(0, 0), 0xFF445566u);
    EXPECT_EQ(first.bitmap()->pixel(0, 0), 0xFF112233u);

    // Another file in its place, of the same size and times.
    writePicture(kFolder + "b.png", 40, 30, 0xFF665544u);
    std::filesystem::last_write_time(device_.file(kFolder + "b.png"),
                                     std::filesystem::last_write_time(device_.file(kFolder + "a.png")));
    std::filesystem::rename(device_.file(kFolder + "b.png"), device_.file(kFolder + "a.png"));
    EXPECT_EQ(UIImage::imageWithContentsOfFile(kFolder + "a.png").bitmap()->pixel(0, 0), 0xFF665544u);

    std::filesystem::remove(device_.file(kFolder + "a.png"));
    EXPECT_FALSE(UIImage::imageWithContentsOfFile(kFolder + "a.png"));
}

TEST_F(UIImageTest, ABetterFileThatAppearsIsTaken) {
    put("icon.png");
    EXPECT_EQ(chosen("icon.png"), "icon.png at 1");
    put("icon@2x.png");
    EXPECT_EQ(chosen("icon.png"), "icon@2x.png at 2");
}

TEST_F(UIImageTest, ARenderingModeIsKeptAndChangesNothingElse) {
    const UIImage image = UIImage::imageWithCGImage(plain(2, 3, 0xFF112233u), 2, UIImageOrientationDown);
    EXPECT_EQ(image.renderingMode(), UIImageRenderingModeAutomatic);
    const UIImage original = image.imageWithRenderingMode(UIImageRenderingModeAlwaysOriginal);
    EXPECT_EQ(original.renderingMode(), UIImageRenderingModeAlwaysOriginal);
    EXPECT_EQ(image.renderingMode(), UIImageRenderingModeAutomatic);
    EXPECT_EQ(original.bitmap(), image.bitmap());
    EXPECT_EQ(original.scale(), 2);
    EXPECT_EQ(original.imageOrientation(), UIImageOrientationDown);
}

TEST_F(UIImageTest, ManyFilesStayCorrect) {
    for (int i = 0; i < 300; ++i)
        writePicture(kFolder + std::to_string(i) + ".png", 1, 1, 0xFF000000u + uint32_t(i));
    for (int pass = 0; pass < 2; ++pass)
        for (int i = 0; i < 300; ++i)
            ASSERT_EQ(
                UIImage::imageWithContentsOfFile(kFolder + std::to_string(i) + ".png").bitmap()->pixel(0, 0),
                0xFF000000u + uint32_t(i));
}

} // namespace
} // namespace tallyforge::test
