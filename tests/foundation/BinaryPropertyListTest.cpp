// Domains are binary property lists that the device's programs read as well: what a value is, and in which
// bytes it is written, must not change on the way.

#include "PropertyListTesting.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace tallyforge::testing {
namespace {

using namespace std::string_literals;

Result<PropertyList> Read(const Bytes& bytes) {
    return BinaryPropertyList::Deserialize(bytes);
}

PropertyList ReadObject(const Bytes& object) {
    Result<PropertyList> value = Read(BinaryFile{.objects = {object}}.bytes());
    EXPECT_TRUE(value) << value.reason();
    return value ? *value : PropertyList::string("(refused: " + value.reason() + ")");
}

// What lies between the header and the offset table.
Bytes ObjectsOf(const Bytes& file) {
    uint64_t table = 0;
    for (size_t i = file.size() - 8; i < file.size(); ++i)
        table = table << 8 | file[i];
    return Bytes(file.begin() + 8, file.begin() + static_cast<std::ptrdiff_t>(table));
}

Bytes Written(const PropertyList& value) {
    return ObjectsOf(BinaryPropertyList::Serialize(value));
}

PropertyList DictionaryOf(std::initializer_list<std::pair<std::string, PropertyList>> entries) {
    Dictionary dictionary;
    for (const auto& [key, value] : entries)
        dictionary.setObjectForKey(value, key);
    return PropertyList::dictionary(dictionary);
}

TEST(BinaryPropertyListTest, EveryKindHasItsBytes) {
    const std::pair<PropertyList, const char*> cases[] = {
        {PropertyList::boolean(false), "08"},
        {PropertyList::boolean(true), "09"},
        {PropertyList::integer(0), "10 00"},
        {PropertyList::integer(255), "10 ff"},
        {PropertyList::integer(256), "11 0100"},
        {PropertyList::integer(65535), "11 ffff"},
        {PropertyList::integer(65536), "12 00010000"},
        {PropertyList::integer(4294967295), "12 ffffffff"},
        {PropertyList::integer(4294967296), "13 0000000100000000"},
        {PropertyList::integer(INT64_MAX), "13 7fffffffffffffff"},
        {PropertyList::integer(-1), "13 ffffffffffffffff"},
        {PropertyList::integer(INT64_MIN), "13 8000000000000000"},
        {PropertyList::unsignedInteger(uint64_t{1} << 63), "14 0000000000000000 8000000000000000"},
        {PropertyList::unsignedInteger(UINT64_MAX), "14 0000000000000000 ffffffffffffffff"},
        {PropertyList::floatNumber(1), "22 3f800000"},
        {PropertyList::floatNumber(0.1f), "22 3dcccccd"},
        {PropertyList::doubleNumber(1), "23 3ff0000000000000"},
        {PropertyList::doubleNumber(-0.0), "23 8000000000000000"},
        {PropertyList::date(1), "33 3ff0000000000000"},
        {PropertyList::data({0xAB}), "41 ab"},
        {PropertyList::data({}), "40"},
        {PropertyList::string("abc"), "53 616263"},
        {PropertyList::string(""), "50"},
        {PropertyList::string(std::string(15, 'a')), "5f 10 0f 616161616161616161616161616161"},
        {PropertyList::string("\xC3\xA4"), "61 00e4"},
        {PropertyList::string("\xF0\x9F\x98\x80"), "62 d83d de00"},
        {PropertyList::string("a\0b"s), "53 610062"},
        {PropertyList::string("\xED\xA0\x80"), "61 d800"},
        {PropertyList::string("\xED\xB0\x80 \xED\xA0\x80"), "63 dc00 0020 d800"},
        {PropertyList::uid(5), "80 05"},
        {PropertyList::uid(256), "81 0100"},
        {PropertyList::uid(65536), "83 00010000"},
        {PropertyList::array({}), "a0"},
        {PropertyList::dictionary({}), "d0"},
    };
    for (const auto& [value, hex] : cases) {
        EXPECT_EQ(Written(value), Hex(hex)) << hex;
        EXPECT_EQ(ReadObject(Hex(hex)), value) << hex;
    }
}

TEST(BinaryPropertyListTest, TextThatIsNoUTF8IsWrittenAsReplacements) {
    EXPECT_EQ(Written(PropertyList::string("a\xFF")), Hex("62 0061 fffd"));
    EXPECT_EQ(Written(PropertyList::string("\xC3")), Hex("61 fffd"));
}

TEST(BinaryPropertyListTest, NaNAndInfinitiesKeepTheirBits) {
    for (const char* hex : {"22 7f800000", "22 ff800000", "22 7fc00001", "23 7ff0000000000000",
                            "23 fff0000000000000", "23 7ff8000000000001"})
        EXPECT_EQ(Written(ReadObject(Hex(hex))), Hex(hex)) << hex;
    EXPECT_EQ(ReadObject(Hex("22 7fc00001")).kind(), PropertyList::Kind::floatNumber);
    EXPECT_EQ(ReadObject(Hex("23 7ff0000000000000")).doubleValue(), std::numeric_limits<double>::infinity());
}

TEST(BinaryPropertyListTest, SixteenByteIntegersThatFitAreRead) {
    EXPECT_EQ(ReadObject(Hex("14 0000000000000000 0000000000000005")), PropertyList::integer(5));
    EXPECT_EQ(ReadObject(Hex("14 ffffffffffffffff fffffffffffffffe")), PropertyList::integer(-2));
    EXPECT_EQ(ReadObject(Hex("14 ffffffffffffffff 8000000000000000")), PropertyList::integer(INT64_MIN));
}

TEST(BinaryPropertyListTest, LongUIDsThatFitAreRead) {
    EXPECT_EQ(ReadObject(Hex("82 000102")), PropertyList::uid(0x102));
    EXPECT_EQ(ReadObject(Hex("8f 0000000000000000 ffffffffffffffff")), PropertyList::uid(UINT64_MAX));
}

// 0 dictionary, 1 and 2 its keys, 3 the array, 4 and 5 its elements, 6 the second value.
TEST(BinaryPropertyListTest, NumbersTheContainerThenItsKeysThenItsValues) {
    const PropertyList value =
        DictionaryOf({{"a", PropertyList::array({PropertyList::boolean(true), PropertyList::integer(7)})},
                      {"b", PropertyList::floatNumber(2)}});
    EXPECT_EQ(Written(value), Hex("d2 01 02 03 06  51 61  51 62  a2 04 05  09  10 07  22 40000000"));
}

TEST(BinaryPropertyListTest, EqualValuesOfAKindAreWrittenOnce) {
    const PropertyList value = DictionaryOf({{"k", PropertyList::string("k")},
                                             {"f", PropertyList::floatNumber(1)},
                                             {"g", PropertyList::floatNumber(1)},
                                             {"d", PropertyList::doubleNumber(1)},
                                             {"i", PropertyList::integer(1)},
                                             {"j", PropertyList::integer(1)},
                                             {"t", PropertyList::boolean(true)},
                                             {"u", PropertyList::boolean(true)},
                                             {"x", PropertyList::data({'k'})},
                                             {"y", PropertyList::data({'k'})}});
    EXPECT_EQ(Written(value), Hex("da 01 02 03 04 05 06 07 08 09 0a  01 0b 0b 0c 0d 0d 0e 0e 0f 0f"
                                  "51 6b 51 66 51 67 51 64 51 69 51 6a 51 74 51 75 51 78 51 79"
                                  "22 3f800000  23 3ff0000000000000  10 01  09  41 6b"));
}

TEST(BinaryPropertyListTest, ZeroAndMinusZeroAreDifferentAsAreMinusOneAndTheLargestUnsigned) {
    const PropertyList value =
        PropertyList::array({PropertyList::doubleNumber(0.0), PropertyList::doubleNumber(-0.0),
                             PropertyList::integer(-1), PropertyList::unsignedInteger(UINT64_MAX)});
    const Result<PropertyList> read = Read(BinaryPropertyList::Serialize(value));
    ASSERT_TRUE(read) << read.reason();
    EXPECT_EQ(*read, value);
}

TEST(BinaryPropertyListTest, ReferencesAndOffsetsTakeTheSmallestSize) {
    const auto sizes = [](size_t elements) {
        PropertyList::Array array;
        for (size_t i = 0; i < elements; ++i)
            array.push_back(PropertyList::integer(static_cast<int64_t>(i)));
        const Bytes file = BinaryPropertyList::Serialize(PropertyList::array(array));
        const Result<PropertyList> read = Read(file);
        EXPECT_TRUE(read && *read == PropertyList::array(array));
        return std::pair(file[file.size() - 26], file[file.size() - 25]);
    };
    // 8 bytes before; an array of n has 1 byte, n references and integers of 2 bytes.
    EXPECT_EQ(sizes(10), std::pair(uint8_t{1}, uint8_t{1}));
    EXPECT_EQ(sizes(100), std::pair(uint8_t{2}, uint8_t{1}));
    EXPECT_EQ(sizes(254), std::pair(uint8_t{2}, uint8_t{1})); // 255 objects
    EXPECT_EQ(sizes(256), std::pair(uint8_t{2}, uint8_t{2}));
    EXPECT_EQ(sizes(20000), std::pair(uint8_t{4}, uint8_t{2}));
}

TEST(BinaryPropertyListTest, TrailerTellsWhereEverythingIs) {
    EXPECT_EQ(BinaryPropertyList::Serialize(PropertyList::boolean(true)),
              BytesOf("bplist00") + Hex("09  08  000000000000 01 01 0000000000000001 0000000000000000"
                                        "0000000000000009"));
}

TEST(BinaryPropertyListTest, ReadsOddSizesOfReferencesAndOffsetsAndAnotherTop) {
    const BinaryFile file{
        .objects = {Hex("10 01"), Hex("a2 000000 000000")}, .referenceSize = 3, .offsetSize = 5, .top = 1};
    const Result<PropertyList> read = Read(file.bytes());
    ASSERT_TRUE(read) << read.reason();
    EXPECT_EQ(*read, PropertyList::array({PropertyList::integer(1), PropertyList::integer(1)}));
}

// {"a": 1, "b": 2, "a": 3}
TEST(BinaryPropertyListTest, ADuplicateKeyHasItsLastValueAtTheFirstPlace) {
    const BinaryFile file{.objects = {Hex("d3 01 02 01 03 04 05"), Hex("51 61"), Hex("51 62"), Hex("10 01"),
                                      Hex("10 02"), Hex("10 03")}};
    const Result<PropertyList> read = Read(file.bytes());
    ASSERT_TRUE(read) << read.reason();
    const Dictionary& dictionary = *read->asDictionary();
    ASSERT_EQ(dictionary.count(), 2u);
    EXPECT_EQ(dictionary.entries()[0].key, "a");
    EXPECT_EQ(dictionary.entries()[0].value, PropertyList::integer(3));
    EXPECT_EQ(dictionary.entries()[1].key, "b");
}

TEST(BinaryPropertyListTest, KeysMayBeUTF16AndHoldNUL) {
    const BinaryFile file{
        .objects = {Hex("d2 01 02 03 03"), Hex("62 00e4 d800"), Hex("53 610062"), Hex("09")}};
    const Result<PropertyList> read = Read(file.bytes());
    ASSERT_TRUE(read) << read.reason();
    EXPECT_NE(read->asDictionary()->objectForKey("\xC3\xA4\xED\xA0\x80"), nullptr);
    EXPECT_NE(read->asDictionary()->objectForKey("a\0b"s), nullptr);
    EXPECT_EQ(*Read(BinaryPropertyList::Serialize(*read)), *read);
}

TEST(BinaryPropertyListTest, AContainerMayBeSharedWhereItIsNoCycle) {
    const BinaryFile file{.objects = {Hex("a2 01 01"), Hex("a1 02"), Hex("09")}};
    const Result<PropertyList> read = Read(file.bytes());
    ASSERT_TRUE(read) << read.reason();
    const PropertyList inner = PropertyList::array({PropertyList::boolean(true)});
    EXPECT_EQ(*read, PropertyList::array({inner, inner}));
}

TEST(BinaryPropertyListTest, TheFormIsToldByTheFirstBytes) {
    const Bytes binary = BinaryPropertyList::Serialize(PropertyList::string("x"));
    const Bytes xml = XMLPropertyList::Serialize(PropertyList::string("x"));
    EXPECT_TRUE(BinaryPropertyList::Identify(binary));
    EXPECT_FALSE(BinaryPropertyList::Identify(xml));
    EXPECT_TRUE(XMLPropertyList::Identify(xml));
    EXPECT_FALSE(XMLPropertyList::Identify(binary));
    EXPECT_EQ(*DeserializePropertyList(binary), PropertyList::string("x"));
    EXPECT_EQ(*DeserializePropertyList(xml), PropertyList::string("x"));
    ExpectRefused([] { return DeserializePropertyList(BytesOf("{ a = b; }")); }, "not a property list");
    ExpectRefused([] { return DeserializePropertyList({}); }, "not a property list");
}

} // namespace
} // namespace tallyforge::testing
