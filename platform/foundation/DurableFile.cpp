#include "foundation/DurableFile.h"

#include "foundation/DeviceRoot.h"
#include "foundation/NameBeside.h"
#include "foundation/RegularFile.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge {

namespace {

// A locked folder has one writer, so one name serves for all its files; and what a writer that was cut short
// left behind is found at once.
constexpr std::string_view kUnfinishedFile = kUnfinishedSuffix;
constexpr std::string_view kUnfinishedCopy = ".tallyforge-copy";

constexpr int newFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;
constexpr int oldFileFlags = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;

// How many links a file's path may lead through.
constexpr int kMostLinks = 40;

Error Failure(const std::string& step, int number = errno) {
    return ErrorOfErrno(number).during(step);
}

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

/// Where the symbolic link leads that stands under the name in the folder, or is the "folder" itself with an
/// empty name; `path` is its own.
Result<std::string> PathBehindLink(int folder, const char* name, const std::string& path) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlinkat(folder, name, text.data(), text.size());
    if (length <= 0) return Failure("reading the symbolic link", length < 0 ? errno : ENOENT);
    const std::string target(text.data(), static_cast<size_t>(length));
    return target.front() == '/' ? target : FolderOf(path) + target;
}

} // namespace

Result<DurableFile> DurableFile::lock(std::string_view devicePath) {
    return lockFollowing(std::string(devicePath), nullptr);
}

Result<DurableFile> DurableFile::lockAndRead(std::string_view devicePath, size_t limit,
                                             std::vector<uint8_t>& oldBytes, std::string& unreadable) {
    const Reading reading{limit, oldBytes, unreadable};
    return lockFollowing(std::string(devicePath), &reading);
}

Result<DurableFile> DurableFile::lockFollowing(std::string path, const Reading* reading) {
    for (int links = 0; links <= kMostLinks; ++links) {
        DurableFile file;
        if (auto locked = file.lockFolder(path); !locked) return locked.error();
        if (auto looked = file.look(reading); !looked) return looked.error();
        if (!file.isLink_) return file;
        auto behind = PathBehindLink(file.folder_.get(), file.name_.c_str(), path);
        if (!behind) return behind.error();
        path = std::move(*behind);
    }
    return ErrorOfErrno(ELOOP);
}

Result<DurableFile> DurableFile::lockPlace(std::string_view devicePath) {
    DurableFile file;
    if (auto locked = file.lockFolder(std::string(devicePath)); !locked) return locked.error();
    struct stat status {};
    if (fstatat(file.folder_.get(), file.name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) return Failure("examining the old file");
        return file;
    }
    if (S_ISDIR(status.st_mode)) return ErrorOfErrno(EISDIR);
    file.exists_ = true;
    return file;
}

void DurableFile::removeUnfinished(std::string_view folder) {
    for (const std::string_view name : {kUnfinishedFile, kUnfinishedCopy}) {
        const std::string path = std::string(folder).append(name);
        if (!FileDescriptor(DeviceRoot::open(path, O_PATH | O_NOFOLLOW))) continue;
        const FileDescriptor locked(DeviceRoot::open(folder, O_RDONLY | O_DIRECTORY));
        // Whoever holds the lock is saving at this moment, and clears away what was left behind.
        if (!locked || flock(locked.get(), LOCK_EX | LOCK_NB) != 0) return;
        unlinkat(locked.get(), std::string(name).c_str(), 0);
    }
}

void DurableFile::removeUnfinishedBehindLink(std::string_view devicePath) {
    std::string path(devicePath);
    for (int links = 0; links <= kMostLinks; ++links) {
        const FileDescriptor link(DeviceRoot::open(path, O_PATH | O_NOFOLLOW));
        auto behind = link ? PathBehindLink(link.get(), "", path) : Result<std::string>(Failure("looking"));
        if (!behind) {
            if (links > 0) removeUnfinished(FolderOf(path));
            return;
        }
        path = std::move(*behind);
    }
}

