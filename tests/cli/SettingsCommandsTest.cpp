// list, get, set, unset: what they print, write and refuse.

#include "CommandFixture.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace tallyforge::test {

namespace {

// What another reader finds in the file: each key with its value and kind.
std::string AsPythonReadsIt(const std::filesystem::path& file) {
    return RunProgram(
               {"python3", "-c",
                "import plistlib,sys\n"
                "for k, v in plistlib.load(open(sys.argv[1], 'rb')).items(): print(k, type(v).__name__, v)",
                file.string()})
        .output;
}

} // namespace

TEST_F(CommandTest, ListPrintsKeyValueAndSource) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1.2", "newdotbgcol", "none"}).status, 0);
    Ended list = tallyforge({"list"});
    EXPECT_EQ(list.status, 0);
    std::vector<std::string> lines;
    std::istringstream text(list.output);
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 46U);
    EXPECT_EQ(lines.front(), "badgebgcol\t#00FF00\tfallback");
    EXPECT_EQ(lines[4], "convertbadgeroman\t0\tfallback");
    EXPECT_EQ(lines[5], "badgesize\t1.2\tset");
    EXPECT_EQ(lines[14], "badgebordersize\t1.5\tfallback");
    EXPECT_EQ(lines[37], "newdotbgcol\tnone\tset");
    EXPECT_EQ(lines.back(), "newdotoffsetY\t0\tfallback");
}

TEST_F(CommandTest, ListAsJSONHasObjectsOfKeyValueSource) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1.2"}).status, 0);
    auto list = nlohmann::json::parse(tallyforge({"list", "--json"}).output);
    ASSERT_EQ(list.size(), 46U);
    EXPECT_EQ(list[0], (nlohmann::json{{"key", "badgebgcol"}, {"value", "#00FF00"}, {"source", "fallback"}}));
    EXPECT_EQ(list[4],
              (nlohmann::json{{"key", "convertbadgeroman"}, {"value", false}, {"source", "fallback"}}));
    EXPECT_EQ(list[5], (nlohmann::json{{"key", "badgesize"}, {"value", 1.2}, {"source", "set"}}));
}

TEST_F(CommandTest, GetGivesTheValueElseTheFallback) {
    EXPECT_EQ(tallyforge({"get", "closeboxrotation"}).output, "180\n");
    ASSERT_EQ(tallyforge({"set", "closeboxrotation", "12.5"}).status, 0);
    EXPECT_EQ(tallyforge({"get", "closeboxrotation"}).output, "12.5\n");
    EXPECT_EQ(nlohmann::json::parse(tallyforge({"get", "--json", "closeboxrotation"}).output),
              (nlohmann::json{{"key", "closeboxrotation"}, {"value", 12.5}, {"source", "set"}}));
    expectComplaint(tallyforge({"get", "badgesizes"}), 2);
}

TEST_F(CommandTest, NumbersAreWrittenAsFloatNumbersAndColoursInUpperCase) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "-0.5", "badgeshape", "4", "convertbadgeroman", "yes",
                          "badgebgcol", "#00ff7f", "badgetxtcol", "automatic_dark"})
                  .status,
              0);
    EXPECT_EQ(AsPythonReadsIt(domainFile()),
              "badgesize float -0.5\nbadgeshape float 4.0\nconvertbadgeroman float 1.0\n"
              "badgebgcol str #00FF7F\nbadgetxtcol str automatic_dark\n");
    // A four-byte real begins with the marker 0x22; -0.5 is BF000000.
    EXPECT_NE(bytesOf(domainFile()).find(std::string("\x22\xBF\x00\x00\x00", 5)), std::string::npos);
}

TEST_F(CommandTest, BoundsAndCodesThatAMarkAcceptsAreAllowed) {
    for (const auto& [key, value] :
         std::vector<std::pair<const char*, const char*>>{{"badgesize", "-1.5"},
                                                          {"badgesize", "2.25"},
                                                          {"badgesize", "+1"},
                                                          {"badgeanimspd", "0.2"},
                                                          {"badgeshape", "5"},
                                                          {"badgeshape", "6"},
                                                          {"closeboxshape", "5"},
                                                          {"closeboxshape", "6"},
                                                          {"closeboxshape", "10"},
                                                          {"badgeanimtype", "12"},
                                                          {"newdotshape", "3"},
                                                          {"badgealpha", "100"},
                                                          {"closeboxpos", "8"},
                                                          {"presetcloseboxbg", "98"},
                                                          {"presetcloseboxbg", "0"}}) {
        EXPECT_EQ(tallyforge({"set", key, value}).status, 0) << key << ' ' << value;
    }
}

