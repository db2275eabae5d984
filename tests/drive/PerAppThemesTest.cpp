// The screen that ties themes to single apps, driven by a script.

#include "DriveFixture.h"

#include "foundation/NSKeyedArchiver.h"

namespace tallyforge::test {
namespace {

const std::string kThemes = "/var/mobile/Documents/Tallyforge/";
const std::string kTies = "/var/mobile/Documents/Tallyforge/PerAppThemes/";
const std::string kMail = "com.quillon.stock.mail";

class PerAppThemesTest : public DriveTest {
  protected:
    PerAppThemesTest() {
        for (const char* file : {"ember.tft", "frost.tft"}) {
            std::filesystem::create_directories(device.file(kThemes));
            std::filesystem::copy_file(device.file("/Library/Application Support/Tallyforge/") / file,
                                       device.file(kThemes) / file);
        }
    }
    Lines ties(const std::string& script) const { return traceOn("conditionalthemes", script); }
    static std::string choose(const std::string& row, const std::string& value) {
        return "tap " + row + "\nscroll \"" + value + "\"\ntap \"" + value + "\"\nback\n";
    }
    static Lines chosen(const std::string& key, const std::string& value) {
        return {"set com.quillon.tallyforge " + key + " " + value, "reload-specifier " + key,
                "synchronize-defaults"};
    }
    /// The tie as Python reads it.
    std::string tie(const std::string& app) const {
        return RunProgram({"python3", "-c",
                           "import plistlib, sys\n"
                           "a = plistlib.load(open(sys.argv[1], 'rb'))\n"
                           "assert a['$archiver'] == 'NSKeyedArchiver' and a['$version'] == 100000\n"
                           "assert a['$top'] == {'root': plistlib.UID(1)} and len(a['$objects']) == 2\n"
                           "print(a['$objects'][1], end='')",
                           device.file(kTies + app).string()})
            .output;
    }
    Json screen(const std::string& script) const {
        Ended ended = drive("open conditionalthemes\n" + script + "inspect\n");
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return Json::parse(ended.output, nullptr, false);
    }
    std::string detail(const std::string& script, const char* title) const {
        const Json shown = screen(script);
        const Json* found = row(shown, title);
        return found ? (*found)["detail"].get<std::string>() : "no such row";
    }
};

double alphaOf(const Json& view, const std::string& title) {
    if (view["class"] == "PSTableCell") {
        for (const Json& part : view["subviews"]) {
            for (const Json& label : part["subviews"]) {
                if (label.value("text", "") == title) return view["alpha"];
            }
            if (part.value("text", "") == title) return view["alpha"];
        }
    }
    for (const Json& part : view["subviews"]) {
        if (double alpha = alphaOf(part, title); alpha >= 0) return alpha;
    }
    return -1;
}

TEST_F(PerAppThemesTest, WithoutAnAppTheThemesRowIsDimmedATenthOfASecondLater) {
    EXPECT_EQ(alphaOf(screen("wait 0.099\n")["view"], "Theme"), 1);
    EXPECT_NEAR(alphaOf(screen("wait 0.101\n")["view"], "Theme"), 0.3, 1e-6);
    EXPECT_EQ(alphaOf(screen("wait 0.2\n")["view"], "App"), 1);
    // It takes no touches.
    EXPECT_EQ(screen("wait 0.2\ntap Theme\n")["title"], "Per-app themes");
    EXPECT_EQ(ties("wait 0.2\ntap Theme\n"), Lines{});
    // Coming back from the list of apps without a choice leaves it dimmed.
    EXPECT_NEAR(alphaOf(screen("wait 0.2\ntap App\nback\nwait 0.2\n")["view"], "Theme"), 0.3, 1e-6);

    const std::string app = "wait 0.2\n" + choose("App", "Mail");
    EXPECT_EQ(alphaOf(screen(app)["view"], "Theme"), 1);
    EXPECT_EQ(screen(app + "tap Theme\n")["title"], "Theme");
}

TEST_F(PerAppThemesTest, TheAppsAreTheFoldersAndThenTheAppsByName) {
    const Json list = screen("tap App\n")["rows"];
    ASSERT_GT(list.size(), 5U);
    EXPECT_EQ(list[0]["title"], "Folders");
    EXPECT_EQ(list[0]["value"], "com.tallyforge.folders");
    Ended apps = RunProgram({"python3", "-c", R"(
import plistlib, pathlib, sys
root = pathlib.Path(sys.argv[1])
found = []
for pattern in ('Applications/*.app', 'var/containers/Bundle/Application/*/*.app', 'var/mobile/Containers/Bundle/Application/*/*.app'):
    for bundle in root.glob(pattern):
        info = plistlib.load(open(bundle / 'Info.plist', 'rb'))
        if 'hidden' not in info.get('SBAppTags', []):
            name = info.get('CFBundleDisplayName') or info.get('CFBundleName')
            found.append(info['CFBundleIdentifier'] + ' ' + name)
print('\n'.join(sorted(found)))
)",
                             device.root().string()});
    Lines names, pairs;
    for (size_t i = 1; i < list.size(); ++i) {
        names.push_back(list[i]["title"]);
        pairs.push_back(list[i]["value"].get<std::string>() + ' ' + names.back());
    }
    std::sort(pairs.begin(), pairs.end());
    EXPECT_EQ(pairs, linesOf(apps.output)) << apps.errors;
    EXPECT_EQ(
        names,
        (Lines{"4913", "App Store", "Beacon", "Cydia", "Éclair à Propos", "Kilometre", "Ledgerline", "Loom",
               "Mail", "Messages", "Metronome", "Paperlantern", "Pocket Orchard", "Preferences", "Quarry",
               "The Considerably Extended Almanac of Small Hours and Quiet Weather", "Tidewatch", "星図帳"}));
}

TEST_F(PerAppThemesTest, WithoutAnyAppTheFoldersAreStillThere) {
    std::filesystem::remove_all(device.file("/Applications"));
    std::filesystem::remove_all(device.file("/var/containers"));
    const Json list = screen("tap App\n")["rows"];
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]["title"], "Folders");
}

