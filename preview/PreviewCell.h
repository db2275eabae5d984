#pragma once

#include "foundation/NSNotificationCenter.h"
#include "preferences/PSTableCell.h"
#include "uikit/UIImage.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tallyforge {

/// The row at the top of a mark's pane: a stock app icon with its name, and on it the badge, the close box
/// and the new dot as the settings have them. A tap shows the next icon.
///
/// It takes a new snapshot of the settings and builds the marks anew whenever a change is announced.
class PreviewCell final : public PSTableCell {
  public:
    const char* className() const override { return "PreviewCell"; }
    std::vector<InstanceVariable> instanceVariables() const override;

    /// Style 0 and the reuse identifier "PreviewCell".
    bool initWithSpecifier(std::shared_ptr<PSSpecifier> specifier);
    bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                               std::shared_ptr<PSSpecifier> specifier) override;
    void layoutSubviews() override;

    bool canBecomeFocused() const override { return true; }
    bool pressKey(UIKey key) override; ///< space and return do what a tap does

    /// Goes to the next icon and remembers it.
    void tap();
    /// Loads the present icon, or the next one that there is.
    void setIcon();
    /// Takes a new snapshot of the settings and draws the marks.
    void realod();
    void createIcon();
    void reloadBadge();
    void reloadCloseBox();
    void reloadNewDot();

    /// The close box's rotation in radians; half a turn when it is not set.
    static float CloseBoxRotation();

    /// The cell's size when it was created; everything is laid out by it.
    CGSize size() const { return size_; }
    int32_t currentIcon() const { return currentIcon_; }
    const std::shared_ptr<UIImageView>& iconView() const { return iconView_; }
    const UIImage& appIconImage() const { return appIconImage_; }
    const std::string& selectedAppName() const { return selectedAppName_; }
    const std::shared_ptr<UILabel>& iconLabel() const { return iconLabel_; }
    std::shared_ptr<UIView> badgeView() const { return badgeView_.lock(); }
    std::shared_ptr<UIView> closeBoxView() const { return closeBoxView_.lock(); }
    std::shared_ptr<UIView> newDotView() const { return newDotView_.lock(); }

  private:
    CGFloat initialMarkCentreX() const;
    void placeCloseBox(UIView& box) const;

    CGSize size_;
    int32_t currentIcon_ = 0;
    std::shared_ptr<UIImageView> iconView_;
    UIImage appIconImage_;
    std::string selectedAppName_;
    std::shared_ptr<UILabel> iconLabel_;
    // The view tree owns the marks; these only know which ones to replace.
    std::weak_ptr<UIView> badgeView_;
    std::weak_ptr<UIView> closeBoxView_;
    std::weak_ptr<UIView> newDotView_;
    NSNotificationCenter::Observation reloadObservation_;
};

} // namespace tallyforge
