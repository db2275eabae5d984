#include "foundation/FolderReader.h"

#include "foundation/DeviceRoot.h"
#include "foundation/DispatchApply.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace tallyforge {

namespace {

using PeekBuffer = std::array<uint8_t, 16'384>;

std::span<const uint8_t> Peek(int folder, const FolderReader::Entry& entry, PeekBuffer& buffer) {
    if (!entry.plainFile) return {};
    // Something else may stand there by now: no link is followed, and nothing here waits.
    constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
    const FileDescriptor file(openat(folder, entry.name.c_str(), kFlags));
    if (!file) return {};
    const ssize_t got = read(file.get(), buffer.data(), buffer.size());
    if (got <= 0 || static_cast<size_t>(got) == buffer.size()) return {};
    return {buffer.data(), static_cast<size_t>(got)};
}

/// The eight bytes from there on as a number that sorts as they do. What is beyond the end counts as zeros.
uint64_t EightBytes(std::string_view name, size_t from) {
    uint64_t bytes = 0;
    for (size_t i = from; i < from + 8; ++i)
        bytes = bytes << 8 | (i < name.size() ? static_cast<uint8_t>(name[i]) : 0);
    return bytes;
}

/// By the names' bytes. The names of a folder often begin alike; the few bytes after that tell most of them
/// apart, and are compared without a look at the names. Where they do not, the names themselves decide.
void SortByName(std::vector<FolderReader::Entry>& entries) {
    if (entries.empty()) return;
    const std::string_view first = entries.front().name;
    size_t alike = first.size();
    for (const auto& entry : entries) {
        const auto end = std::mismatch(first.begin(), first.begin() + static_cast<ptrdiff_t>(alike),
                                       entry.name.begin(), entry.name.end());
        alike = static_cast<size_t>(end.first - first.begin());
    }
    struct Place {
        uint64_t bytes;
        FolderReader::Entry* entry;
    };
    std::vector<Place> places;
    places.reserve(entries.size());
    for (auto& entry : entries)
        places.push_back({EightBytes(entry.name, alike), &entry});
    std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) {
        return a.bytes != b.bytes ? a.bytes < b.bytes : a.entry->name < b.entry->name;
    });
    std::vector<FolderReader::Entry> sorted;
    sorted.reserve(entries.size());
    for (const Place& place : places)
        sorted.push_back(std::move(*place.entry));
    entries = std::move(sorted);
}

} // namespace

Result<FolderReader> FolderReader::open(std::string_view devicePath) {
    FolderReader reader;
    reader.folder_ = FileDescriptor(DeviceRoot::open(devicePath, O_RDONLY | O_DIRECTORY));
    if (!reader.folder_) return errno == ENOTDIR ? Error{"not a folder", ENOTDIR} : ErrorOfErrno(errno);
    const int listed = fcntl(reader.folder_.get(), F_DUPFD_CLOEXEC, 0);
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(listed < 0 ? nullptr : fdopendir(listed), &closedir);
    if (!folder) {
        const int number = errno;
        if (listed >= 0) close(listed);
        return ErrorOfErrno(number);
    }
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(folder.get());
        if (!entry && errno != 0) return ErrorOfErrno(errno);
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            reader.entries_.push_back({std::string(name), entry->d_type == DT_REG});
    }
    SortByName(reader.entries_);
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

void FolderReader::peekAll(const std::function<void(size_t, std::span<const uint8_t>)>& work) const {
    dispatch_apply(entries_.size(), [&](size_t place) {
        PeekBuffer buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): it is read into
        work(place, Peek(folder_.get(), entries_[place], buffer));
    });
}

} // namespace tallyforge
