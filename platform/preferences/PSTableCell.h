#pragma once

#include "preferences/PSSpecifier.h"
#include "uikit/UITableViewCell.h"

#include <memory>
#include <optional>
#include <string>

namespace tallyforge {

/// A row of a settings screen, made for a specifier. Making one is done in two steps, as on the device: the
/// object first, then one of its initialisers, which says whether it succeeded.
class PSTableCell : public UITableViewCell {
  public:
    const char* className() const override { return "PSTableCell"; }
    virtual bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                       std::shared_ptr<PSSpecifier> specifier);
    const std::shared_ptr<PSSpecifier>& specifier() const { return specifier_; }
    virtual void setSpecifier(std::shared_ptr<PSSpecifier> specifier) { specifier_ = std::move(specifier); }

    /// Shows the row's title and present value.
    virtual void refreshCellContents();
    /// The height that the row wants, in points; nothing means the table's.
    virtual std::optional<CGFloat> preferredHeight(CGFloat /*width*/) { return std::nullopt; }

    /// Whether the row can be operated; a row that cannot is grey and takes no touches.
    bool cellEnabled() const { return cellEnabled_; }
    virtual void setCellEnabled(bool enabled);
    /// What the keyboard's left and right operate on this row, or nullptr.
    virtual UIView* control() const { return nullptr; }

    static constexpr CGFloat kDisabledAlpha = 0.4; ///< of the texts of a row that cannot be operated

  private:
    void showIcon();

    std::shared_ptr<PSSpecifier> specifier_;
    std::string icon_;      // the path of the one that is shown
    CGFloat iconScale_ = 0; // of the screen that it was chosen for
    bool cellEnabled_ = true;
};

} // namespace tallyforge
