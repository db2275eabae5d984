// The screen that chooses apps: what it shows, what it writes and in which order.

#include "appselect/QuillonAppSelect.h"
#include "appselect/QuillonAppSelectLinkCell.h"
#include "appselect/RegisterAppSelect.h"
#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "coregraphics/Canvas.h"
#include "mobileservices/UIAssetManager.h"
#include "rastergraphics/RasterGraphics.h"
#include "support/AppBundles.h"
#include "support/Program.h"
#include "uikit/UIDevice.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"
#include "uikit/UISwitch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyforge {
namespace {

using test::DictionaryOf;
using test::InstallApp;
using test::InstallUserApp;
using test::TextList;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kDomain = "com.example.apps";

PropertyList Text(const std::string& text) {
    return PropertyList::string(text);
}

class AppSelectTest : public testing::Test {
  protected:
    AppSelectTest() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device.root().c_str(), 1);
        setenv("LC_ALL", "C", 1);
        Graphics::install(MakeRasterGraphics());
        RegisterMobileServices();
    }
    ~AppSelectTest() override {
        CFPreferencesSetTrace({});
        CFNotificationCenterGetDarwinNotifyCenter().setTrace({});
        UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
        UIScreen::mainScreen().setSize(std::nullopt);
    }

    static Dictionary row(std::optional<bool> defaultValue = std::nullopt) {
        Dictionary row = DictionaryOf({{"label", Text("Chosen apps")},
                                       {"key", Text("apps")},
                                       {"defaults", Text(kDomain)},
                                       {"PostNotification", Text("com.example.apps.changed")}});
        if (defaultValue) row.setObjectForKey(PropertyList::boolean(*defaultValue), "defaultValue");
        return row;
    }
    QuillonAppSelect& open(const Dictionary& properties) {
        screen = std::make_shared<QuillonAppSelect>();
        screen->setSpecifier(std::make_shared<PSSpecifier>(properties));
        screen->view()->layoutIfNeeded();
        return *screen;
    }
    static void store(PropertyList value) {
        CFPreferencesSetAppValue("apps", std::move(value), kDomain);
        ASSERT_TRUE(CFPreferencesAppSynchronize(kDomain));
    }
    static std::string stored() {
        auto value = CFPreferencesCopyAppValue("apps", kDomain);
        return value ? listed(*value) : "nothing";
    }
    static std::string listed(const PropertyList& value) {
        if (!value.asArray()) return value.description();
        std::string text;
        for (const PropertyList& item : *value.asArray())
            text += (text.empty() ? "" : " ") + item.description();
        return text;
    }
    std::shared_ptr<UITableViewCell> cell(int section, int row) const {
        return screen->tableView()->cellForRowAtIndexPath({section, row});
    }
    UISwitch& turner(int section, int row) const {
        return static_cast<UISwitch&>(*cell(section, row)->accessoryView());
    }
    std::vector<bool> states(int section) const {
        const int rows = screen->tableView()->numberOfRowsInSection(section);
        std::vector<bool> on;
        on.reserve(static_cast<size_t>(rows));
        for (int i = 0; i < rows; ++i)
            on.push_back(turner(section, i).isOn());
        return on;
    }
    void turn(int section, int row) const { turner(section, row).pressKey(UIKey::space); }
    void listen() {
        CFPreferencesSetTrace(
            {.set =
                 [this](std::string_view domain, std::string_view key, const PropertyList* value) {
                     told.push_back("set " + std::string(domain) + " " + std::string(key) + " [" +
                                    listed(*value) + "]");
                 },
             .synchronize =
                 [this](std::string_view domain) { told.push_back("synchronize " + std::string(domain)); }});
        CFNotificationCenterGetDarwinNotifyCenter().setTrace(
            [this](std::string_view name) { told.push_back("darwin " + std::string(name)); });
    }
    // An application of the system's with an icon of that colour.
    void withIcon(const std::string& identifier, const std::string& name, uint32_t color) const {
        const std::string folder = "/Applications/" + identifier + ".app";
        InstallApp(device, folder, identifier, name, DictionaryOf({{"CFBundleIconFile", Text("Icon")}}));
        CGImage picture(120, 120);
        std::fill_n(picture.row(0), size_t{120} * 120, color);
        device.write(folder + "/Icon@2x.png", Graphics::current()->encodePNG(picture));
    }
    static uint32_t iconColor(UITableViewCell& cell) {
        const UIImage& icon = cell.imageView().image();
        return icon ? icon.bitmap()->row(icon.bitmap()->height() / 2)[icon.bitmap()->width() / 2] : 0;
    }

    test::TestDevice device;
    std::shared_ptr<QuillonAppSelect> screen;
    std::vector<std::string> told;
};

