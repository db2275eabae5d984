#include "window/OutsideChanges.h"
#include "EventFixture.h"
#include "corefoundation/CFPreferences.h"
#include "settings/SettingsKeys.h"
#include "support/DeviceFixture.h"

namespace tallyforge::test {

namespace {

class OutsideChangesTest : public EventTest {
  protected:
    OutsideChangesTest() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        unsetenv("XDG_RUNTIME_DIR");
    }
    /// How many changes are heard in a while.
    int heard() {
        run(150);
        return std::exchange(heard_, 0);
    }
    void makeFolder() const {
        std::filesystem::create_directories(device.file("/var/mobile/Library/Preferences"));
    }
    static void save(float size) {
        CFPreferencesSetAppValue("badgesize", PropertyList::floatNumber(size), kSettingsDomain);
        ASSERT_TRUE(CFPreferencesAppSynchronize(kSettingsDomain));
    }
    auto hear() {
        return [this] { ++heard_; };
    }
    TestDevice device;

  private:
    int heard_ = 0;
};

TEST_F(OutsideChangesTest, TellOfEverySaveOfTheDomain) {
    makeFolder();
    const OutsideChanges changes(hear());
    EXPECT_EQ(heard(), 0);
    save(1);
    EXPECT_GT(heard(), 0);
    save(2);
    EXPECT_GT(heard(), 0);
    std::filesystem::remove(device.file("/var/mobile/Library/Preferences/com.quillon.tallyforge.plist"));
    EXPECT_GT(heard(), 0);
}

TEST_F(OutsideChangesTest, AreSilentAboutOtherFiles) {
    makeFolder();
    const OutsideChanges changes(hear());
    std::ofstream(device.file("/var/mobile/Library/Preferences/com.other.plist")) << "x";
    std::ofstream(device.file("/var/mobile/Library/other")) << "x";
    EXPECT_EQ(heard(), 0);
}

TEST_F(OutsideChangesTest, AreHeardWhenTheFolderComesLater) {
    const OutsideChanges changes(hear());
    makeFolder();
    heard();
    save(1);
    EXPECT_GT(heard(), 0);
}

TEST_F(OutsideChangesTest, AreHeardWhenTheFolderIsReplaced) {
    makeFolder();
    const OutsideChanges changes(hear());
    std::filesystem::remove_all(device.file("/var/mobile/Library"));
    heard();
    makeFolder();
    heard();
    save(1);
    EXPECT_GT(heard(), 0);
    EXPECT_EQ(heard(), 0);
}

} // namespace

} // namespace tallyforge::test
