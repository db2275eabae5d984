#pragma once

#include "foundation/NSNotificationCenter.h"
#include "foundation/PropertyList.h"
#include "uikit/UINavigationController.h"
#include "uikit/UIWindow.h"

#include <memory>
#include <string>

namespace tallyforge {

/// The Settings app, as everything that shows or drives it sees it: a window with the Tallyforge screens in
/// it. Whoever has one hands it touches and keys, lets its clock run, and paints its layer. The device, the
/// graphics and the idiom are set before; the main queue's clock too.
class SettingsApp {
  public:
    SettingsApp();
    ~SettingsApp();
    SettingsApp(const SettingsApp&) = delete;
    SettingsApp& operator=(const SettingsApp&) = delete;

    UIWindow& window() { return *window_; }
    const CALayer& layer() const { return *window_->layer(); }
    UINavigationController& navigation() { return *navigation_; }
    CGSize size() const; ///< points

    /// Runs due jobs, moves what is in motion, and lays out what has changed: to be called before painting,
    /// and after touches and keys.
    void step();
    /// Whether the screen changes by itself, so that another frame is wanted.
    bool animating() const;

    /// From the root to the screen of that name ("badge", "tallyforge"), by way of the rows that lead there.
    /// A screen that serves several rows is named by its row ("badgeapps"). False when there is none. A
    /// screen that no row leads to comes right after the root.
    bool openPane(const std::string& name);

    /// Makes anew what was made for another scale of the screen.
    void screenScaleChanged();

    /// Reads the settings again after another process has changed them, and shows them. Nothing happens when
    /// nothing has changed.
    void settingsChangedOutside();

  private:
    void followRows();

    std::shared_ptr<UIWindow> window_;
    std::shared_ptr<UINavigationController> navigation_;
    Dictionary seen_; // the domain as the screens show it
    NSNotificationCenter::Observation ownChanges_;
};

/// Makes the classes of the system known that rows of screens name.
void RegisterSettingsClasses();

} // namespace tallyforge