TEST_F(AppSelectTest, IsKnownByName) {
    RegisterAppSelect();
    auto made = NSClassFromString("QuillonAppSelect")->alloc();
    EXPECT_TRUE(std::dynamic_pointer_cast<PSViewController>(made));
    auto link = NSClassFromString("QuillonAppSelectLinkCell")->alloc();
    EXPECT_TRUE(std::dynamic_pointer_cast<QuillonAppSelectLinkCell>(link));
}

TEST_F(AppSelectTest, TheLinkCellIsMadeAndLaidOutAsItsBase) {
    RegisterAppSelect();
    const auto properties = DictionaryOf(
        {{"cell", Text("PSLinkCell")}, {"label", Text("Chosen apps")}, {"detail", Text("QuillonAppSelect")}});
    auto own = std::make_shared<QuillonAppSelectLinkCell>();
    auto base = std::make_shared<PSTableCell>();
    for (const auto& made : {std::static_pointer_cast<PSTableCell>(own), base}) {
        auto specifier = std::make_shared<PSSpecifier>(properties);
        ASSERT_TRUE(made->initWithStyleReuseIdentifierSpecifier(0, "x", specifier));
        made->refreshCellContents();
        made->layoutIfNeeded();
    }
    EXPECT_STREQ(own->className(), "QuillonAppSelectLinkCell");
    EXPECT_EQ(own->titleText(), base->titleText());
    EXPECT_EQ(own->accessoryType(), base->accessoryType());
    EXPECT_EQ(own->textLabel().frame(), base->textLabel().frame());
    EXPECT_TRUE(own->cellEnabled());
}

TEST_F(AppSelectTest, ShowsTheAppsInTwoSectionsByTheirNames) {
    InstallApp(device, "/Applications/1.app", "s.ten", "App 10");
    InstallApp(device, "/Applications/2.app", "s.two", "app 2");
    InstallUserApp(device, "u.b", "banana");
    InstallUserApp(device, "u.a", "Éclair");
    InstallUserApp(device, "u.c", "Apple");
    InstallUserApp(device, "u.hidden", "Hidden", DictionaryOf({{"SBAppTags", TextList({"hidden"})}}));
    open(row());
    EXPECT_EQ(screen->title(), "Chosen apps");
    EXPECT_THAT(screen->systemAppNames(), ElementsAre("app 2", "App 10"));
    EXPECT_THAT(screen->systemAppIDs(), ElementsAre("s.two", "s.ten"));
    EXPECT_THAT(screen->userAppNames(), ElementsAre("Apple", "banana", "Éclair"));
    EXPECT_THAT(screen->userAppIDs(), ElementsAre("u.c", "u.b", "u.a"));
    EXPECT_THAT(screen->allAppIDs(), ElementsAre("s.two", "s.ten", "u.c", "u.b", "u.a"));
    UITableView& table = *screen->tableView();
    EXPECT_EQ(screen->view().get(), &table);
    EXPECT_EQ(screen->numberOfSectionsInTableView(table), 2);
    EXPECT_EQ(screen->tableViewTitleForHeaderInSection(table, 0), "SYSTEM APPS");
    EXPECT_EQ(screen->tableViewTitleForHeaderInSection(table, 1), "USER APPS");
    EXPECT_EQ(table.numberOfRowsInSection(0), 2);
    EXPECT_EQ(table.numberOfRowsInSection(1), 3);
    EXPECT_EQ(cell(0, 1)->titleText(), "App 10");
    EXPECT_EQ(cell(1, 2)->titleText(), "Éclair");
    EXPECT_EQ(table.rectForRowAtIndexPath({1, 0}).size.height, 44);
}

TEST_F(AppSelectTest, SwitchesAreTaggedByTheirPlaceAmongAllApps) {
    InstallApp(device, "/Applications/1.app", "s1", "S1");
    InstallApp(device, "/Applications/2.app", "s2", "S2");
    InstallUserApp(device, "u1", "U1");
    InstallUserApp(device, "u2", "U2");
    open(row());
    EXPECT_EQ(turner(0, 0).tag(), 0);
    EXPECT_EQ(turner(0, 1).tag(), 1);
    EXPECT_EQ(turner(1, 0).tag(), 2);
    EXPECT_EQ(turner(1, 1).tag(), 3);
}

