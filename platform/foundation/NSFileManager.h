#pragma once

#include "foundation/DeviceRoot.h"
#include "foundation/Result.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// Files of the device, by their absolute device paths. Everything stays below the device root.
class NSFileManager {
  public:
    static NSFileManager& defaultManager();

    bool fileExistsAtPath(std::string_view path) const;
    /// The regular file's identity; one that does not exist when it is missing or something else.
    FileIdentity identityOfFileAtPath(std::string_view path) const;
    /// The bytes of a regular file of at most `limit` bytes. FIFOs, devices, sockets and folders are refused
    /// at once; nothing here blocks.
    Result<std::vector<uint8_t>> contentsAtPath(std::string_view path, size_t limit = 4u << 20) const;
    /// Names in the folder, without "." and "..", sorted by bytes.
    Result<std::vector<std::string>> contentsOfDirectoryAtPath(std::string_view path) const;
    /// Creates the folder and those above it; one that exists is no error. New folders have mode 0755.
    Status createDirectoryAtPath(std::string_view path);
    /// Removes a file (or a symbolic link itself), never a folder.
    Status removeItemAtPath(std::string_view path);
    /// The same, and a folder with all that is in it. What links in it lead to stays.
    Status removeTreeAtPath(std::string_view path);

    /// Replaces the file as a whole and durably: after success the new bytes survive a power cut, after a
    /// failure the old ones stand. A new file has mode 0644; an existing one keeps its mode and owner.
    /// Held against other writers of the same folder by a lock on the folder.
    Status writeDataToFile(std::string_view path, std::span<const uint8_t> bytes);

    /// What stands in the place of a file that is about to be rewritten.
    struct Present {
        bool exists = false;
        std::span<const uint8_t> bytes;
        std::string unreadable; ///< why an existing file could not be read; empty when it could
    };
    /// Returns what to write, or an error, which is passed on with nothing written. When it sets `keepAside`
    /// the old file is first kept beside itself, its name followed by ".unreadable" (and a number when that
    /// is taken).
    using Edit = std::function<Result<std::vector<uint8_t>>(const Present&, bool& keepAside)>;
    /// As writeDataToFile, with the old contents read under the lock.
    Status rewriteFile(std::string_view path, const Edit& edit, size_t limit = 4u << 20);

    /// Hears of every file written and removed, by device path; for traces. Empty removes it.
    void setTrace(std::function<void(std::string_view verb, std::string_view path)> trace);

  private:
    std::function<void(std::string_view, std::string_view)> trace_;
};

} // namespace tallyforge
