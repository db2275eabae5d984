// Alerts: who is told what, how they lie in the window, and that callbacks may do anything.
#include "ControlFixture.h"

#include "uikit/UIAlertView.h"
#include "uikit/UILabel.h"
#include "uikit/UIPickerView.h"
#include "uikit/UITextField.h"

namespace tallyforge::test {
namespace {

struct Delegate final : UIAlertViewDelegate {
    void alertViewClickedButtonAtIndex(UIAlertView& alert, int index) override {
        clicks.emplace_back(alert.tag(), index);
        if (onClick) onClick(alert, index);
    }
    std::vector<std::pair<int, int>> clicks;
    std::function<void(UIAlertView&, int)> onClick;
};
using Clicks = std::vector<std::pair<int, int>>;

class UIAlertViewTest : public ControlFixture {
  protected:
    UIAlertViewTest() {
        UIAlertView::setTrace([this](int tag, const std::string& title, const std::string& message) {
            traced_.push_back(std::to_string(tag) + "|" + title + "|" + message);
        });
    }
    ~UIAlertViewTest() override {
        UIAlertView::setTrace(nullptr);
        delegate_.onClick = nullptr;
        while (FrontAlertPanel()) // leave nothing for the next test
            FrontAlertPanel()->contents().buttons.empty() ? void(FrontAlertPanel()->pressKey(UIKey::escape))
                                                          : FrontAlertPanel()->press(0);
    }
    std::shared_ptr<UIAlertView> makeAlert(const std::string& title, const std::string& message,
                                           std::vector<std::string> others, int tag = 0) {
        auto alert = std::make_shared<UIAlertView>(title, message, &delegate_, "Cancel", std::move(others));
        alert->setTag(tag);
        return alert;
    }
    static const UILabel* labelWith(const UIView& view, const std::string& text) {
        if (const auto* label = dynamic_cast<const UILabel*>(&view); label && label->text() == text)
            return label;
        for (const auto& subview : view.subviews()) {
            if (const UILabel* found = labelWith(*subview, text)) return found;
        }
        return nullptr;
    }
    CGRect panelFrame() const {
        window_->layoutIfNeeded();
        return FrontAlertPanel()->panel()->frame();
    }
    Delegate delegate_;
    std::vector<std::string> traced_;
};

TEST_F(UIAlertViewTest, AButtonEndsItAndTellsTheDelegate) {
    auto alert = makeAlert("Load theme", "Select the theme to load", {"Load"}, 123);
    EXPECT_EQ(alert->buttonTitles(), (std::vector<std::string>{"Cancel", "Load"}));
    alert->show();
    ASSERT_EQ(UIAlertView::visibleAlerts().size(), 1U);
    EXPECT_EQ(traced_, (std::vector<std::string>{"123|Load theme|Select the theme to load"}));
    EXPECT_EQ(window_->frontOverlay(), FrontAlertPanel());
    EXPECT_EQ(FrontAlertPanel()->button(1)->accessibilityLabel(), "Load");
    EXPECT_EQ(FrontAlertPanel()->button(2), nullptr);
    window_->layoutIfNeeded();
    tap(middleOf(*FrontAlertPanel()->button(1)));
    EXPECT_EQ(delegate_.clicks, (Clicks{{123, 1}}));
    EXPECT_TRUE(UIAlertView::visibleAlerts().empty());
    EXPECT_EQ(FrontAlertPanel(), nullptr);
    EXPECT_EQ(window_->frontOverlay(), nullptr);
}

TEST_F(UIAlertViewTest, StaysAliveWhileItIsShownAndNoLonger) {
    std::weak_ptr<UIAlertView> watched;
    {
        auto alert = makeAlert("Error", "No themes found", {});
        watched = alert;
        alert->show();
    }
    ASSERT_FALSE(watched.expired());
    watched.lock()->clickButton(0);
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(delegate_.clicks, (Clicks{{0, 0}}));
}

TEST_F(UIAlertViewTest, ClicksThatMeanNothing) {
    auto alert = makeAlert("Title", "", {"Ok"});
    alert->clickButton(1); // not shown yet
    alert->show();
    alert->show();
    EXPECT_EQ(traced_.size(), 1U);
    EXPECT_EQ(UIAlertView::visibleAlerts().size(), 1U);
    alert->clickButton(2);
    alert->clickButton(-1);
    EXPECT_TRUE(delegate_.clicks.empty());
    alert->clickButton(1);
    alert->clickButton(1);
    EXPECT_EQ(delegate_.clicks, (Clicks{{0, 1}}));
    alert->show();
    EXPECT_EQ(traced_.size(), 2U);
    alert->clickButton(0);
    EXPECT_EQ(delegate_.clicks, (Clicks{{0, 1}, {0, 0}}));
}

TEST_F(UIAlertViewTest, WithoutADelegateItJustGoes) {
    auto alert = std::make_shared<UIAlertView>("T", "M", nullptr, "Ok");
    alert->show();
    alert->clickButton(0);
    EXPECT_TRUE(UIAlertView::visibleAlerts().empty());
}

TEST_F(UIAlertViewTest, AnOwnerThatGoesAwayIsForgotten) {
    Delegate other;
    auto alert = std::make_shared<UIAlertView>("T", "M", &other, "Ok");
    alert->show();
    makeAlert("Mine", "", {})->show();
    UIAlertView::forgetDelegate(other);
    alert->clickButton(0);
    FrontAlertPanel()->press(0);
    EXPECT_TRUE(other.clicks.empty());
    EXPECT_EQ(delegate_.clicks.size(), 1U);
}

TEST_F(UIAlertViewTest, TheDelegateMayShowAnother) {
    delegate_.onClick = [&](UIAlertView& alert, int) {
        if (alert.tag() == 124) makeAlert("Warning", "Overwrite?", {"Overwrite"}, 126)->show();
    };
    makeAlert("Preset name", "", {"Ok"}, 124)->show();
    window_->layoutIfNeeded();
    tap(middleOf(*FrontAlertPanel()->button(1)));
    ASSERT_EQ(UIAlertView::visibleAlerts().size(), 1U);
    EXPECT_EQ(UIAlertView::visibleAlerts()[0]->tag(), 126);
    EXPECT_EQ(window_->frontOverlay(), FrontAlertPanel());
    window_->layoutIfNeeded();
    tap(middleOf(*FrontAlertPanel()->button(1)));
    EXPECT_EQ(delegate_.clicks, (Clicks{{124, 1}, {126, 1}}));
    EXPECT_EQ(window_->frontOverlay(), nullptr);
}

TEST_F(UIAlertViewTest, TheLastOneShownIsInFront) {
    auto first = makeAlert("First", "", {"Ok"}, 1), second = makeAlert("Second", "", {"Ok"}, 2);
    first->show();
    second->show();
    EXPECT_EQ(FrontAlertPanel()->accessibilityLabel(), "Second");
    first->clickButton(1);
    EXPECT_EQ(FrontAlertPanel()->accessibilityLabel(), "Second");
    EXPECT_EQ(window_->frontOverlay(), FrontAlertPanel());
    second->clickButton(0);
    EXPECT_EQ(delegate_.clicks, (Clicks{{1, 1}, {2, 0}}));
}

TEST_F(UIAlertViewTest, WithoutAWindowItCanBeAnsweredAllTheSame) {
    window_.reset();
    ASSERT_EQ(UIWindow::keyWindow(), nullptr);
    auto alert = makeAlert("Preset name", "Enter the preset name:", {"Ok"}, 124);
    alert->setAlertViewStyle(UIAlertViewStyle::plainTextInput);
    alert->show();
    EXPECT_EQ(traced_.size(), 1U);
    ASSERT_EQ(UIAlertView::visibleAlerts().size(), 1U);
    ASSERT_TRUE(FrontAlertPanel());
    std::string name;
    delegate_.onClick = [&](UIAlertView& clicked, int) { name = clicked.textFieldAtIndex(0)->text(); };
    alert->textFieldAtIndex(0)->insertText("My Theme");
    alert->clickButton(1);
    EXPECT_EQ(name, "My Theme");
    EXPECT_EQ(FrontAlertPanel(), nullptr);
}

TEST_F(UIAlertViewTest, ATextFieldIsEditedAtOnceAndGivesItsText) {
    auto alert = makeAlert("Preset name", "Enter the preset name:", {"Ok"}, 124);
    alert->setAlertViewStyle(UIAlertViewStyle::plainTextInput);
    EXPECT_EQ(alert->textFieldAtIndex(0), nullptr);
    alert->show();
    auto field = alert->textFieldAtIndex(0);
    ASSERT_TRUE(field);
    EXPECT_EQ(alert->textFieldAtIndex(1), nullptr);
    EXPECT_EQ(field->frame().size.height, 26);
    EXPECT_TRUE(field->editing());
    EXPECT_TRUE(window_->insertText("Ocean"));
    std::string name;
    delegate_.onClick = [&](UIAlertView& clicked, int) { name = clicked.textFieldAtIndex(0)->text(); };
    EXPECT_TRUE(window_->sendKey(UIKey::enter));
    EXPECT_EQ(name, "Ocean");
    EXPECT_EQ(delegate_.clicks, (Clicks{{124, 1}}));
    EXPECT_FALSE(field->editing());
    EXPECT_EQ(window_->editedField(), nullptr);
    EXPECT_FALSE(window_->insertText("x"));
    auto plain = makeAlert("T", "", {});
    plain->show();
    EXPECT_EQ(plain->textFieldAtIndex(0), nullptr);
}

TEST_F(UIAlertViewTest, TheKeyboardReachesFieldAndButtons) {
    auto alert = makeAlert("Preset name", "", {"Ok"}, 124);
    alert->setAlertViewStyle(UIAlertViewStyle::plainTextInput);
    alert->show();
    const auto panel = FrontAlertPanel();
    EXPECT_TRUE(window_->sendKey(UIKey::tab));
    EXPECT_EQ(window_->focusedView(), panel->button(0));
    EXPECT_FALSE(panel->textField()->editing());
    EXPECT_TRUE(window_->sendKey(UIKey::tab));
    EXPECT_EQ(window_->focusedView(), panel->button(1));
    EXPECT_TRUE(window_->sendKey(UIKey::tab));
    EXPECT_EQ(window_->focusedView(), panel->textField().get());
    EXPECT_TRUE(panel->textField()->editing());
    EXPECT_TRUE(window_->sendKey(UIKey::backTab));
    EXPECT_TRUE(window_->sendKey(UIKey::backTab));
    EXPECT_EQ(window_->focusedView(), panel->button(0));
    EXPECT_TRUE(window_->sendKey(UIKey::enter));
    EXPECT_EQ(delegate_.clicks, (Clicks{{124, 0}}));
}

TEST_F(UIAlertViewTest, ReturnPressesTheLastAndEscapeTheCancellingButton) {
    makeAlert("T", "", {"Ok"}, 1)->show();
    EXPECT_TRUE(window_->sendKey(UIKey::enter));
    makeAlert("T", "", {"Ok"}, 2)->show();
    EXPECT_TRUE(window_->sendKey(UIKey::escape));
    makeAlert("T", "", {}, 3)->show();
    EXPECT_TRUE(window_->sendKey(UIKey::enter));
    auto only = std::make_shared<UIAlertView>("T", "", &delegate_, "", std::vector<std::string>{"Fine"});
    only->setTag(4);
    only->show();
    EXPECT_TRUE(window_->sendKey(UIKey::escape));
    EXPECT_EQ(delegate_.clicks, (Clicks{{1, 1}, {2, 0}, {3, 0}, {4, 0}}));
}

TEST_F(UIAlertViewTest, WithoutButtonsAKeyEndsIt) {
    auto alert = std::make_shared<UIAlertView>("T", "", &delegate_, "");
    alert->show();
    tap({187, 333});
    EXPECT_EQ(UIAlertView::visibleAlerts().size(), 1U);
    EXPECT_TRUE(window_->sendKey(UIKey::escape));
    EXPECT_TRUE(UIAlertView::visibleAlerts().empty());
    EXPECT_TRUE(delegate_.clicks.empty());
}

TEST_F(UIAlertViewTest, NothingBelowIsReached) {
    int clicks = 0;
    auto button = std::make_shared<UIControl>(CGRectMake(0, 0, 375, 100));
    button->addTargetForControlEvents([&](UIControl&) { ++clicks; }, UIControlEventTouchDown);
    window_->addSubview(button);
    makeAlert("T", "", {"Ok"})->show();
    tap({50, 50});
    EXPECT_EQ(clicks, 0);
    EXPECT_EQ(UIAlertView::visibleAlerts().size(), 1U);
    FrontAlertPanel()->press(0);
    tap({50, 50});
    EXPECT_EQ(clicks, 1);
}

TEST_F(UIAlertViewTest, AnAccessoryKeepsItsSizeAndStandsInTheMiddle) {
    struct Rows final : UIPickerViewDataSource, UIPickerViewDelegate {
        int pickerViewNumberOfRowsInComponent(UIPickerView&, int) override { return 5; }
        std::string pickerViewTitleForRow(UIPickerView&, int row, int) override {
            return std::to_string(row);
        }
    } rows;
    auto picker = std::make_shared<UIPickerView>(CGRectMake(25, 30, 230, 160));
    picker->setDataSource(&rows);
    picker->setDelegate(&rows);
    auto alert = makeAlert("Load theme", "Select the theme to load", {"Load"}, 123);
    alert->setValueForKey(picker, "somethingElse");
    EXPECT_EQ(alert->accessoryView(), nullptr);
    alert->setValueForKey(picker, "accessoryView");
    EXPECT_EQ(alert->accessoryView(), picker);
    alert->show();
    window_->layoutIfNeeded();
    EXPECT_EQ(picker->frame().size, CGSizeMake(230, 160));
    EXPECT_EQ(picker->frame().origin.x, 20);
    const UILabel* message = labelWith(*FrontAlertPanel(), "Select the theme to load");
    ASSERT_TRUE(message);
    const auto bottom = [](const UIView& view) {
        return CGRectGetMaxY(view.convertRectToView(view.bounds(), nullptr));
    };
    const auto top = [](const UIView& view) { return view.convertPointToView({0, 0}, nullptr).y; };
    EXPECT_GE(top(*picker), bottom(*message));
    EXPECT_LE(bottom(*picker), top(*FrontAlertPanel()->button(0)));
    EXPECT_TRUE(window_->sendKey(UIKey::down)); // keys that turn a wheel go to it
    EXPECT_EQ(picker->selectedRowInComponent(0), 1);
    const CGPoint middle = middleOf(*picker);
    tap({middle.x, middle.y + 32});
    EXPECT_EQ(picker->selectedRowInComponent(0), 2);
    alert->clickButton(1);
    EXPECT_EQ(picker->selectedRowInComponent(0), 2);
}

TEST_F(UIAlertViewTest, IsTwoHundredAndSeventyWideInTheMiddle) {
    makeAlert("Title", "Message", {"Ok"})->show();
    const CGRect panel = panelFrame();
    EXPECT_EQ(panel.size.width, 270);
    EXPECT_NEAR(CGRectGetMidX(panel), 187.5, 0.5);
    EXPECT_NEAR(CGRectGetMidY(panel), 333.5, 0.5);
    const auto& left = *FrontAlertPanel()->button(0);
    const auto& right = *FrontAlertPanel()->button(1);
    EXPECT_EQ(left.frame().size, CGSizeMake(135, 44));
    EXPECT_EQ(right.frame().origin, CGPointMake(135, 0));
    EXPECT_EQ(labelWith(*FrontAlertPanel(), "Title")->font(), UIFont::semiboldSystemFontOfSize(17));
    EXPECT_EQ(labelWith(*FrontAlertPanel(), "Message")->font(), UIFont::systemFontOfSize(13));
    EXPECT_EQ(labelWith(left, "Cancel")->font(), UIFont::systemFontOfSize(17));
    EXPECT_EQ(labelWith(right, "Ok")->font(), UIFont::semiboldSystemFontOfSize(17));
}

TEST_F(UIAlertViewTest, MoreOrLongerButtonsAreStackedWithCancelBelow) {
    makeAlert("T", "", {"One", "Two"})->show();
    window_->layoutIfNeeded();
    for (const auto& [index, y] : {std::pair<size_t, CGFloat>{1, 0}, {2, 44}, {0, 88}})
        EXPECT_EQ(FrontAlertPanel()->button(index)->frame(), CGRectMake(0, y, 270, 44)) << index;
    makeAlert("T", "", {"A button with a long title"})->show();
    window_->layoutIfNeeded();
    EXPECT_EQ(FrontAlertPanel()->button(1)->frame(), CGRectMake(0, 0, 270, 44));
    EXPECT_EQ(FrontAlertPanel()->button(0)->frame(), CGRectMake(0, 44, 270, 44));
    FrontAlertPanel()->press(0);
    makeAlert("T", "", {})->show();
    window_->layoutIfNeeded();
    EXPECT_EQ(FrontAlertPanel()->button(0)->frame(), CGRectMake(0, 0, 270, 44));
    EXPECT_EQ(labelWith(*FrontAlertPanel()->button(0), "Cancel")->font(), UIFont::systemFontOfSize(17));
    FrontAlertPanel()->press(0);
}

TEST_F(UIAlertViewTest, LongTextsWrapAndWhatIsTooHighScrolls) {
    const std::string title = "A title that is much longer than one line of the panel can ever be";
    makeAlert(title, "Short", {"Ok"})->show();
    window_->layoutIfNeeded();
    const UILabel* label = labelWith(*FrontAlertPanel(), title);
    ASSERT_TRUE(label);
    EXPECT_GT(label->frame().size.height, 35);
    FrontAlertPanel()->press(0);

    std::string message;
    for (int i = 0; i < 190; ++i)
        message += "many words again ";
    for (const std::string& text : {message, std::string(3000, 'w'), std::string(200000, 'w')}) {
        makeAlert("T", text, {"Ok"})->show();
        const CGRect panel = panelFrame();
        EXPECT_GE(panel.origin.y, 24);
        EXPECT_LE(CGRectGetMaxY(panel), 667 - 24 + 0.5);
        EXPECT_TRUE(picture());
        const CGPoint ok = middleOf(*FrontAlertPanel()->button(1));
        EXPECT_LT(ok.y, CGRectGetMaxY(panel));
        // The text's end comes into view.
        const auto& texts = FrontAlertPanel()->panel()->subviews().front();
        const UIView& last = *texts->subviews()[1];
        const auto bottom = [&] { return CGRectGetMaxY(last.convertRectToView(last.bounds(), nullptr)); };
        EXPECT_GT(bottom(), ok.y);
        for (int i = 0; i < 200; ++i)
            EXPECT_TRUE(window_->sendKey(UIKey::pageDown));
        EXPECT_LT(bottom(), ok.y - 22);
        tap(ok);
    }
    EXPECT_EQ(delegate_.clicks, (Clicks{{0, 0}, {0, 1}, {0, 1}, {0, 1}}));
}

TEST_F(UIAlertViewTest, ManyButtonsLeaveRoomForTheTexts) {
    std::vector<std::string> titles;
    titles.reserve(40);
    for (int i = 0; i < 40; ++i)
        titles.push_back("Button " + std::to_string(i));
    makeAlert("Title", "Message", titles)->show();
    const CGRect panel = panelFrame();
    EXPECT_GE(panel.origin.y, 24);
    EXPECT_LE(CGRectGetMaxY(panel), 667 - 24 + 0.5);
    const UILabel* message = labelWith(*FrontAlertPanel(), "Message");
    EXPECT_LT(CGRectGetMaxY(message->convertRectToView(message->bounds(), nullptr)),
              FrontAlertPanel()->button(1)->convertPointToView({0, 0}, nullptr).y);
}

TEST_F(UIAlertViewTest, LooksTheSameAtEveryScale) {
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        makeAlert("Title", "Message", {"Ok"})->show();
        const CGRect panel = panelFrame();
        const auto image = picture(scale);
        const CGFloat left = panel.origin.x, top = panel.origin.y, right = CGRectGetMaxX(panel);
        EXPECT_EQ(at(*image, scale, {20, 20}), 0x999999U) << scale << ": white dimmed by 40 %";
        EXPECT_EQ(at(*image, scale, {left + 1, top + 1}), 0x999999U) << scale << ": the round corner";
        EXPECT_EQ(at(*image, scale, {right - 1, CGRectGetMaxY(panel) - 1}), 0x999999U) << scale;
        EXPECT_EQ(at(*image, scale, {left + 14, top + 5}), 0xF9F9F9U) << scale;
        const CGFloat line = CGRectGetMaxY(panel) - 44, pixel = 1 / scale;
        EXPECT_EQ(at(*image, scale, {left + 20, line + pixel / 2}), 0xC4C4C8U) << scale;
        EXPECT_EQ(at(*image, scale, {left + 20, line - pixel / 2}), 0xF9F9F9U) << scale;
        EXPECT_EQ(at(*image, scale, {left + 20, line + pixel * 1.5}), 0xF9F9F9U) << scale;
        FrontAlertPanel()->press(0);
    }
}

TEST_F(UIAlertViewTest, APressedButtonLooksPressed) {
    makeAlert("Title", "Message", {"Ok"})->show();
    const CGPoint button = middleOf(*FrontAlertPanel()->button(0));
    const CGPoint beside{button.x - 60, button.y};
    const uint32_t before = at(*picture(), 2, beside);
    press(beside);
    EXPECT_LT(at(*picture(), 2, beside), before);
    move({beside.x, beside.y - 250});
    EXPECT_EQ(at(*picture(), 2, beside), before);
    lift({beside.x, beside.y - 250});
    EXPECT_TRUE(delegate_.clicks.empty());
}

TEST_F(UIAlertViewTest, FadesInWhereAnimationsAreOn) {
    UIViewSetAnimationsEnabled(true);
    makeAlert("Title", "Message", {"Ok"})->show();
    EXPECT_EQ(at(*picture(), 2, {20, 20}), 0xFFFFFFU);
    pass(0.1);
    EXPECT_GT(at(*picture(), 2, {20, 20}), 0x999999U);
    pass(0.3);
    EXPECT_EQ(at(*picture(), 2, {20, 20}), 0x999999U);
    EXPECT_FALSE(CAIsAnimating(*window_->layer(), CACurrentMediaTime()));
}

TEST_F(UIAlertViewTest, AControllersButtonsBringTheirActions) {
    Events calls;
    {
        UIAlertController controller("Reset", "Really?");
        controller.addAction(
            {"Reset", UIAlertActionStyle::destructive, [&] { calls.emplace_back("reset"); }});
        controller.addAction({"Cancel", UIAlertActionStyle::cancel, [&] { calls.emplace_back("cancel"); }});
        controller.addAction({"Nothing", UIAlertActionStyle::normal, nullptr});
        EXPECT_EQ(controller.actions().size(), 3U);
        for (int i = 0; i < 4; ++i)
            controller.present();
    }
    EXPECT_EQ(traced_, (std::vector<std::string>(4, "0|Reset|Really?")));
    EXPECT_TRUE(UIAlertView::visibleAlerts().empty());
    window_->layoutIfNeeded();
    const auto panel = FrontAlertPanel();
    EXPECT_EQ(labelWith(*panel, "Cancel")->font(), UIFont::semiboldSystemFontOfSize(17));
    EXPECT_EQ(labelWith(*panel->button(0), "Reset")->textColor(),
              UIColor::colorWithRed(1, 59 / 255.0, 48 / 255.0, 1));
    EXPECT_EQ(panel->button(1)->frame().origin.y, 88) << "cancel stands below the others";
    tap(middleOf(*panel->button(0)));
    EXPECT_EQ(calls, (Events{"reset"}));
    EXPECT_TRUE(window_->sendKey(UIKey::escape));
    EXPECT_EQ(calls, (Events{"reset", "cancel"}));
    EXPECT_TRUE(window_->sendKey(UIKey::enter)) << "the bold one";
    EXPECT_EQ(calls, (Events{"reset", "cancel", "cancel"}));
    FrontAlertPanel()->press(2);
    EXPECT_EQ(calls.size(), 3U);
    EXPECT_EQ(FrontAlertPanel(), nullptr);
}

TEST_F(UIAlertViewTest, AControllersCancelStandsAtTheLeftAndAloneItIsPlain) {
    UIAlertController two("T", "");
    two.addAction({"Do it", UIAlertActionStyle::normal, nullptr});
    two.addAction({"Cancel", UIAlertActionStyle::cancel, nullptr});
    two.present();
    window_->layoutIfNeeded();
    EXPECT_EQ(FrontAlertPanel()->button(1)->frame().origin.x, 0);
    EXPECT_EQ(FrontAlertPanel()->button(0)->frame().origin.x, 135);
    FrontAlertPanel()->press(0);
    UIAlertController one("T", "");
    one.addAction({"Ok", UIAlertActionStyle::cancel, nullptr});
    one.present();
    EXPECT_EQ(labelWith(*FrontAlertPanel(), "Ok")->font(), UIFont::systemFontOfSize(17));
    FrontAlertPanel()->press(0);
    UIAlertController none("T", "");
    none.present();
    EXPECT_TRUE(window_->sendKey(UIKey::enter));
    EXPECT_EQ(FrontAlertPanel(), nullptr);
}

} // namespace
} // namespace tallyforge::test