TEST_F(AppSelectTest, RowsAreWithoutAPressedLookAndEndInASwitch) {
    InstallApp(device, "/Applications/1.app", "s1", "S1");
    open(row());
    EXPECT_EQ(cell(0, 0)->reuseIdentifier(), "MyCellIdentifier");
    EXPECT_EQ(cell(0, 0)->style(), UITableViewCellStyleDefault);
    EXPECT_EQ(cell(0, 0)->selectionStyle(), UITableViewCellSelectionStyle::none);
    EXPECT_FALSE(screen->tableViewShouldHighlightRowAtIndexPath(*screen->tableView(), {0, 0}));
    EXPECT_EQ(turner(0, 0).bounds().size, (CGSize{51, 31}));
}

TEST_F(AppSelectTest, DefaultOffTurningOnStoresAndTurningOffRemoves) {
    InstallUserApp(device, "a", "A");
    InstallUserApp(device, "b", "B");
    InstallUserApp(device, "c", "C");
    open(row());
    EXPECT_THAT(states(1), ElementsAre(false, false, false));
    turn(1, 2);
    turn(1, 0);
    EXPECT_THAT(states(1), ElementsAre(true, false, true));
    EXPECT_EQ(stored(), "c a") << "in the order in which they were turned";
    turn(1, 2);
    EXPECT_EQ(stored(), "a");
    turn(1, 0);
    EXPECT_EQ(stored(), "");
    EXPECT_THAT(states(1), ElementsAre(false, false, false));
}

TEST_F(AppSelectTest, DefaultOnTheListNamesTheAppsThatAreOff) {
    InstallApp(device, "/Applications/1.app", "s1", "S1");
    InstallUserApp(device, "u1", "U1");
    InstallUserApp(device, "u2", "U2");
    store(TextList({"u1"}));
    open(row(true));
    EXPECT_TRUE(screen->defaultValue());
    EXPECT_THAT(states(0), ElementsAre(true));
    EXPECT_THAT(states(1), ElementsAre(false, true));
    turn(1, 1);
    EXPECT_EQ(stored(), "u1 u2");
    turn(1, 0);
    EXPECT_EQ(stored(), "u2");
}

TEST_F(AppSelectTest, AChangeIsWrittenSynchronisedAndThenPosted) {
    InstallUserApp(device, "a", "A");
    listen();
    open(row());
    EXPECT_THAT(told, ElementsAre("synchronize com.example.apps"));
    told.clear();
    turn(1, 0);
    turn(1, 0);
    EXPECT_THAT(told, ElementsAre("set com.example.apps apps [a]", "synchronize com.example.apps",
                                  "darwin com.example.apps.changed", "set com.example.apps apps []",
                                  "synchronize com.example.apps", "darwin com.example.apps.changed"));
}

TEST_F(AppSelectTest, SynchronisingWithoutNoticePostsNothing) {
    open(row());
    listen();
    screen->syncPrefs(false);
    EXPECT_THAT(told, ElementsAre("set com.example.apps apps []", "synchronize com.example.apps"));
}

TEST_F(AppSelectTest, WithoutANotificationChangesAreSilent) {
    InstallUserApp(device, "a", "A");
    Dictionary silent = row();
    silent.removeObjectForKey("PostNotification");
    open(silent);
    listen();
    turn(1, 0);
    EXPECT_THAT(told, ElementsAre("set com.example.apps apps [a]", "synchronize com.example.apps"));
    EXPECT_EQ(stored(), "a");
}

TEST_F(AppSelectTest, WithoutAKeyNothingIsReadAndAChangeStillCallsTheWrite) {
    InstallUserApp(device, "a", "A");
    store(TextList({"a"}));
    Dictionary keyless = row();
    keyless.removeObjectForKey("key");
    listen();
    open(keyless);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_THAT(states(1), ElementsAre(false));
    turn(1, 0);
    EXPECT_THAT(told, ElementsAre("set com.example.apps  [a]", "synchronize com.example.apps",
                                  "darwin com.example.apps.changed"));
    EXPECT_EQ(stored(), "a") << "what is stored stays as it was";
    EXPECT_EQ(CFPreferencesCopyKeyList(kDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost)->size(),
              1U);
}

TEST_F(AppSelectTest, WithoutADomainNothingIsWrittenAnywhere) {
    InstallUserApp(device, "a", "A");
    Dictionary homeless = row();
    homeless.removeObjectForKey("defaults");
    open(homeless);
    turn(1, 0);
    EXPECT_THAT(states(1), ElementsAre(true));
    EXPECT_FALSE(std::filesystem::exists(device.file("/var/mobile/Library/Preferences")));
}

