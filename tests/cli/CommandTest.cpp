// The command line as such: help, wrong words, the device root, and what the program is made of.

#include "CommandFixture.h"

namespace tallyforge::test {

TEST_F(CommandTest, HelpNamesEveryCommandAndEndsWell) {
    Ended help = tallyforge({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.errors, "");
    for (const char* name : {"list", "get", "set", "unset", "watch", "render", "animate", "inspect"}) {
        EXPECT_NE(help.output.find(name), std::string::npos) << name;
        Ended own = tallyforge({name, "--help"});
        EXPECT_EQ(own.status, 0) << name;
        for (const char* option : {"--root", "--idiom", "Example:"})
            EXPECT_NE(own.output.find(option), std::string::npos) << name << ' ' << option;
    }
}

TEST_F(CommandTest, WrongWordsAreOneLineAndStatusTwo) {
    const std::vector<std::vector<std::string>> wrong = {
        {"frobnicate"},
        {"list", "surplus"},
        {"get"},
        {"get", "badgesize", "badgealpha"},
        {"list", "--idiom", "watch"},
        {"--nonsense", "list"},
        {"render"},
        {"render", "x.png", "--scale", "0"},
        {"render", "x.png", "--scale", "two"},
        {"render", "x.png", "--scale", "nan"},
        {"render", "x.png", "--size", "320"},
        {"render", "x.png", "--size", "0x44"},
        {"render", "x.png", "--size", "320x44x5"},
        {"render", "x.png", "--time", "-1"},
        {"animate", "x.webp", "--seconds", "0"},
        {"animate", "x.webp", "--fps", "1000"},
        {"animate", "x.webp", "--seconds", "3600", "--fps", "60"},
        {"watch", "--count", "0"},
        {"watch", "--timeout", "soon"},
        {"watch", "--count", "1e3"},
        {"theme", "paint"},
        {"foo", "get", "badgesize"},
        {"set", "[badgesize,1.2]"},
        {"get", "[badgesize]"},
        {"unset", "[badgesize,badgealpha]"},
        {"render", ""},
    };
    for (const auto& words : wrong) {
        SCOPED_TRACE(words.front() + " ... " + words.back());
        Ended ended = tallyforge(words);
        expectComplaint(ended, 2);
        EXPECT_EQ(ended.output, "");
    }
    EXPECT_FALSE(std::filesystem::exists("x.png"));
    EXPECT_FALSE(std::filesystem::exists("x.webp"));
}

TEST_F(CommandTest, AMissingRootIsSaidAndNotMade) {
    std::string missing = (device.root() / "nowhere").string();
    for (const char* name : {"list", "inspect"}) {
        Ended ended = tallyforge({name, "--root", missing});
        expectComplaint(ended, 1);
        EXPECT_NE(ended.errors.find(missing), std::string::npos) << ended.errors;
    }
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(CommandTest, RootOnTheCommandLineCountsBeforeTheEnvironment) {
    std::filesystem::path other = device.root() / "other";
    std::filesystem::create_directory(other);
    EXPECT_EQ(tallyforge({"--root", other.string(), "set", "badgesize", "1"}).status, 0);
    EXPECT_EQ(tallyforge({"set", "badgesize", "2"}).status, 0);
    EXPECT_EQ(tallyforge({"get", "badgesize", "--root", other.string()}).output, "1\n");
    EXPECT_EQ(tallyforge({"get", "badgesize"}).output, "2\n");
}

// Another folder than the program's own is taken as it is: asking and drawing put nothing into it.
TEST_F(CommandTest, AnEmptyRootStaysEmpty) {
    EXPECT_EQ(tallyforge({"list"}).status, 0);
    EXPECT_EQ(tallyforge({"inspect"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_empty(device.root()));
}

TEST_F(CommandTest, FullOutputIsAFailure) {
    for (const char* name : {"list", "inspect"}) {
        Ended ended =
            RunProgram({"sh", "-c", std::string("'" TALLYFORGE_BIN "/tallyforge' ") + name + " > /dev/full"},
                       {{"TALLYFORGE_ROOT", device.root().string()}});
        expectComplaint(ended, 1);
        EXPECT_NE(ended.errors.find("No space left"), std::string::npos) << ended.errors;
    }
}

TEST_F(CommandTest, TheCommandItselfLinksNoGraphicsLibrary) {
    Ended ldd = RunProgram({"ldd", TALLYFORGE_BIN "/tallyforge"});
    ASSERT_EQ(ldd.status, 0) << ldd.errors;
    EXPECT_NE(ldd.output.find("libc.so"), std::string::npos);
    for (const char* library : {"Qt", "png", "freetype", "fontconfig", "cairo", "webp", "GL", "X11", "xcb"})
        EXPECT_EQ(ldd.output.find(library), std::string::npos) << library;
}

#if !ADDRESS_SANITIZER // whose own memory would be counted
TEST_F(CommandTest, ReadingASettingTakesLittleMemory) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1"}).status, 0);
    Ended ended = tallyforge({"get", "badgesize"});
    EXPECT_GT(ended.peakKilobytes, 0);
    EXPECT_LT(ended.peakKilobytes, 12 * 1024);
}
#endif

} // namespace tallyforge::test
