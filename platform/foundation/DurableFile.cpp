#include "foundation/DurableFile.h"

#include "foundation/DeviceRoot.h"
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

constexpr int newFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;
constexpr int oldFileFlags = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;

Error Failure(const std::string& step, int number = errno) {
    return Error{step + ": " + ReasonOfErrno(number)};
}

uint64_t FNV1a(std::string_view text) {
    uint64_t hash = 0xCBF29CE484222325u;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    return hash;
}

/// prefix + name + suffix, the name shortened to its beginning and a hash where the whole would be too long.
std::string NameBeside(std::string_view prefix, std::string_view name, std::string_view suffix) {
    std::string middle(name);
    if (prefix.size() + name.size() + suffix.size() > NAME_MAX) {
        constexpr std::string_view digits = "0123456789abcdef";
        const uint64_t value = FNV1a(name);
        std::string hash = "-";
        for (int shift = 60; shift >= 0; shift -= 4)
            hash += digits[value >> shift & 15];
        size_t kept = NAME_MAX - prefix.size() - suffix.size() - hash.size();
        while (kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0) == 0x80)
            --kept; // not in the middle of a character
        middle = std::string(name.substr(0, kept)) + hash;
    }
    return std::string(prefix) + middle + std::string(suffix);
}

Status WriteAll(int descriptor, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return Failure("writing the temporary file");
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
    return Done{};
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
    for (int links = 0; links <= 40; ++links) {
        DurableFile file;
        if (auto locked = file.lockFolder(path); !locked) return locked.error();
        if (auto looked = file.look(reading); !looked) return looked.error();
        if (!file.isLink_) return file;
        const auto text = file.linkText();
        if (!text) return text.error();
        const std::string folder = path.substr(0, path.rfind('/') + 1);
        path = text->front() == '/' ? *text : folder + *text;
    }
    return Error{ReasonOfErrno(ELOOP)};
}

Status DurableFile::lockFolder(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || path.find('\0') != std::string::npos)
        return Error{ReasonOfErrno(EINVAL)};
    name_ = path.substr(slash + 1);
    if (name_.empty() || name_ == "." || name_ == "..") return Error{ReasonOfErrno(EISDIR)};
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
    if (auto why = WhyNotRegular(status.st_mode); !why.empty()) return Error{std::move(why)};
    exists_ = true;
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
    if (auto why = WhyNotRegular(status.st_mode); !why.empty()) return Error{std::move(why)};
    exists_ = true;
    mode_ = status.st_mode & 07777;
    owner_ = status.st_uid;
    group_ = status.st_gid;
    return Done{};
}

Result<std::string> DurableFile::linkText() const {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlinkat(folder_.get(), name_.c_str(), text.data(), text.size());
    if (length <= 0) return Failure("reading the symbolic link", length < 0 ? errno : ENOENT);
    return std::string(text.data(), static_cast<size_t>(length));
}

Status DurableFile::replace(std::span<const uint8_t> bytes, bool keepAside) {
    const int folder = folder_.get();
    const std::string temporary = NameBeside(".", name_, ".tallyforge-new");
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
    const unsigned mode = exists_ ? mode_ & 0777 : 0644;
    FileDescriptor file(openat(folder, temporary.c_str(), newFileFlags, mode));
    if (!file && errno == EEXIST) {
        // Left behind by a writer that was cut short: nobody else is here while the folder is locked.
        if (unlinkat(folder, temporary.c_str(), 0) != 0) return Failure("removing a stale temporary file");
        file = FileDescriptor(openat(folder, temporary.c_str(), newFileFlags, mode));
    }
    if (!file) return Failure("creating the temporary file");
    Status outcome = WriteAll(file.get(), bytes);
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
    if (exists_ && (made.st_uid != owner_ || made.st_gid != group_) &&
        fchown(descriptor, owner_, group_) != 0)
        return Failure("keeping the owner");
    const unsigned wanted = exists_ ? mode_ : 0644;
    const bool ownerChanged = exists_ && (made.st_uid != owner_ || made.st_gid != group_);
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
            if (errno == EEXIST) continue;
            // EPERM, EOPNOTSUPP, EMLINK: a file system without hard links, or one that refuses this one.
            if (errno != EPERM && errno != EOPNOTSUPP && errno != EMLINK)
                return Failure("keeping the old file aside");
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

Status DurableFile::copyOldTo(const std::string& aside) const {
    constexpr std::string_view step = "keeping a copy of the old file";
    const FileDescriptor old(openat(folder_.get(), name_.c_str(), oldFileFlags));
    if (!old) return Failure(std::string(step));
    auto bytes = ReadRegularFile(old.get(), SIZE_MAX - 1);
    if (!bytes) return Error{std::string(step) + ": " + bytes.reason()};
    const FileDescriptor copy(openat(folder_.get(), aside.c_str(), newFileFlags, mode_ & 0777));
    if (!copy) return Failure(std::string(step));
    Status outcome = WriteAll(copy.get(), *bytes);
    if (outcome) outcome = matchOwnerAndMode(copy.get());
    if (outcome && fsync(copy.get()) != 0) outcome = Failure("syncing the copy");
    if (outcome) return outcome;
    unlinkat(folder_.get(), aside.c_str(), 0);
    return Error{std::string(step) + ": " + outcome.reason()};
}

} // namespace tallyforge
