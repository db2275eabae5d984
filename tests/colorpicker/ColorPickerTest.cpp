// Opening the picker, what its rows show, choosing, and what is written and announced.

#include "PickerFixture.h"

namespace tallyforge::test {
namespace {

class ColorPickerTest : public PickerTest {};

TEST_F(ColorPickerTest, OpensAsAGroupedTableAsLargeAsTheScreen) {
    QuillonColorPicker& picker = open();
    EXPECT_EQ(picker.title(), "Fill colour");
    EXPECT_EQ(table().rowHeight(), 44);
    const CGSize screen = UIScreen::mainScreen().size(), own = QuillonColorPicker().view()->bounds().size;
    EXPECT_EQ(own.width, screen.width);
    EXPECT_EQ(own.height, screen.height);
    ASSERT_EQ(table().numberOfSections(), 4);
    const std::pair<std::string, int> sections[] = {
        {"Special", 5}, {"iOS Palette", 10}, {"Crayons", 48}, {"Custom", 1}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(table().titleForHeaderInSection(i), sections[i].first);
        EXPECT_EQ(table().numberOfRowsInSection(i), sections[i].second);
    }
    EXPECT_EQ(table().rectForRowAtIndexPath({1, 3}).size.height, 44);
    EXPECT_EQ(table().rectForRowAtIndexPath(kCustomRow).size.height, 130);
}

TEST_F(ColorPickerTest, SynchronisesBeforeItReads) {
    open();
    EXPECT_EQ(told, Log{"synchronize com.example.colors"});
    EXPECT_EQ(*picker_->selectedColor(), "#FF3B30") << "the default";
    store(text("#007AFF"));
    EXPECT_EQ(*open().selectedColor(), "#007AFF");
}

TEST_F(ColorPickerTest, PaletteRowsShowNameValueAndSwatch) {
    store(text("none"));
    open();
    for (const PaletteRow& row : kPaletteRows) {
        if (row.section == kSpecialPalette || row.section == kCustomPalette) continue;
        auto shown = cell({row.section, row.row});
        EXPECT_EQ(shown->reuseIdentifier(), "ColorSwatchCell");
        EXPECT_EQ(shown->titleText(), row.name);
        EXPECT_EQ(shown->detailText(), row.hex);
        EXPECT_EQ(shown->imageView().image().size(), (CGSize{48, 24}));
        const auto digits = static_cast<uint32_t>(std::stoul(std::string(row.hex.substr(1)), nullptr, 16));
        EXPECT_EQ(swatch({row.section, row.row}), 0xFF000000U | digits) << row.name;
        const CALayer& layer = *shown->imageView().layer();
        EXPECT_EQ(layer.borderWidth(), row.name == "Snow" ? 1 : 0) << row.name;
        if (layer.borderWidth() > 0) {
            EXPECT_EQ(*layer.borderColor(), (CGColor{0.8, 0.8, 0.8, 1}));
        }
        EXPECT_EQ(shown->viewWithTag(kSliderPanelTag), nullptr);
    }
}

TEST_F(ColorPickerTest, CellsHaveTheirFontsColoursAndNoHighlight) {
    open();
    auto shown = cell("Purple");
    EXPECT_EQ(shown->style(), UITableViewCellStyleSubtitle);
    EXPECT_EQ(shown->selectionStyle(), UITableViewCellSelectionStyle::none);
    EXPECT_EQ(shown->textLabel().font().pointSize(), 14);
    EXPECT_EQ(shown->textLabel().textColor(), UIColor::blackColor());
    EXPECT_EQ(shown->detailTextLabel().font().pointSize(), 10);
    EXPECT_EQ(shown->detailTextLabel().textColor(), UIColor::colorWithWhite(0.7, 1));
    EXPECT_EQ(shown->accessoryType(), UITableViewCellAccessoryType::none);
}

TEST_F(ColorPickerTest, SpecialRowsSayWhatTheyDo) {
    open();
    const std::pair<const char*, const char*> rows[] = {
        {"None", "*default color"},
        {"Transparent", "*transparent - hide"},
        {"Automatic", "*based on app icon"},
        {"Automatic - only dark colors", "*based on app icon - ignore all bright pixels"},
        {"Automatic - only bright colors", "*based on app icon - ignore all dark pixels"}};
    for (int i = 0; i < 5; ++i) {
        auto shown = cell({kSpecialPalette, i});
        EXPECT_EQ(shown->titleText(), rows[i].first);
        EXPECT_EQ(shown->detailText(), rows[i].second);
        EXPECT_FALSE(shown->imageView().image());
        EXPECT_TRUE(shown->userInteractionEnabled());
        EXPECT_TRUE(shown->textLabel().enabled());
    }
}

TEST_F(ColorPickerTest, TheFirstRowIsCalledWhatTheSpecifierSays) {
    open(row({{"disabledTitle", text("No border")}}));
    EXPECT_EQ(cell({0, 0})->titleText(), "No border");
    EXPECT_EQ(cell({0, 0})->detailText(), "*default color");
    open(row({{"disabledSubtitle", text("The fill reaches the edge")}}));
    EXPECT_EQ(cell({0, 0})->titleText(), "None");
    EXPECT_EQ(cell({0, 0})->detailText(), "The fill reaches the edge");
    EXPECT_EQ(cell({0, 1})->titleText(), "Transparent") << "only the first row";
    tapRow({0, 0});
    EXPECT_EQ(stored(), text("none")) << "whatever it is called";
}

TEST_F(ColorPickerTest, RowsThatAreNotAllowedAreGreyAndIgnoreTaps) {
    const struct {
        const char* flag;
        std::vector<int> off;
    } cases[] = {{"allowTransparent", {1}}, {"allowAutomatic", {2, 3, 4}}};
    for (const auto& [flag, off] : cases) {
        open(row({{flag, PropertyList::boolean(false)}}));
        for (int i = 0; i < 5; ++i) {
            const bool allowed = std::find(off.begin(), off.end(), i) == off.end();
            auto shown = cell({0, i});
            EXPECT_EQ(shown->userInteractionEnabled(), allowed) << flag << i;
            EXPECT_EQ(shown->textLabel().enabled(), allowed) << flag << i;
            EXPECT_EQ(shown->selectable(), allowed) << "for the keyboard";
            EXPECT_FALSE(shown->hidden());
            told.clear();
            tapRow({0, i});
            EXPECT_EQ(told.empty(), !allowed) << flag << i;
        }
    }
}

TEST_F(ColorPickerTest, AFlagMayBeANumberAndCountsAsYesWhenItIsNone) {
    open(row({{"allowAutomatic", PropertyList::integer(0)}, {"allowTransparent", PropertyList::integer(1)}}));
    EXPECT_FALSE(cell({0, 2})->userInteractionEnabled());
    EXPECT_TRUE(cell({0, 1})->userInteractionEnabled());
    open(row({{"allowAutomatic", PropertyList::array({})}}));
    EXPECT_TRUE(cell({0, 2})->userInteractionEnabled());
}

TEST_F(ColorPickerTest, EveryStoredPresetHasTheOnlyCheckmark) {
    for (const PaletteRow& row : kPaletteRows) {
        if (row.section == kCustomPalette) continue;
        store(PropertyList::string(std::string(row.hex)));
        open();
        EXPECT_EQ(checkedRows(), (std::vector<NSIndexPath>{{row.section, row.row}})) << row.name;
        EXPECT_EQ(picker_->selectedIndexPath(), (NSIndexPath{row.section, row.row}));
        EXPECT_EQ(cell(kCustomRow)->detailText(), row.hex);
    }
}

TEST_F(ColorPickerTest, AStoredAutomaticIsAPresetAndShowsInTheCustomRowAsItIs) {
    store(text("automatic"));
    open();
    EXPECT_EQ(checkedRows(), (std::vector<NSIndexPath>{{0, 2}}));
    auto custom = cell(kCustomRow);
    EXPECT_EQ(custom->detailText(), "automatic");
    EXPECT_EQ(custom->accessoryType(), UITableViewCellAccessoryType::none);
    EXPECT_EQ(swatch(kCustomRow), 0xFF000000U);
    EXPECT_EQ(sliderValues(), (std::vector<float>{0, 0, 0}));
}

TEST_F(ColorPickerTest, WhatIsNoPresetIsCustom) {
    const struct {
        PropertyList value;
        std::string shown;
        uint32_t color;
    } cases[] = {
        {text("#123456"), "#123456", 0xFF123456},
        {text("#ffffff"), "#ffffff", 0xFFFFFFFF}, // lower case is another value
        {text("spotted"), "spotted", 0xFF000000}, // unknown word
        {text(""), "", 0xFF000000},
        {text("#"), "#", 0xFF000000},
        {text("#123456789ABC"), "#123456789ABC", 0xFFFFFFFF}, // too long for a number
        {PropertyList::integer(7), "7", 0xFF000000},
        {PropertyList::floatNumber(0.5F), "0.5", 0xFF000000},
        {PropertyList::boolean(true), "1", 0xFF000000},
    };
    for (const auto& [value, shown, color] : cases) {
        store(value);
        open();
        EXPECT_EQ(checkedRows(), (std::vector<NSIndexPath>{kCustomRow})) << shown;
        auto custom = cell(kCustomRow);
        EXPECT_EQ(custom->titleText(), "Custom");
        EXPECT_EQ(custom->detailText(), shown);
        EXPECT_EQ(swatch(kCustomRow), color) << shown;
        EXPECT_EQ(custom->imageView().layer()->borderWidth(), 1);
        EXPECT_EQ(custom->tag(), 205);
        // Moving a slider replaces it.
        slide(kBlueSliderTag, 17);
        std::array<char, 8> mixed{};
        std::snprintf(mixed.data(), mixed.size(), "#%04X11", (color >> 8) & 0xFFFFU);
        EXPECT_EQ(stored(), text(mixed.data())) << shown;
    }
}

TEST_F(ColorPickerTest, ValuesOfOtherKindsAndLongTextsEndNothing) {
    for (const PropertyList& value :
         {PropertyList::array({text("#FF0000")}), PropertyList::dictionary({}), PropertyList::data({1, 2, 3}),
          PropertyList::date(1), PropertyList::string(std::string(100000, 'x'))}) {
        store(value);
        open();
        EXPECT_EQ(checkedRows(), (std::vector<NSIndexPath>{kCustomRow}));
        tapRow("System Blue");
        EXPECT_EQ(stored(), text("#007AFF"));
    }
}

TEST_F(ColorPickerTest, ChoosingWritesThenTellsThePreviewThenTheSystem) {
    open();
    cell("System Blue");
    told.clear();
    tapRow("System Blue");
    EXPECT_EQ(told, written("#007AFF"));
    EXPECT_EQ(stored(), text("#007AFF"));
    EXPECT_EQ(*picker_->selectedColor(), "#007AFF");
    EXPECT_EQ(checkedRows(), (std::vector<NSIndexPath>{{1, 1}}));
    EXPECT_EQ(sliderValues(), (std::vector<float>{0, 122, 255}));
    EXPECT_EQ(cell(kCustomRow)->detailText(), "#007AFF");
    EXPECT_EQ(swatch(kCustomRow), 0xFF007AFFU);
}

// On a screen that shows all rows, the custom row follows at once.
TEST_F(ColorPickerTest, TheCustomRowOnScreenFollowsAChoice) {
    open();
    window_->setFrame(CGRectMake(0, 0, 375, 4000));
    navigation_->view()->setFrame(window_->bounds());
    picker_->view()->setFrame(window_->bounds());
    window_->layoutIfNeeded();
    told.clear();
    const NSIndexPath blue = pathOf("System Blue");
    table().selectRow(blue);
    EXPECT_EQ(told, written("#007AFF")) << "the sliders' movement writes nothing of its own";
    EXPECT_EQ(sliderValues(), (std::vector<float>{0, 122, 255}));
    auto custom = table().cellForRowAtIndexPath(kCustomRow);
    EXPECT_EQ(custom->detailText(), "#007AFF");
    EXPECT_EQ(custom->accessoryType(), UITableViewCellAccessoryType::none);
    EXPECT_EQ(checkedOnScreen(), std::vector{blue});

    table().selectRow({0, 3}); // a special word
    EXPECT_EQ(*picker_->selectedColor(), "automatic_dark");
    EXPECT_EQ(sliderValues(), (std::vector<float>{0, 0, 0}));
    EXPECT_EQ(custom->detailText(), "#000000");
    EXPECT_EQ(stored(), text("automatic_dark"));
    EXPECT_EQ(checkedOnScreen(), (std::vector<NSIndexPath>{{0, 3}}));
}

TEST_F(ColorPickerTest, TheCheckedRowWritesNothing) {
    store(text("#007AFF"));
    open();
    cell("System Blue");
    told.clear();
    tapRow("System Blue");
    EXPECT_EQ(told, Log{});
    store(text("#123456"));
    open();
    cell(kCustomRow);
    told.clear();
    tapRow(kCustomRow);
    EXPECT_EQ(told, Log{});
}

TEST_F(ColorPickerTest, SlidersOfACustomColourWriteOnceWhenTheyAreLetGo) {
    store(text("#123456"));
    open();
    EXPECT_EQ(sliderValues(), (std::vector<float>{0x12, 0x34, 0x56}));
    told.clear();
    slide(kRedSliderTag, 200, [&] {
        EXPECT_EQ(told, Log{}) << "while the finger is down";
        EXPECT_EQ(cell(kCustomRow)->detailText(), "#C83456");
        EXPECT_EQ(swatch(kCustomRow), 0xFFC83456U);
    });
    EXPECT_EQ(told, written("#C83456"));
    EXPECT_EQ(*picker_->selectedColor(), "#C83456");
}

TEST_F(ColorPickerTest, SlidersWriteNothingWhileAPaletteRowIsChosen) {
    store(text("#FF0000"));
    open();
    told.clear();
    slide(kGreenSliderTag, 51);
    EXPECT_EQ(told, Log{});
    EXPECT_EQ(*picker_->selectedColor(), "#FF0000");
    EXPECT_EQ(cell(kCustomRow)->detailText(), "#FF3300");
    // The custom row then takes what the sliders show.
    tapRow(kCustomRow);
    EXPECT_EQ(told, written("#FF3300"));
    EXPECT_EQ(checkedOnScreen(), std::vector{kCustomRow});
    told.clear();
    slide(kGreenSliderTag, 52);
    EXPECT_EQ(told, written("#FF3400"));
}

// The word stays in the palette; what is mixed is a colour.
TEST_F(ColorPickerTest, TheCustomRowAfterAWordTakesTheSlidersColour) {
    for (const char* word : {"automatic", "none", "transparent", "custom"}) {
        store(text(word));
        open();
        EXPECT_EQ(cell(kCustomRow)->detailText(), word);
        told.clear();
        tapRow(kCustomRow);
        EXPECT_EQ(told, written("#000000")) << word;
        EXPECT_EQ(cell(kCustomRow)->detailText(), "#000000");
    }
}

// A mixed colour that has become one of a palette: its row, when it comes on screen, takes the mark over.
TEST_F(ColorPickerTest, ThereIsNeverMoreThanOneCheckmark) {
    store(text("#123456"));
    open();
    slide(kRedSliderTag, 0);
    slide(kGreenSliderTag, 128);
    slide(kBlueSliderTag, 0);
    EXPECT_EQ(checkedOnScreen(), std::vector{kCustomRow});
    const NSIndexPath clover = pathOf("Clover"); // #008000
    ASSERT_NE(cell(clover), nullptr);
    EXPECT_EQ(checkedOnScreen(), std::vector{clover});
    table().setContentOffset({0, table().maximumOffset() - 200});
    window_->layoutIfNeeded();
    EXPECT_LE(checkedOnScreen().size(), 1U);
    told.clear();
    tapRow("Tangerine");
    EXPECT_EQ(told, written("#FF8000")) << "once";
    EXPECT_EQ(checkedOnScreen(), std::vector{pathOf("Tangerine")});
}

// The keyboard keeps the custom row's cell although it is off screen.
TEST_F(ColorPickerTest, AWordChosenWhileTheSlidersHaveTheKeyboardStands) {
    store(text("#123456"));
    open();
    window_->focusView(&slider(kGreenSliderTag));
    press(UIKey::right);
    ASSERT_EQ(stored(), text("#123556"));
    table().setContentOffset({0, 0});
    window_->layoutIfNeeded();
    ASSERT_NE(picker_->view()->viewWithTag(kCustomCellTag), nullptr);
    told.clear();
    table().selectRow({0, 2});
    EXPECT_EQ(told, written("automatic"));
    EXPECT_EQ(checkedOnScreen(), (std::vector<NSIndexPath>{{0, 2}}));
}

TEST_F(ColorPickerTest, OneMissingSliderIsEnoughForNothingToBeDone) {
    store(text("#123456"));
    open();
    slider(kGreenSliderTag).removeFromSuperview();
    told.clear();
    picker_->setCustomColorNotifyTweak("#FF0000", true);
    EXPECT_EQ(told, Log{});
    EXPECT_EQ(cell(kCustomRow)->detailText(), "#123456");
}

TEST_F(ColorPickerTest, AClosedScreenIsFreedAndItsSlidersDoNothing) {
    store(text("#123456"));
    open();
    auto red = std::dynamic_pointer_cast<UISlider>(slider(kRedSliderTag).shared_from_this());
    window_->setRootViewController(nullptr);
    navigation_.reset();
    const std::weak_ptr<QuillonColorPicker> gone = picker_;
    picker_.reset();
    EXPECT_TRUE(gone.expired());
    told.clear();
    red->setValue(200);
    red->sendActionsForControlEvents(UIControlEventValueChanged | UIControlEventTouchUpInside);
    EXPECT_EQ(told, Log{});
}

TEST_F(ColorPickerTest, ADefaultThatIsNoTextCountsAsNone) {
    auto properties = without("default");
    properties.emplace_back("default", PropertyList::integer(5));
    open(properties);
    EXPECT_FALSE(picker_->selectedColor().has_value());
}

TEST_F(ColorPickerTest, WithoutSlidersOnScreenNothingOfThemIsDone) {
    store(text("#123456"));
    open();
    ASSERT_EQ(picker_->view()->viewWithTag(kSliderPanelTag), nullptr) << "below the screen";
    told.clear();
    picker_->setCustomColorNotifyTweak("#FF0000", true);
    picker_->sliderDidEndSliding();
    EXPECT_EQ(told, Log{});
    EXPECT_EQ(*picker_->selectedColor(), "#123456");
}

TEST_F(ColorPickerTest, WithoutADomainTheDefaultShowsAndOnlyTheNotificationsAreSent) {
    open(without("defaults"));
    EXPECT_EQ(told, Log{});
    EXPECT_EQ(*picker_->selectedColor(), "#FF3B30");
    tapRow("Pink");
    EXPECT_EQ(told, (Log{"post previewChanged", "darwin com.example.changed"}));
    EXPECT_EQ(checkedRows(), std::vector{pathOf("Pink")});
}

TEST_F(ColorPickerTest, WithoutAKeyTheWriteIsMadeAndKeepsNothing) {
    open(without("key"));
    EXPECT_EQ(told, Log{});
    tapRow("Pink");
    EXPECT_EQ(told, (Log{"set com.example.colors  #FF2D55", "synchronize com.example.colors",
                         "post previewChanged", "darwin com.example.changed"}));
    EXPECT_EQ(CFPreferencesCopyKeyList(kOwnDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost)
                  .value_or(std::vector<std::string>{}),
              std::vector<std::string>{});
}

TEST_F(ColorPickerTest, WithoutNotificationsTheWriteIsSilent) {
    open(without("PostNotification"));
    told.clear();
    tapRow("Pink");
    EXPECT_EQ(told, (Log{"set com.example.colors fill #FF2D55", "synchronize com.example.colors",
                         "post previewChanged"}));
    open(without("PreviewNotification"));
    told.clear();
    tapRow("Orange");
    EXPECT_EQ(told, (Log{"set com.example.colors fill #FF9500", "synchronize com.example.colors",
                         "darwin com.example.changed"}));
}

TEST_F(ColorPickerTest, WithoutAValueOrDefaultTheCustomRowIsEmptyAndChosen) {
    open(without("default"));
    EXPECT_FALSE(picker_->selectedColor().has_value());
    EXPECT_EQ(checkedRows(), std::vector{kCustomRow});
    EXPECT_EQ(cell(kCustomRow)->detailText(), "");
    EXPECT_EQ(swatch(kCustomRow), 0xFF000000U);
    tapRow("Pink");
    EXPECT_EQ(stored(), text("#FF2D55"));
}

TEST_F(ColorPickerTest, WithoutARowItOpensAndWritesNothing) {
    open({});
    tapRow("Pink");
    EXPECT_EQ(told, Log{});
    EXPECT_EQ(*picker_->selectedColor(), "#FF2D55");
}

TEST_F(ColorPickerTest, WhoeverIsToldMayCloseTheScreen) {
    open();
    auto closing = NSNotificationCenter::defaultCenter().addObserver("previewChanged", [this] {
        window_->setRootViewController(nullptr);
        navigation_.reset();
        picker_.reset();
    });
    cell("Pink");
    const CGRect rect = table().rectForRowAtIndexPath(pathOf("Pink"));
    tap(table().convertPointToView({rect.origin.x + 30, CGRectGetMidY(rect)}, nullptr));
    EXPECT_EQ(stored(), text("#FF2D55"));
    EXPECT_EQ(told.back(), "darwin com.example.changed");
    EXPECT_EQ(picker_, nullptr);
}

} // namespace
} // namespace tallyforge::test
