#include "foundation/RegularFile.h"

#include "foundation/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge {

namespace {

int64_t Nanoseconds(const timespec& time) {
    return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace

std::string WhyNotRegular(unsigned mode) {
    if (S_ISREG(mode)) return {};
    return S_ISDIR(mode) ? "a folder stands in its place" : "not a regular file";
}

Result<std::vector<uint8_t>> ReadToEnd(int descriptor, size_t expected, size_t limit) {
    if (expected > limit) return Error{LargerThan(limit)};
    // One byte more than expected, so that the end is met without growing the buffer.
    std::vector<uint8_t> bytes(expected + 1);
    size_t filled = 0;
    for (;;) {
        const ssize_t got = read(descriptor, bytes.data() + filled, bytes.size() - filled);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return Error{ReasonOfErrno(errno)};
        if (got == 0) break;
        filled += static_cast<size_t>(got);
        if (filled > limit) return Error{LargerThan(limit)};
        if (filled == bytes.size()) bytes.resize(std::min(2 * filled, limit) + 1);
    }
    bytes.resize(filled);
    return bytes;
}

Result<std::vector<uint8_t>> ReadRegularFile(int descriptor, size_t limit) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return Error{ReasonOfErrno(errno)};
    if (auto why = WhyNotRegular(status.st_mode); !why.empty()) return Error{std::move(why)};
    return ReadToEnd(descriptor, static_cast<size_t>(status.st_size), limit);
}

FileIdentity IdentityOfDescriptor(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
            Nanoseconds(status.st_ctim)};
}

} // namespace tallyforge