TEST_F(AppSelectTest, AValueThatIsNoListIsIgnoredAndReplacedAtTheFirstChange) {
    InstallUserApp(device, "a", "A");
    InstallUserApp(device, "b", "B");
    for (const PropertyList& value : {Text("a"), PropertyList::integer(1), PropertyList::boolean(true),
                                      PropertyList::dictionary(DictionaryOf({{"a", Text("a")}}))}) {
        store(value);
        open(row());
        EXPECT_THAT(states(1), ElementsAre(false, false));
        EXPECT_EQ(stored(), value.description()) << "opening alone changes nothing";
        turn(1, 1);
        EXPECT_EQ(stored(), "b");
    }
}

TEST_F(AppSelectTest, AnAppThatIsGoneStaysInTheList) {
    InstallUserApp(device, "a", "A");
    store(TextList({"gone", "a", "gone.too"}));
    open(row());
    EXPECT_THAT(states(1), ElementsAre(true));
    turn(1, 0);
    EXPECT_EQ(stored(), "gone gone.too");
    turn(1, 0);
    EXPECT_EQ(stored(), "gone gone.too a");
}

TEST_F(AppSelectTest, EveryOccurrenceIsRemoved) {
    InstallUserApp(device, "a", "A");
    store(TextList({"a", "x", "a", "a"}));
    open(row());
    turn(1, 0);
    EXPECT_EQ(stored(), "x");
}

TEST_F(AppSelectTest, WhatIsAppendedIsNotLookedForBefore) {
    InstallUserApp(device, "a", "A");
    store(TextList({"a"}));
    open(row());
    // Told of it once more although it is on already.
    screen->changeSwitch(turner(1, 0));
    EXPECT_EQ(stored(), "a a");
}

TEST_F(AppSelectTest, AppsOfOneNameKeepTheirOwnSwitches) {
    InstallUserApp(device, "second", "Twin");
    InstallUserApp(device, "first", "Twin");
    InstallUserApp(device, "third", "twin");
    InstallUserApp(device, "other", "Tvin");
    open(row());
    EXPECT_THAT(screen->userAppNames(), ElementsAre("Tvin", "twin", "Twin", "Twin"));
    EXPECT_THAT(screen->userAppIDs(), ElementsAre("other", "third", "first", "second"));
    turn(1, 3);
    EXPECT_EQ(stored(), "second");
    EXPECT_THAT(states(1), ElementsAre(false, false, false, true));
    turn(1, 2);
    EXPECT_EQ(stored(), "second first");
}

TEST_F(AppSelectTest, TheDefaultMayBeANumberOrAWord) {
    for (const PropertyList& yes : {PropertyList::integer(1), PropertyList::floatNumber(1), Text("YES")}) {
        Dictionary on = row();
        on.setObjectForKey(yes, "defaultValue");
        EXPECT_TRUE(open(on).defaultValue());
    }
    EXPECT_FALSE(open(row()).defaultValue());
    EXPECT_FALSE(open(row(false)).defaultValue());
}

TEST_F(AppSelectTest, WithoutASpecifierItOpensAllTheSame) {
    InstallUserApp(device, "a", "A");
    screen = std::make_shared<QuillonAppSelect>();
    screen->view()->layoutIfNeeded();
    EXPECT_THAT(states(1), ElementsAre(false));
    turn(1, 0);
    EXPECT_THAT(states(1), ElementsAre(true));
}

TEST_F(AppSelectTest, AnotherReaderFindsAListOfTexts) {
    InstallUserApp(device, "net.heddle.loom", "Loom");
    InstallApp(device, "/Applications/M.app", "com.example.mail", "Mail");
    open(row());
    turn(1, 0);
    turn(0, 0);
    auto python = test::RunProgram(
        {"python3", "-c", "import plistlib,sys; print(plistlib.load(open(sys.argv[1], 'rb')))",
         device.file("/var/mobile/Library/Preferences/com.example.apps.plist").string()});
    EXPECT_EQ(python.output, "{'apps': ['net.heddle.loom', 'com.example.mail']}\n") << python.errors;
}

TEST_F(AppSelectTest, RowsShowTheIconInItsOwnColours) {
    withIcon("a", "A", 0xFFCC3311);
    open(row());
    const UIImage& icon = cell(0, 0)->imageView().image();
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon.renderingMode(), UIImageRenderingModeAlwaysOriginal);
    EXPECT_EQ(icon.scale(), 2);
    EXPECT_EQ(iconColor(*cell(0, 0)), 0xFFCC3311);
}

TEST_F(AppSelectTest, ARowWithoutAnIconHasNoneUntilItIsUsedAgain) {
    InstallApp(device, "/Applications/b.app", "b", "B");
    open(row());
    EXPECT_FALSE(cell(0, 0)->imageView().image());
}

