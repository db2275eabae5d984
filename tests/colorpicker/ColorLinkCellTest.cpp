#include "colorpicker/QuillonColorPickerLinkCell.h"

#include "PickerFixture.h"
#include "colorpicker/RegisterColorPicker.h"
#include "preferences/PSListController.h"
#include "uikit/UILabel.h"

namespace tallyforge::test {
namespace {

/// The row by itself, with a content view of the size that the test says.
class ColorLinkCellTest : public PickerTest {
  protected:
    static std::shared_ptr<QuillonColorPickerLinkCell> make(const Properties& properties = row()) {
        auto made = std::make_shared<QuillonColorPickerLinkCell>();
        EXPECT_TRUE(made->initWithStyleReuseIdentifierSpecifier(UITableViewCellStyleValue1, "color",
                                                                specifier(properties)));
        return made;
    }
    static void layOut(QuillonColorPickerLinkCell& cell) {
        cell.setNeedsLayout();
        cell.layoutIfNeeded();
    }
    /// As it is after a layout with that value stored.
    static std::shared_ptr<QuillonColorPickerLinkCell> showing(const PropertyList& value) {
        store(value);
        auto made = make();
        layOut(*made);
        return made;
    }
    static uint32_t color(const QuillonColorPickerLinkCell& cell) {
        return cell.thumbnailView()->image().bitmap()->pixel(12, 12);
    }
    static void expectSwatch(const QuillonColorPickerLinkCell& cell, uint32_t argb, CGFloat border) {
        EXPECT_FALSE(cell.thumbnailView()->hidden());
        EXPECT_TRUE(cell.valueLabel()->hidden());
        EXPECT_EQ(cell.thumbnailView()->image().size(), (CGSize{24, 24}));
        EXPECT_EQ(color(cell), argb);
        EXPECT_EQ(cell.thumbnailView()->layer()->borderWidth(), border);
    }
    static void expectWord(const QuillonColorPickerLinkCell& cell, const std::string& word) {
        EXPECT_TRUE(cell.thumbnailView()->hidden());
        EXPECT_FALSE(cell.valueLabel()->hidden());
        EXPECT_EQ(cell.valueLabel()->text(), word);
    }
};

TEST_F(ColorLinkCellTest, IsMadeWithBothViewsHidden) {
    auto cell = make();
    for (const UIView* view : {static_cast<UIView*>(cell->thumbnailView().get()),
                               static_cast<UIView*>(cell->valueLabel().get())}) {
        EXPECT_TRUE(view->hidden());
        EXPECT_EQ(view->superview(), cell->contentView().get());
        EXPECT_EQ(view->frame().origin, CGPointZero);
    }
    EXPECT_EQ(cell->valueLabel()->bounds().size, (CGSize{100, 32}));
    EXPECT_EQ(cell->thumbnailView()->bounds().size, (CGSize{24, 24}));
    EXPECT_EQ(cell->valueLabel()->font().pointSize(), 12);
    EXPECT_EQ(cell->valueLabel()->textColor(), UIColor::colorWithWhite(0.8, 1));
    EXPECT_EQ(cell->valueLabel()->textAlignment(), NSTextAlignmentRight);
    EXPECT_EQ(*cell->thumbnailView()->layer()->borderColor(), (CGColor{0.8, 0.8, 0.8, 1}));
    EXPECT_FALSE(cell->selectedColor().has_value());
    EXPECT_EQ(told, Log{}) << "nothing is read before the first layout";
}

TEST_F(ColorLinkCellTest, ShowsAColourAsASwatch) {
    expectSwatch(*showing(text("#FF0000")), 0xFFFF0000, 0);
    expectSwatch(*showing(text("#FFFFFF")), 0xFFFFFFFF, 1);
    expectSwatch(*showing(text("#ffffff")), 0xFFFFFFFF, 0); // only the one spelling has the border
}

TEST_F(ColorLinkCellTest, ShowsAnyWordAsItIsStored) {
    for (const char* word :
         {"none", "transparent", "automatic", "automatic_dark", "automatic_bright", "spotted", ""})
        expectWord(*showing(text(word)), word);
}

TEST_F(ColorLinkCellTest, WhatBeginsAsAColourIsASwatchEvenWhereItIsNone) {
    expectSwatch(*showing(text("#")), 0xFF000000, 0);
    expectSwatch(*showing(text("#hello")), 0xFF000000, 0);
    expectSwatch(*showing(text("#FF000080")), 0xFF000080, 0); // the last six digits
}

TEST_F(ColorLinkCellTest, StandsAtTheRightOfTheContent) {
    auto cell = showing(text("automatic_dark")); // a new cell is 320 x 44
    ASSERT_EQ(cell->contentView()->bounds().size, (CGSize{320, 44}));
    EXPECT_EQ(cell->thumbnailView()->frame(), CGRectMake(292, 10, 24, 24));
    EXPECT_EQ(cell->valueLabel()->frame(), CGRectMake(216, 6, 100, 32));
    cell->setFrame(CGRectMake(0, 0, 500, 61));
    layOut(*cell);
    EXPECT_EQ(cell->thumbnailView()->frame(), CGRectMake(472, 18.5, 24, 24));
    EXPECT_EQ(cell->valueLabel()->frame(), CGRectMake(396, 14.5, 100, 32));
}

TEST_F(ColorLinkCellTest, AnAbsentKeyShowsTheDefault) {
    auto cell = make();
    layOut(*cell);
    expectSwatch(*cell, 0xFFFF3B30, 0);
    EXPECT_EQ(cell->appID(), "com.example.colors");
    EXPECT_EQ(told, Log{"synchronize com.example.colors"});
}

TEST_F(ColorLinkCellTest, ItIsReadAgainAtEachLayout) {
    auto cell = showing(text("#FF0000"));
    store(text("automatic"));
    layOut(*cell);
    expectWord(*cell, "automatic");
    store(text("#00FF00"));
    layOut(*cell);
    expectSwatch(*cell, 0xFF00FF00, 0);
}

TEST_F(ColorLinkCellTest, WhatWasShownStaysWhenTheKeyGoesOrIsNoText) {
    auto cell = showing(text("#00FF00"));
    for (const PropertyList& other : {PropertyList::integer(5), PropertyList::boolean(true),
                                      PropertyList::array({text("#0000FF")}), PropertyList::data({35})}) {
        store(other);
        layOut(*cell);
        expectSwatch(*cell, 0xFF00FF00, 0);
        auto fresh = make();
        layOut(*fresh);
        expectSwatch(*fresh, 0xFFFF3B30, 0); // one that has shown nothing yet takes the default
    }
    CFPreferencesSetAppValue("fill", std::nullopt, kOwnDomain);
    CFPreferencesAppSynchronize(kOwnDomain);
    layOut(*cell);
    expectSwatch(*cell, 0xFF00FF00, 0);
}

// The screen compares what a row has read with what is stored; equal ones are not read again.
TEST_F(ColorLinkCellTest, TheRowKnowsWhatWasReadEvenWhereItIsNotShown) {
    store(PropertyList::integer(5));
    auto cell = make();
    layOut(*cell);
    EXPECT_EQ(*cell->specifier()->propertyForKey("value"), PropertyList::integer(5));
    CFPreferencesSetAppValue("fill", std::nullopt, kOwnDomain);
    layOut(*cell);
    EXPECT_EQ(*cell->specifier()->propertyForKey("value"), text("#FF3B30")) << "the default";
}

TEST_F(ColorLinkCellTest, WithoutKeyOrDomainTheDefaultShowsAndNothingIsRead) {
    store(text("#00FF00"));
    told.clear();
    for (const char* missing : {"key", "defaults"}) {
        auto cell = make(without(missing));
        layOut(*cell);
        expectSwatch(*cell, 0xFFFF3B30, 0);
    }
    EXPECT_EQ(told, Log{});
    auto bare = make({{"label", text("Fill colour")}});
    layOut(*bare);
    expectWord(*bare, "");
}

TEST_F(ColorLinkCellTest, SwatchAndBorderAreOnTheScreenAtEveryScale) {
    for (CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        auto cell = show(showing(text("#FFFFFF")));
        EXPECT_EQ(pixel({292.5, 22}), 0xCCCCCCU) << scale; // the border at the left
        EXPECT_EQ(pixel({315.5, 22}), 0xCCCCCCU) << scale;
        EXPECT_EQ(pixel({304, 22}), 0xFFFFFFU) << scale;
        cell = show(showing(text("#0000FF")));
        for (CGPoint inside : {CGPoint{292.5, 10.5}, CGPoint{315.5, 33.5}, CGPoint{304, 22}})
            EXPECT_EQ(pixel(inside), 0x0000FFU) << scale;
        EXPECT_EQ(pixel({291, 22}), 0xFFFFFFU) << scale;
        EXPECT_EQ(pixel({317, 22}), 0xFFFFFFU) << scale;
    }
}

// The row in a list: it leads to the picker, and shows the choice when one comes back.
TEST_F(ColorLinkCellTest, LeadsToThePickerAndBack) {
    struct Pane final : PSListController {
        Pane(const std::shared_ptr<PSSpecifier>& row) {
            row->setTarget(this);
            row->setSelf(row);
            specifiers_.push_back(row);
        }
    };
    RegisterColorPicker();
    auto pane = std::make_shared<Pane>(specifier(row({{"cell", text("PSLinkCell")},
                                                      {"cellClass", text("QuillonColorPickerLinkCell")},
                                                      {"detail", text("QuillonColorPicker")}})));
    navigation_ = std::make_shared<UINavigationController>(pane);
    window_->setRootViewController(navigation_);
    pass(0.1);
    auto link = [&] {
        return std::dynamic_pointer_cast<QuillonColorPickerLinkCell>(
            pane->table()->cellForRowAtIndexPath({0, 0}));
    };
    ASSERT_NE(link(), nullptr);
    EXPECT_EQ(link()->titleText(), "Fill colour");
    EXPECT_EQ(link()->accessoryType(), UITableViewCellAccessoryType::disclosureIndicator);
    expectSwatch(*link(), 0xFFFF3B30, 0);
    EXPECT_TRUE(link()->cellEnabled());

    pane->table()->selectRow({0, 0});
    pass(1);
    picker_ = std::dynamic_pointer_cast<QuillonColorPicker>(navigation_->topViewController());
    ASSERT_NE(picker_, nullptr);
    EXPECT_EQ(picker_->title(), "Fill colour");
    tapRow("Grape");
    navigation_->popViewController(true);
    pass(1);
    expectSwatch(*link(), 0xFF8000FF, 0);
    EXPECT_EQ(link()->detailText(), "#8000FF");
}

} // namespace
} // namespace tallyforge::test
