#pragma once

#include "uikit/UIView.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace tallyforge {

/// The platform's numbers.
enum UIControlEvents : uint32_t {
    UIControlEventTouchDown = 1U << 0U,
    UIControlEventTouchUpInside = 1U << 6U,
    UIControlEventTouchUpOutside = 1U << 7U,
    UIControlEventTouchCancel = 1U << 8U,
    UIControlEventValueChanged = 1U << 12U,
    UIControlEventEditingChanged = 1U << 17U,
};

/// A view that a person operates: it tracks the finger and tells its targets what happened.
class UIControl : public UIView {
  public:
    using UIView::UIView;
    using Action = std::function<void(UIControl& sender)>;

    const char* className() const override { return "UIControl"; }
    bool enabled() const { return enabled_; }
    virtual void setEnabled(bool enabled);
    bool highlighted() const { return highlighted_; }
    virtual void setHighlighted(bool highlighted) { highlighted_ = highlighted; }
    bool tracking() const { return tracking_; }

    /// The action is called for each of the events in the mask. It may end the control, or take its targets
    /// away: those are then called no more.
    void addTargetForControlEvents(Action action, uint32_t events);
    void removeAllTargets() { targets_.clear(); }
    void sendActionsForControlEvents(uint32_t events);

    bool canBecomeFocused() const override { return enabled_; }
    void setFocused(bool focused) override; ///< a text field that was being edited ends
    /// Touch down, then what the movement brings, then touch up or cancel. A disabled control takes the touch
    /// and does nothing with it.
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;

  protected:
    /// False refuses the touch.
    virtual bool beginTracking(const UITouch&) { return true; }
    virtual void continueTracking(const UITouch&) {}
    virtual void endTracking(const UITouch&) {}
    virtual void cancelTracking() {}
    /// Whether the touch is near enough to count as inside (70 points around, as fingers are wide).
    bool isTouchInside(const UITouch& touch) const;

  private:
    struct Target {
        Action action;
        uint32_t events;
    };
    std::vector<std::shared_ptr<const Target>> targets_;
    bool enabled_ = true;
    bool highlighted_ = false;
    bool tracking_ = false;
};

} // namespace tallyforge
