#pragma once

#include "cli/Command.h"

namespace tallyforge {

/// The commands "theme ..." that draw nothing. They return the exit status.
int RunTheme(const Command& command);

} // namespace tallyforge
