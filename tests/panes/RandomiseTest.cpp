// Randomise and reset: which settings, in which order, by which way, with which values.
#include "PanesFixture.h"

#include "panes/PaneController.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tallyforge::test {
namespace {

using Lines = std::vector<std::string>;

/// One line of the tables below: 'r' by the pane's row, 'd' straight into the domain; then what is drawn
/// ('i' a whole number, 'f' a fraction, 'c' a colour, 'a' an animation) with its bounds.
struct Drawn {
    const char* key;
    char via;
    char draw;
    float min = 0;
    float max = 0;
};
using Table = std::vector<Drawn>;

const Table kBadgeDraws{{"convertbadgeroman", 'r', 'i', 0, 1},
                        {"badgeshape", 'r', 'i', 0, 4},
                        {"badgesize", 'r', 'f', -1.5F, 2.25F},
                        {"badgerotation", 'r', 'f', 0, 360},
                        {"badgepos", 'r', 'i', 0, 8},
                        {"badgeoffsetX", 'r', 'f', -20, 20},
                        {"badgeoffsetY", 'r', 'f', -20, 20},
                        {"badgebgcol", 'd', 'c'},
                        {"badgealpha", 'd', 'f', 0, 100},
                        {"badgetxtcol", 'd', 'c'},
                        {"badgetxtsize", 'd', 'f', -1.5F, 2.25F},
                        {"badgetxtoffsetX", 'd', 'f', -20, 20},
                        {"badgetxtoffsetY", 'd', 'f', -20, 20},
                        {"badgebordercol", 'd', 'c'},
                        {"badgebordersize", 'd', 'f', 0, 5},
                        {"badgeglowcol", 'd', 'c'},
                        {"badgeglowalpha", 'd', 'f', 0, 100},
                        {"badgeanimtype", 'd', 'a'},
                        {"badgeanimspd", 'd', 'f', 0.2F, 4}};
const Table kCloseBoxDraws{{"closeboxshape", 'r', 'i', 0, 4},
                           {"closeboxsize", 'r', 'f', -1.5F, 1.5F},
                           {"closeboxrotation", 'r', 'f', 0, 360},
                           {"closeboxpos", 'r', 'i', 0, 8},
                           {"closeboxoffsetX", 'r', 'f', -20, 20},
                           {"closeboxoffsetY", 'r', 'f', -20, 20},
                           {"closeboxbgcol", 'd', 'c'},
                           {"closeboxalpha", 'd', 'f', 0, 100},
                           {"closeboxtxtcol", 'd', 'c'},
                           {"closeboxtxtsize", 'd', 'f', -1.5F, 2.25F},
                           {"closeboxtxtoffsetX", 'd', 'f', -20, 20},
                           {"closeboxtxtoffsetY", 'd', 'f', -20, 20},
                           {"closeboxbordercol", 'd', 'c'},
                           {"closeboxbordersize", 'd', 'f', 0, 6},
                           {"closeboxglowcol", 'd', 'c'},
                           {"closeboxglowalpha", 'd', 'f', 0, 100},
                           {"closeboxanimtype", 'd', 'a'},
                           {"closeboxanimspd", 'd', 'f', 0.2F, 4}};
const Table kNewDotDraws{{"newdotshape", 'r', 'i', 0, 3},      {"newdotsize", 'r', 'f', -1, 1},
                         {"newdotpos", 'r', 'i', 0, 3},        {"newdotoffsetX", 'r', 'f', -20, 20},
                         {"newdotoffsetY", 'r', 'f', -20, 20}, {"newdotbgcol", 'd', 'c'},
                         {"newdotalpha", 'd', 'f', 0, 100},    {"newdotanimtype", 'd', 'a'},
                         {"newdotanimspd", 'd', 'f', 0.2F, 4}};

struct Put {
    const char* key;
    char via;
    const char* value; // a number, or a colour's text
};
using Puts = std::vector<Put>;

const Puts kBadgeReset{{"badgeshape", 'r', "0"},      {"convertbadgeroman", 'r', "0"},
                       {"badgesize", 'r', "0"},       {"badgerotation", 'r', "0"},
                       {"badgepos", 'r', "2"},        {"badgeoffsetX", 'r', "0"},
                       {"badgeoffsetY", 'r', "0"},    {"badgebgcol", 'd', "#FF0000"},
                       {"badgealpha", 'd', "100"},    {"badgetxtcol", 'd', "#FFFFFF"},
                       {"badgetxtsize", 'd', "0"},    {"badgetxtoffsetX", 'd', "0"},
                       {"badgetxtoffsetY", 'd', "0"}, {"badgebordercol", 'd', "#FF0000"},
                       {"badgebordersize", 'd', "0"}, {"badgeglowcol", 'd', "#00FF00"},
                       {"badgeglowalpha", 'd', "0"},  {"badgeanimtype", 'd', "0"},
                       {"badgeanimspd", 'd', "1"}};
const Puts kCloseBoxReset{{"closeboxshape", 'r', "10"},          {"closeboxsize", 'r', "0"},
                          {"closeboxrotation", 'r', "0"},        {"closeboxpos", 'r', "0"},
                          {"closeboxoffsetX", 'r', "0"},         {"closeboxoffsetY", 'r', "0"},
                          {"closeboxbgcol", 'd', "#FFFFFF"},     {"closeboxalpha", 'd', "100"},
                          {"closeboxtxtcol", 'd', "#FFFFFF"},    {"closeboxtxtsize", 'd', "0"},
                          {"closeboxtxtoffsetX", 'd', "0"},      {"closeboxtxtoffsetY", 'd', "0"},
                          {"closeboxbordercol", 'd', "#000000"}, {"closeboxbordersize", 'd', "0"},
                          {"closeboxglowcol", 'd', "#FF0000"},   {"closeboxglowalpha", 'd', "0"},
                          {"closeboxanimtype", 'd', "0"},        {"closeboxanimspd", 'd', "1"}};
const Puts kNewDotReset{
    {"newdotshape", 'r', "0"},   {"newdotsize", 'r', "0"},     {"newdotpos", 'r', "0"},
    {"newdotoffsetX", 'r', "0"}, {"newdotoffsetY", 'r', "0"},  {"newdotbgcol", 'd', "none"},
    {"newdotalpha", 'd', "100"}, {"newdotanimtype", 'd', "0"}, {"newdotanimspd", 'd', "1"}};

struct Mark {
    const char* screen;
    const Table& draws;
    const Puts& reset;
    size_t count;
};
const std::vector<Mark> kMarks{{"badgeListController", kBadgeDraws, kBadgeReset, 19},
                               {"closeboxListController", kCloseBoxDraws, kCloseBoxReset, 18},
                               {"newdotListController", kNewDotDraws, kNewDotReset, 9}};

/// The repeatable numbers, made here a second time.
class Numbers {
  public:
    explicit Numbers(uint64_t seed) : state_(seed) {}
    uint32_t next() {
        state_ += 0x9E3779B97F4A7C15U;
        uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return static_cast<uint32_t>((z ^ (z >> 31)) >> 32);
    }

