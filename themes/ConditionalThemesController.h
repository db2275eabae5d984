#pragma once

#include "panes/PaneController.h"
#include "themes/ThemeFiles.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyforge {

/// The screen that ties themes to single apps.
class conditionalthemesListController final : public BundleListController {
  public:
    conditionalthemesListController() : BundleListController("conditionalthemesprefs") {}
    const char* className() const override { return "conditionalthemesListController"; }
    const MethodTable& methods() const override;

    // The choices of the two rows. Titles asked for right after the values are of the same apps or themes.
    PropertyList valueAppDataFromTarget();
    PropertyList titlesAppDataFromTarget();
    PropertyList valueThemeDataFromTarget();
    PropertyList titlesThemeDataFromTarget();

    /// The row's control, or its cell; nullptr as long as there is none.
    std::shared_ptr<NSObject> getViewForID(std::string_view identifier);
    std::shared_ptr<NSObject> getCellForID(std::string_view identifier);
    /// Dims the theme's row as long as no app is chosen.
    void setPerAppThemeEnableDisable();

    void setValueForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
    /// The two rows' setter. Choosing an app shows its tie; choosing a theme writes it.
    void setPerAppValueForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
    /// Asks, then clears all ties.
    void clearperappthemes();

    void viewWillAppear(bool animated) override;
    void refreshRows() override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                    NSIndexPath path) override;
    bool tableViewShouldHighlightRowAtIndexPath(UITableView& table, NSIndexPath path) override;

  private:
    using Apps = std::vector<std::pair<std::string, std::string>>; // names and identifiers
    static Apps sortedApps();
    std::string chosenApp();
    void showTieOf(std::string_view app);
    void tie(const PropertyList& theme);
    void clearAllTies();

    std::optional<Apps> listedApps_;
    std::optional<std::vector<Theme>> listedThemes_;
    bool dims_ = false; // the theme's row has been dimmed or undimmed at least once
};

} // namespace tallyforge
