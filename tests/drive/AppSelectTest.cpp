// The screen that chooses apps, reached from its row.

#include "AppFixture.h"

#include "appselect/QuillonAppSelect.h"
#include "mobileservices/UIAssetManager.h"
#include "support/AppBundles.h"
#include "uikit/UISwitch.h"
#include "uikit/UIWindow.h"

namespace tallyforge::test {
namespace {

const Lines kUserApps9{"4913",
                       "Éclair à Propos",
                       "Kilometre",
                       "Loom",
                       "Paperlantern",
                       "Pocket Orchard",
                       "The Considerably Extended Almanac of Small Hours and Quiet Weather",
                       "Tidewatch",
                       "星図帳"};
const Lines kSystemApps9{"App Store", "Beacon",    "Cydia",       "Ledgerline", "Mail",
                         "Messages",  "Metronome", "Preferences", "Quarry"};

TEST_F(DriveTest, TheChooserShowsTheAppsAsJSON) {
    const Json screen = inspect({"--pane", "badgeapps"});
    EXPECT_EQ(screen["title"], "Apps with badges");
    EXPECT_EQ(screen["stack"], (Json{"Tallyforge", "Badge", "Apps with badges"}));
    Lines titles;
    for (const Json& entry : screen["rows"]) {
        titles.push_back(entry["title"]);
        EXPECT_EQ(entry["header"], entry["section"] == 0 ? "SYSTEM APPS" : "USER APPS");
        EXPECT_EQ(entry["cell"], "UITableViewCell");
        EXPECT_EQ(entry["accessory"], "UISwitch");
        EXPECT_EQ(entry["value"], true) << "badges are on unless they are turned off";
        EXPECT_EQ(entry["frame"]["height"], 44);
    }
    EXPECT_EQ(titles, joined({kSystemApps9, kUserApps9}));
}

TEST_F(DriveTest, TurningAppsOffAndOnIsWrittenAtOnce) {
    EXPECT_EQ(trace("open badge\ntap \"Apps with badges\"\ntap \"Loom\"\ntap \"Mail\"\ntap \"Loom\"\nback\n"),
              (Lines{kReload, "synchronize com.quillon.tallyforge",
                     "set com.quillon.tallyforge badgeapps [net.heddle.loom]",
                     "synchronize com.quillon.tallyforge", "darwin com.quillon.tallyforge.prefs",
                     "set com.quillon.tallyforge badgeapps [net.heddle.loom, com.quillon.stock.mail]",
                     "synchronize com.quillon.tallyforge", "darwin com.quillon.tallyforge.prefs",
                     "set com.quillon.tallyforge badgeapps [com.quillon.stock.mail]",
                     "synchronize com.quillon.tallyforge", "darwin com.quillon.tallyforge.prefs", kReload}));
    EXPECT_EQ(domain()["badgeapps"], Json{"com.quillon.stock.mail"});
    const Json screen = inspect({"--pane", "badgeapps"});
    for (const Json& entry : screen["rows"])
        EXPECT_EQ(entry["value"], entry["title"] != "Mail") << entry["title"];
}

TEST_F(DriveTest, OtherSettingsStayBesideTheList) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1.5"}).status, 0);
    trace("open badgeapps\ntap \"4913\"\n");
    EXPECT_EQ(domain(), (Json{{"badgesize", 1.5}, {"badgeapps", {"com.seventeencubed.4913"}}}));
    trace("open badge\nslide \"Size\" 1\n");
    EXPECT_EQ(domain()["badgeapps"], Json{"com.seventeencubed.4913"});
    EXPECT_EQ(tallyforge({"get", "badgesize"}).output, "1\n");
}

TEST_F(DriveTest, TheChooserIsDrawnOnPhoneAndTablet) {
    for (const char* idiom : {"phone", "pad"}) {
        const std::string file = (scratch / idiom).string() + ".png";
        Ended ended = tallyforge({"render", file, "--pane", "badgeapps", "--idiom", idiom});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_GT(std::filesystem::file_size(file), 10'000U);
    }
}

TEST_F(DriveTest, ADeviceWithoutAppsHasAnEmptyChooser) {
    std::filesystem::remove_all(device.file("/Applications"));
    std::filesystem::remove_all(device.file("/var/containers"));
    const Json screen = inspect({"--pane", "badgeapps"});
    EXPECT_EQ(screen["rows"], Json::array());
    EXPECT_NE(screen["view"].dump().find("None are installed."), std::string::npos);
}

TEST_F(DriveTest, ABundleWithAHostileIconShowsItsName) {
    InstallUserApp(device, "bad.icon", "Bad Icon",
                   DictionaryOf({{"CFBundleIconFile", PropertyList::string("I")}}));
    std::filesystem::create_symlink("/dev/zero", device.file(kUserApps + "bad.icon/App.app/I.png"));
    const Json screen = inspect({"--pane", "badgeapps"});
    EXPECT_TRUE(row(screen, "Bad Icon"));
}

TEST_F(AppTest, TheChooserWorksByKeysAlone) {
    RegisterMobileServices();
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badgeapps"));
    auto& screen = dynamic_cast<QuillonAppSelect&>(*stage.app().navigation().topViewController());
    UIWindow& window = stage.app().window();
    const auto focusedTag = [&] {
        auto* focused = dynamic_cast<UISwitch*>(window.focusedView());
        return focused ? focused->tag() : -1;
    };
    for (int i = 0; i < 20 && focusedTag() != 0; ++i)
        window.sendKey(UIKey::down);
    ASSERT_EQ(focusedTag(), 0);
    for (int tag = 1; tag < 18; ++tag) { // through both sections, beyond the screen
        window.sendKey(UIKey::down);
        stage.app().step();
        ASSERT_EQ(focusedTag(), tag);
    }
    window.sendKey(UIKey::space);
    EXPECT_EQ(screen.enabledApps(), (PropertyList::Array{PropertyList::string("jp.hoshimado.hoshizucho")}));
}

TEST_F(AppTest, TheBadgesScreenDoesNotShowItselfAgainBecauseOfTheList) {
    CFPreferencesSetAppValue("badgeapps", TextList({"net.heddle.loom"}), "com.quillon.tallyforge");
    CFPreferencesAppSynchronize("com.quillon.tallyforge");
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    auto link = cell<PSTableCell>(stage, "badgeapps");
    ASSERT_TRUE(link);
    EXPECT_STREQ(link->className(), "QuillonAppSelectLinkCell");
    EXPECT_EQ(link->detailText(), "");
    EXPECT_TRUE(link->cellEnabled());
}

TEST_F(AppTest, ALongNameEndsBeforeTheSwitch) {
    RegisterMobileServices();
    auto stage = makeStage(false, CGSize{320, 568});
    ASSERT_TRUE(stage.app().openPane("badgeapps"));
    auto& screen = dynamic_cast<QuillonAppSelect&>(*stage.app().navigation().topViewController());
    screen.tableView()->scrollToRowAtIndexPath({1, 6});
    stage.app().step();
    auto long_ = screen.tableView()->cellForRowAtIndexPath({1, 6});
    ASSERT_TRUE(long_);
    const CGRect name = long_->textLabel().convertRectToView(long_->textLabel().bounds(), long_.get());
    EXPECT_GT(name.size.width, 100);
    EXPECT_LT(CGRectGetMaxX(name), long_->accessoryView()->frame().origin.x);
}

} // namespace
} // namespace tallyforge::test
