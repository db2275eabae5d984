// One row: its properties, its choices, and the methods of its target that it names.
#include "preferences/PSSpecifier.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace tallyforge::test {
namespace {

using Properties = std::vector<std::pair<const char*, PropertyList>>;

PropertyList text(const char* value) {
    return PropertyList::string(value);
}

PSSpecifierRef row(const Properties& properties, NSObject* target = nullptr) {
    Dictionary dictionary;
    for (const auto& [key, value] : properties)
        dictionary.setObjectForKey(value, key);
    auto made = std::make_shared<PSSpecifier>(std::move(dictionary));
    made->setSelf(made);
    made->setTarget(target);
    return made;
}

/// Notes what it is told, and by which row.
class Target final : public NSObject {
  public:
    const MethodTable& methods() const override {
        static constexpr MethodEntry own[] = {
            {"readPreferenceValue:", [](NSObject&, const MethodArguments&) { return give(text("read")); }},
            {"ownValue:",
             [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
                 as(self).row = arguments.object;
                 return as(self).silent ? nullptr : give(text("own"));
             }},
            {"setPreferenceValue:specifier:",
             [](NSObject& self, const MethodArguments& arguments) { return note(self, "plain", arguments); }},
            {"setOwn:forSpecifier:",
             [](NSObject& self, const MethodArguments& arguments) { return note(self, "own", arguments); }},
            {"values:",
             [](NSObject& self, const MethodArguments& arguments) {
                 as(self).row = arguments.object;
                 return give(PropertyList::array({text("a"), text("b"), text("c")}));
             }},
            {"titles:",
             [](NSObject&, const MethodArguments&) {
                 return give(PropertyList::array({text("First"), PropertyList::integer(2)}));
             }},
            {"noList:", [](NSObject&, const MethodArguments&) { return give(text("text")); }},
        };
        static constexpr MethodTable table{own};
        return table;
    }
    std::vector<std::string> told;
    std::shared_ptr<NSObject> row;
    bool silent = false;

