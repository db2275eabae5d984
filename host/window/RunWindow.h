#pragma once

#include <string>

namespace tallyforge {

struct WindowOptions {
    bool pad = false;     ///< a tablet's screen, not a phone's
    std::string platform; ///< of the toolkit, as FindDisplay tells it
};

/// Shows the Settings app in a window until it is closed. The device has been opened. Returns the exit status.
int RunWindow(const WindowOptions& options);

} // namespace tallyforge
