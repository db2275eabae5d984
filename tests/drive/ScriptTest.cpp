// Scripts: their words, and what is said of those that cannot be run.

#include "DriveFixture.h"

#include <array>
#include <fcntl.h>

namespace tallyforge::test {
namespace {

class ScriptTest : public DriveTest {
  protected:
    /// A script whose last line is refused, with that line's number.
    void expectStops(const std::string& script, const std::string& line, const std::string& says) {
        SCOPED_TRACE(script);
        Ended ended = drive(script);
        expectRefused(ended, 1, "drive: line " + line + ": ");
        EXPECT_NE(ended.errors.find(says), std::string::npos) << ended.errors;
    }
    std::string title(const std::string& script) const {
        Ended ended = drive(script + "\ninspect\n");
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return Json::parse(ended.output, nullptr, false).value("title", "");
    }
};

TEST_F(ScriptTest, AnEmptyScriptDoesNothing) {
    for (const char* script : {"", "\n", "\n\n  \t \r\n", "# nothing\n", "   # nothing", "#\n#\n"}) {
        Ended ended = drive(script);
        EXPECT_EQ(ended.status, 0) << script;
        EXPECT_EQ(ended.output + ended.errors, "") << script;
    }
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(ScriptTest, BlanksCommentsAndLineEndsSeparateWords) {
    EXPECT_EQ(title("open badge"), "Badge");
    EXPECT_EQ(title("\t open \t badge   "), "Badge");
    EXPECT_EQ(title("open badge # and then nothing"), "Badge");
    EXPECT_EQ(title("open badge #"), "Badge");
    EXPECT_EQ(title("open \"badge\"# close by"), "Badge");
    EXPECT_EQ(title("open badge\r\ntap \"Number\"\r\n"), "Number");
    EXPECT_EQ(title("open badge\n\n\n# more\ntap Number"), "Number");
    expectStops("open 'badge'", "1", "there is no pane ''badge''");
}

TEST_F(ScriptTest, AMissingLineEndAtTheEndIsNoMatter) {
    Ended ended = drive("open badge\nslide Size 1.5");
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(domain()["badgesize"], 1.5);
}

// A screen of the test's own whose buttons have quotation marks, backslashes and hashes in their names.
TEST_F(ScriptTest, QuotedWordsHoldBlanksQuotesBackslashesAndHashes) {
    PropertyList::Array rows;
    const std::array<std::string, 4> names{"Say \"hi\"", "back\\slash", "# hash", "a\\b\"c d"};
    for (const std::string& name : names) {
        Dictionary row;
        row.setObjectForKey(PropertyList::string("PSLinkCell"), "cell");
        row.setObjectForKey(PropertyList::string(name), "label");
        row.setObjectForKey(PropertyList::string("themesListController"), "detail");
        rows.push_back(PropertyList::dictionary(row));
    }
    Dictionary list;
    list.setObjectForKey(PropertyList::array(rows), "items");
    device.write(kBundle + "tallyforgeprefs.plist",
                 BinaryPropertyList::Serialize(PropertyList::dictionary(list)));
    EXPECT_EQ(title(R"(tap "Say \"hi\"")"), names[0]); // a screen is called as the row that leads to it
    EXPECT_EQ(title(R"(tap "back\\slash")"), names[1]);
    EXPECT_EQ(title(R"(tap "back\slash")"), names[1]);
    EXPECT_EQ(title(R"(tap "# hash")"), names[2]);
    EXPECT_EQ(title(R"(tap "a\\b\"c d")"), names[3]);
}

TEST_F(ScriptTest, UnclosedAndGluedQuotationMarksAreSaid) {
    expectStops("open \"badge", "1", "quotation mark is not closed");
    expectStops("open badge\ntap \"", "2", "quotation mark is not closed");
    expectStops("tap \"Badge\\\"", "1", "quotation mark is not closed");
    expectStops("\n\nslide \"Size\"1", "3", "a blank is missing");
}

TEST_F(ScriptTest, LinesAreCountedFromOneWithEmptyOnesAndComments) {
    expectStops("jump", "1", "'jump' is no step");
    expectStops("# first\n\r\n\nopen badge\nJump\n", "5", "'Jump' is no step");
    expectStops("\"\"", "1", "'' is no step");
}

TEST_F(ScriptTest, WrongCountsOfWordsNameTheRightOnes) {
    const std::pair<const char*, const char*> cases[] = {
        {"open", "open PANE"},
        {"open badge badge", "open PANE"},
        {"back 1", "wanted is: back"},
        {"tap", "tap \"TEXT\" or tap X Y"},
        {"tap 1 2 3", "tap \"TEXT\" or tap X Y"},
        {"slide Size", "slide \"ROW\" VALUE [hold]"},
        {"slide Size 1 hold on", "slide \"ROW\" VALUE [hold]"},
        {"drag 1 2 3", "drag X1 Y1 X2 Y2 [SECONDS]"},
        {"drag 1 2 3 4 5 6", "drag X1 Y1 X2 Y2 [SECONDS]"},
        {"scroll", "scroll \"TEXT\""},
        {"pick a b", "pick \"TEXT\""},
        {"type", "type \"TEXT\""},
        {"wait", "wait SECONDS"},
        {"render", "render FILE"},
        {"inspect a b", "inspect [FILE]"},
    };
    for (const auto& [script, says] : cases)
        expectStops(script, "1", says);
}

TEST_F(ScriptTest, NumbersHaveToBeNumbers) {
    for (const char* number : {"x", "1x", "nan", "inf", "1e999", "--1", "\"\""}) {
        const std::string word = number;
        expectStops("open badge\nslide Size " + word, "2", "is no number");
        expectStops("tap 1 " + word, "1", "is no point");
        expectStops("drag 1 2 " + word + " 4", "1", "is no point");
        expectStops("drag 1 2 3 4 " + word, "1", "is no time");
        expectStops("wait " + word, "1", "is no time");
    }
    expectStops("wait -1", "1", "is no time from 0 to 3600");
    expectStops("wait 3601", "1", "is no time from 0 to 3600");
    expectStops("drag 1 2 3 4 61", "1", "is no time from 0 to 60");
    expectStops("open badge\nslide Size 1 held", "2", "'held' is not 'hold'");
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(ScriptTest, WhatIsNotThereIsNamed) {
    expectStops("open nosuch", "1", "there is no pane 'nosuch'");
    expectStops("open \"\"", "1", "there is no pane ''");
    expectStops("open Badge", "1", "there is no pane 'Badge'");
    expectStops("tap \"No such text\"", "1", "nothing on the screen shows 'No such text'");
    expectStops("tap \"\"", "1", "nothing on the screen shows ''");
    expectStops("open badge\nscroll \"No such text\"", "2", "nothing on the screen shows");
    expectStops("open badge\nslide Shape 1", "2", "there is no slider 'Shape'");
    expectStops("open badge\nslide Nothing 1", "2", "there is no slider 'Nothing'");
    expectStops("back", "1", "this is the first screen");
    expectStops("pick x", "1", "no alert with a picker is in front");
    expectStops("type x", "1", "no text field is in front");
}

TEST_F(ScriptTest, ASliderGoesOnlyFromItsLeastToItsMost) {
    expectStops("open badge\nslide Size -1.6", "2", "the slider goes from -1.5 to 2.25");
    expectStops("open badge\nslide Size 2.3", "2", "the slider goes from -1.5 to 2.25");
    expectStops("open badgeanim\nslide Cycle 0.1", "2", "the slider goes from 0.2 to 4");
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(ScriptTest, WhatWasDoneBeforeTheWrongStepStays) {
    expectStops("open badge\nslide Size 2\njump\nslide Size 1\n", "3", "no step");
    EXPECT_EQ(domain(), (Json{{"badgesize", 2.0}}));
}

TEST_F(ScriptTest, TheScriptComesFromStandardInputWithoutAFile) {
    const std::string file = (scratch / "in").string();
    std::ofstream(file) << "open badge\nslide Size 1.25\n";
    // The shell hands the file over as standard input.
    Ended ended = RunProgram({"sh", "-c", "exec \"$0\" drive < \"$1\"", TALLYFORGE_BIN "/tallyforge", file},
                             {{"TALLYFORGE_ROOT", device.root().string()}, {"DBUS_SESSION_BUS_ADDRESS", ""}});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(domain(), (Json{{"badgesize", 1.25}}));
    EXPECT_EQ(tallyforge({"drive"}).status, 0) << "an empty standard input";
}

TEST_F(ScriptTest, AScriptThatCannotBeReadIsNamed) {
    const std::string missing = (scratch / "missing").string();
    expectRefused(tallyforge({"drive", missing}), 1, missing + ": No such file or directory");
    expectRefused(tallyforge({"drive", scratch.string()}), 1, scratch.string() + ": ");
    expectRefused(tallyforge({"drive", (scratch / "a" / "b").string(), "--trace", (scratch / "t").string()}),
                  1, "No such file");
    EXPECT_FALSE(std::filesystem::exists(scratch / "t"));
}

TEST_F(ScriptTest, ATraceThatCannotBeWrittenStopsBeforeTheFirstStep) {
    const std::string nowhere = (scratch / "no" / "trace").string();
    expectRefused(drive("open badge\nslide Size 1\n", {"--trace", nowhere}), 1, nowhere);
    expectRefused(drive("open badge\nslide Size 1\n", {"--trace", scratch.string()}), 1,
                  "a folder stands in its place");
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
    expectRefused(drive("open badge\n", {"--trace", "/dev/full"}), 1, "the trace could not be written whole");
}

TEST_F(ScriptTest, AFullStandardOutputIsSaid) {
    const std::string file = (scratch / "script").string();
    std::ofstream(file) << "inspect\n";
    Ended ended =
        RunProgram({"sh", "-c", "exec \"$0\" drive \"$1\" > /dev/full", TALLYFORGE_BIN "/tallyforge", file},
                   {{"TALLYFORGE_ROOT", device.root().string()}, {"DBUS_SESSION_BUS_ADDRESS", ""}});
    expectRefused(ended, 1, "No space left on device");
}

TEST_F(ScriptTest, SettingsThatCannotBeWrittenAreSaid) {
    std::filesystem::create_directories(domainFile() / "in the way");
    Ended ended = drive("open badge\nslide Size 1\n");
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.errors.find("com.quillon.tallyforge.plist"), std::string::npos) << ended.errors;
}

TEST_F(ScriptTest, WrongWordsOfTheCommandLineAreTwo) {
    const std::string file = (scratch / "script").string();
    std::ofstream(file) << "open badge\nslide Size 1\n";
    for (const Lines& words : {Lines{"drive", file, file}, Lines{"drive", "--nosuch"},
                               Lines{"drive", file, "--trace"}, Lines{"drive", file, "--idiom", "watch"},
                               Lines{"drive", file, "--scale", "0"}, Lines{"drive", file, "--scale", "x"}})
        expectRefused(tallyforge(words), 2, "drive: ");
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
    expectRefused(tallyforge({"drive", file, "--root", (scratch / "none").string()}), 1, "no such folder");
}

TEST_F(ScriptTest, HelpTeachesEveryStep) {
    Ended ended = tallyforge({"drive", "--help"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "");
    for (const char* word :
         {"open PANE", "back", "tap \"TEXT\"", "tap X Y", "slide \"ROW\" VALUE", "hold", "drag X1 Y1 X2 Y2",
          "scroll \"TEXT\"", "pick \"TEXT\"", "type \"TEXT\"", "wait SECONDS", "render FILE",
          "inspect [FILE]", "--trace", "--scale", "--idiom", "--root", "SCRIPT", "# begins a comment"})
        EXPECT_NE(ended.output.find(word), std::string::npos) << word;
}

TEST_F(ScriptTest, TheIdiomIsThePhoneUnlessToldOtherwise) {
    Json phone = Json::parse(drive("inspect\n").output, nullptr, false);
    EXPECT_EQ(phone["idiom"], "phone");
    EXPECT_EQ(phone["view"]["bounds"], (Json{{"x", 0}, {"y", 0}, {"width", 375}, {"height", 667}}));
    Json pad = Json::parse(drive("inspect\n", {"--idiom", "pad"}).output, nullptr, false);
    EXPECT_EQ(pad["idiom"], "pad");
    EXPECT_EQ(pad["view"]["bounds"], (Json{{"x", 0}, {"y", 0}, {"width", 768}, {"height", 1024}}));
}

} // namespace
} // namespace tallyforge::test
