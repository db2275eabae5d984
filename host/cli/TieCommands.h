#pragma once

#include "cli/Command.h"

namespace tallyforge {

/// The commands "tie ...". They return the exit status.
int RunTie(const Command& command);

} // namespace tallyforge
