#include "mobileservices/ApplicationIcon.h"

#include "coregraphics/Canvas.h"
#include "foundation/FileDescriptor.h"
#include "foundation/NSFileManager.h"
#include "foundation/RegularFile.h"
#include "mobileservices/ApplicationBundle.h"
#include "mobileservices/LSApplicationWorkspace.h"
#include "uikit/UIDevice.h"
#include "uikit/UIGraphics.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace tallyforge {

namespace {

constexpr size_t kMostIconBytes = 4u << 20;
constexpr uint32_t kMostIconSide = 1024; // pixels; larger ones take too long to read for a row
constexpr size_t kMostIconNames = 12;
constexpr size_t kMostBrokenIcons = 4;  // of one place, before it is given up
constexpr CGFloat kCornerShare = 0.225; // of the side

using Names = std::vector<std::string>;

bool OnPad() {
    return UIDevice::currentDevice().isPad();
}

CGFloat HomeScreenSide() {
    return OnPad() ? 76 : 60;
}

CGFloat SideForFormat(int format) {
    constexpr std::array<CGFloat, 2> small{29, 40};
    if (format < 0 || format > 2) return 0;
    return format == 2 ? HomeScreenSide() : small[static_cast<size_t>(format)];
}

// A name from a file of anybody's; it must not lead out of its folder.
bool IsSafeName(const std::string& name) {
    return !name.empty() && name.front() != '/' && name.find("..") == std::string::npos &&
           name.find('\0') == std::string::npos;
}

void AddNames(const PropertyList* value, Names& names) {
    if (!value) return;
    if (const auto* list = value->asArray()) {
        for (const PropertyList& item : *list)
            AddNames(item.asString() ? &item : nullptr, names);
    } else if (const std::string* name = value->asString(); name && IsSafeName(*name)) {
        if (names.size() < kMostIconNames) names.push_back(*name);
    }
}

const Dictionary* DictionaryIn(const Dictionary* list, std::string_view key) {
    const PropertyList* value = list ? list->objectForKey(key) : nullptr;
    return value ? value->asDictionary() : nullptr;
}

Names NamesInFolder(const std::string& bundle) {
    Names names;
    auto all = NSFileManager::defaultManager().contentsOfDirectoryAtPath(bundle);
    if (!all) return names;
    for (const std::string& name : *all) {
        std::string lower = name;
        std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
        if ((lower.starts_with("icon") || lower.starts_with("appicon")) && lower.ends_with(".png") &&
            names.size() < kMostIconNames)
            names.push_back(name);
    }
    return names;
}

// Where an application may name its icons, the most telling first.
std::vector<Names> NamedIcons(const Dictionary& info) {
    std::vector<Names> groups;
    const std::array<std::string, 2> kinds = {OnPad() ? "~ipad" : "", OnPad() ? "" : "~ipad"};
    for (const std::string& kind : kinds) {
        const Dictionary* primary =
            DictionaryIn(DictionaryIn(&info, "CFBundleIcons" + kind), "CFBundlePrimaryIcon");
        if (primary) AddNames(primary->objectForKey("CFBundleIconFiles"), groups.emplace_back());
    }
    for (const char* key : {"CFBundleIconFiles", "CFBundleIconFile"})
        AddNames(info.objectForKey(key), groups.emplace_back());
    return groups;
}

// The files that a name may stand for: itself, and with the marks of sharper screens and of the device.
Names FilesForName(const std::string& name) {
    const std::string ending = name.ends_with(".png") ? ".png" : "";
    const std::string stem = name.substr(0, name.size() - ending.size());
    Names files;
    for (const char* scale : {"", "@2x", "@3x"}) {
        for (const char* device : {OnPad() ? "~ipad" : "~iphone", ""})
            files.push_back(stem + scale + device + ".png");
    }
    return files;
}

uint32_t BigEndian(const uint8_t* bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// The first bytes of a regular file; zeros where it has fewer.
using Beginning = std::array<uint8_t, 64>;

Beginning BeginningOfFile(const std::string& path) {
    Beginning bytes{};
    const FileDescriptor file(DeviceRoot::open(path, O_RDONLY | O_NONBLOCK));
    if (!file || !IdentityOfDescriptor(file.get()).exists()) return bytes;
    if (pread(file.get(), bytes.data(), bytes.size(), 0) < 0) bytes = {};
    return bytes;
}

bool HasText(const Beginning& bytes, size_t at, std::string_view text) {
    return std::memcmp(bytes.data() + at, text.data(), text.size()) == 0;
}

// The width by the picture's header, which comes first or after the four bytes that mark the device's own
// kind; 0 for what is no picture that an icon can be.
uint32_t IconWidth(const std::string& path) {
    constexpr std::string_view signature = "\x89PNG\r\n\x1A\n";
    const Beginning bytes = BeginningOfFile(path);
    if (!HasText(bytes, 0, signature)) return 0;
    const size_t header = HasText(bytes, 12, "CgBI") ? 24 : 8;
    if (!HasText(bytes, header + 4, "IHDR")) return 0;
    const uint32_t width = BigEndian(bytes.data() + header + 8),
                   height = BigEndian(bytes.data() + header + 12);
    return std::max(width, height) <= kMostIconSide && height > 0 ? width : 0;
}

struct IconFile {
    std::string path;
    uint32_t width = 0; // pixels
};

// The file that has the wanted pixels, else the smallest with more, else the largest.
bool IsBetter(uint32_t width, uint32_t than, uint32_t wanted) {
    const bool enough = width >= wanted;
    if (enough != (than >= wanted)) return enough;
    return enough ? width < than : width > than;
}

std::optional<IconFile> BestFile(const std::string& bundle, const Names& names, uint32_t wanted,
                                 const Names& broken) {
    std::optional<IconFile> best;
    for (const std::string& name : names) {
        for (const std::string& file : FilesForName(name)) {
            if (std::ranges::find(broken, bundle + file) != broken.end()) continue;
            const uint32_t width = IconWidth(bundle + file);
            if (width == 0 || (best && !IsBetter(width, best->width, wanted))) continue;
            best = IconFile{bundle + file, width};
            if (width == wanted) return best;
        }
    }
    return best;
}

UIImage RoundedIcon(const CGImageRef& picture, CGFloat side, CGFloat scale) {
    const CGRect all{{0, 0}, {side, side}};
    UIGraphicsBeginImageContextWithOptions(all.size, false, scale);
    const CGContextRef context = UIGraphicsGetCurrentContext();
    CGPath outline;
    outline.addRoundedRect(all, side * kCornerShare, side * kCornerShare);
    CGContextAddPath(context, outline);
    CGContextClip(context);
    CGContextDrawImage(context, all, picture);
    UIImage icon = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    return icon;
}

UIImage IconFromGroup(const std::string& bundle, const Names& names, CGFloat side, CGFloat scale) {
    const auto wanted = static_cast<uint32_t>(std::clamp(HomeScreenSide() * scale, 1.0, 1024.0));
    Names broken; // a file may have a good beginning alone
    while (broken.size() < kMostBrokenIcons) {
        const auto file = BestFile(bundle, names, wanted, broken);
        if (!file) break;
        const auto bytes = NSFileManager::defaultManager().contentsAtPath(file->path, kMostIconBytes);
        const CGImageRef picture = bytes ? Graphics::current()->decodeImage(*bytes) : nullptr;
        if (picture) return RoundedIcon(picture, side, scale);
        broken.push_back(file->path);
    }
    return {};
}

UIImage MakeIcon(const LSBundle& bundle, CGFloat side, CGFloat scale) {
    for (const Names& names : NamedIcons(bundle.info)) {
        if (UIImage icon = IconFromGroup(bundle.path, names, side, scale)) return icon;
    }
    return IconFromGroup(bundle.path, NamesInFolder(bundle.path), side, scale);
}

} // namespace

UIImage UIImageApplicationIconForBundleIdentifier(std::string_view identifier, int format, CGFloat scale) {
    const CGFloat side = SideForFormat(format);
    if (side == 0 || !(scale > 0) || !Graphics::current()) return {};
    const auto bundle = LSBundleForIdentifier(identifier);
    return bundle ? MakeIcon(*bundle, side, scale) : UIImage();
}

} // namespace tallyforge
