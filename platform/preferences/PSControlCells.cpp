#include "preferences/PSControlCells.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace tallyforge {

namespace {

constexpr CGFloat kInset = 15;
constexpr CGFloat kSliderRowHeight = 72;
constexpr CGFloat kSliderTop = 35; // of the slider in its row, below title and value
constexpr CGFloat kSliderHeight = 31;
constexpr CGFloat kSegmentHeight = 29;
constexpr CGFloat kTitleRow = 40; // the height in which title and value of a slider are centred

std::string withoutTrailingZeros(std::string text) {
    if (text.find('.') == std::string::npos) return text;
    while (text.back() == '0')
        text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

} // namespace

bool PSSwitchTableCell::initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                              std::shared_ptr<PSSpecifier> specifier) {
    if (!PSTableCell::initWithStyleReuseIdentifierSpecifier(style, std::move(reuseIdentifier),
                                                            std::move(specifier)))
        return false;
    switch_ = std::make_shared<UISwitch>();
    switch_->addTargetForControlEvents(
        [this](UIControl&) {
            if (auto row = this->specifier()) row->performSetter(PropertyList::boolean(switch_->isOn()));
        },
        UIControlEventValueChanged);
    setAccessoryView(switch_);
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    return true;
}

void PSSwitchTableCell::refreshCellContents() {
    PSTableCell::refreshCellContents();
    if (!specifier()) return;
    auto value = specifier()->performGetter();
    bool on = value && value->boolValue();
    if (!switch_->tracking() && on != switch_->isOn()) switch_->setOn(on, window() != nullptr);
}

void PSSwitchTableCell::setCellEnabled(bool enabled) {
    PSTableCell::setCellEnabled(enabled);
    switch_->setEnabled(enabled);
}

bool PSSliderTableCell::initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                              std::shared_ptr<PSSpecifier> specifier) {
    if (!PSTableCell::initWithStyleReuseIdentifierSpecifier(style, std::move(reuseIdentifier),
                                                            std::move(specifier)))
        return false;
    slider_ = std::make_shared<UISlider>();
    slider_->addTargetForControlEvents(
        [this](UIControl&) {
            valueLabel_->setText(valueText(slider_->value()));
            if (auto row = this->specifier()) row->performSetter(PropertyList::floatNumber(slider_->value()));
        },
        UIControlEventValueChanged);
    contentView()->addSubview(slider_);
    valueLabel_ = std::make_shared<UILabel>(CGRectZero);
    valueLabel_->setTextColor(UIColor::colorWithRed(142.0 / 255, 142.0 / 255, 147.0 / 255, 1));
    valueLabel_->setTextAlignment(NSTextAlignmentRight);
    contentView()->addSubview(valueLabel_);
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    return true;
}

void PSSliderTableCell::refreshCellContents() {
    PSTableCell::refreshCellContents();
    if (!specifier()) return;
    slider_->setMinimumValue(static_cast<float>(specifier()->numberForKey("min", 0)));
    slider_->setMaximumValue(static_cast<float>(specifier()->numberForKey("max", 1)));
    slider_->setContinuous(specifier()->flagForKey("isContinuous", true));
    slider_->setKeyStep(static_cast<float>(specifier()->numberForKey("step", 0)));
    auto value = specifier()->performGetter();
    // While the thumb is held the finger says what the value is.
    if (!slider_->tracking()) slider_->setValue(value ? value->floatValue() : slider_->minimumValue());
    valueLabel_->setHidden(!specifier()->flagForKey("showValue", true));
    valueLabel_->setText(valueText(slider_->tracking() || !value ? slider_->value() : value->floatValue()));
}

void PSSliderTableCell::setCellEnabled(bool enabled) {
    PSTableCell::setCellEnabled(enabled);
    slider_->setEnabled(enabled);
}

std::optional<CGFloat> PSSliderTableCell::preferredHeight(CGFloat) {
    return specifier() && specifier()->name().empty() ? 44 : kSliderRowHeight;
}

