#pragma once

#include "uikit/UIControl.h"

#include <string>
#include <vector>

namespace tallyforge {

class UILabel;

/// A row of titles of which one is chosen; 29 points high unless told otherwise. The segments are equally
/// wide; titles that are too long for theirs become smaller, together, and are cut where that is not enough.
class UISegmentedControl final : public UIControl {
  public:
    explicit UISegmentedControl(std::vector<std::string> titles);

    const char* className() const override { return "UISegmentedControl"; }
    const std::vector<std::string>& titles() const { return titles_; }
    void setTitles(std::vector<std::string> titles);
    /// -1: none.
    int selectedSegmentIndex() const { return selected_; }
    /// An index that there is not selects none. Tells nobody.
    void setSelectedSegmentIndex(int index);
    /// The segment's rectangle in the control's own coordinates.
    CGRect rectForSegment(int index) const;

    void setEnabled(bool enabled) override;
    void layoutSubviews() override;
    bool pressKey(UIKey key) override; ///< left and right choose the neighbour

  protected:
    bool beginTracking(const UITouch& touch) override;
    void continueTracking(const UITouch& touch) override;
    void endTracking(const UITouch& touch) override;
    void cancelTracking() override;

  private:
    int segmentAt(const UITouch& touch) const;
    void choose(int index);
    void show();
    std::vector<std::string> titles_;
    int selected_ = -1;
    int pressed_ = -1;
    std::shared_ptr<UIView> outline_; // above the segments
    std::vector<std::shared_ptr<UIView>> segments_;
    std::vector<std::shared_ptr<UIView>> dividers_; // left of each segment but the first
    std::vector<std::shared_ptr<UILabel>> labels_;
};

} // namespace tallyforge
