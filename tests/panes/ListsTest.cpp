// The bundle's lists: every setting is editable in exactly one place, with the right range and codes, and
// everything that a list names is there.
#include "PanesFixture.h"

#include "appselect/RegisterAppSelect.h"
#include "settings/SettingsKeys.h"
#include "support/Program.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <set>
#include <sstream>

namespace tallyforge::test {
namespace {

/// Where a setting is edited and how, and what the mark is drawn with while the key is absent.
struct Expected {
    const char* key;
    const char* list;
    const char* setter; // of the row; none for a colour, which has a screen of its own
    const char* absent;
};
const std::vector<Expected> kExpected{
    {"badgebgcol", "badgecolor", "", "#00FF00"},
    {"badgealpha", "badgecolor", "setSlider:forSpecifier:", "100"},
    {"badgetxtcol", "badgelabel", "", "#FFFFFF"},
    {"badgetxtsize", "badgelabel", "setValue:forSpecifier:", "0"},
    {"badgetxtoffsetX", "badgelabel", "setValue:forSpecifier:", "0"},
    {"badgetxtoffsetY", "badgelabel", "setValue:forSpecifier:", "0"},
    {"badgeshape", "badge", "setValue:forSpecifier:", "1"},
    {"convertbadgeroman", "badge", "setValue:forSpecifier:", "0"},
    {"badgesize", "badge", "setValue:forSpecifier:", "0"},
    {"badgerotation", "badge", "setValue:forSpecifier:", "0"},
    {"badgepos", "badge", "setValue:forSpecifier:", "2"},
    {"badgeoffsetX", "badge", "setValue:forSpecifier:", "0"},
    {"badgeoffsetY", "badge", "setValue:forSpecifier:", "0"},
    {"badgebordercol", "badgeborder", "", "#FF0000"},
    {"badgebordersize", "badgeborder", "setSlider:forSpecifier:", "1.5"},
    {"badgeglowcol", "badgeglow", "", "#00FF00"},
    {"badgeglowalpha", "badgeglow", "setSlider:forSpecifier:", "0"},
    {"badgeanimtype", "badgeanim", "setPreset:forSpecifier:", "0"},
    {"badgeanimspd", "badgeanim", "setSlider:forSpecifier:", "1"},
    {"closeboxbgcol", "closeboxcolor", "", "#FFA500"},
    {"closeboxalpha", "closeboxcolor", "setSlider:forSpecifier:", "85"}, // not its fallback, 100
    {"closeboxtxtcol", "closeboxlabel", "", "#FFFFFF"},
    {"closeboxtxtsize", "closeboxlabel", "setValue:forSpecifier:", "0"},
    {"closeboxtxtoffsetX", "closeboxlabel", "setValue:forSpecifier:", "0"},
    {"closeboxtxtoffsetY", "closeboxlabel", "setValue:forSpecifier:", "0"},
    {"closeboxshape", "closebox", "setValue:forSpecifier:", "2"},
    {"closeboxsize", "closebox", "setValue:forSpecifier:", "0"},
    {"closeboxrotation", "closebox", "setValue:forSpecifier:", "180"},
    {"closeboxpos", "closebox", "setValue:forSpecifier:", "1"},
    {"closeboxoffsetX", "closebox", "setValue:forSpecifier:", "0"},
    {"closeboxoffsetY", "closebox", "setValue:forSpecifier:", "0"},
    {"presetcloseboxbg", "closebox", "setValue:forSpecifier:", "0"},
    {"closeboxbordercol", "closeboxborder", "", "#000000"},
    {"closeboxbordersize", "closeboxborder", "setSlider:forSpecifier:", "0"},
    {"closeboxglowcol", "closeboxglow", "", "#FF0000"},
    {"closeboxglowalpha", "closeboxglow", "setSlider:forSpecifier:", "100"},
    {"closeboxanimtype", "closeboxanim", "setPreset:forSpecifier:", "0"},
    {"closeboxanimspd", "closeboxanim", "setSlider:forSpecifier:", "1"},
    {"newdotbgcol", "newdotcolor", "", "#FF0000"},
    {"newdotalpha", "newdotcolor", "setSlider:forSpecifier:", "100"},
    {"newdotshape", "newdot", "setValue:forSpecifier:", "1"},
    {"newdotsize", "newdot", "setValue:forSpecifier:", "0.1"},
    {"newdotpos", "newdot", "setValue:forSpecifier:", "1"},
    {"newdotoffsetX", "newdot", "setValue:forSpecifier:", "0"},
    {"newdotoffsetY", "newdot", "setValue:forSpecifier:", "0"},
    {"newdotanimtype", "newdotanim", "setPreset:forSpecifier:", "0"},
    {"newdotanimspd", "newdotanim", "setSlider:forSpecifier:", "1"},
    {"perappapp", "conditionalthemes", "setPerAppValue:forSpecifier:", ""},
    {"perapptheme", "conditionalthemes", "setPerAppValue:forSpecifier:", "0"},
};

const std::set<std::string> kCellKinds{"PSGroupCell",  "PSLinkCell",    "PSLinkListCell",   "PSSwitchCell",
                                       "PSSliderCell", "PSSegmentCell", "PSTitleValueCell", "PSButtonCell"};

class ListsTest : public PanesTest {
  protected:
    ListsTest() {
        RegisterAppSelect();
        for (const auto& names : {kMarkPanes, kOtherPanes})
            for (const std::string& name : names)
                screens.emplace(name, pane(name));
    }
    /// Rows that keep a list of apps, and no setting of a look.
    static bool listsApps(const PSSpecifier& row) { return row.textForKey("detail") == "QuillonAppSelect"; }
    /// Calls it with each screen's name without its ending, the screen and the row.
    void forEveryRow(const std::function<void(const std::string&, PSListController&, PSSpecifier&)>& look) {
        for (const auto& [name, screen] : screens) {
            SCOPED_TRACE(name);
            ASSERT_NE(screen, nullptr);
            EXPECT_FALSE(screen->specifiers().empty());
            for (const PSSpecifierRef& row : screen->specifiers()) {
                SCOPED_TRACE(row->identifier() + " " + row->name());
                look(name.substr(0, name.find("ListController")), *screen, *row);
            }
        }
    }
    static std::set<int> codesOf(PSSpecifier& row) {
        std::set<int> codes;
        for (const PSSpecifier::Choice& choice : row.choices())
            codes.insert(choice.value.intValue());
        return codes;
    }
    std::map<std::string, std::shared_ptr<PSListController>> screens;
};

TEST_F(ListsTest, EverySettingIsEditableInExactlyOnePlace) {
    std::map<std::string, std::vector<std::string>> places; // "badge setValue:forSpecifier: 0"
    forEveryRow([&](const std::string& list, PSListController&, PSSpecifier& row) {
        std::string key = row.textForKey("key");
        if (key.empty() || listsApps(row)) return;
        EXPECT_EQ(row.textForKey("id"), key);
        EXPECT_EQ(row.textForKey("defaults"), kDomain);
        ASSERT_NE(row.propertyForKey("default"), nullptr);
        EXPECT_EQ(row.propertyForKey("get"), nullptr);
        places[key].push_back(list + " " + row.textForKey("set") + " " +
                              row.propertyForKey("default")->description());
    });
    ASSERT_EQ(kExpected.size(), 49U);
    EXPECT_EQ(places.size(), kExpected.size());
    for (const Expected& expected : kExpected) {
        EXPECT_EQ(places[expected.key], std::vector<std::string>{std::string(expected.list) + " " +
                                                                 expected.setter + " " + expected.absent})
            << expected.key;
        const bool isOther =
            expected.key == kPresetCloseBoxKey || std::string(expected.key).starts_with("perapp");
        EXPECT_TRUE(FindSettingKey(expected.key) || isOther) << expected.key;
    }
}

TEST_F(ListsTest, RangesAndCodesAreTheSettings) {
    size_t seen = 0;
    forEveryRow([&](const std::string&, PSListController&, PSSpecifier& row) {
        const SettingKey* key = FindSettingKey(row.textForKey("key"));
        if (!key) return;
        ++seen;
        switch (key->type) {
        case SettingType::color:
            EXPECT_EQ(row.cellKind(), "PSLinkCell");
            break;
        case SettingType::boolean:
            EXPECT_EQ(row.cellKind(), "PSSwitchCell");
            EXPECT_EQ(row.textForKey("cellClass"), "TallyforgeSwitchTableCell");
            break;
        case SettingType::number:
            EXPECT_EQ(row.cellKind(), "PSSliderCell");
            EXPECT_EQ(static_cast<float>(row.numberForKey("min", NAN)), key->min);
            EXPECT_EQ(static_cast<float>(row.numberForKey("max", NAN)), key->max);
            EXPECT_TRUE(row.flagForKey("showValue", false));
            if (row.propertyForKey("step")) {
                double steps =
                    (row.numberForKey("max", 0) - row.numberForKey("min", 0)) / row.numberForKey("step", 0);
                EXPECT_GE(steps, 20);
                EXPECT_LE(steps, 80);
            }
            break;
        case SettingType::code: {
            EXPECT_EQ(row.cellKind(), "PSLinkListCell");
            std::set<int> codes(key->furtherCodes.begin(), key->furtherCodes.end());
            for (int code = 0; code <= static_cast<int>(key->max); ++code)
                codes.insert(code);
            EXPECT_EQ(codesOf(row), codes);
            break;
        }
        }
        double least = row.numberForKey("default", 0);
        EXPECT_TRUE(key->type == SettingType::color || key->accepts(least));
    });
    EXPECT_EQ(seen, 46U);
}

// Counted here once more, because the codes are what the renderers know: 13 animations, 9 places, and the
// shapes beyond those that are drawn at random.
TEST_F(ListsTest, ChoicesShowEveryCodeByAName) {
    const std::map<std::string, std::set<int>> choices{
        {"badgeshape", {0, 1, 2, 3, 4, 5, 6}},
        {"closeboxshape", {0, 1, 2, 3, 4, 5, 6, 10}},
        {"newdotshape", {0, 1, 2, 3}},
        {"badgepos", {0, 1, 2, 3, 4, 5, 6, 7, 8}},
        {"closeboxpos", {0, 1, 2, 3, 4, 5, 6, 7, 8}},
        {"newdotpos", {0, 1, 2, 3}},
        {"badgeanimtype", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {"closeboxanimtype", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {"newdotanimtype", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {"presetcloseboxbg", {0, 98}},
    };
    std::map<std::string, std::set<int>> found;
    std::map<std::string, std::string> position;
    forEveryRow([&](const std::string&, PSListController&, PSSpecifier& row) {
        if (row.cellKind() != "PSLinkListCell" && row.cellKind() != "PSSegmentCell") return;
        if (row.propertyForKey("valuesDataSource")) return; // apps and themes, which have no codes
        ASSERT_NE(row.propertyForKey("validValues"), nullptr);
        ASSERT_NE(row.propertyForKey("validTitles"), nullptr);
        const auto* values = row.propertyForKey("validValues")->asArray();
        const auto* titles = row.propertyForKey("validTitles")->asArray();
        ASSERT_NE(values, nullptr);
        ASSERT_NE(titles, nullptr);
        EXPECT_EQ(values->size(), titles->size());
        std::set<std::string> names;
        for (const PSSpecifier::Choice& choice : row.choices()) {
            EXPECT_EQ(choice.value.kind(), PropertyList::Kind::integer);
            EXPECT_NE(choice.title, "");
            EXPECT_TRUE(names.insert(choice.title).second) << choice.title;
            if (row.identifier() == "badgepos")
                position[choice.title] = std::to_string(choice.value.intValue());
        }
        EXPECT_EQ(names.size(), values->size());
        EXPECT_EQ(codesOf(row).size(), values->size());
        found[row.identifier()] = codesOf(row);
    });
    EXPECT_EQ(found, choices);
    EXPECT_EQ(position, (std::map<std::string, std::string>{{"Top left", "0"},
                                                            {"Top centre", "1"},
                                                            {"Top right", "2"},
                                                            {"Bottom left", "3"},
                                                            {"Bottom centre", "4"},
                                                            {"Bottom right", "5"},
                                                            {"Middle left", "6"},
                                                            {"Centre", "7"},
                                                            {"Middle right", "8"}}));
}

// The two rows whose choices the screen itself supplies.
TEST_F(ListsTest, AppsAndThemesComeFromTheScreen) {
    PSListController& screen = *screens.at("conditionalthemesListController");
    const auto app = screen.specifierForID("perappapp"), theme = screen.specifierForID("perapptheme");
    ASSERT_TRUE(app && theme);
    EXPECT_EQ(app->textForKey("valuesDataSource"), "valueAppDataFromTarget:");
    EXPECT_EQ(app->textForKey("titlesDataSource"), "titlesAppDataFromTarget:");
    EXPECT_EQ(theme->textForKey("valuesDataSource"), "valueThemeDataFromTarget:");
    EXPECT_EQ(theme->textForKey("titlesDataSource"), "titlesThemeDataFromTarget:");
    ASSERT_EQ(app->choices().size(), 1U);
    EXPECT_EQ(app->choices().front().title, "Folders");
    ASSERT_EQ(theme->choices().size(), 1U);
    EXPECT_EQ(theme->choices().front().title, "Disabled");
    EXPECT_EQ(theme->choices().front().value, PropertyList::string("0"));
}

TEST_F(ListsTest, EverythingThatAListNamesIsThere) {
    // The framework's own screen of choices is made known by whoever runs the screens.
    std::set<std::string> unknown;
    forEveryRow([&](const std::string&, PSListController& screen, PSSpecifier& row) {
        EXPECT_TRUE(kCellKinds.contains(row.cellKind())) << row.cellKind();
        EXPECT_EQ(row.target(), &screen);
        for (const char* property : {"cellClass", "detail"}) {
            std::string name = row.textForKey(property);
            if (!name.empty() && name != "PSListItemsController" && !NSClassFromString(name))
                unknown.insert(name);
        }
        for (const char* property : {"set", "get", "action", "valuesDataSource", "titlesDataSource"}) {
            std::string selector = row.textForKey(property);
            if (!selector.empty()) {
                EXPECT_TRUE(RespondsToSelector(screen, selector)) << selector;
            }
        }
        EXPECT_EQ(row.cellKind() == "PSButtonCell", !row.textForKey("action").empty());
        EXPECT_EQ(row.cellKind() == "PSLinkCell" || row.cellKind() == "PSLinkListCell",
                  !row.textForKey("detail").empty());
        if (row.cellKind() == "PSLinkListCell") {
            EXPECT_EQ(row.textForKey("detail"), "PSListItemsController");
        }
    });
    EXPECT_EQ(unknown, std::set<std::string>{});
}

TEST_F(ListsTest, SettersAreTheScreensOwn) {
    forEveryRow([&](const std::string&, PSListController& screen, PSSpecifier& row) {
        std::string setter = row.textForKey("set");
        if (setter.empty()) return;
        auto own = screen.methods().own;
        EXPECT_TRUE(std::any_of(own.begin(), own.end(), [&](const MethodEntry& method) {
            return method.selector == setter;
        })) << setter;
        // The setters announce by themselves; the row must not do it a second time.
        EXPECT_EQ(row.propertyForKey("PostNotification"), nullptr);
    });
}

TEST_F(ListsTest, EveryScreenIsReachedFromTheRootByItsTitle) {
    std::set<std::string> reached{"tallyforgeprefsListController"};
    std::vector<std::string> waiting{"tallyforgeprefsListController"};
    while (!waiting.empty()) {
        auto screen = screens.at(waiting.back());
        waiting.pop_back();
        for (const PSSpecifierRef& row : screen->specifiers()) {
            std::string detail = row->textForKey("detail");
            if (!screens.contains(detail)) continue;
            EXPECT_TRUE(reached.insert(detail).second) << detail << " is reached twice";
            waiting.push_back(detail);
            screens.at(detail)->specifiers();
            EXPECT_EQ(screens.at(detail)->title(), row->name());
        }
    }
    EXPECT_EQ(reached.size(), 18U);
    EXPECT_EQ(screens.at("tallyforgeprefsListController")->title(), "Tallyforge");
}

TEST_F(ListsTest, MarkScreensBeginWithThePreview) {
    for (const std::string& name : kMarkPanes) {
        SCOPED_TRACE(name);
        const auto& rows = screens.at(name)->specifiers();
        ASSERT_GE(rows.size(), 3U);
        EXPECT_EQ(rows[0]->cellKind(), "PSGroupCell");
        EXPECT_EQ(rows[0]->name(), "");
        EXPECT_EQ(rows[1]->identifier(), "preview");
        EXPECT_EQ(rows[1]->textForKey("cellClass"), "PreviewCell");
        EXPECT_EQ(rows[1]->numberForKey("height", 0), 150);
        EXPECT_EQ(rows[2]->cellKind(), "PSGroupCell");
    }
    for (const std::string& name : kOtherPanes)
        EXPECT_EQ(screens.at(name)->specifierForID("preview"), nullptr) << name;
}

TEST_F(ListsTest, MarksAreRandomisedAndResetFromTheirOwnScreens) {
    std::map<std::string, std::string> actions;
    forEveryRow([&](const std::string& list, PSListController&, PSSpecifier& row) {
        std::string action = row.textForKey("action");
        if (action.empty()) return;
        actions[list] += action + " ";
        EXPECT_EQ(row.flagForKey("destructive", false),
                  (std::set<std::string>{"reset", "deleteTheme", "clearperappthemes"}.contains(action)));
    });
    EXPECT_EQ(actions, (std::map<std::string, std::string>{
                           {"badge", "randomize reset "},
                           {"closebox", "randomize reset "},
                           {"conditionalthemes", "clearperappthemes "},
                           {"newdot", "randomize reset "},
                           {"tallyforgeprefs", "followMe: donate: "},
                           {"themes", "saveTheme loadTheme deleteTheme restoreThemes "}}));
}

TEST_F(ListsTest, ColourRowsSayWhatThePickerNeeds) {
    const std::set<std::string> mayBeTransparent{"badgebgcol", "badgetxtcol"};
    int seen = 0;
    forEveryRow([&](const std::string&, PSListController&, PSSpecifier& row) {
        const SettingKey* key = FindSettingKey(row.textForKey("key"));
        if (!key || key->type != SettingType::color) return;
        ++seen;
        EXPECT_EQ(row.textForKey("cellClass"), "QuillonColorPickerLinkCell");
        EXPECT_EQ(row.textForKey("detail"), "QuillonColorPicker");
        EXPECT_EQ(row.textForKey("PostNotification"), "com.quillon.tallyforge.prefs");
        EXPECT_EQ(row.textForKey("PreviewNotification"), "reloadTallyforgePreviewNotify");
        EXPECT_TRUE(row.flagForKey("allowAutomatic", false)); // every mark is given the icon
        EXPECT_EQ(row.flagForKey("allowTransparent", true), mayBeTransparent.contains(row.identifier()));
        EXPECT_NE(row.textForKey("disabledTitle"), "");
        EXPECT_NE(row.textForKey("disabledSubtitle"), "");
    });
    EXPECT_EQ(seen, 9);
}

TEST_F(ListsTest, AppListRowsSayWhatTheChooserNeeds) {
    std::vector<std::string> rows;
    forEveryRow([&](const std::string& list, PSListController&, PSSpecifier& row) {
        if (!listsApps(row)) return;
        EXPECT_EQ(row.cellKind(), "PSLinkCell");
        EXPECT_EQ(row.textForKey("cellClass"), "QuillonAppSelectLinkCell");
        EXPECT_EQ(row.textForKey("id"), row.textForKey("key"));
        EXPECT_EQ(row.textForKey("defaults"), kDomain);
        EXPECT_EQ(row.textForKey("PostNotification"), "com.quillon.tallyforge.prefs");
        EXPECT_EQ(row.propertyForKey("default"), nullptr);
        EXPECT_FALSE(FindSettingKey(row.textForKey("key"))) << "no setting of a look";
        rows.push_back(list + " " + row.identifier() + " " + row.name() +
                       (row.flagForKey("defaultValue", false) ? " on" : " off"));
    });
    EXPECT_EQ(rows, std::vector<std::string>{"badge badgeapps Apps with badges on"});
}

TEST_F(ListsTest, TextsAreWellFormed) {
    std::vector<std::string> texts;
    forEveryRow([&](const std::string&, PSListController&, PSSpecifier& row) {
        if (row.cellKind() != "PSGroupCell" && row.identifier() != "preview") {
            EXPECT_NE(row.name(), "");
        }
        std::string footer = row.textForKey("footerText");
        if (!footer.empty()) {
            EXPECT_TRUE(footer.ends_with(".")) << footer;
        }
        texts.push_back(row.name());
        texts.push_back(footer);
        for (const PSSpecifier::Choice& choice : row.choices())
            texts.push_back(choice.title);
    });
    for (const std::string& text : texts) {
        EXPECT_EQ(text.find("  "), std::string::npos) << text;
        EXPECT_FALSE(text.starts_with(' ') || text.ends_with(' ')) << text;
        for (const char* american : {"olor", "andomize", "enter", "ray"})
            EXPECT_EQ(text.find(american), std::string::npos) << text;
        EXPECT_EQ(text.find('\''), std::string::npos) << text;
    }
}

TEST_F(ListsTest, AnotherReaderFindsTheSameRows) {
    std::ostringstream ours;
    for (const auto& [name, screen] : screens) {
        std::string list = name == "tallyforgeprefsListController"
                               ? "tallyforgeprefs"
                               : name.substr(0, name.find("ListController")) + "prefs";
        screen->specifiers();
        ours << list << "|" << screen->title();
        for (const PSSpecifierRef& row : screen->specifiers())
            ours << "|" << row->cellKind() << " " << row->properties().count() << " " << row->name();
        ours << "\n";
    }
    std::vector<std::string> words{
        "python3", "-c",
        "import plistlib, sys\n"
        "for f in sys.argv[2:]:\n"
        "    with open(sys.argv[1] + f + '.plist', 'rb') as file: p = plistlib.load(file)\n"
        "    rows = [f\"{r['cell']} {len(r)} {r.get('label', '')}\" for r in p['items']]\n"
        "    print('|'.join([f, p['title']] + rows))",
        TALLYFORGE_RESOURCES "/stock" + kBundle};
    std::istringstream lines(ours.str());
    for (std::string line; std::getline(lines, line);)
        words.push_back(line.substr(0, line.find('|')));
    ASSERT_EQ(words.size(), 4U + 18U);
    Ended python = RunProgram(words, {{"PYTHONIOENCODING", "utf-8"}});
    ASSERT_EQ(python.status, 0) << python.errors;
    EXPECT_EQ(python.output, ours.str());
}

} // namespace
} // namespace tallyforge::test
