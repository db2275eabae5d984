#pragma once

#include <functional>
#include <utility>

namespace tallyforge {

/// Recognises a movement of the finger on its view and tells about it.
class UIGestureRecognizer {
  public:
    explicit UIGestureRecognizer(std::function<void()> action) : action_(std::move(action)) {}
    virtual ~UIGestureRecognizer() = default;
    /// Says that the movement has been recognised.
    void fire() const {
        if (action_) action_();
    }

  private:
    std::function<void()> action_;
};

/// One short touch in one place.
class UITapGestureRecognizer final : public UIGestureRecognizer {
  public:
    using UIGestureRecognizer::UIGestureRecognizer;
};

} // namespace tallyforge
