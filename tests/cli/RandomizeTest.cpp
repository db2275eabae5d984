// randomize, reset: what they write, and what they refuse.

#include "CommandFixture.h"

#include <map>
#include <sstream>

namespace tallyforge::test {

namespace {

const std::string kBundle = "/Library/PreferenceBundles/tallyforgeprefs.bundle/";

// What another reader finds in the file: each key with its value and kind.
std::map<std::string, std::string> AsPythonReadsIt(const std::filesystem::path& file) {
    Ended python = RunProgram(
        {"python3", "-c",
         "import plistlib,sys\n"
         "for k, v in plistlib.load(open(sys.argv[1], 'rb')).items(): print(k, type(v).__name__, v)",
         file.string()});
    std::map<std::string, std::string> values;
    std::istringstream lines(python.output);
    std::string key;
    for (std::string value; lines >> key && std::getline(lines >> std::ws, value);)
        values[key] = value;
    return values;
}

const std::map<std::string, std::string> kBadgeReset{
    {"badgeshape", "float 0.0"},      {"convertbadgeroman", "float 0.0"}, {"badgesize", "float 0.0"},
    {"badgerotation", "float 0.0"},   {"badgepos", "float 2.0"},          {"badgeoffsetX", "float 0.0"},
    {"badgeoffsetY", "float 0.0"},    {"badgebgcol", "str #FF0000"},      {"badgealpha", "float 100.0"},
    {"badgetxtcol", "str #FFFFFF"},   {"badgetxtsize", "float 0.0"},      {"badgetxtoffsetX", "float 0.0"},
    {"badgetxtoffsetY", "float 0.0"}, {"badgebordercol", "str #FF0000"},  {"badgebordersize", "float 0.0"},
    {"badgeglowcol", "str #00FF00"},  {"badgeglowalpha", "float 0.0"},    {"badgeanimtype", "float 0.0"},
    {"badgeanimspd", "float 1.0"}};
const std::map<std::string, std::string> kCloseBoxReset{
    {"closeboxshape", "float 10.0"},      {"closeboxsize", "float 0.0"},
    {"closeboxrotation", "float 0.0"},    {"closeboxpos", "float 0.0"},
    {"closeboxoffsetX", "float 0.0"},     {"closeboxoffsetY", "float 0.0"},
    {"closeboxbgcol", "str #FFFFFF"},     {"closeboxalpha", "float 100.0"},
    {"closeboxtxtcol", "str #FFFFFF"},    {"closeboxtxtsize", "float 0.0"},
    {"closeboxtxtoffsetX", "float 0.0"},  {"closeboxtxtoffsetY", "float 0.0"},
    {"closeboxbordercol", "str #000000"}, {"closeboxbordersize", "float 0.0"},
    {"closeboxglowcol", "str #FF0000"},   {"closeboxglowalpha", "float 0.0"},
    {"closeboxanimtype", "float 0.0"},    {"closeboxanimspd", "float 1.0"}};
const std::map<std::string, std::string> kNewDotReset{
    {"newdotshape", "float 0.0"},   {"newdotsize", "float 0.0"},     {"newdotpos", "float 0.0"},
    {"newdotoffsetX", "float 0.0"}, {"newdotoffsetY", "float 0.0"},  {"newdotbgcol", "str none"},
    {"newdotalpha", "float 100.0"}, {"newdotanimtype", "float 0.0"}, {"newdotanimspd", "float 1.0"}};

class RandomizeTest : public CommandTest {
  protected:
    std::string randomized(const std::vector<std::string>& words) const {
        std::filesystem::remove(domainFile());
        Ended ended = tallyforge(words);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "");
        return bytesOf(domainFile());
    }
    void writeList(const std::string& path, const std::string& content) const {
        device.write(path, {content.begin(), content.end()});
    }
};

} // namespace

TEST_F(RandomizeTest, TheSameSeedGivesTheSameFile) {
    for (const char* mark : {"badge", "closebox", "newdot"}) {
        SCOPED_TRACE(mark);
        std::string first = randomized({"randomize", mark, "--seed", "7"});
        EXPECT_NE(first, "");
        EXPECT_EQ(randomized({"randomize", mark, "--seed", "7"}), first);
        EXPECT_EQ(randomized({"randomise", mark, "--seed=7"}), first);
        EXPECT_NE(randomized({"randomize", mark, "--seed", "8"}), first);
    }
}

TEST_F(RandomizeTest, WithoutASeedEachTimeIsAnother) {
    std::string first = randomized({"randomize", "badge"});
    EXPECT_NE(randomized({"randomize", "badge"}), first);
}

