// Themes and the preview's configuration are keyed archives, exchanged with devices.

#include "PropertyListTesting.h"

#include "foundation/NSKeyedArchiver.h"

#include <gtest/gtest.h>

namespace tallyforge::testing {
namespace {

PropertyList Text(std::string_view text) {
    return PropertyList::string(std::string(text));
}
PropertyList UID(uint64_t value) {
    return PropertyList::uid(value);
}
PropertyList Array(PropertyList::Array values) {
    return PropertyList::array(std::move(values));
}
PropertyList Dict(std::initializer_list<std::pair<std::string, PropertyList>> entries) {
    Dictionary dictionary;
    for (const auto& [key, value] : entries)
        dictionary.setObjectForKey(value, key);
    return PropertyList::dictionary(dictionary);
}
PropertyList Class(std::initializer_list<std::string_view> names) {
    PropertyList::Array classes;
    for (const std::string_view name : names)
        classes.push_back(Text(name));
    return Dict({{"$classname", classes.front()}, {"$classes", Array(classes)}});
}
const PropertyList kDictionaryClass = Class({"NSDictionary", "NSObject"});

PropertyList Archive(PropertyList::Array objects, const PropertyList& top) {
    return Dict({{"$version", PropertyList::integer(100000)},
                 {"$archiver", Text("NSKeyedArchiver")},
                 {"$top", top},
                 {"$objects", Array(std::move(objects))}});
}
PropertyList Archive(PropertyList::Array objects) {
    return Archive(std::move(objects), Dict({{"root", UID(1)}}));
}

Result<PropertyList> Unarchived(const PropertyList& archive) {
    return NSKeyedUnarchiver::unarchiveObjectWithData(BinaryPropertyList::Serialize(archive));
}

void Read(const PropertyList& archive, const PropertyList& expected) {
    const Result<PropertyList> value = Unarchived(archive);
    ASSERT_TRUE(value) << value.reason();
    EXPECT_EQ(*value, expected);
}

void Refused(const PropertyList& archive, std::string_view reason) {
    const Bytes bytes = BinaryPropertyList::Serialize(archive);
    ExpectRefused([&] { return NSKeyedUnarchiver::unarchiveObjectWithData(bytes); }, reason);
}

// The whole file must have the bytes of the layout, so it is compared with the layout's own serialisation.
void ArchivedAs(const PropertyList& root, const PropertyList& archive,
                ArchivedDictionaryClass cls = ArchivedDictionaryClass::NSMutableDictionary) {
    EXPECT_EQ(NSKeyedArchiver::archivedDataWithRootObject(root, cls), BinaryPropertyList::Serialize(archive));
    Read(archive, root);
}

TEST(NSKeyedArchiverTest, ADictionaryTakesItsEntryThenKeysThenValuesThenItsClass) {
    ArchivedAs(Dict({{"badgesize", PropertyList::floatNumber(0.5f)}, {"badgecolor", Text("#FF0000")}}),
               Archive({Text("$null"),
                        Dict({{"NS.keys", Array({UID(2), UID(3)})},
                              {"NS.objects", Array({UID(4), UID(5)})},
                              {"$class", UID(6)}}),
                        Text("badgesize"), Text("badgecolor"), PropertyList::floatNumber(0.5f),
                        Text("#FF0000"), Class({"NSMutableDictionary", "NSDictionary", "NSObject"})}));
}

TEST(NSKeyedArchiverTest, EqualStringsAndNumbersOfAKindShareAnEntry) {
    ArchivedAs(Dict({{"a", PropertyList::integer(1)},
                     {"b", PropertyList::integer(1)},
                     {"c", PropertyList::doubleNumber(1)},
                     {"d", PropertyList::floatNumber(1)},
                     {"e", PropertyList::boolean(true)},
                     {"f", Text("a")},
                     {"g", PropertyList::doubleNumber(1)},
                     {"h", PropertyList::data({1})},
                     {"i", PropertyList::data({1})}}),
               Archive({Text("$null"),
                        Dict({{"NS.keys", Array({UID(2), UID(3), UID(4), UID(5), UID(6), UID(7), UID(8),
                                                 UID(9), UID(10)})},
                              {"NS.objects", Array({UID(11), UID(11), UID(12), UID(13), UID(14), UID(2),
                                                    UID(12), UID(15), UID(15)})},
                              {"$class", UID(16)}}),
                        Text("a"), Text("b"), Text("c"), Text("d"), Text("e"), Text("f"), Text("g"),
                        Text("h"), Text("i"), PropertyList::integer(1), PropertyList::doubleNumber(1),
                        PropertyList::floatNumber(1), PropertyList::boolean(true), PropertyList::data({1}),
                        kDictionaryClass}),
               ArchivedDictionaryClass::NSDictionary);
}

// The inner dictionary's class record comes after its contents and serves the outer one too.
TEST(NSKeyedArchiverTest, NestedContainersShareTheirClassRecord) {
    ArchivedAs(
        Dict({{"in", Dict({{"k", Array({Text("v"), PropertyList::date(5)})}})}, {"x", Array({})}}),
        Archive({Text("$null"),
                 Dict({{"NS.keys", Array({UID(2), UID(3)})},
                       {"NS.objects", Array({UID(4), UID(12)})},
                       {"$class", UID(11)}}),
                 Text("in"), Text("x"),
                 Dict({{"NS.keys", Array({UID(5)})}, {"NS.objects", Array({UID(6)})}, {"$class", UID(11)}}),
                 Text("k"), Dict({{"NS.objects", Array({UID(7), UID(8)})}, {"$class", UID(10)}}), Text("v"),
                 Dict({{"NS.time", PropertyList::doubleNumber(5)}, {"$class", UID(9)}}),
                 Class({"NSDate", "NSObject"}), Class({"NSArray", "NSObject"}), kDictionaryClass,
                 Dict({{"NS.objects", Array({})}, {"$class", UID(10)}})}),
        ArchivedDictionaryClass::NSDictionary);
}

TEST(NSKeyedArchiverTest, RootsThatAreNoContainersAreEntryOne) {
    ArchivedAs(Text("hello"), Archive({Text("$null"), Text("hello")}));
    ArchivedAs(Text("$null"), Archive({Text("$null"), Text("$null")}));
    ArchivedAs(PropertyList::boolean(true), Archive({Text("$null"), PropertyList::boolean(true)}));
    ArchivedAs(PropertyList::floatNumber(2), Archive({Text("$null"), PropertyList::floatNumber(2)}));
    ArchivedAs(PropertyList::data({1, 2}), Archive({Text("$null"), PropertyList::data({1, 2})}));
    ArchivedAs(PropertyList::unsignedInteger(UINT64_MAX),
               Archive({Text("$null"), PropertyList::unsignedInteger(UINT64_MAX)}));
}

TEST(NSKeyedArchiverTest, AUIDCannotBeArchived) {
    EXPECT_TRUE(NSKeyedArchiver::archivedDataWithRootObject(UID(1)).empty());
    EXPECT_TRUE(NSKeyedArchiver::archivedDataWithRootObject(Dict({{"a", Array({UID(1)})}})).empty());
}

TEST(NSKeyedArchiverTest, PythonResolvesTheArchive) {
    const ScratchFolder folder;
    RunOracle("write '" + folder.path().string() + "'");
    const Result<PropertyList> sample = XMLPropertyList::Deserialize(FileBytes(folder / "sample.xml"));
    ASSERT_TRUE(sample) << sample.reason();
    const Bytes archive = NSKeyedArchiver::archivedDataWithRootObject(*sample);
    EXPECT_EQ(*NSKeyedUnarchiver::unarchiveObjectWithData(archive), *sample);
    WriteFile(folder / "archive.binary", archive);
    RunOracle("archive '" + folder.path().string() + "'");
}

// Two keys with one mutable string, a root that is not entry 1, objects that nothing refers to.
TEST(NSKeyedUnarchiverTest, ReadsArchivesLaidOutByOthersBinaryAndXML) {
    const ScratchFolder folder;
    RunOracle("foreign '" + folder.path().string() + "'");
    const PropertyList expected = Dict({{"badgecolor", Text("#00FF00")}, {"textcolor", Text("#00FF00")}});
    for (const char* name : {"foreign.binary", "foreign.xml"}) {
        const Result<PropertyList> value =
            NSKeyedUnarchiver::unarchiveObjectWithData(FileBytes(folder / name));
        ASSERT_TRUE(value) << name << ": " << value.reason();
        EXPECT_EQ(*value, expected) << name;
    }
}

TEST(NSKeyedUnarchiverTest, MutableAndOtherClassesAlike) {
    for (const char* name : {"NSArray", "NSMutableArray"})
        Read(Archive({Text("$null"), Dict({{"NS.objects", Array({UID(3)})}, {"$class", UID(2)}}),
                      Class({name}), Text("a")}),
             Array({Text("a")}));
    for (const char* name : {"NSString", "NSMutableString"})
        Read(Archive({Text("$null"), Dict({{"NS.string", Text("x")}, {"$class", UID(2)}}), Class({name})}),
             Text("x"));
    // a mutable string as a key
    Read(Archive({Text("$null"),
                  Dict({{"NS.keys", Array({UID(2)})}, {"NS.objects", Array({UID(3)})}, {"$class", UID(5)}}),
                  Dict({{"NS.string", Text("k")}, {"$class", UID(4)}}), Text("v"), Class({"NSMutableString"}),
                  Class({"NSMutableDictionary"})}),
         Dict({{"k", Text("v")}}));
}

TEST(NSKeyedUnarchiverTest, ADuplicateKeyHasItsLastValueAtTheFirstPlace) {
    const Result<PropertyList> value =
        Unarchived(Archive({Text("$null"),
                            Dict({{"NS.keys", Array({UID(2), UID(3), UID(2)})},
                                  {"NS.objects", Array({UID(2), UID(3), UID(3)})},
                                  {"$class", UID(4)}}),
                            Text("a"), Text("b"), kDictionaryClass}));
    ASSERT_TRUE(value) << value.reason();
    ASSERT_EQ(value->asDictionary()->count(), 2u);
    EXPECT_EQ(value->asDictionary()->entries()[0].key, "a");
    EXPECT_EQ(value->asDictionary()->entries()[0].value, Text("b"));
}

TEST(NSKeyedUnarchiverTest, WhatIsNoArchive) {
    const PropertyList objects = Array({Text("$null"), Text("x")}), top = Dict({{"root", UID(1)}});
    const PropertyList version = PropertyList::integer(100000), archiver = Text("NSKeyedArchiver");
    Refused(Text("x"), "not a keyed archive");
    Refused(Dict({}), "not a keyed archive");
    Refused(
        Dict(
            {{"$version", version}, {"$archiver", Text("NSArchiver")}, {"$top", top}, {"$objects", objects}}),
        "not a keyed archive");
    Refused(Dict({{"$version", version},
                  {"$archiver", PropertyList::integer(1)},
                  {"$top", top},
                  {"$objects", objects}}),
            "not a keyed archive");
    Refused(Dict({{"$version", PropertyList::integer(1)},
                  {"$archiver", archiver},
                  {"$top", top},
                  {"$objects", objects}}),
            "keyed archive of an unknown version");
    Refused(Dict({{"$archiver", archiver}, {"$top", top}, {"$objects", objects}}),
            "keyed archive of an unknown version");
    Refused(Dict({{"$version", version}, {"$archiver", archiver}, {"$objects", objects}}),
            "keyed archive without a root");
    Refused(Dict({{"$version", version},
                  {"$archiver", archiver},
                  {"$top", Dict({{"other", UID(1)}})},
                  {"$objects", objects}}),
            "keyed archive without a root");
    Refused(Dict({{"$version", version}, {"$archiver", archiver}, {"$top", UID(1)}, {"$objects", objects}}),
            "keyed archive without a root");
    Refused(Dict({{"$version", version}, {"$archiver", archiver}, {"$top", top}}),
            "keyed archive without objects");
    Refused(Dict({{"$version", version}, {"$archiver", archiver}, {"$top", top}, {"$objects", top}}),
            "keyed archive without objects");
    ExpectRefused([] { return NSKeyedUnarchiver::unarchiveObjectWithData(BytesOf("not at all")); },
                  "not a property list");
}

TEST(NSKeyedUnarchiverTest, UIDsThatLeadNowhere) {
    Refused(Archive({}), "UID beyond the archive's last object");
    Refused(Archive({Text("$null")}), "UID beyond the archive's last object");
    Refused(Archive({Text("$null"), Text("x")}, Dict({{"root", UID(UINT64_MAX)}})),
            "UID beyond the archive's last object");
    Refused(Archive({Text("$null"), Text("x")}, Dict({{"root", UID(0)}})),
            "archive with nothing where an object belongs");
    Refused(Archive({Text("$null"), Text("x")}, Dict({{"root", Text("x")}})),
            "archive with something other than a UID where one belongs");
    Refused(Archive({Text("$null"), Dict({{"NS.objects", Array({UID(9)})}, {"$class", UID(2)}}),
                     Class({"NSArray"})}),
            "UID beyond the archive's last object");
    Refused(
        Archive({Text("$null"), Dict({{"NS.objects", Array({PropertyList::integer(2)})}, {"$class", UID(2)}}),
                 Class({"NSArray"})}),
        "archive with something other than a UID where one belongs");
    Refused(Archive({Text("$null"), Dict({{"NS.objects", Array({})}, {"$class", UID(9)}})}),
            "UID beyond the archive's last object");
    Refused(Archive({Text("$null"), Dict({{"NS.objects", Array({})}})}),
            "archive with something other than a UID where one belongs");
}

TEST(NSKeyedUnarchiverTest, CountsThatDiffer) {
    Refused(Archive({Text("$null"),
                     Dict({{"NS.keys", Array({UID(2)})}, {"NS.objects", Array({})}, {"$class", UID(3)}}),
                     Text("a"), kDictionaryClass}),
            "archived dictionary with keys and values of different counts");
    Refused(Archive({Text("$null"), Dict({{"NS.objects", Array({})}, {"$class", UID(2)}}), kDictionaryClass}),
            "archived dictionary without its keys");
    Refused(Archive({Text("$null"), Dict({{"NS.keys", Array({})}, {"$class", UID(2)}}), kDictionaryClass}),
            "archived container without its objects");
}

TEST(NSKeyedUnarchiverTest, OtherClassesAndBrokenRecords) {
    for (const char* name : {"NSSet", "NSURL", "NSNull", "", "nsdictionary"})
        Refused(
            Archive({Text("$null"), Dict({{"NS.objects", Array({})}, {"$class", UID(2)}}), Class({name})}),
            "archive with an object of another class");
    Refused(Archive({Text("$null"), Dict({{"$class", UID(2)}}), Text("NSDictionary")}),
            "archive with an object of another class");
    Refused(Archive({Text("$null"), Dict({{"$class", UID(1)}})}), "archive with an object of another class");
    Refused(Archive({Text("$null"), Array({})}), "archive with an entry that is no object");
    Refused(Archive({Text("$null"), UID(1)}), "archive with an entry that is no object");
    Refused(Archive({Text("$null"), Dict({{"$class", UID(2)}}), Class({"NSString"})}),
            "archived string without its text");
    Refused(
        Archive({Text("$null"), Dict({{"NS.time", PropertyList::doubleNumber(1e300)}, {"$class", UID(2)}}),
                 Class({"NSDate"})}),
        "archived date without a time in the years 1 to 9999");
}

TEST(NSKeyedUnarchiverTest, KeysThatAreNoStrings) {
    for (const PropertyList& key : {PropertyList::integer(1), PropertyList::doubleNumber(1),
                                    PropertyList::boolean(true), PropertyList::data({1})})
        Refused(
            Archive(
                {Text("$null"),
                 Dict({{"NS.keys", Array({UID(2)})}, {"NS.objects", Array({UID(2)})}, {"$class", UID(3)}}),
                 key, kDictionaryClass}),
            "archived dictionary with a key that is no string");
    Refused(
        Archive({Text("$null"),
                 Dict({{"NS.keys", Array({UID(2)})}, {"NS.objects", Array({UID(2)})}, {"$class", UID(3)}}),
                 Dict({{"NS.keys", Array({})}, {"NS.objects", Array({})}, {"$class", UID(3)}}),
                 kDictionaryClass}),
        "archived dictionary with a key that is no string");
}

TEST(NSKeyedUnarchiverTest, Cycles) {
    Refused(Archive({Text("$null"), Dict({{"NS.objects", Array({UID(1)})}, {"$class", UID(2)}}),
                     Class({"NSArray"})}),
            "archived container that holds itself");
    Refused(
        Archive({Text("$null"),
                 Dict({{"NS.keys", Array({UID(2)})}, {"NS.objects", Array({UID(4)})}, {"$class", UID(3)}}),
                 Text("a"), kDictionaryClass, Dict({{"NS.objects", Array({UID(1)})}, {"$class", UID(5)}}),
                 Class({"NSArray"})}),
        "archived container that holds itself");
}

// Entry i holds entry i + 1 `times` over, the last one is a string; the class record is entry 1000.
PropertyList Chain(uint64_t containers, size_t times, const std::string& last) {
    PropertyList::Array objects{Text("$null")};
    for (uint64_t i = 1; i <= containers; ++i)
        objects.push_back(
            Dict({{"NS.objects", Array(PropertyList::Array(times, UID(i + 1)))}, {"$class", UID(1000)}}));
    while (objects.size() < 1000)
        objects.push_back(Text(last));
    objects.push_back(Class({"NSArray"}));
    return Archive(objects);
}

TEST(NSKeyedUnarchiverTest, DepthAndExponentialSharingAreBounded) {
    EXPECT_TRUE(Unarchived(Chain(64, 1, "x")));
    Refused(Chain(65, 1, "x"), "containers nested too deep");
    Refused(Chain(900, 1, "x"), "containers nested too deep");
    for (const uint64_t levels : {20, 40, 60})
        Refused(Chain(levels, 2, "x"), "too many objects once shared ones are followed");
    Refused(Chain(2, 500, std::string(3000, 'x')), "too much text and data once shared objects are followed");
}

// Thirteen levels of two are 2^14 - 1 objects with 2^13 letters: that many are allowed, and not one less.
TEST(NSKeyedUnarchiverTest, SharingUpToTheLimitsIsFollowed) {
    const std::vector<uint8_t> bytes = BinaryPropertyList::Serialize(Chain(13, 2, "x"));
    const auto reasonWith = [&](size_t nodes, size_t text) {
        PropertyListLimits limits;
        limits.nodes = nodes;
        limits.text = text;
        const auto value = NSKeyedUnarchiver::unarchiveObjectWithData(bytes, limits);
        return value ? std::string() : value.reason();
    };
    EXPECT_EQ(reasonWith(16'383, 8192), "");
    EXPECT_EQ(reasonWith(16'382, 8192), "too many objects once shared ones are followed");
    EXPECT_EQ(reasonWith(16'383, 8191), "too much text and data once shared objects are followed");
}

} // namespace
} // namespace tallyforge::testing
