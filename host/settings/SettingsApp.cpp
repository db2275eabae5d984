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
    auto keys =
        CFPreferencesCopyKeyList(kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    if (!keys) return {};
    return CFPreferencesCopyMultiple(*keys, kSettingsDomain, kCFPreferencesCurrentUser,
                                     kCFPreferencesAnyHost);
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
    ownChanges_ = NSNotificationCenter::defaultCenter().addObserver(kReloadPreviewNotification,
                                                                    [this] { seen_ = domainNow(); });
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
    Stack way = wayTo(wanted, navigation_->viewControllers().front());
    if (way.empty()) return false;
    navigation_->setViewControllers(std::move(way));
    step();
    return true;
}

void SettingsApp::settingsChangedOutside() {
    Dictionary now = domainNow();
    if (now == seen_) return;
    seen_ = std::move(now);
    if (auto* screen = dynamic_cast<PSListController*>(navigation_->topViewController().get()))
        screen->refreshRows();
    NSNotificationCenter::defaultCenter().postNotificationName(kReloadPreviewNotification);
}

} // namespace tallyforge
