// A domain, a theme or an archive may come from anywhere. Whatever its bytes are, it is read or refused with
// a reason, at once and without taking the machine's memory. Every file here is made by hand.

#include "PropertyListTesting.h"

#include <gtest/gtest.h>

namespace tallyforge::testing {
namespace {

Result<PropertyList> Read(const Bytes& bytes) {
    return BinaryPropertyList::Deserialize(bytes);
}

void Refused(const Bytes& bytes, std::string_view reason) {
    ExpectRefused([&] { return Read(bytes); }, reason);
}

void RefusedObjects(std::vector<Bytes> objects, std::string_view reason) {
    Refused(BinaryFile{.objects = std::move(objects)}.bytes(), reason);
}

// A trailer under one object, the number 1 at offset 8; the table is at 10.
Bytes WithTrailer(int offsetSize, int referenceSize, uint64_t objects, uint64_t top, uint64_t table) {
    return BytesOf("bplist00") + Hex("10 01 08 000000000000") +
           BigEndian(static_cast<uint64_t>(offsetSize), 1) +
           BigEndian(static_cast<uint64_t>(referenceSize), 1) + BigEndian(objects, 8) + BigEndian(top, 8) +
           BigEndian(table, 8);
}

TEST(HostileBinaryTest, TheUnspoiltFileIsRead) {
    EXPECT_EQ(*Read(WithTrailer(1, 1, 1, 0, 10)), PropertyList::integer(1));
}

TEST(HostileBinaryTest, ShortFilesAndTrailers) {
    const Bytes whole = WithTrailer(1, 1, 1, 0, 10);
    for (size_t size = 0; size < whole.size(); ++size) {
        const Result<PropertyList> read =
            Read(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_FALSE(read) << size;
    }
    Refused({}, "not a binary property list");
    Refused(BytesOf("bplist00"), "file too short");
    Refused(BytesOf("bplist00") + Bytes(32, 0), "file too short");
}

TEST(HostileBinaryTest, CountsSizesAndPlacesOfTheTrailer) {
    Refused(WithTrailer(0, 1, 1, 0, 10), "trailer with an impossible size of offsets or references");
    Refused(WithTrailer(9, 1, 1, 0, 10), "trailer with an impossible size of offsets or references");
    Refused(WithTrailer(1, 0, 1, 0, 10), "trailer with an impossible size of offsets or references");
    Refused(WithTrailer(1, 255, 1, 0, 10), "trailer with an impossible size of offsets or references");
    Refused(WithTrailer(1, 1, 0, 0, 10), "no objects");
    Refused(WithTrailer(1, 1, 1, 1, 10), "top object beyond the last");
    Refused(WithTrailer(1, 1, 1, UINT64_MAX, 10), "top object beyond the last");
    Refused(WithTrailer(1, 1, 2, 0, 10), "offset table outside the file");
    Refused(WithTrailer(1, 1, 1, 0, 8), "offset table outside the file");
    Refused(WithTrailer(1, 1, 1, 0, 11), "offset table outside the file");
    Refused(WithTrailer(1, 1, 1, 0, UINT64_MAX), "offset table outside the file");
}

TEST(HostileBinaryTest, CountTimesSizeOverflows) {
    Refused(WithTrailer(8, 1, uint64_t{1} << 61, 0, 10), "too many objects"); // x 8 is 0
    Refused(WithTrailer(8, 1, (uint64_t{1} << 61) + 1, 0, 10), "too many objects");
    // An array of 2^61 with references of 8 bytes, a dictionary of 2^63 with 2 x 1.
    Refused(BinaryFile{.objects = {Hex("af 13 2000000000000000")}, .referenceSize = 8}.bytes(),
            "length beyond the end");
    RefusedObjects({Hex("df 13 8000000000000000")}, "length beyond the end");
    RefusedObjects({Hex("6f 13 8000000000000001")}, "length beyond the end");
}

TEST(HostileBinaryTest, HugeLengths) {
    for (const char* marker : {"4f", "5f", "6f", "af", "df"}) {
        RefusedObjects({Hex(marker) + Hex("13 7fffffffffffffff")}, "length beyond the end");
        RefusedObjects({Hex(marker) + Hex("13 ffffffffffffffff")}, "length beyond the end");
        RefusedObjects({Hex(marker) + Hex("12 ffffffff")}, "length beyond the end");
        RefusedObjects({Hex(marker) + Hex("10 10")}, "length beyond the end");
    }
    RefusedObjects({Hex("4f 14 0000000000000000 0000000000000001 00")}, "length that is no integer");
    RefusedObjects({Hex("4f 22 00000001 00")}, "length that is no integer");
    RefusedObjects({Hex("4f")}, "object cut short");
    RefusedObjects({Hex("4f 13 00")}, "object cut short");
}

TEST(HostileBinaryTest, ObjectsCutShortByTheOffsetTable) {
    for (const char* object :
         {"13 00", "10", "12 000000", "14 00", "22 000000", "23 00", "33 00", "81 00", "8f"})
        RefusedObjects({Hex(object)}, "object cut short");
    RefusedObjects({Hex("53 6162")}, "length beyond the end");
    RefusedObjects({Hex("a2 00")}, "length beyond the end");
    RefusedObjects({Hex("d1 00")}, "length beyond the end");
}

TEST(HostileBinaryTest, ReferencesBeyondTheEnd) {
    RefusedObjects({Hex("a1 01")}, "reference to an object beyond the last");
    RefusedObjects({Hex("a1 ff")}, "reference to an object beyond the last");
    RefusedObjects({Hex("d1 07 01"), Hex("51 61")}, "reference to an object beyond the last");
    RefusedObjects({Hex("d1 01 07"), Hex("51 61")}, "reference to an object beyond the last");
    Refused(BinaryFile{.objects = {Hex("a1 ffffffffffffffff")}, .referenceSize = 8}.bytes(),
            "reference to an object beyond the last");
}

TEST(HostileBinaryTest, OffsetsOutsideTheObjects) {
    for (const uint64_t offset : {uint64_t{0}, uint64_t{7}, uint64_t{10}, uint64_t{200}}) {
        Bytes file = WithTrailer(1, 1, 1, 0, 10);
        file[10] = static_cast<uint8_t>(offset);
        Refused(file, "offset outside the objects");
    }
    Refused(BytesOf("bplist00") + Hex("10 01  ffffffffffffffff 000000000000 08 01") + BigEndian(1, 8) +
                BigEndian(0, 8) + BigEndian(10, 8),
            "offset outside the objects");
}

TEST(HostileBinaryTest, Cycles) {
    RefusedObjects({Hex("a1 00")}, "container that holds itself");
    RefusedObjects({Hex("a2 01 02"), Hex("09"), Hex("a1 00")}, "container that holds itself");
    RefusedObjects({Hex("d1 01 00"), Hex("51 61")}, "container that holds itself");
    RefusedObjects({Hex("a1 01"), Hex("d1 02 00"), Hex("51 61")}, "container that holds itself");
    RefusedObjects({Hex("d1 00 01"), Hex("51 61")}, "key that is no string");
}

// Every turn of the cycle has a great many leaves before it.
TEST(HostileBinaryTest, ACycleBehindALongArray) {
    Bytes array = Hex("af 12 00030000");
    for (int i = 0; i < 0x2FFFF; ++i)
        array.push_back(1);
    array.push_back(0);
    const Result<PropertyList> read = Read(BinaryFile{.objects = {array, Hex("09")}}.bytes());
    EXPECT_FALSE(read);
    ExpectRefused(
        [&] {
            return Read(BinaryFile{.objects = {array, Hex("09")}}.bytes());
        },
        "too many objects once shared ones are followed");
}

std::vector<Bytes> Chain(int containers) {
    std::vector<Bytes> objects;
    for (int i = 1; i < containers; ++i)
        objects.push_back(Hex("a1") + BigEndian(static_cast<uint64_t>(i), 2));
    objects.push_back(Hex("a0"));
    return objects;
}

TEST(HostileBinaryTest, DepthOf64IsReadAnd65IsRefused) {
    EXPECT_TRUE(Read(BinaryFile{.objects = Chain(64), .referenceSize = 2}.bytes()));
    Refused(BinaryFile{.objects = Chain(65), .referenceSize = 2}.bytes(), "containers nested too deep");
    Refused(BinaryFile{.objects = Chain(60000), .referenceSize = 2}.bytes(), "containers nested too deep");
}

// Each array holds the next one twice: 30 of them are 2^30 nodes in a few hundred bytes.
TEST(HostileBinaryTest, ExponentialSharingOfArrays) {
    for (const int levels : {20, 30, 60}) {
        std::vector<Bytes> objects;
        for (int i = 1; i <= levels; ++i)
            objects.push_back(Hex("a2") + BigEndian(static_cast<uint64_t>(i), 1) +
                              BigEndian(static_cast<uint64_t>(i), 1));
        objects.push_back(Hex("09"));
        RefusedObjects(objects, "too many objects once shared ones are followed");
    }
}

TEST(HostileBinaryTest, ExponentialSharingOfDictionaries) {
    std::vector<Bytes> objects;
    for (uint64_t i = 1; i <= 40; ++i)
        objects.push_back(Hex("d2 29 2a") + BigEndian(i, 1) + BigEndian(i, 1));
    objects.push_back(Hex("d0"));    // 40 = 0x28
    objects.push_back(Hex("51 61")); // 0x29
    objects.push_back(Hex("51 62"));
    RefusedObjects(objects, "too many objects once shared ones are followed");
}

// 1 + 511 + 511 x 512 nodes are 262,144; one more is refused.
TEST(HostileBinaryTest, TheLimitOfNodesIsExact) {
    const auto file = [](uint64_t more) {
        Bytes outer = Hex("af 11") + BigEndian(511 + more, 2), inner = Hex("af 11 0200");
        for (uint64_t i = 0; i < 511; ++i)
            outer.push_back(1);
        for (uint64_t i = 0; i < more; ++i)
            outer.push_back(2);
        for (int i = 0; i < 512; ++i)
            inner.push_back(2);
        return BinaryFile{.objects = {outer, inner, Hex("09")}}.bytes();
    };
    const Result<PropertyList> read = Read(file(0));
    ASSERT_TRUE(read) << read.reason();
    EXPECT_EQ(read->asArray()->size(), 511u);
    Refused(file(1), "too many objects once shared ones are followed");
}

TEST(HostileBinaryTest, TheLimitOfObjectsIsExact) {
    const auto file = [](size_t count) {
        std::vector<Bytes> objects(count, Hex("09"));
        Bytes bytes = BytesOf("bplist00") + Hex("a0") + Bytes(count - 1, 9);
        Bytes table;
        table.reserve(count * 3);
        for (size_t i = 0; i < count; ++i) {
            for (const uint8_t byte : BigEndian(8 + i, 3))
                table.push_back(byte);
        }
        return bytes + table + Hex("000000000000 03 02") + BigEndian(count, 8) + BigEndian(0, 8) +
               BigEndian(8 + count, 8);
    };
    EXPECT_TRUE(Read(file(65536)));
    Refused(file(65537), "too many objects");
}

TEST(HostileBinaryTest, TheLimitOfTheFileIsExact) {
    // 8 header, 1 + 5 for the marker and length, 4 offset, 32 trailer
    constexpr size_t around = 8 + 6 + 4 + 32;
    const auto file = [](size_t bytes) {
        return BinaryFile{.objects = {Hex("4f 12") + BigEndian(bytes - around, 4) + Bytes(bytes - around, 0)}}
            .bytes();
    };
    EXPECT_TRUE(Read(file(4u << 20)));
    Refused(file((4u << 20) + 1), "file too large");
}

// One text of 4 MB less a bit, a hundred thousand times.
TEST(HostileBinaryTest, ALongTextSharedOften) {
    Bytes array = Hex("af 12 000186a0");
    array.insert(array.end(), 100000, 1);
    for (const char* marker : {"4f", "5f"}) {
        const Bytes text = Hex(marker) + Hex("12 003d0900") + Bytes(4000000, 'a');
        Refused(BinaryFile{.objects = {array, text}}.bytes(),
                "too much text and data once shared objects are followed");
    }
    // as keys
    Bytes dictionary = Hex("df 11 0100");
    dictionary.insert(dictionary.end(), 256, 1);
    dictionary.insert(dictionary.end(), 256, 2);
    Refused(
        BinaryFile{.objects = {dictionary, Hex("5f 12 003d0900") + Bytes(4000000, 'a'), Hex("09")}}.bytes(),
        "too much text and data once shared objects are followed");
}

// Sixty thousand arrays that all begin at the same byte, each of them as long as the file.
TEST(HostileBinaryTest, OverlappingContainers) {
    Bytes file = BytesOf("bplist00") + Hex("af 12 0000f000");
    for (uint32_t i = 1; i <= 0xF000; ++i) {
        file.push_back(static_cast<uint8_t>(i >> 8));
        file.push_back(static_cast<uint8_t>(i));
    }
    const size_t table = file.size();
    for (int i = 0; i <= 0xF000; ++i)
        file.push_back(8);
    file = file + Hex("000000000000 01 02") + BigEndian(0xF001, 8) + BigEndian(0, 8) + BigEndian(table, 8);
    Refused(file, "containers nested too deep");
}

TEST(HostileBinaryTest, KeysThatAreNoStrings) {
    for (const char* key : {"10 01", "23 3ff0000000000000", "22 3f800000", "09", "41 61", "80 01", "a0", "d0",
                            "33 3ff0000000000000"})
        RefusedObjects({Hex("d1 01 02"), Hex(key), Hex("09")}, "key that is no string");
}

TEST(HostileBinaryTest, UnknownMarkers) {
    for (const char* object : {"00", "01", "0a", "0f", "70", "71 61", "90", "b0", "c0", "e0", "f0", "ff"})
        RefusedObjects({Hex(object)}, "unknown kind of object");
    RefusedObjects({Hex("15 00")}, "integer of an unknown size");
    RefusedObjects({Hex("1f 00")}, "integer of an unknown size");
    for (const char* object :
         {"20 00", "21 0000", "24 00000000000000000000000000000000", "32 00000000", "30 00"})
        RefusedObjects({Hex(object)}, "real or date of an unknown size");
}

TEST(HostileBinaryTest, IntegersAndUIDsOfMoreThan64Bits) {
    RefusedObjects({Hex("14 0000000000000001 0000000000000000")}, "integer of more than 64 bits");
    RefusedObjects({Hex("14 ffffffffffffffff 7fffffffffffffff")}, "integer of more than 64 bits");
    RefusedObjects({Hex("14 8000000000000000 0000000000000000")}, "integer of more than 64 bits");
    RefusedObjects({Hex("88 01 0000000000000000")}, "UID of more than 64 bits");
}

TEST(HostileBinaryTest, DatesThatAreNone) {
    for (const char* date : {"33 7ff8000000000000", "33 7ff0000000000000", "33 fff0000000000000",
                             "33 7fefffffffffffff", "33 42506ad1ec000000"})
        RefusedObjects({Hex(date)}, "date outside the years 1 to 9999");
}

TEST(HostileBinaryTest, ASCIIStringsWithOtherBytes) {
    RefusedObjects({Hex("51 80")}, "ASCII string with other characters");
    RefusedObjects({Hex("5f 10 11 6161616161616161616161616161616161")}, "(read)");
    RefusedObjects({Hex("5f 10 11 61616161616161616161616161616161ff")},
                   "ASCII string with other characters");
    RefusedObjects({Hex("d1 01 02"), Hex("52 61e4"), Hex("09")}, "ASCII string with other characters");
}

} // namespace
} // namespace tallyforge::testing
