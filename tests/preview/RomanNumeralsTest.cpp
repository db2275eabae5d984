#include "preview/RomanNumerals.h"

#include <gtest/gtest.h>

namespace tallyforge {
namespace {

TEST(RomanNumeralsTest, EveryLetterOfTheTable) {
    const std::pair<uint32_t, const char*> table[] = {
        {1000, "M"}, {900, "CM"}, {500, "D"}, {400, "CD"}, {100, "C"}, {90, "XC"}, {50, "L"},
        {40, "XL"},  {10, "X"},   {9, "IX"},  {5, "V"},    {4, "IV"},  {1, "I"}};
    for (auto [n, letters] : table)
        EXPECT_EQ(RomanNumeral(n), letters);
}

TEST(RomanNumeralsTest, LettersAreAppendedFromTheLargestOn) {
    EXPECT_EQ(RomanNumeral(6), "VI");
    EXPECT_EQ(RomanNumeral(3), "III");
    EXPECT_EQ(RomanNumeral(14), "XIV");
    EXPECT_EQ(RomanNumeral(99), "XCIX");
    EXPECT_EQ(RomanNumeral(1984), "MCMLXXXIV");
    EXPECT_EQ(RomanNumeral(3999), "MMMCMXCIX");
    EXPECT_EQ(RomanNumeral(888), "DCCCLXXXVIII");
}

TEST(RomanNumeralsTest, NothingIsTheEmptyText) {
    EXPECT_EQ(RomanNumeral(0), "");
}

TEST(RomanNumeralsTest, ThereIsNoUpperLimit) {
    EXPECT_EQ(RomanNumeral(4000), "MMMM");
    EXPECT_EQ(RomanNumeral(12'001), "MMMMMMMMMMMMI");
}

TEST(RomanNumeralsTest, ANegativeCountReadsAsAHugeOne) {
    // 4,294,967,295 is 4,294,967 thousands and 295.
    std::string letters = RomanNumeral(static_cast<uint32_t>(-1));
    ASSERT_EQ(letters.size(), 4'294'967u + 5);
    EXPECT_EQ(letters.find_first_not_of('M'), 4'294'967u);
    EXPECT_EQ(letters.substr(4'294'967), "CCXCV");
}

} // namespace
} // namespace tallyforge
