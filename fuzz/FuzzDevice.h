#pragma once

#include "corefoundation/CFPreferences.h"
#include "foundation/DeviceRoot.h"
#include "settings/SettingsKeys.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include <unistd.h>

namespace tallyforge::fuzz {

/// Ends the run with a report when a property does not hold. Heard even where a target keeps `stderr` for
/// itself.
inline void Require(bool holds, const char* property) {
    if (holds) return;
    dprintf(STDERR_FILENO, "does not hold: %s\n", property);
    std::abort();
}

/// A device in memory, in a folder that holds nothing else: whatever appears beside it has left the root.
/// Gone at the end of the process.
class FuzzDevice {
  public:
    FuzzDevice() {
        std::string pattern = std::filesystem::exists("/dev/shm") ? "/dev/shm/tallyforge-fuzz-XXXXXX"
                                                                  : "/tmp/tallyforge-fuzz-XXXXXX";
        Require(mkdtemp(pattern.data()) != nullptr, "a folder for the device");
        outside_ = pattern;
        root_ = outside_ / "device";
        std::filesystem::create_directories(root_);
        // No bus is looked for.
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", root_.c_str(), 1);
        setenv("TMPDIR", root_.c_str(), 1);
        Require(bool(DeviceRoot::set(root_)), "the device root can be set");
    }
    ~FuzzDevice() {
        std::error_code ignored;
        std::filesystem::remove_all(outside_, ignored);
    }
    FuzzDevice(const FuzzDevice&) = delete;
    FuzzDevice& operator=(const FuzzDevice&) = delete;

    std::filesystem::path file(const std::string& devicePath) const { return root_ / devicePath.substr(1); }

    void write(const std::string& devicePath, std::span<const uint8_t> bytes) const {
        const std::filesystem::path target = file(devicePath);
        std::FILE* out = std::fopen(target.c_str(), "wb");
        if (!out) {
            std::filesystem::create_directories(target.parent_path());
            out = std::fopen(target.c_str(), "wb");
        }
        Require(out != nullptr, "a file of the device can be made");
        Require(std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size(), "it can be written");
        std::fclose(out);
    }
    void write(const std::string& devicePath, std::string_view text) const {
        write(devicePath, std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
    }

    /// Nothing is kept of what the run before has set or saved in preference domains.
    void forgetPreferences() const {
        CFPreferencesForgetAll();
        empty("/var/mobile/Library/Preferences");
    }
    void empty(const std::string& devicePath) const {
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator(file(devicePath), ignored))
            std::filesystem::remove_all(entry.path(), ignored);
    }
    /// Nothing but the device stands in the folder that it is in.
    void requireNothingOutside() const {
        size_t entries = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(outside_))
            ++entries;
        Require(entries == 1, "nothing is written beside the device root");
    }

  private:
    std::filesystem::path outside_;
    std::filesystem::path root_;
};

/// The device that all runs of a target use, made at the first.
inline FuzzDevice& TheDevice() {
    static FuzzDevice device;
    return device;
}

} // namespace tallyforge::fuzz