TEST_F(AppSelectTest, AReusedRowKeepsAnEarlierIconWhereThereIsNone) {
    withIcon("a", "A", 0xFFCC3311);
    InstallApp(device, "/Applications/b.app", "b", "B");
    open(row());
    UITableView& table = *screen->tableView();
    auto first = cell(0, 0);
    table.setDataSource(nullptr); // the table lets go of its rows
    table.reloadData();
    table.setDataSource(screen.get());
    auto reused = screen->tableViewCellForRowAtIndexPath(table, {0, 1});
    while (reused != first) { // the one that showed A
        ASSERT_EQ(reused->titleText(), "B");
        reused = screen->tableViewCellForRowAtIndexPath(table, {0, 1});
    }
    EXPECT_EQ(reused->titleText(), "B");
    EXPECT_EQ(static_cast<UISwitch&>(*reused->accessoryView()).tag(), 1);
    EXPECT_EQ(iconColor(*reused), 0xFFCC3311) << "the icon of A stays";
}

TEST_F(AppSelectTest, OnlyTheRowsOnScreenHaveCellsAndTheyAreUsedAgain) {
    for (int i = 0; i < 200; ++i)
        InstallUserApp(device, "app" + std::to_string(i), "App " + std::to_string(i));
    store(TextList({"app3", "app150"}));
    open(row());
    UITableView& table = *screen->tableView();
    EXPECT_LE(table.indexPathsForVisibleRows().size(), 16U);
    EXPECT_TRUE(cell(1, 3));
    EXPECT_TRUE(turner(1, 3).isOn());
    EXPECT_FALSE(cell(1, 150));
    table.scrollToRowAtIndexPath({1, 150});
    ASSERT_TRUE(cell(1, 150));
    EXPECT_EQ(cell(1, 150)->titleText(), "App 150");
    EXPECT_TRUE(turner(1, 150).isOn());
    EXPECT_EQ(turner(1, 150).tag(), 150);
    EXPECT_FALSE(turner(1, 151).isOn());
    turn(1, 151);
    EXPECT_EQ(stored(), "app3 app150 app151");
    table.scrollToRowAtIndexPath({1, 0});
    EXPECT_THAT((std::vector<bool>{turner(1, 2).isOn(), turner(1, 3).isOn(), turner(1, 4).isOn()}),
                ElementsAre(false, true, false));
}

TEST_F(AppSelectTest, ADeviceWithoutAppsSaysSo) {
    open(row());
    UITableView& table = *screen->tableView();
    EXPECT_EQ(table.numberOfSections(), 2);
    EXPECT_EQ(table.numberOfRowsInSection(0), 0);
    EXPECT_EQ(screen->tableViewTitleForFooterInSection(table, 0), "None are installed.");
    EXPECT_EQ(screen->tableViewTitleForFooterInSection(table, 1), "None are installed.");
    InstallUserApp(device, "a", "A");
    open(row());
    EXPECT_EQ(screen->tableViewTitleForFooterInSection(*screen->tableView(), 1), "");
}

TEST_F(AppSelectTest, WithoutAWorkspaceItIsEmpty) {
    InstallUserApp(device, "a", "A");
    RegisterClass("LSApplicationWorkspace", {});
    open(row());
    EXPECT_THAT(screen->allAppIDs(), IsEmpty());
}

TEST_F(AppSelectTest, AppsInstalledWhileItIsOpenAreThereTheNextTime) {
    InstallUserApp(device, "a", "A");
    open(row());
    InstallUserApp(device, "b", "B");
    screen->tableView()->reloadData();
    EXPECT_THAT(screen->userAppIDs(), ElementsAre("a"));
    open(row());
    EXPECT_THAT(screen->userAppIDs(), ElementsAre("a", "b"));
}

TEST_F(AppSelectTest, ATableThatOutlivesTheScreenIsHarmless) {
    InstallUserApp(device, "a", "A");
    open(row());
    auto table = screen->view();
    UISwitch& left = turner(1, 0);
    screen = nullptr;
    left.pressKey(UIKey::space);
    static_cast<UITableView&>(*table).reloadData();
    EXPECT_EQ(stored(), "nothing");
}

TEST_F(AppSelectTest, OnATabletTheRowsStandInAColumn) {
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPad);
    InstallUserApp(device, "a", "A");
    open(row());
    EXPECT_EQ(screen->view()->frame(), CGRectMake(0, 0, 768, 1024));
    EXPECT_EQ(screen->tableView()->rectForRowAtIndexPath({1, 0}).size.width, 460);
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
    open(row());
    EXPECT_EQ(screen->view()->frame(), CGRectMake(0, 0, 375, 667));
}

} // namespace
} // namespace tallyforge
