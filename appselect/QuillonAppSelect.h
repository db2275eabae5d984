#pragma once

#include "appselect/QuillonAppList.h"
#include "preferences/PSViewController.h"
#include "uikit/UITableView.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge {

class UISwitch;

/// The screen that edits a set of apps: every installed app with its icon, its name and a switch.
///
/// The row it is opened from says what is edited: "key" and "defaults" where the list is kept, "defaultValue"
/// how a switch stands for an app that is not listed (off, unless it says otherwise), "PostNotification" what
/// is posted system-wide after a change. The list names the apps whose switch stands the other way. Every
/// change is written at once.
class QuillonAppSelect final : public PSViewController,
                               public UITableViewDataSource,
                               public UITableViewDelegate {
  public:
    ~QuillonAppSelect() override;
    const char* className() const override { return "QuillonAppSelect"; }

    UITableView* tableView() const { return tableView_.get(); }
    const std::vector<std::string>& systemAppNames() const { return systemAppNames_; }
    const std::vector<std::string>& systemAppIDs() const { return systemAppIDs_; }
    const std::vector<std::string>& userAppNames() const { return userAppNames_; }
    const std::vector<std::string>& userAppIDs() const { return userAppIDs_; }
    /// The system's, then the user's; a switch's tag is an index of it.
    const std::vector<std::string>& allAppIDs() const { return allAppIDs_; }
    /// The identifiers of the apps whose switch differs from the default, in the order in which that came
    /// about. What else a stored list holds stays in it.
    const PropertyList::Array& enabledApps() const { return enabledApps_; }
    bool defaultValue() const { return defaultValue_; }

    /// Records that the switch was turned, and writes.
    void changeSwitch(const UISwitch& turned);
    /// Turns the switch as its app's state in the list is.
    void setSwitchValue(UISwitch& shown) const;
    /// Writes the list, and posts the row's notification if that is wanted.
    void syncPrefs(bool notify) const;

    void loadView() override;
    void viewDidLoad() override;
    int numberOfSectionsInTableView(UITableView& table) override;
    std::string tableViewTitleForHeaderInSection(UITableView& table, int section) override;
    std::string tableViewTitleForFooterInSection(UITableView& table, int section) override;
    int tableViewNumberOfRowsInSection(UITableView& table, int section) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                    NSIndexPath path) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    bool tableViewShouldHighlightRowAtIndexPath(UITableView& table, NSIndexPath path) override;

  private:
    void readSpecifier();
    void readStoredList();
    std::shared_ptr<UITableViewCell> makeCell();

    std::shared_ptr<UITableView> tableView_;
    std::vector<std::string> systemAppNames_, systemAppIDs_;
    std::vector<std::string> userAppNames_, userAppIDs_;
    std::vector<std::string> allAppIDs_;
    PropertyList::Array enabledApps_;
    bool defaultValue_ = false;
    std::optional<std::string> prefKey_;
    std::string prefAppID_;
    std::optional<std::string> prefNotification_;
};

} // namespace tallyforge
