#include "foundation/FileDescriptor.h"

#include <cctype>
#include <cerrno>
#include <system_error>
#include <unistd.h>

namespace tallyforge {

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this == &other) return *this;
    reset();
    descriptor_ = std::exchange(other.descriptor_, -1);
    return *this;
}

void FileDescriptor::reset() {
    if (descriptor_ < 0) return;
    const int kept = errno;
    close(std::exchange(descriptor_, -1));
    errno = kept;
}

std::string ReasonOfErrno(int number) {
    switch (number) {
    case ENOENT:
        return "no such file";
    case EISDIR:
        return "a folder stands in its place";
    case ENOTDIR:
        return "a part of its path is not a folder";
    case ENXIO:
        return "not a regular file";
    case ELOOP:
        return "too many symbolic links";
    case EINVAL:
        return "not a usable path";
    case EBADF:
        return "no device root is set";
    default:
        break;
    }
    std::string text = std::generic_category().message(number);
    // "Input/output error" begins a sentence; a reason stands in the middle of one.
    if (text.size() > 1 && std::islower(static_cast<unsigned char>(text[1])))
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

Error ErrorOfErrno(int number) {
    return {ReasonOfErrno(number), number};
}

std::string LargerThan(size_t bytes) {
    constexpr size_t mebibyte = size_t{1} << 20;
    if (bytes >= mebibyte && bytes % mebibyte == 0)
        return "larger than " + std::to_string(bytes / mebibyte) + " MiB";
    return "larger than " + std::to_string(bytes) + " bytes";
}

} // namespace tallyforge
