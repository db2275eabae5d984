#pragma once

#include "cli/Command.h"

namespace tallyforge {

/// Runs the Settings app without a window by a script, one step a line. Returns the exit status.
int RunDrive(const Command& command);

} // namespace tallyforge
