#pragma once

#include "preferences/PSTableCell.h"

#include <memory>
#include <optional>
#include <string>

namespace tallyforge {

class UIImageView;
class UILabel;

/// The row that opens the colour picker. At its right it shows the stored colour, or the stored word where
/// that is none. It reads the setting anew at each layout.
class QuillonColorPickerLinkCell final : public PSTableCell {
  public:
    const char* className() const override { return "QuillonColorPickerLinkCell"; }
    std::vector<InstanceVariable> instanceVariables() const override;
    bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                               std::shared_ptr<PSSpecifier> specifier) override;
    void layoutSubviews() override;
    /// What is stored under the row's key. Without text there, what was shown before stays; the row's
    /// "default" counts only before anything was.
    void loadColorValueFromPrefs();

    const std::optional<std::string>& selectedColor() const { return selectedColor_; }
    const std::shared_ptr<UIImageView>& thumbnailView() const { return thumbnailView_; }
    const std::shared_ptr<UILabel>& valueLabel() const { return valueLabel_; }
    const std::string& appID() const { return appID_; }
    std::string detailText() const override; ///< the stored value, whichever way it is shown

  private:
    void noteRead(const std::optional<PropertyList>& value);
    void showSwatch(const std::string& color);
    void showWord(const std::string& word);

    std::optional<std::string> selectedColor_;
    std::shared_ptr<UIImageView> thumbnailView_;
    std::shared_ptr<UILabel> valueLabel_;
    std::string appID_;
};

} // namespace tallyforge
