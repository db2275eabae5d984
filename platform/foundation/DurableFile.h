#pragma once

#include "foundation/FileDescriptor.h"
#include "foundation/Result.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// What the name of a file ends in while it is being written, on the device and beside it.
inline constexpr std::string_view kUnfinishedSuffix = ".tallyforge-new";

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

    /// As `lock`, of the place itself: a symbolic link or a special file there is what is replaced, and the
    /// new file takes over neither mode nor owner. Fails when a folder stands there.
    static Result<DurableFile> lockPlace(std::string_view devicePath);

    /// Removes what a writer that was cut short left in the folder (its path ends in "/"), unless somebody is
    /// saving there right now. Two failed look-ups where there is nothing.
    static void removeUnfinished(std::string_view folder);
    /// The same in the folder where a save of the file goes when the file is a symbolic link; one failed look
    /// at it when it is none.
    static void removeUnfinishedBehindLink(std::string_view devicePath);
    /// Whether a file of that name is none of the folder's own, but one being written.
    static bool isUnfinished(std::string_view name);

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
    Status writeTemporary(const std::string& temporary, std::span<const uint8_t> bytes) const;
    Status matchOwnerAndMode(int descriptor) const;
    Result<std::string> keepOldAside() const;
    bool isTheOldFile(const std::string& name) const;
    Status copyOldTo(const std::string& aside) const;

    FileDescriptor folder_;
    std::string name_;
    bool exists_ = false;
    bool keeps_ = false; ///< the new file is to have the old one's mode and owner
    bool isLink_ = false;
    unsigned mode_ = 0;
    unsigned owner_ = 0;
    unsigned group_ = 0;
};

} // namespace tallyforge
