// The screen of themes, driven by a script: alerts word for word and what each button does, in order.

#include "DriveFixture.h"

#include "foundation/NSKeyedArchiver.h"
#include "settings/SettingsKeys.h"

#include <sys/stat.h>

namespace tallyforge::test {
namespace {

const std::string kThemes = "/var/mobile/Documents/Tallyforge/";
const std::string kDefaults = "/Library/Application Support/Tallyforge/";
const std::string kAsksName = "alert 124 Preset name | Enter the preset name:";
const std::string kAsksOverwrite =
    "alert 126 Warning | A theme with the specified name already exists. Do you want to overwrite it?";
const std::string kAsksLoad = "alert 123 Load theme | Select the theme to load";
const std::string kAsksDelete = "alert 125 Delete theme | Select the theme to delete";
const std::string kNoName = "alert 0 Error | Please enter a theme name";
const std::string kNoThemes = "alert 0 Error | No themes found";
const std::string kRestored = "alert 0 Done | The default themes has been restored!";
const std::string kNothingToRestore =
    "alert 0 Done | You didn't delete any default theme... Nothing to restore!";

std::string saved(const std::string& name) {
    return "alert 0 Success | The current settings were successfully saved as a theme with the name " + name +
           "!";
}

class ThemesDriveTest : public DriveTest {
  protected:
    static std::string save(const std::string& name) {
        return "tap \"Save theme\"\ntype \"" + name + "\"\ntap Ok\n";
    }
    Lines themes(const std::string& script) const { return traceOn("themes", script); }
    /// Puts a theme there as some other device may have saved it.
    void put(const std::string& file, const Dictionary& theme) const {
        device.write(kThemes + file,
                     NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme)));
    }
    static Dictionary named(const std::string& name) {
        Dictionary theme;
        theme.setObjectForKey(PropertyList::string(name), "themename");
        return theme;
    }
    Json alert(const std::string& script) const {
        Ended ended = drive("open themes\n" + script + "inspect\n");
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return Json::parse(ended.output, nullptr, false)["alert"];
    }
    bool exists(const std::string& path) const {
        return std::filesystem::exists(std::filesystem::symlink_status(device.file(path)));
    }
};

TEST_F(ThemesDriveTest, SavingAsksForANameAndWritesTheFile) {
    EXPECT_EQ(themes(save("My Theme")),
              (Lines{kAsksName, "write " + kThemes + "my_theme.tft", saved("My Theme")}));
    EXPECT_TRUE(exists(kThemes + "my_theme.tft"));
    EXPECT_EQ(alert("tap \"Save theme\"\n"), (Json{{"title", "Preset name"},
                                                   {"message", "Enter the preset name:"},
                                                   {"tag", 124},
                                                   {"buttons", {"Cancel", "Ok"}},
                                                   {"textField", ""},
                                                   {"picker", nullptr}}));
    EXPECT_EQ(alert(save("X")),
              (Json{{"title", "Success"},
                    {"message", "The current settings were successfully saved as a theme with "
                                "the name X!"},
                    {"tag", 0},
                    {"buttons", {"Ok"}},
                    {"textField", nullptr},
                    {"picker", nullptr}}));
}

TEST_F(ThemesDriveTest, ABlankNameIsAnErrorAndNothingIsWritten) {
    EXPECT_EQ(themes("tap \"Save theme\"\ntap Ok\n"), (Lines{kAsksName, kNoName}));
    EXPECT_EQ(themes(save("    ")), (Lines{kAsksName, kNoName}));
    EXPECT_FALSE(exists(kThemes));
}