TEST_F(CommandTest, NothingIsWrittenWhenOneValueIsWrong) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1"}).status, 0);
    std::string before = bytesOf(domainFile());
    for (const auto& [key, value] : std::vector<std::pair<const char*, const char*>>{
             {"badgesize", "2.26"},      {"badgesize", "1,5"},      {"badgesize", ""},
             {"badgesize", "nan"},       {"badgesize", "inf"},      {"badgesize", "0x1"},
             {"badgesize", "1.0.0"},     {"badgeshape", "7"},       {"badgeshape", "1.5"},
             {"badgeshape", "10"},       {"closeboxshape", "7"},    {"newdotshape", "4"},
             {"newdotpos", "-1"},        {"badgesize", "+-1"},      {"badgeanimtype", "13"},
             {"convertbadgeroman", "2"}, {"badgebgcol", "red"},     {"badgebgcol", "#FFF"},
             {"badgebgcol", "FF0000"},   {"badgebgcol", "#GG0000"}, {"badgebgcol", "None"},
             {"badgebgcol", "#1234567"}, {"badgeanimspd", "0.19"},  {"presetcloseboxbg", "97"},
             {"nosuchkey", "1"}}) {
        SCOPED_TRACE(std::string(key) + " " + value);
        expectComplaint(tallyforge({"set", "badgealpha", "50", key, value}), 2);
        EXPECT_EQ(bytesOf(domainFile()), before);
    }
    expectComplaint(tallyforge({"set", "badgealpha", "50", "badgesize"}), 2);
    EXPECT_EQ(bytesOf(domainFile()), before);
}

TEST_F(CommandTest, UnsetRemovesAndRefusesUnknownKeys) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1", "badgealpha", "50"}).status, 0);
    EXPECT_EQ(tallyforge({"unset", "badgesize", "badgeoffsetX"}).status, 0);
    EXPECT_EQ(AsPythonReadsIt(domainFile()), "badgealpha float 50.0\n");
    expectComplaint(tallyforge({"unset", "badgealpha", "nosuchkey"}), 2);
    EXPECT_EQ(tallyforge({"get", "badgealpha"}).output, "50\n");
}

TEST_F(CommandTest, KeysOfOthersAreKept) {
    Dictionary domain;
    domain.setObjectForKey(PropertyList::string("other"), "someoneelse");
    domain.setObjectForKey(PropertyList::integer(3), "badgeshape");
    device.writeDomain(domain);
    ASSERT_EQ(tallyforge({"set", "badgesize", "1"}).status, 0);
    EXPECT_EQ(AsPythonReadsIt(domainFile()),
              "someoneelse str other\nbadgeshape int 3\nbadgesize float 1.0\n");
    EXPECT_EQ(tallyforge({"get", "badgeshape"}).output, "3\n");
}

TEST_F(CommandTest, TextOfOthersStaysOnItsLine) {
    Dictionary domain;
    domain.setObjectForKey(PropertyList::string("a\tb\nc"), "badgebgcol");
    domain.setObjectForKey(PropertyList::data({1}), "badgesize");
    device.writeDomain(domain);
    EXPECT_EQ(tallyforge({"get", "badgebgcol"}).output, "a\\x09b\\x0Ac\n");
    EXPECT_EQ(nlohmann::json::parse(tallyforge({"get", "badgebgcol", "--json"}).output)["value"], "a\tb\nc");
    EXPECT_TRUE(nlohmann::json::parse(tallyforge({"get", "badgesize", "--json"}).output)["value"].is_null());
}

TEST_F(CommandTest, ATruncatedDomainCountsAsEmptyAndIsKeptAside) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1"}).status, 0);
    std::string whole = bytesOf(domainFile());
    std::string half = whole.substr(0, whole.size() / 2);
    std::ofstream(domainFile(), std::ios::binary) << half;

    Ended get = tallyforge({"get", "badgesize"});
    expectComplaint(get, 0); // it counts as empty, but that is said
    EXPECT_EQ(get.output, "0\n");
    EXPECT_EQ(bytesOf(domainFile()), half);

    expectComplaint(tallyforge({"set", "badgealpha", "50"}), 0);
    EXPECT_EQ(AsPythonReadsIt(domainFile()), "badgealpha float 50.0\n");
    EXPECT_EQ(bytesOf(domainFile().string() + ".unreadable"), half);
}

