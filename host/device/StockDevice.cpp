#include "device/StockDevice.h"

#include "device/HostFile.h"

#include "foundation/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <unistd.h>

namespace tallyforge {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStampName = ".tallyforge-furnished";

// A fresh device has the default themes among the user's own, as an installed package leaves them. Later they
// are the user's affair: what was deleted comes back when it is asked for.
constexpr const char* kDefaultThemes = "Library/Application Support/Tallyforge";
constexpr const char* kUsersThemes = "var/mobile/Documents/Tallyforge";

/// Held against other programs that furnish the folder.
Result<FileDescriptor> LockFolder(const fs::path& folder) {
    FileDescriptor locked(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    while (locked && ::flock(locked.get(), LOCK_EX) != 0) {
        if (errno != EINTR) locked = FileDescriptor();
    }
    if (!locked) return ErrorOfErrno(errno).during(folder.string() + ": it cannot be locked");
    return locked;
}

/// What is done about a file that is there already.
enum class Present { stays, isRepaired };

std::string_view TextOf(const std::vector<uint8_t>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Files are put in their places whole, but not each one synced: of one that a power cut caught, a beginning
// may be there, or room filled with zeros. Anything else is somebody's own work.
bool IsRemnant(const std::vector<uint8_t>& found, const std::vector<uint8_t>& wanted) {
    if (found.size() > wanted.size()) return false;
    const auto differs = std::mismatch(found.begin(), found.end(), wanted.begin()).first;
    return std::all_of(differs, found.end(), [](uint8_t byte) { return byte == 0; });
}

Status FurnishFile(const fs::path& source, const fs::path& target, Present present) {
    std::error_code failed;
    const fs::file_status status = fs::symlink_status(target, failed);
    if (!fs::status_known(status)) return ErrorOfErrno(failed.value()).during(target.string());
    const bool there = fs::exists(status);
    if (there && present == Present::stays) return Done{};
    auto wanted = ReadHostFile(source);
    if (!wanted) return wanted.error();
    if (there) {
        if (!fs::is_regular_file(status)) return Error{target.string() + ": not a regular file"};
        auto found = ReadHostFile(target);
        if (!found) return found.error();
        if (*found == *wanted || !IsRemnant(*found, *wanted)) return Done{};
    }
    return WriteHostFile(target, *wanted);
}

// A link on the device means a place below its root, which the names of this machine's files do not tell:
// followed, it might lead out of it.
bool IsLink(const fs::path& path) {
    std::error_code failed;
    return fs::is_symlink(fs::symlink_status(path, failed));
}

// The folder below the device, with those above it; an error where one of them is a link.
Status MakeFolder(const fs::path& device, const fs::path& relative) {
    fs::path folder = device;
    for (const fs::path& part : relative) {
        folder /= part;
        if (IsLink(folder)) return Error{folder.string() + ": a link stands in its place"};
    }
    std::error_code failed;
    fs::create_directories(folder, failed);
    if (failed) return Error{folder.string() + ": " + failed.message()};
    return Done{};
}

// What stands in the way of one file or folder does not keep the others away; the first such reason is told.
Status FurnishTree(const fs::path& device, const fs::path& stock, Present present) {
    std::error_code failed;
    fs::recursive_directory_iterator entries(stock, failed);
    std::optional<Error> first;
    auto note = [&](const std::string& reason) {
        if (!first) first = Error{reason};
    };
    while (!failed && entries != fs::recursive_directory_iterator()) {
        fs::path target = device / entries->path().lexically_relative(stock);
        std::error_code refused;
        if (IsLink(target)) {
            note(target.string() + ": a link stands in its place");
            entries.disable_recursion_pending();
        } else if (entries->is_directory(refused)) {
            fs::create_directories(target, refused);
            if (refused) {
                note(target.string() + ": " + refused.message());
                entries.disable_recursion_pending();
            }
        } else if (auto written = FurnishFile(entries->path(), target, present); !written) {
            note(written.reason());
        }
        entries.increment(failed);
    }
    if (failed) note(stock.string() + ": " + failed.message());
    if (first) return *first;
    return Done{};
}

/// What the stamp says; nothing where there is none.
Result<std::optional<std::string>> ReadStamp(const fs::path& file) {
    std::error_code failed;
    const fs::file_status status = fs::symlink_status(file, failed);
    if (!fs::status_known(status)) return ErrorOfErrno(failed.value()).during(file.string());
    if (!fs::exists(status)) return std::optional<std::string>();
    if (!fs::is_regular_file(status)) return Error{file.string() + ": not a regular file"};
    const auto bytes = ReadHostFile(file);
    if (!bytes) return bytes.error();
    return std::optional<std::string>(TextOf(*bytes));
}

Status Furnish(const fs::path& device, const fs::path& stock) {
    constexpr std::string_view kVersion = TALLYFORGE_STOCK_VERSION;
    const fs::path stampFile = device / kStampName;
    auto stamp = ReadStamp(stampFile);
    if (!stamp) return stamp.error();
    if (*stamp == kVersion) return Done{};

    const auto locked = LockFolder(device);
    if (!locked) return locked.error();
    stamp = ReadStamp(stampFile);
    if (!stamp) return stamp.error();
    if (*stamp == kVersion) return Done{}; // another program was quicker

    const bool fresh = !stamp->has_value();
    Status furnished = FurnishTree(device, stock, fresh ? Present::isRepaired : Present::stays);
    if (fresh) {
        auto themes = MakeFolder(device, kUsersThemes);
        if (themes) themes = FurnishTree(device / kUsersThemes, stock / kDefaultThemes, Present::isRepaired);
        if (furnished) furnished = themes;
    }
    if (!furnished) return furnished;
    if (::syncfs(locked->get()) != 0)
        return ErrorOfErrno(errno).during(device.string() + ": it cannot be brought to the disk");
    return WriteHostFile(stampFile, {reinterpret_cast<const uint8_t*>(kVersion.data()), kVersion.size()});
}

} // namespace

Status FurnishStockDevice(const fs::path& device, const fs::path& stock) {
    auto furnished = Furnish(device, stock);
    return furnished ? furnished : Status(Error{"stock device: " + furnished.reason()});
}

} // namespace tallyforge
