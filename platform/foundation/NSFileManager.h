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
    static constexpr size_t kUsualLimit = 4u << 20; ///< bytes of a file that is read

    static NSFileManager& defaultManager();

    bool fileExistsAtPath(std::string_view path) const;
    /// The regular file's identity; one that does not exist when it is missing or something else.
    FileIdentity identityOfFileAtPath(std::string_view path) const;
    /// The bytes of a regular file of at most `limit` bytes. FIFOs, devices, sockets and folders are refused
    /// at once; nothing here blocks.
    Result<std::vector<uint8_t>> contentsAtPath(std::string_view path, size_t limit = kUsualLimit) const;
    /// Whether what `contentsAtPath` could not read, for that reason, is a file that may be meant: neither
    /// nothing nor something else than a file, nor a larger one.
    bool isUnreadFileAtPath(std::string_view path, const Error& why, size_t limit = kUsualLimit) const;
    /// Names in the folder, without ".", ".." and files that are being written, sorted by bytes.
    Result<std::vector<std::string>> contentsOfDirectoryAtPath(std::string_view path) const;
    /// Creates the folder and those above it; one that exists is no error. New folders have mode 0755.
    Status createDirectoryAtPath(std::string_view path);
    /// Removes a file (or a symbolic link itself), never a folder. After success a power cut does not bring
    /// it back; after a failed sync, which the reason names, it may.
    Status removeItemAtPath(std::string_view path);
    /// The same, and a folder with all that is in it, but not yet durably: that takes a sync of the folder
    /// around it. What links in it lead to stays.
    Status removeTreeAtPath(std::string_view path);
    /// Makes durable what was removed from the folder.
    Status syncDirectoryAtPath(std::string_view path);

    /// Replaces the file as a whole and durably: after success the new bytes survive a power cut, after a
    /// failure the old ones stand. A new file has mode 0644; an existing one keeps its mode and owner.
    /// Held against other writers of the same folder by a lock on the folder.
    Status writeDataToFile(std::string_view path, std::span<const uint8_t> bytes);

    /// As writeDataToFile, but fails where something stands already.
    Status writeDataToNewFile(std::string_view path, std::span<const uint8_t> bytes);
    /// Removes the file or link that stands there and puts a new file in its place, both in one step: what is
    /// to be removed is there until the new file is. Fails when a folder stands there.
    Status removeItemAndWriteData(std::string_view path, std::span<const uint8_t> bytes);
    /// Removes what saves into the folder (its path ends in "/") that were cut short have left behind.
    void removeUnfinishedInDirectory(std::string_view folder);
    /// Removes what saves of the file have left behind where it leads, if it is a symbolic link.
    void removeUnfinishedBehindLink(std::string_view path);

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
    Status rewriteFile(std::string_view path, const Edit& edit, size_t limit = kUsualLimit);

    /// Hears of every file written and removed, by device path; for traces. Empty removes it.
    void setTrace(std::function<void(std::string_view verb, std::string_view path)> trace);

  private:
    std::function<void(std::string_view, std::string_view)> trace_;
};

} // namespace tallyforge
