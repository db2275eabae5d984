// The Settings app: following what others write, and staying small.

#include "AppFixture.h"

#include "cli/Screen.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/NSNotificationCenter.h"
#include "quartzcore/CADisplayLink.h"
#include "settings/Settings.h"
#include "uikit/UISlider.h"

#include <fstream>
#include <unistd.h>

namespace tallyforge::test {
namespace {

class SettingsAppTest : public AppTest {
  protected:
    SettingsAppTest() {
        reloads_ = NSNotificationCenter::defaultCenter().addObserver(kReloadPreviewNotification,
                                                                     [this] { ++reloads; });
    }
    /// As another process: the file is replaced by one with these settings.
    void writeOutside(const std::string& settings) const {
        std::filesystem::create_directories(device.file(kDomainPath).parent_path());
        Ended ended = RunProgram({"python3", "-c",
                                  "import plistlib, sys, os\n"
                                  "path = sys.argv[1]\n"
                                  "old = plistlib.load(open(path, 'rb')) if os.path.exists(path) else {}\n"
                                  "old.update(eval(sys.argv[2]))\n"
                                  "plistlib.dump(old, open(path + '.new', 'wb'), fmt=plistlib.FMT_BINARY)\n"
                                  "os.rename(path + '.new', path)",
                                  device.file(kDomainPath).string(), settings});
        ASSERT_EQ(ended.status, 0) << ended.errors;
    }
    /// A finger drags the row's slider to the value.
    static void slide(SettingsStage& stage, const char* identifier, float value) {
        auto row = cell<PSSliderTableCell>(stage, identifier);
        ASSERT_NE(row, nullptr) << identifier;
        auto at = [&](float position) {
            return row->slider()->convertPointToView(row->slider()->thumbCentreForValue(position), nullptr);
        };
        UIWindow& window = stage.app().window();
        window.sendTouch({UITouchPhase::began, at(row->slider()->value()), stage.nanoseconds()});
        window.sendTouch({UITouchPhase::moved, at(value), stage.nanoseconds()});
        window.sendTouch({UITouchPhase::ended, at(value), stage.nanoseconds()});
        stage.app().step();
    }
    int reloads = 0;

  private:
    NSNotificationCenter::Observation reloads_;
};

TEST_F(SettingsAppTest, NothingChangedIsNoReload) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    reloads = 0;
    stage.app().settingsChangedOutside();
    EXPECT_EQ(reloads, 0);
}

TEST_F(SettingsAppTest, AForeignChangeIsOneReloadAndTheRowsFollow) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    reloads = 0;
    writeOutside("{'badgesize': 1.5, 'badgeshape': 4, 'convertbadgeroman': 1}");
    stage.app().settingsChangedOutside();
    stage.app().step();
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(cell<PSSliderTableCell>(stage, "badgesize")->slider()->value(), 1.5F);
    EXPECT_EQ(cell<PSSliderTableCell>(stage, "badgesize")->detailText(), "1.5");
    EXPECT_EQ(cell<PSTableCell>(stage, "badgeshape")->detailText(), "Star");
    EXPECT_TRUE(cell<PSSwitchTableCell>(stage, "convertbadgeroman")->switchControl()->isOn());
    stage.app().settingsChangedOutside();
    EXPECT_EQ(reloads, 1) << "told twice of one change";
}

TEST_F(SettingsAppTest, OurOwnChangeIsOneReload) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    reloads = 0;
    slide(stage, "badgesize", 1.25F);
    EXPECT_EQ(reloads, 1);
    stage.app().settingsChangedOutside(); // the file has changed, by us
    EXPECT_EQ(reloads, 1);
}

// Something may begin to move at any time of the way.
TEST_F(SettingsAppTest, WaitingGoesFrameByFrameFromWhenSomethingMoves) {
    auto stage = makeStage(false);
    std::vector<double> frames;
    CADisplayLink link([&](double seconds) { frames.push_back(seconds); });
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC / 2), dispatch_get_main_queue(),
                   [&] { link.setPaused(false); });
    stage.wait(0.25);
    EXPECT_EQ(frames.size(), 0U);
    stage.wait(0.75);
    EXPECT_NEAR(static_cast<double>(frames.size()), 30, 2);
    for (size_t i = 1; i < frames.size(); ++i)
        EXPECT_LE(frames[i] - frames[i - 1], 1.0 / 60 + 1e-6);
    EXPECT_EQ(stage.time(), 1);
}

TEST_F(SettingsAppTest, RandomiseIsOneReload) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    reloads = 0;
    auto point = Screen(stage.app()).pointShowing("Randomise");
    ASSERT_TRUE(point);
    stage.app().window().sendTouch({UITouchPhase::began, *point, 0});
    stage.app().window().sendTouch({UITouchPhase::ended, *point, 0});
    stage.app().step();
    EXPECT_EQ(reloads, 1);
    stage.app().settingsChangedOutside();
    EXPECT_EQ(reloads, 1);
}

// Another process writes, and before we hear of it a finger moves a slider: both are on the screen.
TEST_F(SettingsAppTest, AForeignChangeJustBeforeOurOwnIsShownToo) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    writeOutside("{'badgerotation': 120.0}");
    slide(stage, "badgesize", 1.25F);
    stage.app().settingsChangedOutside();
    EXPECT_EQ(cell<PSSliderTableCell>(stage, "badgerotation")->slider()->value(), 120.0F);
    EXPECT_EQ(cell<PSSliderTableCell>(stage, "badgesize")->slider()->value(), 1.25F);
    EXPECT_EQ(CFPreferencesCopyAppValue("badgerotation", kSettingsDomain)->floatValue(), 120.0F);
}

