#include "device/StockDevice.h"

#include "device/HostFile.h"

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

enum class Overwrite { no, yes };

/// Holds the folder against other programs that furnish it.
class FolderLock {
  public:
    explicit FolderLock(const fs::path& folder)
        : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        while (descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~FolderLock() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    /// Everything written below the folder is on the disk afterwards.
    bool sync() const { return descriptor_ >= 0 && ::syncfs(descriptor_) == 0; }

  private:
    int descriptor_;
};

std::string_view TextOf(const std::vector<uint8_t>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Status FurnishFile(const fs::path& source, const fs::path& target, Overwrite overwrite) {
    std::error_code failed;
    bool present = fs::exists(fs::symlink_status(target, failed));
    if (present && overwrite == Overwrite::no) return Done{};
    auto wanted = ReadHostFile(source);
    if (!wanted) return wanted.error();
    if (present) {
        auto found = ReadHostFile(target);
        if (found && *found == *wanted) return Done{};
    }
    return WriteHostFile(target, *wanted);
}

// What stands in the way of one file or folder does not keep the others away; the first such reason is told.
Status FurnishTree(const fs::path& device, const fs::path& stock, Overwrite overwrite) {
    std::error_code failed;
    fs::recursive_directory_iterator entries(stock, failed);
    std::optional<Error> first;
    auto note = [&](const std::string& reason) {
        if (!first) first = Error{"stock device: " + reason};
    };
    while (!failed && entries != fs::recursive_directory_iterator()) {
        fs::path target = device / entries->path().lexically_relative(stock);
        std::error_code refused;
        if (entries->is_directory(refused)) {
            fs::create_directories(target, refused);
            if (refused) {
                note(target.string() + ": " + refused.message());
                entries.disable_recursion_pending();
            }
        } else if (auto written = FurnishFile(entries->path(), target, overwrite); !written) {
            note(written.reason());
        }
        entries.increment(failed);
    }
    if (failed) note(stock.string() + ": " + failed.message());
    if (first) return *first;
    return Done{};
}

} // namespace

Status FurnishStockDevice(const fs::path& device, const fs::path& stock) {
    constexpr std::string_view kVersion = TALLYFORGE_STOCK_VERSION;
    const fs::path stampFile = device / kStampName;
    auto stampSays = [&](std::string_view version) {
        auto stamp = ReadHostFile(stampFile);
        return stamp && TextOf(*stamp) == version;
    };
    if (stampSays(kVersion)) return Done{};

    FolderLock lock(device);
    if (stampSays(kVersion)) // another program was quicker
        return Done{};
    std::error_code failed;
    Overwrite overwrite = fs::exists(stampFile, failed) ? Overwrite::no : Overwrite::yes;
    if (auto furnished = FurnishTree(device, stock, overwrite); !furnished) return furnished;
    if (overwrite == Overwrite::yes) {
        fs::create_directories(device / kUsersThemes, failed);
        auto themes = FurnishTree(device / kUsersThemes, stock / kDefaultThemes, Overwrite::no);
        if (!themes) return themes;
    }
    if (!lock.sync()) return Error{"stock device: " + device.string() + ": could not be brought to the disk"};
    return WriteHostFile(stampFile, {reinterpret_cast<const uint8_t*>(kVersion.data()), kVersion.size()});
}

} // namespace tallyforge
