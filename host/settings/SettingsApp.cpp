#include "settings_app/SettingsApp.h"

#include "appselect/RegisterAppSelect.h"
#include "colorpicker/RegisterColorPicker.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/Dispatch.h"
#include "panes/RegisterPanes.h"
#include "preferences/PSListController.h"
#include "preferences/PSListItemsController.h"
#include "quartzcore/CADisplayLink.h"
#include "quartzcore/Presentation.h"
#include "settings/Settings.h"
#include "themes/RegisterThemes.h"
#include "uikit/UIDevice.h"

#include <deque>
#include <set>

namespace tallyforge {

namespace {

using Stack = std::vector<std::shared_ptr<UIViewController>>;

std::string classNameOfPane(const std::string& pane) {
    return (pane == "tallyforge" ? "tallyforgeprefs" : pane) + "ListController";
}

Dictionary domainNow() {
    auto keys = CFPreferencesCopyKeyList(kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    if (!keys) return {};
    return CFPreferencesCopyMultiple(*keys, kSettingsDomain, kCFPreferencesCurrentUser,
                                     kCFPreferencesAnyHost);
}

// Whether the row shows another value than the settings hold.
bool showsOtherThan(const Dictionary& settings, const PSSpecifier& row) {
    if (row.textForKey("defaults") != kSettingsDomain) return false;
    const PropertyList* shown = row.propertyForKey("value");
    if (!shown && row.cellKind() == "PSLinkCell") return false; // it leads to the value, and shows none
    const PropertyList* held = settings.objectForKey(row.textForKey("key"));
    if (!held) held = row.propertyForKey("default");
    return shown && held ? !(*shown == *held) : shown != held;
}

using Named = bool(const std::string& name, const PSViewController& screen);

bool isPane(const std::string& name, const PSViewController& screen) {
    return screen.className() == classNameOfPane(name);
}

// A screen that serves several rows is named by its row.
bool isOpenedByRow(const std::string& name, const PSViewController& screen) {
    return !name.empty() && screen.specifier() && screen.specifier()->identifier() == name;
}

bool opensScreen(const PSSpecifier& row) {
    return row.cellKind() == "PSLinkCell" || row.cellKind() == "PSLinkListCell";
}

// The screens from the root to the one of that name, by the shortest way of rows; empty without one.
Stack wayTo(const std::string& name, Named* isNamed, const std::shared_ptr<UIViewController>& root) {
    std::deque<Stack> ways{{root}};
    std::set<std::string> seen;
    while (!ways.empty()) {
        Stack way = std::move(ways.front());
        ways.pop_front();
        auto* screen = dynamic_cast<PSViewController*>(way.back().get());
        if (!screen) continue;
        if (isNamed(name, *screen)) return way;
        auto* list = dynamic_cast<PSListController*>(screen);
        if (!list || !seen.insert(list->className()).second) continue;
        for (const PSSpecifierRef& row : list->specifiers()) {
            auto next = opensScreen(*row) ? list->controllerForSpecifier(row) : nullptr;
            if (!next) continue;
            ways.push_back(way);
            ways.back().push_back(std::move(next));
        }
    }
    return {};
}

} // namespace

void RegisterSettingsClasses() {
    RegisterClass("PSListItemsController", {[] { return std::make_shared<PSListItemsController>(); }});
    RegisterPanes();
    RegisterColorPicker();
    RegisterAppSelect();
    RegisterThemes();
}

SettingsApp::SettingsApp() {
    RegisterSettingsClasses();
    window_ = std::make_shared<UIWindow>(CGRect{{0, 0}, UIScreen::mainScreen().size()});
    window_->makeKeyWindow();
    auto root = std::dynamic_pointer_cast<UIViewController>(
        NSClassFromString(classNameOfPane("tallyforge"))->alloc());
    root->setTitle("Tallyforge");
    navigation_ = std::make_shared<UINavigationController>(std::move(root));
    window_->setRootViewController(navigation_);
    seen_ = domainNow();
    ownChanges_ = NSNotificationCenter::defaultCenter().addObserver(kReloadPreviewNotification, [this] {
        seen_ = domainNow();
        followRows();
    });
    step();
}

SettingsApp::~SettingsApp() = default;

CGSize SettingsApp::size() const {
    return window_->bounds().size;
}

void SettingsApp::step() {
    MainQueue::main().runDue();
    const double now = CACurrentMediaTime();
    CADisplayLink::stepAll(now);
    window_->layoutIfNeeded();
    CARemoveFinishedAnimations(*window_->layer(), now);
}

bool SettingsApp::animating() const {
    return CADisplayLink::anyRunning() || CAIsAnimating(*window_->layer(), CACurrentMediaTime());
}

bool SettingsApp::openPane(const std::string& name) {
    const auto* top = dynamic_cast<PSViewController*>(navigation_->topViewController().get());
    if (top && (isPane(name, *top) || isOpenedByRow(name, *top))) return true;
    const auto& root = navigation_->viewControllers().front();
    Stack way = wayTo(name, isPane, root);
    if (way.empty()) way = wayTo(name, isOpenedByRow, root);
    if (way.empty()) { // no row leads there where the device's lists cannot be read
        const ObjCClass* cls = NSClassFromString(classNameOfPane(name));
        auto screen = cls ? std::dynamic_pointer_cast<UIViewController>(cls->alloc()) : nullptr;
        if (!screen) return false;
        way = {root, std::move(screen)};
    }
    navigation_->setViewControllers(std::move(way));
    step();
    return true;
}

// A change of our own brings along what others have written meanwhile; rows that show something else than the
// settings are shown again.
void SettingsApp::followRows() {
    auto* screen = dynamic_cast<PSListController*>(navigation_->topViewController().get());
    if (!screen || !screen->table()) return;
    for (NSIndexPath path : screen->table()->indexPathsForVisibleRows()) {
        PSSpecifierRef row = screen->specifierAtIndexPath(path);
        // A list of choices shows the setting of the row that it was opened from.
        bool choice = row && !row->propertyForKey("key") && screen->specifier();
        if (!row || !showsOtherThan(seen_, choice ? *screen->specifier() : *row)) continue;
        screen->refreshRows();
        return;
    }
}

void SettingsApp::screenScaleChanged() {
    for (const auto& screen : navigation_->viewControllers()) {
        if (!screen->isViewLoaded()) continue;
        if (auto* table = dynamic_cast<UITableView*>(screen->view().get())) table->remakeCells();
    }
    navigation_->updateBar();
    step();
}

void SettingsApp::settingsChangedOutside() {
    Dictionary now = domainNow();
    if (now == seen_) return;
    NSNotificationCenter::defaultCenter().postNotificationName(kReloadPreviewNotification);
}

} // namespace tallyforge
