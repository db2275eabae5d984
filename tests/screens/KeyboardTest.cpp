// The keyboard alone reaches and operates everything.
#include "TableFixture.h"
#include "uikit/UINavigationController.h"
#include "uikit/UISlider.h"
#include "uikit/UISwitch.h"
#include "uikit/UITextField.h"

#include <set>

namespace tallyforge::test {
namespace {

class KeyboardTest : public TableFixture {
  protected:
    std::string focusedRow() const {
        auto* focused = enclosing<UITableViewCell>(window_->focusedView());
        return focused ? focused->titleText() : std::string();
    }
    bool focusIsOnScreen() const {
        const UIView& view = *window_->focusedView();
        const CGRect shown = view.convertRectToView(view.bounds(), table_.get());
        return shown.origin.y >= offset() && CGRectGetMaxY(shown) <= offset() + 600;
    }
    /// The ring is the only thing of a view that has this border.
    static bool hasRing(const UIView& view) {
        return std::any_of(view.subviews().begin(), view.subviews().end(),
                           [](const auto& subview) { return subview->layer()->borderWidth() == 2; });
    }
    static int ringsIn(const UIView& view) {
        int count = hasRing(view) ? 1 : 0;
        for (const auto& subview : view.subviews())
            count += ringsIn(*subview);
        return count;
    }
};

TEST_F(KeyboardTest, DownReachesEveryRowOfALongListAndWraps) {
    load({{"One", "A footer", 40}, {"", "", 0}, {"Two", "", 30}});
    std::vector<std::string> seen, wanted;
    for (int row = 0; row < 40; ++row)
        wanted.push_back("0." + std::to_string(row));
    for (int row = 0; row < 30; ++row)
        wanted.push_back("2." + std::to_string(row));
    wanted.emplace_back("0.0");
    for (size_t i = 0; i < wanted.size(); ++i) {
        ASSERT_TRUE(press(i % 2 ? UIKey::down : UIKey::tab));
        ASSERT_NE(window_->focusedView(), nullptr);
        EXPECT_TRUE(window_->focusedView()->focused());
        EXPECT_TRUE(focusIsOnScreen()) << focusedRow();
        EXPECT_EQ(ringsIn(*window_), 1);
        seen.push_back(focusedRow());
    }
    EXPECT_EQ(seen, wanted);
    EXPECT_LE(offset(), 0);
}

TEST_F(KeyboardTest, UpGoesTheOtherWayAndWraps) {
    load({{"", "", 50}});
    press(UIKey::down);
    ASSERT_EQ(focusedRow(), "0.0");
    for (int row = 49; row >= 0; --row) {
        ASSERT_TRUE(press(row % 2 ? UIKey::up : UIKey::backTab));
        ASSERT_EQ(focusedRow(), "0." + std::to_string(row));
        EXPECT_TRUE(focusIsOnScreen());
    }
}

TEST_F(KeyboardTest, RowsThatCannotBeChosenAreSteppedOverHoweverManyThereAre) {
    contents_.mayHighlight = [](NSIndexPath path) { return path.row == 0 || path.row == 99; };
    load({{"", "", 100}});
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0.0");
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0.99");
    EXPECT_TRUE(focusIsOnScreen());
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0.0");
    press(UIKey::up);
    EXPECT_EQ(focusedRow(), "0.99");
}

TEST_F(KeyboardTest, ATableWithNothingToChooseHasNoFocus) {
    contents_.mayHighlight = [](NSIndexPath) { return false; };
    load({{"", "", 100}});
    EXPECT_FALSE(press(UIKey::down));
    EXPECT_FALSE(press(UIKey::up));
    EXPECT_EQ(window_->focusedView(), nullptr);
    load({});
    EXPECT_FALSE(press(UIKey::tab));
}

TEST_F(KeyboardTest, FromNowhereItBeginsWithTheFirstRowThatIsShown) {
    load({{"", "", 100}});
    table_->scrollBy(1000);
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0." + std::to_string((1000 - 35) / 44));
}

TEST_F(KeyboardTest, ControlsInRowsAreReachedAsOneReads) {
    std::vector<std::shared_ptr<UIView>> controls;
    contents_.mayHighlight = [](NSIndexPath path) { return path.row != 1; };
    contents_.makeCell = [&](UITableView&, NSIndexPath path) {
        auto cell = std::make_shared<UITableViewCell>(UITableViewCellStyleDefault, "");
        cell->textLabel().setText(Contents::nameOf(path));
        if (path.row == 1) {
            auto left = std::make_shared<UISwitch>(), right = std::make_shared<UISwitch>();
            right->setFrame(CGRectMake(200, 5, 51, 31));
            left->setFrame(CGRectMake(100, 5, 51, 31));
            controls = {left, right};
            cell->addSubview(right);
            cell->addSubview(left);
        }
        return cell;
    };
    load({{"", "", 3}});
    press(UIKey::tab);
    press(UIKey::tab);
    EXPECT_EQ(window_->focusedView(), controls[0].get());
    EXPECT_TRUE(hasRing(*controls[0])); // there are two in the row
    press(UIKey::tab);
    EXPECT_EQ(window_->focusedView(), controls[1].get());
    EXPECT_FALSE(hasRing(*controls[0]));
    press(UIKey::tab);
    EXPECT_EQ(focusedRow(), "0.2");
}

TEST_F(KeyboardTest, SpaceAndReturnChooseTheRow) {
    load({{"", "", 3}});
    EXPECT_FALSE(press(UIKey::enter)); // nothing has the focus
    press(UIKey::down);
    press(UIKey::down);
    EXPECT_TRUE(press(UIKey::space));
    EXPECT_TRUE(press(UIKey::enter));
    EXPECT_EQ(contents_.selected, (std::vector<NSIndexPath>{{0, 1}, {0, 1}}));
    cell(0, 1)->setUserInteractionEnabled(false);
    press(UIKey::enter);
    EXPECT_EQ(contents_.selected.size(), 2u);
}

TEST_F(KeyboardTest, KeysMoveSlidersAndTurnSwitches) {
    auto slider = std::make_shared<UISlider>();
    auto toggle = std::make_shared<UISwitch>();
    slider->setMaximumValue(100);
    slider->setValue(50);
    contents_.mayHighlight = [](NSIndexPath) { return false; };
    contents_.makeCell = [&](UITableView&, NSIndexPath path) {
        auto cell = std::make_shared<UITableViewCell>(UITableViewCellStyleDefault, "");
        cell->setAccessoryView(path.row == 0 ? std::shared_ptr<UIView>(slider) : toggle);
        return cell;
    };
    load({{"", "", 2}});
    press(UIKey::tab);
    ASSERT_EQ(window_->focusedView(), slider.get());
    EXPECT_TRUE(hasRing(*cell(0, 0))); // alone in its row: around the row
    EXPECT_TRUE(press(UIKey::right));
    EXPECT_EQ(slider->value(), 51);
    EXPECT_TRUE(press(UIKey::left));
    EXPECT_TRUE(press(UIKey::left));
    EXPECT_EQ(slider->value(), 49);
    EXPECT_TRUE(press(UIKey::end));
    EXPECT_EQ(slider->value(), 100);
    EXPECT_TRUE(press(UIKey::home));
    EXPECT_EQ(slider->value(), 0);
    press(UIKey::tab);
    ASSERT_EQ(window_->focusedView(), toggle.get());
    press(UIKey::space);
    EXPECT_TRUE(toggle->isOn());
    press(UIKey::enter);
    EXPECT_FALSE(toggle->isOn());
}

TEST_F(KeyboardTest, AFingerTakesTheRingAway) {
    load({{"", "", 3}});
    press(UIKey::down);
    EXPECT_EQ(ringsIn(*window_), 1);
    UIView* const before = window_->focusedView();
    press(CGPoint{10, 10});
    EXPECT_EQ(window_->focusedView(), nullptr);
    EXPECT_FALSE(before->focused());
    EXPECT_EQ(ringsIn(*window_), 0);
    lift({10, 10});
}

TEST_F(KeyboardTest, TheFocusedRowStaysWhenItIsScrolledAway) {
    load({{"", "", 200}});
    press(UIKey::down);
    window_->scrollBy({100, 300}, 5000);
    window_->layoutIfNeeded();
    EXPECT_EQ(focusedRow(), "0.0");
    EXPECT_EQ(ringsIn(*window_), 1); // none has come along with a cell that is used again
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0.1");
    EXPECT_TRUE(focusIsOnScreen());
    for (int i = 0; i < 200; ++i)
        window_->scrollBy({100, 300}, 300);
    EXPECT_EQ(cell(0, 1)->titleText(), "0.1");
    tap({10, 10});
    window_->scrollBy({100, 300}, -1);
    EXPECT_EQ(cell(0, 1), nullptr); // without the focus it goes
}

TEST_F(KeyboardTest, AReloadTakesTheFocusFromWhatIsUsedAgain) {
    load({{"", "", 20}});
    press(UIKey::down);
    press(UIKey::down);
    table_->reloadData();
    window_->layoutIfNeeded();
    EXPECT_EQ(window_->focusedView(), nullptr);
    EXPECT_EQ(ringsIn(*window_), 0);
    contents_.sections = {{"", "", 1}};
    press(UIKey::down);
    table_->reloadData();
    EXPECT_TRUE(press(UIKey::up));
    EXPECT_EQ(focusedRow(), "0.0");
}

TEST_F(KeyboardTest, PageKeysScrollAndNeverPastTheEnds) {
    load({{"", "", 100}});
    const CGFloat end = table_->maximumOffset();
    EXPECT_FALSE(press(UIKey::home)); // it is there
    EXPECT_TRUE(press(UIKey::pageDown));
    pass(0.5);
    EXPECT_NEAR(offset(), 600 * 0.85, 1e-9);
    EXPECT_TRUE(press(UIKey::pageUp));
    pass(0.5);
    EXPECT_EQ(offset(), 0);
    EXPECT_TRUE(press(UIKey::end));
    pass(0.5);
    EXPECT_EQ(offset(), end);
    EXPECT_FALSE(press(UIKey::space)); // no further
    EXPECT_TRUE(press(UIKey::home));
    pass(0.5);
    EXPECT_EQ(offset(), 0);
}

TEST_F(KeyboardTest, TypedTextAndKeysGoToTheEditedField) {
    auto field = std::make_shared<UITextField>(CGRectMake(0, 0, 200, 30));
    load({{"", "", 3}});
    window_->addSubview(field);
    EXPECT_FALSE(window_->insertText("x"));
    tap({50, 15});
    EXPECT_TRUE(window_->insertText("abc"));
    EXPECT_TRUE(press(UIKey::left));
    EXPECT_TRUE(press(UIKey::backspace));
    EXPECT_TRUE(window_->insertText("d"));
    EXPECT_EQ(field->text(), "adc");
    EXPECT_TRUE(press(UIKey::tab)); // the focus leaves the field
    EXPECT_EQ(window_->editedField(), nullptr);
    EXPECT_FALSE(window_->insertText("e"));
}

class Screen final : public UIViewController {
  public:
    explicit Screen(std::string title, std::shared_ptr<UIView> view = nullptr) {
        setTitle(std::move(title));
        if (view) setView(std::move(view));
    }
};

TEST_F(KeyboardTest, TheBarIsReachedAfterTheLastRowAndBeforeTheFirst) {
    contents_.sections = {{"", "", 60}};
    auto navigation = std::make_shared<UINavigationController>(std::make_shared<Screen>("Root"));
    window_->setRootViewController(navigation);
    navigation->pushViewController(std::make_shared<Screen>("List", table_), false);
    window_->layoutIfNeeded();
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0.0"); // the screen itself comes first
    press(UIKey::up);
    EXPECT_EQ(window_->focusedView(), navigation->backButton());
    press(UIKey::up);
    EXPECT_EQ(focusedRow(), "0.59");
    press(UIKey::down);
    EXPECT_EQ(window_->focusedView(), navigation->backButton());
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0.0");
    press(UIKey::up);
    EXPECT_TRUE(press(UIKey::enter));
    EXPECT_EQ(navigation->topViewController()->title(), "Root");
    window_->setRootViewController(nullptr);
}

TEST_F(KeyboardTest, EscapeGoesBackAndNoKeyDoesAnythingWhileScreensSlide) {
    contents_.sections = {{"", "", 5}};
    auto navigation = std::make_shared<UINavigationController>(std::make_shared<Screen>("Root", table_));
    window_->setRootViewController(navigation);
    window_->layoutIfNeeded();
    contents_.whenSelected = [&](NSIndexPath) {
        navigation->pushViewController(std::make_shared<Screen>("Next"), true);
    };
    EXPECT_FALSE(press(UIKey::escape));
    press(UIKey::down);
    press(UIKey::enter);
    EXPECT_TRUE(navigation->transitioning());
    press(UIKey::enter);
    press(UIKey::down);
    press(UIKey::enter);
    EXPECT_EQ(navigation->viewControllers().size(), 2u);
    EXPECT_EQ(ringsIn(*window_), 0);
    pass(1);
    EXPECT_TRUE(press(UIKey::escape));
    pass(1);
    EXPECT_EQ(navigation->viewControllers().size(), 1u);
    EXPECT_FALSE(press(UIKey::escape));
    window_->setRootViewController(nullptr);
}

class Overlay final : public UIView {
  public:
    bool pressKey(UIKey key) override {
        keys.push_back(key);
        return key == UIKey::escape;
    }
    std::vector<UIKey> keys;
};

TEST_F(KeyboardTest, AnOverlayTakesAllKeys) {
    load({{"", "", 50}});
    press(UIKey::down);
    auto overlay = std::make_shared<Overlay>();
    auto left = std::make_shared<UIControl>(CGRectMake(10, 300, 51, 31));
    auto right = std::make_shared<UIControl>(CGRectMake(100, 300, 51, 31));
    overlay->addSubview(right);
    overlay->addSubview(left);
    window_->presentOverlay(overlay);
    EXPECT_EQ(window_->focusedView(), nullptr);
    EXPECT_TRUE(press(UIKey::escape));
    EXPECT_FALSE(press(UIKey::pageDown));
    EXPECT_EQ(overlay->keys, (std::vector{UIKey::escape, UIKey::pageDown}));
    std::set<UIView*> reached;
    for (int i = 0; i < 4; ++i) {
        press(UIKey::right);
        reached.insert(window_->focusedView());
    }
    EXPECT_EQ(reached, (std::set<UIView*>{left.get(), right.get()}));
    press(UIKey::tab);
    EXPECT_EQ(window_->focusedView(), left.get());
    window_->dismissOverlay(*overlay);
    EXPECT_EQ(window_->focusedView(), nullptr);
    press(UIKey::down);
    EXPECT_EQ(focusedRow(), "0.0");
}

} // namespace
} // namespace tallyforge::test