  private:
    static Target& as(NSObject& self) { return static_cast<Target&>(self); }
    static MethodResult give(PropertyList value) {
        return std::make_shared<const PropertyList>(std::move(value));
    }
    static MethodResult note(NSObject& self, const std::string& name, const MethodArguments& arguments) {
        as(self).told.push_back(name + " " + (arguments.value ? arguments.value->description() : "nothing"));
        as(self).row = arguments.object;
        return nullptr;
    }
};

std::vector<std::pair<std::string, std::string>> choicesOf(PSSpecifier& specifier) {
    std::vector<std::pair<std::string, std::string>> choices;
    for (const PSSpecifier::Choice& choice : specifier.choices())
        choices.emplace_back(choice.value.description(), choice.title);
    return choices;
}
using Choices = std::vector<std::pair<std::string, std::string>>;

TEST(PSSpecifier, PropertiesAreReadAsWhatTheyAre) {
    auto full = row({{"label", text("Size")},
                     {"cell", text("PSSliderCell")},
                     {"min", PropertyList::doubleNumber(-1.5)},
                     {"max", PropertyList::integer(2)},
                     {"on", PropertyList::boolean(true)},
                     {"off", PropertyList::integer(0)},
                     {"yes", text("YES")},
                     {"list", PropertyList::array({})}});
    EXPECT_EQ(full->name(), "Size");
    EXPECT_EQ(full->cellKind(), "PSSliderCell");
    EXPECT_EQ(full->textForKey("min"), "");
    EXPECT_EQ(full->textForKey("absent"), "");
    EXPECT_EQ(full->numberForKey("min", 9), -1.5);
    EXPECT_EQ(full->numberForKey("max", 9), 2);
    EXPECT_EQ(full->numberForKey("label", 9), 9);
    EXPECT_EQ(full->numberForKey("absent", 9), 9);
    EXPECT_TRUE(full->flagForKey("on", false));
    EXPECT_FALSE(full->flagForKey("off", true));
    EXPECT_TRUE(full->flagForKey("yes", false));
    EXPECT_TRUE(full->flagForKey("list", true));
    EXPECT_FALSE(full->flagForKey("absent", false));
    full->removePropertyForKey("label");
    EXPECT_EQ(full->name(), "");
}

TEST(PSSpecifier, TheIdentifierIsTheIdElseTheKey) {
    EXPECT_EQ(row({{"id", text("one")}, {"key", text("two")}})->identifier(), "one");
    EXPECT_EQ(row({{"key", text("two")}})->identifier(), "two");
    EXPECT_EQ(row({{"id", PropertyList::integer(1)}, {"key", text("two")}})->identifier(), "two");
    EXPECT_EQ(row({})->identifier(), "");
}

TEST(PSSpecifier, ObjectsOfTheRowAreNotKeptAlive) {
    auto specifier = row({});
    EXPECT_EQ(specifier->objectForKey("cellObject"), nullptr);
    auto cell = std::make_shared<Target>();
    specifier->setObjectForKey(cell, "cellObject");
    EXPECT_EQ(specifier->objectForKey("cellObject"), cell);
    EXPECT_EQ(cell.use_count(), 1);
    cell.reset();
    EXPECT_EQ(specifier->objectForKey("cellObject"), nullptr);
}

TEST(PSSpecifier, ChoicesAreAsManyAsHaveAValueAndATitle) {
    auto values = PropertyList::array({PropertyList::integer(0), PropertyList::integer(4), text("x")});
    auto titles = PropertyList::array({text("None"), PropertyList::integer(7)});
    EXPECT_EQ(choicesOf(*row({{"validValues", values}, {"validTitles", titles}})),
              (Choices{{"0", "None"}, {"4", "7"}}));
    EXPECT_EQ(choicesOf(*row({{"validValues", titles}, {"validTitles", values}})),
              (Choices{{"None", "0"}, {"7", "4"}}));
    EXPECT_EQ(choicesOf(*row({{"validValues", values}})), Choices{});
    EXPECT_EQ(choicesOf(*row({{"validTitles", titles}})), Choices{});
    EXPECT_EQ(choicesOf(*row({{"validValues", text("a")}, {"validTitles", titles}})), Choices{});
    EXPECT_EQ(choicesOf(*row({})), Choices{});
}

TEST(PSSpecifier, ChoicesMayComeFromTheTarget) {
    Target target;
    auto sourced =
        row({{"valuesDataSource", text("values:")}, {"titlesDataSource", text("titles:")}}, &target);
    EXPECT_EQ(choicesOf(*sourced), (Choices{{"a", "First"}, {"b", "2"}}));
    EXPECT_EQ(target.row, sourced);
    auto titles = PropertyList::array({text("T")});
    EXPECT_EQ(choicesOf(*row({{"valuesDataSource", text("values:")}, {"validTitles", titles}}, &target)),
              (Choices{{"a", "T"}}));
    EXPECT_EQ(choicesOf(*row({{"valuesDataSource", text("unknown:")}, {"validTitles", titles}}, &target)),
              Choices{});
    EXPECT_EQ(choicesOf(*row({{"valuesDataSource", text("noList:")}, {"validTitles", titles}}, &target)),
              Choices{});
    EXPECT_EQ(choicesOf(*row({{"valuesDataSource", text("values:")}, {"validTitles", titles}})), Choices{});
}

TEST(PSSpecifier, TheGetterIsTheNamedOneElseTheFrameworks) {
    Target target;
    EXPECT_EQ(row({}, &target)->performGetter(), text("read"));
    auto own = row({{"get", text("ownValue:")}}, &target);
    EXPECT_EQ(own->performGetter(), text("own"));
    EXPECT_EQ(target.row, own);
    target.silent = true;
    EXPECT_EQ(own->performGetter(), std::nullopt);
    EXPECT_EQ(row({{"get", text("unknown:")}}, &target)->performGetter(), std::nullopt);
    EXPECT_EQ(row({})->performGetter(), std::nullopt);
}

TEST(PSSpecifier, TheSetterIsTheNamedOneElseTheFrameworks) {
    Target target;
    auto plain = row({}, &target);
    plain->performSetter(PropertyList::integer(3));
    EXPECT_EQ(target.row, plain);
    auto own = row({{"set", text("setOwn:forSpecifier:")}}, &target);
    own->performSetter(text("red"));
    EXPECT_EQ(target.row, own);
    row({{"set", text("unknown:")}}, &target)->performSetter(text("lost"));
    row({})->performSetter(text("lost"));
    EXPECT_EQ(target.told, (std::vector<std::string>{"plain 3", "own red"}));
}

/// A screen whose methods show all its rows again, as those that change settings do.
class Restless final : public NSObject {
  public:
    const MethodTable& methods() const override {
        static constexpr MethodEntry own[] = {
            {"shuffle", [](NSObject& self, const MethodArguments&) -> MethodResult {
                 auto& screen = static_cast<Restless&>(self);
                 ++screen.asked;
                 for (const PSSpecifierRef& shown : screen.rows) {
                     shown->choices();
                     shown->performGetter();
                 }
                 return MethodResult(std::make_shared<const PropertyList>(text("shuffled")));
             }}};
        static constexpr MethodTable table{own};
        return table;
    }
    std::vector<PSSpecifierRef> rows;
    int asked = 0;
};

TEST(PSSpecifier, MethodsThatAskTheRowsAgainComeToAnEnd) {
    Restless screen;
    for (int i = 0; i < 20; ++i)
        screen.rows.push_back(row({{"get", text("shuffle")},
                                   {"valuesDataSource", text("shuffle")},
                                   {"titlesDataSource", text("shuffle")}},
                                  &screen));
    EXPECT_TRUE(screen.rows[0]->choices().empty());
    EXPECT_EQ(screen.asked, 2); // for the values and for the titles
    EXPECT_EQ(screen.rows[1]->performGetter(), text("shuffled"));
    EXPECT_EQ(screen.asked, 3);
}

} // namespace
} // namespace tallyforge::test
