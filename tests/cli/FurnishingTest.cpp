// The program's own device: furnished at first use, repaired when that was cut short, then left alone.

#include "CommandFixture.h"

namespace tallyforge::test {

class FurnishingTest : public CommandTest {
  protected:
    std::filesystem::path own() const { return device.root() / "tallyforge" / "device"; }
    std::map<std::string, std::string> environment() const {
        return {{"XDG_DATA_HOME", device.root().string()},
                {"TALLYFORGE_ROOT", ""},
                {"DBUS_SESSION_BUS_ADDRESS", ""}};
    }
    Ended list() const { return RunProgram({TALLYFORGE_BIN "/tallyforge", "list"}, environment()); }
    std::filesystem::path icon() const { return own() / "Applications/AppStore.app/AppIcon60x60@2x.png"; }
    static std::string stockIcon() {
        return bytesOf(TALLYFORGE_RESOURCES "/stock/Applications/AppStore.app/AppIcon60x60@2x.png");
    }
    size_t missingOrDifferent() const {
        size_t wrong = 0;
        std::filesystem::path stock = TALLYFORGE_RESOURCES "/stock";
        for (const auto& entry : std::filesystem::recursive_directory_iterator(stock)) {
            if (!entry.is_regular_file()) continue;
            std::filesystem::path there = own() / entry.path().lexically_relative(stock);
            wrong += !std::filesystem::is_regular_file(there) || bytesOf(entry.path()) != bytesOf(there);
        }
        return wrong;
    }
};

TEST_F(FurnishingTest, FirstUseBringsEveryFile) {
    Ended ended = list();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "");
    EXPECT_EQ(missingOrDifferent(), 0U);
    EXPECT_GT(stockIcon().size(), 0U);
}

TEST_F(FurnishingTest, WhatWasCutShortIsFinished) {
    std::filesystem::create_directories(icon().parent_path());
    std::ofstream(icon(), std::ios::binary) << stockIcon().substr(0, 100); // half a file, and no stamp
    EXPECT_EQ(list().errors, "");
    EXPECT_EQ(missingOrDifferent(), 0U);
}

// A power cut leaves room filled with zeros where a file was not yet on the disk; anything else is
// somebody's.
TEST_F(FurnishingTest, WhatWasChangedBeforeItIsFinishedStays) {
    const std::filesystem::path plate =
        own() / "System/Library/CoreServices/SpringBoard.app/IconBadgeAndCloseBox.png";
    const std::filesystem::path theme = own() / "var/mobile/Documents/Tallyforge/ember.tft";
    list();
    const std::string whole = bytesOf(theme);
    std::filesystem::remove(own() / ".tallyforge-furnished");
    std::ofstream(plate, std::ios::binary) << "mine";
    std::ofstream(icon(), std::ios::binary) << stockIcon().substr(0, 100) + std::string(500, '\0');
    std::ofstream(theme, std::ios::binary) << "";
    EXPECT_EQ(list().errors, "");
    EXPECT_EQ(bytesOf(plate), "mine");
    EXPECT_EQ(bytesOf(icon()), stockIcon());
    EXPECT_EQ(bytesOf(theme), whole);
    EXPECT_GT(whole.size(), 0U);
}

TEST_F(FurnishingTest, LaterUsesLeaveTheDeviceAlone) {
    list();
    std::filesystem::remove(icon());
    std::filesystem::path plate =
        own() / "System/Library/CoreServices/SpringBoard.app/IconBadgeAndCloseBox.png";
    std::ofstream(plate, std::ios::binary) << "mine";
    EXPECT_EQ(list().status, 0);
    EXPECT_FALSE(std::filesystem::exists(icon()));
    EXPECT_EQ(bytesOf(plate), "mine");
}

TEST_F(FurnishingTest, AnotherVersionAddsOnlyWhatIsMissing) {
    list();
    std::ofstream(own() / ".tallyforge-furnished") << "0.0.1";
    std::filesystem::remove(icon());
    std::filesystem::path plate =
        own() / "System/Library/CoreServices/SpringBoard.app/IconBadgeAndCloseBox.png";
    std::ofstream(plate, std::ios::binary) << "mine";
    EXPECT_EQ(list().status, 0);
    EXPECT_EQ(bytesOf(icon()), stockIcon());
    EXPECT_EQ(bytesOf(plate), "mine");
}

// As after an installation; what the user deletes then stays deleted.
TEST_F(FurnishingTest, AFreshDeviceHasTheDefaultThemesAmongTheUsersOwn) {
    list();
    const auto users = own() / "var/mobile/Documents/Tallyforge";
    const auto defaults = own() / "Library/Application Support/Tallyforge";
    size_t themes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(defaults)) {
        ++themes;
        EXPECT_EQ(bytesOf(users / entry.path().filename()), bytesOf(entry.path())) << entry.path();
    }
    EXPECT_GE(themes, 8U);
    std::filesystem::remove(users / "ember.tft");
    std::ofstream(own() / ".tallyforge-furnished") << "0.0.1";
    list();
    EXPECT_FALSE(std::filesystem::exists(users / "ember.tft"));
}

TEST_F(FurnishingTest, SeveralAtATimeDoNotDisturbEachOther) {
    std::vector<std::unique_ptr<Program>> programs;
    for (int i = 0; i < 4; ++i)
        programs.push_back(std::make_unique<Program>(
            std::vector<std::string>{TALLYFORGE_BIN "/tallyforge", "list"}, environment()));
    for (auto& program : programs) {
        Ended ended = program->wait();
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.errors, "");
    }
    EXPECT_EQ(missingOrDifferent(), 0U);
}

// A folder where a file should be cannot be furnished; the rest works, and it is said.
TEST_F(FurnishingTest, WhatCannotBeFurnishedIsNotFatal) {
    std::filesystem::create_directories(icon());
    Ended ended = list();
    expectComplaint(ended, 0);
    EXPECT_FALSE(ended.output.empty());
    EXPECT_EQ(missingOrDifferent(), 1U); // all the others are there
    EXPECT_TRUE(std::filesystem::exists(own() / "var/mobile/Documents/Tallyforge/ember.tft"));
}

TEST_F(FurnishingTest, WithoutAnyHomeItIsSaid) {
    Ended ended = RunProgram({TALLYFORGE_BIN "/tallyforge", "list"},
                             {{"XDG_DATA_HOME", ""}, {"HOME", ""}, {"TALLYFORGE_ROOT", ""}});
    expectComplaint(ended, 1);
}

} // namespace tallyforge::test
