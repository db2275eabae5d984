#include "colorpicker/SliderPanel.h"

#include "uikit/UIDevice.h"
#include "uikit/UILabel.h"
#include "uikit/UISlider.h"

#include <string>

namespace tallyforge {

namespace {

constexpr CGFloat kPanelLeft = 160;
constexpr CGFloat kSliderHeight = 10;
constexpr CGFloat kValueWidth = 20;
constexpr CGFloat kValueHeight = 14;
constexpr CGFloat kValueGrey = 0.45;

struct Channel {
    const char* name;
    int tag;
    CGFloat top;
    UIColor tint;
};

const std::array<Channel, 3>& channels() {
    static const std::array<Channel, 3> all = {{{"Red", kRedSliderTag, 20, UIColor::redColor()},
                                                {"Green", kGreenSliderTag, 60, UIColor::greenColor()},
                                                {"Blue", kBlueSliderTag, 100, UIColor::blueColor()}}};
    return all;
}

std::shared_ptr<UISlider> makeSlider(const Channel& channel, CGFloat width, CGFloat component,
                                     const SliderPanelActions& actions) {
    auto slider = std::make_shared<UISlider>(CGRectMake(0, channel.top, width, kSliderHeight));
    slider->setTag(channel.tag);
    slider->setAccessibilityLabel(channel.name);
    slider->setMinimumValue(0);
    slider->setMaximumValue(255);
    slider->setKeyStep(1);
    slider->setContinuous(true);
    slider->setBackgroundColor(UIColor::clearColor());
    slider->setMinimumTrackTintColor(channel.tint);
    slider->setThumbTintColor(channel.tint);
    slider->setValue(static_cast<float>(component * 255));
    slider->addTargetForControlEvents([action = actions.sliderAction](UIControl&) { action(); },
                                      UIControlEventValueChanged);
    slider->addTargetForControlEvents([action = actions.sliderDidEndSliding](UIControl&) { action(); },
                                      UIControlEventTouchUpInside | UIControlEventTouchUpOutside);
    return slider;
}

// Left of the slider, which begins where the panel does.
std::shared_ptr<UILabel> makeValueLabel(const Channel& channel) {
    const CGFloat middle = channel.top + kSliderHeight / 2;
    auto label = std::make_shared<UILabel>(
        CGRectMake(kSliderValuesLeft - kPanelLeft, middle - kValueHeight / 2, kValueWidth, kValueHeight));
    label->setTag(channel.tag + kSliderValueTagOffset);
    label->setFont(UIFont::systemFontOfSize(10));
    label->setTextColor(UIColor::colorWithWhite(kValueGrey, 1));
    label->setTextAlignment(NSTextAlignmentRight);
    label->setUserInteractionEnabled(false);
    return label;
}

} // namespace

std::shared_ptr<UIView> MakeSliderPanel(const UIColor& color, const SliderPanelActions& actions) {
    const bool pad = UIDevice::currentDevice().isPad();
    const CGFloat sliderWidth = pad ? 250 : 170, panelWidth = pad ? 300 : 220;
    auto panel = std::make_shared<UIView>(CGRectMake(kPanelLeft, 0, panelWidth, kCustomRowHeight));
    panel->setTag(kSliderPanelTag);
    const std::array<CGFloat, 3> components = {color.red(), color.green(), color.blue()};
    for (size_t i = 0; i < components.size(); ++i) {
        panel->addSubview(makeSlider(channels()[i], sliderWidth, components[i], actions));
        panel->addSubview(makeValueLabel(channels()[i]));
    }
    ShowSliderValues(*panel);
    return panel;
}

std::optional<std::array<UISlider*, 3>> ColorSliders(UIView& within) {
    std::array<UISlider*, 3> sliders{};
    for (size_t i = 0; i < sliders.size(); ++i) {
        sliders[i] = dynamic_cast<UISlider*>(within.viewWithTag(channels()[i].tag));
        if (!sliders[i]) return std::nullopt;
    }
    return sliders;
}

void ShowSliderValues(UIView& within) {
    const auto sliders = ColorSliders(within);
    if (!sliders) return;
    for (UISlider* slider : *sliders) {
        if (auto* label = dynamic_cast<UILabel*>(within.viewWithTag(slider->tag() + kSliderValueTagOffset)))
            label->setText(std::to_string(static_cast<int>(slider->value())));
    }
}

} // namespace tallyforge
