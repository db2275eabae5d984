#pragma once

#include "foundation/NSKeyedArchiver.h"
#include "settings/SettingsKeys.h"
#include "support/DeviceFixture.h"
#include "support/Program.h"
#include "themes/ThemeFiles.h"
#include "themes/ThemeNames.h"
#include "themes/TieFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tallyforge::test {

/// A device without themes.
class ThemesTest : public testing::Test {
  protected:
    ThemesTest() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device.root().c_str(), 1);
        std::filesystem::create_directories(folder());
    }
    std::filesystem::path folder() const { return device.file(std::string(kThemeFolder)); }
    static Dictionary theme(const std::string& name) {
        Dictionary theme;
        theme.setObjectForKey(PropertyList::string(name), kThemeNameKey);
        theme.setObjectForKey(PropertyList::floatNumber(0.5F), "badgesize");
        return theme;
    }
    static std::vector<uint8_t> archive(const Dictionary& theme) {
        return NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme));
    }
    void put(const std::string& file, const std::vector<uint8_t>& bytes) const {
        device.write(std::string(kThemeFolder) + file, bytes);
    }
    static std::vector<std::string> names() {
        std::vector<std::string> names;
        for (const Theme& each : ListThemes().themes)
            names.push_back(each.name);
        return names;
    }
    Ended tallyforge(std::vector<std::string> words) const {
        words.insert(words.begin(), TALLYFORGE_BIN "/tallyforge");
        return RunProgram(words, {{"TALLYFORGE_ROOT", device.root().string()}, {"XDG_RUNTIME_DIR", ""}});
    }
    TestDevice device;
};

} // namespace tallyforge::test
