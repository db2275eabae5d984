#pragma once

#include "cli/Command.h"
#include "foundation/Result.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <span>

namespace tallyforge {

/// Runs the Settings app without a window by a script, one step a line. Returns the exit status.
int RunDrive(const Command& command);

/// Takes the files that the steps `render FILE` and `inspect FILE` write.
using DriveFiles = std::function<Status(const std::filesystem::path& file, std::span<const uint8_t> bytes)>;
/// The same with the script at hand, and with the files given to whoever wants them.
int RunDriveScript(const Command& command, std::istream& script, const DriveFiles& files);

} // namespace tallyforge
