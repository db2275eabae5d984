#include "foundation/LocalizedCompare.h"

#include "TemporaryDevice.h"

#include <algorithm>
#include <random>
#include <vector>

namespace tallyforge {
namespace {

class LocalizedCompareTest : public TemporaryDevice {
  protected:
    void SetUp() override {
        TemporaryDevice::SetUp();
        for (const char* name : {"LC_ALL", "LC_COLLATE", "LANG"})
            unsetenv(name);
        LocalizedCompareForgetLocale();
    }
    void TearDown() override {
        LocalizedCompareForgetLocale();
        TemporaryDevice::TearDown();
    }
    void locale(const std::string& name) const {
        put("/var/mobile/Library/Preferences/.GlobalPreferences.plist",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>AppleLocale</key><string>" + name +
                "</string></dict></plist>");
        LocalizedCompareForgetLocale();
    }
};

struct Pair {
    const char* first;
    const char* second;
    const char* why;
};

// Each first one comes before its second one.
constexpr Pair kPairs[] = {
    {"App 2", "App 10", "digits by their value"},
    {"App 9", "App 009a", "nine, and then a letter more"},
    {"App 99", "App 100", "digits by their value"},
    {"2", "10", "digits alone"},
    {"4913", "40000", "digits alone"},
    {"1.9", "1.10", "each run by itself"},
    {"9", "Apple", "digits before letters"},
    {"a20b2", "a20b10", "the second run decides"},
    {"99999999999999999999999998", "99999999999999999999999999", "more digits than a number holds"},
    {"apple", "Banana", "letters count before case"},
    {"Apple", "banana", "letters count before case"},
    {"BANANA", "cherry", "letters count before case"},
    {"mail", "Mail", "the same but for case: small first"},
    {"MAIL", "mailbox", "a beginning comes first, whatever its case"},
    {"Ａpple", "Banana", "a wide letter is a letter"},
    {"apple", "ａpplf", "letters count before width"},
    {"App 2", "App １０", "wide digits by their value"},
    {"Eclair", "Éclair", "the same but for the accent"},
    {"Éclair", "Eclairs", "letters count before accents"},
    {"Éclair à Propos", "Field", "an accented letter stands by its plain one"},
    {"Zebra", "Ωmega", "Latin before Greek"},
    {"Zebra", "星図帳", "Latin before Han"},
    {"", "a", "nothing comes first"},
    {"", " ", "nothing comes first"},
    {"Notes", "Notes ", "a space is a character"},
    {"Notes 2", "Notes2", "a space comes before a digit"},
};

TEST_F(LocalizedCompareTest, OrdersAsPeopleExpectIt) {
    for (const Pair& pair : kPairs) {
        EXPECT_LT(localizedStandardCompare(pair.first, pair.second), 0)
            << pair.first << " / " << pair.second << ": " << pair.why;
        EXPECT_GT(localizedStandardCompare(pair.second, pair.first), 0)
            << pair.second << " / " << pair.first << ": " << pair.why;
    }
}

TEST_F(LocalizedCompareTest, OnlyTheSameTextIsEqual) {
    for (const char* text : {"", "Mail", "Éclair", "星図帳", "\xFF\xFE"})
        EXPECT_EQ(localizedStandardCompare(text, text), 0) << text;
    constexpr Pair alike[] = {
        {"E\u0301clair", "\u00C9clair", "an accent of its own and one with its letter"},
        {"7", "007", "the same value"},
        {"Mail", "Mail\u200B", "a character without weight"},
        {"\xFF", "\xFE", "no characters at all"},
        {"ﾊﾝ", "ハン", "the same but for width"},
    };
    for (const Pair& pair : alike) {
        const int order = localizedStandardCompare(pair.first, pair.second);
        EXPECT_NE(order, 0) << pair.why;
        EXPECT_EQ(localizedStandardCompare(pair.second, pair.first), -order) << pair.why;
    }
}

TEST_F(LocalizedCompareTest, AnEmbeddedZeroEndsNothing) {
    using namespace std::string_view_literals;
    EXPECT_LT(localizedStandardCompare("a\0b"sv, "a\0c"sv), 0);
}

TEST_F(LocalizedCompareTest, TheOrderIsTotal) {
    std::mt19937 random(7);
    const std::vector<std::string> pieces{"a", "A", "ａ", "á", "a\u0301", "2",    "10", "010",
                                          " ", "ß", "ss", "-", "\u200B",  "\xFF", "ﾊ",  "ハ"};
    std::vector<std::string> names;
    for (int i = 0; i < 120; ++i) {
        std::string& name = names.emplace_back();
        for (auto left = random() % 4; left > 0; --left)
            name += pieces[random() % pieces.size()];
    }
    std::ranges::sort(names, [](const auto& a, const auto& b) { return localizedStandardCompare(a, b) < 0; });
    for (size_t i = 0; i < names.size(); ++i) {
        for (size_t j = i + 1; j < names.size(); ++j) {
            const int order = localizedStandardCompare(names[i], names[j]);
            ASSERT_EQ(order, names[i] == names[j] ? 0 : -1) << names[i] << " / " << names[j];
        }
    }
}

TEST_F(LocalizedCompareTest, TheLocaleDecides) {
    EXPECT_LT(localizedStandardCompare("Ärger", "Zorn"), 0);
    locale("sv_SE"); // ä comes after z there
    EXPECT_GT(localizedStandardCompare("Ärger", "Zorn"), 0);
    locale("qq_QQ");
    EXPECT_LT(localizedStandardCompare("Ärger", "Zorn"), 0);
}

TEST_F(LocalizedCompareTest, TheProgrammersLocaleSortsAsPeopleDo) {
    setenv("LC_ALL", "C", 1);
    LocalizedCompareForgetLocale();
    EXPECT_LT(localizedStandardCompare("apple", "Banana"), 0);
}

} // namespace
} // namespace tallyforge
