#pragma once

#include "cli/Command.h"

namespace tallyforge {

/// The commands that read and write single settings. They return the exit status.
int RunList(const Command& command);
int RunGet(const Command& command);
int RunSet(const Command& command);
int RunUnset(const Command& command);
int RunWatch(const Command& command);

/// The colours to choose from. Needs no device.
int RunColors(const Command& command);

/// Those of a mark's whole look.
int RunRandomize(const Command& command);
int RunReset(const Command& command);

} // namespace tallyforge
