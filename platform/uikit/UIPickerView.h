#pragma once

#include "quartzcore/CADisplayLink.h"
#include "uikit/UIView.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge {

class UILabel;
class UIPickerView;
class UIPanGestureRecognizer;

class UIPickerViewDataSource {
  public:
    virtual ~UIPickerViewDataSource() = default;
    virtual int numberOfComponentsInPickerView(UIPickerView&) { return 1; }
    virtual int pickerViewNumberOfRowsInComponent(UIPickerView& picker, int component) = 0;
};

class UIPickerViewDelegate {
  public:
    virtual ~UIPickerViewDelegate() = default;
    virtual std::string pickerViewTitleForRow(UIPickerView& picker, int row, int component) = 0;
    virtual void pickerViewDidSelectRow(UIPickerView&, int /*row*/, int /*component*/) {}
};

/// A wheel of rows of which the middle one is chosen; one component. Its neighbours are smaller and fade.
class UIPickerView final : public UIView {
  public:
    explicit UIPickerView(const CGRect& frame);
    ~UIPickerView() override;

    const char* className() const override { return "UIPickerView"; }
    /// Both must outlive the picker or be taken back with nullptr. The rows are fetched once when they are
    /// needed first, and kept until they are reloaded.
    void setDataSource(UIPickerViewDataSource* source);
    void setDelegate(UIPickerViewDelegate* delegate);
    bool showsSelectionIndicator() const { return showsIndicator_; }
    void setShowsSelectionIndicator(bool shows);

    void reloadAllComponents();
    int numberOfRowsInComponent(int component) const;
    std::string titleForRow(int row) const;
    /// -1 when there are no rows. While a finger or its momentum turns the wheel: the row in the middle.
    int selectedRowInComponent(int component) const;
    /// Held to the rows that there are. Tells nobody.
    void selectRowInComponent(int row, int component, bool animated);

    bool canBecomeFocused() const override { return true; }
    void setFocused(bool focused) override;
    bool pressKey(UIKey key) override; ///< up and down, home and end, page up and page down
    /// By a mouse's wheel: a row for each row's height, counted over many turns in one direction.
    void turnBy(CGFloat points);
    void touchesBegan(const UITouch&) override {}
    void touchesMoved(const UITouch&) override {}
    void touchesEnded(const UITouch& touch) override; ///< a tap on a row turns the wheel there
    void touchesCancelled(const UITouch& touch) override;
    void fingerCameDown() override; ///< stops the wheel
    void layoutSubviews() override;
    /// The title in the middle.
    std::string accessibilityLabel() const override;
    /// Where a row's middle is in the picker's own coordinates; nothing when it is behind the wheel.
    std::optional<CGFloat> middleOfRow(int row) const;
    static constexpr CGFloat kRowHeight = 32;

  private:
    void load();
    int rows() const;
    int rowInMiddle() const;
    void pan();
    void letGo(CGFloat rowsPerSecond);
    void turnTo(int row, CGFloat rate, bool tell);
    void step(double seconds);
    void comeToRest();
    void show();
    void showRow(UILabel& label, int row, CGFloat middle, CGFloat angle);
    CGFloat radius() const;

    UIPickerViewDataSource* dataSource_ = nullptr;
    UIPickerViewDelegate* delegate_ = nullptr;
    bool showsIndicator_ = false;
    bool loaded_ = false;
    std::vector<std::string> titles_;
    CGFloat offset_ = 0; // in rows
    int selected_ = 0;
    enum class Motion { none, finger, momentum, turn };
    Motion motion_ = Motion::none;
    bool caught_ = false; // the finger that is down stopped the wheel
    bool tellWhenThere_ = false;
    CGFloat from_ = 0, rate_ = 0;
    int target_ = 0;
    double turnStart_ = 0; // seconds
    CGFloat dragFrom_ = 0;
    CGFloat turned_ = 0; // points by the wheel that are not yet a row
    CADisplayLink link_;
    std::shared_ptr<UIPanGestureRecognizer> pan_;
    std::shared_ptr<UIView> wheel_;
    std::vector<std::shared_ptr<UIView>> indicator_; // the lines above and below the middle
    std::vector<std::shared_ptr<UILabel>> labels_;   // only for rows that can be seen
};

} // namespace tallyforge
