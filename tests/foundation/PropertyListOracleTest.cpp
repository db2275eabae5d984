// Python's plistlib knows both forms and was written by others; what we write it must read, and the other way
// round.

#include "PropertyListTesting.h"

#include <gtest/gtest.h>

namespace tallyforge::testing {
namespace {

// The same values as in plist_oracle.py.
PropertyList Sample(bool withUID) {
    Dictionary dictionary;
    const auto set = [&dictionary](std::string_view key, PropertyList value) {
        dictionary.setObjectForKey(std::move(value), key);
    };
    PropertyList::Data all;
    for (int i = 0; i < 256; ++i)
        all.push_back(static_cast<uint8_t>(i));
    set("true", PropertyList::boolean(true));
    set("false", PropertyList::boolean(false));
    set("zero", PropertyList::integer(0));
    set("byte", PropertyList::integer(255));
    set("short", PropertyList::integer(256));
    set("long", PropertyList::integer(65536));
    set("wide", PropertyList::integer(4294967296));
    set("largest signed", PropertyList::integer(INT64_MAX));
    set("large unsigned", PropertyList::unsignedInteger(uint64_t{1} << 63));
    set("largest unsigned", PropertyList::unsignedInteger(UINT64_MAX));
    set("minus one", PropertyList::integer(-1));
    set("lowest", PropertyList::integer(INT64_MIN));
    set("tenth", PropertyList::doubleNumber(0.1));
    set("whole real", PropertyList::doubleNumber(1));
    set("huge", PropertyList::doubleNumber(1e300));
    set("empty", PropertyList::string(""));
    set("ascii", PropertyList::string("#FF8800"));
    set("fifteen characters", PropertyList::string("123456789012345"));
    set("umlaut", PropertyList::string("Gr\xC3\xB6\xC3\x9F"
                                       "e"));
    set("beyond", PropertyList::string("a\xF0\x9F\x98\x80"
                                       "b"));
    set("markup", PropertyList::string("<a href='x'>&amp; \"q\"</a>"));
    set("spaces", PropertyList::string("  two\tand\nlines  "));
    set("data", PropertyList::data(all));
    set("no data", PropertyList::data({}));
    // 13 years with 3 leap days, 259 days of 2014, 16:30:05
    set("date", PropertyList::date((13 * 365 + 3 + 259) * 86400.0 + 16 * 3600 + 30 * 60 + 5));
    set("array",
        PropertyList::array(
            {PropertyList::integer(1), PropertyList::string("1"), PropertyList::doubleNumber(1),
             PropertyList::boolean(true), PropertyList::array({}),
             PropertyList::array({PropertyList::doubleNumber(0.1), PropertyList::string("#FF8800")})}));
    Dictionary inner;
    inner.setObjectForKey(PropertyList::boolean(false), "true");
    inner.setObjectForKey(PropertyList::dictionary({}), "inner");
    set("dictionary", PropertyList::dictionary(inner));
    if (withUID) set("uid", PropertyList::uid(70000));
    return PropertyList::dictionary(dictionary);
}

std::vector<std::string> Keys(const PropertyList& value) {
    std::vector<std::string> keys;
    for (const Dictionary::Entry& entry : *value.asDictionary())
        keys.push_back(entry.key);
    return keys;
}

TEST(PropertyListOracleTest, ReadsWhatPythonWrites) {
    const ScratchFolder folder;
    RunOracle("write '" + folder.path().string() + "'");
    const Result<PropertyList> binary = BinaryPropertyList::Deserialize(FileBytes(folder / "sample.binary"));
    ASSERT_TRUE(binary) << binary.reason();
    EXPECT_EQ(*binary, Sample(true));
    EXPECT_EQ(Keys(*binary), Keys(Sample(true)));
    const Result<PropertyList> xml = XMLPropertyList::Deserialize(FileBytes(folder / "sample.xml"));
    ASSERT_TRUE(xml) << xml.reason();
    EXPECT_EQ(*xml, Sample(false));
    EXPECT_EQ(Keys(*xml), Keys(Sample(false)));
}

TEST(PropertyListOracleTest, PythonReadsWhatWeWriteAndWouldWriteTheSameBytes) {
    const ScratchFolder folder;
    WriteFile(folder / "ours.binary", BinaryPropertyList::Serialize(Sample(true)));
    WriteFile(folder / "ours.xml", XMLPropertyList::Serialize(Sample(false)));
    RunOracle("check '" + folder.path().string() + "'");
}

TEST(PropertyListOracleTest, PythonReadsOurSinglePrecisionReals) {
    const ScratchFolder folder;
    WriteFile(folder / "singles.binary",
              BinaryPropertyList::Serialize(PropertyList::array(
                  {PropertyList::floatNumber(0.1f), PropertyList::floatNumber(-20),
                   PropertyList::floatNumber(std::numeric_limits<float>::max()),
                   PropertyList::floatNumber(std::numeric_limits<float>::denorm_min())})));
    RunOracle("singles '" + folder.path().string() + "'");
}

} // namespace
} // namespace tallyforge::testing
