// The list of a row's choices.
#include "SettingsFixture.h"

namespace tallyforge::test {
namespace {

class ChoiceListTest : public SettingsFixture {
  protected:
    void openChoices(Row more = {}) {
        Row row = kept("PSLinkListCell", "shape",
                       {{"detail", text("PSListItemsController")},
                        {"set", text("keep:for:")},
                        {"validTitles", PropertyList::array({text("Round"), text("Square"), text("Star")})}});
        row.insert(row.end(), more.begin(), more.end());
        if (std::none_of(row.begin(), row.end(),
                         [](const auto& entry) { return std::string(entry.first) == "validValues"; }))
            row.emplace_back("validValues", PropertyList::array({PropertyList::integer(0),
                                                                 PropertyList::integer(1), text("star")}));
        open({row});
        tapRow(0, 0);
        pass(0.5);
        list_ = std::dynamic_pointer_cast<PSListItemsController>(navigation_->topViewController());
    }
    void choose(int row) {
        const CGRect rect = list_->table()->rectForRowAtIndexPath({0, row});
        tap(list_->table()->convertPointToView({CGRectGetMidX(rect), CGRectGetMidY(rect)}, nullptr));
    }
    std::vector<int> checked() {
        std::vector<int> rows;
        for (int row = 0; row < list_->table()->numberOfRowsInSection(0); ++row) {
            auto cell = list_->table()->cellForRowAtIndexPath({0, row});
            if (cell && cell->accessoryType() == UITableViewCellAccessoryType::checkmark) rows.push_back(row);
        }
        return rows;
    }
    std::shared_ptr<PSListItemsController> list_;
};

TEST_F(ChoiceListTest, ShowsTheChoicesWithTheirTitlesAndThePresentOneChecked) {
    store("shape", PropertyList::doubleNumber(1));
    openChoices({{"staticTextMessage", text("Pick one.")}});
    ASSERT_NE(list_, nullptr);
    EXPECT_EQ(list_->title(), "shape");
    ASSERT_EQ(list_->table()->numberOfRowsInSection(0), 3);
    for (int row = 0; row < 3; ++row) {
        auto cell = list_->table()->cellForRowAtIndexPath({0, row});
        EXPECT_EQ(cell->titleText(), (Log{"Round", "Square", "Star"})[static_cast<size_t>(row)]);
        EXPECT_EQ(cell->textLabel().textColor(), UIColor::blackColor());
    }
    EXPECT_EQ(checked(), (std::vector{1}));
    EXPECT_EQ(list_->groups().front().group->textForKey("footerText"), "Pick one.");
}

TEST_F(ChoiceListTest, AChoiceMovesTheMarkSetsOnceAndTheScreenStays) {
    store("shape", PropertyList::integer(1));
    openChoices();
    choose(2);
    EXPECT_EQ(pane_->log, (Log{"keep shape star"}));
    EXPECT_EQ(stored("shape"), text("star"));
    EXPECT_EQ(checked(), (std::vector{2}));
    EXPECT_EQ(navigation_->topViewController(), list_);
    EXPECT_EQ(list_->table()->selectedRow(), std::nullopt);
    choose(0);
    EXPECT_EQ(pane_->log, (Log{"keep shape star", "keep shape 0"}));
    EXPECT_EQ(checked(), (std::vector{0}));
    navigation_->popViewController(false);
    EXPECT_EQ(cell(0, 0)->detailText(), "Round");
}

TEST_F(ChoiceListTest, TheKeyboardChoosesToo) {
    openChoices();
    EXPECT_TRUE(checked().empty()); // nothing is set
    press(UIKey::down);
    press(UIKey::down);
    press(UIKey::enter);
    EXPECT_EQ(stored("shape"), PropertyList::integer(1));
    EXPECT_EQ(checked(), (std::vector{1}));
    press(UIKey::down);
    press(UIKey::space);
    EXPECT_EQ(stored("shape"), text("star"));
}

TEST_F(ChoiceListTest, FollowsAChangeFromElsewhere) {
    openChoices();
    store("shape", text("star"));
    list_->refreshRows();
    EXPECT_EQ(checked(), (std::vector{2}));
    store("shape", PropertyList::array({}));
    list_->refreshRows();
    EXPECT_TRUE(checked().empty());
}

TEST_F(ChoiceListTest, TheMarkIsRightInALongListToo) {
    PropertyList::Array values, titles;
    for (int i = 0; i < 100; ++i) {
        values.push_back(PropertyList::integer(i));
        titles.push_back(text("Choice " + std::to_string(i)));
    }
    store("shape", PropertyList::integer(3));
    openChoices({{"validTitles", PropertyList::array(titles)}, {"validValues", PropertyList::array(values)}});
    for (const CGFloat offset : {0.0, 1000.0, 3000.0, 0.0}) {
        list_->table()->setContentOffset({0, offset});
        EXPECT_EQ(checked(), offset == 0 ? std::vector{3} : std::vector<int>{});
    }
    EXPECT_EQ(list_->table()->numberOfRowsInSection(0), 100);
}

TEST_F(ChoiceListTest, WithoutChoicesItIsEmpty) {
    openChoices({{"validValues", text("not a list")}});
    ASSERT_NE(list_, nullptr);
    EXPECT_EQ(list_->table()->numberOfRowsInSection(0), 0);
    tap({100, 120});
    EXPECT_TRUE(pane_->log.empty());
    PSListItemsController bare;
    EXPECT_TRUE(bare.specifiers().empty());
    bare.refreshRows();
    bare.setSpecifier(nullptr);
    EXPECT_EQ(bare.title(), "");
}

TEST_F(ChoiceListTest, ASetterMayTakeTheListAway) {
    openChoices({{"set", text("leave")}});
    const std::weak_ptr<PSListItemsController> list = list_;
    const CGRect rect = list_->table()->rectForRowAtIndexPath({0, 1});
    const CGPoint there = list_->table()->convertPointToView({30, CGRectGetMidY(rect)}, nullptr);
    list_.reset();
    bool alive = false;
    pane_->whenLeft = [&] {
        navigation_->popViewController(false);
        alive = !list.expired();
    };
    tap(there);
    EXPECT_TRUE(alive) << "while it is at work";
    EXPECT_TRUE(list.expired());
    EXPECT_EQ(navigation_->topViewController(), pane_);
}

TEST_F(ChoiceListTest, ChoosingAfterTheFirstScreenHasGoneSetsNothing) {
    openChoices();
    navigation_->setViewControllers({list_});
    pane_.reset();
    choose(1);
    EXPECT_EQ(stored("shape"), std::nullopt);
}

} // namespace
} // namespace tallyforge::test
