// Lists of rows in the bundle: how they are found and read, and what is made of bad ones.
#include "preferences/PSListController.h"
#include "support/DeviceFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyforge::test {
namespace {

constexpr const char* kList = "/Library/PreferenceBundles/own.bundle/sizeprefs.plist";

std::vector<uint8_t> bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

PropertyList rowNamed(const std::string& identifier) {
    Dictionary row;
    row.setObjectForKey(PropertyList::string("PSLinkCell"), "cell");
    row.setObjectForKey(PropertyList::string(identifier), "id");
    return PropertyList::dictionary(std::move(row));
}

PropertyList list(PropertyList items, PropertyList title = PropertyList::string("Size")) {
    Dictionary contents;
    contents.setObjectForKey(std::move(title), "title");
    contents.setObjectForKey(std::move(items), "items");
    return PropertyList::dictionary(std::move(contents));
}

class Pane final : public PSListController {
  public:
    std::string bundlePath() const override { return folder; }
    std::vector<std::string> load(const char* name = "sizeprefs") {
        rows = loadSpecifiersFromPlistNameTarget(name, *this);
        std::vector<std::string> identifiers;
        for (const PSSpecifierRef& row : rows)
            identifiers.push_back(row->identifier());
        return identifiers;
    }
    std::vector<PSSpecifierRef> rows;
    std::string folder = "/Library/PreferenceBundles/own.bundle/";
};

using Identifiers = std::vector<std::string>;

class SpecifierListTest : public testing::Test {
  protected:
    ~SpecifierListTest() override { PSListController::setSpareLists({}); }
    void write(const PropertyList& contents, const char* path = kList) {
        device_.write(path, BinaryPropertyList::Serialize(contents));
    }
    TestDevice device_;
    Pane pane;
};

TEST_F(SpecifierListTest, BothFormsAreRead) {
    PropertyList contents = list(PropertyList::array({rowNamed("one"), rowNamed("two")}));
    write(contents);
    EXPECT_EQ(pane.load(), (Identifiers{"one", "two"}));
    EXPECT_EQ(pane.title(), "Size");
    for (const PSSpecifierRef& row : pane.rows)
        EXPECT_EQ(row->target(), &pane);
    EXPECT_EQ(pane.rows[1]->cellKind(), "PSLinkCell");
    device_.write(kList, XMLPropertyList::Serialize(contents));
    EXPECT_EQ(Pane().load(), (Identifiers{"one", "two"}));
}

TEST_F(SpecifierListTest, ATitleThatTheScreenHasStays) {
    write(list(PropertyList::array({rowNamed("one")})));
    pane.setTitle("Mine");
    pane.load();
    EXPECT_EQ(pane.title(), "Mine");
    Pane other;
    write(list(PropertyList::array({rowNamed("one")}), PropertyList::integer(5)));
    EXPECT_EQ(other.load(), Identifiers{"one"});
    EXPECT_EQ(other.title(), "");
}

TEST_F(SpecifierListTest, TheOtherPlaceOfTheBundleAndThenTheSpareCopyAreTried) {
    std::vector<std::string> asked;
    PSListController::setSpareLists([&](const std::string& path) {
        asked.push_back(path);
        return path == kList ? BinaryPropertyList::Serialize(list(PropertyList::array({rowNamed("spare")})))
                             : std::vector<uint8_t>();
    });
    EXPECT_EQ(pane.load(), Identifiers{"spare"});
    EXPECT_EQ(pane.load("otherprefs"), Identifiers{});
    EXPECT_EQ(asked, (Identifiers{kList, "/Library/PreferenceBundles/own.bundle/otherprefs.plist"}));

    asked.clear();
    write(list(PropertyList::array({rowNamed("bootstrap")})), (std::string("/bootstrap") + kList).c_str());
    EXPECT_EQ(pane.load(), Identifiers{"bootstrap"});
    write(list(PropertyList::array({rowNamed("first")})));
    EXPECT_EQ(pane.load(), Identifiers{"first"});
    device_.write(kList, bytes("no list")); // it is there, so no other one counts
    EXPECT_EQ(pane.load(), Identifiers{});
    EXPECT_EQ(asked, Identifiers{});
}

TEST_F(SpecifierListTest, WhatIsNoListGivesNoRows) {
    EXPECT_EQ(pane.load(), Identifiers{});
    Dictionary titled;
    titled.setObjectForKey(PropertyList::string("Size"), "title");
    for (const PropertyList& contents :
         {PropertyList::array({rowNamed("one")}), PropertyList::string("text"), PropertyList::integer(1),
          PropertyList::dictionary(titled), list(PropertyList::string("rows")), list(rowNamed("one"))}) {
        write(contents);
        EXPECT_EQ(pane.load(), Identifiers{});
    }
    for (std::string_view junk : {"", "x", "bplist00", "bplist00\x08\x08", "<?xml version=\"1.0\"?><plist>",
                                  "<plist><dict><key>items</key></dict></plist>"}) {
        device_.write(kList, bytes(junk));
        EXPECT_EQ(pane.load(), Identifiers{}) << junk;
    }
    std::filesystem::remove(device_.file(kList));
    std::filesystem::create_directories(device_.file(kList)); // a folder of that name
    EXPECT_EQ(pane.load(), Identifiers{});
}

TEST_F(SpecifierListTest, RowsThatAreNoDictionariesAreLeftOut) {
    write(list(PropertyList::array({PropertyList::string("x"), rowNamed("one"), PropertyList::array({}),
                                    PropertyList::integer(3), rowNamed("two")})));
    EXPECT_EQ(pane.load(), (Identifiers{"one", "two"}));
}

TEST_F(SpecifierListTest, AnEndlessListIsCut) {
    PropertyList::Array rows;
    for (int i = 0; i < 2000; ++i)
        rows.push_back(rowNamed(std::to_string(i)));
    write(list(PropertyList::array(rows)));
    EXPECT_EQ(pane.load().size(), 1024U);
    EXPECT_EQ(pane.rows.back()->identifier(), "1023");

    std::string wide(2u << 20, 'x'); // larger than any list may be
    write(list(PropertyList::array({rowNamed(wide)})));
    EXPECT_EQ(pane.load(), Identifiers{});
    PropertyList deep = rowNamed("deep");
    for (int i = 0; i < 40; ++i)
        deep = PropertyList::array({deep});
    write(list(deep));
    EXPECT_EQ(pane.load(), Identifiers{});
}

TEST_F(SpecifierListTest, AScreenWithoutABundleHasNoList) {
    write(list(PropertyList::array({rowNamed("one")})));
    write(list(PropertyList::array({rowNamed("root")})), "/sizeprefs.plist");
    pane.folder = "";
    EXPECT_EQ(pane.load(), Identifiers{});
}

} // namespace
} // namespace tallyforge::test
