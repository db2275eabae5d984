// What a change of a row does, in order; what showing a screen does.
#include "PanesFixture.h"

#include "panes/BadgePanes.h"
#include "panes/TallyforgeSwitchTableCell.h"

namespace tallyforge::test {
namespace {

using Lines = std::vector<std::string>;

Lines change(const std::string& key, const std::string& value) {
    Lines lines{"set " + kDomain + " " + key + " " + value, "reload-specifier " + key,
                "synchronize-defaults"};
    lines.insert(lines.end(), kAnnounced.begin(), kAnnounced.end());
    return lines;
}

Lines twice(Lines lines) {
    const Lines once = lines;
    lines.insert(lines.end(), once.begin(), once.end());
    return lines;
}

TEST_F(PanesTest, AChangeIsWrittenShownSynchronisedAndAnnounced) {
    auto badge = pane("badgeListController");
    choose(*badge, "badgesize", PropertyList::floatNumber(0.5F));
    EXPECT_EQ(told, change("badgesize", "0.5"));
    CFPreferencesForgetAll(); // what counts is what the file holds
    EXPECT_EQ(stored("badgesize"), PropertyList::floatNumber(0.5F));
    EXPECT_EQ(*badge->specifierForID("badgesize")->propertyForKey("value"), PropertyList::floatNumber(0.5F));
}

TEST_F(PanesTest, AllThreeKindsOfSettersDoTheSame) {
    choose(*pane("closeboxglowListController"), "closeboxglowalpha", PropertyList::floatNumber(40));
    EXPECT_EQ(told, change("closeboxglowalpha", "40"));
    told.clear();
    choose(*pane("newdotanimListController"), "newdotanimtype", PropertyList::integer(12));
    EXPECT_EQ(told, change("newdotanimtype", "12"));
    told.clear();
    choose(*pane("closeboxListController"), "presetcloseboxbg", PropertyList::integer(98));
    EXPECT_EQ(told, change("presetcloseboxbg", "98"));
}

TEST_F(PanesTest, TheSameValueIsWrittenAndAnnouncedAgain) {
    auto dot = pane("newdotListController");
    choose(*dot, "newdotsize", PropertyList::floatNumber(0.25F));
    choose(*dot, "newdotsize", PropertyList::floatNumber(0.25F));
    EXPECT_EQ(told, twice(change("newdotsize", "0.25")));
}

TEST_F(PanesTest, NumbersOfEveryKindAreStoredAsFloatNumbers) {
    auto badge = pane("badgeListController");
    choose(*badge, "badgeshape", PropertyList::integer(6));
    choose(*badge, "convertbadgeroman", PropertyList::boolean(true));
    choose(*badge, "badgerotation", PropertyList::doubleNumber(0.1));
    EXPECT_EQ(stored("badgeshape"), PropertyList::floatNumber(6));
    EXPECT_EQ(stored("convertbadgeroman"), PropertyList::floatNumber(1));
    EXPECT_EQ(stored("badgerotation"), PropertyList::floatNumber(0.1F));
}

TEST_F(PanesTest, TextsAreStoredAsTheyAre) {
    badgeListController badge;
    Dictionary properties;
    properties.setObjectForKey(PropertyList::string("badgebgcol"), "key");
    properties.setObjectForKey(PropertyList::string(kDomain), "defaults");
    badge.setValueForSpecifier(PropertyList::string("#00ff00"), std::make_shared<PSSpecifier>(properties));
    EXPECT_EQ(stored("badgebgcol"), PropertyList::string("#00ff00"));
}

TEST_F(PanesTest, RomanNumeralsOffPutTheCountBackLast) {
    auto badge = pane("badgeListController");
    choose(*badge, "convertbadgeroman", PropertyList::boolean(true));
    EXPECT_EQ(told, change("convertbadgeroman", "1"));
    told.clear();
    for (const PropertyList& off : {PropertyList::boolean(false), PropertyList::integer(0),
                                    PropertyList::floatNumber(0), PropertyList::doubleNumber(-0.0)}) {
        told.clear();
        choose(*badge, "convertbadgeroman", off);
        ASSERT_FALSE(told.empty());
        EXPECT_EQ(told.back(), "darwin com.quillon.tallyforge.convertArabic");
        told.pop_back();
        Lines others = told;
        others.front() = change("convertbadgeroman", "0").front(); // the zero may have a sign
        EXPECT_EQ(others, change("convertbadgeroman", "0"));
    }
}

TEST_F(PanesTest, OtherRowsOfTheBadgeNeverPutTheCountBack) {
    auto badge = pane("badgeListController");
    choose(*badge, "badgesize", PropertyList::floatNumber(0));
    EXPECT_EQ(told, change("badgesize", "0"));
}

TEST_F(PanesTest, OneRowIsResetWithoutTellingAnyone) {
    badgeListController badge;
    badge.resetSpecifierWithValue("badgepos", 2);
    EXPECT_EQ(told, (Lines{"set " + kDomain + " badgepos 2", "reload-specifier badgepos"}));
    EXPECT_TRUE(CFPreferencesHasPending(kDomain)); // whoever resets saves once, at the end
    EXPECT_EQ(stored("badgepos"), PropertyList::floatNumber(2));
    told.clear();
    badge.resetSpecifierWithValue("badgealpha", 2); // its row is on another screen
    EXPECT_EQ(told, Lines{});
    EXPECT_FALSE(stored("badgealpha"));
}

TEST_F(PanesTest, ShowingAMarksScreenHasThePreviewDrawOnce) {
    ASSERT_EQ(kMarkPanes.size(), 15U);
    for (const std::string& name : kMarkPanes) {
        SCOPED_TRACE(name);
        auto screen = pane(name);
        ASSERT_NE(screen, nullptr);
        for (bool animated : {false, true}) {
            told.clear();
            screen->viewDidAppear(animated);
            EXPECT_EQ(told, Lines{"post reloadTallyforgePreviewNotify"});
        }
    }
}

TEST_F(PanesTest, ShowingTheOtherScreensTellsNobody) {
    for (const std::string& name : kOtherPanes) {
        SCOPED_TRACE(name);
        auto screen = pane(name);
        ASSERT_NE(screen, nullptr);
        screen->viewDidAppear(true);
        EXPECT_EQ(told, Lines{});
    }
}

TEST_F(PanesTest, RowsAreLoadedOnceAndKept) {
    auto badge = pane("badgeListController");
    auto first = badge->specifiers();
    ASSERT_FALSE(first.empty());
    std::filesystem::remove(device_.file(kBundle + "badgeprefs.plist"));
    EXPECT_EQ(badge->specifiers(), first);
    // A list that could not be loaded is not asked for again either.
    auto late = pane("badgeListController");
    EXPECT_TRUE(late->specifiers().empty());
    std::filesystem::copy_file(TALLYFORGE_RESOURCES "/stock" + kBundle + "badgeprefs.plist",
                               device_.file(kBundle + "badgeprefs.plist"));
    EXPECT_TRUE(late->specifiers().empty());
    EXPECT_EQ(pane("badgeListController")->specifiers().size(), first.size());
}

TEST_F(PanesTest, SwitchesAreOfTheBundlesGreen) {
    TallyforgeSwitchTableCell cell;
    ASSERT_TRUE(cell.initWithStyleReuseIdentifierSpecifier(1, "switch", std::make_shared<PSSpecifier>()));
    EXPECT_STREQ(cell.className(), "TallyforgeSwitchTableCell");
    const auto green = UIColor::colorWithRed(79 / 255.0, 219 / 255.0, 148 / 255.0, 1);
    ASSERT_TRUE(cell.switchControl()->onTintColor());
    ASSERT_TRUE(cell.switchControl()->tintColor());
    EXPECT_EQ(*cell.switchControl()->onTintColor(), green);
    EXPECT_EQ(*cell.switchControl()->tintColor(), green);
}

} // namespace
} // namespace tallyforge::test
