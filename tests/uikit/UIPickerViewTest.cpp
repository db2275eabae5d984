// The wheel: where it comes to rest, who is told, and that only what can be seen exists.
#include "ControlFixture.h"

#include "uikit/UILabel.h"
#include "uikit/UIPickerView.h"

namespace tallyforge::test {
namespace {

struct Rows final : UIPickerViewDataSource, UIPickerViewDelegate {
    explicit Rows(int rowCount) : count(rowCount) {}
    int pickerViewNumberOfRowsInComponent(UIPickerView&, int) override { return count; }
    std::string pickerViewTitleForRow(UIPickerView&, int row, int) override {
        return "Row " + std::to_string(row);
    }
    void pickerViewDidSelectRow(UIPickerView& picker, int row, int) override {
        told.push_back(row);
        if (onTold) onTold(picker);
    }
    int count;
    std::vector<int> told;
    std::function<void(UIPickerView&)> onTold;
};

class UIPickerViewTest : public ControlFixture {
  protected:
    UIPickerViewTest() { use(rows_); }
    ~UIPickerViewTest() override {
        if (picker_) picker_->removeFromSuperview();
    }
    void use(Rows& rows) {
        picker_->setDataSource(&rows);
        picker_->setDelegate(&rows);
        picker_->setShowsSelectionIndicator(true);
        window_->addSubview(picker_);
    }
    int selected() const { return picker_->selectedRowInComponent(0); }
    // A finger that goes up by this many points, in small steps, and rests before it lifts.
    void drag(CGFloat up, bool rest = true) {
        CGPoint finger{140, 180};
        press(finger);
        const CGFloat end = finger.y - up;
        for (int i = 1; i <= 20; ++i) {
            clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC / 100);
            finger.y = 180 - up * i / 20;
            move(finger);
        }
        if (rest) {
            clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC / 2);
            move({140, end});
        }
        lift({140, end});
    }
    // Titles on screen.
    std::vector<std::string> shown() {
        window_->layoutIfNeeded();
        std::vector<std::string> titles;
        collect(*picker_, titles);
        return titles;
    }
    static int labelsIn(const UIView& view) {
        int count = dynamic_cast<const UILabel*>(&view) ? 1 : 0;
        for (const auto& subview : view.subviews())
            count += labelsIn(*subview);
        return count;
    }
    static void collect(const UIView& view, std::vector<std::string>& titles) {
        if (view.hidden()) return;
        if (const auto* label = dynamic_cast<const UILabel*>(&view)) titles.push_back(label->text());
        for (const auto& subview : view.subviews())
            collect(*subview, titles);
    }
    Rows rows_{20};
    // From y 100 to 260: the middle row is at 180.
    std::shared_ptr<UIPickerView> picker_ = std::make_shared<UIPickerView>(CGRectMake(25, 100, 230, 160));
};

TEST_F(UIPickerViewTest, TheWheelTurnsARowForEachRowsHeight) {
    const CGPoint there = middleOf(*picker_);
    const auto turn = [&](CGFloat points) { window_->scrollBy(there, points, UIWindow::Turn::exact); };
    for (int i = 0; i < 3; ++i)
        turn(10);
    EXPECT_EQ(selected(), 0);
    turn(2);
    EXPECT_EQ(selected(), 1);
    turn(3 * 32 + 31);
    EXPECT_EQ(selected(), 4);
    turn(-31); // the other way it begins anew
    EXPECT_EQ(selected(), 4);
    turn(-1);
    EXPECT_EQ(selected(), 3);
    window_->scrollBy(there, 60, UIWindow::Turn::notch);
    EXPECT_EQ(selected(), 4);
    window_->scrollBy(there, 60, UIWindow::Turn::notch); // 28 are left of the one before
    EXPECT_EQ(selected(), 6);
    turn(-1e9);
    EXPECT_EQ(selected(), 0);
}

TEST_F(UIPickerViewTest, BeginsAtTheFirstRow) {
    EXPECT_EQ(selected(), 0);
    EXPECT_EQ(picker_->numberOfRowsInComponent(0), 20);
    EXPECT_EQ(picker_->numberOfRowsInComponent(1), 0);
    EXPECT_EQ(picker_->selectedRowInComponent(1), -1);
    EXPECT_EQ(picker_->titleForRow(3), "Row 3");
    EXPECT_EQ(picker_->titleForRow(-1), "");
    EXPECT_EQ(picker_->titleForRow(20), "");
    EXPECT_EQ(picker_->accessibilityLabel(), "Row 0");
    EXPECT_TRUE(picker_->showsSelectionIndicator());
}

