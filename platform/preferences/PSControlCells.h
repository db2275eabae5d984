#pragma once

#include "preferences/PSTableCell.h"
#include "uikit/UILabel.h"
#include "uikit/UISegmentedControl.h"
#include "uikit/UISlider.h"
#include "uikit/UISwitch.h"

namespace tallyforge {

/// A row with a switch at its right end.
class PSSwitchTableCell : public PSTableCell {
  public:
    const char* className() const override { return "PSSwitchTableCell"; }
    bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                               std::shared_ptr<PSSpecifier> specifier) override;
    void refreshCellContents() override;
    void setCellEnabled(bool enabled) override;
    UIView* control() const override { return switch_.get(); }
    const std::shared_ptr<UISwitch>& switchControl() const { return switch_; }

  private:
    std::shared_ptr<UISwitch> switch_;
};

/// A row with its title and value above a slider.
class PSSliderTableCell : public PSTableCell {
  public:
    const char* className() const override { return "PSSliderTableCell"; }
    bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                               std::shared_ptr<PSSpecifier> specifier) override;
    void refreshCellContents() override;
    void setCellEnabled(bool enabled) override;
    void layoutSubviews() override;
    std::optional<CGFloat> preferredHeight(CGFloat width) override;
    UIView* control() const override { return slider_.get(); }
    const std::shared_ptr<UISlider>& slider() const { return slider_; }
    std::string detailText() const override { return valueLabel_ ? valueLabel_->text() : std::string(); }
    /// The value as the row shows it: as many digits as its range needs, and its "unit".
    std::string valueText(float value) const;

  private:
    void showValue(float value);

    std::shared_ptr<UISlider> slider_;
    std::shared_ptr<UILabel> valueLabel_;
};

/// A row of segments.
class PSSegmentTableCell : public PSTableCell {
  public:
    const char* className() const override { return "PSSegmentTableCell"; }
    bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                               std::shared_ptr<PSSpecifier> specifier) override;
    void refreshCellContents() override;
    void setCellEnabled(bool enabled) override;
    void layoutSubviews() override;
    UIView* control() const override { return segments_.get(); }
    const std::shared_ptr<UISegmentedControl>& segmentedControl() const { return segments_; }

  private:
    std::shared_ptr<UISegmentedControl> segments_;
};

} // namespace tallyforge
