#include "preferences/PSControlCells.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tallyforge {

namespace {

constexpr CGFloat kInset = 15;
constexpr CGFloat kSliderRowHeight = 72;
constexpr CGFloat kSliderTop = 35; // of the slider in its row, below title and value
constexpr CGFloat kSliderHeight = 31;
constexpr CGFloat kSegmentHeight = 29;
constexpr CGFloat kTitleToSegments = 12;
constexpr CGFloat kTitleRow = 40; // the height in which title and value of a slider are centred

constexpr CGFloat kGap = 8;                 // between title and value
constexpr CGFloat kUntitledValueWidth = 64; // the same whatever the value, so that the track stands still

// The number without zeros at its end and with a minus sign as texts have it; nought has no sign.
std::string shortened(std::string text) {
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
    }
    if (text == "-0") return "0";
    if (text.starts_with('-')) text.replace(0, 1, "\u2212");
    return text;
}

// The row's number, where it is one that a slider can have.
float finiteNumber(const PSSpecifier& specifier, std::string_view key, float otherwise) {
    const double number = specifier.numberForKey(key, otherwise);
    return std::abs(number) <= std::numeric_limits<float>::max() ? static_cast<float>(number) : otherwise;
}

CGFloat widthOf(const std::string& text, const UIFont& font) {
    return std::ceil(NSStringBoundingSize(text, {10000, 44}, font).width);
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
            showValue(slider_->value());
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
    slider_->setMinimumValue(finiteNumber(*specifier(), "min", 0));
    slider_->setMaximumValue(finiteNumber(*specifier(), "max", 1));
    slider_->setContinuous(specifier()->flagForKey("isContinuous", true));
    slider_->setKeyStep(finiteNumber(*specifier(), "step", 0));
    valueLabel_->setHidden(!specifier()->flagForKey("showValue", true));
    // While the thumb is held the finger says what the value is.
    const auto kept = specifier()->performGetter();
    if (!slider_->tracking()) slider_->setValue(kept ? kept->floatValue() : slider_->minimumValue());
    const bool shown = kept && !slider_->tracking() && std::isfinite(kept->floatValue());
    showValue(shown ? kept->floatValue() : slider_->value());
}

void PSSliderTableCell::showValue(float value) {
    valueLabel_->setText(valueText(value));
    setNeedsLayout(); // a longer text takes more room
}

void PSSliderTableCell::setCellEnabled(bool enabled) {
    PSTableCell::setCellEnabled(enabled);
    slider_->setEnabled(enabled);
    valueLabel_->setAlpha(enabled ? 1 : kDisabledAlpha);
}

std::optional<CGFloat> PSSliderTableCell::preferredHeight(CGFloat) {
    return specifier() && specifier()->name().empty() ? 44 : kSliderRowHeight;
}

std::string PSSliderTableCell::valueText(float value) const {
    const float range = slider_->maximumValue() - slider_->minimumValue();
    const int digits = range > 50 ? 0 : range > 20 ? 1 : 2;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", digits, static_cast<double>(value));
    return shortened(text.data()) + (specifier() ? specifier()->textForKey("unit") : std::string());
}

void PSSliderTableCell::layoutSubviews() {
    PSTableCell::layoutSubviews();
    const CGSize size = contentView()->bounds().size;
    const CGFloat room = size.width - 2 * kInset;
    const bool shows = !valueLabel_->hidden();
    if (!titleText().empty()) {
        const CGFloat value =
            shows ? std::min(room / 2, widthOf(valueLabel_->text(), valueLabel_->font()) + 1) : 0;
        titleLabel()->setFrame(CGRectMake(kInset, 0, room - value - (shows ? kGap : 0), kTitleRow));
        valueLabel_->setFrame(CGRectMake(size.width - kInset - value, 0, value, kTitleRow));
        slider_->setFrame(CGRectMake(kInset, kSliderTop, room, kSliderHeight));
    } else {
        const CGFloat taken = shows ? kUntitledValueWidth : 0;
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
        const CGFloat title = std::min(size.width / 2, widthOf(titleText(), titleLabel()->font()));
        titleLabel()->setFrame(CGRectMake(kInset, 0, title, size.height));
        left += title + kTitleToSegments;
    }
    segments_->setFrame(CGRectMake(left, (size.height - kSegmentHeight) / 2,
                                   std::max<CGFloat>(0, size.width - left - kInset), kSegmentHeight));
}

} // namespace tallyforge
