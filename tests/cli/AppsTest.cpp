// apps: which it prints, in which order, and what it refuses.

#include "CommandFixture.h"
#include "support/AppBundles.h"

#include <nlohmann/json.hpp>

#include <sys/stat.h>

namespace tallyforge::test {

namespace {

class AppsCommandTest : public CommandTest {
  protected:
    AppsCommandTest() {
        InstallApp(device, "/Applications/M.app", "s.mail", "mail 10");
        InstallApp(device, "/Applications/N.app", "s.news", "Mail 9");
        InstallApp(device, "/Applications/T.app", "s.test", "Field",
                   DictionaryOf({{"SBAppTags", TextList({"hidden"})}}));
        InstallUserApp(device, "u.eclair", "Éclair");
        InstallUserApp(device, "com.apple.webapp-7", "Web");
        InstallUserApp(device, "u.zoo", "Zoo");
    }
    std::string printed(std::vector<std::string> words) const {
        words.insert(words.begin(), "apps");
        Ended ended = tallyforge(words);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.errors, "");
        return ended.output;
    }
};

} // namespace

TEST_F(AppsCommandTest, PrintsIdentifierAndNameInTheOrderOfTheNames) {
    const std::string all = "u.eclair\tÉclair\ns.test\tField\ns.news\tMail 9\ns.mail\tmail 10\n"
                            "com.apple.webapp-7\tWeb\nu.zoo\tZoo\n";
    EXPECT_EQ(printed({}), all);
    EXPECT_EQ(printed({"all"}), all);
    EXPECT_EQ(printed({"nonhidden"}), "u.eclair\tÉclair\ns.news\tMail 9\ns.mail\tmail 10\nu.zoo\tZoo\n");
    EXPECT_EQ(printed({"system"}), "s.news\tMail 9\ns.mail\tmail 10\n");
    EXPECT_EQ(printed({"user"}), "u.eclair\tÉclair\nu.zoo\tZoo\n");
}

TEST_F(AppsCommandTest, AsJSONAListOfObjects) {
    EXPECT_EQ(nlohmann::json::parse(printed({"user", "--json"})),
              (nlohmann::json{{{"identifier", "u.eclair"}, {"name", "Éclair"}},
                              {{"identifier", "u.zoo"}, {"name", "Zoo"}}}));
}

TEST_F(AppsCommandTest, ADeviceWithoutAppsHasAnEmptyList) {
    std::filesystem::remove_all(device.file("/Applications"));
    std::filesystem::remove_all(device.file("/var/containers"));
    EXPECT_EQ(printed({}), "");
    EXPECT_EQ(nlohmann::json::parse(printed({"--json"})), nlohmann::json::array());
}

TEST_F(AppsCommandTest, OtherWordsAreRefused) {
    for (const char* word : {"hidden", "All", "", "[all]", "u.zoo"})
        expectComplaint(tallyforge({"apps", word}), 2);
    expectComplaint(tallyforge({"apps", "all", "user"}), 2);
    expectComplaint(tallyforge({"apps", "--xml"}), 2);
}

// Names cannot turn what is printed after them, nor reach the terminal by its other control characters.
TEST_F(AppsCommandTest, NamesDoNotCommandTheTerminal) {
    InstallUserApp(device, "u.a", "\u202Egpj.exe\u2066");
    InstallUserApp(device, "u.b", "\u009B31m red\u0085\u2028");
    InstallUserApp(device, "u.c", "\u200EChat \u05D0\u200F"); // marks of single words, as names have them
    const std::string all = printed({"user"});
    EXPECT_NE(all.find("u.a\t\\xE2\\x80\\xAEgpj.exe\\xE2\\x81\\xA6\n"), std::string::npos) << all;
    EXPECT_NE(all.find("u.b\t\\xC2\\x9B31m red\\xC2\\x85\\xE2\\x80\\xA8\n"), std::string::npos) << all;
    EXPECT_NE(all.find("u.c\t\u200EChat \u05D0\u200F\n"), std::string::npos) << all;
}

TEST_F(AppsCommandTest, AnAppIsOneLineWhateverItsNameHolds) {
    InstallUserApp(device, "u.tricky", "Two\nlines\tand a \x1B[31mcolour");
    EXPECT_EQ(printed({"user"}),
              "u.eclair\tÉclair\nu.tricky\tTwo\\x0Alines\\x09and a \\x1B[31mcolour\nu.zoo\tZoo\n");
    EXPECT_EQ(nlohmann::json::parse(printed({"user", "--json"}))[1]["name"],
              "Two\nlines\tand a \x1B[31mcolour");
}

TEST_F(AppsCommandTest, ABrokenAppHarmsNobody) {
    std::filesystem::create_directories(device.file("/Applications/Bad.app"));
    ASSERT_EQ(mkfifo(device.file("/Applications/Bad.app/Info.plist").c_str(), 0644), 0);
    EXPECT_EQ(printed({"system"}), "s.news\tMail 9\ns.mail\tmail 10\n");
}

TEST_F(AppsCommandTest, ManyAppsTakeLittleMemory) {
    for (int i = 0; i < 2000; ++i)
        InstallUserApp(device, "many" + std::to_string(i), "Many " + std::to_string(i));
    Ended ended = tallyforge({"apps", "user"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(std::count(ended.output.begin(), ended.output.end(), '\n'), 2002);
#if !ADDRESS_SANITIZER // whose own memory would be counted
    EXPECT_LT(ended.peakKilobytes, 64 * 1024);
#endif
}

TEST_F(CommandTest, TheStockDevicesAppsAreListed) {
    device.furnish();
    Ended ended = tallyforge({"apps", "user"});
    EXPECT_EQ(ended.output, "com.seventeencubed.4913\t4913\n"
                            "fr.patisserie-imaginaire.eclair\tÉclair à Propos\n"
                            "app.waystone.kilometre\tKilometre\n"
                            "net.heddle.loom\tLoom\n"
                            "com.mothlight.paperlantern\tPaperlantern\n"
                            "com.graftwood.pocketorchard\tPocket Orchard\n"
                            "com.vesperine.smallhours\tThe Considerably Extended Almanac of Small Hours and "
                            "Quiet Weather\n"
                            "org.saltmarsh.tidewatch\tTidewatch\n"
                            "jp.hoshimado.hoshizucho\t星図帳\n");
}

} // namespace tallyforge::test
