// Random values: what each random number stands for, and how a drawn value is written.
#include "SettingsFixture.h"

#include "corefoundation/CFPreferences.h"
#include "foundation/Random.h"
#include "preferences/PSListController.h"

#include <array>
#include <cmath>
#include <map>

namespace tallyforge::test {
namespace {

constexpr uint32_t kMiddle = 0x80000000u;
constexpr uint32_t kLast = 0xFFFFFFFFu;

float whole(uint32_t r, float min, float max) {
    return RandomValue(r, DrawMode::wholeNumber, min, max);
}
float fraction(uint32_t r, float min, float max) {
    return RandomValue(r, DrawMode::fraction, min, max);
}

// Every step rounded to single precision, whatever the compiler would do with a longer expression.
float singlePrecision(uint32_t r, float min, float max) {
    volatile float share = static_cast<float>(r);
    share = share * 2.3283064e-10f;
    volatile float width = max - min;
    volatile float product = width * share;
    volatile float sum = product + min;
    return sum;
}

// 2^31 and 2^32 - 1 modulo 5 are 3 and 0, modulo 9 are 2 and 3, modulo 13 are 11 and 8, modulo 4 are 0 and 3,
// modulo 2 are 0 and 1, modulo 41 are 39 and 36.
TEST(RandomValue, WholeNumbersAreTheRemainder) {
    struct Case {
        float min, max;
        std::array<float, 4> expected; // for 0, 1, 2^31, 2^32 - 1
    };
    for (const Case& c : {Case{0, 4, {0, 1, 3, 0}}, Case{0, 8, {0, 1, 2, 3}}, Case{0, 12, {0, 1, 11, 8}},
                          Case{0, 3, {0, 1, 0, 3}}, Case{0, 1, {0, 1, 0, 1}},
                          Case{-20, 20, {-20, -19, 19, 16}}, Case{7, 7, {7, 7, 7, 7}}}) {
        SCOPED_TRACE(testing::Message() << c.min << " to " << c.max);
        EXPECT_EQ(whole(0, c.min, c.max), c.expected[0]);
        EXPECT_EQ(whole(1, c.min, c.max), c.expected[1]);
        EXPECT_EQ(whole(kMiddle, c.min, c.max), c.expected[2]);
        EXPECT_EQ(whole(kLast, c.min, c.max), c.expected[3]);
    }
}

// The count is the whole part of 2.25 + 1 + 1.5, which is 4, and the lowest the whole part of -1.5.
TEST(RandomValue, WholeNumbersBetweenFractionsTakeTheirWholeParts) {
    for (uint32_t r = 0; r < 12; ++r)
        EXPECT_EQ(whole(r, -1.5f, 2.25f), float(r % 4) - 1) << r;
}

TEST(RandomValue, EveryCodeComesEquallyOften) {
    for (const SettingKey& key : SettingsKeyTable()) {
        if (key.type != SettingType::code && key.type != SettingType::boolean) continue;
        SCOPED_TRACE(key.name);
        const uint32_t count = uint32_t(key.max) + 1;
        std::map<float, int> seen;
        for (uint32_t r = 0; r < count * 100; ++r)
            ++seen[whole(kMiddle + r, key.min, key.max)];
        ASSERT_EQ(seen.size(), count);
        for (uint32_t value = 0; value < count; ++value)
            EXPECT_EQ(seen[float(value)], 100) << value;
    }
}

TEST(RandomValue, FractionsAreComputedInSinglePrecision) {
    for (const SettingKey& key : SettingsKeyTable()) {
        if (key.type != SettingType::number) continue;
        SCOPED_TRACE(key.name);
        EXPECT_EQ(fraction(0, key.min, key.max), key.min);
        EXPECT_EQ(fraction(kMiddle, key.min, key.max), singlePrecision(kMiddle, key.min, key.max));
        for (uint32_t r :
             {1u, 255u, 65537u, 0x12345678u, 0x7FFFFFFFu, 0x80000081u, 0xDEADBEEFu, 0xFFFFFE00u}) {
            float expected = singlePrecision(r, key.min, key.max);
            if (expected < key.max) {
                EXPECT_EQ(fraction(r, key.min, key.max), expected) << r;
            }
        }
    }
    EXPECT_EQ(fraction(kMiddle, 0, 100), 50.f);
    EXPECT_EQ(fraction(kMiddle, -20, 20), 0.f);
    EXPECT_EQ(fraction(0x40000000u, 0, 360), 90.f);
}

// Numbers of the highest shares round to the maximum itself; they must stay just below it.
TEST(RandomValue, FractionsNeverReachTheMaximum) {
    for (const SettingKey& key : SettingsKeyTable()) {
        if (key.type != SettingType::number) continue;
        SCOPED_TRACE(key.name);
        float highest = std::nextafter(key.max, key.min);
        auto check = [&](uint32_t r) {
            float value = fraction(r, key.min, key.max);
            ASSERT_LT(value, key.max) << r;
            ASSERT_GE(value, key.min) << r;
            ASSERT_EQ(value, std::min(highest, singlePrecision(r, key.min, key.max))) << r;
        };
        for (uint32_t back = 0; back < 5000; ++back)
            check(kLast - back);
        for (uint32_t bit = 12; bit < 32; ++bit)
            check(kLast - (1u << bit));
    }
}

TEST(RandomValue, FractionsOfAnEmptyRangeStayInPlace) {
    EXPECT_EQ(fraction(0, 3, 3), 3.f);
}

using RandomWrite = SettingsFixture;

TEST_F(RandomWrite, IsADrawStoredAsFloatAndNotYetSynchronised) {
    for (bool isFloat : {true, false}) {
        SeedRandomSource(42);
        uint32_t r = arc4random();
        SeedRandomSource(42);
        bool synchronised = false;
        std::vector<std::string> set;
        CFPreferencesSetTrace(
            {.set = [&](std::string_view domain, std::string_view key,
                        const PropertyList*) { set.push_back(std::string(domain) + " " + std::string(key)); },
             .synchronize = [&](std::string_view) { synchronised = true; }});
        WriteRandomValue("badgepos", isFloat, 0, 8);
        CFPreferencesSetTrace({});

        float expected = isFloat ? singlePrecision(r, 0, 8) : float(r % 9);
        EXPECT_EQ(CFPreferencesCopyAppValue("badgepos", kSettingsDomain),
                  PropertyList::floatNumber(expected));
        EXPECT_EQ(set, std::vector<std::string>{"com.quillon.tallyforge badgepos"});
        EXPECT_FALSE(synchronised);
    }
}

TEST_F(RandomWrite, DrawsEachOfTheNineCodesAndNeverATenth) {
    SeedRandomSource(7);
    std::map<float, int> seen;
    for (int i = 0; i < 9000; ++i) {
        WriteRandomValue("badgepos", false, 0, 8);
        ++seen[CFPreferencesCopyAppValue("badgepos", kSettingsDomain)->floatValue()];
    }
    ASSERT_EQ(seen.size(), 9u);
    // One code's count has a deviation of the root of 9000 / 9 x 8 / 9, which is 29.8.
    for (int code = 0; code <= 8; ++code)
        EXPECT_NEAR(seen[float(code)], 1000, 5 * 29.8) << code;
}

/// A pane with a row for "badgesize" which notes when the row is shown again, and what was stored by then.
class Pane final : public PSListController {
  public:
    Pane() {
        specifiers_.push_back(row("other", "badgealpha"));
        specifiers_.push_back(row("badgesize", "badgesize"));
    }
    void reloadSpecifier(const PSSpecifierRef& specifier) override {
        reloaded.push_back(specifier);
        storedAtReload = CFPreferencesCopyAppValue("badgesize", kSettingsDomain);
        pendingAtReload = CFPreferencesHasPending(kSettingsDomain);
    }

