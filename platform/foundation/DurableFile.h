#pragma once

#include "foundation/FileDescriptor.h"
#include "foundation/Result.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// One file whose folder is locked against the other writers of this system, about to be replaced as a whole.
/// Readers take no lock: they see the old file or the new one, never a part. The lock ends with the object.
class DurableFile {
  public:
    /// Waits for the lock. A symbolic link in the file's place is followed, so that what it names is replaced
    /// and not the link. Fails when a folder or a special file stands there.
    static Result<DurableFile> lock(std::string_view devicePath);
    /// As `lock`, and reads what stands there into `oldBytes`, or says in `unreadable` why it cannot.
    static Result<DurableFile> lockAndRead(std::string_view devicePath, size_t limit,
                                           std::vector<uint8_t>& oldBytes, std::string& unreadable);

    bool exists() const { return exists_; }

    /// Puts the bytes in the file's place; success means that they are on the disk. With `keepAside` the old
    /// file is first kept beside it under a free name. After a failure before the renaming the old file
    /// stands; the reason names the step.
    Status replace(std::span<const uint8_t> bytes, bool keepAside);

  private:
    struct Reading {
        size_t limit;
        std::vector<uint8_t>& bytes;
        std::string& unreadable;
    };
    DurableFile() = default;
    static Result<DurableFile> lockFollowing(std::string path, const Reading* reading);
    Status lockFolder(const std::string& path);
    Status look(const Reading* reading);
    Status examine();
    Result<std::string> linkText() const;
    Status writeTemporary(const std::string& temporary, std::span<const uint8_t> bytes) const;
    Status matchOwnerAndMode(int descriptor) const;
    Result<std::string> keepOldAside() const;
    Status copyOldTo(const std::string& aside) const;

    FileDescriptor folder_;
    std::string name_;
    bool exists_ = false;
    bool isLink_ = false;
    unsigned mode_ = 0;
    unsigned owner_ = 0;
    unsigned group_ = 0;
};

} // namespace tallyforge