TEST_F(UIPickerViewTest, SelectingHoldsToTheRowsAndTellsNobody) {
    picker_->selectRowInComponent(7, 0, false);
    EXPECT_EQ(selected(), 7);
    picker_->selectRowInComponent(99, 0, false);
    EXPECT_EQ(selected(), 19);
    picker_->selectRowInComponent(-5, 0, false);
    EXPECT_EQ(selected(), 0);
    picker_->selectRowInComponent(3, 1, false);
    EXPECT_EQ(selected(), 0);
    UIViewSetAnimationsEnabled(true);
    picker_->selectRowInComponent(4, 0, true);
    EXPECT_EQ(selected(), 4);
    pass(2);
    EXPECT_EQ(selected(), 4);
    EXPECT_TRUE(rows_.told.empty());
    EXPECT_FALSE(CADisplayLink::anyRunning());
}

TEST_F(UIPickerViewTest, AnEmptyWheelHasNoRow) {
    Rows none(0);
    use(none);
    EXPECT_EQ(selected(), -1);
    EXPECT_EQ(picker_->numberOfRowsInComponent(0), 0);
    picker_->selectRowInComponent(0, 0, true);
    EXPECT_FALSE(picker_->pressKey(UIKey::down));
    tap({140, 212});
    drag(60);
    pass(1);
    EXPECT_EQ(selected(), -1);
    EXPECT_TRUE(none.told.empty());
    EXPECT_TRUE(shown().empty());
    Rows fewer(-3);
    use(fewer);
    EXPECT_EQ(selected(), -1);
    picker_->removeFromSuperview();
    const auto bare = std::make_shared<UIPickerView>(CGRectMake(0, 0, 100, 100));
    EXPECT_EQ(bare->selectedRowInComponent(0), -1);
}

// Ten points are what it takes to begin; rows are 32 high.
TEST_F(UIPickerViewTest, FollowsTheFingerAndSnapsToARow) {
    UIViewSetAnimationsEnabled(true);
    drag(3 * 32 + 20);
    EXPECT_EQ(selected(), 3);
    EXPECT_TRUE(rows_.told.empty()) << "it still turns";
    pass(1.5);
    EXPECT_EQ(selected(), 3);
    EXPECT_EQ(rows_.told, (std::vector<int>{3}));
    EXPECT_EQ(picker_->middleOfRow(3), 80);
    EXPECT_FALSE(CADisplayLink::anyRunning());
    EXPECT_FALSE(MainQueue::main().nextDeadline());
}

TEST_F(UIPickerViewTest, WithoutAnimationsItIsThereAtOnce) {
    drag(3 * 32 + 20);
    EXPECT_EQ(selected(), 3);
    EXPECT_EQ(rows_.told, (std::vector<int>{3}));
    EXPECT_FALSE(CADisplayLink::anyRunning());
}

TEST_F(UIPickerViewTest, MomentumCarriesItOnAndEndsOnARow) {
    rows_.count = 1000;
    UIViewSetAnimationsEnabled(true);
    drag(100, false); // 500 points a second
    const int atLifting = selected();
    EXPECT_LE(atLifting, 3);
    pass(0.2);
    EXPECT_GT(selected(), atLifting);
    EXPECT_TRUE(rows_.told.empty());
    pass(4);
    // 90 points by the finger, and 500 / 3.5 more: 7.3 rows.
    EXPECT_EQ(selected(), 7);
    EXPECT_EQ(rows_.told, (std::vector<int>{7}));
    EXPECT_EQ(picker_->middleOfRow(7), 80);
}

TEST_F(UIPickerViewTest, TheEndsGiveWayAndSpringBack) {
    UIViewSetAnimationsEnabled(true);
    press({140, 180});
    move({140, 200});
    move({140, 250});
    EXPECT_EQ(selected(), 0);
    EXPECT_GT(picker_->middleOfRow(0).value(), 85);
    EXPECT_LT(picker_->middleOfRow(0).value(), 125) << "less than the finger";
    lift({140, 250});
    pass(1);
    EXPECT_EQ(picker_->middleOfRow(0), 80);
    EXPECT_EQ(rows_.told, (std::vector<int>{0}));
    picker_->selectRowInComponent(19, 0, false);
    drag(2000, false);
    pass(3);
    EXPECT_EQ(selected(), 19);
}

