// The program needs no more than the rights of whoever owns the device's folder.

#include "OuterFolder.h"
#include "support/EveryCommand.h"
#include "support/PrivateBus.h"

namespace tallyforge::test {
namespace {

// What the others stand on: a command that is new has to be added to the list.
TEST(PrivilegesTest, TheListHoldsEveryCommandOfTheHelp) {
    const OuterFolder device;
    const std::set<std::string> named = CommandsOfHelp();
    EXPECT_TRUE(named.contains("list") && named.contains("drive") && named.contains("theme show") &&
                named.contains("tie clear"));
    std::set<std::string> listed;
    for (const Words& words : EveryCommand(device.root())) {
        const bool inGroup = words[0] == "theme" || words[0] == "tie";
        listed.insert(inGroup ? words[0] + " " + words[1] : words[0]);
    }
    EXPECT_EQ(listed, named);
}

TEST(PrivilegesTest, EveryCommandWorksForAnOrdinaryUser) {
    const OuterFolder device;
    const std::vector<Words> commands = EveryCommand(device.root());
    device.giveToNobody();
    const std::filesystem::path temporary = device.outside() / "temporary";
    std::filesystem::create_directory(temporary);
    std::filesystem::permissions(temporary, std::filesystem::perms::all);
    const PrivateBus bus(AsNobody());
    ASSERT_NE(bus.address(), "") << "dbus-daemon is needed";
    for (const std::string& address : {std::string(), bus.address()}) {
        SCOPED_TRACE(address.empty() ? "without a bus" : "on a bus");
        for (const Words& words : commands) {
            if (words[0] == "watch" && address.empty()) continue;
            const Ended ended = device.tallyforge(
                words, 60, {{"DBUS_SESSION_BUS_ADDRESS", address}, {"TMPDIR", temporary.string()}});
            EXPECT_EQ(ended.status, 0) << Spoken(words) << ": " << ended.errors;
            EXPECT_EQ(ended.errors, "") << Spoken(words);
            EXPECT_TRUE(std::filesystem::is_empty(temporary)) << Spoken(words);
        }
    }
    for (const char* file : {"out.png", "out.webp", "out.tft", "themes.png", "trace"})
        EXPECT_TRUE(std::filesystem::exists(device.root() / file)) << file;
}

// Nothing is written where only the privileged may write, and what cannot be written is told.
TEST(PrivilegesTest, ADeviceOfSomebodyElseIsOnlyRead) {
    if (getuid() != 0) GTEST_SKIP() << "needs a second user";
    const OuterFolder device; // of the privileged user
    EXPECT_EQ(device.tallyforge({"list"}, 60).status, 0);
    EXPECT_EQ(device.tallyforge({"apps"}, 60).status, 0);
    const Ended refused = device.tallyforge({"set", "badgesize", "1"}, 60);
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.errors.starts_with("tallyforge: set: ")) << refused.errors;
    EXPECT_TRUE(std::filesystem::is_empty(device.file("/var/mobile/Library/Preferences")));
}

/// A device with the themes "Mine", which nobody may read, and "Other", with a file that is no theme, and
/// with ties of two apps, of which one cannot be read.
class UnreadFilesTest : public testing::Test {
  protected:
    void SetUp() override {
        device.giveToNobody();
        run({"theme", "save", "Mine"});
        run({"theme", "save", "Other"});
        run({"tie", "set", "com.example.a", "Other"});
        run({"tie", "set", "com.example.b", "Mine"});
        OuterFolder::write(device.file(kThemes + "garbage.tft"), {'x', 'y'});
        OuterFolder::write(device.file(kThemes + "PerAppThemes/garbage"), {'x', 'y'});
        EXPECT_EQ(run({"theme", "list"}), "Mine\tmine.tft\nOther\tother.tft\n")
            << "nothing is said of garbage";
        EXPECT_EQ(run({"tie", "list"}), kTieOfA + "com.example.b\tMine\t" + kThemes + "mine.tft\n");
    }
    static void forbid(const std::filesystem::path& file) {
        std::filesystem::permissions(file, std::filesystem::perms::none);
    }
    void forbidMine() const { forbid(device.file(kThemes + "mine.tft")); }
    std::string run(const std::vector<std::string>& words) const {
        const Ended ended = device.tallyforge(words, 60);
        EXPECT_EQ(ended.status, 0) << words[0] << " " << words[1];
        EXPECT_EQ(ended.errors, "");
        return ended.output;
    }
    /// What the command prints that fails with exactly this line.
    std::string fails(const std::vector<std::string>& words, const std::string& line) const {
        const Ended ended = device.tallyforge(words, 60);
        EXPECT_EQ(ended.status, 1) << words[0];
        EXPECT_EQ(ended.errors, "tallyforge: " + line + "\n");
        return ended.output;
    }

