#include "foundation/DeviceRoot.h"
#include "mobileservices/AssetCatalog.h"
#include "mobileservices/UIAssetManager.h"
#include "support/CatalogueBuilder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyforge {
namespace {

using test::CatalogueBuilder;
using testing::ElementsAre;

constexpr std::string_view kSpringBoard = "/System/Library/CoreServices/SpringBoard.app/";
constexpr std::string_view kNames = "catalog.themeStore.store.allRenditionNames";

class AssetManagerTest : public testing::Test {
  protected:
    AssetManagerTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "assets-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
        std::filesystem::create_directories(root_ / kSpringBoard.substr(1));
        EXPECT_TRUE(DeviceRoot::set(root_));
        RegisterMobileServices();
    }
    ~AssetManagerTest() override {
        UIScreen::mainScreen().setScale(2);
        std::filesystem::remove_all(root_);
    }

    void write(const std::vector<uint8_t>& bytes) const {
        std::ofstream file(catalogue(), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }
    std::filesystem::path catalogue() const { return root_ / kSpringBoard.substr(1) / "Assets.car"; }

    static std::shared_ptr<UIAssetManager> alloc() {
        const ObjCClass* cls = NSClassFromString("_UIAssetManager");
        return cls ? std::dynamic_pointer_cast<UIAssetManager>(cls->alloc()) : nullptr;
    }
    static bool open(UIAssetManager& manager, UIUserInterfaceIdiom idiom = UIUserInterfaceIdiomPhone) {
        return manager.initWithNameInBundleIdiom("Assets", kSpringBoard, idiom);
    }

  private:
    std::filesystem::path root_;
};

TEST_F(AssetManagerTest, IsKnownByName) {
    ASSERT_TRUE(alloc());
    EXPECT_NE(alloc(), alloc());
    EXPECT_EQ(NSClassFromString("UIAssetManager"), nullptr);
}

TEST_F(AssetManagerTest, FindsTheSystemsMarksAtEachScale) {
    write(test::CatalogueOfSystemMarks());
    auto manager = alloc();
    ASSERT_TRUE(open(*manager));
    EXPECT_THAT(manager->valueForKeyPath(kNames), ElementsAre("IconBadgeAndCloseBox", "IconCloseBoxX"));
    for (uint32_t scale = 1; scale <= 3; scale++) {
        UIScreen::mainScreen().setScale(scale);
        UIImage plate = manager->imageNamed("IconBadgeAndCloseBox");
        ASSERT_TRUE(plate);
        EXPECT_EQ(plate.scale(), scale);
        EXPECT_EQ(plate.size(), (CGSize{30, 30}));
        EXPECT_EQ(plate.imageOrientation(), UIImageOrientationUp);
        EXPECT_EQ(plate.bitmap()->pixel(7, 3), (256 - scale) << 24 | 0x070310);
        UIImage cross = manager->imageNamed("IconCloseBoxX");
        ASSERT_TRUE(cross);
        EXPECT_EQ(cross.bitmap()->pixel(7, 3), (256 - scale) << 24 | 0x030720);
    }
    EXPECT_FALSE(manager->imageNamed("IconBadge"));
}

TEST_F(AssetManagerTest, OtherKeyPathsGiveNothing) {
    write(test::CatalogueOfSystemMarks());
    auto manager = alloc();
    ASSERT_TRUE(open(*manager));
    for (std::string_view path :
         {"", "catalog", "catalog.themeStore.store.allRenditionNames.x", "allRenditionNames"})
        EXPECT_TRUE(manager->valueForKeyPath(path).empty()) << path;
}

TEST_F(AssetManagerTest, ChoosesByTheDevicesIdiom) {
    CatalogueBuilder builder;
    for (uint16_t idiom : {CatalogueBuilder::kUniversal, CatalogueBuilder::kPhone, CatalogueBuilder::kPad})
        builder.picture("Mark", 2, idiom, 1, 1, [idiom](uint32_t, uint32_t) { return 0xFF000000 | idiom; });
    write(builder.build());
    auto manager = alloc();
    ASSERT_TRUE(open(*manager, UIUserInterfaceIdiomPhone));
    EXPECT_EQ(manager->imageNamed("Mark").bitmap()->pixel(0, 0), 0xFF000001);
    ASSERT_TRUE(open(*manager, UIUserInterfaceIdiomPad));
    EXPECT_EQ(manager->imageNamed("Mark").bitmap()->pixel(0, 0), 0xFF000002);
}

TEST_F(AssetManagerTest, BundleMayBeNamedWithOrWithoutItsLastSlash) {
    write(test::CatalogueOfSystemMarks());
    auto manager = alloc();
    EXPECT_TRUE(manager->initWithNameInBundleIdiom("Assets", kSpringBoard.substr(0, kSpringBoard.size() - 1),
                                                   UIUserInterfaceIdiomPhone));
    EXPECT_FALSE(manager->initWithNameInBundleIdiom("", kSpringBoard, UIUserInterfaceIdiomPhone));
    EXPECT_FALSE(manager->initWithNameInBundleIdiom("SpringBoard.app/Assets", "/System/Library/CoreServices/",
                                                    UIUserInterfaceIdiomPhone));
}

TEST_F(AssetManagerTest, WithoutACatalogueThereIsNothing) {
    auto manager = alloc();
    EXPECT_TRUE(manager->valueForKeyPath(kNames).empty()) << "before it is opened";
    EXPECT_FALSE(manager->imageNamed("IconBadgeAndCloseBox"));
    EXPECT_FALSE(open(*manager)) << "no such file";
    write({'n', 'o'});
    EXPECT_FALSE(open(*manager)) << "no catalogue";
    write({});
    EXPECT_FALSE(open(*manager)) << "empty";
    std::filesystem::remove(catalogue());
    std::filesystem::create_directory(catalogue());
    EXPECT_FALSE(open(*manager)) << "a folder";
    EXPECT_TRUE(manager->valueForKeyPath(kNames).empty());
    EXPECT_FALSE(manager->imageNamed("IconBadgeAndCloseBox"));
}

TEST_F(AssetManagerTest, TooLargeAFileIsNotRead) {
    write(test::CatalogueOfSystemMarks());
    std::filesystem::resize_file(catalogue(), AssetCatalog::kMostFileBytes + 1);
    EXPECT_FALSE(open(*alloc()));
}

TEST_F(AssetManagerTest, SeesACatalogueThatWasReplaced) {
    write(test::CatalogueOfSystemMarks());
    auto before = alloc();
    ASSERT_TRUE(open(*before));
    CatalogueBuilder builder;
    builder.picture("Other", 1, 0, 1, 1, [](uint32_t, uint32_t) { return 0xFF000001; });
    write(builder.build());
    auto after = alloc();
    ASSERT_TRUE(open(*after));
    EXPECT_THAT(after->valueForKeyPath(kNames), ElementsAre("Other"));
    EXPECT_TRUE(before->imageNamed("IconCloseBoxX")) << "who had opened the old one keeps it";
    std::filesystem::remove(catalogue());
    EXPECT_FALSE(open(*after));
    EXPECT_FALSE(after->imageNamed("Other"));
}

} // namespace
} // namespace tallyforge
