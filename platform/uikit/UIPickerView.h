#pragma once

#include "quartzcore/CADisplayLink.h"
#include "uikit/UIView.h"

#include <memory>
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
    void setDataSource(UIPickerViewDataSource* source) { dataSource_ = source; }
    void setDelegate(UIPickerViewDelegate* delegate) { delegate_ = delegate; }
    bool showsSelectionIndicator() const { return showsIndicator_; }
    void setShowsSelectionIndicator(bool shows);

    void reloadAllComponents();
    int numberOfRowsInComponent(int component) const;
    std::string titleForRow(int row) const;
    /// -1 when there are no rows.
    int selectedRowInComponent(int component) const;
    /// Held to the rows that there are. Tells nobody.
    void selectRowInComponent(int row, int component, bool animated);

    bool canBecomeFocused() const override { return true; }
    void setFocused(bool focused) override;
    bool pressKey(UIKey key) override; ///< up and down, home and end, page up and page down
    void touchesEnded(const UITouch& touch) override; ///< a tap on a row turns the wheel there
    void layoutSubviews() override;
    static constexpr CGFloat kRowHeight = 32;

  private:
    void pan();
    void turnTo(int row, bool tell);
    void step(double seconds);
    void show();

    UIPickerViewDataSource* dataSource_ = nullptr;
    UIPickerViewDelegate* delegate_ = nullptr;
    bool showsIndicator_ = false;
    std::vector<std::string> titles_;
    CGFloat offset_ = 0; // in rows
    int selected_ = -1;
    bool tellWhenThere_ = false;
    CGFloat from_ = 0;
    double turnStart_ = -1; // seconds
    CGFloat dragFrom_ = 0;
    CADisplayLink link_;
    std::shared_ptr<UIPanGestureRecognizer> pan_;
    std::shared_ptr<UIView> wheel_;
    std::shared_ptr<UIView> indicator_;
    std::vector<std::shared_ptr<UILabel>> labels_;
};

} // namespace tallyforge
