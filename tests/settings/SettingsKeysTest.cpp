// The table of settings, typed in a second time: a slip in either copy shows.
#include "settings/SettingsKeys.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tallyforge {
namespace {

enum class Fallback { color, whole, fraction, no };

struct Row {
    const char* name;
    SettingType type;
    double min;
    double max;
    Fallback kind;
    const char* color;
    double number;
};

Row color(const char* name, const char* fallback) {
    return {name, SettingType::color, 0, 0, Fallback::color, fallback, 0};
}
Row number(const char* name, double min, double max, int fallback) {
    return {name, SettingType::number, min, max, Fallback::whole, "", double(fallback)};
}
Row fraction(const char* name, double min, double max, double fallback) {
    return {name, SettingType::number, min, max, Fallback::fraction, "", fallback};
}
Row code(const char* name, int max, int fallback) {
    return {name, SettingType::code, 0, double(max), Fallback::whole, "", double(fallback)};
}

const std::vector<Row>& expectedTable() {
    static const std::vector<Row> rows = {
        color("badgebgcol", "#00FF00"),
        color("badgetxtcol", "#FFFFFF"),
        number("badgealpha", 0, 100, 100),
        code("badgeshape", 4, 1),
        {"convertbadgeroman", SettingType::boolean, 0, 1, Fallback::no, "", 0},
        number("badgesize", -1.5, 2.25, 0),
        number("badgetxtsize", -1.5, 2.25, 0),
        number("badgerotation", 0, 360, 0),
        code("badgepos", 8, 2),
        number("badgeoffsetX", -20, 20, 0),
        number("badgeoffsetY", -20, 20, 0),
        number("badgetxtoffsetX", -20, 20, 0),
        number("badgetxtoffsetY", -20, 20, 0),
        color("badgebordercol", "#FF0000"),
        fraction("badgebordersize", 0, 5, 1.5),
        color("badgeglowcol", "#00FF00"),
        number("badgeglowalpha", 0, 100, 0),
        code("badgeanimtype", 12, 0),
        number("badgeanimspd", 0.2, 4, 1),
        color("closeboxbgcol", "#FFA500"),
        color("closeboxtxtcol", "#FFFFFF"),
        number("closeboxalpha", 0, 100, 100),
        code("closeboxshape", 4, 2),
        number("closeboxsize", -1.5, 1.5, 0),
        number("closeboxtxtsize", -1.5, 2.25, 0),
        number("closeboxrotation", 0, 360, 180),
        code("closeboxpos", 8, 1),
        number("closeboxoffsetX", -20, 20, 0),
        number("closeboxoffsetY", -20, 20, 0),
        number("closeboxtxtoffsetX", -20, 20, 0),
        number("closeboxtxtoffsetY", -20, 20, 0),
        color("closeboxbordercol", "#000000"),
        number("closeboxbordersize", 0, 6, 0),
        color("closeboxglowcol", "#FF0000"),
        number("closeboxglowalpha", 0, 100, 100),
        code("closeboxanimtype", 12, 0),
        number("closeboxanimspd", 0.2, 4, 1),
        color("newdotbgcol", "#FF0000"),
        number("newdotalpha", 0, 100, 100),
        code("newdotanimtype", 12, 0),
        number("newdotanimspd", 0.2, 4, 1),
        code("newdotshape", 3, 1),
        fraction("newdotsize", -1, 1, 0.1),
        code("newdotpos", 3, 1),
        number("newdotoffsetX", -20, 20, 0),
        number("newdotoffsetY", -20, 20, 0),
    };
    return rows;
}

PropertyList fallbackValue(const Row& row) {
    switch (row.kind) {
    case Fallback::color:
        return PropertyList::string(row.color);
    case Fallback::whole:
        return PropertyList::integer(int64_t(row.number));
    case Fallback::fraction:
        return PropertyList::floatNumber(static_cast<float>(row.number));
    case Fallback::no:
        break;
    }
    return PropertyList::boolean(false);
}

TEST(SettingsKeys, TableHoldsEveryRowInOrder) {
    ASSERT_EQ(expectedTable().size(), 46u);
    auto table = SettingsKeyTable();
    ASSERT_EQ(table.size(), 46u);
    for (size_t i = 0; i < table.size(); ++i) {
        const Row& row = expectedTable()[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(table[i].name, row.name);
        EXPECT_EQ(table[i].type, row.type);
        EXPECT_EQ(table[i].min, float(row.min));
        EXPECT_EQ(table[i].max, float(row.max));
        EXPECT_EQ(table[i].fallbackColor, row.color);
        if (row.kind != Fallback::color) {
            EXPECT_EQ(table[i].fallbackNumber, row.number);
        }
    }
}

TEST(SettingsKeys, MarkFollowsFromTheName) {
    for (const SettingKey& key : SettingsKeyTable()) {
        SCOPED_TRACE(key.name);
        MarkKind expected = key.name.starts_with("closebox") ? MarkKind::closeBox
                            : key.name.starts_with("newdot") ? MarkKind::newDot
                                                             : MarkKind::badge;
        EXPECT_EQ(key.mark, expected);
    }
}

TEST(SettingsKeys, DefaultsDictionaryHasTheSameKindsAndOrder) {
    const Dictionary& defaults = SettingsDefaults();
    ASSERT_EQ(defaults.count(), 46u);
    for (size_t i = 0; i < 46; ++i) {
        const Row& row = expectedTable()[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(defaults.entries()[i].key, row.name);
        EXPECT_EQ(defaults.entries()[i].value, fallbackValue(row))
            << defaults.entries()[i].value.description();
    }
}

TEST(SettingsKeys, FindsEveryNameAndNoOther) {
    for (const Row& row : expectedTable()) {
        const SettingKey* key = FindSettingKey(row.name);
        ASSERT_NE(key, nullptr) << row.name;
        EXPECT_EQ(key->name, row.name);
    }
    for (const char* name : {"", "badge", "badgebgcolx", "BadgeBgCol", "badgebgco", "presetcloseboxbg"})
        EXPECT_EQ(FindSettingKey(name), nullptr) << name;
}

TEST(SettingsKeys, NumbersAreAcceptedFromBoundToBound) {
    for (const Row& row : expectedTable()) {
        if (row.type != SettingType::number) continue;
        SCOPED_TRACE(row.name);
        const SettingKey& key = *FindSettingKey(row.name);
        EXPECT_TRUE(key.accepts(row.min));
        EXPECT_TRUE(key.accepts(row.max));
        EXPECT_TRUE(key.accepts((row.min + row.max) / 2 + 0.25));
        EXPECT_FALSE(key.accepts(row.min - 0.01));
        EXPECT_FALSE(key.accepts(row.max + 0.01));
        EXPECT_FALSE(key.accepts(std::nan("")));
        EXPECT_FALSE(key.accepts(std::numeric_limits<double>::infinity()));
        EXPECT_FALSE(key.accepts(-std::numeric_limits<double>::infinity()));
    }
}

TEST(SettingsKeys, CodesAreWholeAndKnownToTheMark) {
    for (const Row& row : expectedTable()) {
        if (row.type != SettingType::code) continue;
        SCOPED_TRACE(row.name);
        const SettingKey& key = *FindSettingKey(row.name);
        std::set<int> known;
        for (int value = 0; value <= int(row.max); ++value)
            known.insert(value);
        if (std::string(row.name) == "badgeshape") known.insert({5, 6});
        if (std::string(row.name) == "closeboxshape") known.insert({5, 6, 10});
        for (int value = -3; value <= 20; ++value)
            EXPECT_EQ(key.accepts(value), known.contains(value)) << value;
        EXPECT_FALSE(key.accepts(0.5));
        EXPECT_FALSE(key.accepts(row.max - 0.001));
        EXPECT_FALSE(key.accepts(4294967296.0));
        EXPECT_FALSE(key.accepts(std::nan("")));
        EXPECT_FALSE(key.accepts(std::numeric_limits<double>::infinity()));
    }
}

TEST(SettingsKeys, TruthValueIsZeroOrOne) {
    const SettingKey& key = *FindSettingKey("convertbadgeroman");
    EXPECT_TRUE(key.accepts(0));
    EXPECT_TRUE(key.accepts(1));
    for (double value : {-1.0, 0.5, 1.5, 2.0, std::nan("")})
        EXPECT_FALSE(key.accepts(value)) << value;
}

TEST(SettingsKeys, PlatelessCloseBoxIsNoPartOfALook) {
    EXPECT_EQ(kPresetCloseBoxKey, "presetcloseboxbg");
    EXPECT_EQ(kPresetCrossOnly, 98);
    EXPECT_EQ(SettingsDefaults().objectForKey(kPresetCloseBoxKey), nullptr);
    EXPECT_EQ(kSettingsDomain, "com.quillon.tallyforge");
}

} // namespace
} // namespace tallyforge
