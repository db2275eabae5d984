#pragma once

#include "../screens/ScreenFixture.h"
#include "PaletteTable.h"
#include "colorpicker/ColorPalettes.h"
#include "colorpicker/QuillonColorPicker.h"
#include "colorpicker/SliderPanel.h"
#include "support/EffectLog.h"
#include "uikit/UIImageView.h"
#include "uikit/UINavigationController.h"
#include "uikit/UISlider.h"

#include <optional>
#include <utility>

namespace tallyforge::test {

inline const std::string kOwnDomain = "com.example.colors";
inline constexpr NSIndexPath kCustomRow{kCustomPalette, 0};

/// The picker in a window, opened from a row that the test says, with every effect written down.
class PickerTest : public ScreenFixture {
  protected:
    using Properties = std::vector<std::pair<const char*, PropertyList>>;

    ~PickerTest() override {
        window_->setRootViewController(nullptr);
        UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
    }
    static PropertyList text(const char* value) { return PropertyList::string(value); }
    /// What a colour row has, and whatever else the test says.
    static Properties row(const Properties& more = {}) {
        Properties all{{"label", text("Fill colour")},
                       {"key", text("fill")},
                       {"defaults", text("com.example.colors")},
                       {"default", text("#FF3B30")},
                       {"PostNotification", text("com.example.changed")},
                       {"PreviewNotification", text("previewChanged")}};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    static Properties without(const char* key) {
        Properties all = row();
        std::erase_if(all, [&](const auto& property) { return std::string_view(property.first) == key; });
        return all;
    }
    static std::shared_ptr<PSSpecifier> specifier(const Properties& properties) {
        auto made = std::make_shared<PSSpecifier>();
        for (const auto& [key, value] : properties)
            made->setPropertyForKey(value, key);
        return made;
    }
    QuillonColorPicker& open(const Properties& properties = row()) {
        picker_ = std::make_shared<QuillonColorPicker>();
        if (!properties.empty()) picker_->setSpecifier(specifier(properties));
        navigation_ = std::make_shared<UINavigationController>(picker_);
        window_->setRootViewController(navigation_);
        window_->layoutIfNeeded();
        return *picker_;
    }
    static void store(const PropertyList& value) {
        CFPreferencesSetAppValue("fill", value, kOwnDomain);
        CFPreferencesAppSynchronize(kOwnDomain);
    }
    static std::optional<PropertyList> stored() { return CFPreferencesCopyAppValue("fill", kOwnDomain); }

    UITableView& table() { return *picker_->table(); }
    /// The row's cell, scrolled to.
    std::shared_ptr<UITableViewCell> cell(NSIndexPath path) {
        table().scrollToRowAtIndexPath(path);
        window_->layoutIfNeeded();
        return table().cellForRowAtIndexPath(path);
    }
    static NSIndexPath pathOf(std::string_view name) {
        for (const PaletteRow& row : kPaletteRows) {
            if (row.name == name) return {row.section, row.row};
        }
        ADD_FAILURE() << name;
        return {};
    }
    std::shared_ptr<UITableViewCell> cell(const char* name) { return cell(pathOf(name)); }
    /// With a finger, at the row's left, where the custom row has no slider.
    void tapRow(NSIndexPath path) {
        ASSERT_NE(cell(path), nullptr);
        const CGRect rect = table().rectForRowAtIndexPath(path);
        tap(table().convertPointToView({rect.origin.x + 30, CGRectGetMidY(rect)}, nullptr));
        window_->layoutIfNeeded();
    }
    void tapRow(const char* name) { tapRow(pathOf(name)); }
    UISlider& slider(int tag) {
        cell(kCustomRow);
        auto* found = dynamic_cast<UISlider*>(picker_->view()->viewWithTag(tag));
        if (!found) std::abort();
        return *found;
    }
    /// The finger takes the thumb to the value; `between` is called before it lets go.
    void slide(int tag, float value, const std::function<void()>& between = {}) {
        UISlider& moved = slider(tag);
        auto at = [&](float v) { return moved.convertPointToView(moved.thumbCentreForValue(v), nullptr); };
        const CGPoint from = at(moved.value()), to = at(value);
        press(from);
        move(to);
        if (between) between();
        lift(to);
        window_->layoutIfNeeded();
    }
    std::vector<float> sliderValues() {
        return {slider(kRedSliderTag).value(), slider(kGreenSliderTag).value(),
                slider(kBlueSliderTag).value()};
    }
    /// The rows on screen that have a checkmark.
    std::vector<NSIndexPath> checkedOnScreen() {
        std::vector<NSIndexPath> checked;
        for (NSIndexPath path : table().indexPathsForVisibleRows()) {
            auto shown = table().cellForRowAtIndexPath(path);
            if (shown && shown->accessoryType() == UITableViewCellAccessoryType::checkmark)
                checked.push_back(path);
        }
        return checked;
    }
    /// Every row that has one, going through the whole table.
    std::vector<NSIndexPath> checkedRows() {
        std::vector<NSIndexPath> checked;
        for (const PaletteRow& row : kPaletteRows) {
            const NSIndexPath path{row.section, row.row};
            if (cell(path)->accessoryType() == UITableViewCellAccessoryType::checkmark)
                checked.push_back(path);
        }
        return checked;
    }
    /// The colour in the middle of the row's swatch; nothing without a swatch.
    std::optional<uint32_t> swatch(NSIndexPath path) {
        const UIImage& image = cell(path)->imageView().image();
        if (!image) return std::nullopt;
        return image.bitmap()->pixel(image.bitmap()->width() / 2, image.bitmap()->height() / 2);
    }
    static Log written(const std::string& value) {
        return {"set com.example.colors fill " + value, "synchronize com.example.colors",
                "post previewChanged", "darwin com.example.changed"};
    }

    EffectLog effects_;
    Log& told = effects_.lines;
    std::shared_ptr<QuillonColorPicker> picker_;
    std::shared_ptr<UINavigationController> navigation_;
};

} // namespace tallyforge::test