// The numbers come from the generator written out once more.
TEST_F(RandomizeTest, TheSeedsNumbersBecomeTheValuesInOrder) {
    auto number = [state = uint64_t(7)]() mutable {
        state += 0x9E3779B97F4A7C15U;
        uint64_t z = state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return static_cast<uint32_t>((z ^ (z >> 31)) >> 32);
    };
    randomized({"randomize", "badge", "--seed", "7"});
    auto values = AsPythonReadsIt(domainFile());
    EXPECT_EQ(values.size(), 19U);
    EXPECT_EQ(values["convertbadgeroman"], "float " + std::to_string(number() % 2) + ".0");
    EXPECT_EQ(values["badgeshape"], "float " + std::to_string(number() % 5) + ".0");
    number(); // badgesize
    number(); // badgerotation
    EXPECT_EQ(values["badgepos"], "float " + std::to_string(number() % 9) + ".0");
}

TEST_F(RandomizeTest, ResetPutsTheMarkBackAndNothingElse) {
    ASSERT_EQ(tallyforge({"set", "newdotsize", "0.5", "presetcloseboxbg", "98"}).status, 0);
    ASSERT_EQ(tallyforge({"randomize", "closebox"}).status, 0);
    Ended ended = tallyforge({"reset", "closebox"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output + ended.errors, "");
    auto expected = kCloseBoxReset;
    expected["newdotsize"] = "float 0.5";
    expected["presetcloseboxbg"] = "float 98.0";
    EXPECT_EQ(AsPythonReadsIt(domainFile()), expected);
}

TEST_F(RandomizeTest, ResetWritesEachMarksValues) {
    const std::map<std::string, std::map<std::string, std::string>> marks{
        {"badge", kBadgeReset}, {"closebox", kCloseBoxReset}, {"newdot", kNewDotReset}};
    for (const auto& [mark, values] : marks) {
        std::filesystem::remove(domainFile());
        ASSERT_EQ(tallyforge({"reset", mark}).status, 0);
        EXPECT_EQ(AsPythonReadsIt(domainFile()), values) << mark;
    }
}

TEST_F(RandomizeTest, WrongWordsChangeNothing) {
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"randomize"},
                                               {"reset"},
                                               {"randomize", "dot"},
                                               {"reset", "Badge"},
                                               {"reset", ""},
                                               {"randomize", "badge", "closebox"},
                                               {"randomize", "badge", "--seed", "x"},
                                               {"randomize", "badge", "--seed", "-1"},
                                               {"randomize", "badge", "--seed", "1.5"},
                                               {"randomise", "badge", "--seed", "18446744073709551616"},
                                               {"reset", "badge", "--seed", "1"},
                                               {"randomised", "badge"}}) {
        SCOPED_TRACE(testing::PrintToString(words));
        expectComplaint(tallyforge(words), 2);
        EXPECT_FALSE(std::filesystem::exists(domainFile()));
    }
}

TEST_F(RandomizeTest, TheLargestSeedIsOne) {
    EXPECT_NE(randomized({"randomize", "newdot", "--seed", "18446744073709551615"}),
              randomized({"randomize", "newdot", "--seed", "0"}));
}

TEST_F(RandomizeTest, AFailedWriteIsSaid) {
    std::filesystem::create_directories(domainFile().parent_path().parent_path());
    std::ofstream(domainFile().parent_path()) << "in the way"; // a file where the folder belongs
    expectComplaint(tallyforge({"reset", "badge"}), 1);
    expectComplaint(tallyforge({"randomize", "newdot"}), 1);
}

TEST_F(RandomizeTest, AnUnreadableFileIsKeptAsideAndSaid) {
    std::filesystem::create_directories(domainFile().parent_path());
    std::ofstream(domainFile()) << "no list";
    expectComplaint(tallyforge({"reset", "newdot"}), 0);
    EXPECT_EQ(AsPythonReadsIt(domainFile()), kNewDotReset);
    EXPECT_EQ(bytesOf(domainFile().string() + ".unreadable"), "no list");
}

TEST_F(RandomizeTest, ABrokenListOfRowsIsSaidAndNothingIsChanged) {
    writeList(kBundle + "badgeprefs.plist", "no list");
    expectComplaint(tallyforge({"reset", "badge"}), 1);
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
    EXPECT_EQ(tallyforge({"reset", "closebox"}).status, 0); // its list is another one
}

TEST_F(RandomizeTest, TheDevicesOwnListCounts) {
    std::string list = bytesOf(TALLYFORGE_RESOURCES "/stock" + kBundle + "newdotprefs.plist");
    size_t row = list.find("<string>newdotpos</string>");
    ASSERT_NE(row, std::string::npos);
    writeList("/bootstrap" + kBundle + "newdotprefs.plist",
              list.substr(0, row) + "<string>elsewhere</string>" + list.substr(row + 26));
    Ended ended = tallyforge({"reset", "newdot"});
    expectComplaint(ended, 1);
    EXPECT_NE(ended.errors.find("newdotpos"), std::string::npos) << ended.errors;
}

} // namespace tallyforge::test
