#include "themes/ConditionalThemesController.h"

#include "appselect/QuillonAppList.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/Dispatch.h"
#include "foundation/LocalizedCompare.h"
#include "settings/Settings.h"
#include "settings/SilentFailures.h"
#include "themes/TieFiles.h"
#include "uikit/UIAlertView.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr int64_t kUntilCellsAreThere = NSEC_PER_SEC / 10;
constexpr CGFloat kDimmed = 0.3;

PropertyList Text(std::string_view text) {
    return PropertyList::string(std::string(text));
}

} // namespace

conditionalthemesListController::Apps conditionalthemesListController::sortedApps() {
    Apps apps;
    for (auto& [identifier, name] : QuillonAppList::sharedApplicationList().allNonHiddenApplications())
        apps.emplace_back(name, identifier);
    std::stable_sort(apps.begin(), apps.end(), [](const auto& a, const auto& b) {
        return localizedStandardCompare(a.first, b.first) < 0;
    });
    return apps;
}

PropertyList conditionalthemesListController::valueAppDataFromTarget() {
    listedApps_ = sortedApps();
    PropertyList::Array values{Text(kFoldersIdentifier)};
    for (const auto& [name, identifier] : *listedApps_)
        values.push_back(Text(identifier));
    return PropertyList::array(std::move(values));
}

PropertyList conditionalthemesListController::titlesAppDataFromTarget() {
    PropertyList::Array titles{Text("Folders")};
    for (const auto& [name, identifier] : listedApps_ ? *listedApps_ : sortedApps())
        titles.push_back(Text(name));
    listedApps_.reset();
    return PropertyList::array(std::move(titles));
}

PropertyList conditionalthemesListController::valueThemeDataFromTarget() {
    listedThemes_ = ListThemesForScreen().themes;
    PropertyList::Array values{Text(kNoTheme)};
    for (const Theme& theme : *listedThemes_)
        values.push_back(Text(theme.path));
    return PropertyList::array(std::move(values));
}

PropertyList conditionalthemesListController::titlesThemeDataFromTarget() {
    PropertyList::Array titles{Text("Disabled")};
    for (const Theme& theme : listedThemes_ ? *listedThemes_ : ListThemesForScreen().themes)
        titles.push_back(Text(theme.name));
    listedThemes_.reset();
    return PropertyList::array(std::move(titles));
}

std::shared_ptr<NSObject> conditionalthemesListController::getViewForID(std::string_view identifier) {
    const PSSpecifierRef row = specifierForID(identifier);
    return row ? row->objectForKey("control") : nullptr;
}

std::shared_ptr<NSObject> conditionalthemesListController::getCellForID(std::string_view identifier) {
    const PSSpecifierRef row = specifierForID(identifier);
    return row ? row->objectForKey("cellObject") : nullptr;
}

// The "value" of the app's row; empty when none is chosen.
std::string conditionalthemesListController::chosenApp() {
    const PSSpecifierRef row = specifierForID(kPerAppApp);
    return row ? row->textForKey("value") : std::string();
}

void conditionalthemesListController::setPerAppThemeEnableDisable() {
    dims_ = true;
    const auto cell = std::dynamic_pointer_cast<UIView>(getCellForID(kPerAppTheme));
    if (!cell) return;
    const bool chosen = !chosenApp().empty();
    cell->setUserInteractionEnabled(chosen);
    cell->setAlpha(chosen ? 1 : kDimmed);
}

void conditionalthemesListController::setValueForSpecifier(const PropertyList& value,
                                                           const PSSpecifierRef& specifier) {
    setPreferenceValueSpecifier(value, specifier);
    reloadSpecifier(specifier);
    NSUserDefaults::standardUserDefaults().synchronize();
}

void conditionalthemesListController::setPerAppValueForSpecifier(const PropertyList& value,
                                                                 const PSSpecifierRef& specifier) {
    if (!specifier) return;
    setValueForSpecifier(value, specifier);
    setPerAppThemeEnableDisable();
    if (specifier->identifier() == kPerAppApp) showTieOf(chosenApp());
    if (specifier->identifier() == kPerAppTheme) tie(value);
}

void conditionalthemesListController::showTieOf(std::string_view app) {
    setValueForSpecifier(Text(TieOf(app)), specifierForID(kPerAppTheme));
    setPerAppThemeEnableDisable();
}

void conditionalthemesListController::tie(const PropertyList& theme) {
    const std::string app = chosenApp();
    TellSilentFailure(std::string(kTieFolder) + app,
                      SetTie(app, theme.isString() ? *theme.asString() : theme.description()));
}

void conditionalthemesListController::clearperappthemes() {
    UIAlertController alert("Tallyforge", "Do you want to clear all per app themes?");
    alert.addAction({"Clear", UIAlertActionStyle::destructive, [weak = weak_from_this()] {
                         const auto self =
                             std::dynamic_pointer_cast<conditionalthemesListController>(weak.lock());
                         if (self) self->clearAllTies();
                     }});
    alert.addAction({"Cancel", UIAlertActionStyle::cancel, {}});
    alert.present();
}

void conditionalthemesListController::clearAllTies() {
    for (const auto& [path, outcome] : ClearTies())
        TellSilentFailure(path, outcome);
    setValueForSpecifier(Text(kNoTheme), specifierForID(kPerAppTheme));
    setPerAppThemeEnableDisable();
    AnnounceSettingsChanged();
}

void conditionalthemesListController::viewWillAppear(bool animated) {
    BundleListController::viewWillAppear(animated);
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, kUntilCellsAreThere), dispatch_get_main_queue(),
                   [weak = weak_from_this()] {
                       const auto self =
                           std::dynamic_pointer_cast<conditionalthemesListController>(weak.lock());
                       if (self) self->setPerAppThemeEnableDisable();
                   });
}

// A row that is shown again takes touches again, and a cell may have been another row's.
void conditionalthemesListController::refreshRows() {
    BundleListController::refreshRows();
    if (dims_) setPerAppThemeEnableDisable();
}

std::shared_ptr<UITableViewCell>
conditionalthemesListController::tableViewCellForRowAtIndexPath(UITableView& table, NSIndexPath path) {
    auto cell = BundleListController::tableViewCellForRowAtIndexPath(table, path);
    if (cell) cell->setAlpha(1);
    const PSSpecifierRef row = specifierAtIndexPath(path);
    if (dims_ && row && row->identifier() == kPerAppTheme) setPerAppThemeEnableDisable();
    return cell;
}

bool conditionalthemesListController::tableViewShouldHighlightRowAtIndexPath(UITableView& table,
                                                                             NSIndexPath path) {
    const auto cell = table.cellForRowAtIndexPath(path);
    if (cell && !cell->userInteractionEnabled()) return false;
    return BundleListController::tableViewShouldHighlightRowAtIndexPath(table, path);
}

} // namespace tallyforge