TEST_F(UIPickerViewTest, ATapTurnsToTheRow) {
    UIViewSetAnimationsEnabled(true);
    picker_->selectRowInComponent(5, 0, false);
    tap({140, 100 + picker_->middleOfRow(6).value()});
    EXPECT_EQ(selected(), 6);
    EXPECT_TRUE(rows_.told.empty());
    pass(1);
    EXPECT_EQ(rows_.told, (std::vector<int>{6}));
    tap({140, 100 + picker_->middleOfRow(4).value()});
    pass(1);
    EXPECT_EQ(selected(), 4);
    tap({140, 180});
    pass(1);
    EXPECT_EQ(rows_.told, (std::vector<int>{6, 4})) << "it is there already";
    picker_->selectRowInComponent(0, 0, false);
    tap({140, 148}); // there is no row above the first
    pass(1);
    EXPECT_EQ(selected(), 0);
}

TEST_F(UIPickerViewTest, AFingerStopsTheWheel) {
    rows_.count = 1000;
    UIViewSetAnimationsEnabled(true);
    drag(100, false);
    pass(0.1);
    press({140, 180});
    const int stopped = selected();
    pass(1);
    EXPECT_EQ(selected(), stopped);
    EXPECT_TRUE(rows_.told.empty());
    lift({140, 180});
    pass(1);
    EXPECT_EQ(selected(), stopped);
    EXPECT_EQ(rows_.told, (std::vector<int>{stopped}));
    drag(100, false);
    press({140, 180});
    touch(UITouchPhase::cancelled, {140, 180});
    pass(1);
    EXPECT_EQ(rows_.told.size(), 2U);
    EXPECT_EQ(picker_->middleOfRow(selected()), 80);
}

TEST_F(UIPickerViewTest, SelectingDuringATurnEndsIt) {
    UIViewSetAnimationsEnabled(true);
    tap({140, 212});
    pass(0.05);
    picker_->selectRowInComponent(9, 0, false);
    pass(2);
    EXPECT_EQ(selected(), 9);
    EXPECT_TRUE(rows_.told.empty());
}

TEST_F(UIPickerViewTest, Keys) {
    UIViewSetAnimationsEnabled(true);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(picker_->pressKey(UIKey::down));
    EXPECT_EQ(selected(), 3);
    pass(1);
    EXPECT_EQ(rows_.told, (std::vector<int>{3})) << "once, when it rests";
    EXPECT_TRUE(picker_->pressKey(UIKey::up));
    EXPECT_EQ(selected(), 2);
    EXPECT_TRUE(picker_->pressKey(UIKey::pageDown)); // five rows fit, four are a page
    EXPECT_EQ(selected(), 6);
    EXPECT_TRUE(picker_->pressKey(UIKey::pageUp));
    EXPECT_EQ(selected(), 2);
    EXPECT_TRUE(picker_->pressKey(UIKey::end));
    EXPECT_EQ(selected(), 19);
    EXPECT_TRUE(picker_->pressKey(UIKey::down));
    EXPECT_EQ(selected(), 19);
    EXPECT_TRUE(picker_->pressKey(UIKey::home));
    EXPECT_EQ(selected(), 0);
    EXPECT_FALSE(picker_->pressKey(UIKey::enter));
    pass(2);
    EXPECT_EQ(rows_.told, (std::vector<int>{3, 0}));
}

TEST_F(UIPickerViewTest, ReloadingKeepsTheRowWhereItCan) {
    picker_->selectRowInComponent(12, 0, false);
    rows_.count = 15;
    picker_->reloadAllComponents();
    EXPECT_EQ(selected(), 12);
    rows_.count = 5;
    picker_->reloadAllComponents();
    EXPECT_EQ(selected(), 4);
    EXPECT_EQ(picker_->titleForRow(4), "Row 4");
    rows_.count = 0;
    picker_->reloadAllComponents();
    EXPECT_EQ(selected(), -1);
    rows_.count = 2;
    picker_->reloadAllComponents();
    EXPECT_EQ(selected(), 0);
}