TEST_F(PerAppThemesTest, TheThemesAreDisabledAndThenTheFolder) {
    device.write(kThemes + "a broken one.tft", {'x'});
    device.write(kThemes + "notes.txt", {'x'});
    const Json list = screen(choose("App", "Mail") + "tap Theme\n")["rows"];
    ASSERT_EQ(list.size(), 3U);
    const char* titles[] = {"Disabled", "Ember", "Frost"};
    const std::string values[] = {"0", kThemes + "ember.tft", kThemes + "frost.tft"};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(list[i]["title"], titles[i]);
        EXPECT_EQ(list[i]["value"], values[i]);
    }
    EXPECT_EQ(list[0]["accessory"], "checkmark");
}

TEST_F(PerAppThemesTest, AnAppWithoutATieShowsDisabled) {
    EXPECT_EQ(ties(choose("App", "Mail")), joined({chosen("perappapp", kMail), chosen("perapptheme", "0")}));
    EXPECT_EQ(detail("", "App"), "Mail");
    EXPECT_EQ(detail("", "Theme"), "Disabled");
    EXPECT_FALSE(std::filesystem::exists(device.file(kTies)));
}

TEST_F(PerAppThemesTest, ChoosingAThemeWritesTheTieAndTellsNobody) {
    const std::string ember = kThemes + "ember.tft", frost = kThemes + "frost.tft";
    const Lines app = joined({chosen("perappapp", kMail), chosen("perapptheme", "0")});
    EXPECT_EQ(ties(choose("App", "Mail") + choose("Theme", "Ember")),
              joined({app, chosen("perapptheme", ember), {"write " + kTies + kMail}}));
    EXPECT_EQ(tie(kMail), ember);
    // Another theme: the old tie goes first.
    EXPECT_EQ(ties(choose("Theme", "Frost")),
              joined({chosen("perapptheme", frost), {"remove " + kTies + kMail, "write " + kTies + kMail}}));
    EXPECT_EQ(tie(kMail), frost);
    // Each app shows its own.
    EXPECT_EQ(ties(choose("App", "Folders")),
              joined({chosen("perappapp", "com.tallyforge.folders"), chosen("perapptheme", "0")}));
    EXPECT_EQ(ties(choose("App", "Mail")),
              joined({chosen("perappapp", kMail), chosen("perapptheme", frost)}));
    EXPECT_EQ(detail("", "Theme"), "Frost");
}

