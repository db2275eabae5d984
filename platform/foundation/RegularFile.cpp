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

FileIdentity IdentityOf(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) return {};
    return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
            Nanoseconds(status.st_ctim)};
}

} // namespace

Status ExpectRegular(unsigned mode) {
    if (S_ISREG(mode)) return Done{};
    return ErrorOfErrno(S_ISDIR(mode) ? EISDIR : ENXIO);
}

Result<std::vector<uint8_t>> ReadToEnd(int descriptor, size_t expected, size_t limit) {
    if (expected > limit) return Error{LargerThan(limit)};
    // One byte more than expected, so that the end is met without growing the buffer.
    std::vector<uint8_t> bytes(expected + 1);
    size_t filled = 0;
    for (;;) {
        const ssize_t got = read(descriptor, bytes.data() + filled, bytes.size() - filled);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return ErrorOfErrno(errno);
        if (got == 0) break;
        const bool partial = static_cast<size_t>(got) < bytes.size() - filled;
        filled += static_cast<size_t>(got);
        if (partial && filled == expected) break; // nothing is left, and asking again would only say so
        if (filled > limit) return Error{LargerThan(limit)};
        if (filled == bytes.size()) bytes.resize(std::min(2 * filled, limit) + 1);
    }
    bytes.resize(filled);
    return bytes;
}

Result<std::vector<uint8_t>> ReadRegularFile(int descriptor, size_t limit, FileIdentity* identity) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return ErrorOfErrno(errno);
    if (identity) *identity = IdentityOf(status);
    if (auto regular = ExpectRegular(status.st_mode); !regular) return regular.error();
    return ReadToEnd(descriptor, static_cast<size_t>(status.st_size), limit);
}

bool WriteAll(int descriptor, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
    return true;
}

FileIdentity IdentityOfDescriptor(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? IdentityOf(status) : FileIdentity{};
}

} // namespace tallyforge