    inline static const std::string kThemes = "/var/mobile/Documents/Tallyforge/";
    inline static const std::string kTieOfA = "com.example.a\tOther\t" + kThemes + "other.tft\n";
    inline static const std::string kMineIsUnread = kThemes + "mine.tft: permission denied";
    const OuterFolder device;
};

TEST_F(UnreadFilesTest, AThemeThatCannotBeReadIsToldAndTheOthersAreListed) {
    forbidMine();
    EXPECT_EQ(fails({"theme", "list"}, "theme list: " + kMineIsUnread), "Other\tother.tft\n");
    EXPECT_EQ(fails({"theme", "list", "--json"}, "theme list: " + kMineIsUnread),
              "[\n  {\n    \"name\": \"Other\",\n    \"file\": \"other.tft\"\n  }\n]\n");
    EXPECT_NE(run({"theme", "show", "Other"}), "");
    const std::string unknown = "there is no theme 'Mine' among those that can be read; " + kMineIsUnread;
    EXPECT_EQ(fails({"theme", "show", "Mine"}, "theme show: " + unknown), "");
    EXPECT_EQ(fails({"theme", "delete", "Mine"}, "theme delete: " + unknown), "");
    EXPECT_EQ(fails({"theme", "show", "--file", "mine.tft"}, "theme show: " + kMineIsUnread), "");
    EXPECT_TRUE(std::filesystem::exists(device.file(kThemes + "mine.tft")));
}

TEST_F(UnreadFilesTest, TheGalleryShowsTheOthersAndSaysSo) {
    forbidMine();
    const std::string picture = (device.root() / "out.png").string();
    fails({"theme", "gallery", picture}, "theme gallery: " + kMineIsUnread);
    EXPECT_TRUE(std::filesystem::exists(picture));
}

TEST_F(UnreadFilesTest, ATieThatCannotBeReadIsToldAndTheOthersAreListed) {
    forbid(device.file(kThemes + "PerAppThemes/com.example.b"));
    EXPECT_EQ(
        fails({"tie", "list"}, "tie list: " + kThemes + "PerAppThemes/com.example.b: permission denied"),
        kTieOfA);
}

// It is there, though its name is not known.
TEST_F(UnreadFilesTest, ATiesThemeThatCannotBeReadIsTold) {
    forbidMine();
    EXPECT_EQ(fails({"tie", "list"}, "tie list: " + kMineIsUnread),
              kTieOfA + "com.example.b\tmissing\t" + kThemes + "mine.tft\n");
}

// The screen itself says nothing.
TEST_F(UnreadFilesTest, WhoeverDrivesTheScreenOfThemesHearsOfIt) {
    forbidMine();
    std::ofstream(device.file("/script")) << "open themes\ntap \"Load theme\"\npick Other\n";
    fails({"drive", device.file("/script").string()}, "drive: " + kMineIsUnread);
}

// It shows the app as one without a tie.
TEST_F(UnreadFilesTest, WhoeverChoosesAnAppWhoseTieCannotBeReadHearsOfIt) {
    const std::string mail = "com.quillon.stock.mail", tie = kThemes + "PerAppThemes/" + mail;
    run({"tie", "set", mail, "Mine"});
    std::ofstream(device.file("/script"))
        << "open themes\nopen conditionalthemes\ntap App\nscroll Mail\ntap Mail\nback\n";
    run({"drive", device.file("/script").string()});
    forbid(device.file(tie));
    fails({"drive", device.file("/script").string()}, "drive: " + tie + ": permission denied");
    EXPECT_TRUE(std::filesystem::exists(device.file(tie)));
}

} // namespace
} // namespace tallyforge::test