    std::vector<PSSpecifierRef> reloaded;
    std::optional<PropertyList> storedAtReload;
    bool pendingAtReload = true;

  private:
    static PSSpecifierRef row(const char* identifier, const char* key) {
        Dictionary properties;
        properties.setObjectForKey(text(identifier), "id");
        properties.setObjectForKey(text(key), "key");
        properties.setObjectForKey(text(std::string(kSettingsDomain)), "defaults");
        return std::make_shared<PSSpecifier>(std::move(properties));
    }
};

TEST_F(RandomWrite, ThroughARowIsStoredBeforeTheRowIsShownAgain) {
    for (bool isFloat : {true, false}) {
        Pane pane;
        SeedRandomSource(5);
        uint32_t r = arc4random();
        SeedRandomSource(5);
        SetRandomSpecifierValue("badgesize", pane, isFloat, -1, 2);

        float expected = isFloat ? singlePrecision(r, -1, 2) : float(r % 4) - 1;
        ASSERT_EQ(pane.reloaded.size(), 1u);
        EXPECT_EQ(pane.reloaded[0], pane.specifiers()[1]);
        EXPECT_EQ(pane.storedAtReload, PropertyList::floatNumber(expected));
        EXPECT_TRUE(pane.pendingAtReload); // the caller saves once, when it has drawn everything
        EXPECT_FALSE(CFPreferencesCopyAppValue("badgealpha", kSettingsDomain));
    }
}

TEST_F(RandomWrite, WithoutItsRowStoresNothing) {
    Pane pane;
    SetRandomSpecifierValue("closeboxsize", pane, true, -1.5f, 1.5f);
    EXPECT_FALSE(CFPreferencesCopyKeyList(kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    for (const PSSpecifierRef& row : pane.reloaded)
        EXPECT_EQ(row, nullptr);
}

} // namespace
} // namespace tallyforge::test