bool DurableFile::isUnfinished(std::string_view name) {
    return name == kUnfinishedFile || name == kUnfinishedCopy;
}

Status DurableFile::lockFolder(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || path.find('\0') != std::string::npos) return ErrorOfErrno(EINVAL);
    name_ = path.substr(slash + 1);
    if (name_.empty() || name_ == "." || name_ == "..") return ErrorOfErrno(EISDIR);
    if (isUnfinished(name_)) return ErrorOfErrno(EINVAL);
    folder_ = FileDescriptor(DeviceRoot::open(path.substr(0, slash + 1), O_RDONLY | O_DIRECTORY));
    if (!folder_) return Failure("opening its folder");
    while (flock(folder_.get(), LOCK_EX) != 0)
        if (errno != EINTR) return Failure("locking its folder");
    return Done{};
}

/// Learns what stands in the file's place, and reads it if that is wanted.
Status DurableFile::look(const Reading* reading) {
    if (!reading) return examine();
    const FileDescriptor old(openat(folder_.get(), name_.c_str(), oldFileFlags));
    if (!old) {
        const int number = errno;
        if (number == ENOENT) return Done{};
        auto examined = examine();
        if (examined && exists_) reading->unreadable = ReasonOfErrno(number);
        return examined;
    }
    struct stat status {};
    if (fstat(old.get(), &status) != 0) return Failure("examining the old file");
    if (auto regular = ExpectRegular(status.st_mode); !regular) return regular;
    exists_ = true;
    keeps_ = true;
    mode_ = status.st_mode & 07777;
    owner_ = status.st_uid;
    group_ = status.st_gid;
    auto bytes = ReadToEnd(old.get(), static_cast<size_t>(status.st_size), reading->limit);
    if (bytes)
        reading->bytes = std::move(*bytes);
    else
        reading->unreadable = bytes.reason();
    return Done{};
}

Status DurableFile::examine() {
    struct stat status {};
    if (fstatat(folder_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT) return Done{};
        return Failure("examining the old file");
    }
    if (S_ISLNK(status.st_mode)) {
        isLink_ = true;
        return Done{};
    }
    if (auto regular = ExpectRegular(status.st_mode); !regular) return regular;
    exists_ = true;
    keeps_ = true;
    mode_ = status.st_mode & 07777;
    owner_ = status.st_uid;
    group_ = status.st_gid;
    return Done{};
}

Status DurableFile::replace(std::span<const uint8_t> bytes, bool keepAside) {
    const int folder = folder_.get();
    const std::string temporary(kUnfinishedFile);
    if (auto written = writeTemporary(temporary, bytes); !written) return written;
    std::string aside;
    if (keepAside && exists_) {
        auto kept = keepOldAside();
        if (!kept) {
            unlinkat(folder, temporary.c_str(), 0);
            return kept.error();
        }
        aside = *kept;
    }
    if (renameat(folder, temporary.c_str(), folder, name_.c_str()) != 0) {
        const Error failure = Failure("renaming the temporary file");
        unlinkat(folder, temporary.c_str(), 0);
        if (!aside.empty()) unlinkat(folder, aside.c_str(), 0);
        return failure;
    }
    // The new file is in place; whether a power cut would undo that is unknown, and is said.
    if (fsync(folder) != 0) return Failure("syncing the folder after the renaming");
    return Done{};
}

