#pragma once

#include "preferences/PSSpecifier.h"
#include "preferences/PSViewController.h"
#include "uikit/UITableView.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

class PSTableCell;

/// A table as large as the screen, as settings screens have it: on a tablet its rows stand in a column.
std::shared_ptr<UITableView> PSMakeTable();

/// A settings screen: a table of rows, each made for a specifier, whose values live in preference domains.
/// Until it is shown it has no table; writing and reading values needs none.
class PSListController : public PSViewController, public UITableViewDataSource, public UITableViewDelegate {
  public:
    ~PSListController() override;
    const char* className() const override { return "PSListController"; }
    const MethodTable& methods() const override;
    static const MethodTable& classMethods();

    /// The rows, loaded at the first call and kept.
    virtual const std::vector<PSSpecifierRef>& specifiers() { return specifiers_; }
    /// The folder of the bundle that the screen's lists lie in, with a "/" at its end.
    virtual std::string bundlePath() const { return {}; }
    /// The rows of the property list of that name ("badgeprefs") in the bundle; none when it cannot be read.
    /// Rows that are no dictionaries are left out. The list's "title" becomes the screen's where it has none.
    std::vector<PSSpecifierRef> loadSpecifiersFromPlistNameTarget(std::string_view name, NSObject& target);

    /// Where a device lacks one of the bundle's lists: the bytes of the copy that came with the program, by
    /// the list's device path; none when there is none either. Nothing removes it.
    using SpareLists = std::function<std::vector<uint8_t>(const std::string& path)>;
    static void setSpareLists(SpareLists lists);

    /// The row whose "id" this is (or, where a row has no "id", its "key"); nullptr without one.
    PSSpecifierRef specifierForID(std::string_view identifier);
    /// Writes the value into the row's "defaults" domain under its "key"; it is in the file after the next
    /// synchronise. Posts the row's "PostNotification" system-wide where it has one, after a synchronise. A
    /// row without domain or key keeps nothing; nor does no row. The row's "value" property becomes the
    /// value.
    void setPreferenceValueSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
    /// The row's value: what its domain holds, else its "default"; nothing without either.
    std::optional<PropertyList> readPreferenceValue(const PSSpecifierRef& specifier);
    /// Shows the row's present value again.
    virtual void reloadSpecifier(const PSSpecifierRef& specifier);
    /// Shows the present values of all rows again, without making them anew.
    virtual void refreshRows();

    /// Hears of every reloaded row, by its identifier; for traces. Empty removes it.
    static void setReloadTrace(std::function<void(const std::string& identifier)> trace);

    // The rows as a table: a row of the kind "PSGroupCell" begins a section.
    UITableView* table() const { return table_.get(); }
    struct Group {
        PSSpecifierRef group; ///< nullptr for rows before the first group
        std::vector<PSSpecifierRef> rows;
    };
    const std::vector<Group>& groups();
    PSSpecifierRef specifierAtIndexPath(NSIndexPath path);
    std::optional<NSIndexPath> indexPathForSpecifier(const PSSpecifierRef& specifier);

    void loadView() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    int numberOfSectionsInTableView(UITableView& table) override;
    int tableViewNumberOfRowsInSection(UITableView& table, int section) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                    NSIndexPath path) override;
    std::string tableViewTitleForHeaderInSection(UITableView& table, int section) override;
    std::string tableViewTitleForFooterInSection(UITableView& table, int section) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    bool tableViewShouldHighlightRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    void tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) override;

    /// The screen that the row's "detail" names, ready to be pushed; nullptr when there is no such class.
    std::shared_ptr<UIViewController> controllerForSpecifier(const PSSpecifierRef& specifier);

  protected:
    std::vector<PSSpecifierRef> specifiers_;

  private:
    std::shared_ptr<UITableView> table_;
    std::vector<Group> groups_;
    bool grouped_ = false;
};

} // namespace tallyforge
