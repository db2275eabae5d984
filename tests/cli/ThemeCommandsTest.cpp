// `theme ...` and `tie ...` on the command line.

#include "CommandFixture.h"

#include "coregraphics/Canvas.h"
#include "foundation/NSKeyedArchiver.h"
#include "rastergraphics/RasterGraphics.h"
#include "settings/SettingsKeys.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>

namespace tallyforge::test {
namespace {

using Json = nlohmann::json;

const std::string kThemes = "/var/mobile/Documents/Tallyforge/";
const std::string kTies = kThemes + "PerAppThemes/";

class ThemeCommandsTest : public CommandTest {
  protected:
    std::string run(std::vector<std::string> words) const {
        Ended ended = tallyforge(std::move(words));
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.errors, "");
        return ended.output;
    }
    Ended refused(std::vector<std::string> words, int status) const {
        Ended ended = tallyforge(std::move(words));
        expectComplaint(ended, status);
        EXPECT_EQ(ended.output, "");
        return ended;
    }
    Json json(std::vector<std::string> words) const {
        words.emplace_back("--json");
        return Json::parse(run(std::move(words)), nullptr, false);
    }
    void put(const std::string& file, const std::string& name, float size = 1) const {
        device.write(kThemes + file, archive(name, size));
    }
    static std::vector<uint8_t> archive(const std::string& name, float size) {
        Dictionary theme;
        if (!name.empty()) theme.setObjectForKey(PropertyList::string(name), "themename");
        theme.setObjectForKey(PropertyList::floatNumber(size), "badgesize");
        return NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme));
    }
    std::string hostFile(const std::string& name, const std::vector<uint8_t>& bytes) const {
        std::ofstream(device.root() / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return (device.root() / name).string();
    }
    static CGImageRef decoded(const std::string& png) {
        return Graphics::current()->decodeImage({reinterpret_cast<const uint8_t*>(png.data()), png.size()});
    }
    /// An archive's root as Python resolves it, with the kinds of its numbers.
    Json python(const std::filesystem::path& file) const {
        Ended ended = RunProgram({"python3", TALLYFORGE_TEST_DATA "/read_archive.py", file.string()});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return Json::parse(ended.output, nullptr, false);
    }
};

TEST_F(ThemeCommandsTest, ASavedThemeHasTheArchiversLayout) {
    run({"set", "badgesize", "1.2", "badgebgcol", "#3355FF", "badgeshape", "4"});
    run({"theme", "save", "My Theme"});
    const Json theme = python(device.file(kThemes + "my_theme.tft"));
    EXPECT_EQ(theme["top"], (Json{{"root", 1}}));
    EXPECT_EQ(theme["first"], "$null");
    EXPECT_EQ(theme["classes"], (Json{"NSMutableDictionary", "NSDictionary", "NSObject"}));
    // The name, then the settings in the order of their table.
    std::vector<std::string> keys{"themename"};
    for (const SettingKey& key : SettingsKeyTable())
        keys.emplace_back(key.name);
    EXPECT_EQ(theme["keys"], Json(keys));
    EXPECT_EQ(theme["uidsOfKeys"], "in order");
    EXPECT_EQ(theme["classLast"], true);
    const Json& kinds = theme["kinds"];
    EXPECT_EQ(theme["values"]["themename"], "My Theme");
    EXPECT_EQ(kinds["badgesize"], "real 4"); // set
    EXPECT_EQ(kinds["badgeshape"], "real 4");
    EXPECT_EQ(theme["values"]["badgeshape"], 4.0);
    EXPECT_EQ(kinds["badgebgcol"], "text");
    EXPECT_EQ(kinds["badgealpha"], "integer"); // fallbacks from here on
    EXPECT_EQ(theme["values"]["badgealpha"], 100);
    EXPECT_EQ(kinds["convertbadgeroman"], "boolean");
    EXPECT_EQ(theme["values"]["convertbadgeroman"], false);
    EXPECT_EQ(kinds["badgebordersize"], "real 4");
    EXPECT_EQ(kinds["newdotsize"], "real 4");
    EXPECT_NEAR(theme["values"]["newdotsize"].get<double>(), 0.1, 1e-7);
    EXPECT_EQ(theme["values"]["closeboxbgcol"], "#FFA500");
}

