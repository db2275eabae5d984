#include "foundation/NSFileManager.h"
#include "mobileservices/UIAssetManager.h"
#include "preview/imaging/MarkImages.h"
#include "uikit/UIDevice.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr std::string_view kSpringBoard = "/System/Library/CoreServices/SpringBoard.app/";
constexpr std::string_view kBundle = "/Library/PreferenceBundles/tallyforgeprefs.bundle/";

UIImage ImageFromSpringBoardCatalogue(std::string_view name) {
    const ObjCClass* managerClass = NSClassFromString("_UIAssetManager");
    if (!managerClass) return {};
    auto manager = std::dynamic_pointer_cast<UIAssetManager>(managerClass->alloc());
    if (!manager || !manager->initWithNameInBundleIdiom("Assets", kSpringBoard,
                                                        UIDevice::currentDevice().userInterfaceIdiom()))
        return {};
    auto names = manager->valueForKeyPath("catalog.themeStore.store.allRenditionNames");
    return std::ranges::find(names, name) == names.end() ? UIImage() : manager->imageNamed(name);
}

} // namespace

UIImage SystemMarkImage(std::string_view name) {
    std::string file = std::string(kSpringBoard) + std::string(name) + ".png";
    if (NSFileManager::defaultManager().fileExistsAtPath(file)) return UIImage::imageWithContentsOfFile(file);
    if (UIImage image = ImageFromSpringBoardCatalogue(name)) return image;
    if (name == kPlateArtwork) return BundleImage("IconBadgeAndCloseBox.png");
    return {};
}

UIImage BundleImage(std::string_view name) {
    std::string path = std::string(kBundle) + std::string(name);
    if (UIImage image = UIImage::imageWithContentsOfFile(path)) return image;
    return UIImage::imageWithContentsOfFile("/bootstrap" + path);
}

} // namespace tallyforge
