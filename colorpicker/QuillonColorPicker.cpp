#include "colorpicker/QuillonColorPicker.h"

#include "colorpicker/ColorPalettes.h"
#include "colorpicker/SliderPanel.h"
#include "colorpicker/SwatchCell.h"
#include "colorpicker/UIColorZintara.h"
#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/NSNotificationCenter.h"
#include "preferences/PSListController.h"
#include "settings/ColorValues.h"
#include "uikit/UILabel.h"
#include "uikit/UISlider.h"

#include <array>

namespace tallyforge {

namespace {

constexpr CGFloat kRowHeight = 44;
constexpr std::string_view kCellIdentifier = "ColorSwatchCell";

constexpr std::array<std::string_view, 5> kSpecialSubtitles = {
    "*default color", "*transparent - hide", "*based on app icon",
    "*based on app icon - ignore all bright pixels", "*based on app icon - ignore all dark pixels"};
constexpr int kNoneRow = 0;
constexpr int kTransparentRow = 1;

const ColorRecord& recordAt(NSIndexPath path) {
    return palettes()[static_cast<size_t>(path.section)].colors[static_cast<size_t>(path.row)];
}

// What is stored is taken as text, whatever it is.
std::optional<std::string> storedText(const std::string& key, const std::string& domain) {
    CFPreferencesAppSynchronize(domain);
    auto value = CFPreferencesCopyAppValue(key, domain);
    if (!value) return std::nullopt;
    return value->isString() ? *value->asString() : value->description();
}

} // namespace

QuillonColorPicker::~QuillonColorPicker() {
    if (!table_) return;
    table_->setDataSource(nullptr);
    table_->setDelegate(nullptr);
}

void QuillonColorPicker::loadView() {
    table_ = PSMakeTable();
    table_->setRowHeight(kRowHeight);
    table_->setDataSource(this);
    table_->setDelegate(this);
    setView(table_);
}

void QuillonColorPicker::viewDidLoad() {
    if (const PSSpecifierRef& row = specifier()) {
        setTitle(row->name());
        defaultColor_ = row->textIfSet("default");
        prefKey_ = row->textIfSet("key");
        appID_ = row->textIfSet("defaults");
        notificationKey_ = row->textIfSet("PostNotification");
        refreshPreviewNotificationKey_ = row->textIfSet("PreviewNotification");
        disabledTitle_ = row->textIfSet("disabledTitle");
        disabledSubtitle_ = row->textIfSet("disabledSubtitle");
        allowAutomatic_ = row->flagForKey("allowAutomatic", true);
        allowTransparent_ = row->flagForKey("allowTransparent", true);
    }
    if (prefKey_ && appID_) selectedColor_ = storedText(*prefKey_, *appID_);
    if (!selectedColor_) selectedColor_ = defaultColor_;
}

int QuillonColorPicker::numberOfSectionsInTableView(UITableView&) {
    return static_cast<int>(palettes().size());
}

std::string QuillonColorPicker::tableViewTitleForHeaderInSection(UITableView&, int section) {
    return std::string(palettes()[static_cast<size_t>(section)].title);
}

int QuillonColorPicker::tableViewNumberOfRowsInSection(UITableView&, int section) {
    return static_cast<int>(palettes()[static_cast<size_t>(section)].colors.size());
}

CGFloat QuillonColorPicker::tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) {
    return path.section == kCustomPalette ? kCustomRowHeight : table.rowHeight();
}

bool QuillonColorPicker::rowEnabled(NSIndexPath path) const {
    if (path.section != kSpecialPalette || path.row == kNoneRow) return true;
    return path.row == kTransparentRow ? allowTransparent_ : allowAutomatic_;
}

std::shared_ptr<UITableViewCell> QuillonColorPicker::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                    NSIndexPath path) {
    auto cell =
        std::dynamic_pointer_cast<SwatchCell>(table.dequeueReusableCellWithIdentifier(kCellIdentifier));
    if (!cell) cell = std::make_shared<SwatchCell>(std::string(kCellIdentifier));
    cell->clear();

    const ColorRecord& record = recordAt(path);
    cell->textLabel().setText(std::string(record.name));
    if (path.section == kSpecialPalette) {
        showSpecialRow(*cell, path);
    } else {
        cell->detailTextLabel().setText(std::string(record.hex));
        cell->showColor(UIColorZintara::colorFromHexString(record.hex),
                        UIColorZintara::needsBorder(record.hex));
    }
    if (record.hex == selectedColor_) check(*cell, path);
    if (path.section == kCustomPalette) showCustomRow(*cell, path);
    cell->setNeedsLayout();
    return cell;
}

