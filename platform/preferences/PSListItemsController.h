#pragma once

#include "preferences/PSListController.h"

namespace tallyforge {

/// The choices of one row, the present one with a checkmark. Choosing hands the value to the row's setter;
/// the screen stays, so that the choice can be looked at.
class PSListItemsController final : public PSListController {
  public:
    const char* className() const override { return "PSListItemsController"; }
    const std::vector<PSSpecifierRef>& specifiers() override;
    void setSpecifier(PSSpecifierRef specifier) override;
    void refreshRows() override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                    NSIndexPath path) override;
    bool tableViewShouldHighlightRowAtIndexPath(UITableView&, NSIndexPath) override { return true; }
    void tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) override;

  private:
    /// Shows whether the row is the present choice.
    void mark(UITableViewCell& cell, const PSSpecifier& row) const;
};

} // namespace tallyforge