TEST_F(CommandTest, EveryStartClearsWhatACutShortSaveLeft) {
    const std::vector<std::string> folders{
        "/var/mobile/Library/Preferences/", "/var/mobile/Documents/Tallyforge/",
        "/var/mobile/Documents/Tallyforge/PerAppThemes/", "/var/mobile/Documents/Tallyforge/Config/"};
    const auto put = [&] {
        for (const std::string& folder : folders) {
            device.write(folder + ".tallyforge-new", {'x'});
            device.write(folder + ".tallyforge-copy", {'x'});
            device.write(folder + "other", {'x'});
        }
    };
    put();
    EXPECT_EQ(tallyforge({"get", "badgesize"}).errors, "");
    for (const std::string& folder : folders) {
        EXPECT_FALSE(std::filesystem::exists(device.file(folder + ".tallyforge-new"))) << folder;
        EXPECT_FALSE(std::filesystem::exists(device.file(folder + ".tallyforge-copy"))) << folder;
        EXPECT_TRUE(std::filesystem::exists(device.file(folder + "other"))) << folder;
    }
    // Whoever saves at the moment holds the lock, and the file is theirs. Nobody waits for them.
    put();
    const int locked = ::open(device.file(folders[0]).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(locked, LOCK_EX), 0);
    EXPECT_EQ(tallyforge({"get", "badgesize"}).errors, "");
    EXPECT_TRUE(std::filesystem::exists(device.file(folders[0] + ".tallyforge-new")));
    EXPECT_FALSE(std::filesystem::exists(device.file(folders[1] + ".tallyforge-new")));
    close(locked);
}

TEST_F(CommandTest, AFolderOrAPipeInTheDomainsPlaceIsNoDomainAndStays) {
    std::filesystem::create_directories(domainFile());
    Ended get = tallyforge({"get", "badgesize"});
    expectComplaint(get, 0);
    EXPECT_EQ(get.output, "0\n");
    expectComplaint(tallyforge({"set", "badgesize", "1"}), 1);
    EXPECT_TRUE(std::filesystem::is_directory(domainFile()));

    std::filesystem::remove(domainFile());
    ASSERT_EQ(mkfifo(domainFile().c_str(), 0600), 0);
    expectComplaint(tallyforge({"get", "badgesize"}), 0);
    expectComplaint(tallyforge({"set", "badgesize", "1"}), 1);
    EXPECT_TRUE(std::filesystem::is_fifo(domainFile()));
}

// The file system refuses writers whoever they are.
TEST_F(CommandTest, AReadOnlyRootIsAFailureAndTheOldFileStands) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1"}).status, 0);
    std::string before = bytesOf(domainFile());
    std::string command = "mount --bind '" + device.root().string() + "' '" + device.root().string() +
                          "' && mount -o remount,ro,bind '" + device.root().string() +
                          "' && '" TALLYFORGE_BIN "/tallyforge' set badgesize 2";
    Ended ended = RunProgram({"unshare", "--user", "--map-root-user", "--mount", "sh", "-c", command},
                             {{"TALLYFORGE_ROOT", device.root().string()}, {"DBUS_SESSION_BUS_ADDRESS", ""}});
    if (ended.errors.find("unshare:") != std::string::npos ||
        ended.errors.find("mount:") != std::string::npos)
        GTEST_SKIP() << "no mount namespaces here: " << ended.errors;
    expectComplaint(ended, 1);
    EXPECT_EQ(bytesOf(domainFile()), before);
}

TEST_F(CommandTest, LinksDoNotLeadOutOfTheRoot) {
    TestDevice outside;
    std::filesystem::create_directory_symlink(outside.root(), device.root() / "var");
    device.use();
    Ended ended = tallyforge({"set", "badgesize", "1"});
    EXPECT_TRUE(std::filesystem::is_empty(outside.root())) << ended.errors;
}

TEST_F(CommandTest, TwoWritersAtATimeLoseNothing) {
    auto loop = [&](const char* keys) {
        return std::vector<std::string>{"sh", "-c",
                                        std::string("for k in ") + keys +
                                            "; do '" TALLYFORGE_BIN "/tallyforge' set $k 1 || exit 1; done"};
    };
    std::map<std::string, std::string> environment{{"TALLYFORGE_ROOT", device.root().string()},
                                                   {"DBUS_SESSION_BUS_ADDRESS", ""},
                                                   {"XDG_RUNTIME_DIR", ""}};
    Program first(loop("badgesize badgealpha badgeshape badgepos badgerotation badgeoffsetX badgeoffsetY "
                       "badgeglowalpha"),
                  environment);
    Program second(loop("closeboxsize closeboxalpha closeboxshape closeboxpos newdotsize newdotalpha "
                        "newdotshape newdotpos"),
                   environment);
    EXPECT_EQ(first.wait().status, 0);
    EXPECT_EQ(second.wait().status, 0);
    auto list = nlohmann::json::parse(tallyforge({"list", "--json"}).output);
    auto set =
        std::count_if(list.begin(), list.end(), [](const auto& row) { return row["source"] == "set"; });
    EXPECT_EQ(set, 16);
}

} // namespace tallyforge::test
