#pragma once

#include "BenchDevice.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/SettingsKeys.h"
#include "themes/ThemeFiles.h"
#include "themes/ThemeNames.h"

#include <array>

#include <fcntl.h>
#include <unistd.h>

namespace tallyforge::bench {

/// Themes with names of their own. Returns their files.
inline std::vector<std::string> WriteThemes(const BenchDevice& device, int count) {
    std::vector<std::string> files;
    Dictionary theme = SettingsDefaults();
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        theme.setObjectForKey(PropertyList::string("Theme " + number), kThemeNameKey);
        files.push_back(device.root() + std::string(kThemeFolder) + "theme_" + number + ".tft");
        WriteFile(files.back(), NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme)));
    }
    return files;
}

/// Opens, reads and closes them, and no more.
inline void ReadFiles(const std::vector<std::string>& files) {
    std::array<char, 65'536> bytes{};
    for (const std::string& file : files) {
        const int opened = open(file.c_str(), O_RDONLY | O_CLOEXEC);
        Demand(opened >= 0 && read(opened, bytes.data(), bytes.size()) > 0, "a theme could not be read");
        close(opened);
    }
}

} // namespace tallyforge::bench
