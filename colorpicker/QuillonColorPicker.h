#pragma once

#include "preferences/PSViewController.h"
#include "uikit/UITableView.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tallyforge {

class SwatchCell;

/// The screen that edits one colour setting. Its row says which ("key", "defaults", "default"), what to post
/// after a change ("PostNotification", "PreviewNotification"), which special words make sense
/// ("allowAutomatic", "allowTransparent") and what the first of them is called ("disabledTitle",
/// "disabledSubtitle"). Every choice is written and announced at once.
class QuillonColorPicker final : public PSViewController,
                                 public UITableViewDataSource,
                                 public UITableViewDelegate {
  public:
    ~QuillonColorPicker() override;
    const char* className() const override { return "QuillonColorPicker"; }

    const std::optional<std::string>& selectedColor() const { return selectedColor_; }
    std::optional<NSIndexPath> selectedIndexPath() const { return selectedIndexPath_; }
    UITableView* table() const { return table_.get(); }

    void loadView() override;
    void viewDidLoad() override;

    int numberOfSectionsInTableView(UITableView& table) override;
    std::string tableViewTitleForHeaderInSection(UITableView& table, int section) override;
    int tableViewNumberOfRowsInSection(UITableView& table, int section) override;
    CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                    NSIndexPath path) override;
    bool tableViewShouldHighlightRowAtIndexPath(UITableView& table, NSIndexPath path) override;
    void tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) override;

    /// Writes the value where there is a domain, then posts what the row names: first in process, then
    /// system-wide.
    void notifyTweak(const std::string& value);
    /// Moves the sliders to the colour, where one is given, and shows theirs in the custom row; where that is
    /// the chosen row and `notify` says so, the colour is written. Nothing at all while there are no sliders.
    void setCustomColorNotifyTweak(const std::optional<std::string>& value, bool notify);
    void sliderAction() { setCustomColorNotifyTweak(std::nullopt, false); }
    void sliderDidEndSliding() { setCustomColorNotifyTweak(std::nullopt, true); }
    std::shared_ptr<UIView> getSliderViewWithColor(const UIColor& color);

  private:
    bool rowEnabled(NSIndexPath path) const;
    void showSpecialRow(SwatchCell& cell, NSIndexPath path) const;
    void showCustomRow(SwatchCell& cell, NSIndexPath path);
    /// Gives the row the checkmark, and takes it from the one that had it.
    void check(UITableViewCell& cell, NSIndexPath path);

    std::shared_ptr<UITableView> table_;
    std::optional<std::string> selectedColor_;
    std::optional<std::string> defaultColor_;
    std::optional<NSIndexPath> selectedIndexPath_;
    std::optional<std::string> prefKey_;
    std::optional<std::string> appID_;
    std::optional<std::string> notificationKey_;
    std::optional<std::string> refreshPreviewNotificationKey_;
    std::optional<std::string> disabledTitle_;
    std::optional<std::string> disabledSubtitle_;
    bool allowAutomatic_ = true;
    bool allowTransparent_ = true;
};

} // namespace tallyforge
