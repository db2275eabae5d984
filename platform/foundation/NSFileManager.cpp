#include "foundation/NSFileManager.h"

#include "foundation/DurableFile.h"
#include "foundation/FileDescriptor.h"
#include "foundation/FolderReader.h"
#include "foundation/RegularFile.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge {

namespace {

/// The path without trailing slashes, divided before its last name.
std::pair<std::string, std::string> FolderAndName(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    const size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return {std::string(), std::string(path)};
    return {std::string(path.substr(0, slash + 1)), std::string(path.substr(slash + 1))};
}

Status MakeFolder(std::string_view path) {
    const auto [folder, name] = FolderAndName(path);
    const FileDescriptor parent(DeviceRoot::open(folder, O_RDONLY | O_DIRECTORY));
    if (!parent) return Error{ReasonOfErrno(errno)};
    if (mkdirat(parent.get(), name.c_str(), 0755) != 0) {
        if (errno != EEXIST) return Error{ReasonOfErrno(errno)};
        return Done{}; // made by somebody else meanwhile, or no folder: the next step will tell
    }
    // The mask of the process does not decide what the device's folders are like.
    const FileDescriptor made(
        openat(parent.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!made || fchmod(made.get(), 0755) != 0) return Error{ReasonOfErrno(errno)};
    if (fsync(parent.get()) != 0) return Error{"syncing the folder above: " + ReasonOfErrno(errno)};
    return Done{};
}

/// Where something stands: the folder around it, and its name there.
struct Place {
    FileDescriptor parent;
    std::string name;
};

// Of anything but the root and what a name with dots means.
Result<Place> PlaceOf(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) return Error{ReasonOfErrno(EINVAL)};
    auto [folder, name] = FolderAndName(path);
    if (name.empty() || name == "." || name == ".." || path.back() == '/')
        return Error{ReasonOfErrno(EISDIR)};
    FileDescriptor parent(DeviceRoot::open(folder, O_PATH | O_DIRECTORY));
    if (!parent) return Error{ReasonOfErrno(errno)};
    return Place{std::move(parent), std::string(name)};
}

} // namespace

NSFileManager& NSFileManager::defaultManager() {
    static NSFileManager manager;
    return manager;
}

bool NSFileManager::fileExistsAtPath(std::string_view path) const {
    return static_cast<bool>(FileDescriptor(DeviceRoot::open(path, O_PATH)));
}

FileIdentity NSFileManager::identityOfFileAtPath(std::string_view path) const {
    const FileDescriptor file(DeviceRoot::open(path, O_PATH));
    return file ? IdentityOfDescriptor(file.get()) : FileIdentity{};
}

Result<std::vector<uint8_t>> NSFileManager::contentsAtPath(std::string_view path, size_t limit) const {
    const FileDescriptor file(DeviceRoot::open(path, O_RDONLY | O_NONBLOCK));
    if (!file) return Error{ReasonOfErrno(errno)};
    return ReadRegularFile(file.get(), limit);
}

Result<std::vector<std::string>> NSFileManager::contentsOfDirectoryAtPath(std::string_view path) const {
    auto folder = FolderReader::open(path);
    if (!folder) return folder.error();
    return folder->takeNames();
}

Status NSFileManager::createDirectoryAtPath(std::string_view path) {
    const auto isFolder = [](std::string_view folder) {
        return static_cast<bool>(FileDescriptor(DeviceRoot::open(folder, O_PATH | O_DIRECTORY)));
    };
    if (isFolder(path)) return Done{};
    if (errno != ENOENT || path.empty()) return Error{ReasonOfErrno(errno)};
    for (size_t end = 0; end < path.size();) {
        end = std::min(path.find('/', end + 1), path.size());
        const auto above = path.substr(0, end);
        if (isFolder(above)) continue;
        if (errno != ENOENT) return Error{ReasonOfErrno(errno)};
        if (auto made = MakeFolder(above); !made) return made;
        if (!isFolder(above)) return Error{ReasonOfErrno(errno)};
    }
    return Done{};
}

Status NSFileManager::removeItemAtPath(std::string_view path) {
    const auto place = PlaceOf(path);
    if (!place) return place.error();
    if (unlinkat(place->parent.get(), place->name.c_str(), 0) != 0) return Error{ReasonOfErrno(errno)};
    if (trace_) trace_("remove", path);
    return Done{};
}

Status NSFileManager::removeTreeAtPath(std::string_view path) {
    const auto place = PlaceOf(path);
    if (!place) return place.error();
    // A link goes here too, wherever it leads.
    if (unlinkat(place->parent.get(), place->name.c_str(), 0) != 0) {
        if (errno != EISDIR) return Error{ReasonOfErrno(errno)};
        const auto names = contentsOfDirectoryAtPath(path);
        if (!names) return names.error();
        for (const std::string& name : *names) {
            if (auto inner = removeTreeAtPath(std::string(path) + "/" + name); !inner) return inner;
        }
        if (unlinkat(place->parent.get(), place->name.c_str(), AT_REMOVEDIR) != 0)
            return Error{ReasonOfErrno(errno)};
    }
    if (trace_) trace_("remove", path);
    return Done{};
}

Status NSFileManager::writeDataToFile(std::string_view path, std::span<const uint8_t> bytes) {
    auto file = DurableFile::lock(path);
    if (!file) return file.error();
    auto saved = file->replace(bytes, false);
    if (saved && trace_) trace_("write", path);
    return saved;
}

Status NSFileManager::rewriteFile(std::string_view path, const Edit& edit, size_t limit) {
    std::vector<uint8_t> oldBytes;
    Present present;
    auto file = DurableFile::lockAndRead(path, limit, oldBytes, present.unreadable);
    if (!file) return file.error();
    present.exists = file->exists();
    present.bytes = oldBytes;
    bool keepAside = false;
    const auto newBytes = edit(present, keepAside);
    if (!newBytes) return newBytes.error();
    auto saved = file->replace(*newBytes, keepAside);
    if (saved && trace_) trace_("write", path);
    return saved;
}

void NSFileManager::setTrace(std::function<void(std::string_view, std::string_view)> trace) {
    trace_ = std::move(trace);
}

} // namespace tallyforge
