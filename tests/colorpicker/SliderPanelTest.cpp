// The sliders of the custom row: where they stand, what they show, and every value there and back.

#include "PickerFixture.h"
#include "quartzcore/TextLayout.h"
#include "settings/ColorValues.h"
#include "uikit/UILabel.h"

namespace tallyforge::test {
namespace {

class SliderPanelTest : public PickerTest {
  protected:
    void setPad(bool pad) {
        UIDevice::currentDevice().setUserInterfaceIdiom(pad ? UIUserInterfaceIdiomPad
                                                            : UIUserInterfaceIdiomPhone);
        window_->setFrame({CGPointZero, UIScreen::mainScreen().size()});
    }
    UIView& panel() {
        slider(kRedSliderTag);
        return *picker_->view()->viewWithTag(kSliderPanelTag);
    }
    std::string valueLabel(int tag) {
        auto* label = dynamic_cast<UILabel*>(panel().viewWithTag(tag + kSliderValueTagOffset));
        return label ? label->text() : "no label";
    }
};

TEST_F(SliderPanelTest, StandsInItsPlaceOnPhoneAndTablet) {
    for (const bool pad : {false, true}) {
        setPad(pad);
        store(text("#123456"));
        open();
        EXPECT_EQ(panel().frame(), CGRectMake(160, 0, pad ? 300 : 220, 130));
        EXPECT_EQ(panel().superview(), cell(kCustomRow).get());
        const std::pair<int, CGFloat> sliders[] = {
            {kRedSliderTag, 20}, {kGreenSliderTag, 60}, {kBlueSliderTag, 100}};
        const std::vector<float> values{0x12, 0x34, 0x56};
        for (size_t i = 0; i < 3; ++i) {
            UISlider& one = slider(sliders[i].first);
            EXPECT_EQ(one.frame(), CGRectMake(0, sliders[i].second, pad ? 250 : 170, 10));
            EXPECT_EQ(one.superview(), &panel());
            EXPECT_EQ(one.minimumValue(), 0);
            EXPECT_EQ(one.maximumValue(), 255);
            EXPECT_TRUE(one.continuous());
            EXPECT_EQ(one.backgroundColor(), UIColor::clearColor());
            EXPECT_EQ(one.value(), values[i]);
        }
    }
}

TEST_F(SliderPanelTest, TracksAndThumbsHaveTheirColours) {
    store(text("#808080"));
    open();
    const std::pair<int, uint32_t> channels[] = {
        {kRedSliderTag, 0xFF0000}, {kGreenSliderTag, 0x00FF00}, {kBlueSliderTag, 0x0000FF}};
    for (const auto& [tag, color] : channels) {
        UISlider& one = slider(tag);
        EXPECT_EQ(pixel(one.convertPointToView({4, 5}, nullptr)), color) << "the track at the left";
        EXPECT_EQ(pixel(one.convertPointToView(one.thumbCentreForValue(one.value()), nullptr)), color);
        EXPECT_EQ(pixel(one.convertPointToView({166, 5}, nullptr)), 0xB7B8B7U) << "the track at the right";
    }
}

// As whole and as read back, through the formatter, for each channel by itself.
TEST_F(SliderPanelTest, Every256ValuesOfEachChannelSurviveSliderAndBack) {
    auto kept = without("defaults");
    std::erase_if(kept, [](const auto& property) { return std::string_view(property.first) == "default"; });
    open(kept); // a mixed colour, and no file to wait for
    slider(kRedSliderTag);
    for (int channel = 0; channel < 3; ++channel) {
        for (int value = 0; value < 256; ++value) {
            std::array<char, 8> color{};
            const int n = value << (8 * (2 - channel));
            std::snprintf(color.data(), color.size(), "#%06X", static_cast<unsigned>(n) & 0xFFFFFFU);
            picker_->setCustomColorNotifyTweak(color.data(), true);
            ASSERT_EQ(*picker_->selectedColor(), color.data());
            ASSERT_EQ(cell(kCustomRow)->detailText(), color.data());
        }
    }
}

TEST_F(SliderPanelTest, FractionsAreCutNotRounded) {
    store(text("#000001"));
    open();
    slider(kRedSliderTag).setValue(254.9F);
    slider(kGreenSliderTag).setValue(127.9F);
    slider(kBlueSliderTag).setValue(0.99F);
    picker_->sliderDidEndSliding();
    EXPECT_EQ(stored(), text("#FE7F00"));
    EXPECT_EQ(valueLabel(kRedSliderTag), "254");
    EXPECT_EQ(valueLabel(kGreenSliderTag), "127");
    EXPECT_EQ(valueLabel(kBlueSliderTag), "0");
}

TEST_F(SliderPanelTest, ValuesFollowTheFinger) {
    store(text("#123456"));
    open();
    EXPECT_EQ(valueLabel(kGreenSliderTag), "52");
    slide(kGreenSliderTag, 255, [&] { EXPECT_EQ(valueLabel(kGreenSliderTag), "255"); });
    EXPECT_EQ(valueLabel(kRedSliderTag), "18");
}

TEST_F(SliderPanelTest, TextsStandFreeOfEachOther) {
    for (const bool pad : {false, true}) {
        setPad(pad);
        store(PropertyList::string("a stored text that is far too long for the room beside the sliders"));
        open();
        auto custom = cell(kCustomRow);
        for (const UILabel* label : {&custom->textLabel(), &custom->detailTextLabel()}) {
            const CGRect frame = label->convertRectToView(label->bounds(), custom.get());
            EXPECT_GE(frame.origin.x, 15 + 48 + 8);
            EXPECT_LE(CGRectGetMaxX(frame), kSliderValuesLeft);
        }
        EXPECT_FALSE(truncated(custom->textLabel()));
        for (const int tag : {kRedSliderTag, kGreenSliderTag, kBlueSliderTag}) {
            slide(tag, 255);
            auto* label = dynamic_cast<UILabel*>(panel().viewWithTag(tag + kSliderValueTagOffset));
            ASSERT_NE(label, nullptr);
            EXPECT_EQ(label->text(), "255");
            EXPECT_FALSE(truncated(*label));
            EXPECT_LE(label->frame().origin.x + label->frame().size.width, 0) << "left of its slider";
        }
        // The checkmark has its place right of the sliders.
        EXPECT_LT(160 + slider(kRedSliderTag).bounds().size.width,
                  table().rectForRowAtIndexPath(kCustomRow).size.width - 15 - 13);
    }
}

TEST_F(SliderPanelTest, ArrowKeysMoveByOneAndWrite) {
    store(text("#123456"));
    open();
    window_->focusView(&slider(kGreenSliderTag));
    told.clear();
    press(UIKey::right);
    EXPECT_EQ(told, written("#123556"));
    press(UIKey::left);
    press(UIKey::left);
    EXPECT_EQ(stored(), text("#123356"));
    press(UIKey::end);
    EXPECT_EQ(stored(), text("#12FF56"));
    press(UIKey::home);
    EXPECT_EQ(stored(), text("#120056"));
}

TEST_F(SliderPanelTest, TheKeyboardComesToTheCustomRowAndItsSliders) {
    open();
    press(UIKey::end);
    pass(1);
    window_->focusView(cell("Mocha").get());
    press(UIKey::down);
    EXPECT_EQ(window_->focusedView(), cell(kCustomRow).get());
    for (const int tag : {kRedSliderTag, kGreenSliderTag, kBlueSliderTag}) {
        press(UIKey::down);
        EXPECT_EQ(window_->focusedView(), &slider(tag));
    }
    told.clear();
    press(UIKey::up);
    press(UIKey::up);
    press(UIKey::up);
    press(UIKey::space);
    EXPECT_EQ(told, written("#FF3B30"));
    EXPECT_EQ(checkedOnScreen(), std::vector{kCustomRow});
}

TEST_F(SliderPanelTest, LettingGoOutsideWritesToo) {
    store(text("#123456"));
    open();
    UISlider& red = slider(kRedSliderTag);
    const CGPoint from = red.convertPointToView(red.thumbCentreForValue(red.value()), nullptr);
    told.clear();
    press(from);
    move({from.x + 40, from.y});
    move({from.x + 40, from.y - 300});
    lift({from.x + 40, from.y - 300});
    // The thumb has 170 - 28 points to go for 255 values.
    const int moved = static_cast<int>(0x12 + 40.0 * 255 / (170 - 28));
    std::array<char, 8> color{};
    std::snprintf(color.data(), color.size(), "#%02X3456", static_cast<unsigned>(moved) & 0xFFU);
    EXPECT_EQ(told, written(color.data()));
}

} // namespace
} // namespace tallyforge::test
