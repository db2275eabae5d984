// Screens as they are looked at: what is changed is on the screen at once.
#include "PanesFixture.h"

#include "coregraphics/Canvas.h"
#include "panes/PaneController.h"
#include "preferences/PSControlCells.h"
#include "preview/PreviewCell.h"
#include "rastergraphics/RasterGraphics.h"

namespace tallyforge::test {
namespace {

class ShownPaneTest : public PanesTest {
  protected:
    ShownPaneTest() {
        device_.furnish();
        Graphics::install(MakeRasterGraphics());
    }
    /// The screen on a display high enough for all of its rows.
    static std::shared_ptr<MarkPaneController> show(const char* name) {
        auto screen = std::dynamic_pointer_cast<MarkPaneController>(pane(name));
        screen->view()->setFrame(CGRectMake(0, 0, 375, 2400));
        screen->view()->layoutIfNeeded();
        screen->viewWillAppear(false);
        screen->viewDidAppear(false);
        screen->view()->layoutIfNeeded();
        return screen;
    }
    template <class Cell>
    static std::shared_ptr<Cell> cellOf(PSListController& screen, const char* identifier) {
        auto path = screen.indexPathForSpecifier(screen.specifierForID(identifier));
        return path ? std::dynamic_pointer_cast<Cell>(screen.table()->cellForRowAtIndexPath(*path)) : nullptr;
    }
};

TEST_F(ShownPaneTest, RandomisedRowsShowTheirValuesAtOnce) {
    auto badge = show("badgeListController");
    SeedRandomSource(3);
    badge->randomize();
    for (const char* key : {"badgesize", "badgerotation", "badgeoffsetX", "badgeoffsetY"}) {
        auto cell = cellOf<PSSliderTableCell>(*badge, key);
        ASSERT_NE(cell, nullptr) << key;
        EXPECT_EQ(cell->slider()->value(), stored(key)->floatValue()) << key;
    }
    auto roman = cellOf<PSSwitchTableCell>(*badge, "convertbadgeroman");
    ASSERT_NE(roman, nullptr);
    EXPECT_STREQ(roman->className(), "TallyforgeSwitchTableCell");
    EXPECT_EQ(roman->switchControl()->isOn(), stored("convertbadgeroman")->boolValue());
    for (const char* key : {"badgeshape", "badgepos"}) {
        auto cell = cellOf<PSTableCell>(*badge, key);
        ASSERT_NE(cell, nullptr) << key;
        std::string title;
        for (const PSSpecifier::Choice& choice : badge->specifierForID(key)->choices())
            if (choice.value.intValue() == stored(key)->intValue()) title = choice.title;
        EXPECT_NE(title, "");
        EXPECT_EQ(cell->detailText(), title) << key;
    }
}

TEST_F(ShownPaneTest, ThePreviewFollowsEveryChange) {
    auto badge = show("badgeListController");
    auto preview = cellOf<PreviewCell>(*badge, "preview");
    ASSERT_NE(preview, nullptr);
    auto before = preview->badgeView();
    ASSERT_NE(before, nullptr);
    CGRect at = before->frame();
    choose(*badge, "badgepos", PropertyList::integer(0));
    auto after = preview->badgeView();
    ASSERT_NE(after, nullptr);
    EXPECT_NE(after, before);
    EXPECT_EQ(after->frame().origin.x, -9); // 9 points beyond the icon's left edge
    EXPECT_LT(after->frame().origin.x, at.origin.x);
}

TEST_F(ShownPaneTest, WhatIsAbsentShowsAsItIsDrawn) {
    auto box = show("closeboxListController");
    auto rotation = cellOf<PSSliderTableCell>(*box, "closeboxrotation");
    ASSERT_NE(rotation, nullptr);
    EXPECT_EQ(rotation->slider()->value(), 180);
    auto shape = cellOf<PSTableCell>(*box, "closeboxshape");
    ASSERT_NE(shape, nullptr);
    EXPECT_EQ(shape->detailText(), "Triangle");
    auto parts = cellOf<PSTableCell>(*box, "presetcloseboxbg");
    ASSERT_NE(parts, nullptr);
    EXPECT_EQ(parts->detailText(), "Plate and cross");
}

} // namespace
} // namespace tallyforge::test
