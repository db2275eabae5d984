// Saving, loading and exporting where something is amiss: what was there before stays.

#include "ThemesFixture.h"
#include "corefoundation/CFPreferences.h"
#include "settings/SilentFailures.h"
#include "themes/ThemesController.h"

#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge::test {

namespace {

class NothingOverwrittenTest : public ThemesTest {
  protected:
    void spoilTheSettings() const {
        device.write(CFPreferencesPath(kSettingsDomain), {'n', 'o', ' ', 'l', 'i', 's', 't'});
    }
    std::vector<uint8_t> mine() const {
        std::ifstream file(folder() / "mine.tft", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::filesystem::path leftover() const { return device.root() / ".out.tft.tallyforge-new"; }
    Ended exportTheme() const {
        return tallyforge({"theme", "export", "Mine", (device.root() / "out.tft").string()});
    }
};

// Its look would be nothing but fallbacks.
TEST_F(NothingOverwrittenTest, AThemeIsNotSavedFromSettingsThatCannotBeRead) {
    put("mine.tft", archive(theme("Mine")));
    spoilTheSettings();
    const Ended saved = tallyforge({"theme", "save", "Mine", "--overwrite"});
    EXPECT_EQ(saved.status, 1);
    EXPECT_EQ(saved.errorLines(), 1U) << saved.errors;
    EXPECT_EQ(mine(), archive(theme("Mine")));
    EXPECT_EQ(tallyforge({"theme", "save", "New"}).status, 1);
    EXPECT_FALSE(std::filesystem::exists(folder() / "new.tft"));
}

TEST_F(NothingOverwrittenTest, NorIsItOnTheScreen) {
    put("mine.tft", archive(theme("Mine")));
    spoilTheSettings();
    std::vector<std::string> told;
    SetSilentFailureListener([&](const std::string& path, const std::string&) { told.push_back(path); });
    themesListController().saveProfileOverwriteIfExists("Mine", true);
    SetSilentFailureListener({});
    EXPECT_EQ(told, std::vector<std::string>{std::string(kThemeFolder) + "mine.tft"});
    EXPECT_EQ(mine(), archive(theme("Mine")));
}

// The screens say what they say of an empty folder; whoever runs them hears why.
TEST_F(NothingOverwrittenTest, AFolderThatCannotBeListedIsTold) {
    std::filesystem::remove_all(folder());
    device.write("/var/mobile/Documents/Tallyforge", {'x'});
    std::vector<std::string> told;
    SetSilentFailureListener(
        [&](const std::string& path, const std::string& why) { told.push_back(path + ": " + why); });
    EXPECT_TRUE(ListThemesForScreen().themes.empty());
    SetSilentFailureListener({});
    EXPECT_EQ(told, std::vector<std::string>{std::string(kThemeFolder) + ": not a folder"});
    const Ended listed = tallyforge({"theme", "list"});
    EXPECT_EQ(listed.status, 1);
    EXPECT_EQ(listed.errorLines(), 1U) << listed.errors;
}

// Loading reads the whole domain; another process changes a key before it is written.
TEST_F(NothingOverwrittenTest, AThemeIsLoadedWholeWhateverAnotherProcessWritesMeanwhile) {
    Dictionary domain;
    domain.setObjectForKey(PropertyList::floatNumber(0.5F), "badgesize");
    device.writeDomain(domain);
    CFPreferencesForgetAll();
    SetTheme(theme("Mine")); // badgesize 0.5, as it is already; the rest are fallbacks
    ASSERT_EQ(tallyforge({"set", "badgesize", "0.75"}).status, 0);
    ASSERT_TRUE(CFPreferencesAppSynchronize(kSettingsDomain));
    EXPECT_EQ(tallyforge({"get", "badgesize"}).output, "0.5\n");
}

TEST_F(NothingOverwrittenTest, WhatStandsInTheWayOfAnExportGoes) {
    put("mine.tft", archive(theme("Mine")));
    ASSERT_EQ(mkfifo(leftover().c_str(), 0600), 0);
    Ended exported = exportTheme();
    EXPECT_EQ(exported.status, 0) << exported.errors;
    EXPECT_FALSE(std::filesystem::exists(leftover()));

    std::filesystem::create_symlink("/nowhere/at/all", leftover());
    exported = exportTheme();
    EXPECT_EQ(exported.status, 0) << exported.errors;
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(leftover())));

    std::filesystem::create_directory(leftover());
    exported = exportTheme();
    EXPECT_EQ(exported.status, 1);
    EXPECT_NE(exported.errors.find(leftover().string()), std::string::npos) << exported.errors;
}

TEST_F(NothingOverwrittenTest, AnExportDoesNotWaitForEverForAnotherWriter) {
    put("mine.tft", archive(theme("Mine")));
    const int held = open(leftover().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    const Ended exported = exportTheme();
    EXPECT_EQ(exported.status, 1);
    EXPECT_EQ(exported.errorLines(), 1U) << exported.errors;
    EXPECT_FALSE(std::filesystem::exists(device.root() / "out.tft"));
    close(held);
    EXPECT_EQ(exportTheme().status, 0);
    EXPECT_FALSE(std::filesystem::exists(leftover()));
}

} // namespace

} // namespace tallyforge::test
