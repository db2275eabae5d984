#pragma once

#include "uikit/UITouch.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tallyforge {

enum class UIGestureRecognizerState { possible, began, changed, ended, cancelled, failed };

/// Recognises a movement of the finger on its view and tells about it. It sees the touches of its view and of
/// all below it, before they do; once it has recognised, they see theirs cancelled.
class UIGestureRecognizer {
  public:
    explicit UIGestureRecognizer(std::function<void()> action) : action_(std::move(action)) {}
    virtual ~UIGestureRecognizer() = default;
    UIGestureRecognizer(const UIGestureRecognizer&) = delete;
    UIGestureRecognizer& operator=(const UIGestureRecognizer&) = delete;

    UIView* view() const { return view_; }
    UIGestureRecognizerState state() const { return state_; }
    bool enabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }

    /// Says that the movement has been recognised, or goes on.
    void fire() const {
        if (action_) action_();
    }

    /// Called by the window.
    virtual void touchesBegan(const UITouch&) {}
    virtual void touchesMoved(const UITouch&) {}
    virtual void touchesEnded(const UITouch&) {}
    virtual void touchesCancelled(const UITouch&) {}
    /// Another recogniser won, or the touch is over.
    virtual void reset() { state_ = UIGestureRecognizerState::possible; }

    /// Asked before it begins; empty means always.
    std::function<bool(const UIGestureRecognizer&)> shouldBegin;

  protected:
    void setState(UIGestureRecognizerState state) { state_ = state; }
    /// Whether nobody between the touched view and this one's view objects.
    bool mayBegin() const;

  private:
    friend class UIView;
    friend class UIWindow;
    std::function<void()> action_;
    UIView* view_ = nullptr;
    UIView* touched_ = nullptr; // during a touch: the view under the finger
    UIGestureRecognizerState state_ = UIGestureRecognizerState::possible;
    bool enabled_ = true;
};

/// A touch that stays where it came down until it is lifted.
class UITapGestureRecognizer final : public UIGestureRecognizer {
  public:
    using UIGestureRecognizer::UIGestureRecognizer;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;

  private:
    CGPoint start_;
};

/// A finger that moves: begins once it is 10 points from where it came down.
class UIPanGestureRecognizer final : public UIGestureRecognizer {
  public:
    enum class Direction { any, vertical, horizontal };
    explicit UIPanGestureRecognizer(std::function<void()> action, Direction direction = Direction::any)
        : UIGestureRecognizer(std::move(action)), direction_(direction) {}

    /// Points moved since it came down.
    CGPoint translation() const { return translation_; }
    /// Points a second, over the last tenth of a second.
    CGPoint velocity() const;
    CGPoint startInWindow() const { return start_; }

    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;

  private:
    struct Sample {
        CGPoint location;
        int64_t nanoseconds = 0;
    };
    void note(const UITouch& touch);

    Direction direction_;
    CGPoint start_;
    CGPoint translation_;
    std::vector<Sample> samples_; // of the last tenth of a second
};

} // namespace tallyforge
