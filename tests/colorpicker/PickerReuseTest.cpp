// Cells are used again for other rows: nothing of the former row may stay.

#include "PickerFixture.h"
#include "uikit/UILabel.h"

#include <random>

namespace tallyforge::test {
namespace {

class PickerReuseTest : public PickerTest {
  protected:
    /// Every cell on screen shows just what its row has.
    void expectClean() {
        int custom = 0;
        for (NSIndexPath path : table().indexPathsForVisibleRows()) {
            auto shown = table().cellForRowAtIndexPath(path);
            ASSERT_NE(shown, nullptr);
            const PaletteRow& record = rowAt(path);
            const bool isCustom = path.section == kCustomPalette, special = path.section == kSpecialPalette;
            custom += isCustom ? 1 : 0;
            EXPECT_EQ(shown->titleText(), record.name);
            EXPECT_EQ(shown->viewWithTag(kSliderPanelTag) != nullptr, isCustom) << record.name;
            EXPECT_EQ(shown->tag(), isCustom ? kCustomCellTag : 0) << record.name;
            EXPECT_EQ(bool(shown->imageView().image()), !special) << record.name;
            EXPECT_EQ(shown->imageView().layer()->borderWidth(), isCustom || record.hex == "#FFFFFF" ? 1 : 0)
                << record.name;
            const bool off = special && path.row > 0;
            EXPECT_EQ(shown->userInteractionEnabled(), !off) << record.name;
            EXPECT_EQ(shown->textLabel().enabled(), !off) << record.name;
            if (!special) expectColor(*shown, isCustom ? *picker_->selectedColor() : std::string(record.hex));
            const bool chosen =
                isCustom ? !isPreset(*picker_->selectedColor()) : record.hex == picker_->selectedColor();
            EXPECT_EQ(shown->accessoryType() == UITableViewCellAccessoryType::checkmark, chosen)
                << record.name;
        }
        EXPECT_LE(checkedOnScreen().size(), 1U);
        EXPECT_LE(custom, 1);
        int panels = 0;
        for (const auto& view : table().subviews())
            panels += view->viewWithTag(kSliderPanelTag) ? 1 : 0;
        EXPECT_EQ(panels, custom);
    }
    static const PaletteRow& rowAt(NSIndexPath path) {
        return *std::find_if(std::begin(kPaletteRows), std::end(kPaletteRows), [&](const PaletteRow& row) {
            return row.section == path.section && row.row == path.row;
        });
    }
    static bool isPreset(std::string_view value) {
        return std::any_of(std::begin(kPaletteRows), std::end(kPaletteRows),
                           [&](const PaletteRow& row) { return row.hex == value; });
    }
    static void expectColor(UITableViewCell& shown, const std::string& value) {
        EXPECT_EQ(shown.detailText(), value);
        const auto& bitmap = shown.imageView().image().bitmap();
        const auto digits = value[0] == '#' ? std::stoul(value.substr(1), nullptr, 16) : 0;
        EXPECT_EQ(bitmap->pixel(24, 12), 0xFF000000U | digits) << value;
    }
    static Properties greyed() {
        return row({{"allowAutomatic", PropertyList::boolean(false)},
                    {"allowTransparent", PropertyList::boolean(false)}});
    }
};

TEST_F(PickerReuseTest, JumpingUpAndDownLeavesNothingStray) {
    for (const char* chosen : {"#FFFFFF", "#5856D6", "#804000", "none", "#123456"}) {
        store(text(chosen));
        open(greyed());
        const CGFloat bottom = table().maximumOffset();
        std::mt19937 random(7);
        std::uniform_real_distribution<CGFloat> anywhere(0, bottom);
        for (int i = 0; i < 150; ++i) {
            table().setContentOffset({0, i % 3 == 0 ? 0 : i % 3 == 1 ? bottom : anywhere(random)});
            window_->layoutIfNeeded();
            expectClean();
        }
    }
}

TEST_F(PickerReuseTest, ChoosingBetweenTheJumpsLeavesNothingStray) {
    store(text("#123456"));
    open(greyed());
    std::mt19937 random(11);
    for (int i = 0; i < 60; ++i) {
        table().setContentOffset(
            {0, std::uniform_real_distribution<CGFloat>(0, table().maximumOffset())(random)});
        window_->layoutIfNeeded();
        auto visible = table().indexPathsForVisibleRows();
        std::erase(visible, kCustomRow); // which stays the chosen one with any colour
        const NSIndexPath chosen = visible[random() % visible.size()];
        table().selectRow(chosen);
        window_->layoutIfNeeded();
        expectClean();
        if (chosen.section != kSpecialPalette || chosen.row == 0) {
            EXPECT_EQ(checkedOnScreen(), std::vector{chosen});
        }
    }
}

TEST_F(PickerReuseTest, FlickingFastLeavesNothingStray) {
    store(text("#0000FF"));
    open(greyed());
    for (int flick = 0; flick < 12; ++flick) {
        const bool up = flick % 4 < 2;
        drag({300, up ? 600.0 : 120.0}, {300, up ? 120.0 : 600.0}, 0.05);
        for (int frame = 0; frame < 40; ++frame) {
            pass(1.0 / 60);
            expectClean();
        }
    }
}

TEST_F(PickerReuseTest, ACustomRowMadeAnewHasItsSlidersAtTheChosenColour) {
    store(text("#123456"));
    open();
    slide(kRedSliderTag, 255);
    for (int i = 0; i < 5; ++i) {
        table().setContentOffset({0, 0});
        window_->layoutIfNeeded();
        EXPECT_EQ(picker_->view()->viewWithTag(kCustomCellTag), nullptr);
        EXPECT_EQ(sliderValues(), (std::vector<float>{255, 0x34, 0x56}));
        EXPECT_EQ(cell(kCustomRow)->detailText(), "#FF3456");
    }
}

// A choice made while the custom row is off screen shows in it when it comes.
TEST_F(PickerReuseTest, ChoicesWithoutTheCustomRowReachItLater) {
    store(text("#123456"));
    open();
    cell(kCustomRow);
    tapRow("Pink");
    ASSERT_EQ(picker_->view()->viewWithTag(kCustomCellTag), nullptr);
    EXPECT_EQ(sliderValues(), (std::vector<float>{0xFF, 0x2D, 0x55}));
    EXPECT_EQ(cell(kCustomRow)->accessoryType(), UITableViewCellAccessoryType::none);
    EXPECT_EQ(checkedRows(), std::vector{pathOf("Pink")});
}

TEST_F(PickerReuseTest, FewCellsServeAllRows) {
    open();
    for (int i = 0; i < 30; ++i) {
        table().setContentOffset({0, i % 2 ? table().maximumOffset() : 0});
        window_->layoutIfNeeded();
    }
    EXPECT_LE(table().subviews().size(), 24U); // rows and captions of one screen
}

} // namespace
} // namespace tallyforge::test
