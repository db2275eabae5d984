#include "device/HostFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge {

namespace {

Error LastError(const std::filesystem::path& path) {
    return {path.string() + ": " + std::strerror(errno)};
}

bool WriteAll(int descriptor, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
    return true;
}

} // namespace

Result<std::vector<uint8_t>> ReadHostFile(const std::filesystem::path& path, size_t limit) {
    std::error_code failed;
    auto status = std::filesystem::status(path, failed);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        return Error{path.string() + ": not a regular file"};
    const auto size = std::filesystem::file_size(path, failed);
    if (!failed && size > limit)
        return Error{path.string() + ": larger than " + std::to_string(limit) + " bytes"};
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) return LastError(path);
    return bytes;
}

Status WriteHostFile(const std::filesystem::path& path, std::span<const uint8_t> bytes) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        return Error{path.string() + ": a folder stands in its place"};

    // Something that is no regular file (a pipe, a terminal) cannot be replaced, only written to. Of a
    // symbolic link it is the file behind it that is replaced.
    bool replaceable =
        !std::filesystem::exists(path, ignored) || std::filesystem::is_regular_file(path, ignored);
    std::filesystem::path target = path;
    for (int links = 0; replaceable && links < 40 && std::filesystem::is_symlink(target, ignored); ++links)
        target = target.parent_path() / std::filesystem::read_symlink(target, ignored);
    std::string name = replaceable ? (target.parent_path() / ".tallyforge-XXXXXX").string() : path.string();
    int descriptor =
        replaceable ? ::mkostemp(name.data(), O_CLOEXEC) : ::open(name.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) return LastError(path);

    mode_t mask = ::umask(0);
    ::umask(mask);
    bool written = WriteAll(descriptor, bytes) && (!replaceable || ::fchmod(descriptor, 0666 & ~mask) == 0);
    written = ::close(descriptor) == 0 && written;
    if (written && (!replaceable || ::rename(name.c_str(), target.c_str()) == 0)) return Done{};
    Error error = LastError(path);
    if (replaceable) ::unlink(name.c_str());
    return error;
}

} // namespace tallyforge
