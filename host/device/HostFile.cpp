#include "device/HostFile.h"

#include "foundation/DurableFile.h"
#include "foundation/FileDescriptor.h"
#include "foundation/NameBeside.h"
#include "foundation/RegularFile.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge {

namespace {

namespace fs = std::filesystem;

Error Failure(const fs::path& path, int number = errno) {
    return ErrorOfErrno(number).during(path.string());
}

// How long another program may take to write the same file.
constexpr int kTries = 100;
constexpr int kMillisecondsBetween = 50;

/// The name under which a file is written until it is whole. It follows from the file's own name, so that the
/// next one to write that file clears away what was left of a writer that was cut short. Whoever writes it
/// holds a lock on it; a lock on a folder of this machine might be somebody else's, and never end.
class Unfinished {
  public:
    explicit Unfinished(const fs::path& target)
        : target_(target),
          name_(target.parent_path() / NameBeside(".", target.filename().string(), kUnfinishedSuffix)) {}
    ~Unfinished() {
        if (ours_) ::unlink(name_.c_str());
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    int descriptor() const { return file_.get(); }

    /// Opens it empty, waiting for another program that is writing the same file, but not for ever.
    Status open() {
        for (int tries = 0; tries < kTries; ++tries) {
            constexpr int kFlags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
            file_ = FileDescriptor(::open(name_.c_str(), kFlags | O_CREAT | O_EXCL, 0600));
            ours_ = static_cast<bool>(file_);
            if (!file_ && errno == EEXIST) {
                file_ = FileDescriptor(::open(name_.c_str(), kFlags));
                if (!file_ && errno == ENOENT) continue; // the other program is done with it
                if (!file_ && mayBeInTheWay(errno)) {
                    if (::unlink(name_.c_str()) != 0 && errno != ENOENT) return Failure(name_);
                    continue;
                }
            }
            if (!file_ && errno == ENOENT) return Error{target_.string() + ": there is no such folder"};
            if (!file_) return Failure(target_);
            if (!ours_ && !isOfThisProgram()) {
                if (::unlink(name_.c_str()) != 0 && errno != ENOENT) return Failure(name_);
                continue;
            }
            if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
                if (errno == EINTR) continue;
                if (errno == EWOULDBLOCK) {
                    ::poll(nullptr, 0, kMillisecondsBetween);
                    continue;
                }
                if (errno != EOPNOTSUPP && errno != ENOLCK && errno != ENOSYS) return Failure(target_);
            }
            struct stat opened {
            }, named{};
            if (::fstat(file_.get(), &opened) != 0) return Failure(target_);
            const bool gone = ::lstat(name_.c_str(), &named) != 0;
            if (gone && errno != ENOENT) return Failure(target_);
            ours_ = !gone && named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
            if (!ours_) continue; // the other program has put it in its place, or given it up
            return ::ftruncate(file_.get(), 0) == 0 ? Status(Done{}) : Status(Failure(target_));
        }
        return Failure(target_, EBUSY);
    }

    Status moveTo(const fs::path& target) {
        if (::rename(name_.c_str(), target.c_str()) != 0) return Failure(target);
        ours_ = false;
        return Done{};
    }

  private:
    // Why something under the name cannot be opened for writing that no writer of this program would leave: a
    // link, a pipe, a folder, somebody else's file.
    static bool mayBeInTheWay(int number) {
        return number == ELOOP || number == ENXIO || number == EISDIR || number == EACCES || number == EPERM;
    }
    bool isOfThisProgram() const {
        struct stat opened {};
        return ::fstat(file_.get(), &opened) == 0 && S_ISREG(opened.st_mode) &&
               opened.st_uid == ::geteuid() && opened.st_nlink == 1;
    }

    fs::path target_;
    fs::path name_;
    FileDescriptor file_;
    bool ours_ = false; ///< what stands under the name is this object's, and is removed with it
};

fs::path FolderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

Status SyncFolder(const fs::path& file) {
    const fs::path folder = FolderOf(file);
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A folder that one may write into but not read cannot be synced.
    if (!opened && errno == EACCES) return Done{};
    if (!opened || ::fsync(opened.get()) != 0) return Failure(folder);
    return Done{};
}

Status ReplaceFile(const fs::path& path, const fs::path& target, std::span<const uint8_t> bytes,
                   Durable durable) {
    Unfinished file(target);
    if (auto opened = file.open(); !opened) return opened;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (!WriteAll(file.descriptor(), bytes) || ::fchmod(file.descriptor(), 0666 & ~mask) != 0 ||
        (durable == Durable::yes && ::fsync(file.descriptor()) != 0))
        return Failure(path);
    if (auto moved = file.moveTo(target); !moved) return moved;
    return durable == Durable::yes ? SyncFolder(target) : Status(Done{});
}

} // namespace

Result<std::vector<uint8_t>> ReadHostFile(const fs::path& path, size_t limit) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!file) return Failure(path);
    auto bytes = ReadRegularFile(file.get(), limit);
    if (!bytes) return Error{path.string() + ": " + bytes.reason()};
    return bytes;
}

Status ExpectHostFileWritable(const fs::path& path) {
    struct stat there {};
    const bool present = ::stat(path.c_str(), &there) == 0;
    if (!present && errno != ENOENT) return Failure(path);
    if (present && S_ISDIR(there.st_mode)) return Failure(path, EISDIR);
    if (::access(present ? path.c_str() : FolderOf(path).c_str(), W_OK) != 0) return Failure(path);
    return Done{};
}

Status WriteHostFile(const fs::path& path, std::span<const uint8_t> bytes, Durable durable) {
    struct stat there {};
    const bool present = ::stat(path.c_str(), &there) == 0;
    if (!present && errno != ENOENT) return Failure(path);
    if (present && S_ISDIR(there.st_mode)) return Failure(path, EISDIR);
    if (present && !S_ISREG(there.st_mode)) {
        // A pipe, a terminal: it cannot be replaced, only written to.
        const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
        if (!file || !WriteAll(file.get(), bytes)) return Failure(path);
        return Done{};
    }
    // Of a symbolic link it is the file behind it that is replaced.
    fs::path target = path;
    for (int links = 0; links < 40; ++links) {
        std::error_code failed;
        const fs::path next = fs::read_symlink(target, failed);
        if (failed) {
            const int number = failed.value();
            if (number != EINVAL && number != ENOENT) return Failure(path, number);
            break; // no link, or nothing there yet
        }
        target = target.parent_path() / next;
    }
    return ReplaceFile(path, target, bytes, durable);
}

} // namespace tallyforge
