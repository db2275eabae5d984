// The bytes of an application's Info.plist, up to its entry in the list of apps and its icon.

#include "FuzzDevice.h"
#include "PropertyListMutator.h"

#include "appselect/AppInfo.h"
#include "appselect/QuillonAppList.h"
#include "coregraphics/Canvas.h"
#include "foundation/PropertyListFormat.h"
#include "mobileservices/ApplicationIcon.h"
#include "mobileservices/LSApplicationWorkspace.h"
#include "mobileservices/UIAssetManager.h"
#include "rastergraphics/RasterGraphics.h"

using namespace tallyforge;
using fuzz::Require;

namespace {

constexpr const char* kBundle = "/Applications/Stem.app/";
constexpr uint32_t kInside = 0xFF20A040;
constexpr uint32_t kOutside = 0xFFFF0000;

/// What the list of an application may cost: more, and the folder counts as none.
constexpr PropertyListLimits kLimits{
    .bytes = 1'048'576, .objects = 16'384, .depth = 32, .nodes = 65'536, .text = 4'194'304};

std::vector<uint8_t> Picture(int side, uint32_t color) {
    CGImage image(side, side);
    for (int y = 0; y < side; ++y)
        std::fill_n(image.row(y), side, color);
    return Graphics::current()->encodePNG(image);
}

// One application with an icon, and a picture beside its folder that no icon may come from.
const fuzz::FuzzDevice& Device() {
    static const bool furnished = [] {
        Graphics::install(MakeRasterGraphics());
        RegisterMobileServices();
        fuzz::FuzzDevice& device = fuzz::TheDevice();
        device.write(std::string(kBundle) + "Info.plist", "");
        device.write(std::string(kBundle) + "Icon.png", Picture(8, kInside));
        device.write(std::string(kBundle) + "sub/other@2x.png", Picture(4, kInside));
        device.write(std::string(kBundle) + "broken.png", std::string_view("\x89PNG\r\n\x1A\n then nothing"));
        device.write("/Applications/outside.png", Picture(8, kOutside));
        device.write("/outside.png", Picture(8, kOutside));
        const std::string english = "\"CFBundleName\" no strings";
        device.write(std::string(kBundle) + "en.lproj/InfoPlist.strings", english);
        return true;
    }();
    Require(furnished, "there is a device");
    return fuzz::TheDevice();
}

/// Empty where there is none.
std::string Text(const Dictionary& list, std::string_view key) {
    const PropertyList* value = list.objectForKey(key);
    return value && value->isString() ? *value->asString() : std::string();
}

// The device's one translation names nothing.
std::string NameFrom(const Dictionary& info) {
    for (const char* key : {"CFBundleDisplayName", "CFBundleName", "CFBundleExecutable"}) {
        std::string name = Text(info, key);
        for (const char c : name) {
            if (c != ' ' && c != '\t' && c != '\r' && c != '\n') return name;
        }
    }
    return "Stem";
}

bool IsHidden(const Dictionary& info) {
    if (Text(info, "CFBundleIdentifier").find("com.apple.webapp") != std::string::npos) return true;
    const PropertyList* tags = info.objectForKey("SBAppTags");
    if (!tags) return false;
    if (tags->isString()) return tags->asString()->find("hidden") != std::string::npos;
    if (!tags->asArray()) return false;
    for (const PropertyList& tag : *tags->asArray()) {
        if (tag.isString() && *tag.asString() == "hidden") return true;
    }
    return false;
}

bool HasColor(const UIImage& icon, uint32_t color) {
    const auto bitmap = icon.uprightBitmap();
    for (uint32_t pixel : bitmap->pixels())
        if (pixel == color) return true;
    return false;
}

void IconIsOfTheBundle(const std::string& identifier, int format) {
    const UIImage icon = UIImageApplicationIconForBundleIdentifier(identifier, format, 1);
    // Whatever the list names, the folder's own "Icon.png" is found at last.
    Require(bool(icon), "an application with a picture has an icon");
    Require(icon.size().width == icon.size().height && icon.size().width <= 76, "an icon has its size");
    Require(!HasColor(icon, kOutside), "an icon comes from the application's own folder");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Device().write(std::string(kBundle) + "Info.plist", std::span(data, size));
    const auto list = DeserializePropertyList({data, size}, kLimits);
    const Dictionary* info = list ? std::as_const(*list).asDictionary() : nullptr;
    const std::string identifier = info ? Text(*info, "CFBundleIdentifier") : std::string();

    QuillonAppList& apps = QuillonAppList::sharedApplicationList();
    const auto entries = apps.listAllInstalledApps();
    if (identifier.empty()) {
        Require(entries.empty(), "a folder that is no application is none");
        Require(apps.allApplications().empty(), "and none of the catalogue");
        return 0;
    }
    Require(entries.size() == 1, "one folder with an identifier is one application");
    const std::string name = NameFrom(*info);
    const auto entry = AppInfo::initWithLSApplicationProxy(*entries[0]);
    Require(entry->applicationIdentifier && entry->applicationIdentifier->isString() &&
                *entry->applicationIdentifier->asString() == identifier,
            "an application has the identifier that it says");
    Require(entry->localizedName && entry->localizedName->isString() &&
                *entry->localizedName->asString() == name,
            "an application has the first name that it says, or its folder's");
    Require(entry->applicationType && *entry->applicationType->asString() == "System",
            "what lies among the system's is the system's");
    Require(*entry->bundleURL->asString() == "file:///Applications/Stem.app/", "it lies where it lies");
    Require(!entry->description().empty(), "it can be described");
    const QuillonAppList::Catalogue whole{{identifier, name}}, none;
    Require(apps.allApplications() == whole, "it is in the catalogue under its name");
    const auto& seen = IsHidden(*info) ? none : whole;
    Require(apps.allNonHiddenApplications() == seen,
            "and in that of those that are shown, unless it is hidden");
    Require(apps.allSystemApplications() == seen, "and in the system's");
    Require(apps.allUserApplications().empty(), "and not in the user's");
    // Drawing takes most of the time.
    if (size % 4 != 0) return 0;
    IconIsOfTheBundle(identifier, static_cast<int>(size / 4 % 3));
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    static constexpr std::string_view words[] = {"CFBundleIdentifier",
                                                 "CFBundleDisplayName",
                                                 "CFBundleName",
                                                 "CFBundleExecutable",
                                                 "CFBundleIcons",
                                                 "CFBundleIcons~ipad",
                                                 "CFBundlePrimaryIcon",
                                                 "CFBundleIconFiles",
                                                 "CFBundleIconFile",
                                                 "SBAppTags",
                                                 "hidden",
                                                 "CFBundleDevelopmentRegion",
                                                 "en",
                                                 "../outside",
                                                 "/outside.png",
                                                 "Icon.png",
                                                 "sub/other",
                                                 "broken",
                                                 "sub/../../outside",
                                                 "com.example.stem",
                                                 "UIWebClip",
                                                 "CFBundleShortVersionString",
                                                 " ",
                                                 "\xE2\x80\xAEx"};
    return fuzz::MutatePropertyList(data, size, most, seed, words);
}
