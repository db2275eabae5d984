#include "foundation/FolderReader.h"

#include "foundation/DeviceRoot.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace tallyforge {

Result<FolderReader> FolderReader::open(std::string_view devicePath) {
    FolderReader reader;
    reader.folder_ = FileDescriptor(DeviceRoot::open(devicePath, O_RDONLY | O_DIRECTORY));
    if (!reader.folder_) return Error{errno == ENOTDIR ? "not a folder" : ReasonOfErrno(errno)};
    const int listed = fcntl(reader.folder_.get(), F_DUPFD_CLOEXEC, 0);
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(listed < 0 ? nullptr : fdopendir(listed), &closedir);
    if (!folder) {
        const int number = errno;
        if (listed >= 0) close(listed);
        return Error{ReasonOfErrno(number)};
    }
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(folder.get());
        if (!entry && errno != 0) return Error{ReasonOfErrno(errno)};
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            reader.entries_.push_back({std::string(name), entry->d_type == DT_REG});
    }
    std::sort(reader.entries_.begin(), reader.entries_.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return reader;
}

std::vector<std::string> FolderReader::takeNames() {
    std::vector<std::string> names;
    names.reserve(entries_.size());
    for (Entry& entry : entries_)
        names.push_back(std::move(entry.name));
    entries_.clear();
    return names;
}

std::span<const uint8_t> FolderReader::peek(const Entry& entry) {
    if (!entry.plainFile) return {};
    if (!buffer_) buffer_ = std::make_unique<uint8_t[]>(kBufferSize);
    // Something else may stand there by now: no link is followed, and nothing here waits.
    constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
    const FileDescriptor file(openat(folder_.get(), entry.name.c_str(), kFlags));
    if (!file) return {};
    const ssize_t got = read(file.get(), buffer_.get(), kBufferSize);
    if (got <= 0 || static_cast<size_t>(got) == kBufferSize) return {};
    return {buffer_.get(), static_cast<size_t>(got)};
}

} // namespace tallyforge
