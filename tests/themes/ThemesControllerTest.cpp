// The screen of themes as an object: what it can be told by name, and how long it keeps a picker.

#include "ThemesFixture.h"

#include "foundation/Clock.h"
#include "foundation/Dispatch.h"
#include "settings/SilentFailures.h"
#include "themes/ThemesController.h"

namespace tallyforge::test {
namespace {

using Alerts = std::vector<std::string>;

class ThemesControllerTest : public ThemesTest {
  protected:
    ThemesControllerTest() {
        MainQueue::main().setClock(&clock);
        UIAlertView::setTrace([this](int tag, const std::string& title, const std::string& message) {
            alerts.push_back(std::to_string(tag) + " " + title + " | " + message);
        });
    }
    ~ThemesControllerTest() override {
        UIAlertView::setTrace({});
        SetSilentFailureListener({});
        while (!UIAlertView::visibleAlerts().empty()) {
            const auto alert = UIAlertView::visibleAlerts().back();
            alert->clickButton(0);
        }
        MainQueue::main().clear();
        MainQueue::main().setClock(nullptr);
    }
    static std::shared_ptr<UIAlertView> front() { return UIAlertView::visibleAlerts().back(); }
    int rows() {
        const auto picker = std::make_shared<UIPickerView>(CGRectMake(0, 0, 1, 1));
        return PerformSelector(*controller, "pickerView:numberOfRowsInComponent:", {nullptr, picker})
            ->intValue();
    }
    std::string title(int row) {
        const auto picker = std::make_shared<UIPickerView>(CGRectMake(0, 0, 1, 1));
        const auto arguments = PropertyList::array({PropertyList::integer(row), PropertyList::integer(0)});
        return *PerformSelector(*controller, "pickerView:titleForRow:forComponent:", {&arguments, picker})
                    ->asString();
    }
    void waitUntil(double seconds) { MainQueue::main().runUntil(clock, static_cast<int64_t>(seconds * 1e9)); }
    VirtualClock clock;
    Alerts alerts;
    std::shared_ptr<themesListController> controller = std::make_shared<themesListController>();
};

TEST_F(ThemesControllerTest, ThePickerHasItsPlaceAndTheThemesAsRows) {
    put("a.tft", archive(theme("A")));
    put("b.tft", archive(theme("B")));
    PerformSelector(*controller, "loadTheme");
    EXPECT_EQ(alerts, Alerts{"123 Load theme | Select the theme to load"});
    const auto picker = std::dynamic_pointer_cast<UIPickerView>(front()->accessoryView());
    ASSERT_NE(picker, nullptr);
    EXPECT_EQ(picker->bounds().size.width, 230);
    EXPECT_EQ(picker->bounds().size.height, 160);
    EXPECT_TRUE(picker->showsSelectionIndicator());
    EXPECT_EQ(front()->buttonTitles(), (std::vector<std::string>{"Cancel", "Load"}));
    EXPECT_EQ(PerformSelector(*controller, "numberOfComponentsInPickerView:", {nullptr, picker})->intValue(),
              1);
    EXPECT_EQ(rows(), 2);
    EXPECT_EQ(title(0), "A");
    EXPECT_EQ(title(1), "B");
    EXPECT_EQ(title(2), "");
    EXPECT_EQ(title(-1), "");
    PerformSelector(*controller, "pickerView:didSelectRow:inComponent:", {nullptr, picker});
    EXPECT_EQ(alerts.size(), 1U);
}

TEST_F(ThemesControllerTest, OfTwoThemesOfOneNameTheRowCounts) {
    put("a.tft", archive(theme("Same")));
    put("b.tft", archive(theme("Same")));
    controller->deleteTheme();
    const auto picker = std::dynamic_pointer_cast<UIPickerView>(front()->accessoryView());
    ASSERT_NE(picker, nullptr);
    picker->selectRowInComponent(1, 0, false);
    front()->clickButton(1);
    EXPECT_TRUE(std::filesystem::exists(device.file(std::string(kThemeFolder) + "a.tft")));
    EXPECT_FALSE(std::filesystem::exists(device.file(std::string(kThemeFolder) + "b.tft")));
    EXPECT_EQ(alerts.back(), "0 Done | The theme Same was successfully deleted!");
}

TEST_F(ThemesControllerTest, RowsLiveHalfASecondAfterTheButton) {
    put("a.tft", archive(theme("A")));
    controller->loadTheme();
    waitUntil(5);
    EXPECT_EQ(rows(), 1); // as long as nobody answers
    front()->clickButton(1);
    EXPECT_EQ(rows(), 1);
    waitUntil(5.49);
    EXPECT_EQ(rows(), 1);
    waitUntil(5.51);
    EXPECT_EQ(rows(), 0);
    PerformSelector(*controller, "loadProfile"); // nothing is chosen any more
    PerformSelector(*controller, "deleteProfile");
    EXPECT_EQ(alerts.size(), 1U);
    EXPECT_EQ(names(), std::vector<std::string>{"A"});
}

TEST_F(ThemesControllerTest, ACancelledPickerKeepsItsRowsUntilTheNext) {
    put("a.tft", archive(theme("A")));
    controller->loadTheme();
    front()->clickButton(0);
    waitUntil(5);
    EXPECT_EQ(rows(), 1);
    put("b.tft", archive(theme("B")));
    controller->deleteTheme();
    EXPECT_EQ(rows(), 2);
}

TEST_F(ThemesControllerTest, ALaterPickerKeepsItsRowsWhenAnEarlierOnesTimeIsUp) {
    put("a.tft", archive(theme("A")));
    controller->loadTheme();
    front()->clickButton(1);
    waitUntil(0.3);
    controller->deleteTheme();
    waitUntil(0.6);
    EXPECT_EQ(rows(), 1);
    front()->clickButton(1);
    EXPECT_EQ(alerts.back(), "0 Done | The theme A was successfully deleted!");
    EXPECT_TRUE(names().empty());
}

TEST_F(ThemesControllerTest, AScreenThatIsGoneIsAskedNothing) {
    put("a.tft", archive(theme("A")));
    controller->deleteTheme();
    front()->clickButton(1);
    put("a.tft", archive(theme("A")));
    controller->deleteTheme();
    const auto alert = front();
    const auto picker = std::dynamic_pointer_cast<UIPickerView>(alert->accessoryView());
    controller.reset();
    EXPECT_EQ(picker->numberOfRowsInComponent(0), 0);
    alert->clickButton(1);
    waitUntil(1);
    EXPECT_EQ(names(), std::vector<std::string>{"A"});
}

// A file that somebody is writing, or did not come to the end of, is none of the folder's; any other entry
// is.
TEST_F(ThemesControllerTest, AFolderWithNothingButUnfinishedFilesHasNoThemes) {
    put(".tallyforge-new", archive(theme("Half")));
    put(".tallyforge-copy", archive(theme("Half")));
    EXPECT_TRUE(ListThemes().empty);
    controller->loadTheme();
    EXPECT_EQ(alerts, Alerts{"0 Error | No themes found"});
    put(".hidden", {'x'});
    EXPECT_FALSE(ListThemes().empty);
    controller->loadTheme();
    EXPECT_EQ(alerts.back(), "123 Load theme | Select the theme to load");
    EXPECT_EQ(rows(), 0);
}

TEST_F(ThemesControllerTest, ItsMethodsCanBeCalledByName) {
    const auto text = [](const char* value) { return PropertyList::string(value); };
    auto arguments = PropertyList::array({text("Title"), text("Message")});
    PerformSelector(*controller, "showAlertWithTitle:message:", {&arguments, nullptr});
    EXPECT_EQ(front()->buttonTitles(), std::vector<std::string>{"Ok"});
    arguments = PropertyList::array({text("Title"), text("Message"), text("Do"), PropertyList::integer(7)});
    PerformSelector(*controller, "showActionAlertWithTitle:message:button:tag:", {&arguments, nullptr});
    EXPECT_EQ(front()->buttonTitles(), (std::vector<std::string>{"Cancel", "Do"}));
    PerformSelector(*controller, "showPickerAlertWithTile:message:btnName:tag:", {&arguments, nullptr});
    EXPECT_EQ(alerts, (Alerts{"0 Title | Message", "7 Title | Message", "0 Error | No themes found"}));

    arguments = PropertyList::array({text("Mine"), PropertyList::boolean(false)});
    PerformSelector(*controller, "saveProfile:overwriteIfExists:", {&arguments, nullptr});
    EXPECT_EQ(names(), std::vector<std::string>{"Mine"});
    PerformSelector(*controller, "saveProfile:overwriteIfExists:", {&arguments, nullptr});
    EXPECT_EQ(front()->tag(), 126);
    arguments = PropertyList::integer(0); // cancels, whatever the tag
    PerformSelector(*controller, "alertView:clickedButtonAtIndex:", {&arguments, front()});
    arguments = PropertyList::integer(1);
    alerts.clear();
    PerformSelector(*controller, "alertView:clickedButtonAtIndex:", {&arguments, front()});
    EXPECT_EQ(alerts, Alerts{"0 Success | The current settings were successfully saved as a theme with the "
                             "name Mine!"});
}

TEST_F(ThemesControllerTest, ANameWithANullIsRefused) {
    controller->saveProfileOverwriteIfExists(std::string_view("a\0b", 3), false);
    EXPECT_EQ(alerts, Alerts{"0 Error | A theme name can't contain a null character"});
    EXPECT_TRUE(std::filesystem::is_empty(folder()));
}

TEST_F(ThemesControllerTest, WhatFailsInTruthIsToldToWhoeverListens) {
    std::vector<std::string> failures;
    SetSilentFailureListener([&](const std::string& path, const std::string&) { failures.push_back(path); });
    put("a.tft", archive(theme("A")));
    controller->deleteTheme();
    std::filesystem::remove(folder() / "a.tft");
    front()->clickButton(1);
    EXPECT_EQ(alerts.back(), "0 Done | The theme A was successfully deleted!");
    EXPECT_EQ(failures, std::vector<std::string>{"/var/mobile/Documents/Tallyforge/a.tft"});
}

} // namespace
} // namespace tallyforge::test