TEST_F(SettingsAppTest, AListOfChoicesFollowsToo) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    auto point = Screen(stage.app()).pointShowing("Shape");
    ASSERT_TRUE(point);
    stage.app().window().sendTouch({UITouchPhase::began, *point, 0});
    stage.app().window().sendTouch({UITouchPhase::ended, *point, 0});
    stage.app().step();
    ASSERT_EQ(list(stage).title(), "Shape");
    writeOutside("{'badgeshape': 3}");
    stage.app().settingsChangedOutside();
    std::vector<std::string> marked;
    for (NSIndexPath path : list(stage).table()->indexPathsForVisibleRows()) {
        auto row = list(stage).table()->cellForRowAtIndexPath(path);
        if (row->accessoryType() == UITableViewCellAccessoryType::checkmark)
            marked.push_back(row->titleText());
    }
    EXPECT_EQ(marked, std::vector<std::string>{"Hexagon"});
}

TEST_F(SettingsAppTest, AFingerOnASliderIsNotTakenAwayByAForeignChange) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    auto slider = cell<PSSliderTableCell>(stage, "badgesize")->slider();
    auto at = [&](float value) {
        return slider->convertPointToView(slider->thumbCentreForValue(value), nullptr);
    };
    stage.app().window().sendTouch({UITouchPhase::began, at(0), 0});
    stage.app().window().sendTouch({UITouchPhase::moved, at(1), 0});
    writeOutside("{'badgesize': -1.0}");
    stage.app().settingsChangedOutside();
    stage.app().step();
    EXPECT_EQ(slider->value(), 1.0F);
    stage.app().window().sendTouch({UITouchPhase::moved, at(2), 0});
    stage.app().window().sendTouch({UITouchPhase::ended, at(2), 0});
    EXPECT_EQ(CFPreferencesCopyAppValue("badgesize", kSettingsDomain)->floatValue(), 2.0F);
}

TEST_F(SettingsAppTest, RemovedSettingsShowTheirFallbacks) {
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("closebox"));
    writeOutside("{'closeboxrotation': 20.0}");
    stage.app().settingsChangedOutside();
    EXPECT_EQ(cell<PSSliderTableCell>(stage, "closeboxrotation")->slider()->value(), 20.0F);
    std::filesystem::remove(device.file(kDomainPath));
    reloads = 0;
    stage.app().settingsChangedOutside();
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(cell<PSSliderTableCell>(stage, "closeboxrotation")->slider()->value(), 180.0F);
}

TEST_F(SettingsAppTest, ScreensOpenByNameAndUnknownOnesDoNot) {
    auto stage = makeStage(true);
    for (const std::string& pane : allPanes())
        EXPECT_TRUE(stage.app().openPane(pane)) << pane;
    const auto before = stage.app().navigation().viewControllers();
    for (const char* pane : {"", "nosuch", "PSListItemsController", "badgeListController"})
        EXPECT_FALSE(stage.app().openPane(pane)) << pane;
    EXPECT_EQ(stage.app().navigation().viewControllers(), before);
}

long residentKilobytes() {
    std::ifstream file("/proc/self/statm");
    long all = 0, resident = 0;
    file >> all >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// Ten seconds under the finger, 200 movements each, with all marks in motion.
TEST_F(SettingsAppTest, ADraggedSliderKeepsMemoryAndQueueFlat) {
    writeOutside("{'badgeanimtype': 8, 'closeboxanimtype': 9, 'newdotanimtype': 8, 'badgeglowalpha': 50}");
    auto stage = makeStage(false);
    ASSERT_TRUE(stage.app().openPane("badge"));
    auto slider = cell<PSSliderTableCell>(stage, "badgesize")->slider();
    auto at = [&](int step) {
        const float value = -1.5F + 3.75F * static_cast<float>(step % 101) / 100;
        return slider->convertPointToView(slider->thumbCentreForValue(value), nullptr);
    };
    stage.app().window().sendTouch(
        {UITouchPhase::began, slider->convertPointToView(slider->thumbCentreForValue(0), nullptr), 0});
    ASSERT_TRUE(slider->tracking());
    auto drag = [&](int from, int to) {
        for (int step = from; step < to; ++step) {
            stage.app().window().sendTouch({UITouchPhase::moved, at(step), stage.nanoseconds()});
            stage.wait(0.005);
        }
    };
    drag(0, 400); // caches fill
    reloads = 0;
    const long before = residentKilobytes();
    drag(400, 2400);
    const long growth = residentKilobytes() - before;
    EXPECT_EQ(reloads, 2000);
#if !ADDRESS_SANITIZER // which keeps freed memory
    EXPECT_LT(growth, 2048) << "kilobytes";
#endif
    RecordProperty("growth_kilobytes", static_cast<int>(growth));
    // Of every rebuild two or three marks wait 0.2 s for their pulse: 40 rebuilds lie in that time.
    EXPECT_LE(MainQueue::main().waiting(), 3U * 41U + 10U);
    stage.app().window().sendTouch({UITouchPhase::ended, at(2399), stage.nanoseconds()});
    EXPECT_EQ(CFPreferencesCopyAppValue("badgesize", kSettingsDomain)->floatValue(), slider->value());
    stage.wait(5);
    EXPECT_EQ(MainQueue::main().waiting(), 0U);
}

} // namespace
} // namespace tallyforge::test
