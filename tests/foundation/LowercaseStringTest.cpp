// The names of themes' files are their names in small letters, in any script.

#include "foundation/LowercaseString.h"

#include <gtest/gtest.h>

namespace tallyforge::testing {
namespace {

TEST(LowercaseString, EveryScriptWithCapitalsHasSmallLetters) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"My Theme 1", "my theme 1"},
        {"[@Z`]", "[@z`]"}, // the neighbours of the letters
        {"ÀÉÎÕÜØÞ", "àéîõüøþ"},
        {"ŁÓDŹ", "łódź"},
        {"ΑΘΗΝΑΣ", "αθηνας"}, // at a word's end
        {"ΣΟΣ, ΣΟΣ.", "σος, σος."},
        {"Σ ΑΣ'Α Σ1", "σ ασ'α σ1"},
        {"Α\u0301Σ\u0301", "α\u0301ς\u0301"},
        {"МОСКВА", "москва"},
        {"ԵՐԵՎԱՆ", "երեվան"},
        {"ＷＩＤＥ", "ｗｉｄｅ"},
        {"𐐀", "𐐨"}, // beyond the first 65,536
        {"İI", "i\u0307i"},
        {"ẞß", "ßß"},
        {"夕焼け 🌅 שלום", "夕焼け 🌅 שלום"},
    };
    for (const auto& [text, lower] : cases)
        EXPECT_EQ(NSStringLowercaseString(text), lower) << text;
}

TEST(LowercaseString, BytesThatAreNoTextStayAsTheyAre) {
    EXPECT_EQ(NSStringLowercaseString("A\xFF\xC3"), "a\xFF\xC3");
    EXPECT_EQ(NSStringLowercaseString(std::string("A\0B", 3)), std::string("a\0b", 3));
}

} // namespace
} // namespace tallyforge::testing