TEST_F(ThemeCommandsTest, SavingAsksBeforeItOverwrites) {
    run({"theme", "save", "My Theme"});
    Ended ended = refused({"theme", "save", "my_theme"}, 1);
    EXPECT_NE(ended.errors.find("--overwrite"), std::string::npos);
    EXPECT_EQ(run({"theme", "list"}), "My Theme\tmy_theme.tft\n");
    run({"theme", "save", "my_theme", "--overwrite"});
    EXPECT_EQ(run({"theme", "list"}), "my_theme\tmy_theme.tft\n");
}

TEST_F(ThemeCommandsTest, NamesThatCanHaveNoFileAreWrongWords) {
    for (const std::string& name : {std::string(), std::string("   "), std::string("../x"), std::string("/x"),
                                    std::string("a/b"), std::string("\xFF"), std::string(252, 'x')})
        refused({"theme", "save", name}, 2);
    EXPECT_FALSE(std::filesystem::exists(device.file(kThemes)));
    // Capitals outside of ASCII have small letters too; brackets are letters like any other.
    run({"theme", "save", "ÄRGER im ÉTÉ"});
    run({"theme", "save", "[x]"});
    EXPECT_EQ(run({"theme", "list"}), "[x]\t[x].tft\nÄRGER im ÉTÉ\tärger_im_été.tft\n");
}

TEST_F(ThemeCommandsTest, AThemeIsMeantByItsNameOrItsFile) {
    put("a.tft", "Same", 1);
    put("b.tft", "Same", 2);
    put("c.tft", "", 3);
    EXPECT_EQ(run({"theme", "list"}), "Same\ta.tft\nSame\tb.tft\nc\tc.tft\n");
    EXPECT_NE(refused({"theme", "load", "Same"}, 1).errors.find("--file"), std::string::npos);
    refused({"theme", "load", "Other"}, 1);
    refused({"theme", "load", "Other", "--file", "a.tft"}, 1);
    refused({"theme", "load", "Same", "--file", "z.tft"}, 1);
    refused({"theme", "load"}, 2);
    run({"theme", "load", "Same", "--file", "b.tft"});
    EXPECT_EQ(run({"get", "badgesize"}), "2\n");
    run({"theme", "load", "a.tft"});
    EXPECT_EQ(run({"get", "badgesize"}), "1\n");
    run({"theme", "load", "c"});
    EXPECT_EQ(run({"get", "badgesize"}), "3\n");
    run({"theme", "delete", "--file", "b.tft"});
    EXPECT_EQ(run({"theme", "list"}), "Same\ta.tft\nc\tc.tft\n");
}

TEST_F(ThemeCommandsTest, ListAndShowPrintJson) {
    put("a.tft", "A\nB", 1.2F);
    EXPECT_EQ(run({"theme", "list"}), "A\\x0AB\ta.tft\n");
    EXPECT_EQ(json({"theme", "list"}), (Json{{{"name", "A\nB"}, {"file", "a.tft"}}}));
    const Json shown = json({"theme", "show", "--file", "a.tft"});
    EXPECT_EQ(shown["name"], "A\nB");
    ASSERT_EQ(shown["settings"].size(), 46U);
    EXPECT_EQ(shown["settings"][0],
              (Json{{"key", "badgebgcol"}, {"value", "#00FF00"}, {"source", "fallback"}}));
    EXPECT_EQ(shown["settings"][5], (Json{{"key", "badgesize"}, {"value", 1.2}, {"source", "set"}}));
    const std::string text = run({"theme", "show", "a.tft"});
    EXPECT_NE(text.find("badgesize\t1.2\tset\n"), std::string::npos);
    EXPECT_NE(text.find("convertbadgeroman\t0\tfallback\n"), std::string::npos);
}

TEST_F(ThemeCommandsTest, DiffTellsTheSettingsThatDiffer) {
    put("a.tft", "A", 1);
    put("b.tft", "B", 2);
    put("c.tft", "C", 1);
    EXPECT_EQ(run({"theme", "diff", "A", "B"}), "badgesize\t1\t2\n");
    EXPECT_EQ(json({"theme", "diff", "A", "B"}), (Json{{{"key", "badgesize"}, {"a", 1.0}, {"b", 2.0}}}));
    EXPECT_EQ(run({"theme", "diff", "A", "c.tft"}), "");
    refused({"theme", "diff", "A", "Z"}, 1);
    refused({"theme", "diff", "A"}, 2);
}

