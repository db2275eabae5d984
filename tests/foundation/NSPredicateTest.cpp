#include "foundation/NSPredicate.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace tallyforge {
namespace {

PropertyList Text(const char* text) {
    return PropertyList::string(text);
}

// Whether the format holds for an object with these attributes.
bool Holds(const char* format, std::map<std::string, PropertyList, std::less<>> object,
           const std::vector<PropertyList>& arguments = {}) {
    auto predicate = NSPredicate::predicateWithFormat(format, arguments);
    EXPECT_TRUE(predicate) << format;
    return predicate && predicate->evaluateWithObject([&](std::string_view key) -> NSPredicate::Value {
        auto found = object.find(key);
        return found == object.end() ? nullptr : std::make_shared<const PropertyList>(found->second);
    });
}

TEST(NSPredicate, ContainsLooksForAnItemOfAList) {
    auto tags = PropertyList::array({Text("beta"), Text("hidden")});
    EXPECT_TRUE(Holds("appTags contains 'hidden'", {{"appTags", tags}}));
    EXPECT_FALSE(Holds("appTags contains 'hidde'", {{"appTags", tags}}));
    EXPECT_FALSE(Holds("appTags contains 'hidden'", {{"appTags", PropertyList::array({})}}));
}

TEST(NSPredicate, ContainsLooksForAPartOfAText) {
    const char* format = "applicationIdentifier contains 'com.apple.webapp'";
    EXPECT_TRUE(Holds(format, {{"applicationIdentifier", Text("com.apple.webapp")}}));
    EXPECT_TRUE(Holds(format, {{"applicationIdentifier", Text("x.com.apple.webapp-17")}}));
    EXPECT_FALSE(Holds(format, {{"applicationIdentifier", Text("com.apple.web")}}));
    EXPECT_FALSE(Holds(format, {{"applicationIdentifier", Text("COM.APPLE.WEBAPP")}}));
}

TEST(NSPredicate, NothingContainsAndEqualsNothing) {
    EXPECT_FALSE(Holds("appTags contains 'hidden'", {}));
    EXPECT_TRUE(Holds("not (appTags contains 'hidden')", {}));
    EXPECT_FALSE(Holds("applicationType == 'User'", {}));
    EXPECT_FALSE(Holds("itemID contains '1'", {{"itemID", PropertyList::integer(1)}}));
}

TEST(NSPredicate, EqualsComparesWithAnArgument) {
    EXPECT_TRUE(Holds("applicationType == %@", {{"applicationType", Text("User")}}, {Text("User")}));
    EXPECT_FALSE(Holds("applicationType == %@", {{"applicationType", Text("User")}}, {Text("System")}));
    EXPECT_FALSE(Holds("applicationType == %@", {{"applicationType", Text("user")}}, {Text("User")}));
    EXPECT_TRUE(Holds("a == %@ and b == %@", {{"a", Text("1")}, {"b", Text("2")}}, {Text("1"), Text("2")}));
}

TEST(NSPredicate, OrBindsWeakestAndNotStrongest) {
    const std::map<std::string, PropertyList, std::less<>> object{{"a", Text("1")}, {"b", Text("2")}};
    EXPECT_TRUE(Holds("a == '1' or b == '9' and b == '8'", object));
    EXPECT_FALSE(Holds("(a == '1' or b == '9') and b == '8'", object));
    EXPECT_TRUE(Holds("not a == '9' and b == \"2\"", object));
    EXPECT_FALSE(Holds("NOT (a == '9' OR b == '2')", object));
    EXPECT_TRUE(Holds("not not a CONTAINS '1'", object));
}

TEST(NSPredicate, ACompoundOneHoldsWhenAllItsPartsDo) {
    auto part = [](const char* format) { return *NSPredicate::predicateWithFormat(format); };
    const auto one = [](std::string_view) {
        return std::make_shared<const PropertyList>(PropertyList::string("1"));
    };
    auto all = [](std::vector<NSPredicate> parts) {
        return NSPredicate::andPredicateWithSubpredicates(std::move(parts));
    };
    EXPECT_TRUE(all({}).evaluateWithObject(one));
    EXPECT_TRUE(all({part("a == '1'"), part("b == '1'")}).evaluateWithObject(one));
    EXPECT_FALSE(all({part("a == '1'"), part("b == '2'")}).evaluateWithObject(one));
    EXPECT_FALSE(all({part("a == '2'"), part("b == '1'")}).evaluateWithObject(one));
}

class NSPredicateWrongFormat : public testing::TestWithParam<std::string> {};

TEST_P(NSPredicateWrongFormat, IsRefused) {
    auto predicate = NSPredicate::predicateWithFormat(GetParam());
    ASSERT_FALSE(predicate);
    EXPECT_FALSE(predicate.reason().empty());
}

INSTANTIATE_TEST_SUITE_P(All, NSPredicateWrongFormat,
                         testing::Values("", "a", "a ==", "a == 'x", "== 'x'", "a contains", "a == %@",
                                         "(a == 'x'", "a == 'x')", "a == 'x' and", "a == 'x' or", "not",
                                         "a like 'x'", "a == 'x' b == 'y'", std::string(5000, '(')));

} // namespace
} // namespace tallyforge