  private:
    uint64_t state_;
};

// Each step rounded to single precision.
float fraction(uint32_t r, float min, float max) {
    volatile float share = static_cast<float>(r);
    share = share * 2.3283064e-10F;
    volatile float width = max - min;
    volatile float product = width * share;
    volatile float sum = product + min;
    return sum >= max ? std::nextafter(max, min) : sum;
}

PropertyList draw(Numbers& numbers, const Drawn& drawn) {
    switch (drawn.draw) {
    case 'i':
        return PropertyList::floatNumber(
            static_cast<float>(numbers.next() % static_cast<uint32_t>(drawn.max + 1 - drawn.min)) +
            drawn.min);
    case 'f':
        return PropertyList::floatNumber(fraction(numbers.next(), drawn.min, drawn.max));
    case 'a':
        return PropertyList::floatNumber(static_cast<float>(numbers.next() % 13));
    default:
        break;
    }
    std::string color = "#";
    for (int i = 0; i < 6; ++i)
        color += "ABCDEF0123456789"[numbers.next() % 16];
    return PropertyList::string(color);
}

void addWrite(Lines& lines, const char* key, char via, const std::string& value) {
    lines.push_back("set " + kDomain + " " + key + " " + value);
    if (via == 'r') lines.push_back(std::string("reload-specifier ") + key);
}

void addEnd(Lines& lines) {
    lines.push_back("synchronize " + kDomain);
    lines.push_back("synchronize-defaults");
    lines.insert(lines.end(), kAnnounced.begin(), kAnnounced.end());
}

std::shared_ptr<MarkPaneController> markPane(const char* name) {
    const ObjCClass* cls = NSClassFromString(name);
    return cls ? std::dynamic_pointer_cast<MarkPaneController>(cls->alloc()) : nullptr;
}

using RandomiseTest = PanesTest;

TEST_F(RandomiseTest, DrawsEverySettingInOrderAndAnnouncesOnce) {
    for (const Mark& mark : kMarks) {
        SCOPED_TRACE(mark.screen);
        ASSERT_EQ(mark.draws.size(), mark.count);
        for (uint64_t seed : {0ULL, 1ULL, 7ULL, 0xFFFFFFFFFFFFFFFFULL}) {
            auto screen = markPane(mark.screen);
            ASSERT_NE(screen, nullptr);
            told.clear();
            SeedRandomSource(seed);
            screen->randomize();

            Numbers numbers(seed);
            Lines expected;
            std::map<std::string, PropertyList> values;
            for (const Drawn& drawn : mark.draws) {
                PropertyList value = draw(numbers, drawn);
                addWrite(expected, drawn.key, drawn.via, value.description());
                values.insert_or_assign(drawn.key, value);
            }
            addEnd(expected);
            EXPECT_EQ(told, expected) << seed;
            CFPreferencesForgetAll();
            for (const auto& [key, value] : values)
                EXPECT_EQ(stored(key), value) << key;
        }
    }
}

TEST_F(RandomiseTest, EveryDrawStaysWithinItsBounds) {
    SeedRandomSource(99);
    std::map<std::string, std::map<float, int>> codes;
    constexpr int kRounds = 60;
    for (const Mark& mark : kMarks) {
        for (int round = 0; round < kRounds; ++round) {
            auto screen = markPane(mark.screen);
            screen->randomize();
            for (const Drawn& drawn : mark.draws) {
                auto value = stored(drawn.key);
                ASSERT_TRUE(value) << drawn.key;
                if (drawn.draw == 'c') {
                    const std::string* text = value->asString();
                    ASSERT_NE(text, nullptr);
                    ASSERT_EQ(text->size(), 7U);
                    ASSERT_EQ(text->find_first_not_of("0123456789ABCDEF", 1), std::string::npos) << *text;
                    ASSERT_EQ(text->front(), '#');
                    continue;
                }
                ASSERT_EQ(value->kind(), PropertyList::Kind::floatNumber) << drawn.key;
                float number = value->floatValue();
                float max = drawn.draw == 'a' ? 12 : drawn.max;
                ASSERT_GE(number, drawn.min) << drawn.key;
                if (drawn.draw == 'f') {
                    ASSERT_LT(number, max) << drawn.key;
                    continue;
                }
                ASSERT_LE(number, max) << drawn.key;
                ASSERT_EQ(number, std::trunc(number)) << drawn.key;
                ++codes[drawn.key][number];
            }
        }
    }
    // The seed is fixed, so that no code is missing by chance.
    for (const char* key : {"badgepos", "closeboxpos"})
        EXPECT_EQ(codes[key].size(), 9U) << key;
    for (const char* key : {"badgeshape", "closeboxshape"})
        EXPECT_EQ(codes[key].size(), 5U) << key;
    for (const char* key : {"newdotshape", "newdotpos"})
        EXPECT_EQ(codes[key].size(), 4U) << key;
    EXPECT_EQ(codes["convertbadgeroman"].size(), 2U);
}

TEST_F(RandomiseTest, RowsHoldTheirNewValuesAtOnce) {
    for (const Mark& mark : kMarks) {
        auto screen = markPane(mark.screen);
        screen->randomize();
        for (const Drawn& drawn : mark.draws) {
            if (drawn.via != 'r') {
                EXPECT_EQ(screen->specifierForID(drawn.key), nullptr) << drawn.key;
                continue;
            }
            auto row = screen->specifierForID(drawn.key);
            ASSERT_NE(row, nullptr) << drawn.key;
            ASSERT_NE(row->propertyForKey("value"), nullptr) << drawn.key;
            EXPECT_EQ(*row->propertyForKey("value"), stored(drawn.key)) << drawn.key;
            EXPECT_EQ(row->performGetter(), stored(drawn.key)) << drawn.key;
        }
    }
}

TEST_F(RandomiseTest, AnotherMarksSettingsStay) {
    markPane("closeboxListController")->randomize();
    auto keys = CFPreferencesCopyKeyList(kDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    ASSERT_TRUE(keys);
    EXPECT_EQ(keys->size(), 18U);
    for (const std::string& key : *keys)
        EXPECT_TRUE(key.starts_with("closebox")) << key;
}

TEST_F(RandomiseTest, RomanNumeralsThatGoAwayDoNotPutTheCountBack) {
    auto badge = markPane("badgeListController");
    for (int round = 0; round < 8; ++round) {
        choose(*badge, "convertbadgeroman", PropertyList::boolean(true));
        told.clear();
        round % 2 == 0 ? badge->reset() : badge->randomize();
        EXPECT_EQ(std::count(told.begin(), told.end(), "darwin com.quillon.tallyforge.convertArabic"), 0);
    }
}

TEST_F(RandomiseTest, ResetWritesItsValuesInOrderAndAnnouncesOnce) {
    for (const Mark& mark : kMarks) {
        SCOPED_TRACE(mark.screen);
        ASSERT_EQ(mark.reset.size(), mark.count);
        auto screen = markPane(mark.screen);
        screen->randomize();
        told.clear();
        screen->reset();

        Lines expected;
        for (const Put& put : mark.reset)
            addWrite(expected, put.key, put.via, put.value);
        addEnd(expected);
        EXPECT_EQ(told, expected);
        CFPreferencesForgetAll();
        for (const Put& put : mark.reset) {
            auto value = stored(put.key);
            ASSERT_TRUE(value) << put.key;
            bool color = std::string(put.key).ends_with("col");
            EXPECT_EQ(value->kind(), color ? PropertyList::Kind::string : PropertyList::Kind::floatNumber)
                << put.key;
            EXPECT_EQ(value->description(), put.value) << put.key;
        }
    }
}

TEST_F(RandomiseTest, ResetCoversWhatIsRandomised) {
    for (const Mark& mark : kMarks) {
        auto screen = markPane(mark.screen);
        screen->randomize();
        screen->reset();
        for (const Drawn& drawn : mark.draws) {
            auto put = std::find_if(mark.reset.begin(), mark.reset.end(), [&](const Put& candidate) {
                return std::string(candidate.key) == drawn.key;
            });
            ASSERT_NE(put, mark.reset.end()) << drawn.key;
            EXPECT_EQ(put->via, drawn.via) << drawn.key;
            EXPECT_EQ(stored(drawn.key)->description(), put->value) << drawn.key;
        }
    }
}

TEST_F(RandomiseTest, TheChoiceOfPlateIsLeftAlone) {
    auto closeBox = markPane("closeboxListController");
    choose(*closeBox, "presetcloseboxbg", PropertyList::integer(98));
    closeBox->randomize();
    EXPECT_EQ(stored("presetcloseboxbg"), PropertyList::floatNumber(98));
    closeBox->reset();
    EXPECT_EQ(stored("presetcloseboxbg"), PropertyList::floatNumber(98));
}

TEST_F(RandomiseTest, WithoutItsListTheRowsSettingsStayAndTheOthersAreWritten) {
    std::filesystem::remove(device_.file(kBundle + "newdotprefs.plist"));
    markPane("newdotListController")->reset();
    EXPECT_EQ(told, (Lines{"set " + kDomain + " newdotbgcol none", "set " + kDomain + " newdotalpha 100",
                           "set " + kDomain + " newdotanimtype 0", "set " + kDomain + " newdotanimspd 1",
                           "synchronize " + kDomain, "synchronize-defaults", kAnnounced[0], kAnnounced[1]}));
}

} // namespace
} // namespace tallyforge::test
