// Themes and specifier lists also come as XML, often written by hand or by other programs.

#include "PropertyListTesting.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace tallyforge::testing {
namespace {

using namespace std::string_literals;

constexpr const char* kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n";

Result<PropertyList> ReadFile(std::string_view text) {
    return XMLPropertyList::Deserialize(BytesOf(text));
}

std::string File(std::string_view value) {
    return std::string(kHead) + "<plist version=\"1.0\">" + std::string(value) + "</plist>\n";
}

PropertyList Read(std::string_view value) {
    const Result<PropertyList> read = ReadFile(File(value));
    EXPECT_TRUE(read) << value << ": " << read.reason();
    return read ? *read : PropertyList::string("(refused)");
}

void RefusedFile(std::string_view text, std::string_view reason) {
    ExpectRefused([&] { return ReadFile(text); }, reason);
}

void Refused(std::string_view value, std::string_view reason) {
    RefusedFile(File(value), reason);
}

TEST(XMLPropertyListTest, EveryElementHasItsKind) {
    EXPECT_EQ(Read("<true/>"), PropertyList::boolean(true));
    EXPECT_EQ(Read("<false></false>"), PropertyList::boolean(false));
    EXPECT_EQ(Read("<integer>5</integer>"), PropertyList::integer(5));
    EXPECT_EQ(Read("<real>5</real>"), PropertyList::doubleNumber(5));
    EXPECT_EQ(Read("<string>5</string>"), PropertyList::string("5"));
    EXPECT_EQ(Read("<string/>"), PropertyList::string(""));
    EXPECT_EQ(Read("<data>AAEC/w==</data>"), PropertyList::data({0, 1, 2, 255}));
    EXPECT_EQ(Read("<date>2001-01-02T00:00:01Z</date>"), PropertyList::date(86401));
    EXPECT_EQ(Read("<array/>"), PropertyList::array({}));
    EXPECT_EQ(Read("<dict/>"), PropertyList::dictionary({}));
}

TEST(XMLPropertyListTest, Integers) {
    EXPECT_EQ(Read("<integer> \n-12\t</integer>"), PropertyList::integer(-12));
    EXPECT_EQ(Read("<integer>+7</integer>"), PropertyList::integer(7));
    EXPECT_EQ(Read("<integer>0x1F</integer>"), PropertyList::integer(31));
    EXPECT_EQ(Read("<integer>0Xff</integer>"), PropertyList::integer(255));
    EXPECT_EQ(Read("<integer>-0x10</integer>"), PropertyList::integer(-16));
    EXPECT_EQ(Read("<integer>18446744073709551615</integer>"), PropertyList::unsignedInteger(UINT64_MAX));
    EXPECT_EQ(Read("<integer>-9223372036854775808</integer>"), PropertyList::integer(INT64_MIN));
    for (const char* text : {"", " ", "1.5", "x", "1 2", "--1", "0x", "18446744073709551616",
                             "-9223372036854775809", "99999999999999999999999999", "1<!-- -->a", "1_0"})
        Refused("<integer>"s + text + "</integer>", "integer that cannot be read");
}

TEST(XMLPropertyListTest, Reals) {
    EXPECT_EQ(Read("<real> 0.1 </real>"), PropertyList::doubleNumber(0.1));
    EXPECT_EQ(Read("<real>-1.5e3</real>"), PropertyList::doubleNumber(-1500));
    EXPECT_EQ(Read("<real>1e400</real>"),
              PropertyList::doubleNumber(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(Read("<real>-Infinity</real>"),
              PropertyList::doubleNumber(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(Read("<real>+inf</real>"), PropertyList::doubleNumber(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(std::isnan(Read("<real>NaN</real>").doubleValue()));
    for (const char* text : {"", "abc", "1.5x", "0x10", "1,5", "."})
        Refused("<real>"s + text + "</real>", "real that cannot be read");
}

TEST(XMLPropertyListTest, Dates) {
    EXPECT_EQ(Read("<date>1970-01-01T00:00:00Z</date>"), PropertyList::date(-978307200));
    EXPECT_EQ(Read("<date>9999-12-31T23:59:59Z</date>"), PropertyList::date(252423993599));
    EXPECT_EQ(Read("<date>0001-01-01T00:00:00Z</date>"), PropertyList::date(-63113904000));
    EXPECT_EQ(Read("<date>2004-02-29T12:00:00Z</date>"),
              PropertyList::date((3 * 365 + 31 + 28) * 86400 + 43200));
    for (const char* text :
         {"", "2001", "2001-02-29T00:00:00Z", "2001-13-01T00:00:00Z", "0000-01-01T00:00:00Z",
          "2001-01-01T24:00:00Z", "2001-01-01T00:60:00Z", "2001-01-01 00:00:00Z", "2001-01-01T00:00:00+0"})
        Refused("<date>"s + text + "</date>", "date that cannot be read");
}

TEST(XMLPropertyListTest, Data) {
    EXPECT_EQ(Read("<data>\n\tAAEC\n\t/w==\n</data>"), PropertyList::data({0, 1, 2, 255}));
    EXPECT_EQ(Read("<data>AAE=</data>"), PropertyList::data({0, 1}));
    EXPECT_EQ(Read("<data></data>"), PropertyList::data({}));
    for (const char* text : {"A", "AA", "AAA", "====", "A===", "AA=A", "AA==AAAA", "A-__", "AA==="})
        Refused("<data>"s + text + "</data>", "data that cannot be read");
}

TEST(XMLPropertyListTest, StringsKeepTheirWhiteSpace) {
    EXPECT_EQ(Read("<string>  a\n\tb  </string>"), PropertyList::string("  a\n\tb  "));
    EXPECT_EQ(Read("<string>   </string>"), PropertyList::string("   "));
    EXPECT_EQ(Read("<string>a\r\nb\rc&#13;d</string>"), PropertyList::string("a\nb\nc\rd"));
    const PropertyList value = Read("<dict> <key> a </key>\n<string> </string></dict>");
    EXPECT_EQ(*value.asDictionary()->objectForKey(" a "), PropertyList::string(" "));
}

TEST(XMLPropertyListTest, StringsAreJoinedFromTheirPieces) {
    EXPECT_EQ(Read("<string>a<!-- <b> & --> <![CDATA[<&>]]>d</string>"), PropertyList::string("a <&>d"));
    EXPECT_EQ(Read("<string>&lt;&amp;&gt;&quot;&apos;&#65;&#x1F600;</string>"),
              PropertyList::string("<&>\"'A\xF0\x9F\x98\x80"));
    EXPECT_EQ(Read("<array><!-- one --><true/><!-- two --></array>"),
              PropertyList::array({PropertyList::boolean(true)}));
}

TEST(XMLPropertyListTest, ADuplicateKeyHasItsLastValueAtTheFirstPlace) {
    const PropertyList value =
        Read("<dict><key>a</key><true/><key>b</key><true/><key>a</key><integer>2</integer></dict>");
    ASSERT_EQ(value.asDictionary()->count(), 2u);
    EXPECT_EQ(value.asDictionary()->entries()[0].key, "a");
    EXPECT_EQ(value.asDictionary()->entries()[0].value, PropertyList::integer(2));
}

TEST(XMLPropertyListTest, UIDsAreSpelledAsDictionaries) {
    EXPECT_EQ(Read("<dict><key>CF$UID</key><integer>5</integer></dict>"), PropertyList::uid(5));
    EXPECT_NE(Read("<dict><key>CF$UID</key><integer>-5</integer></dict>").asDictionary(), nullptr);
    EXPECT_NE(Read("<dict><key>CF$UID</key><string>5</string></dict>").asDictionary(), nullptr);
    const Result<PropertyList> read =
        XMLPropertyList::Deserialize(XMLPropertyList::Serialize(PropertyList::uid(9)));
    EXPECT_EQ(*read, PropertyList::uid(9));
}

TEST(XMLPropertyListTest, TheFileMayLackItsHeadOrHaveAByteOrderMark) {
    EXPECT_EQ(*ReadFile("<plist><true/></plist>"), PropertyList::boolean(true));
    EXPECT_EQ(*ReadFile("<array><true/></array>"), PropertyList::array({PropertyList::boolean(true)}));
    EXPECT_EQ(*ReadFile("\n <!-- x --><plist><true/></plist> <!-- y -->\n"), PropertyList::boolean(true));
    EXPECT_EQ(*ReadFile("\xEF\xBB\xBF" + File("<string>\xC3\xA4</string>")),
              PropertyList::string("\xC3\xA4"));
    EXPECT_EQ(*ReadFile("<?xml version='1.0' encoding = 'utf-8'?><plist><true/></plist>"),
              PropertyList::boolean(true));
}

TEST(XMLPropertyListTest, UTF16WithItsMarkIsRead) {
    const std::string text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>x</string></plist>";
    Bytes big = Hex("fe ff"), little = Hex("ff fe");
    for (const char c : text) {
        big = big + Bytes{0, static_cast<uint8_t>(c)};
        little = little + Bytes{static_cast<uint8_t>(c), 0};
    }
    EXPECT_EQ(*XMLPropertyList::Deserialize(big), PropertyList::string("x"));
    EXPECT_EQ(*XMLPropertyList::Deserialize(little), PropertyList::string("x"));
    EXPECT_FALSE(XMLPropertyList::Deserialize(big + Hex("d800")));
}

TEST(XMLPropertyListTest, WritesTheFormOfThePlatform) {
    Dictionary dictionary;
    dictionary.setObjectForKey(PropertyList::floatNumber(1.5f), "badgesize");
    dictionary.setObjectForKey(PropertyList::array({PropertyList::string("a<b&\r")}), "list");
    dictionary.setObjectForKey(PropertyList::data({0, 1, 2, 255}), "d");
    dictionary.setObjectForKey(PropertyList::date(86401.75), "when");
    dictionary.setObjectForKey(PropertyList::dictionary({}), "none");
    const Bytes file = XMLPropertyList::Serialize(PropertyList::dictionary(dictionary));
    EXPECT_EQ(std::string(file.begin(), file.end()),
              std::string(kHead) +
                  "<plist version=\"1.0\">\n"
                  "<dict>\n"
                  "\t<key>badgesize</key>\n\t<real>1.5</real>\n"
                  "\t<key>list</key>\n\t<array>\n\t\t<string>a&lt;b&amp;&#13;</string>\n\t</array>\n"
                  "\t<key>d</key>\n\t<data>\n\tAAEC/w==\n\t</data>\n"
                  "\t<key>when</key>\n\t<date>2001-01-02T00:00:01Z</date>\n"
                  "\t<key>none</key>\n\t<dict/>\n"
                  "</dict>\n</plist>\n");
}

TEST(XMLPropertyListTest, WhatXMLCannotCarryIsReplaced) {
    const auto back = [](const PropertyList& value) {
        return *XMLPropertyList::Deserialize(XMLPropertyList::Serialize(value));
    };
    EXPECT_EQ(back(PropertyList::string("a\0b\x01\xED\xA0\x80\xFF"s)),
              PropertyList::string("a\xEF\xBF\xBD"
                                   "b\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"));
    EXPECT_EQ(back(PropertyList::floatNumber(0.1f)), PropertyList::doubleNumber(static_cast<double>(0.1f)));
    EXPECT_EQ(back(PropertyList::doubleNumber(-std::numeric_limits<double>::infinity())),
              PropertyList::doubleNumber(-std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(std::isnan(back(PropertyList::doubleNumber(NAN)).doubleValue()));
}

TEST(HostileXMLTest, EntityBombs) {
    RefusedFile(
        "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
        "<plist><string>&b;</string></plist>",
        "XML document type with definitions of its own");
    RefusedFile("<!DOCTYPE plist SYSTEM \"x\" [<!ENTITY a SYSTEM "
                "\"file:///etc/passwd\">]><plist><string>&a;</string></plist>",
                "XML document type with definitions of its own");
    Refused("<string>&a;</string>", "XML entity that is not allowed");
    Refused("<string>&</string>", "XML entity that is not allowed");
    Refused("<string>&lt</string>", "XML entity that is not allowed");
    RefusedFile("<plist version=\"&a;\"><true/></plist>", "XML entity that is not allowed");
}

TEST(HostileXMLTest, CharacterNumbersThatAreNone) {
    for (const char* text :
         {"&#0;", "&#xD800;", "&#x110000;", "&#99999999999;", "&#;", "&#x;", "&#-1;", "&#xFFFF;"})
        Refused("<string>"s + text + "</string>", "XML character number that is not allowed");
}

TEST(HostileXMLTest, BytesThatAreNoText) {
    for (const std::string& text :
         {"a\0b"s, "\x01"s, "\xFF"s, "\xC3"s, "\xC0\x80"s, "\xED\xA0\x80"s, "\xEF\xBF\xBF"s})
        Refused("<string>" + text + "</string>",
                "text that is no UTF-8 or holds characters not allowed in XML");
    RefusedFile("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><true/></plist>",
                "XML in an encoding other than UTF-8 and UTF-16");
}

std::string Nested(size_t containers) {
    std::string text;
    for (size_t i = 0; i < containers; ++i)
        text += "<array>";
    text += "<true/>";
    for (size_t i = 0; i < containers; ++i)
        text += "</array>";
    return text;
}

TEST(HostileXMLTest, DepthOf64IsReadAndMoreIsRefused) {
    EXPECT_TRUE(ReadFile(File(Nested(64))));
    Refused(Nested(65), "containers nested too deep");
    Refused(Nested(100000), "containers nested too deep");
    RefusedFile(Nested(66), "containers nested too deep");
    std::string open;
    for (int i = 0; i < 500000; ++i)
        open += "<array>";
    Refused(open, "containers nested too deep");
}

TEST(HostileXMLTest, TooManyElements) {
    std::string text = "<array>";
    for (int i = 0; i < 65534; ++i) // with plist and array there are 65,536
        text += "<true/>";
    EXPECT_TRUE(ReadFile(File(text + "</array>")));
    Refused(text + "<true/></array>", "too many objects");
    Refused(std::string((4u << 20) - 400, 'x'), "text between the elements of a container");
    Refused(std::string(4u << 20, ' '), "file too large");
}

// Nodes for the parser without being elements: comments that cut a text, attributes.
TEST(HostileXMLTest, ManyPiecesAndAttributes) {
    std::string pieces, attributes;
    for (int i = 0; i < 500000; ++i)
        pieces += "a<!---->";
    for (int i = 0; i < 600000; ++i)
        attributes += " a=''";
    Refused("<integer>" + pieces + "</integer>", "too many pieces of XML markup");
    Refused("<integer" + attributes + "/>", "too many pieces of XML markup");
    // as many as are let through
    Refused("<integer>" + pieces.substr(0, 8 * 262000) + "</integer>", "integer that cannot be read");
}

TEST(HostileXMLTest, BrokenMarkup) {
    for (const char* text : {"<plist><dict>", "<plist><true/>", "<plist", "<plist><!-- ", "<plist><![CDATA[ ",
                             "<?xml version", "<!DOCTYPE plist", "<plist a=\">"})
        RefusedFile(text, "XML that ends too early");
    for (const char* text :
         {"<plist a=\"></plist>", "<plist><array></dict></plist>", "</plist>", "<plist><a<b/></plist>",
          "<plist>< true/></plist>", "<!ENTITY a 'b'><plist/>", "<plist><!DOCTYPE x><true/></plist>",
          "<![CDATA[x]]>", "<plist></plist></plist>"})
        RefusedFile(text, "XML that cannot be read");
    RefusedFile("<plist><true/></plist><plist><true/></plist>", "more than one root in the XML");
    RefusedFile("<plist><true/></plist>text", "text outside the property list");
    RefusedFile("<!-- only -->", "no property list in the XML");
    RefusedFile("plain", "not an XML property list");
    RefusedFile("", "not an XML property list");
}

TEST(HostileXMLTest, ElementsInTheWrongPlace) {
    Refused("", "no value in the property list");
    Refused("<true/><true/>", "more than one value in the property list");
    Refused("<foo/>", "unknown kind of element");
    Refused("<key>a</key>", "key outside of a dictionary");
    Refused("<plist><true/></plist>", "unknown kind of element");
    Refused("<dict><true/></dict>", "value without a key");
    Refused("<dict><key>a</key></dict>", "key without a value");
    Refused("<dict><key>a</key><key>b</key></dict>", "key outside of a dictionary");
    Refused("<dict>text</dict>", "text between the elements of a container");
    Refused("<array>text</array>", "text between the elements of a container");
    Refused("<array><![CDATA[ ]]></array>", "text between the elements of a container");
    Refused("<string>a<b/></string>", "element inside of a value");
    Refused("<dict><key><string>a</string></key><true/></dict>", "element inside of a value");
    Refused("<true>1</true>", "boolean with a text");
}

} // namespace
} // namespace tallyforge::testing