std::string PSSliderTableCell::valueText(float value) const {
    const float range = slider_->maximumValue() - slider_->minimumValue();
    const int digits = range > 50 ? 0 : range > 20 ? 1 : 2;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", digits, static_cast<double>(value));
    return withoutTrailingZeros(text.data()) + (specifier() ? specifier()->textForKey("unit") : std::string());
}

void PSSliderTableCell::layoutSubviews() {
    PSTableCell::layoutSubviews();
    const CGSize size = contentView()->bounds().size;
    const bool titled = !titleText().empty();
    const CGFloat room = size.width - 2 * kInset;
    const CGFloat valueWidth =
        std::min(room / 2, std::ceil(NSStringBoundingSize(valueLabel_->text(), {10000, 44}, valueLabel_->font()).width) + 1);
    if (titled) {
        textLabel().setFrame(CGRectMake(kInset, 0, room - valueWidth - 8, kTitleRow));
        valueLabel_->setFrame(CGRectMake(size.width - kInset - valueWidth, 0, valueWidth, kTitleRow));
        slider_->setFrame(CGRectMake(kInset, kSliderTop, room, kSliderHeight));
    } else {
        const bool shows = !valueLabel_->hidden();
        const CGFloat taken = shows ? 64 : 0; // the same whatever the value, so that the track stands still
        slider_->setFrame(CGRectMake(kInset, (size.height - kSliderHeight) / 2, room - taken, kSliderHeight));
        valueLabel_->setFrame(CGRectMake(size.width - kInset - taken, 0, taken, size.height));
    }
}

bool PSSegmentTableCell::initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                               std::shared_ptr<PSSpecifier> specifier) {
    if (!PSTableCell::initWithStyleReuseIdentifierSpecifier(style, std::move(reuseIdentifier),
                                                            std::move(specifier)))
        return false;
    segments_ = std::make_shared<UISegmentedControl>(std::vector<std::string>());
    segments_->addTargetForControlEvents(
        [this](UIControl&) {
            auto row = this->specifier();
            if (!row) return;
            auto choices = row->choices();
            int index = segments_->selectedSegmentIndex();
            if (index >= 0 && static_cast<size_t>(index) < choices.size())
                row->performSetter(choices[static_cast<size_t>(index)].value);
        },
        UIControlEventValueChanged);
    contentView()->addSubview(segments_);
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    return true;
}

void PSSegmentTableCell::refreshCellContents() {
    PSTableCell::refreshCellContents();
    if (!specifier()) return;
    auto choices = specifier()->choices();
    auto value = specifier()->performGetter();
    std::vector<std::string> titles;
    int selected = -1;
    for (const PSSpecifier::Choice& choice : choices) {
        if (value && choice.stands(*value)) selected = static_cast<int>(titles.size());
        titles.push_back(choice.title);
    }
    if (titles != segments_->titles()) segments_->setTitles(std::move(titles));
    if (!segments_->tracking()) segments_->setSelectedSegmentIndex(selected);
}

void PSSegmentTableCell::setCellEnabled(bool enabled) {
    PSTableCell::setCellEnabled(enabled);
    segments_->setEnabled(enabled);
}

void PSSegmentTableCell::layoutSubviews() {
    PSTableCell::layoutSubviews();
    const CGSize size = contentView()->bounds().size;
    CGFloat left = kInset;
    if (!titleText().empty()) {
        CGFloat title = std::min(size.width / 2, std::ceil(NSStringBoundingSize(titleText(), {10000, 44}, textLabel().font()).width));
        textLabel().setFrame(CGRectMake(kInset, 0, title, size.height));
        left += title + 12;
    }
    segments_->setFrame(CGRectMake(left, (size.height - kSegmentHeight) / 2, size.width - left - kInset, kSegmentHeight));
}

} // namespace tallyforge
