#pragma once

#include "uikit/UIApplication.h"

namespace tallyforge {

/// Opens URLs with the desktop's own programs; what no program on this machine takes is not opened.
UIApplication::Opener DesktopOpener();

} // namespace tallyforge
