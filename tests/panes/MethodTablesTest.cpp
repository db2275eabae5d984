// What each screen can be told by name: exactly this, besides what every settings screen can.
#include "PanesFixture.h"

#include "panes/PaneNames.h"

#include <map>
#include <set>

namespace tallyforge::test {
namespace {

const std::set<std::string> kMark{"specifiers", "resetSpecifier:withValue:", "randomize",
                                  "reset",      "setValue:forSpecifier:",    "viewDidAppear:"};
const std::set<std::string> kAnimation{"specifiers", "resetSpecifier:withValue:", "setPreset:forSpecifier:",
                                       "setSlider:forSpecifier:", "viewDidAppear:"};
const std::set<std::string> kLabel{"specifiers",
                                   "resetSpecifier:withValue:", "setValue:forSpecifier:", "viewDidAppear:"};
const std::set<std::string> kSliders{"specifiers", "setSlider:forSpecifier:", "viewDidAppear:"};

const std::map<std::string, std::set<std::string>> kMethods{
    {"tallyforgeprefsListController", {"specifiers", "followMe:", "donate:"}},
    {"badgeListController", kMark},
    // The badge's colour screen can reset a row; those of the other two marks cannot.
    {"badgecolorListController",
     {"specifiers", "resetSpecifier:withValue:", "setSlider:forSpecifier:", "viewDidAppear:"}},
    {"badgelabelListController", kLabel},
    {"badgeborderListController", kSliders},
    {"badgeanimListController", kAnimation},
    {"badgeglowListController", kSliders},
    {"closeboxListController", kMark},
    {"closeboxcolorListController", kSliders},
    {"closeboxlabelListController", kLabel},
    {"closeboxborderListController", kSliders},
    {"closeboxanimListController", kAnimation},
    {"closeboxglowListController", kSliders},
    {"newdotListController", kMark},
    {"newdotcolorListController", kSliders},
    {"newdotanimListController", kAnimation},
    {"themesListController",
     {"specifiers", "saveTheme", "loadTheme", "deleteTheme", "restoreThemes", "showAlertWithTitle:message:",
      "showActionAlertWithTitle:message:button:tag:", "showPickerAlertWithTile:message:btnName:tag:",
      "numberOfComponentsInPickerView:", "pickerView:numberOfRowsInComponent:",
      "pickerView:titleForRow:forComponent:", "pickerView:didSelectRow:inComponent:",
      "alertView:clickedButtonAtIndex:", "saveProfile:overwriteIfExists:", "loadProfile", "deleteProfile"}},
    {"conditionalthemesListController",
     {"specifiers", "valueAppDataFromTarget:", "titlesAppDataFromTarget:", "valueThemeDataFromTarget:",
      "titlesThemeDataFromTarget:", "getViewForID:", "getCellForID:", "setPerAppThemeEnableDisable",
      "setValue:forSpecifier:", "setPerAppValue:forSpecifier:", "viewWillAppear:", "clearperappthemes"}},
};

TEST_F(PanesTest, EveryClassIsKnownByItsNameAndHasItsOwnMethodsOnly) {
    ASSERT_EQ(kMethods.size(), 18U);
    for (const auto& [name, selectors] : kMethods) {
        SCOPED_TRACE(name);
        auto screen = pane(name);
        ASSERT_NE(screen, nullptr);
        EXPECT_EQ(screen->className(), name);
        std::set<std::string> own;
        for (const MethodEntry& method : screen->methods().own)
            EXPECT_TRUE(own.emplace(method.selector).second) << method.selector;
        EXPECT_EQ(own, selectors);
        EXPECT_EQ(screen->methods().superclass, &PSListController::classMethods());
    }
}

TEST_F(PanesTest, TheNamesOfTheCommandLineAreThoseOfTheScreens) {
    std::set<std::string> classes;
    for (std::string_view name : kPaneNames)
        classes.insert((name == "tallyforge" ? "tallyforgeprefs" : std::string(name)) + "ListController");
    std::set<std::string> screens;
    for (const auto& [name, selectors] : kMethods)
        screens.insert(name);
    EXPECT_EQ(classes, screens);
    EXPECT_TRUE(PaneNamesInOneLine().starts_with("tallyforge, badge, badgecolor, "));
    EXPECT_TRUE(PaneNamesInOneLine().ends_with(", themes, conditionalthemes"));
}

TEST_F(PanesTest, EachCallMakesAnotherScreen) {
    EXPECT_NE(pane("badgeListController"), pane("badgeListController"));
}

TEST_F(PanesTest, TheMethodsReachTheirScreens) {
    auto badge = pane("badgeListController");
    auto row = badge->specifierForID("badgesize");
    ASSERT_NE(row, nullptr);

    auto value = PropertyList::doubleNumber(0.75);
    PerformSelector(*badge, "setValue:forSpecifier:", {&value, row});
    EXPECT_EQ(stored("badgesize"), PropertyList::floatNumber(0.75F));
    PerformSelector(*badge, "setValue:forSpecifier:", {nullptr, row}); // no value, nothing to write
    EXPECT_EQ(stored("badgesize"), PropertyList::floatNumber(0.75F));

    auto back = PropertyList::integer(0);
    PerformSelector(*badge, "resetSpecifier:withValue:", {&back, row}); // the row is not its identifier
    PerformSelector(*badge, "resetSpecifier:withValue:", {&back, nullptr, "nosuchrow"});
    PerformSelector(*badge, "resetSpecifier:withValue:", {nullptr, nullptr, "badgesize"});
    EXPECT_EQ(stored("badgesize"), PropertyList::floatNumber(0.75F));
    PerformSelector(*badge, "resetSpecifier:withValue:", {&back, nullptr, "badgesize"});
    EXPECT_EQ(stored("badgesize"), PropertyList::floatNumber(0));

    told.clear();
    PerformSelector(*badge, "viewDidAppear:");
    EXPECT_EQ(told, std::vector<std::string>{"post reloadTallyforgePreviewNotify"});

    PerformSelector(*badge, "reset");
    EXPECT_EQ(stored("badgepos"), PropertyList::floatNumber(2));
    PerformSelector(*badge, "randomize");
    EXPECT_TRUE(stored("badgebgcol"));

    auto rows = PerformSelector(*badge, "specifiers");
    ASSERT_NE(rows, nullptr);
    ASSERT_NE(rows->asArray(), nullptr);
    EXPECT_EQ(rows->asArray()->size(), badge->specifiers().size());
}

TEST_F(PanesTest, SlidersAndPresetsReachTheirScreens) {
    auto animation = pane("newdotanimListController");
    auto kind = PropertyList::integer(7);
    PerformSelector(*animation,
                    "setPreset:forSpecifier:", {&kind, animation->specifierForID("newdotanimtype")});
    auto seconds = PropertyList::floatNumber(2.5F);
    PerformSelector(*animation,
                    "setSlider:forSpecifier:", {&seconds, animation->specifierForID("newdotanimspd")});
    EXPECT_EQ(stored("newdotanimtype"), PropertyList::floatNumber(7));
    EXPECT_EQ(stored("newdotanimspd"), PropertyList::floatNumber(2.5F));
}

} // namespace
} // namespace tallyforge::test
