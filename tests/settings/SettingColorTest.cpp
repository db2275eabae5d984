// One colour setting as it is drawn: in which order the rules count.
#include "SettingsFixture.h"

#include "corefoundation/CFPreferences.h"
#include "settings/ColorValues.h"

namespace tallyforge::test {
namespace {

using SettingColorTest = SettingsFixture;

UIImage icon() {
    return imageOf(3, 1, {rgb(255, 255, 255), rgb(0, 0, 0), rgb(90, 60, 30)});
}

TEST_F(SettingColorTest, AbsentKeysTakeTheirFallback) {
    struct Case {
        const char* key;
        int red, green, blue;
    };
    for (const Case& c : {Case{"badgebgcol", 0, 255, 0}, Case{"badgetxtcol", 255, 255, 255},
                          Case{"badgebordercol", 255, 0, 0}, Case{"badgeglowcol", 0, 255, 0},
                          Case{"closeboxbgcol", 255, 165, 0}, Case{"closeboxtxtcol", 255, 255, 255},
                          Case{"closeboxbordercol", 0, 0, 0}, Case{"closeboxglowcol", 255, 0, 0},
                          Case{"newdotbgcol", 255, 0, 0}}) {
        SCOPED_TRACE(c.key);
        auto color = SettingColor(c.key);
        ASSERT_TRUE(color);
        EXPECT_TRUE(isBytes(*color, c.red, c.green, c.blue));
    }
}

TEST_F(SettingColorTest, TheSnapshotCountsBeforeTheFallback) {
    load({{"badgebgcol", text("#0000FF")}, {"badgetxtcol", text("")}});
    EXPECT_TRUE(isBytes(*SettingColor("badgebgcol"), 0, 0, 255));
    EXPECT_TRUE(isBytes(*SettingColor("badgetxtcol"), 0, 0, 0)); // present, though nothing can be read
    EXPECT_TRUE(isBytes(*SettingColor("badgebordercol"), 255, 0, 0));
}

TEST_F(SettingColorTest, ReadsTheSnapshotNotTheDomain) {
    load({{"badgebgcol", text("#0000FF")}});
    CFPreferencesSetAppValue("badgebgcol", text("#FF0000"), kSettingsDomain);
    EXPECT_TRUE(isBytes(*SettingColor("badgebgcol"), 0, 0, 255));
}

TEST_F(SettingColorTest, NoneIsNoColour) {
    load({{"badgebgcol", text("none")}});
    EXPECT_FALSE(SettingColor("badgebgcol"));
    EXPECT_FALSE(SettingColor("badgebgcol", icon()));
}

TEST_F(SettingColorTest, TransparentIsClear) {
    load({{"badgebgcol", text("transparent")}});
    ASSERT_TRUE(SettingColor("badgebgcol"));
    EXPECT_EQ(SettingColor("badgebgcol")->alpha(), 0);
    ASSERT_TRUE(SettingColor("badgebgcol", icon()));
    EXPECT_EQ(SettingColor("badgebgcol", icon())->alpha(), 0);
}

// Averages of 255, 0, 90; of 0, 90; of 255, 90: and so on for green and blue.
TEST_F(SettingColorTest, AutomaticWordsTakeTheIcon) {
    load({{"badgebgcol", text("automatic")},
          {"badgetxtcol", text("automatic_dark")},
          {"badgebordercol", text("automatic_bright")}});
    EXPECT_TRUE(isBytes(*SettingColor("badgebgcol", icon()), 115, 105, 95));
    EXPECT_TRUE(isBytes(*SettingColor("badgetxtcol", icon()), 45, 30, 15));
    EXPECT_TRUE(isBytes(*SettingColor("badgebordercol", icon()), 172, 157, 142));
}

TEST_F(SettingColorTest, AutomaticWordsAreBlackWithoutAnIcon) {
    for (const char* word : {"automatic", "automatic_dark", "automatic_bright"}) {
        load({{"badgebgcol", text(word)}});
        ASSERT_TRUE(SettingColor("badgebgcol")) << word;
        EXPECT_TRUE(isBytes(*SettingColor("badgebgcol"), 0, 0, 0)) << word;
    }
}

TEST_F(SettingColorTest, WordsAreComparedExactly) {
    for (const char* word : {"None", "NONE", "none ", " none", "Transparent", "Automatic", "automatic_Dark",
                             "automatic_bright "}) {
        load({{"badgebgcol", text(word)}});
        auto color = SettingColor("badgebgcol", icon());
        ASSERT_TRUE(color) << word;
        EXPECT_TRUE(isBytes(*color, 0, 0, 0)) << word;
    }
    load({{"badgebgcol", text("automaticFF")}});
    EXPECT_TRUE(isBytes(*SettingColor("badgebgcol", icon()), 0, 0, 0));
}

TEST_F(SettingColorTest, AnIconDoesNotChangeAPlainColour) {
    load({{"badgebgcol", text("#0000FF")}});
    EXPECT_TRUE(isBytes(*SettingColor("badgebgcol", icon()), 0, 0, 255));
}

TEST_F(SettingColorTest, OtherKindsUnderAColourKeyAreBlack) {
    for (const PropertyList& value : {PropertyList::integer(0xFF0000), PropertyList::floatNumber(255),
                                      PropertyList::boolean(true), PropertyList::data({'#', 'F', 'F'}),
                                      PropertyList::array({text("#FF0000")}), PropertyList::dictionary({})}) {
        load({{"badgebgcol", value}});
        auto color = SettingColor("badgebgcol", icon());
        ASSERT_TRUE(color) << value.description();
        EXPECT_TRUE(isBytes(*color, 0, 0, 0)) << value.description();
    }
}

} // namespace
} // namespace tallyforge::test