TEST_F(ThemesDriveTest, CancelDoesNothing) {
    EXPECT_EQ(themes("tap \"Save theme\"\ntype X\ntap Cancel\n"), Lines{kAsksName});
    EXPECT_FALSE(exists(kThemes));
    put("a.tft", named("A"));
    EXPECT_EQ(themes("tap \"Load theme\"\ntap Cancel\ntap \"Delete theme\"\ntap Cancel\nwait 1\n"),
              (Lines{kAsksLoad, kAsksDelete}));
    EXPECT_EQ(themes(save("a") + "tap Cancel\n"), (Lines{kAsksName, kAsksOverwrite}));
    EXPECT_TRUE(exists(kThemes + "a.tft"));
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(ThemesDriveTest, NamesThatShareAFileAskBeforeTheyOverwrite) {
    themes(save("My Theme"));
    const std::string before = bytesOf(device.file(kThemes + "my_theme.tft"));
    EXPECT_EQ(themes(save("my_theme") + "tap Cancel\n"), (Lines{kAsksName, kAsksOverwrite}));
    EXPECT_EQ(bytesOf(device.file(kThemes + "my_theme.tft")), before);
    EXPECT_EQ(themes(save("MY THEME") + "tap Overwrite\n"),
              (Lines{kAsksName, kAsksOverwrite, "write " + kThemes + "my_theme.tft", saved("MY THEME")}));
    EXPECT_NE(bytesOf(device.file(kThemes + "my_theme.tft")), before);
    EXPECT_EQ(alert(save("my theme")),
              (Json{{"title", "Warning"},
                    {"message", "A theme with the specified name already exists. Do you "
                                "want to overwrite it?"},
                    {"tag", 126},
                    {"buttons", {"Cancel", "Overwrite"}},
                    {"textField", nullptr},
                    {"picker", nullptr}}));
}

TEST_F(ThemesDriveTest, NamesThatLeadOutOfTheFolderAreRefused) {
    const std::string slash = "alert 0 Error | A theme name can't contain the character /";
    EXPECT_EQ(themes(save("../../../evil")), (Lines{kAsksName, slash}));
    EXPECT_EQ(themes(save("/evil")), (Lines{kAsksName, slash}));
    EXPECT_EQ(themes(save("AC/DC")), (Lines{kAsksName, slash}));
    EXPECT_EQ(themes(save(std::string(252, 'x'))),
              (Lines{kAsksName, "alert 0 Error | This theme name is too long"}));
    EXPECT_FALSE(exists(kThemes));
    EXPECT_EQ(themes(save("..")), (Lines{kAsksName, "write " + kThemes + "...tft", saved("..")}));
    const std::string longest(251, 'x');
    EXPECT_EQ(themes(save(longest)),
              (Lines{kAsksName, "write " + kThemes + longest + ".tft", saved(longest)}));
}

TEST_F(ThemesDriveTest, WithoutAnythingInTheFolderThereIsNothingToChoose) {
    EXPECT_EQ(themes("tap \"Load theme\"\ntap Ok\ntap \"Delete theme\"\n"), (Lines{kNoThemes, kNoThemes}));
    std::filesystem::create_directories(device.file(kThemes));
    EXPECT_EQ(themes("tap \"Load theme\"\n"), Lines{kNoThemes});
}

// Another file is enough for the question to be asked; its button then has nothing to do.
TEST_F(ThemesDriveTest, APickerWithoutRowsDoesNothing) {
    device.write(kThemes + "notes.txt", {'x'});
    device.write(kThemes + "broken.tft", {'x'});
    EXPECT_EQ(alert("tap \"Load theme\"\n")["picker"]["rows"], Json::array());
    EXPECT_EQ(themes("tap \"Load theme\"\ntap Load\nwait 1\n"), Lines{kAsksLoad});
    EXPECT_EQ(themes("tap \"Delete theme\"\ntap Delete\nwait 1\n"), Lines{kAsksDelete});
    EXPECT_TRUE(exists(kThemes + "broken.tft"));
}

TEST_F(ThemesDriveTest, ThePickerShowsTheThemesInTheFoldersOrder) {
    put("b.tft", named("Same"));
    put("a.tft", named("Same"));
    put("c.TFT", named("Other extension"));
    put("d.tft", Dictionary());
    put(".tft", named("No name at all"));
    device.write(kThemes + "e.tft", {'x'});
    const Json picker = alert("tap \"Load theme\"\n")["picker"];
    EXPECT_EQ(picker["rows"], (Json{"Same", "Same", "d"}));
    EXPECT_EQ(picker["selected"], 0);
    EXPECT_EQ(themes("tap \"Delete theme\"\npick d\ntap Delete\n"),
              (Lines{kAsksDelete, "remove " + kThemes + "d.tft",
                     "alert 0 Done | The theme d was successfully deleted!",
                     "darwin com.quillon.tallyforge.prefs"}));
}

TEST_F(ThemesDriveTest, LoadingWritesTheWholeDomainAndAnnouncesItOnce) {
    Dictionary domain;
    domain.setObjectForKey(PropertyList::string("com.example.app"), "perappapp");
    domain.setObjectForKey(PropertyList::floatNumber(3), "badgesize");
    device.writeDomain(domain);
    Dictionary theme = named("Half a theme");
    theme.setObjectForKey(PropertyList::floatNumber(0.5F), "badgesize");
    theme.setObjectForKey(PropertyList::string("#123456"), "newdotbgcol");
    theme.setObjectForKey(PropertyList::string("mine"), "somethingelse");
    put("half.tft", theme);

    Lines wanted{kAsksLoad, "set com.quillon.tallyforge perappapp com.example.app",
                 "set com.quillon.tallyforge badgesize 0.5"};
    for (const SettingKey& key : SettingsKeyTable()) {
        if (key.name == "badgesize") continue;
        const std::string value =
            key.name == "newdotbgcol" ? "#123456" : SettingsDefaults().objectForKey(key.name)->description();
        wanted.push_back("set com.quillon.tallyforge " + std::string(key.name) + " " + value);
    }
    for (const char* end : {"synchronize-defaults", "post reloadTallyforgePreviewNotify",
                            "darwin com.quillon.tallyforge.prefs"})
        wanted.emplace_back(end);
    EXPECT_EQ(themes("tap \"Load theme\"\ntap Load\n"), wanted);

    const Json held = this->domain();
    EXPECT_EQ(held.size(), 47U); // the look, and the app that was there
    EXPECT_EQ(held["perappapp"], "com.example.app");
    EXPECT_EQ(held["badgesize"], 0.5);
    EXPECT_EQ(held["newdotbgcol"], "#123456");
    EXPECT_EQ(held["badgebgcol"], "#00FF00"); // fallbacks for what the theme does not have
    EXPECT_EQ(held["closeboxrotation"], 180);
    EXPECT_FALSE(held.contains("themename"));
    EXPECT_FALSE(held.contains("somethingelse"));
}

TEST_F(ThemesDriveTest, AFileThatIsNoThemeAnyMoreIsLeftAlone) {
    put("a.tft", named("A"));
    const std::string file = (scratch / "fifo").string();
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    Program program({TALLYFORGE_BIN "/tallyforge", "drive", file, "--trace", "-"},
                    {{"TALLYFORGE_ROOT", device.root().string()}, {"DBUS_SESSION_BUS_ADDRESS", ""}});
    std::ofstream script(file);
    script << "open themes\ntap \"Load theme\"\ninspect " << (scratch / "shown").string() << "\n"
           << std::flush;
    while (!std::filesystem::exists(scratch / "shown")) {
    }
    device.write(kThemes + "a.tft", {'x'});
    script << "tap Load\nwait 1\n" << std::flush;
    script.close();
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(linesOf(ended.output), Lines{kAsksLoad});
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(ThemesDriveTest, ThemesAreFoundAfterTheLastPickerIsGone) {
    put("a.tft", named("A"));
    put("b.tft", named("B"));
    const Lines removedA{kAsksDelete, "remove " + kThemes + "a.tft",
                         "alert 0 Done | The theme A was successfully deleted!",
                         "darwin com.quillon.tallyforge.prefs"};
    const Lines removedB{kAsksDelete, "remove " + kThemes + "b.tft",
                         "alert 0 Done | The theme B was successfully deleted!",
                         "darwin com.quillon.tallyforge.prefs"};
    // The second picker is opened before the first one's rows are given up.
    EXPECT_EQ(themes("tap \"Delete theme\"\ntap Delete\ntap Ok\nwait 0.2\ntap \"Delete theme\"\nwait "
                     "0.4\ntap Delete\n"),
              joined({removedA, removedB}));
}

TEST_F(ThemesDriveTest, WhatIsDeletedComesBackWhenItIsRestored) {
    Lines wanted;
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(device.file(kDefaults))) {
        wanted.push_back("write " + kThemes + entry.path().filename().string());
        ++files;
    }
    EXPECT_GE(files, 8U);
    std::sort(wanted.begin(), wanted.end());
    wanted.push_back(kRestored);
    EXPECT_EQ(themes("tap \"Restore default themes\"\n"), wanted);
    for (const auto& entry : std::filesystem::directory_iterator(device.file(kDefaults)))
        EXPECT_EQ(bytesOf(device.file(kThemes) / entry.path().filename()), bytesOf(entry.path()));
    EXPECT_EQ(themes("tap \"Restore default themes\"\n"), Lines{kNothingToRestore});

    std::filesystem::remove(device.file(kThemes + "ember.tft"));
    device.write(kThemes + "frost.tft", {'m', 'i', 'n', 'e'});
    EXPECT_EQ(themes("tap \"Restore default themes\"\n"),
              (Lines{"write " + kThemes + "ember.tft", kRestored}));
    EXPECT_EQ(bytesOf(device.file(kThemes + "frost.tft")), "mine");
}

TEST_F(ThemesDriveTest, RestoringTakesFilesOfAnyExtensionAndSparesLinks) {
    std::filesystem::remove_all(device.file(kDefaults));
    EXPECT_EQ(themes("tap \"Restore default themes\"\n"), Lines{kNothingToRestore});
    EXPECT_TRUE(std::filesystem::is_directory(device.file(kThemes))); // it is made all the same
    device.write(kDefaults + "read me.txt", {'x'});
    device.write(kDefaults + "linked.tft", {'x'});
    std::filesystem::create_symlink("nowhere", device.file(kThemes + "linked.tft"));
    EXPECT_EQ(themes("tap \"Restore default themes\"\n"),
              (Lines{"write " + kThemes + "read me.txt", kRestored}));
    EXPECT_TRUE(std::filesystem::is_symlink(device.file(kThemes + "linked.tft")));
}

// The alert says what it always says; the command line tells the truth.
TEST_F(ThemesDriveTest, AWriteThatFailsIsSaidOnStandardError) {
    device.write("/var/mobile/Documents/Tallyforge", {'a', ' ', 'f', 'i', 'l', 'e'});
    Ended ended = drive("open themes\n" + save("X"), {"--trace", "-"});
    expectRefused(ended, 1, kThemes + "x.tft");
    EXPECT_EQ(linesOf(ended.output), (Lines{kAsksName, saved("X")}));
    ended = drive("open themes\ntap \"Restore default themes\"\n", {"--trace", "-"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(linesOf(ended.output), Lines{kRestored});

    std::filesystem::remove(device.file("/var/mobile/Documents/Tallyforge"));
    std::filesystem::create_directories(device.file(kThemes + "x.tft"));
    ended = drive("open themes\n" + save("X") + "tap Overwrite\n", {"--trace", "-"});
    expectRefused(ended, 1, "a folder stands in its place");
    EXPECT_EQ(linesOf(ended.output), (Lines{kAsksName, kAsksOverwrite, saved("X")}));
}

} // namespace
} // namespace tallyforge::test
