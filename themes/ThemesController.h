#pragma once

#include "panes/PaneController.h"
#include "uikit/UIAlertView.h"
#include "uikit/UIPickerView.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The screen that saves the look under a name, and loads, deletes and restores themes.
class themesListController final : public BundleListController,
                                   public UIAlertViewDelegate,
                                   public UIPickerViewDataSource,
                                   public UIPickerViewDelegate {
  public:
    themesListController() : BundleListController("themesprefs") {}
    ~themesListController() override;
    const char* className() const override { return "themesListController"; }
    const MethodTable& methods() const override;

    // The four buttons.
    void saveTheme();
    void loadTheme();
    void deleteTheme();
    void restoreThemes();

    void showAlertWithTitleMessage(const std::string& title, const std::string& message);
    void showActionAlertWithTitleMessageButtonTag(const std::string& title, const std::string& message,
                                                  const std::string& button, int tag);
    /// An alert to choose one of the themes from; an error in its place when the user's folder is empty.
    void showPickerAlertWithTileMessageBtnNameTag(const std::string& title, const std::string& message,
                                                  const std::string& button, int tag);
    void alertViewClickedButtonAtIndex(UIAlertView& alert, int index) override;
    int pickerViewNumberOfRowsInComponent(UIPickerView& picker, int component) override;
    std::string pickerViewTitleForRow(UIPickerView& picker, int row, int component) override;

    /// Saves the present look; asks first where there is a theme of that name, unless it may be overwritten.
    void saveProfileOverwriteIfExists(std::string_view name, bool overwrite);
    /// Loads, or deletes, the theme that the picker stands on; does nothing where it has no row.
    void loadProfile();
    void deleteProfile();

  private:
    int chosenRow() const;
    void discardPickerLater();
    void discardPicker();

    std::vector<std::string> presetNameArray_;
    std::vector<std::string> fileNameArray_; // the path of the same row
    std::shared_ptr<UIPickerView> picker_;
    std::string overwriteSelectedTheme_; // waits for the answer to the overwrite question
};

} // namespace tallyforge
