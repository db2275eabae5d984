#pragma once

#include "foundation/NSKeyedArchiver.h"
#include "support/Program.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge::test {

/// Stands in every file outside of the device; what the program prints never holds it.
inline constexpr std::string_view kSecret = "Forbiddenfruit";

/// The words before a program's own that let it run as the user without rights; none where the test itself
/// has none.
inline std::vector<std::string> AsNobody() {
    if (getuid() != 0) return {};
    return {"setpriv",
            "--reuid=65534",
            "--regid=65534",
            "--clear-groups",
            "--bounding-set=-all",
            "--no-new-privs",
            "--"};
}

/// A stock device in a folder of its own, beside which lie files that nobody may read through it.
class OuterFolder {
  public:
    OuterFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-outer-XXXXXX").string();
        outer_ = mkdtemp(pattern.data());
        std::filesystem::permissions(outer_, std::filesystem::perms(0755));
        std::filesystem::copy(TALLYFORGE_RESOURCES "/stock", root(),
                              std::filesystem::copy_options::recursive);
        const auto themes = file("/var/mobile/Documents/Tallyforge");
        std::filesystem::create_directories(themes / "PerAppThemes");
        std::filesystem::create_directories(themes / "Config");
        std::filesystem::create_directories(file("/var/mobile/Library/Preferences"));
        std::filesystem::create_directories(outside());
        Dictionary theme;
        theme.setObjectForKey(PropertyList::string(std::string(kSecret)), "themename");
        theme.setObjectForKey(PropertyList::string(std::string(kSecret)), "badgebgcol");
        theme.setObjectForKey(PropertyList::string("com.example.stem"), "CFBundleIdentifier");
        theme.setObjectForKey(PropertyList::string(std::string(kSecret)), "CFBundleDisplayName");
        const auto archive = NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme));
        write(outside() / "archive", archive);
        write(outside() / "folder" / "secret.tft", archive);
        write(outside() / "list", BinaryPropertyList::Serialize(PropertyList::dictionary(theme)));
        write(outside() / "folder" / "Info.plist",
              BinaryPropertyList::Serialize(PropertyList::dictionary(theme)));
        // Nothing but the program's own care keeps anybody out.
        std::filesystem::permissions(outside(), std::filesystem::perms::all);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(outside()))
            std::filesystem::permissions(entry.path(), std::filesystem::perms::all);
    }
    ~OuterFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(outer_, ignored);
    }
    OuterFolder(const OuterFolder&) = delete;
    OuterFolder& operator=(const OuterFolder&) = delete;

    std::filesystem::path root() const { return outer_ / "device"; }
    std::filesystem::path outside() const { return outer_ / "outside"; }
    std::filesystem::path file(const std::string& devicePath) const { return root() / devicePath.substr(1); }

    static void write(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    /// Everything but the device: names, modes, times and contents.
    std::map<std::string, std::string> surroundings() const {
        std::map<std::string, std::string> all;
        for (auto entry = std::filesystem::recursive_directory_iterator(outer_);
             entry != std::filesystem::recursive_directory_iterator(); ++entry) {
            if (entry->path() == root()) entry.disable_recursion_pending();
            struct stat status {};
            lstat(entry->path().c_str(), &status);
            std::string& told = all[entry->path().string()];
            if (entry->path() == root()) continue;
            told = std::to_string(status.st_mode) + " " + std::to_string(status.st_mtim.tv_sec) + "." +
                   std::to_string(status.st_mtim.tv_nsec);
            if (!entry->is_regular_file()) continue;
            std::ifstream contents(entry->path(), std::ios::binary);
            told.append(" ").append(std::istreambuf_iterator<char>(contents), {});
        }
        return all;
    }

    /// Gives the device to the user without rights, if the test has the right to.
    void giveToNobody() const {
        if (getuid() != 0) return;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root()))
            EXPECT_EQ(lchown(entry.path().c_str(), 65534, 65534), 0) << entry.path();
        EXPECT_EQ(chown(root().c_str(), 65534, 65534), 0);
    }

    /// The program on this device, without rights, bus or display. What is given in the environment counts
    /// before.
    Ended tallyforge(std::vector<std::string> words, double seconds,
                     std::map<std::string, std::string> environment = {}) const {
        words.insert(words.begin(), TALLYFORGE_BIN "/tallyforge");
        const auto nobody = AsNobody();
        words.insert(words.begin(), nobody.begin(), nobody.end());
        environment.merge(std::map<std::string, std::string>{{"TALLYFORGE_ROOT", root().string()},
                                                             {"HOME", "/nonexistent"},
                                                             {"DBUS_SESSION_BUS_ADDRESS", ""},
                                                             {"XDG_RUNTIME_DIR", ""},
                                                             {"WAYLAND_DISPLAY", ""},
                                                             {"DISPLAY", ""}});
        return RunProgram(words, environment, seconds);
    }

  private:
    std::filesystem::path outer_;
};

} // namespace tallyforge::test
