// A setting is stored as one kind of value and read as another: switches are floats, codes are floats,
// colours are strings. How a value answers must therefore be exact, for every kind and for every text.

#include "foundation/PropertyList.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace tallyforge {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(NSStringTest, IntValueTakesWhiteSpaceOneSignAndDigits) {
    EXPECT_EQ(NSStringIntValue("12"), 12);
    EXPECT_EQ(NSStringIntValue(" \t\n\r+12x"), 12);
    EXPECT_EQ(NSStringIntValue("-7.9"), -7);
    EXPECT_EQ(NSStringIntValue("0x10"), 0);
    EXPECT_EQ(NSStringIntValue("--1"), 0);
    EXPECT_EQ(NSStringIntValue("- 1"), 0);
    EXPECT_EQ(NSStringIntValue("#FF0000"), 0);
    EXPECT_EQ(NSStringIntValue(""), 0);
}

TEST(NSStringTest, IntValueIsHeldTo32Bits) {
    EXPECT_EQ(NSStringIntValue("2147483647"), 2147483647);
    EXPECT_EQ(NSStringIntValue("2147483648"), 2147483647);
    EXPECT_EQ(NSStringIntValue("-2147483648"), INT32_MIN);
    EXPECT_EQ(NSStringIntValue("-2147483649"), INT32_MIN);
    EXPECT_EQ(NSStringIntValue(std::string(5000, '9')), 2147483647);
}

TEST(NSStringTest, FloatValueTakesTheLongestDecimalPrefix) {
    EXPECT_EQ(NSStringFloatValue(" +12.5x"), 12.5f);
    EXPECT_EQ(NSStringFloatValue("-.5"), -0.5f);
    EXPECT_EQ(NSStringFloatValue("5."), 5.0f);
    EXPECT_EQ(NSStringFloatValue("1e2"), 100.0f);
    EXPECT_EQ(NSStringFloatValue("1E-2"), 0.01f);
    EXPECT_EQ(NSStringFloatValue("1e"), 1.0f);
    EXPECT_EQ(NSStringFloatValue("1e+"), 1.0f);
    EXPECT_EQ(NSStringFloatValue("1.2.3"), 1.2f);
    EXPECT_EQ(NSStringFloatValue("1,5"), 1.0f);
    EXPECT_EQ(NSStringFloatValue("0.1"), 0.1f);
}

TEST(NSStringTest, FloatValueKnowsNoHexadecimalInfinityOrNaN) {
    for (const char* text :
         {"abc", "", ".", "-", "+", "e5", ".e5", "inf", "-infinity", "nan", "NaN", "0x1p4"})
        EXPECT_EQ(NSStringFloatValue(text), 0.0f) << text;
}

