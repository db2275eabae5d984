#pragma once

#include "cli/Command.h"

namespace tallyforge {

/// Draws all themes of the user's folder into one picture. Returns the exit status.
int RunGallery(const Command& command);

} // namespace tallyforge
