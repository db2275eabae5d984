#pragma once

#include "BenchDevice.h"
#include "coregraphics/Canvas.h"
#include "foundation/PropertyListFormat.h"

#include <map>

namespace tallyforge::bench {

inline void WriteList(const std::string& path, const Dictionary& list) {
    WriteFile(path, BinaryPropertyList::Serialize(PropertyList::dictionary(list)));
}

inline Dictionary Texts(const std::map<std::string, std::string>& entries) {
    Dictionary list;
    for (const auto& [key, value] : entries)
        list.setObjectForKey(PropertyList::string(value), key);
    return list;
}

inline std::vector<uint8_t> ExampleIcon() {
    CGImage picture(120, 120);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.row(y)[x] =
                0xFF000000U | static_cast<uint32_t>(x * 2) << 16U | static_cast<uint32_t>(y * 2);
    return Graphics::current()->encodePNG(picture);
}

/// Apps as large as the stock device's, one of twenty the system's. Returns the files that a catalogue of
/// them reads.
inline std::vector<std::string> InstallApps(const std::string& root, int count) {
    std::vector<std::string> files;
    const auto icon = ExampleIcon();
    for (int index = 0; index < count; ++index) {
        const std::string number = std::to_string(index);
        const bool system = index % 20 == 0;
        const std::string container = root + "/var/containers/Bundle/Application/C" + number + "/";
        const std::string bundle =
            (system ? root + "/Applications/App" : container + "App") + number + ".app/";
        Dictionary info = Texts({{"CFBundleIdentifier", "com.example.app" + number},
                                 {"CFBundleDisplayName", "App " + std::to_string(index * 7919LL % count)},
                                 {"CFBundleName", "App"},
                                 {"CFBundleExecutable", "App" + number},
                                 {"CFBundleInfoDictionaryVersion", "6.0"},
                                 {"CFBundlePackageType", "APPL"},
                                 {"CFBundleShortVersionString", "1.0." + number},
                                 {"CFBundleVersion", number},
                                 {"MinimumOSVersion", "7.0"},
                                 {"DTPlatformName", "iphoneos"},
                                 {"CFBundleIconFile", "Icon"}});
        info.setObjectForKey(PropertyList::array({PropertyList::integer(1), PropertyList::integer(2)}),
                             "UIDeviceFamily");
        files.push_back(bundle + "Info.plist");
        WriteList(files.back(), info);
        WriteFile(bundle + "Icon@2x.png", icon);
        if (system) continue;
        Dictionary facts = Texts({{"artistName", "Maker " + number},
                                  {"itemName", "App number " + number},
                                  {"genre", "Games"},
                                  {"kind", "software"},
                                  {"softwareVersionBundleId", "com.example.app" + number}});
        facts.setObjectForKey(PropertyList::integer(9'100'000'000 + index), "itemId");
        files.push_back(container + "iTunesMetadata.plist");
        WriteList(files.back(), facts);
    }
    return files;
}

} // namespace tallyforge::bench
