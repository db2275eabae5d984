#include "appselect/QuillonAppSelect.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/LocalizedCompare.h"
#include "mobileservices/ApplicationIcon.h"
#include "preferences/PSListController.h"
#include "uikit/UIDevice.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"
#include "uikit/UISwitch.h"

#include <algorithm>
#include <utility>

namespace tallyforge {

namespace {

constexpr const char* kCellIdentifier = "MyCellIdentifier";
constexpr CGFloat kRowHeight = 44;
constexpr int kSystemSection = 0;

// Both lists in the order of the names, so that a row of one belongs to the same row of the other. The
// catalogue is in the order of the identifiers, in which apps of one name stay.
void SortByName(const QuillonAppList::Catalogue& apps, std::vector<std::string>& names,
                std::vector<std::string>& identifiers) {
    std::vector<const QuillonAppList::Catalogue::value_type*> sorted;
    sorted.reserve(apps.size());
    for (const auto& app : apps)
        sorted.push_back(&app);
    std::ranges::stable_sort(sorted, [](const auto* a, const auto* b) {
        return localizedStandardCompare(a->second, b->second) < 0;
    });
    names.clear();
    identifiers.clear();
    for (const auto* app : sorted) {
        names.push_back(app->second);
        identifiers.push_back(app->first);
    }
}

} // namespace

QuillonAppSelect::~QuillonAppSelect() {
    if (!tableView_) return;
    tableView_->setDataSource(nullptr);
    tableView_->setDelegate(nullptr);
}

void QuillonAppSelect::loadView() {
    tableView_ = PSMakeTable();
    tableView_->setRowHeight(kRowHeight);
    tableView_->setDataSource(this);
    tableView_->setDelegate(this);
    setView(tableView_);
}

void QuillonAppSelect::viewDidLoad() {
    PSViewController::viewDidLoad();
    const QuillonAppList& apps = QuillonAppList::sharedApplicationList();
    SortByName(apps.allSystemApplications(), systemAppNames_, systemAppIDs_);
    SortByName(apps.allUserApplications(), userAppNames_, userAppIDs_);
    allAppIDs_ = systemAppIDs_;
    allAppIDs_.insert(allAppIDs_.end(), userAppIDs_.begin(), userAppIDs_.end());
    readSpecifier();
    if (prefKey_) readStoredList();
}

void QuillonAppSelect::readSpecifier() {
    const PSSpecifierRef& row = specifier();
    if (!row) return;
    setTitle(row->name());
    prefKey_ = row->textIfSet("key");
    defaultValue_ = row->flagForKey("defaultValue", false);
    prefAppID_ = row->textForKey("defaults");
    prefNotification_ = row->textIfSet("PostNotification");
}

void QuillonAppSelect::readStoredList() {
    CFPreferencesAppSynchronize(prefAppID_);
    auto stored = CFPreferencesCopyAppValue(*prefKey_, prefAppID_);
    if (PropertyList::Array* list = stored ? stored->asArray() : nullptr) enabledApps_ = std::move(*list);
}

int QuillonAppSelect::numberOfSectionsInTableView(UITableView&) {
    return 2;
}

std::string QuillonAppSelect::tableViewTitleForHeaderInSection(UITableView&, int section) {
    return section == kSystemSection ? "SYSTEM APPS" : "USER APPS";
}

std::string QuillonAppSelect::tableViewTitleForFooterInSection(UITableView& table, int section) {
    return tableViewNumberOfRowsInSection(table, section) == 0 ? "None are installed." : std::string();
}

int QuillonAppSelect::tableViewNumberOfRowsInSection(UITableView&, int section) {
    return static_cast<int>(section == kSystemSection ? systemAppIDs_.size() : userAppIDs_.size());
}

CGFloat QuillonAppSelect::tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath) {
    return kRowHeight;
}

// Rows are operated by their switches.
bool QuillonAppSelect::tableViewShouldHighlightRowAtIndexPath(UITableView&, NSIndexPath) {
    return false;
}

std::shared_ptr<UITableViewCell> QuillonAppSelect::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                  NSIndexPath path) {
    auto cell = table.dequeueReusableCellWithIdentifier(kCellIdentifier);
    if (!cell) cell = makeCell();
    const bool system = path.section == kSystemSection;
    const auto row = static_cast<size_t>(path.row);
    const size_t tag = system ? row : systemAppIDs_.size() + row;
    cell->textLabel().setText((system ? systemAppNames_ : userAppNames_)[row]);
    auto& shown = static_cast<UISwitch&>(*cell->accessoryView());
    shown.setTag(static_cast<int>(tag));
    setSwitchValue(shown);
    const UIImage icon =
        UIImageApplicationIconForBundleIdentifier(allAppIDs_[tag], 0, UIScreen::mainScreen().scale());
    // Without an icon the row keeps the one it had, wherever it was used before.
    if (icon) cell->imageView().setImage(icon.imageWithRenderingMode(UIImageRenderingModeAlwaysOriginal));
    return cell;
}

std::shared_ptr<UITableViewCell> QuillonAppSelect::makeCell() {
    auto cell = std::make_shared<UITableViewCell>(UITableViewCellStyleDefault, kCellIdentifier);
    cell->setSelectionStyle(UITableViewCellSelectionStyle::none);
    auto turned = std::make_shared<UISwitch>(CGRectZero);
    turned->setOn(defaultValue_);
    turned->addTargetForControlEvents(
        [weak = weak_from_this()](UIControl& sender) {
            if (const auto screen = weak.lock())
                static_cast<QuillonAppSelect&>(*screen).changeSwitch(static_cast<UISwitch&>(sender));
        },
        UIControlEventValueChanged);
    cell->setAccessoryView(std::move(turned));
    return cell;
}

void QuillonAppSelect::setSwitchValue(UISwitch& shown) const {
    const auto id = PropertyList::string(allAppIDs_[static_cast<size_t>(shown.tag())]);
    const bool listed = std::ranges::find(enabledApps_, id) != enabledApps_.end();
    shown.setOn(listed != defaultValue_);
}

void QuillonAppSelect::changeSwitch(const UISwitch& turned) {
    auto id = PropertyList::string(allAppIDs_[static_cast<size_t>(turned.tag())]);
    if (turned.isOn() == defaultValue_)
        std::erase(enabledApps_, id);
    else
        enabledApps_.push_back(std::move(id));
    syncPrefs(true);
}

void QuillonAppSelect::syncPrefs(bool notify) const {
    CFPreferencesSetAppValue(prefKey_.value_or(std::string()), PropertyList::array(enabledApps_), prefAppID_);
    CFPreferencesAppSynchronize(prefAppID_);
    if (notify && prefNotification_)
        CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), *prefNotification_,
                                             nullptr, nullptr, true);
}

} // namespace tallyforge
