// The snapshot, its readers and the announcement of a change.
#include "SettingsFixture.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/NSNotificationCenter.h"

#include <climits>
#include <limits>

namespace tallyforge::test {
namespace {

using Settings = SettingsFixture;

TEST_F(Settings, FreshInstallHasAnEmptySnapshot) {
    EXPECT_TRUE(SettingsSnapshot().empty());
    EXPECT_EQ(SettingNumber("badgealpha", 100), 100.f);
    EXPECT_EQ(SettingNumber("closeboxalpha", 85), 85.f);
    EXPECT_EQ(SettingNumber("closeboxrotation", 180), 180.f);
    EXPECT_EQ(SettingNumber("badgerotation", 0), 0.f);
    EXPECT_EQ(SettingCode("badgeshape", 1), 1);
    EXPECT_EQ(SettingTruncated("badgeshape", 3), 3);
    EXPECT_FALSE(SettingFlag("convertbadgeroman"));
}

// The absent value is the reader's, even where the defaults dictionary says something else (2 and 1.5).
TEST_F(Settings, NumericReadersDoNotConsultTheDefaults) {
    EXPECT_EQ(SettingCode("badgepos", 7), 7);
    EXPECT_EQ(SettingNumber("badgebordersize", 0.25f), 0.25f);
}

TEST_F(Settings, SnapshotHoldsExactlyWhatTheDomainHolds) {
    load({{"badgealpha", PropertyList::floatNumber(40)},
          {"badgebgcol", text("#123456")},
          {"somethingelse", PropertyList::integer(3)}});
    Dictionary expected;
    expected.setObjectForKey(PropertyList::floatNumber(40), "badgealpha");
    expected.setObjectForKey(text("#123456"), "badgebgcol");
    expected.setObjectForKey(PropertyList::integer(3), "somethingelse");
    EXPECT_EQ(SettingsSnapshot(), expected);
}

TEST_F(Settings, SnapshotIsReplacedWholeAndOnlyByLoading) {
    load({{"badgealpha", PropertyList::floatNumber(40)}, {"badgesize", PropertyList::floatNumber(1)}});
    device_.writeDomain({});
    CFPreferencesSetAppValue("badgealpha", PropertyList::floatNumber(60), kSettingsDomain);
    EXPECT_EQ(SettingNumber("badgealpha", 100), 40.f);
    EXPECT_EQ(SettingNumber("badgesize", 0), 1.f);

    LoadSettingsSnapshot();
    EXPECT_EQ(SettingNumber("badgealpha", 100), 60.f);
    EXPECT_EQ(SettingNumber("badgesize", 0), 0.f);
    EXPECT_EQ(SettingsSnapshot().count(), 1u);
}

TEST_F(Settings, UnreadableDomainIsAnEmptyOne) {
    load({{"badgealpha", PropertyList::floatNumber(40)}});
    device_.write("/var/mobile/Library/Preferences/com.quillon.tallyforge.plist",
                  {'b', 'p', 'l', 'i', 's', 't', '0', '0', 1, 2, 3});
    LoadSettingsSnapshot();
    EXPECT_TRUE(SettingsSnapshot().empty());
    EXPECT_EQ(SettingNumber("badgealpha", 100), 100.f);
}

TEST_F(Settings, DomainThatIsNoDictionaryIsAnEmptyOne) {
    device_.write("/var/mobile/Library/Preferences/com.quillon.tallyforge.plist",
                  BinaryPropertyList::Serialize(PropertyList::array({PropertyList::integer(1)})));
    LoadSettingsSnapshot();
    EXPECT_TRUE(SettingsSnapshot().empty());
}

TEST_F(Settings, LoadingSynchronisesNothing) {
    CFPreferencesSetAppValue("badgealpha", PropertyList::floatNumber(60), kSettingsDomain);
    bool synchronised = false;
    CFPreferencesSetTrace({.set = {}, .synchronize = [&](std::string_view) { synchronised = true; }});
    LoadSettingsSnapshot();
    CFPreferencesSetTrace({});
    EXPECT_FALSE(synchronised);
    EXPECT_TRUE(CFPreferencesHasPending(kSettingsDomain));
}

TEST_F(Settings, EveryKindOfValueIsReadAsANumber) {
    load({{"float", PropertyList::floatNumber(2.75f)},
          {"double", PropertyList::doubleNumber(-2.75)},
          {"integer", PropertyList::integer(7)},
          {"yes", PropertyList::boolean(true)},
          {"no", PropertyList::boolean(false)},
          {"text", text(" 12.5 points")},
          {"colour", text("#FF0000")},
          {"word", text("none")},
          {"data", PropertyList::data({1, 2})},
          {"list", PropertyList::array({PropertyList::integer(5)})},
          {"huge", PropertyList::floatNumber(1e20f)},
          {"tiny", PropertyList::doubleNumber(-1e20)},
          {"nan", PropertyList::floatNumber(std::numeric_limits<float>::quiet_NaN())}});

    EXPECT_EQ(SettingNumber("float", 9), 2.75f);
    EXPECT_EQ(SettingNumber("double", 9), -2.75f);
    EXPECT_EQ(SettingNumber("integer", 9), 7.f);
    EXPECT_EQ(SettingNumber("yes", 9), 1.f);
    EXPECT_EQ(SettingNumber("no", 9), 0.f);
    EXPECT_EQ(SettingNumber("text", 9), 12.5f);
    for (const char* key : {"colour", "word", "data", "list"}) {
        EXPECT_EQ(SettingNumber(key, 9), 0.f) << key;
        EXPECT_EQ(SettingCode(key, 9), 0) << key;
        EXPECT_EQ(SettingTruncated(key, 9), 0) << key;
        EXPECT_FALSE(SettingFlag(key)) << key;
    }

    EXPECT_EQ(SettingCode("float", 9), 2);
    EXPECT_EQ(SettingCode("double", 9), -2);
    EXPECT_EQ(SettingCode("integer", 9), 7);
    EXPECT_EQ(SettingCode("yes", 9), 1);
    EXPECT_EQ(SettingCode("text", 9), 12);

    for (auto read : {+[](const char* key) { return SettingCode(key, 9); },
                      +[](const char* key) { return SettingTruncated(key, 9); }}) {
        EXPECT_EQ(read("huge"), INT_MAX);
        EXPECT_EQ(read("tiny"), INT_MIN);
        EXPECT_EQ(read("nan"), 0);
    }
    EXPECT_EQ(SettingTruncated("float", 9), 2);
    EXPECT_EQ(SettingTruncated("double", 9), -2);
    EXPECT_EQ(SettingTruncated("absent", 3.9f), 3);

    EXPECT_TRUE(SettingFlag("yes"));
    EXPECT_FALSE(SettingFlag("no"));
    EXPECT_TRUE(SettingFlag("integer"));
}

TEST_F(Settings, TruthValuesAreReadFromFloatsAndWords) {
    load({{"on", PropertyList::floatNumber(1)},
          {"off", PropertyList::floatNumber(0)},
          {"YES", text("YES")},
          {"NO", text("NO")}});
    EXPECT_TRUE(SettingFlag("on"));
    EXPECT_FALSE(SettingFlag("off"));
    EXPECT_TRUE(SettingFlag("YES"));
    EXPECT_FALSE(SettingFlag("NO"));
}

// An integer's whole-number reading takes its low 32 bits, where the float reading is held to the bounds.
TEST_F(Settings, WideIntegersAreReadEachInItsWay) {
    load({{"wide", PropertyList::integer(4294967296 + 5)}});
    EXPECT_EQ(SettingCode("wide", 9), 5);
    EXPECT_EQ(SettingTruncated("wide", 9), INT_MAX);
}

TEST_F(Settings, AnnouncementTellsThisProcessFirst) {
    std::vector<std::string> told;
    auto& center = NSNotificationCenter::defaultCenter();
    auto& darwin = CFNotificationCenterGetDarwinNotifyCenter();
    center.setTrace([&](std::string_view name) { told.push_back("in process " + std::string(name)); });
    darwin.setTrace([&](std::string_view name) { told.push_back("system-wide " + std::string(name)); });
    auto observation =
        center.addObserver("reloadTallyforgePreviewNotify", [&] { told.push_back("preview reloads"); });

    AnnounceSettingsChanged();
    center.setTrace({});
    darwin.setTrace({});

    EXPECT_EQ(told, (std::vector<std::string>{"in process reloadTallyforgePreviewNotify", "preview reloads",
                                              "system-wide com.quillon.tallyforge.prefs"}));
}

TEST_F(Settings, AnnouncementWritesNothing) {
    CFPreferencesSetAppValue("badgealpha", PropertyList::floatNumber(60), kSettingsDomain);
    AnnounceSettingsChanged();
    EXPECT_TRUE(CFPreferencesHasPending(kSettingsDomain));
    EXPECT_FALSE(std::filesystem::exists(device_.file(CFPreferencesPath(kSettingsDomain))));
}

TEST_F(Settings, NotificationNames) {
    EXPECT_EQ(kReloadPreviewNotification, "reloadTallyforgePreviewNotify");
    EXPECT_EQ(kPrefsNotification, "com.quillon.tallyforge.prefs");
    EXPECT_EQ(kConvertArabicNotification, "com.quillon.tallyforge.convertArabic");
}

TEST_F(Settings, GrowingCountsInFullAndShrinkingByHalf) {
    EXPECT_EQ(GrowthFactor(0), 1.f);
    EXPECT_EQ(GrowthFactor(1), 2.f);
    EXPECT_EQ(GrowthFactor(2.25f), 3.25f);
    EXPECT_EQ(GrowthFactor(-1), 0.5f);
    EXPECT_EQ(GrowthFactor(-1.5f), 0.25f);
    EXPECT_EQ(GrowthFactor(-0.5f), 0.75f);
}

} // namespace
} // namespace tallyforge::test
