#include "device/DeviceLocation.h"

#include "device/HostFile.h"
#include "device/StockDevice.h"
#include "foundation/DeviceRoot.h"
#include "foundation/NSFileManager.h"

#include <cstdlib>
#include <string_view>
#include <utility>

namespace tallyforge {

namespace {

// Where the system saves: settings, themes, ties, the preview's configuration.
constexpr std::string_view kSavedInto[] = {
    "/var/mobile/Library/Preferences/",
    "/var/mobile/Documents/Tallyforge/",
    "/var/mobile/Documents/Tallyforge/PerAppThemes/",
    "/var/mobile/Documents/Tallyforge/Config/",
};

// Those of the files saved that always have the same name; they may be links that lead elsewhere on the
// device.
constexpr std::string_view kSavedFiles[] = {
    "/var/mobile/Library/Preferences/com.quillon.tallyforge.plist",
    "/var/mobile/Documents/Tallyforge/Config/config.tfc",
};

std::filesystem::path StockFolder() {
    return ProgramPrefix() / "share" / "tallyforge" / "stock";
}

// What the environment says, unless it says nothing.
std::optional<std::string> FromEnvironment(const char* name) {
    const char* value = std::getenv(name); // read before any thread is started
    return value && *value ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace

Result<DeviceLocation> LocateDevice(const std::optional<std::string>& named) {
    if (named) return DeviceLocation{*named, false};
    if (auto folder = FromEnvironment("TALLYFORGE_ROOT")) return DeviceLocation{*folder, false};
    auto data = UserDataFolder();
    if (!data) return Error{data.reason() + "; name a folder with --root"};
    return DeviceLocation{*data / "device", true};
}

Result<std::filesystem::path> UserDataFolder() {
    // A relative XDG_DATA_HOME is to be ignored, as its own rules have it; so is a relative HOME.
    if (auto data = FromEnvironment("XDG_DATA_HOME"); data && data->front() == '/')
        return std::filesystem::path(*data) / "tallyforge";
    if (auto home = FromEnvironment("HOME"); home && home->front() == '/')
        return std::filesystem::path(*home) / ".local/share/tallyforge";
    return Error{"neither XDG_DATA_HOME nor HOME names a folder"};
}

std::filesystem::path ProgramPrefix() {
    std::error_code failed; // leaves the path empty; what is looked for below it is then not found
    return std::filesystem::read_symlink("/proc/self/exe", failed).parent_path().parent_path();
}

std::vector<uint8_t> StockFile(const std::string& devicePath) {
    auto bytes = ReadHostFile(StockFolder() / std::filesystem::path(devicePath).relative_path());
    return bytes ? std::move(*bytes) : std::vector<uint8_t>();
}

Status OpenDevice(const DeviceLocation& location, void (*warn)(const std::string& line)) {
    if (location.own) {
        std::error_code failed;
        std::filesystem::create_directories(location.folder, failed);
        if (failed)
            return Error{location.folder.string() + ": the folder cannot be made: " + failed.message()};
        if (auto furnished = FurnishStockDevice(location.folder, StockFolder()); !furnished)
            warn(furnished.reason());
    }
    std::error_code failed;
    if (!std::filesystem::exists(location.folder, failed))
        return Error{location.folder.string() + ": no such folder"};
    if (auto set = DeviceRoot::set(location.folder.string()); !set)
        return Error{location.folder.string() + ": " + set.reason()};
    for (const std::string_view folder : kSavedInto)
        NSFileManager::defaultManager().removeUnfinishedInDirectory(folder);
    for (const std::string_view file : kSavedFiles)
        NSFileManager::defaultManager().removeUnfinishedBehindLink(file);
    return Done{};
}

} // namespace tallyforge