TEST_F(ThemeCommandsTest, RestoringPrintsWhatWasMissing) {
    device.write("/Library/Application Support/Tallyforge/x.tft", archive("X", 1));
    EXPECT_EQ(run({"theme", "restore"}), "x.tft\n");
    EXPECT_EQ(run({"theme", "restore"}), "");
}

TEST_F(ThemeCommandsTest, ExportedThemesCanBeImported) {
    put("my_look.tft", "My look", 1.5F);
    const std::string file = (device.root() / "out.tft").string();
    run({"theme", "export", "My look", file});
    EXPECT_EQ(bytesOf(file), bytesOf(device.file(kThemes + "my_look.tft")));
    refused({"theme", "import", file}, 1);
    run({"theme", "import", file, "--overwrite"});
    std::filesystem::remove(device.file(kThemes + "my_look.tft"));
    run({"theme", "import", file});
    const Json theme = python(device.file(kThemes + "my_look.tft"));
    EXPECT_EQ(theme["values"], (Json{{"themename", "My look"}, {"badgesize", 1.5}}));
    refused({"theme", "export", "Nothing", file}, 1);
    refused({"theme", "export", "My look", (device.root() / "no/such/folder").string()}, 1);
}

TEST_F(ThemeCommandsTest, WhatACutShortExportLeftIsClearedByTheNext) {
    put("a.tft", "A");
    const auto out = device.root() / "out", unfinished = device.root() / ".out.tallyforge-new";
    std::ofstream(unfinished) << std::string(100'000, 'x');
    run({"theme", "export", "A", out.string()});
    EXPECT_EQ(bytesOf(out), bytesOf(device.file(kThemes + "a.tft")));
    EXPECT_FALSE(std::filesystem::exists(unfinished));
    // What is not this program's own is put out of the way, never written to.
    std::ofstream(device.root() / "victim") << "untouched";
    for (const bool symbolic : {true, false}) {
        std::filesystem::remove(out);
        symbolic ? std::filesystem::create_symlink("victim", unfinished)
                 : std::filesystem::create_hard_link(device.root() / "victim", unfinished);
        run({"theme", "export", "A", out.string()});
        EXPECT_EQ(bytesOf(out), bytesOf(device.file(kThemes + "a.tft")));
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(unfinished)));
        EXPECT_EQ(bytesOf(device.root() / "victim"), "untouched");
    }
}

TEST_F(ThemeCommandsTest, SeveralAtATimeExportToOneFile) {
    put("a.tft", "A");
    const auto out = device.root() / "out";
    const std::string command = TALLYFORGE_BIN "/tallyforge";
    constexpr int kPrograms = 8;
    std::vector<std::unique_ptr<Program>> programs;
    programs.reserve(kPrograms);
    for (int i = 0; i < kPrograms; ++i)
        programs.push_back(std::make_unique<Program>(
            std::vector<std::string>{command, "theme", "export", "A", out.string()},
            std::map<std::string, std::string>{{"TALLYFORGE_ROOT", device.root().string()}}));
    for (auto& program : programs)
        EXPECT_EQ(program->wait().status, 0);
    EXPECT_EQ(bytesOf(out), bytesOf(device.file(kThemes + "a.tft")));
    EXPECT_FALSE(std::filesystem::exists(device.root() / ".out.tallyforge-new"));
}

