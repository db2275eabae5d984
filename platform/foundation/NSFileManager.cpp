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
    if (!parent) return ErrorOfErrno(errno);
    if (mkdirat(parent.get(), name.c_str(), 0755) != 0) {
        if (errno != EEXIST) return ErrorOfErrno(errno);
        return Done{}; // made by somebody else meanwhile, or no folder: the next step will tell
    }
    // The mask of the process does not decide what the device's folders are like.
    const FileDescriptor made(
        openat(parent.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!made || fchmod(made.get(), 0755) != 0) return ErrorOfErrno(errno);
    if (fsync(parent.get()) != 0) return ErrorOfErrno(errno).during("syncing the folder above");
    return Done{};
}

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

/// Of a folder that was to be opened; `errno` says why it was not. The error has no number: the removal
/// itself is done, and ENOENT would be taken for its own, that there was nothing to remove.
Status SyncFolder(const FileDescriptor& folder) {
    // One that may be written into but not read cannot be synced.
    if (!folder && errno == EACCES) return Done{};
    if (!folder || fsync(folder.get()) != 0)
        return Error{"syncing the folder after the removal: " + ReasonOfErrno(errno)};
    return Done{};
}

/// Where something stands: the folder around it, and its name there.
struct Place {
    FileDescriptor parent;
    std::string name;
};

// Of anything but the root and what a name with dots means.
Result<Place> PlaceOf(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) return ErrorOfErrno(EINVAL);
    auto [folder, name] = FolderAndName(path);
    if (name.empty() || name == "." || name == ".." || path.back() == '/') return ErrorOfErrno(EISDIR);
    FileDescriptor parent(DeviceRoot::open(folder, O_PATH | O_DIRECTORY));
    if (!parent) return ErrorOfErrno(errno);
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
    if (!file) return ErrorOfErrno(errno);
    return ReadRegularFile(file.get(), limit);
}

bool NSFileManager::isUnreadFileAtPath(std::string_view path, const Error& why, size_t limit) const {
    for (const int none : {ENOENT, ENOTDIR, EISDIR, ENXIO, ELOOP})
        if (why.number == none) return false;
    const FileDescriptor found(DeviceRoot::open(path, O_PATH));
    struct stat status {};
    if (!found || fstat(found.get(), &status) != 0) return true;
    return S_ISREG(status.st_mode) && static_cast<size_t>(status.st_size) <= limit;
}

Result<std::vector<std::string>> NSFileManager::contentsOfDirectoryAtPath(std::string_view path) const {
    auto folder = FolderReader::open(path);
    if (!folder) return folder.error();
    auto names = folder->takeNames();
    std::erase_if(names, DurableFile::isUnfinished);
    return names;
}

Status NSFileManager::createDirectoryAtPath(std::string_view path) {
    const auto isFolder = [](std::string_view folder) {
        return static_cast<bool>(FileDescriptor(DeviceRoot::open(folder, O_PATH | O_DIRECTORY)));
    };
    if (isFolder(path)) return Done{};
    if (errno != ENOENT || path.empty()) return ErrorOfErrno(errno);
    for (size_t end = 0; end < path.size();) {
        end = std::min(path.find('/', end + 1), path.size());
        const auto above = path.substr(0, end);
        if (isFolder(above)) continue;
        if (errno != ENOENT) return ErrorOfErrno(errno);
        if (auto made = MakeFolder(above); !made) return made;
        if (!isFolder(above)) return ErrorOfErrno(errno);
    }
    return Done{};
}

Status NSFileManager::removeItemAtPath(std::string_view path) {
    const auto place = PlaceOf(path);
    if (!place) return place.error();
    if (unlinkat(place->parent.get(), place->name.c_str(), 0) != 0) return ErrorOfErrno(errno);
    if (trace_) trace_("remove", path);
    return SyncFolder(FileDescriptor(openat(place->parent.get(), ".", kFolderFlags)));
}

Status NSFileManager::syncDirectoryAtPath(std::string_view path) {
    return SyncFolder(FileDescriptor(DeviceRoot::open(path, kFolderFlags)));
}

Status NSFileManager::removeTreeAtPath(std::string_view path) {
    const auto place = PlaceOf(path);
    if (!place) return place.error();
    // A link goes here too, wherever it leads.
    if (unlinkat(place->parent.get(), place->name.c_str(), 0) != 0) {
        if (errno != EISDIR) return ErrorOfErrno(errno);
        auto folder = FolderReader::open(path);
        if (!folder) return folder.error();
        for (const std::string& name : folder->takeNames()) { // what is unfinished too
            if (auto inner = removeTreeAtPath(std::string(path) + "/" + name); !inner) return inner;
        }
        if (unlinkat(place->parent.get(), place->name.c_str(), AT_REMOVEDIR) != 0) return ErrorOfErrno(errno);
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

Status NSFileManager::writeDataToNewFile(std::string_view path, std::span<const uint8_t> bytes) {
    auto file = DurableFile::lock(path);
    if (!file) return file.error();
    if (file->exists()) return Error{"there is such a file already"};
    auto saved = file->replace(bytes, false);
    if (saved && trace_) trace_("write", path);
    return saved;
}

Status NSFileManager::removeItemAndWriteData(std::string_view path, std::span<const uint8_t> bytes) {
    auto file = DurableFile::lockPlace(path);
    if (!file) return file.error();
    const bool removes = file->exists();
    auto saved = file->replace(bytes, false);
    if (saved && trace_ && removes) trace_("remove", path);
    if (saved && trace_) trace_("write", path);
    return saved;
}

void NSFileManager::removeUnfinishedInDirectory(std::string_view folder) {
    DurableFile::removeUnfinished(folder);
}

void NSFileManager::removeUnfinishedBehindLink(std::string_view path) {
    DurableFile::removeUnfinishedBehindLink(path);
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
