#pragma once

#include "uikit/UIApplication.h"

namespace tallyforge {

/// Opens URLs with the desktop's own programs; what no program on this machine takes is not opened, and
/// said on standard error. Programs are asked once a scheme, for half a second at the most.
UIApplication::Opener DesktopOpener();

} // namespace tallyforge