TEST_F(ThemeCommandsTest, WhatIsImportedIsCheckedFirst) {
    auto with = [](const char* key, PropertyList value, const char* name = "N") {
        Dictionary theme;
        theme.setObjectForKey(PropertyList::string(name), "themename");
        theme.setObjectForKey(std::move(value), key);
        return NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme));
    };
    const std::vector<std::vector<uint8_t>> wrong{
        {'x'},
        {},
        archive("", 1),
        archive("   ", 1),
        archive("../../evil", 1),
        with("badgesize", PropertyList::string("1")),
        with("badgesize", PropertyList::floatNumber(std::numeric_limits<float>::quiet_NaN())),
        with("badgebgcol", PropertyList::string("red")),
        with("badgebgcol", PropertyList::integer(5)),
        with("badgebgcol", PropertyList::array({})),
        with("unknown", PropertyList::integer(5)),
        NSKeyedArchiver::archivedDataWithRootObject(PropertyList::string("A")),
        std::vector<uint8_t>((4U << 20) + 1, 'x'),
    };
    for (size_t i = 0; i < wrong.size(); ++i) {
        SCOPED_TRACE(i);
        refused({"theme", "import", hostFile("wrong.tft", wrong[i])}, 1);
    }
    refused({"theme", "import", (device.root() / "missing").string()}, 1);
    refused({"theme", "import", device.root().string()}, 1);
    refused({"theme", "import", "/dev/zero"}, 1);
    EXPECT_FALSE(std::filesystem::exists(device.file(kThemes)));
}

TEST_F(ThemeCommandsTest, WhatCannotBeWrittenOrRemovedIsAFailure) {
    device.write("/var/mobile/Documents/Tallyforge", {'x'});
    refused({"theme", "save", "X"}, 1);
    refused({"theme", "restore"}, 1);
    refused({"theme", "load", "X"}, 1);
    refused({"theme", "delete", "X"}, 1);
}

TEST_F(ThemeCommandsTest, AFolderThatCannotBeListedIsNoEmptyOne) {
    EXPECT_EQ(run({"theme", "list"}), "");
    EXPECT_EQ(run({"tie", "list"}), "");
    const std::string picture = (device.root() / "gallery.png").string();
    device.write("/var/mobile/Documents/Tallyforge/PerAppThemes", {'x'});
    EXPECT_EQ(refused({"tie", "list"}, 1).errors, "tallyforge: tie list: " + kTies + ": not a folder\n");
    EXPECT_EQ(refused({"tie", "clear", "--all"}, 1).errors,
              "tallyforge: tie clear: " + kTies + ": not a folder\n");
    std::filesystem::remove_all(device.file(kThemes));
    device.write("/var/mobile/Documents/Tallyforge", {'x'});
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"theme", "list"}, {"theme", "show", "X"}, {"theme", "gallery", picture}})
        EXPECT_NE(refused(words, 1).errors.find(": " + kThemes + ": not a folder\n"), std::string::npos);
}

TEST_F(ThemeCommandsTest, WhatCannotBeRestoredIsNamedByItsSource) {
    const std::string defaults = "/Library/Application Support/Tallyforge/";
    std::filesystem::create_directories(device.file(defaults + "a.tft"));
    device.write(defaults + "b.tft", archive("B", 1));
    const Ended ended = tallyforge({"theme", "restore"});
    expectComplaint(ended, 1);
    EXPECT_EQ(ended.errors,
              "tallyforge: theme restore: " + defaults + "a.tft: a folder stands in its place\n");
    EXPECT_EQ(ended.output, "b.tft\n");
    std::filesystem::remove_all(device.file(defaults));
    device.write("/Library/Application Support/Tallyforge", {'x'});
    EXPECT_EQ(refused({"theme", "restore"}, 1).errors,
              "tallyforge: theme restore: " + defaults + ": not a folder\n");
}

TEST_F(ThemeCommandsTest, TheGalleryShowsEveryTheme) {
    Graphics::install(MakeRasterGraphics());
    device.furnish();
    const std::string file = (device.root() / "gallery.png").string();
    refused({"theme", "gallery", file}, 1);
    run({"theme", "restore"});
    run({"set", "badgesize", "2"});
    const std::string settings = bytesOf(domainFile());
    run({"theme", "gallery", file, "--scale", "1"});
    EXPECT_EQ(bytesOf(domainFile()), settings); // drawing them loads none
    const std::string bytes = bytesOf(file);
    const auto first = decoded(bytes);
    ASSERT_NE(first, nullptr);

    run({"theme", "delete", "Ember"});
    run({"theme", "gallery", file, "--scale", "1"});
    const std::string after = bytesOf(file);
    const auto second = decoded(after);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first->pixels(), second->pixels());
    // Ember's red is in the one and not in the other.
    auto reds = [](const CGImage& image) { return std::ranges::count(image.pixels(), 0xFFC8381EU); };
    EXPECT_GT(reds(*first), 20);
    EXPECT_EQ(reds(*second), 0);
}

