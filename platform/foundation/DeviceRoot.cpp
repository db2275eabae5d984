#include "foundation/DeviceRoot.h"

#include "foundation/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tallyforge {

namespace {

struct Root {
    std::string folder;
    FileDescriptor descriptor;
};

Root& TheRoot() {
    static Root root;
    return root;
}

int Refuse(int number) {
    errno = number;
    return -1;
}

/// Resolves a path below the root component by component, for kernels and sandboxes without openat2.
/// Keeps a descriptor of every folder on the way, so that ".." needs no trust in the file system.
class Walk {
  public:
    explicit Walk(int root) : root_(root) {}

    int open(std::string path, int flags, unsigned mode) {
        rest_ = std::move(path);
        for (;;) {
            if (!rest_.empty() && rest_.front() == '/') rest_.erase(0, rest_.find_first_not_of('/'));
            if (rest_.empty()) return openat(top(), ".", flags & ~O_NOFOLLOW, mode);
            const size_t slash = rest_.find('/');
            const std::string name = rest_.substr(0, slash);
            const bool last = slash == std::string::npos;
            rest_.erase(0, last ? name.size() : slash);
            if (name == ".") continue;
            if (name == "..") {
                if (!folders_.empty()) folders_.pop_back();
                continue;
            }
            const bool exclusive = (flags & O_CREAT) && (flags & O_EXCL);
            const bool follows = !last || !((flags & O_NOFOLLOW) || exclusive);
            if (follows) {
                const int followed = follow(name);
                if (followed < 0) return -1;
                if (followed > 0) continue;
            }
            if (last) return openat(top(), name.c_str(), flags | O_NOFOLLOW, mode);
            FileDescriptor next(openat(top(), name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
            if (!next) return -1;
            folders_.push_back(std::move(next));
        }
    }

  private:
    int top() const { return folders_.empty() ? root_ : folders_.back().get(); }

    /// 1 when the name is a link, whose text now stands in front of the rest; 0 when it is none; -1 on error.
    int follow(const std::string& name) {
        std::array<char, PATH_MAX> text{};
        const ssize_t length = readlinkat(top(), name.c_str(), text.data(), text.size());
        if (length < 0) return errno == EINVAL || errno == ENOENT ? 0 : -1;
        if (length == 0) return Refuse(ENOENT);
        if (++links_ > 40) return Refuse(ELOOP);
        rest_.insert(0, text.data(), static_cast<size_t>(length));
        if (rest_.size() >= PATH_MAX) return Refuse(ENAMETOOLONG);
        if (rest_.front() == '/') folders_.clear();
        return 1;
    }

    int root_;
    std::vector<FileDescriptor> folders_;
    std::string rest_;
    int links_ = 0;
};

} // namespace

Status DeviceRoot::set(const std::string& hostFolder) {
    if (hostFolder.find('\0') != std::string::npos) return ErrorOfErrno(EINVAL);
    FileDescriptor descriptor(::open(hostFolder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor) return errno == ENOTDIR ? Error{"not a folder", ENOTDIR} : ErrorOfErrno(errno);
    TheRoot() = {hostFolder, std::move(descriptor)};
    return Done{};
}

const std::string& DeviceRoot::hostFolder() {
    return TheRoot().folder;
}

int DeviceRoot::open(std::string_view devicePath, int flags, unsigned mode) {
    const int root = TheRoot().descriptor.get();
    if (root < 0) return Refuse(EBADF);
    if (devicePath.empty()) return Refuse(ENOENT);
    if (devicePath.front() != '/' || devicePath.find('\0') != std::string_view::npos) return Refuse(EINVAL);
    if (devicePath.size() >= PATH_MAX) return Refuse(ENAMETOOLONG);
    const std::string path(devicePath);
    flags |= O_CLOEXEC;
    if (!(flags & O_PATH)) flags |= O_NOCTTY; // openat2 takes no other flags beside O_PATH

    open_how how{};
    how.flags = static_cast<uint64_t>(flags);
    how.mode = flags & O_CREAT ? mode & 07777 : 0;
    how.resolve = RESOLVE_IN_ROOT;
    // EAGAIN: a folder was moved while ".." was resolved. After a few the walk decides.
    for (int tries = 0; tries < 8; ++tries) {
        const auto opened = static_cast<int>(syscall(SYS_openat2, root, path.c_str(), &how, sizeof how));
        if (opened >= 0) return opened;
        if (errno == EINTR) continue;
        if (errno == ENOSYS || errno == EPERM) break;
        if (errno != EAGAIN) return -1;
    }
    return Walk(root).open(path, flags, mode);
}

} // namespace tallyforge
