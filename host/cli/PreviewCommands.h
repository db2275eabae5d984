#pragma once

#include "cli/Command.h"

namespace tallyforge {

/// The commands that draw the preview. They return the exit status.
int RunRender(const Command& command);
int RunAnimate(const Command& command);
int RunInspect(const Command& command);
/// Without a command: pictures of the preview on phone and tablet, still and moving, and where they are.
int RunPictures(const Command& command);

} // namespace tallyforge
