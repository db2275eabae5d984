// A grouped table: where rows are, which cells exist, and what a finger does to them.
#include "TableFixture.h"

#include <cmath>
#include <set>

namespace tallyforge::test {
namespace {

class TableViewTest : public TableFixture {};

TEST_F(TableViewTest, RowsAndGapsByHand) {
    contents_.height = [](NSIndexPath path) { return path.section == 1 ? 60.0 : 44.0; };
    load({{"", "", 3}, {"", "", 2}, {"", "", 0}});
    // 35 above the first group, 35 between groups.
    EXPECT_EQ(table_->rectForRowAtIndexPath({0, 0}), CGRectMake(0, 35, 375, 44));
    EXPECT_EQ(table_->rectForRowAtIndexPath({0, 2}), CGRectMake(0, 123, 375, 44));
    EXPECT_EQ(table_->rectForRowAtIndexPath({1, 0}), CGRectMake(0, 167 + 35, 375, 60));
    EXPECT_EQ(table_->rectForRowAtIndexPath({1, 1}), CGRectMake(0, 262, 375, 60));
    EXPECT_EQ(table_->contentSize(), (CGSize{375, 322 + 35 + 35}));
    EXPECT_EQ(table_->numberOfSections(), 3);
    EXPECT_EQ(table_->numberOfRowsInSection(0), 3);
    EXPECT_EQ(table_->numberOfRowsInSection(2), 0);
    for (const NSIndexPath path : {NSIndexPath{0, 3}, {0, -1}, {-1, 0}, {2, 0}, {3, 0}}) {
        EXPECT_EQ(table_->rectForRowAtIndexPath(path), CGRectZero);
        EXPECT_EQ(table_->cellForRowAtIndexPath(path), nullptr);
    }
    EXPECT_EQ(table_->numberOfRowsInSection(-1), 0);
    EXPECT_EQ(table_->numberOfRowsInSection(3), 0);
    EXPECT_EQ(table_->titleForHeaderInSection(9), "");
}

TEST_F(TableViewTest, RowsAreFoundByTheirPoints) {
    load({{"", "", 2}, {"", "", 1}});
    table_->setSideMargin(20);
    window_->layoutIfNeeded();
    auto at = [&](CGFloat x, CGFloat y) { return table_->indexPathForRowAtPoint({x, y}); };
    EXPECT_EQ(at(100, 34.9), std::nullopt);
    EXPECT_EQ(at(100, 35), (NSIndexPath{0, 0}));
    EXPECT_EQ(at(100, 79), (NSIndexPath{0, 1}));
    EXPECT_EQ(at(100, 122.9), (NSIndexPath{0, 1}));
    EXPECT_EQ(at(100, 123), std::nullopt);
    EXPECT_EQ(at(100, 158), (NSIndexPath{1, 0}));
    EXPECT_EQ(at(19.9, 40), std::nullopt);
    EXPECT_EQ(at(20, 40), (NSIndexPath{0, 0}));
    EXPECT_EQ(at(355, 40), std::nullopt);
    EXPECT_EQ(at(100, 1e6), std::nullopt);
    EXPECT_EQ(table_->rectForRowAtIndexPath({0, 0}), CGRectMake(20, 35, 335, 44));
    EXPECT_EQ(cell(0, 0)->frame(), CGRectMake(20, 35, 335, 44));
}

TEST_F(TableViewTest, EveryLetterWithACapitalOfItsOwnGetsIt) {
    load({{"Été à l'île, straße, жук, 9\u00D7 \xFF", "", 1}});
    ASSERT_EQ(captions().size(), 1U);
    EXPECT_EQ(captions()[0]->text(), "ÉTÉ À L'ÎLE, STRAßE, ЖУК, 9\u00D7 \xFF");
}

TEST_F(TableViewTest, HeadersAreCapitalsAboveTheRowsAndFootersBelow) {
    load({{"Badge look", "What a badge looks like.", 1}, {"", "", 1}});
    const auto shown = captions();
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(table_->titleForHeaderInSection(0), "Badge look");
    const CGRect row = table_->rectForRowAtIndexPath({0, 0});
    for (const UILabel* label : shown) {
        EXPECT_EQ(label->font().pointSize(), 13);
        EXPECT_EQ(label->frame().origin.x, 15);
        EXPECT_EQ(label->frame().size.width, 345);
        const UIColor grey = UIColor::colorWithRed(0x6D / 255.0, 0x6D / 255.0, 0x72 / 255.0, 1);
        EXPECT_EQ(label->textColor(), grey);
        if (label->text() == "BADGE LOOK")
            EXPECT_NEAR(CGRectGetMaxY(label->frame()), row.origin.y - 7, 1e-9);
        else {
            EXPECT_EQ(label->text(), "What a badge looks like.");
            EXPECT_NEAR(label->frame().origin.y, CGRectGetMaxY(row) + 7, 1e-9);
        }
    }
    // A caption takes its own height and a little; nothing touches the next group.
    EXPECT_GT(row.origin.y, 35 + 13);
    EXPECT_GT(table_->rectForRowAtIndexPath({1, 0}).origin.y, CGRectGetMaxY(row) + 7 + 13 + 14);
}

TEST_F(TableViewTest, FootersAreMeasuredAnewForAnotherWidth) {
    const std::string longText =
        "This footer has so many words that it needs more than one line on a phone, and "
        "fewer of them where there is more room for it than that.";
    load({{"", longText, 1}, {"", "", 1}});
    const CGFloat narrow = table_->rectForRowAtIndexPath({1, 0}).origin.y;
    const CGFloat footer = captions().at(0)->frame().size.height;
    table_->setFrame(CGRectMake(0, 67, 1200, 600));
    window_->layoutIfNeeded();
    const CGFloat wide = table_->rectForRowAtIndexPath({1, 0}).origin.y;
    ASSERT_EQ(captions().size(), 1u);
    EXPECT_LT(captions().at(0)->frame().size.height, footer);
    EXPECT_NEAR(narrow - wide, footer - captions().at(0)->frame().size.height, 1e-9);
    EXPECT_EQ(captions().at(0)->frame().size.width, 1170);
    EXPECT_EQ(cell(1, 0)->frame().size.width, 1200);
    EXPECT_EQ(table_->contentSize().width, 1200);
    // Nothing of it is cut.
    EXPECT_FALSE(truncated(*captions().at(0)));
}

TEST_F(TableViewTest, OnlyCellsOnScreenExist) {
    load({{"", "", 10000}});
    // From 35 on, 600 points show 12.8 rows.
    EXPECT_EQ(cellsShown(), 13);
    EXPECT_EQ(table_->indexPathsForVisibleRows().size(), 13u);
    EXPECT_NE(cell(0, 12), nullptr);
    EXPECT_EQ(cell(0, 13), nullptr);
    table_->setContentOffset({0, 35 + 44 * 5000 + 10});
    EXPECT_EQ(table_->indexPathsForVisibleRows().front(), (NSIndexPath{0, 5000}));
    EXPECT_EQ(table_->indexPathsForVisibleRows().back(), (NSIndexPath{0, 5013}));
    EXPECT_EQ(cellsShown(), 14);
    EXPECT_EQ(cell(0, 0), nullptr);
    EXPECT_EQ(cell(0, 5000)->titleText(), "0.5000");
    EXPECT_EQ(table_->indexPathForCell(*cell(0, 5003)), (NSIndexPath{0, 5003}));
    EXPECT_EQ(table_->indexPathForCell(UITableViewCell()), std::nullopt);
}

TEST_F(TableViewTest, FastFlingsMakeNoMoreCellsThanTheScreenHolds) {
    load({{"", "", 10000}});
    for (int i = 0; i < 40; ++i) {
        drag({100, 600}, {100, 100}, 0.03);
        pass(0.5);
        for (const NSIndexPath path : table_->indexPathsForVisibleRows()) {
            ASSERT_NE(table_->cellForRowAtIndexPath(path), nullptr);
            EXPECT_EQ(table_->cellForRowAtIndexPath(path)->titleText(), Contents::nameOf(path));
            EXPECT_FALSE(table_->cellForRowAtIndexPath(path)->highlighted());
            EXPECT_EQ(table_->cellForRowAtIndexPath(path)->backgroundColor(), UIColor::whiteColor());
        }
    }
    EXPECT_GT(offset(), 20000);
    // 15 rows are the most that 600 points touch; the cells of one screen serve the next.
    EXPECT_LE(contents_.made, 15);
}

TEST_F(TableViewTest, CellsThatNobodyAsksForAgainDoNotHeapUp) {
    std::vector<std::weak_ptr<UITableViewCell>> all;
    contents_.makeCell = [&](UITableView&, NSIndexPath) {
        auto cell = std::make_shared<UITableViewCell>(UITableViewCellStyleDefault, "never asked for");
        all.push_back(cell);
        return cell;
    };
    load({{"", "", 10000}});
    for (int i = 1; i < 100; ++i)
        table_->setContentOffset({0, i * 3000.0});
    const auto alive =
        std::count_if(all.begin(), all.end(), [](const auto& cell) { return !cell.expired(); });
    EXPECT_GT(all.size(), 1000u);
    EXPECT_LE(alive, 80);
}

TEST_F(TableViewTest, ReusedCellsAreClean) {
    load({{"", "", 1000}});
    press(middleOfRow(0, 0));
    EXPECT_TRUE(cell(0, 0)->highlighted());
    table_->setContentOffset({0, 4400});
    lift(CGPoint{100, 600});
    table_->setContentOffset({0, 0});
    for (int row = 0; row < 13; ++row) {
        EXPECT_FALSE(cell(0, row)->highlighted());
        EXPECT_EQ(cell(0, row)->titleText(), "0." + std::to_string(row));
        EXPECT_EQ(cell(0, row)->frame(), table_->rectForRowAtIndexPath({0, row}));
    }
    EXPECT_TRUE(contents_.selected.empty());
}

TEST_F(TableViewTest, DequeuesOnlyWhatHasTheIdentifier) {
    load({{"", "", 100}});
    EXPECT_EQ(table_->dequeueReusableCellWithIdentifier("row"), nullptr); // all are in use
    table_->setContentOffset({0, 1000});
    EXPECT_EQ(table_->dequeueReusableCellWithIdentifier("other"), nullptr);
    EXPECT_EQ(table_->dequeueReusableCellWithIdentifier(""), nullptr);
}

TEST_F(TableViewTest, ReloadingARowAsksForItsCellAndHeightAgain) {
    CGFloat height = 44;
    contents_.height = [&](NSIndexPath path) { return path.row == 1 ? height : 44; };
    load({{"", "", 20}});
    const auto third = cell(0, 2);
    const int asked = contents_.asked;
    height = 100;
    table_->reloadRow({0, 1});
    window_->layoutIfNeeded();
    EXPECT_EQ(contents_.asked, asked + 1);
    EXPECT_EQ(cell(0, 1)->frame(), CGRectMake(0, 79, 375, 100));
    EXPECT_EQ(cell(0, 2), third); // the others stay
    EXPECT_EQ(third->frame(), CGRectMake(0, 179, 375, 44));
    // A row above the screen moves those that are on it.
    table_->setContentOffset({0, 300});
    height = 44;
    table_->reloadRow({0, 1});
    window_->layoutIfNeeded();
    EXPECT_EQ(cell(0, 10)->frame(), table_->rectForRowAtIndexPath({0, 10}));
    EXPECT_EQ(cell(0, 10)->frame().origin.y, 35 + 440);
    table_->reloadRow({0, 20});
    table_->reloadRow({5, 0});
    table_->reloadRow({-1, -1});
    EXPECT_EQ(table_->numberOfRowsInSection(0), 20);
}

TEST_F(TableViewTest, ReloadingForgetsEverything) {
    load({{"Old", "", 20}});
    table_->selectRow({0, 3});
    contents_.sections = {{"New", "", 2}};
    table_->reloadData();
    window_->layoutIfNeeded();
    EXPECT_EQ(table_->selectedRow(), std::nullopt);
    EXPECT_EQ(cellsShown(), 2);
    ASSERT_EQ(captions().size(), 1u);
    EXPECT_EQ(captions()[0]->text(), "NEW");
    EXPECT_EQ(table_->numberOfRowsInSection(0), 2);
    table_->setContentOffset({0, 0});
    contents_.sections = {};
    table_->reloadData();
    EXPECT_EQ(cellsShown(), 0);
    EXPECT_TRUE(captions().empty());
    EXPECT_EQ(table_->numberOfSections(), 0);
    EXPECT_EQ(table_->maximumOffset(), 0);
    contents_.selected.clear();
    tap({100, 200});
    EXPECT_TRUE(contents_.selected.empty());
}

TEST_F(TableViewTest, FewerRowsBringTheEndBackIntoView) {
    load({{"", "", 100}});
    table_->setContentOffset({0, table_->maximumOffset()});
    contents_.sections = {{"", "", 20}};
    table_->reloadData();
    EXPECT_EQ(offset(), 35 + 20 * 44 + 35 - 600);
    EXPECT_NE(cell(0, 19), nullptr);
}

TEST_F(TableViewTest, TablesWithoutSourceOrWithEmptyOrStrangeRowsAreHarmless) {
    auto bare = show(std::make_shared<UITableView>(CGRectMake(0, 0, 375, 600)));
    tap({100, 100});
    EXPECT_EQ(bare->numberOfSections(), 0);
    contents_.height = [](NSIndexPath path) {
        const CGFloat heights[] = {0, -50, std::nan(""), INFINITY, 44};
        return heights[path.row];
    };
    load({{"", "", 0}, {"", "", -3}, {"", "", 5}});
    EXPECT_EQ(table_->numberOfRowsInSection(1), 0);
    EXPECT_EQ(table_->rectForRowAtIndexPath({2, 4}), CGRectMake(0, 105, 375, 44));
    EXPECT_EQ(table_->contentSize().height, 184);
    EXPECT_EQ(table_->indexPathForRowAtPoint({100, 120}), (NSIndexPath{2, 4}));
}

TEST_F(TableViewTest, RowsWithoutCellsStayEmpty) {
    contents_.makeCell = [](UITableView&, NSIndexPath path) {
        return path.row == 1 ? nullptr : std::make_shared<UITableViewCell>(0, "");
    };
    load({{"", "", 3}});
    EXPECT_EQ(cellsShown(), 2);
    EXPECT_EQ(cell(0, 1), nullptr);
    tap(middleOfRow(0, 1));
    table_->selectRow({0, 1});
    EXPECT_TRUE(contents_.selected.empty());
    tap(middleOfRow(0, 2));
    EXPECT_EQ(contents_.selected.size(), 1u);
}

TEST_F(TableViewTest, APressIsGreyAtOnceAndFadesInThreeTenthsOfASecond) {
    load({{"", "", 3}});
    const CGPoint at{200, middleOfRow(0, 1).y};
    EXPECT_EQ(pixel(at), 0xFFFFFFU);
    press(at);
    EXPECT_EQ(pixel(at), 0xD9D9D9U);
    lift(at);
    EXPECT_EQ(contents_.selected, (std::vector<NSIndexPath>{{0, 1}}));
    EXPECT_EQ(table_->selectedRow(), (NSIndexPath{0, 1}));
    pass(1);
    EXPECT_EQ(pixel(at), 0xD9D9D9U); // until it is deselected
    table_->deselectRow(true);
    EXPECT_EQ(table_->selectedRow(), std::nullopt);
    EXPECT_FALSE(cell(0, 1)->highlighted());
    EXPECT_EQ(pixel(at), 0xD9D9D9U);
    pass(0.15); // half of the way from D9 to FF: EC
    EXPECT_NEAR(pixel(at) & 0xFFU, 0xECU, 4);
    pass(0.2);
    EXPECT_EQ(pixel(at), 0xFFFFFFU);
    EXPECT_FALSE(CAIsAnimating(*window_->layer(), now()));
    table_->deselectRow(true); // nothing is
    EXPECT_FALSE(CAIsAnimating(*window_->layer(), now()));
}

TEST_F(TableViewTest, WithoutAnimationTheGreyGoesAtOnce) {
    load({{"", "", 3}});
    const CGPoint at{200, middleOfRow(0, 1).y};
    tap(at);
    table_->deselectRow(false);
    EXPECT_EQ(pixel(at), 0xFFFFFFU);
    UIViewSetAnimationsEnabled(false);
    tap(at);
    table_->deselectRow(true);
    EXPECT_EQ(pixel(at), 0xFFFFFFU);
}

TEST_F(TableViewTest, ScrollingCancelsThePress) {
    load({{"", "", 50}});
    const CGPoint at = middleOfRow(0, 5);
    press(at);
    EXPECT_TRUE(cell(0, 5)->highlighted());
    move({at.x, at.y - 20});
    EXPECT_FALSE(cell(0, 5)->highlighted());
    pass(0.3);
    lift({at.x, at.y - 20});
    EXPECT_TRUE(contents_.selected.empty());
    touch(UITouchPhase::began, at);
    touch(UITouchPhase::cancelled, at);
    EXPECT_EQ(std::count_if(table_->subviews().begin(), table_->subviews().end(),
                            [](const auto& view) {
                                auto* row = dynamic_cast<UITableViewCell*>(view.get());
                                return row && row->highlighted();
                            }),
              0);
}

TEST_F(TableViewTest, AFingerThatLeavesTheRowSelectsNothing) {
    load({{"", "", 5}});
    table_->setScrollEnabled(false);
    const CGPoint at = middleOfRow(0, 1);
    press(at);
    move({at.x, at.y + 44});
    EXPECT_FALSE(cell(0, 1)->highlighted());
    EXPECT_FALSE(cell(0, 2)->highlighted());
    move(at);
    lift(at);
    EXPECT_TRUE(contents_.selected.empty());
}

TEST_F(TableViewTest, ATapThatStopsTheTableSelectsNothing) {
    load({{"", "", 1000}});
    drag({100, 600}, {100, 200}, 0.1);
    pass(0.1);
    ASSERT_TRUE(table_->decelerating());
    tap({100, 300});
    EXPECT_FALSE(table_->decelerating());
    EXPECT_TRUE(contents_.selected.empty());
    tap({100, 300});
    EXPECT_EQ(contents_.selected.size(), 1u);
}

TEST_F(TableViewTest, RowsThatMayNotBeHighlightedOrTouchedAreNotSelected) {
    bool may = false;
    contents_.mayHighlight = [&](NSIndexPath path) { return path.row != 0 || may; };
    load({{"", "", 3}});
    press(middleOfRow(0, 0));
    EXPECT_FALSE(cell(0, 0)->highlighted());
    lift(middleOfRow(0, 0));
    table_->selectRow({0, 0});
    cell(0, 1)->setUserInteractionEnabled(false);
    tap(middleOfRow(0, 1));
    table_->selectRow({0, 1});
    table_->selectRow({7, 7});
    EXPECT_TRUE(contents_.selected.empty());
    may = true;
    press(middleOfRow(0, 0));
    EXPECT_TRUE(cell(0, 0)->highlighted());
    may = false; // no more when it is lifted
    lift(middleOfRow(0, 0));
    EXPECT_TRUE(contents_.selected.empty());
    EXPECT_FALSE(cell(0, 0)->highlighted());
}

TEST_F(TableViewTest, AnotherSelectionTakesTheGreyFromTheFirst) {
    load({{"", "", 100}});
    table_->selectRow({0, 1});
    table_->selectRow({0, 2});
    EXPECT_FALSE(cell(0, 1)->highlighted());
    EXPECT_TRUE(cell(0, 2)->highlighted());
    // Scrolled away and back the row still shows it.
    table_->setContentOffset({0, 2000});
    for (const NSIndexPath path : table_->indexPathsForVisibleRows())
        EXPECT_FALSE(table_->cellForRowAtIndexPath(path)->highlighted());
    table_->setContentOffset({0, 0});
    EXPECT_TRUE(cell(0, 2)->highlighted());
    press(middleOfRow(0, 4));
    EXPECT_FALSE(cell(0, 2)->highlighted());
    lift(middleOfRow(0, 4));
    EXPECT_EQ(table_->selectedRow(), (NSIndexPath{0, 4}));
}

TEST_F(TableViewTest, ACellWithoutSelectionLookIsSelectedAllTheSame) {
    load({{"", "", 2}});
    cell(0, 0)->setSelectionStyle(UITableViewCellSelectionStyle::none);
    press(middleOfRow(0, 0));
    EXPECT_FALSE(cell(0, 0)->highlighted());
    lift(middleOfRow(0, 0));
    EXPECT_FALSE(cell(0, 0)->highlighted());
    EXPECT_EQ(contents_.selected.size(), 1u);
}

TEST_F(TableViewTest, ASelectionMayReloadOrEndTheTable) {
    load({{"", "", 5}});
    contents_.whenSelected = [&](NSIndexPath) { table_->reloadData(); };
    tap(middleOfRow(0, 0));
    EXPECT_FALSE(cell(0, 0)->highlighted());

    auto other = std::make_shared<UITableView>(CGRectMake(0, 0, 375, 600));
    other->setDataSource(&contents_);
    other->setDelegate(&contents_);
    show(other);
    std::weak_ptr<UITableView> gone = other;
    other.reset();
    contents_.whenSelected = [&](NSIndexPath) { window_->removeAllSubviews(); };
    tap({100, 60});
    EXPECT_TRUE(gone.expired());
}

TEST_F(TableViewTest, ASourceMayReloadWhileItIsAsked) {
    bool again = true;
    contents_.makeCell = [&](UITableView& table, NSIndexPath path) {
        if (std::exchange(again, false)) table.reloadData();
        auto made = std::make_shared<UITableViewCell>(UITableViewCellStyleDefault, "");
        made->textLabel().setText(Contents::nameOf(path));
        return made;
    };
    load({{"", "", 5}});
    EXPECT_EQ(cellsShown(), 5);
    for (int row = 0; row < 5; ++row)
        EXPECT_EQ(cell(0, row)->titleText(), "0." + std::to_string(row));
}

TEST_F(TableViewTest, SeparatorsAreOnePixelFullAtAGroupsEndsAndInsetBetween) {
    for (const CGFloat scale : kScales) {
        SCOPED_TRACE(scale);
        UIScreen::mainScreen().setScale(scale);
        table_->setFrame(CGRectMake(0, 66, 375, 600)); // on a pixel at every scale
        contents_.height = [](NSIndexPath) { return 44.0; };
        load({{"", "", 2}});
        // The group begins at the table's upper edge.
        table_->setContentOffset({0, table_->rectForRowAtIndexPath({0, 0}).origin.y});
        const auto image = picture();
        auto at = [&](CGFloat x, CGFloat y) { // y in pixels from the upper edge of the table
            return image->pixel(static_cast<int>(x * scale), static_cast<int>(66 * scale + y)) & 0xFFFFFFU;
        };
        const double row = 44 * scale;
        EXPECT_EQ(at(5, 0), 0xC8C7CCU);
        EXPECT_EQ(at(200, 0), 0xC8C7CCU);
        EXPECT_EQ(at(200, 1), 0xFFFFFFU);
        EXPECT_EQ(at(200, row - 1), 0xC8C7CCU);
        EXPECT_EQ(at(370, row - 1), 0xC8C7CCU);
        EXPECT_EQ(at(16, row - 1), 0xC8C7CCU);
        EXPECT_EQ(at(14, row - 1), 0xFFFFFFU);
        EXPECT_EQ(at(200, row - 2), 0xFFFFFFU);
        EXPECT_EQ(at(200, row), 0xFFFFFFU);
        EXPECT_EQ(at(5, 2 * row - 1), 0xC8C7CCU);
        EXPECT_EQ(at(200, 2 * row - 2), 0xFFFFFFU);
        EXPECT_EQ(at(200, 2 * row), 0xEFEFF4U);
    }
}

TEST_F(TableViewTest, SeparatorsAreOnePixelHighAtEveryScale) {
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        UIViewSetAnimationsEnabled(false);
        load({{"", "A footer", 2}, {"", "", 3}, {"", "Another one", 1}, {"A header", "", 2}});
        table_->remakeCells();
        for (const int pixels : {0, 1, 25, 0}) {
            table_->setContentOffset({0, pixels / scale});
            const auto image = picture();
            int lines = 0;
            for (int y = static_cast<int>(68 * scale); y < image->height(); ++y)
                lines += (image->pixel(static_cast<int>(200 * scale), y) & 0xFFFFFFU) == 0xC8C7CCU;
            EXPECT_EQ(lines, 3 + 4 + 2 + 3) << scale << ' ' << pixels;
        }
        table_->setContentOffset({0, 0});
    }
}

TEST_F(TableViewTest, ScrollingLaysOutOnlyWhatComesIntoView) {
    load({{"", "", 100}});
    pass(2);
    int times = 0;
    class Counting final : public UITableViewCell {
      public:
        explicit Counting(int& times) : UITableViewCell(UITableViewCellStyleDefault, ""), times_(times) {}
        void layoutSubviews() override {
            UITableViewCell::layoutSubviews();
            ++times_;
        }

      private:
        int& times_;
    };
    contents_.makeCell = [&](UITableView&, NSIndexPath) { return std::make_shared<Counting>(times); };
    table_->reloadData();
    pass(2);
    times = 0;
    table_->scrollBy(44);
    window_->layoutIfNeeded();
    EXPECT_GE(times, 1);
    EXPECT_LE(times, 2); // its separators are made during the first
    window_->layoutIfNeeded();
    EXPECT_LE(times, 2);
}

TEST_F(TableViewTest, ScrollsToRowsWithTheirSurroundings) {
    load({{"", "", 100}});
    table_->scrollToRowAtIndexPath({0, 50});
    // The row ends at 35 + 51 * 44 = 2279; 60 more below it are shown.
    EXPECT_EQ(offset(), 2279 + 60 - 600);
    table_->scrollToRowAtIndexPath({0, 49});
    EXPECT_EQ(offset(), 1739);
    table_->scrollToRowAtIndexPath({0, 20});
    EXPECT_EQ(offset(), 35 + 20 * 44 - 60);
    table_->scrollToRowAtIndexPath({0, 200});
    EXPECT_EQ(offset(), 855);
    table_->scrollToRowAtIndexPath({0, 0}, true);
    EXPECT_EQ(offset(), 855);
    pass(0.5);
    EXPECT_EQ(offset(), 0);
}

} // namespace
} // namespace tallyforge::test
