#pragma once

#include "uikit/UIControl.h"

#include <optional>

namespace tallyforge {

class UIImageView;

/// On or off; 51 x 31 points whatever frame it is given. A tap turns it, and so does dragging the thumb over
/// the middle; that is told once, when the finger lifts.
class UISwitch final : public UIControl {
  public:
    UISwitch() : UISwitch(CGRectZero) {}
    explicit UISwitch(const CGRect& frame);

    const char* className() const override { return "UISwitch"; }
    bool isOn() const { return on_; }
    /// Tells nobody.
    void setOn(bool on, bool animated = false);
    /// The colour of the switched-on track; nothing means the platform's green.
    const std::optional<UIColor>& onTintColor() const { return onTint_; }
    void setOnTintColor(const UIColor& color);
    /// The colour of the switched-off rim; nothing means the platform's grey.
    const std::optional<UIColor>& tintColor() const { return tint_; }
    void setTintColor(const UIColor& color);

    void setFrame(const CGRect& frame) override; ///< the size stays
    void setEnabled(bool enabled) override;
    void layoutSubviews() override;
    /// None, once the thumb is being dragged.
    bool gestureRecognizerShouldBegin(const UIGestureRecognizer& recognizer) override;
    bool pressKey(UIKey key) override; ///< space and return turn it; left off, right on

  protected:
    bool beginTracking(const UITouch& touch) override;
    void continueTracking(const UITouch& touch) override;
    void endTracking(const UITouch& touch) override;
    void cancelTracking() override;

  private:
    void turn(bool on);
    void show(bool on, bool animated);
    void applyColors();
    bool on_ = false;
    bool shown_ = false; // while the finger drags: what it would become
    bool dragged_ = false;
    CGFloat start_ = 0; // where the finger came down
    std::optional<UIColor> onTint_;
    std::optional<UIColor> tint_;
    std::shared_ptr<UIView> rim_;
    std::shared_ptr<UIView> track_;
    std::shared_ptr<UIImageView> thumb_;
};

} // namespace tallyforge
