#pragma once

#include "coregraphics/CGGeometry.h"

#include <cstdint>

namespace tallyforge {

class UIView;

enum class UITouchPhase { began, moved, ended, cancelled };

/// A finger on the screen, or the mouse with its button down, at one moment.
struct UITouch {
    UITouchPhase phase = UITouchPhase::began;
    CGPoint locationInWindow;
    int64_t nanoseconds = 0; ///< on the main queue's clock

    CGPoint locationInView(const UIView& view) const;
    double seconds() const { return static_cast<double>(nanoseconds) / 1e9; }
};

/// A key that screens understand by itself; text goes to the text field that is being edited.
enum class UIKey {
    up,
    down,
    left,
    right,
    tab,
    backTab,
    space,
    enter,
    escape,
    home,
    end,
    pageUp,
    pageDown,
    backspace,
    forwardDelete
};

} // namespace tallyforge
