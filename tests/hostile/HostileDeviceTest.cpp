// Whatever stands in the place of a file or folder that the system reads or writes: every command that comes
// to it ends soon and says what is wrong, reads nothing outside of the device, and writes nothing there.

#include "OuterFolder.h"

#include <sstream>
#include <tuple>

#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

namespace tallyforge::test {
namespace {

#if ADDRESS_SANITIZER
constexpr double kSoon = 60; // seconds
#else
constexpr double kSoon = 10;
#endif

using Commands = std::vector<std::vector<std::string>>;

const std::string kThemes = "/var/mobile/Documents/Tallyforge/";
const std::string kBundle = "/Library/PreferenceBundles/tallyforgeprefs.bundle/";

const Commands kSettings = {{"get", "badgebgcol"},
                            {"set", "badgesize", "1"},
                            {"unset", "badgesize"},
                            {"randomize", "newdot"},
                            {"drive", "SCRIPT badge"}};
const Commands kThemeCommands = {
    {"theme", "list"},         {"theme", "show", "Starlight"}, {"theme", "save", "Mine", "--overwrite"},
    {"theme", "load", "Mine"}, {"theme", "delete", "Mine"},    {"theme", "restore"},
    {"drive", "SCRIPT themes"}};
const Commands kTies = {{"tie", "list"},
                        {"tie", "set", "com.example.app", "none"},
                        {"tie", "clear", "com.example.app"},
                        {"tie", "clear", "--all"},
                        {"drive", "SCRIPT conditionalthemes"}};
const Commands kApps = {{"apps"}, {"drive", "SCRIPT badgeapps"}, {"drive", "SCRIPT conditionalthemes"}};
const Commands kPictures = {{"render", "PICTURE"}, {"inspect"}, {"drive", "SCRIPT badge"}};

/// A place that the system reads or writes, and the commands that come there.
struct Place {
    const char* name;
    std::string path;
    bool folder;
    const Commands& commands;
};

const Place kPlaces[] = {
    {"Settings", "/var/mobile/Library/Preferences/com.quillon.tallyforge.plist", false, kSettings},
    {"SettingsFolder", "/var/mobile/Library/Preferences", true, kSettings},
    {"Home", "/var/mobile", true, kSettings},
    {"GlobalPreferences", "/var/mobile/Library/Preferences/.GlobalPreferences.plist", false, kApps},
    {"ThemeFolder", "/var/mobile/Documents/Tallyforge", true, kThemeCommands},
    {"Theme", kThemes + "mine.tft", false, kThemeCommands},
    {"DefaultThemeFolder", "/Library/Application Support/Tallyforge", true, kThemeCommands},
    {"DefaultTheme", "/Library/Application Support/Tallyforge/starlight.tft", false, kThemeCommands},
    {"TieFolder", kThemes + "PerAppThemes", true, kTies},
    {"Tie", kThemes + "PerAppThemes/com.example.app", false, kTies},
    {"ConfigFolder", kThemes + "Config", true, kPictures},
    {"Config", kThemes + "Config/config.tfc", false, kPictures},
    {"Applications", "/Applications", true, kApps},
    {"Application", "/Applications/Cydia.app", true, kApps},
    {"InfoPlist", "/Applications/Cydia.app/Info.plist", false, kApps},
    {"Icon", "/Applications/Cydia.app/Icon-60.png", false, kApps},
    {"PreviewIcon", "/Applications/AppStore.app/AppIcon60x60.png", false, kPictures},
    {"TranslationFolder", "/Applications/Cydia.app/en.lproj", true, kApps},
    {"Translation", "/Applications/Cydia.app/en.lproj/InfoPlist.strings", false, kApps},
    {"UsersApplications", "/var/containers/Bundle/Application", true, kApps},
    {"DataContainers", "/var/mobile/Containers/Data/Application", true, kApps},
    {"Bundle", "/Library/PreferenceBundles/tallyforgeprefs.bundle", true, kPictures},
    {"SpecifierList", kBundle + "badgeprefs.plist", false, kPictures},
    {"MarkPicture", kBundle + "badge.png", false, kPictures},
    {"MarkCatalogue", "/System/Library/CoreServices/SpringBoard.app/Assets.car", false, kPictures},
};

enum class Thing {
    absoluteLink,
    parentLink,
    loop,
    passwordsLink,
    dangling,
    deviceLink,
    fifo,
    socket,
    device,
    wrongKind,
    unreadable,
    endless
};

constexpr std::pair<Thing, const char*> kThings[] = {{Thing::absoluteLink, "AbsoluteLink"},
                                                     {Thing::parentLink, "ParentLink"},
                                                     {Thing::loop, "Loop"},
                                                     {Thing::passwordsLink, "PasswordsLink"},
                                                     {Thing::dangling, "DanglingLink"},
                                                     {Thing::deviceLink, "DeviceLink"},
                                                     {Thing::fifo, "FIFO"},
                                                     {Thing::socket, "Socket"},
                                                     {Thing::device, "Device"},
                                                     {Thing::wrongKind, "WrongKind"},
                                                     {Thing::unreadable, "Unreadable"},
                                                     {Thing::endless, "Endless"}};

std::string ParentsAnd(const std::filesystem::path& path) {
    std::string way;
    for (int i = 0; i < 40; ++i)
        way += "../";
    return way + path.relative_path().string();
}

void MakeSocket(const std::filesystem::path& path) {
    const int made = ::socket(AF_UNIX, SOCK_STREAM, 0);
    // Addresses are short; the folder may be deep.
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(path.parent_path());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.filename().string().copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(made, reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << path;
    std::filesystem::current_path(here);
    close(made);
}

class HostileDeviceTest : public testing::TestWithParam<std::tuple<Place, std::pair<Thing, const char*>>> {
  protected:
    // False where this machine does not let the thing be made.
    bool put(const Place& place, Thing thing) const {
        namespace fs = std::filesystem;
        const fs::path target = device.file(place.path);
        fs::create_directories(target.parent_path());
        if (thing != Thing::unreadable) fs::remove_all(target);
        const auto link = [&](const fs::path& to) { fs::create_symlink(to, target); };
        const fs::path secret = device.outside() / (place.folder                     ? "folder"
                                                    : place.path.ends_with(".plist") ? "list"
                                                                                     : "archive");
        switch (thing) {
        case Thing::absoluteLink:
            link(secret);
            return true;
        case Thing::parentLink:
            link(ParentsAnd(secret));
            return true;
        case Thing::loop:
            link("other");
            fs::create_symlink(target.filename(), target.parent_path() / "other");
            return true;
        case Thing::passwordsLink:
            link(ParentsAnd(place.folder ? "/etc" : "/etc/passwd"));
            return true;
        case Thing::dangling:
            link("nowhere/at/all");
            return true;
        case Thing::deviceLink:
            link(ParentsAnd("/dev/zero"));
            return true;
        case Thing::fifo:
            return mkfifo(target.c_str(), 0666) == 0;
        case Thing::socket:
            MakeSocket(target);
            return true;
        case Thing::device:
            return mknod(target.c_str(), S_IFCHR | 0666, makedev(1, 5)) == 0; // endless zeros
        case Thing::wrongKind:
            if (place.folder)
                std::ofstream(target) << "a file";
            else
                fs::create_directories(target / "inner");
            return true;
        case Thing::unreadable:
            if (!fs::exists(target)) {
                if (place.folder)
                    fs::create_directories(target);
                else
                    std::ofstream(target) << "x";
            }
            fs::permissions(target, fs::perms::none);
            return true;
        case Thing::endless:
            std::ofstream(target) << "bplist00";
            fs::resize_file(target, uintmax_t{1} << 40);
            return true;
        }
        return false;
    }

    std::vector<std::string> completed(std::vector<std::string> words) const {
        for (std::string& word : words) {
            if (word == "PICTURE") word = (device.root() / "out.png").string();
            if (!word.starts_with("SCRIPT ")) continue;
            const std::string file = (device.root() / "script").string();
            std::ofstream(file) << "open " << word.substr(7) << "\nwait 0.5\nback\ninspect\n";
            word = file;
        }
        return words;
    }

    void expectHarmless(const std::vector<std::string>& words) const {
        std::string line;
        for (const std::string& word : words)
            line += word + " ";
        SCOPED_TRACE(line);
        const Ended ended = device.tallyforge(completed(words), kSoon);
        EXPECT_TRUE(ended.status == 0 || ended.status == 1) << ended.status << ": " << ended.errors;
        EXPECT_TRUE(ended.status == 0 || !ended.errors.empty()) << "a failure is told";
        std::istringstream errors(ended.errors);
        for (std::string said; std::getline(errors, said);)
            EXPECT_TRUE(said.starts_with("tallyforge: ")) << said;
        for (const std::string* said : {&ended.output, &ended.errors}) {
            EXPECT_EQ(said->find(kSecret), std::string::npos) << *said;
            EXPECT_EQ(said->find("root:x:"), std::string::npos) << *said;
        }
#if !ADDRESS_SANITIZER
        EXPECT_LT(ended.peakKilobytes, 128 * 1024);
#endif
    }

    OuterFolder device;
};

TEST_P(HostileDeviceTest, HarmsNobody) {
    const auto& [place, thing] = GetParam();
    if (!put(place, thing.first)) GTEST_SKIP() << "this machine does not let it be made";
    device.giveToNobody();
    const auto before = device.surroundings();
    for (const auto& words : place.commands)
        expectHarmless(words);
    expectHarmless({"list"});
    EXPECT_EQ(device.surroundings(), before);
}

// The same file within the device is read: what the test looks for would be seen.
TEST(HostileDeviceControlTest, WhatIsOnTheDeviceIsRead) {
    const OuterFolder device;
    std::filesystem::copy_file(device.outside() / "archive", device.file(kThemes + "mine.tft"));
    std::filesystem::copy_file(device.outside() / "list", device.file("/Applications/Cydia.app/Info.plist"),
                               std::filesystem::copy_options::overwrite_existing);
    device.giveToNobody();
    EXPECT_NE(device.tallyforge({"theme", "list"}, kSoon).output.find(kSecret), std::string::npos);
    EXPECT_NE(device.tallyforge({"apps"}, kSoon).output.find(kSecret), std::string::npos);
    const auto before = device.surroundings();
    std::ofstream(device.outside() / "new") << "x";
    EXPECT_NE(device.surroundings(), before);
}

INSTANTIATE_TEST_SUITE_P(Everywhere, HostileDeviceTest,
                         testing::Combine(testing::ValuesIn(kPlaces), testing::ValuesIn(kThings)),
                         [](const auto& parameter) {
                             return std::string(std::get<0>(parameter.param).name) +
                                    std::get<1>(parameter.param).second;
                         });

} // namespace
} // namespace tallyforge::test
