// Colour strings: how one is read, written and drawn at random.
#include "SettingsFixture.h"

#include "foundation/Random.h"
#include "settings/ColorValues.h"

#include <map>
#include <set>

namespace tallyforge::test {
namespace {

using namespace std::string_literals;

testing::AssertionResult reads(const std::string& text, int red, int green, int blue) {
    return isBytes(ColorFromHexString(text), red, green, blue) << " for \"" << text << "\"";
}

TEST(ColorFromHexString, SixDigitsInEitherCase) {
    EXPECT_TRUE(reads("#00FF00", 0, 255, 0));
    EXPECT_TRUE(reads("#00ff00", 0, 255, 0));
    EXPECT_TRUE(reads("#123456", 0x12, 0x34, 0x56));
    EXPECT_TRUE(reads("#aBcDeF", 0xAB, 0xCD, 0xEF));
    EXPECT_TRUE(reads("#FFFFFF", 255, 255, 255));
}

TEST(ColorFromHexString, SkipsTheFirstCharacterWhateverItIs) {
    EXPECT_TRUE(reads("FF0000", 15, 0, 0));
    EXPECT_TRUE(reads("00FF00", 0, 255, 0)); // a lost zero changes nothing
    EXPECT_TRUE(reads("?00FF00", 0, 255, 0));
    EXPECT_TRUE(reads(" 00FF00", 0, 255, 0));
    EXPECT_TRUE(reads("\u00E900FF00", 0, 255, 0)); // two bytes, one character
    EXPECT_TRUE(reads("\u20AC00FF00", 0, 255, 0)); // three bytes
    EXPECT_TRUE(reads("##00FF00", 0, 0, 0));       // only one is skipped
    EXPECT_TRUE(reads("\u00E9\u20AC00FF00", 0, 0, 0));
}

// Bytes that are no character count one by one, and none of them is a digit or white space.
TEST(ColorFromHexString, BrokenBytesAreNoDigitsAndNoWhiteSpace) {
    EXPECT_TRUE(reads("\xC0\xB4"
                      "00FF00",
                      0, 0, 0)); // a digit in a longer form than its own
    EXPECT_TRUE(reads("#\x85"
                      "00FF00",
                      0, 0, 0)); // half of a line break
    EXPECT_TRUE(reads("#\xC0\xA0"
                      "00FF00",
                      0, 0, 0)); // a blank in a longer form
    EXPECT_TRUE(reads("\xE9"
                      "00FF00",
                      0, 255, 0)); // skipped alone
}

// A picture character takes two positions of the string, so the scan begins in its middle.
TEST(ColorFromHexString, StopsInTheMiddleOfAPictureCharacter) {
    EXPECT_TRUE(reads("\U0001F60000FF00", 0, 0, 0));
}

TEST(ColorFromHexString, NothingToReadIsBlack) {
    for (const char* text : {"", "#", "x", "#G", "#-1", "#+FF", "#,FF", "##", "# ", "#\u00E9"})
        EXPECT_TRUE(reads(text, 0, 0, 0));
    for (const char* word : {"none", "transparent", "automatic", "automatic_dark", "automatic_bright"})
        EXPECT_TRUE(reads(word, 0, 0, 0));
}

TEST(ColorFromHexString, StopsAtTheFirstOtherCharacter) {
    EXPECT_TRUE(reads("#FFG000", 0, 0, 255));
    EXPECT_TRUE(reads("#12 3456", 0, 0, 0x12));
    EXPECT_TRUE(reads("#1234,56", 0, 0x12, 0x34));
    EXPECT_TRUE(reads("#FF\0FF"s, 0, 0, 255));
    EXPECT_TRUE(reads("#FF\u00A000", 0, 0, 255));
    EXPECT_TRUE(reads("#\uFF11\uFF12", 0, 0, 0)); // full-width digits are none
}

TEST(ColorFromHexString, SkipsLeadingWhiteSpace) {
    for (const char* space :
         {" ", "\t", "\n", "\v", "\f", "\r", "   \t\r\n", "\u0085", "\u00A0", "\u1680", "\u2000", "\u2003",
          "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000", " \u00A0\u3000\n"})
        EXPECT_TRUE(reads("#"s + space + "FF8000", 255, 128, 0));
    EXPECT_TRUE(reads("# \t0x00FF00", 0, 255, 0));
    // Neither a joiner nor a byte order mark is white space.
    EXPECT_TRUE(reads("#\u200DFF8000", 0, 0, 0));
    EXPECT_TRUE(reads("#\uFEFFFF8000", 0, 0, 0));
}

TEST(ColorFromHexString, AcceptsOnePrefix) {
    EXPECT_TRUE(reads("#0x00FF00", 0, 255, 0));
    EXPECT_TRUE(reads("#0X00ff00", 0, 255, 0));
    EXPECT_TRUE(reads("#0x7", 0, 0, 7));
    EXPECT_TRUE(reads("#0x", 0, 0, 0));
    EXPECT_TRUE(reads("#0xG", 0, 0, 0));
    EXPECT_TRUE(reads("#0x 12", 0, 0, 0));
    EXPECT_TRUE(reads("#0x0x12", 0, 0, 0));
    EXPECT_TRUE(reads("#00x12", 0, 0, 0));
    EXPECT_TRUE(reads("#x12", 0, 0, 0));
    EXPECT_TRUE(reads("#0", 0, 0, 0));
    EXPECT_TRUE(reads("0x123456", 0, 0, 0)); // the first digit is skipped, and what follows is no digit
}

TEST(ColorFromHexString, MoreDigitsKeepTheLastSix) {
    EXPECT_TRUE(reads("#FF000080", 0, 0, 128));
    EXPECT_TRUE(reads("#12345678", 0x34, 0x56, 0x78));
    EXPECT_TRUE(reads("#1234567", 0x23, 0x45, 0x67));
    EXPECT_TRUE(reads("#FFFFFFFE", 255, 255, 254));
    EXPECT_TRUE(reads("#00000000000000000000112233", 0x11, 0x22, 0x33)); // zeros do not overflow
    EXPECT_TRUE(reads("#123", 0, 1, 0x23));
}

TEST(ColorFromHexString, OverflowIsWhite) {
    EXPECT_TRUE(reads("#100000000", 255, 255, 255));
    EXPECT_TRUE(reads("#0x100000000", 255, 255, 255));
    EXPECT_TRUE(reads("#100000000000000000000000000", 255, 255, 255)); // beyond 64 bits as well
    EXPECT_TRUE(reads("#123456789 and more", 255, 255, 255));
}

TEST(HexStringFromColor, CutsToWholeNumbersInUpperCase) {
    EXPECT_EQ(HexStringFromColor(255, 127.9, 0), "#FF7F00");
    EXPECT_EQ(HexStringFromColor(0, 0, 0), "#000000");
    EXPECT_EQ(HexStringFromColor(255, 255, 255), "#FFFFFF");
    EXPECT_EQ(HexStringFromColor(0.999, 15.999, 254.999), "#000FFE");
    EXPECT_EQ(HexStringFromColor(10, 171, 205), "#0AABCD");
}

TEST(HexStringFromColor, IsReadBackAsTheSameBytes) {
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_TRUE(reads(HexStringFromColor(byte, 255 - byte, byte / 2), byte, 255 - byte, byte / 2));
}

TEST(RandomColorString, FollowsTheRandomSource) {
    const std::string alphabet = "ABCDEF0123456789";
    for (uint64_t seed : {1u, 2u, 12345u}) {
        SeedRandomSource(seed);
        std::string expected = "#";
        for (int i = 0; i < 6; ++i)
            expected += alphabet[arc4random_uniform(16)];
        SeedRandomSource(seed);
        EXPECT_EQ(RandomColorString(), expected);
    }
    UnseedRandomSource();
}

// Each character's count in 120000 has a deviation of the root of 120000 x 15 / 256, which is 83.9.
TEST(RandomColorString, EveryDigitIsEquallyLikelyInEveryPlace) {
    SeedRandomSource(99);
    std::map<char, int> seen;
    std::map<std::pair<size_t, char>, int> seenInPlace;
    for (int i = 0; i < 20000; ++i) {
        std::string color = RandomColorString();
        ASSERT_EQ(color.size(), 7u);
        ASSERT_EQ(color[0], '#');
        for (size_t place = 1; place < 7; ++place) {
            ++seen[color[place]];
            ++seenInPlace[{place, color[place]}];
        }
    }
    UnseedRandomSource();
    EXPECT_EQ(seen.size(), 16u);
    for (char digit : "0123456789ABCDEF"s) {
        EXPECT_NEAR(seen[digit], 7500, 5 * 83.9) << digit;
        for (size_t place = 1; place < 7; ++place)
            EXPECT_NEAR((seenInPlace[{place, digit}]), 1250, 5 * 34.3) << digit << " at " << place;
    }
}

TEST(IsColorString, IsTheFormThatPeopleWrite) {
    for (const char* good : {"#000000", "#ffffff", "#1a2B3c", "none", "transparent", "automatic",
                             "automatic_dark", "automatic_bright"})
        EXPECT_TRUE(IsColorString(good)) << good;
    for (const char* bad : {"", "#", "#12345", "#1234567", "123456", "#GGGGGG", "#12345 ", " #123456", "None",
                            "automatic_", "#12 456", "red", "0x123456", "#0x1234"})
        EXPECT_FALSE(IsColorString(bad)) << bad;
    EXPECT_FALSE(IsColorString("#1234\0006"s));
    EXPECT_FALSE(IsColorString("none\0"s));
}

} // namespace
} // namespace tallyforge::test
