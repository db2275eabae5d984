// Alerts as a script meets them.

#include "AppFixture.h"

#include "cli/Drive.h"
#include "settings_app/SettingsApp.h"
#include "uikit/UIAlertView.h"
#include "uikit/UIPickerView.h"
#include "uikit/UITextField.h"

namespace tallyforge::test {
namespace {

/// A screen that asks as soon as it appears, and remembers what it was told.
class AskingScreen final : public PSListController,
                           public UIAlertViewDelegate,
                           public UIPickerViewDataSource,
                           public UIPickerViewDelegate {
  public:
    ~AskingScreen() override { UIAlertView::forgetDelegate(*this); }
    const char* className() const override { return "askListController"; }
    void viewDidAppear(bool animated) override {
        PSListController::viewDidAppear(animated);
        if (asked_) return;
        asked_ = true;
        auto alert = std::make_shared<UIAlertView>("Save\nit?", "Under a name", this, "Cancel",
                                                   std::vector<std::string>{"Save"});
        alert->setTag(123);
        if (withPicker) {
            auto picker = std::make_shared<UIPickerView>(CGRectMake(0, 0, 270, 120));
            picker->setDataSource(this);
            picker->setDelegate(this);
            alert->setValueForKey(picker, "accessoryView");
        } else {
            alert->setAlertViewStyle(UIAlertViewStyle::plainTextInput);
        }
        alert->show();
    }
    int pickerViewNumberOfRowsInComponent(UIPickerView&, int) override { return 30; }
    std::string pickerViewTitleForRow(UIPickerView&, int row, int) override {
        return "Row " + std::to_string(row);
    }
    void pickerViewDidSelectRow(UIPickerView&, int row, int) override { picked = row; }
    void alertViewClickedButtonAtIndex(UIAlertView& alert, int index) override {
        clicked = index;
        if (auto field = alert.textFieldAtIndex(0)) typed = field->text();
    }
    static inline bool withPicker = false;
    static inline int picked = -1, clicked = -1;
    static inline std::string typed;

  private:
    bool asked_ = false;
};

class AlertsTest : public AppTest {
  protected:
    AlertsTest() {
        RegisterClass("askListController", {[] { return std::make_shared<AskingScreen>(); }});
        AskingScreen::withPicker = false;
        AskingScreen::picked = AskingScreen::clicked = -1;
        AskingScreen::typed.clear();
        trace_ = (device.root() / "trace").string();
        json_ = (device.root() / "json").string();
    }
    int run(const std::string& script) {
        Command command;
        command.name = "drive";
        command.script = (device.root() / "script").string();
        command.trace = trace_;
        std::ofstream(command.script) << script;
        testing::internal::CaptureStderr();
        int status = RunDrive(command);
        errors_ = testing::internal::GetCapturedStderr();
        clicked_ = AskingScreen::clicked;
        while (!UIAlertView::visibleAlerts().empty()) { // the program would have ended
            const auto alert = UIAlertView::visibleAlerts().back();
            alert->clickButton(0);
        }
        return status;
    }
    Json inspected() const { return Json::parse(bytesOf(json_), nullptr, false); }
    std::string trace_, json_, errors_;
    int clicked_ = -1;
};

TEST_F(AlertsTest, AnAlertIsInTheTraceOnOneLine) {
    EXPECT_EQ(run("open ask\n"), 0) << errors_;
    EXPECT_EQ(linesOf(bytesOf(trace_)), Lines{"alert 123 Save it? | Under a name"});
}

TEST_F(AlertsTest, TypeGoesIntoItsFieldAndTapTakesItsButtons) {
    EXPECT_EQ(run("open ask\ntype \"My \"\ntype look\ninspect \"" + json_ + "\"\ntap Save\n"), 0) << errors_;
    EXPECT_EQ(clicked_, 1);
    EXPECT_EQ(AskingScreen::typed, "My look");
    EXPECT_EQ(inspected()["alert"], (Json{{"title", "Save\nit?"},
                                          {"message", "Under a name"},
                                          {"tag", 123},
                                          {"buttons", {"Cancel", "Save"}},
                                          {"textField", "My look"},
                                          {"picker", nullptr}}));
}

TEST_F(AlertsTest, PickTurnsThePickerAndItsOwnerHears) {
    AskingScreen::withPicker = true;
    EXPECT_EQ(run("open ask\npick \"Row 29\"\npick \"Row 7\"\ninspect \"" + json_ + "\"\ntap Cancel\n"), 0)
        << errors_;
    EXPECT_EQ(AskingScreen::picked, 7);
    EXPECT_EQ(clicked_, 0);
    const Json alert = inspected()["alert"];
    EXPECT_TRUE(alert["textField"].is_null());
    EXPECT_EQ(alert["picker"]["selected"], 7);
    ASSERT_EQ(alert["picker"]["rows"].size(), 30U);
    EXPECT_EQ(alert["picker"]["rows"][7], "Row 7");
}

TEST_F(AlertsTest, WhatTheAlertHidesCannotBeReached) {
    for (const char* step : {"back", "open badge", "tap Tallyforge", "scroll Badge", "slide Size 1"}) {
        EXPECT_EQ(run(std::string("open ask\n") + step + "\n"), 1) << step;
        EXPECT_NE(errors_.find("line 2: "), std::string::npos) << errors_;
    }
    EXPECT_EQ(run("open ask\npick \"Row 1\"\n"), 1);
    EXPECT_NE(errors_.find("no alert with a picker"), std::string::npos) << errors_;
    AskingScreen::withPicker = true;
    EXPECT_EQ(run("open ask\npick \"Row 30\"\n"), 1);
    EXPECT_NE(errors_.find("the picker has no row 'Row 30'"), std::string::npos) << errors_;
    EXPECT_EQ(run("open ask\ntype x\n"), 1);
    EXPECT_NE(errors_.find("no text field is in front"), std::string::npos) << errors_;
}

TEST_F(AlertsTest, ItsWordsAreNothingToTap) {
    EXPECT_EQ(run("open ask\ntap \"Under a name\"\n"), 1);
    EXPECT_NE(errors_.find("line 2: 'Under a name' is no row, button or other control"), std::string::npos)
        << errors_;
    EXPECT_EQ(clicked_, -1);
}

TEST_F(AlertsTest, AfterTheAnswerTheScreenIsThereAgain) {
    EXPECT_EQ(run("open ask\ntap Cancel\ninspect \"" + json_ + "\"\nback\n"), 0) << errors_;
    EXPECT_TRUE(inspected()["alert"].is_null());
    EXPECT_EQ(AskingScreen::typed, "");
    EXPECT_EQ(clicked_, 0);
}

} // namespace
} // namespace tallyforge::test
