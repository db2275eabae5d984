#pragma once

#include "foundation/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge {

/// Where the device is on this machine.
struct DeviceLocation {
    std::filesystem::path folder;
    /// The program's own device, which it furnishes; any other folder is taken as it is.
    bool own = false;
};

/// The folder named on the command line, else by TALLYFORGE_ROOT, else "tallyforge/device" in the user's data
/// folder. Fails when none can be told.
Result<DeviceLocation> LocateDevice(const std::optional<std::string>& named);

/// "tallyforge" in the user's data folder ($XDG_DATA_HOME, else ~/.local/share).
Result<std::filesystem::path> UserDataFolder();

/// The folder that holds the program's "bin", "libexec" and "share".
std::filesystem::path ProgramPrefix();

/// The stock device's file of that device path, as it came with the program; empty when there is none.
std::vector<uint8_t> StockFile(const std::string& devicePath);

/// Makes the device ready and says that it is the one: furnishes the program's own, sets the device root, and
/// removes what saves that were cut short have left there.
/// What could not be furnished is told through `warn` and is no failure.
Status OpenDevice(const DeviceLocation& location, void (*warn)(const std::string& line));

} // namespace tallyforge