void QuillonColorPicker::showSpecialRow(SwatchCell& cell, NSIndexPath path) const {
    cell.detailTextLabel().setText(std::string(kSpecialSubtitles[static_cast<size_t>(path.row)]));
    if (path.row == kNoneRow) {
        if (disabledTitle_) cell.textLabel().setText(*disabledTitle_);
        if (disabledSubtitle_) cell.detailTextLabel().setText(*disabledSubtitle_);
    }
    cell.setUserInteractionEnabled(rowEnabled(path));
    cell.setTitleEnabled(rowEnabled(path));
}

void QuillonColorPicker::showCustomRow(SwatchCell& cell, NSIndexPath path) {
    const std::string shown = selectedColor_.value_or(std::string());
    const UIColor color = UIColorZintara::colorFromHexString(shown);
    cell.detailTextLabel().setText(shown);
    cell.showColor(color, true);
    cell.addSubview(getSliderViewWithColor(color));
    cell.setTag(kCustomCellTag);

    if (presetColorExists(shown))
        cell.setAccessoryType(UITableViewCellAccessoryType::none);
    else
        check(cell, path);
}

// The row that had the mark may be on screen too: a mixed colour can have become one of a palette.
void QuillonColorPicker::check(UITableViewCell& cell, NSIndexPath path) {
    const auto former = selectedIndexPath_ ? table_->cellForRowAtIndexPath(*selectedIndexPath_) : nullptr;
    if (former) former->setAccessoryType(UITableViewCellAccessoryType::none);
    cell.setAccessoryType(UITableViewCellAccessoryType::checkmark);
    selectedIndexPath_ = path;
}

bool QuillonColorPicker::tableViewShouldHighlightRowAtIndexPath(UITableView&, NSIndexPath path) {
    return rowEnabled(path);
}

void QuillonColorPicker::tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) {
    const auto self = shared_from_this(); // whoever is told may close the screen
    table.deselectRow(false);
    const auto cell = table.cellForRowAtIndexPath(path);
    if (!cell || cell->accessoryType() == UITableViewCellAccessoryType::checkmark) return;

    check(*cell, path);
    if (path.section == kCustomPalette) {
        setCustomColorNotifyTweak(std::nullopt, false); // the sliders' colour, even where a word was shown
        selectedColor_ = cell->detailText();
    } else {
        selectedColor_ = recordAt(path).hex;
        setCustomColorNotifyTweak(selectedColor_, true);
    }
    notifyTweak(*selectedColor_);
}

void QuillonColorPicker::notifyTweak(const std::string& value) {
    if (appID_) {
        CFPreferencesSetAppValue(prefKey_.value_or(std::string()), PropertyList::string(value), *appID_);
        CFPreferencesAppSynchronize(*appID_);
    }
    if (refreshPreviewNotificationKey_)
        NSNotificationCenter::defaultCenter().postNotificationName(*refreshPreviewNotificationKey_);
    if (notificationKey_)
        CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), *notificationKey_,
                                             nullptr, nullptr, true);
}

void QuillonColorPicker::setCustomColorNotifyTweak(const std::optional<std::string>& value, bool notify) {
    const auto sliders = ColorSliders(*view());
    if (!sliders) return;
    const auto& [red, green, blue] = *sliders;
    if (value) {
        const UIColor color = UIColorZintara::colorFromHexString(*value);
        red->setValue(static_cast<float>(color.red() * 255));
        green->setValue(static_cast<float>(color.green() * 255));
        blue->setValue(static_cast<float>(color.blue() * 255));
    }
    ShowSliderValues(*view());
    const std::string mixed = HexStringFromColor(red->value(), green->value(), blue->value());

    auto* custom = dynamic_cast<SwatchCell*>(view()->viewWithTag(kCustomCellTag));
    if (!custom) return;
    custom->showColor(UIColorZintara::colorFromHexString(mixed), true);
    custom->detailTextLabel().setText(mixed);
    if (!notify || custom->accessoryType() != UITableViewCellAccessoryType::checkmark) return;
    selectedColor_ = custom->detailText();
    notifyTweak(*selectedColor_);
}

std::shared_ptr<UIView> QuillonColorPicker::getSliderViewWithColor(const UIColor& color) {
    // The sliders may outlive the screen while it slides away.
    const auto weak = weak_from_this();
    auto tell = [weak](void (QuillonColorPicker::*action)()) {
        if (auto self = std::static_pointer_cast<QuillonColorPicker>(weak.lock())) ((*self).*action)();
    };
    return MakeSliderPanel(color, {[tell] { tell(&QuillonColorPicker::sliderAction); },
                                   [tell] { tell(&QuillonColorPicker::sliderDidEndSliding); }});
}

} // namespace tallyforge
