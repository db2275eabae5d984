#pragma once

#include "window/Display.h"

namespace tallyforge {

struct WindowOptions {
    bool pad = false; ///< a tablet's screen, not a phone's
    ReachableDisplay display;
};

/// Shows the Settings app in a window until it is closed. The device has been opened. Returns the exit
/// status.
int RunWindow(WindowOptions options);

} // namespace tallyforge
