#pragma once

#include "cli/Command.h"

#include <optional>

namespace tallyforge {

/// Makes the device that the command names ready for use. A status when that cannot be done; it has been said
/// why.
std::optional<int> OpenDeviceFor(const Command& command);

/// Says it when the settings domain's file is there but could not be read as one: it then counts as empty.
void WarnOfUnreadableSettings(const Command& command);

/// After a change of settings was saved, or not: the status, having said on standard error why it could not
/// be saved, and where the old file is when it was no domain.
int SettingsOutcome(const Command& command);

} // namespace tallyforge