TEST_F(ThemeCommandsTest, TiesAreSetListedAndCleared) {
    put("ember.tft", "Ember");
    run({"tie", "set", "com.example.a", "Ember"});
    run({"tie", "set", "com.tallyforge.folders", "ember.tft"});
    run({"tie", "set", "com.example.b", "none"}); // no tie to undo: one of "0" is written
    std::filesystem::create_directories(device.file(kTies + "folder"));
    device.write(kTies + "broken", {'x'});
    EXPECT_EQ(run({"tie", "list"}), "com.example.a\tEmber\t" + kThemes +
                                        "ember.tft\ncom.example.b\tnone\t0\n"
                                        "com.tallyforge.folders\tEmber\t" +
                                        kThemes + "ember.tft\n");
    run({"tie", "set", "com.tallyforge.folders", "none"});
    EXPECT_FALSE(std::filesystem::exists(device.file(kTies + "com.tallyforge.folders")));
    run({"theme", "delete", "Ember"});
    EXPECT_EQ(json({"tie", "list"}),
              (Json{{{"app", "com.example.a"}, {"theme", nullptr}, {"file", kThemes + "ember.tft"}},
                    {{"app", "com.example.b"}, {"theme", nullptr}, {"file", nullptr}}}));
    run({"tie", "clear", "com.example.a"});
    refused({"tie", "clear", "com.example.a"}, 1);
    EXPECT_EQ(run({"tie", "list"}), "com.example.b\tnone\t0\n");
    std::filesystem::remove(device.file(kTies + "folder"));
    run({"tie", "clear", "--all"});
    EXPECT_TRUE(std::filesystem::is_empty(device.file(kTies)));
    EXPECT_EQ(run({"tie", "list"}), "");
}

TEST_F(ThemeCommandsTest, WrongTiesAreRefused) {
    put("ember.tft", "Ember");
    for (const char* app : {"", ".", "..", "../../evil", "a/b"}) {
        refused({"tie", "set", app, "Ember"}, 2);
        refused({"tie", "clear", app}, 2);
    }
    refused({"tie", "set", std::string(256, 'x'), "Ember"}, 2);
    refused({"tie", "set", "com.example.a", "Nothing"}, 1);
    refused({"tie", "set", "com.example.a"}, 2);
    refused({"tie", "clear"}, 2);
    refused({"tie", "clear", "com.example.a", "--all"}, 2);
    EXPECT_FALSE(std::filesystem::exists(device.file(kTies)));
    refused({"tie", "set", "com.example.\xFF", "Ember"}, 2);
}

TEST_F(ThemeCommandsTest, ClearingLeavesTheTiesFolderEmptyWhateverStoodInIt) {
    put("ember.tft", "Ember");
    std::filesystem::create_directories(device.file(kTies + "folder/below"));
    std::filesystem::create_symlink("../ember.tft", device.file(kTies + "link"));
    run({"tie", "set", "com.example.a", "Ember"});
    run({"tie", "clear", "--all"});
    EXPECT_TRUE(std::filesystem::is_empty(device.file(kTies)));
    EXPECT_TRUE(std::filesystem::exists(device.file("/var/mobile/Documents/Tallyforge/ember.tft")));
}

TEST_F(ThemeCommandsTest, TheScreenFollowsATieOfTheAppThatItShows) {
    put("ember.tft", "Ember");
    Dictionary domain;
    domain.setObjectForKey(PropertyList::string("com.example.a"), "perappapp");
    domain.setObjectForKey(PropertyList::string("0"), "perapptheme");
    device.writeDomain(domain);
    auto shown = [&] { return std::string(python(domainFile())["perapptheme"]); };
    run({"tie", "set", "com.example.b", "Ember"});
    EXPECT_EQ(shown(), "0");
    run({"tie", "set", "com.example.a", "Ember"});
    EXPECT_EQ(shown(), kThemes + "ember.tft");
    run({"tie", "clear", "com.example.a"});
    EXPECT_EQ(shown(), "0");
}

} // namespace
} // namespace tallyforge::test
