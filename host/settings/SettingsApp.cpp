#include "settings_app/SettingsApp.h"

#include "corefoundation/CFPreferences.h"
#include "foundation/Dispatch.h"
#include "panes/RegisterPanes.h"
#include "preferences/PSListController.h"
#include "preferences/PSListItemsController.h"
#include "preview/PreviewCell.h"
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
    const PropertyList* held = settings.objectForKey(row.textForKey("key"));
    if (!held) held = row.propertyForKey("default");
    return shown && held ? !(*shown == *held) : shown != held;
}

// The screens from the root to the one of that class, by the shortest way of link rows; empty without one.
Stack wayTo(const std::string& className, const std::shared_ptr<UIViewController>& root) {
    std::deque<Stack> ways{{root}};
    std::set<std::string> seen;
    while (!ways.empty()) {
        Stack way = std::move(ways.front());
        ways.pop_front();
        if (way.back()->className() == className) return way;
        auto* screen = dynamic_cast<PSListController*>(way.back().get());
        if (!screen || !seen.insert(screen->className()).second) continue;
        for (const PSSpecifierRef& row : screen->specifiers()) {
            if (row->cellKind() != "PSLinkCell") continue;
            auto next = screen->controllerForSpecifier(row);
            if (!next) continue;
            ways.push_back(way);
            ways.back().push_back(std::move(next));
        }
    }
    return {};
}

} // namespace

void RegisterSettingsClasses() {
    RegisterClass("PreviewCell", {[] { return std::make_shared<PreviewCell>(); }});
    RegisterClass("PSListItemsController", {[] { return std::make_shared<PSListItemsController>(); }});
    RegisterPanes();
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
    const std::string wanted = classNameOfPane(name);
    if (navigation_->topViewController()->className() == wanted) return true;
    const auto& root = navigation_->viewControllers().front();
    Stack way = wayTo(wanted, root);
    if (way.empty()) { // no row leads there where the device's lists cannot be read
        const ObjCClass* cls = NSClassFromString(wanted);
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