/// Leaves a synced temporary file with the old file's owner and mode, or nothing.
Status DurableFile::writeTemporary(const std::string& temporary, std::span<const uint8_t> bytes) const {
    const int folder = folder_.get();
    const unsigned mode = keeps_ ? mode_ & 0777 : 0644;
    FileDescriptor file(openat(folder, temporary.c_str(), newFileFlags, mode));
    if (!file && errno == EEXIST) {
        // Left behind by a writer that was cut short: nobody else is here while the folder is locked.
        if (unlinkat(folder, temporary.c_str(), 0) != 0) return Failure("removing a stale temporary file");
        file = FileDescriptor(openat(folder, temporary.c_str(), newFileFlags, mode));
    }
    if (!file) return Failure("creating the temporary file");
    Status outcome = WriteAll(file.get(), bytes) ? Status(Done{}) : Failure("writing the temporary file");
    if (outcome) outcome = matchOwnerAndMode(file.get());
    // A failed sync may have dropped the pages: this descriptor's data is lost, trying again would only lie.
    if (outcome && fsync(file.get()) != 0) outcome = Failure("syncing the temporary file");
    if (!outcome) unlinkat(folder, temporary.c_str(), 0);
    return outcome;
}

Status DurableFile::matchOwnerAndMode(int descriptor) const {
    struct stat made {};
    if (fstat(descriptor, &made) != 0) return Failure("examining the temporary file");
    // Owner first: changing it clears the set-id bits.
    if (keeps_ && (made.st_uid != owner_ || made.st_gid != group_) && fchown(descriptor, owner_, group_) != 0)
        return Failure("keeping the owner");
    const unsigned wanted = keeps_ ? mode_ : 0644;
    const bool ownerChanged = keeps_ && (made.st_uid != owner_ || made.st_gid != group_);
    if (((made.st_mode & 07777) != wanted || ownerChanged) && fchmod(descriptor, wanted) != 0)
        return Failure("keeping the mode");
    return Done{};
}

/// Gives the old file a second name that was free, and makes that durable; returns the name.
Result<std::string> DurableFile::keepOldAside() const {
    const int folder = folder_.get();
    for (int number = 1; number < 10'000; ++number) {
        std::string ending = ".unreadable";
        if (number > 1) ending.append(1, '.').append(std::to_string(number));
        std::string aside = NameBeside("", name_, ending);
        Status kept = Done{};
        if (linkat(folder, name_.c_str(), folder, aside.c_str(), 0) != 0) {
            const int failure = errno;
            if (failure == EEXIST) {
                if (!isTheOldFile(aside)) continue;
                return aside; // by a save that was cut short before the renaming
            }
            // A file system without hard links, or one that refuses this one.
            if (failure != EPERM && failure != EOPNOTSUPP && failure != EMLINK)
                return Failure("keeping the old file aside", failure);
            struct stat taken {};
            if (fstatat(folder, aside.c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0) continue;
            kept = copyOldTo(aside);
        }
        if (kept && fsync(folder) != 0) {
            kept = Failure("syncing the folder of the file kept aside");
            unlinkat(folder, aside.c_str(), 0);
        }
        if (!kept) return kept.error();
        return aside;
    }
    return Error{"keeping the old file aside: too many are kept already"};
}

bool DurableFile::isTheOldFile(const std::string& name) const {
    struct stat old {
    }, other{};
    const int folder = folder_.get();
    return fstatat(folder, name_.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0 &&
           fstatat(folder, name.c_str(), &other, AT_SYMLINK_NOFOLLOW) == 0 && old.st_dev == other.st_dev &&
           old.st_ino == other.st_ino;
}

Status DurableFile::copyOldTo(const std::string& aside) const {
    const std::string step = "keeping a copy of the old file";
    const int folder = folder_.get();
    const FileDescriptor old(openat(folder, name_.c_str(), oldFileFlags));
    if (!old) return Failure(step);
    const auto bytes = ReadRegularFile(old.get(), SIZE_MAX - 1);
    if (!bytes) return bytes.error().during(step);
    const std::string copy(kUnfinishedCopy);
    if (auto written = writeTemporary(copy, *bytes); !written) return written.error().during(step);
    if (renameat(folder, copy.c_str(), folder, aside.c_str()) == 0) return Done{};
    const Error failure = Failure(step);
    unlinkat(folder, copy.c_str(), 0);
    return failure;
}

} // namespace tallyforge
