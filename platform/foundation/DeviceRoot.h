#pragma once

#include "foundation/Result.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The folder of this machine that stands for the device's "/". All absolute device paths are resolved below
/// it, symbolic links included: a link to "/private/var" means that folder under the root, and ".." cannot
/// leave it. Set once by the host before anything reads a file.
class DeviceRoot {
  public:
    /// Fails when the folder cannot be opened.
    static Status set(const std::string& hostFolder);
    static const std::string& hostFolder();

    /// Opens a file or folder below the root; flags as open(2). Returns a descriptor, or -1 with errno set.
    static int open(std::string_view devicePath, int flags, unsigned mode = 0);
};

/// What tells one version of a file from another.
struct FileIdentity {
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t size = -1;
    int64_t modifiedNanoseconds = 0;
    int64_t changedNanoseconds = 0;
    bool exists() const { return size >= 0; }
    bool operator==(const FileIdentity&) const = default;
};

} // namespace tallyforge
