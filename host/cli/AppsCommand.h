#pragma once

#include "cli/Command.h"

namespace tallyforge {

/// Prints the installed apps. Returns the exit status.
int RunApps(const Command& command);

} // namespace tallyforge