TEST_F(UIPickerViewTest, RowsThatVanishDuringATurnEndItQuietly) {
    UIViewSetAnimationsEnabled(true);
    tap({140, 212});
    rows_.count = 0;
    picker_->reloadAllComponents();
    pass(1);
    EXPECT_EQ(selected(), -1);
    EXPECT_TRUE(rows_.told.empty());
}

TEST_F(UIPickerViewTest, WhoeverIsToldMayEndThePicker) {
    UIViewSetAnimationsEnabled(true);
    rows_.onTold = [](UIPickerView& picker) { picker.removeFromSuperview(); };
    std::weak_ptr<UIPickerView> watched = picker_;
    picker_.reset();
    tap({140, 212});
    pass(1);
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(rows_.told, (std::vector<int>{1}));
}

TEST_F(UIPickerViewTest, TheSourceMayGoAwayOnceTaken) {
    {
        Rows gone(4);
        use(gone);
        EXPECT_EQ(selected(), 0);
        picker_->setDataSource(nullptr);
        picker_->setDelegate(nullptr);
    }
    tap({140, 212});
    EXPECT_EQ(selected(), 1);
    EXPECT_EQ(picker_->titleForRow(1), "Row 1");
}

TEST_F(UIPickerViewTest, OnlyRowsThatCanBeSeenExist) {
    Rows many(10000);
    use(many);
    UIViewSetAnimationsEnabled(true);
    picker_->selectRowInComponent(5000, 0, false);
    const auto titles = shown();
    EXPECT_LT(titles.size(), 12U);
    EXPECT_NE(std::find(titles.begin(), titles.end(), "Row 5000"), titles.end());
    EXPECT_NE(std::find(titles.begin(), titles.end(), "Row 5001"), titles.end());
    picker_->selectRowInComponent(9999, 0, true);
    pass(3);
    EXPECT_EQ(shown().back(), "Row 9999");
    EXPECT_LT(labelsIn(*picker_), 12);
    picker_->removeFromSuperview();
    picker_->setDataSource(nullptr);
    picker_->setDelegate(nullptr);
}

// The middle row stands between two lines 32 points apart; its neighbours are fainter and lower.
TEST_F(UIPickerViewTest, LooksLikeAWheelAtEveryScale) {
    picker_->selectRowInComponent(5, 0, false);
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        picker_->setNeedsLayout();
        const auto image = picture(scale);
        const auto row = [&](CGFloat y) {
            uint32_t darkest = 255;
            for (CGFloat x = 30; x < 250; x += 0.25)
                darkest = std::min(darkest, at(*image, scale, {x, y}) >> 8U & 255U);
            return darkest;
        };
        const auto darkestFrom = [&](CGFloat from, CGFloat to) {
            uint32_t darkest = 255;
            for (CGFloat y = from; y < to; y += 0.25)
                darkest = std::min(darkest, row(y));
            return darkest;
        };
        const CGFloat pixel = 1 / scale;
        EXPECT_EQ(at(*image, scale, {30, 164 + pixel / 2}), 0xC7C7CCU) << scale;
        EXPECT_EQ(at(*image, scale, {30, 196 + pixel / 2}), 0xC7C7CCU) << scale;
        EXPECT_EQ(at(*image, scale, {30, 164 - pixel / 2}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {30, 180}), 0xFFFFFFU) << scale;
        const uint32_t middle = darkestFrom(170, 190), next = darkestFrom(201, 220),
                       last = darkestFrom(228, 242);
        EXPECT_LT(middle, 60U) << scale;
        EXPECT_GT(next, middle + 40) << scale;
        EXPECT_GT(last, next + 20) << scale;
        EXPECT_LT(last, 245U) << scale << ": still to be seen";
    }
    picker_->setShowsSelectionIndicator(false);
    EXPECT_EQ(at(*picture(3), 3, {30, 164.2}), 0xFFFFFFU);
}

TEST_F(UIPickerViewTest, AnyFrameWillDo) {
    for (const CGSize size : {CGSize{0, 0}, CGSize{10, 10}, CGSize{230, 30}, CGSize{700, 500}}) {
        picker_->setFrame({{0, 0}, size});
        picker_->selectRowInComponent(3, 0, false);
        EXPECT_TRUE(picture());
        EXPECT_TRUE(picker_->pressKey(UIKey::down));
        EXPECT_TRUE(picker_->pressKey(UIKey::pageDown));
        EXPECT_GE(selected(), 5);
    }
}

} // namespace
} // namespace tallyforge::test
