#include "themes/ThemesController.h"

#include "foundation/Dispatch.h"
#include "foundation/NSFileManager.h"
#include "settings/SilentFailures.h"
#include "themes/ThemeFiles.h"
#include "themes/ThemeNames.h"
#include "uikit/UITextField.h"

namespace tallyforge {

namespace {

constexpr int kLoadTag = 123;
constexpr int kNameTag = 124;
constexpr int kDeleteTag = 125;
constexpr int kOverwriteTag = 126;
constexpr int64_t kPickerLife = NSEC_PER_SEC / 2; // after its button was pressed

} // namespace

themesListController::~themesListController() {
    UIAlertView::forgetDelegate(*this);
    discardPicker();
}

void themesListController::saveTheme() {
    auto alert = std::make_shared<UIAlertView>("Preset name", "Enter the preset name:", this, "Cancel",
                                               std::vector<std::string>{"Ok"});
    alert->setAlertViewStyle(UIAlertViewStyle::plainTextInput);
    alert->setTag(kNameTag);
    alert->show();
}

void themesListController::loadTheme() {
    showPickerAlertWithTileMessageBtnNameTag("Load theme", "Select the theme to load", "Load", kLoadTag);
}

void themesListController::deleteTheme() {
    showPickerAlertWithTileMessageBtnNameTag("Delete theme", "Select the theme to delete", "Delete",
                                             kDeleteTag);
}

void themesListController::restoreThemes() {
    const RestoredThemes restored = RestoreDefaultThemes();
    for (const auto& [path, outcome] : restored.failures)
        TellSilentFailure(path, outcome);
    showAlertWithTitleMessage("Done", restored.missing.empty()
                                          ? "You didn't delete any default theme... Nothing to restore!"
                                          : "The default themes has been restored!");
}

void themesListController::showAlertWithTitleMessage(const std::string& title, const std::string& message) {
    std::make_shared<UIAlertView>(title, message, this, "Ok")->show();
}

void themesListController::showActionAlertWithTitleMessageButtonTag(const std::string& title,
                                                                    const std::string& message,
                                                                    const std::string& button, int tag) {
    auto alert =
        std::make_shared<UIAlertView>(title, message, this, "Cancel", std::vector<std::string>{button});
    alert->setTag(tag);
    alert->show();
}

void themesListController::showPickerAlertWithTileMessageBtnNameTag(const std::string& title,
                                                                    const std::string& message,
                                                                    const std::string& button, int tag) {
    ThemeListing listing = ListThemesForScreen();
    if (listing.empty) {
        showAlertWithTitleMessage("Error", "No themes found");
        return;
    }
    discardPicker();
    for (Theme& theme : listing.themes) {
        presetNameArray_.push_back(std::move(theme.name));
        fileNameArray_.push_back(std::move(theme.path));
    }

    auto alert =
        std::make_shared<UIAlertView>(title, message, this, "Cancel", std::vector<std::string>{button});
    picker_ = std::make_shared<UIPickerView>(CGRectMake(25, 30, 230, 160));
    picker_->setDataSource(this);
    picker_->setDelegate(this);
    picker_->setShowsSelectionIndicator(true);
    alert->setValueForKey(picker_, "accessoryView");
    alert->setTag(tag);
    alert->show();
}

void themesListController::alertViewClickedButtonAtIndex(UIAlertView& alert, int index) {
    if (index != 1) return;
    switch (alert.tag()) {
    case kLoadTag:
        loadProfile();
        discardPickerLater();
        break;
    case kDeleteTag:
        deleteProfile();
        discardPickerLater();
        break;
    case kNameTag:
        if (const auto field = alert.textFieldAtIndex(0)) saveProfileOverwriteIfExists(field->text(), false);
        break;
    case kOverwriteTag:
        saveProfileOverwriteIfExists(std::string(overwriteSelectedTheme_), true);
        break;
    default:
        break;
    }
}

int themesListController::pickerViewNumberOfRowsInComponent(UIPickerView& /*picker*/, int /*component*/) {
    return static_cast<int>(presetNameArray_.size());
}

std::string themesListController::pickerViewTitleForRow(UIPickerView& /*picker*/, int row,
                                                        int /*component*/) {
    const auto index = static_cast<size_t>(row);
    return row >= 0 && index < presetNameArray_.size() ? presetNameArray_[index] : std::string();
}

void themesListController::saveProfileOverwriteIfExists(std::string_view name, bool overwrite) {
    if (IsBlankThemeName(name)) {
        showAlertWithTitleMessage("Error", "Please enter a theme name");
        return;
    }
    if (const std::string why = WhyNoThemeFile(name); !why.empty()) {
        showAlertWithTitleMessage("Error", why);
        return;
    }
    const std::string path = std::string(kThemeFolder) + ThemeFileName(name);
    if (!overwrite && NSFileManager::defaultManager().fileExistsAtPath(path)) {
        overwriteSelectedTheme_ = name;
        showActionAlertWithTitleMessageButtonTag(
            "Warning", "A theme with the specified name already exists. Do you want to overwrite it?",
            "Overwrite", kOverwriteTag);
        return;
    }
    const auto theme = ThemeOfSettings(name);
    TellSilentFailure(path, theme ? WriteTheme(*theme, path, overwrite ? Overwrite::yes : Overwrite::no)
                                  : Status(theme.error()));
    showAlertWithTitleMessage("Success",
                              "The current settings were successfully saved as a theme with the name " +
                                  std::string(name) + "!");
}

// The row that the picker stands on, -1 without one.
int themesListController::chosenRow() const {
    const int row = picker_ ? picker_->selectedRowInComponent(0) : -1;
    return row >= 0 && static_cast<size_t>(row) < fileNameArray_.size() ? row : -1;
}

void themesListController::loadProfile() {
    const int row = chosenRow();
    if (row < 0) return;
    if (const auto theme = ReadTheme(fileNameArray_[static_cast<size_t>(row)])) ApplyTheme(*theme);
}

void themesListController::deleteProfile() {
    const int row = chosenRow();
    if (row < 0) return;
    const std::string path = fileNameArray_[static_cast<size_t>(row)];
    TellSilentFailure(path, RemoveTheme(path));
    showAlertWithTitleMessage("Done", "The theme " + presetNameArray_[static_cast<size_t>(row)] +
                                          " was successfully deleted!");
    AnnounceThemeRemoved();
}

// Only the picker whose button was pressed: another one may have been opened by then.
void themesListController::discardPickerLater() {
    std::weak_ptr<themesListController> self =
        std::dynamic_pointer_cast<themesListController>(weak_from_this().lock());
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, kPickerLife), dispatch_get_main_queue(),
                   [self, pressed = std::weak_ptr(picker_)] {
                       const auto controller = self.lock();
                       if (controller && controller->picker_ == pressed.lock()) controller->discardPicker();
                   });
}

void themesListController::discardPicker() {
    fileNameArray_.clear();
    presetNameArray_.clear();
    if (!picker_) return;
    picker_->setDataSource(nullptr);
    picker_->setDelegate(nullptr);
    picker_.reset();
}

} // namespace tallyforge