TEST_F(PerAppThemesTest, DisabledRemovesATieAndWritesOneWhereThereIsNone) {
    ties(choose("App", "Mail") + choose("Theme", "Ember"));
    EXPECT_EQ(ties(choose("Theme", "Disabled")),
              joined({chosen("perapptheme", "0"), {"remove " + kTies + kMail}}));
    EXPECT_FALSE(std::filesystem::exists(device.file(kTies + kMail)));
    EXPECT_EQ(ties(choose("Theme", "Disabled")),
              joined({chosen("perapptheme", "0"), {"write " + kTies + kMail}}));
    EXPECT_EQ(tie(kMail), "0");
    EXPECT_EQ(ties(choose("App", "Mail")), joined({chosen("perappapp", kMail), chosen("perapptheme", "0")}));
}

TEST_F(PerAppThemesTest, ATieOutlivesItsTheme) {
    ties(choose("App", "Mail") + choose("Theme", "Ember"));
    std::filesystem::remove(device.file(kThemes + "ember.tft"));
    EXPECT_EQ(ties(choose("App", "Mail")),
              joined({chosen("perappapp", kMail), chosen("perapptheme", kThemes + "ember.tft")}));
    EXPECT_EQ(detail("", "Theme"), "");
}

TEST_F(PerAppThemesTest, WhatIsNoTieReadsAsDisabled) {
    std::filesystem::create_directories(device.file(kTies));
    device.write(kTies + kMail, {'x'});
    EXPECT_EQ(ties(choose("App", "Mail")), joined({chosen("perappapp", kMail), chosen("perapptheme", "0")}));
    device.write(kTies + kMail, NSKeyedArchiver::archivedDataWithRootObject(PropertyList::integer(5)));
    EXPECT_EQ(ties(choose("App", "Mail")), joined({chosen("perappapp", kMail), chosen("perapptheme", "0")}));
}

TEST_F(PerAppThemesTest, ClearingAsksAndLeavesTheFolderEmptyButThere) {
    ties(choose("App", "Folders") + choose("Theme", "Frost") + choose("App", "Mail") +
         choose("Theme", "Ember"));
    device.write(kTies + "something else.txt", {'x'});
    const std::string question = "alert 0 Tallyforge | Do you want to clear all per app themes?";
    EXPECT_EQ(ties("tap \"Clear all per-app themes\"\ntap Cancel\n"), Lines{question});
    EXPECT_EQ(tie(kMail), kThemes + "ember.tft");
    EXPECT_EQ(screen("tap \"Clear all per-app themes\"\n")["alert"]["buttons"], (Json{"Clear", "Cancel"}));

    EXPECT_EQ(ties("tap \"Clear all per-app themes\"\ntap Clear\n"),
              joined({{question, "remove " + kTies + kMail, "remove " + kTies + "com.tallyforge.folders",
                       "remove " + kTies + "something else.txt"},
                      chosen("perapptheme", "0"),
                      {"post reloadTallyforgePreviewNotify", "darwin com.quillon.tallyforge.prefs"}}));
    EXPECT_TRUE(std::filesystem::is_directory(device.file(kTies)));
    EXPECT_TRUE(std::filesystem::is_empty(device.file(kTies)));
    EXPECT_EQ(detail("", "Theme"), "Disabled");
}

TEST_F(PerAppThemesTest, ATieThatCannotBeWrittenIsSaidOnStandardError) {
    std::filesystem::create_directories(device.file(kTies + kMail));
    Ended ended = drive("open conditionalthemes\n" + choose("App", "Mail") + choose("Theme", "Ember"));
    expectRefused(ended, 1, kTies + kMail);
}

TEST_F(PerAppThemesTest, TheRowsAreKeptButNoThemeCarriesThem) {
    ties(choose("App", "Mail") + choose("Theme", "Ember"));
    EXPECT_EQ(domain(), (Json{{"perappapp", kMail}, {"perapptheme", kThemes + "ember.tft"}}));
    EXPECT_EQ(tallyforge({"theme", "save", "Mine"}).status, 0);
    EXPECT_EQ(bytesOf(device.file(kThemes + "mine.tft")).find("perapp"), std::string::npos);
    EXPECT_EQ(tallyforge({"theme", "load", "Frost"}).status, 0);
    EXPECT_EQ(domain()["perappapp"], kMail);
}

} // namespace
} // namespace tallyforge::test