TEST(NSStringTest, FloatValueBeyondTheRangeIsInfinityOrZero) {
    EXPECT_EQ(NSStringFloatValue("1e400"), kInfinity);
    EXPECT_EQ(NSStringFloatValue("-1e39"), -kInfinity);
    EXPECT_EQ(NSStringFloatValue("1e99999999999999999999"), kInfinity);
    EXPECT_EQ(NSStringFloatValue("0.0001e99999999999"), kInfinity);
    EXPECT_EQ(NSStringFloatValue(std::string(60, '9')), kInfinity);
    EXPECT_EQ(NSStringFloatValue("1e-400"), 0.0f);
    EXPECT_EQ(NSStringFloatValue("1e-99999999999999999999"), 0.0f);
    EXPECT_EQ(NSStringFloatValue("0e999999"), 0.0f);
    EXPECT_EQ(NSStringDoubleValue("1e400"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(NSStringDoubleValue("1e39"), 1e39);
}

TEST(NSStringTest, BoolValueTakesLettersAndDigitsAfterSignAndZeros) {
    for (const char* text : {"Y", "yes", "T", "true", "1", "9", " \t-0007", "+2", "00y"})
        EXPECT_TRUE(NSStringBoolValue(text)) << text;
    for (const char* text : {"", "0", "000", "no", "N", "f", "x1", "-", "--1", ".5", "0.5", "#1"})
        EXPECT_FALSE(NSStringBoolValue(text)) << text;
}

TEST(NSNumberTest, IntValueOfARealIsCutAndHeld) {
    EXPECT_EQ(PropertyList::floatNumber(2.99f).intValue(), 2);
    EXPECT_EQ(PropertyList::floatNumber(-2.99f).intValue(), -2);
    EXPECT_EQ(PropertyList::doubleNumber(1e20).intValue(), 2147483647);
    EXPECT_EQ(PropertyList::doubleNumber(-kInfinity).intValue(), INT32_MIN);
    EXPECT_EQ(PropertyList::doubleNumber(std::nan("")).intValue(), 0);
}

TEST(NSNumberTest, IntValueOfAnIntegerIsItsLow32Bits) {
    EXPECT_EQ(PropertyList::integer(0x100000005).intValue(), 5);
    EXPECT_EQ(PropertyList::integer(0xFFFFFFFF).intValue(), -1);
    EXPECT_EQ(PropertyList::integer(-3).intValue(), -3);
    EXPECT_EQ(PropertyList::unsignedInteger(UINT64_MAX).intValue(), -1);
}

TEST(NSNumberTest, EveryKindOfNumberReadsAsFloatAndBool) {
    EXPECT_EQ(PropertyList::boolean(true).floatValue(), 1.0f);
    EXPECT_EQ(PropertyList::boolean(true).intValue(), 1);
    EXPECT_EQ(PropertyList::integer(-4).floatValue(), -4.0f);
    EXPECT_EQ(PropertyList::unsignedInteger(uint64_t{1} << 63).floatValue(), 9223372036854775808.0f);
    EXPECT_EQ(PropertyList::doubleNumber(0.1).floatValue(), 0.1f);
    EXPECT_EQ(PropertyList::doubleNumber(1e300).floatValue(), kInfinity);
    EXPECT_TRUE(PropertyList::floatNumber(0.5f).boolValue());
    EXPECT_FALSE(PropertyList::doubleNumber(-0.0).boolValue());
    EXPECT_TRUE(PropertyList::integer(0x100000000).boolValue());
    EXPECT_EQ(PropertyList::string("12.5").floatValue(), 12.5f);
    EXPECT_EQ(PropertyList::string("12.5").intValue(), 12);
    EXPECT_TRUE(PropertyList::string("YES").boolValue());
}

// 2^24 + 1 lies between two floats; by way of a double 2^54 + 2^30 + 1 would become the even one below.
TEST(NSNumberTest, FloatValueOfAnIntegerIsRoundedOnce) {
    const int64_t value = (int64_t{1} << 54) + (int64_t{1} << 30) + 1;
    EXPECT_EQ(PropertyList::integer(value).floatValue(), std::ldexp(1.0f, 54) + std::ldexp(1.0f, 31));
}

TEST(NSNumberTest, OtherKindsReadAsZero) {
    for (const PropertyList& value : {PropertyList::data({1}), PropertyList::date(5), PropertyList::array({}),
                                      PropertyList::dictionary({}), PropertyList::uid(3)}) {
        EXPECT_EQ(value.floatValue(), 0.0f);
        EXPECT_EQ(value.intValue(), 0);
        EXPECT_FALSE(value.boolValue());
        EXPECT_FALSE(value.isNumber());
    }
}

TEST(PropertyListTest, TheKindIsPartOfTheValue) {
    EXPECT_NE(PropertyList::integer(1), PropertyList::boolean(true));
    EXPECT_NE(PropertyList::integer(1), PropertyList::floatNumber(1));
    EXPECT_NE(PropertyList::floatNumber(1), PropertyList::doubleNumber(1));
    EXPECT_NE(PropertyList::integer(1), PropertyList::uid(1));
    EXPECT_NE(PropertyList::integer(-1), PropertyList::unsignedInteger(UINT64_MAX));
    EXPECT_EQ(PropertyList::integer(1), PropertyList::unsignedInteger(1));
    EXPECT_EQ(PropertyList::floatNumber(NAN), PropertyList::floatNumber(NAN));
    EXPECT_NE(PropertyList::doubleNumber(0.0), PropertyList::doubleNumber(-0.0));
}

TEST(PropertyListTest, DatesAreHeldToTheYearsOfTheCalendar) {
    EXPECT_EQ(PropertyList::date(12.5).asDate(), 12.5);
    EXPECT_EQ(PropertyList::date(-1e300).asDate(), -63113904000.0);
    EXPECT_LT(*PropertyList::date(1e300).asDate(), 252423993600.0);
    EXPECT_EQ(PropertyList::date(NAN).asDate(), 0.0);
    EXPECT_FALSE(IsPropertyListDate(252423993600.0));
    EXPECT_FALSE(IsPropertyListDate(NAN));
    EXPECT_TRUE(IsPropertyListDate(-63113904000.0));
}

TEST(PropertyListTest, DescriptionHasTheShortestDigitsOfItsKind) {
    EXPECT_EQ(PropertyList::floatNumber(0.1f).description(), "0.1");
    EXPECT_EQ(PropertyList::doubleNumber(static_cast<double>(0.1f)).description(), "0.10000000149011612");
    EXPECT_EQ(PropertyList::floatNumber(1).description(), "1");
    EXPECT_EQ(PropertyList::floatNumber(-20).description(), "-20");
    EXPECT_EQ(PropertyList::floatNumber(100000).description(), "100000");
    EXPECT_EQ(PropertyList::floatNumber(0.00002f).description(), "0.00002");
    EXPECT_EQ(PropertyList::doubleNumber(123456789012345).description(), "123456789012345");
    EXPECT_EQ(PropertyList::doubleNumber(1e20).description(), "1e+20");
    EXPECT_EQ(PropertyList::doubleNumber(1e-7).description(), "1e-07");
    EXPECT_EQ(PropertyList::floatNumber(0).description(), "0");
    EXPECT_EQ(PropertyList::floatNumber(-NAN).description(), "nan");
    EXPECT_EQ(PropertyList::doubleNumber(-kInfinity).description(), "-inf");
    EXPECT_EQ(PropertyList::unsignedInteger(UINT64_MAX).description(), "18446744073709551615");
    EXPECT_EQ(PropertyList::integer(-5).description(), "-5");
    EXPECT_EQ(PropertyList::boolean(true).description(), "1");
    EXPECT_EQ(PropertyList::string("#FF0000").description(), "#FF0000");
    EXPECT_EQ(PropertyList::data({1, 2}).description(), "data");
    EXPECT_EQ(PropertyList::dictionary({}).description(), "dictionary");
}

TEST(PropertyListTest, DescriptionsOfFloatsReadBackAsTheSameFloat) {
    uint32_t state = 1;
    for (int i = 0; i < 20000; ++i) {
        state = state * 1664525u + 1013904223u;
        const float value = std::bit_cast<float>(state);
        if (std::isfinite(value)) {
            ASSERT_EQ(NSStringFloatValue(PropertyList::floatNumber(value).description()), value) << state;
        }
    }
}

TEST(DictionaryTest, KeepsTheOrderInWhichKeysCame) {
    Dictionary dictionary;
    for (int i = 0; i < 100; ++i)
        dictionary.setObjectForKey(PropertyList::integer(i), "key" + std::to_string(i));
    dictionary.setObjectForKey(PropertyList::integer(-1), "key5");
    EXPECT_TRUE(dictionary.removeObjectForKey("key0"));
    EXPECT_FALSE(dictionary.removeObjectForKey("key0"));
    ASSERT_EQ(dictionary.count(), 99u);
    EXPECT_EQ(dictionary.entries()[4].key, "key5");
    EXPECT_EQ(dictionary.entries()[4].value, PropertyList::integer(-1));
    for (int i = 1; i < 100; ++i) {
        const PropertyList* found = dictionary.objectForKey("key" + std::to_string(i));
        ASSERT_NE(found, nullptr) << i;
        EXPECT_EQ(*found, PropertyList::integer(i == 5 ? -1 : i));
    }
    EXPECT_EQ(dictionary.objectForKey("key0"), nullptr);
}

TEST(DictionaryTest, ShrinksBackBelowAHandful) {
    Dictionary dictionary;
    for (int i = 0; i < 20; ++i)
        dictionary.setObjectForKey(PropertyList::integer(i), std::to_string(i));
    for (int i = 0; i < 19; ++i)
        EXPECT_TRUE(dictionary.removeObjectForKey(std::to_string(i)));
    EXPECT_EQ(dictionary.count(), 1u);
    EXPECT_NE(dictionary.objectForKey("19"), nullptr);
    dictionary.setObjectForKey(PropertyList::boolean(true), "0");
    EXPECT_EQ(dictionary.entries()[1].key, "0");
}

TEST(DictionaryTest, EqualityDoesNotAskForTheOrder) {
    Dictionary a, b;
    a.setObjectForKey(PropertyList::integer(1), "one");
    a.setObjectForKey(PropertyList::integer(2), "two");
    b.setObjectForKey(PropertyList::integer(2), "two");
    EXPECT_FALSE(a == b);
    b.setObjectForKey(PropertyList::integer(1), "one");
    EXPECT_TRUE(a == b);
    b.setObjectForKey(PropertyList::floatNumber(1), "one");
    EXPECT_FALSE(a == b);
}

TEST(DictionaryTest, KeysMayHoldNULAndBeEmpty) {
    using namespace std::string_literals;
    Dictionary dictionary;
    dictionary.setObjectForKey(PropertyList::integer(1), "a\0b"s);
    dictionary.setObjectForKey(PropertyList::integer(2), "a");
    dictionary.setObjectForKey(PropertyList::integer(3), "");
    EXPECT_EQ(dictionary.count(), 3u);
    EXPECT_EQ(*dictionary.objectForKey("a\0b"s), PropertyList::integer(1));
    EXPECT_EQ(*dictionary.objectForKey(""), PropertyList::integer(3));
}

} // namespace
} // namespace tallyforge
