// A settings screen's rows: how they are found, and where their values live.
#include "preferences/PSListController.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "preferences/PSTableCell.h"
#include "support/DeviceFixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace tallyforge::test {
namespace {

using Properties = std::vector<std::pair<const char*, PropertyList>>;

PropertyList text(const char* value) {
    return PropertyList::string(value);
}

PSSpecifierRef row(const Properties& properties) {
    Dictionary dictionary;
    for (const auto& [key, value] : properties)
        dictionary.setObjectForKey(value, key);
    return std::make_shared<PSSpecifier>(std::move(dictionary));
}

class Pane final : public PSListController {
  public:
    explicit Pane(std::vector<PSSpecifierRef> rows = {}) { specifiers_ = std::move(rows); }
};

class PSListControllerTest : public testing::Test {
  protected:
    PSListControllerTest() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device_.root().c_str(), 1);
    }
    ~PSListControllerTest() override {
        CFPreferencesSetTrace({});
        CFNotificationCenterGetDarwinNotifyCenter().setTrace({});
    }
    TestDevice device_;
};

TEST_F(PSListControllerTest, FindsRowsByIdentifierOrElseByKey) {
    auto named = row({{"id", text("size")}, {"key", text("badgesize")}});
    auto keyed = row({{"key", text("badgealpha")}});
    auto later = row({{"id", text("size")}});
    auto bare = row({{"cell", text("PSGroupCell")}});
    auto strange = row({{"id", PropertyList::integer(5)}, {"key", text("odd")}});
    Pane pane({bare, named, keyed, later, strange});
    EXPECT_EQ(pane.specifierForID("size"), named);
    EXPECT_EQ(pane.specifierForID("badgealpha"), keyed);
    EXPECT_EQ(pane.specifierForID("badgesize"), nullptr); // its identifier is another
    EXPECT_EQ(pane.specifierForID("odd"), strange);
    EXPECT_EQ(pane.specifierForID("Size"), nullptr);
    EXPECT_EQ(pane.specifierForID(""), nullptr);
    EXPECT_EQ(Pane().specifierForID("size"), nullptr);
}

TEST_F(PSListControllerTest, WritesIntoTheRowsDomain) {
    Pane pane;
    auto size = row({{"defaults", text("com.example.one")}, {"key", text("size")}});
    pane.setPreferenceValueSpecifier(PropertyList::floatNumber(1.5f), size);
    EXPECT_TRUE(CFPreferencesHasPending("com.example.one")); // when to save is for the caller to say
    NSUserDefaults::standardUserDefaults().synchronize();
    EXPECT_FALSE(CFPreferencesHasPending("com.example.one"));
    CFPreferencesForgetAll();
    EXPECT_EQ(CFPreferencesCopyAppValue("size", "com.example.one"), PropertyList::floatNumber(1.5f));
    EXPECT_EQ(pane.readPreferenceValue(size), PropertyList::floatNumber(1.5f));
    EXPECT_FALSE(CFPreferencesCopyAppValue("size", "com.example.two"));
}

TEST_F(PSListControllerTest, PostsTheRowsNotificationAfterTheWrite) {
    std::vector<std::string> told;
    CFPreferencesSetTrace(
        {.set = [&](std::string_view, std::string_view key,
                    const PropertyList*) { told.push_back("set " + std::string(key)); },
         .synchronize =
             [&](std::string_view domain) { told.push_back("synchronize " + std::string(domain)); }});
    CFNotificationCenterGetDarwinNotifyCenter().setTrace(
        [&](std::string_view name) { told.push_back("post " + std::string(name)); });
    Pane pane;
    pane.setPreferenceValueSpecifier(PropertyList::boolean(true),
                                     row({{"defaults", text("com.example.one")},
                                          {"key", text("on")},
                                          {"PostNotification", text("com.example.changed")}}));
    pane.setPreferenceValueSpecifier(PropertyList::boolean(true),
                                     row({{"defaults", text("com.example.one")}, {"key", text("quiet")}}));
    EXPECT_EQ(told, (std::vector<std::string>{"set on", "synchronize com.example.one",
                                              "post com.example.changed", "set quiet"}));
}

TEST_F(PSListControllerTest, RowsWithoutAPlaceKeepNothing) {
    bool written = false;
    CFPreferencesSetTrace(
        {.set = [&](std::string_view, std::string_view, const PropertyList*) { written = true; },
         .synchronize = {}});
    Pane pane;
    pane.setPreferenceValueSpecifier(PropertyList::integer(1), nullptr);
    pane.setPreferenceValueSpecifier(PropertyList::integer(1), row({{"key", text("size")}}));
    pane.setPreferenceValueSpecifier(PropertyList::integer(1), row({{"defaults", text("com.example.one")}}));
    pane.setPreferenceValueSpecifier(PropertyList::integer(1),
                                     row({{"defaults", PropertyList::integer(3)}, {"key", text("size")}}));
    EXPECT_FALSE(written);
}

TEST_F(PSListControllerTest, ReadsTheDomainThenTheDefault) {
    Pane pane;
    auto withDefault = row({{"defaults", text("com.example.one")},
                            {"key", text("size")},
                            {"default", PropertyList::integer(7)}});
    auto without = row({{"defaults", text("com.example.one")}, {"key", text("size")}});
    auto placeless = row({{"default", PropertyList::integer(9)}});
    EXPECT_EQ(pane.readPreferenceValue(withDefault), PropertyList::integer(7));
    EXPECT_EQ(pane.readPreferenceValue(without), std::nullopt);
    EXPECT_EQ(pane.readPreferenceValue(placeless), PropertyList::integer(9));
    EXPECT_EQ(pane.readPreferenceValue(nullptr), std::nullopt);

    // Zero and NO are values, not absences.
    pane.setPreferenceValueSpecifier(PropertyList::boolean(false), withDefault);
    EXPECT_EQ(pane.readPreferenceValue(withDefault), PropertyList::boolean(false));
}

TEST_F(PSListControllerTest, TheRowKnowsItsPresentValue) {
    Pane pane;
    auto size = row({{"defaults", text("com.example.one")},
                     {"key", text("size")},
                     {"default", PropertyList::integer(7)}});
    EXPECT_EQ(size->propertyForKey("value"), nullptr);
    pane.readPreferenceValue(size);
    ASSERT_NE(size->propertyForKey("value"), nullptr);
    EXPECT_EQ(*size->propertyForKey("value"), PropertyList::integer(7));
    pane.setPreferenceValueSpecifier(PropertyList::floatNumber(2), size);
    EXPECT_EQ(*size->propertyForKey("value"), PropertyList::floatNumber(2));
    CFPreferencesSetAppValue("size", PropertyList::floatNumber(3), "com.example.one"); // by somebody else
    pane.readPreferenceValue(size);
    EXPECT_EQ(*size->propertyForKey("value"), PropertyList::floatNumber(3));
    CFPreferencesSetAppValue("size", std::nullopt, "com.example.one");
    size->removePropertyForKey("default");
    pane.readPreferenceValue(size);
    EXPECT_EQ(size->propertyForKey("value"), nullptr);
    auto placeless = row({{"key", text("size")}});
    pane.setPreferenceValueSpecifier(PropertyList::floatNumber(2), placeless);
    EXPECT_EQ(placeless->propertyForKey("value"), nullptr);
}

TEST_F(PSListControllerTest, ReloadedRowsAreToldByTheirIdentifier) {
    std::vector<std::string> told;
    PSListController::setReloadTrace([&](const std::string& identifier) { told.push_back(identifier); });
    auto named = row({{"id", text("size")}});
    auto keyed = row({{"key", text("alpha")}});
    Pane pane({named, keyed});
    pane.reloadSpecifier(keyed);
    pane.reloadSpecifier(named);
    pane.reloadSpecifier(nullptr);
    PSListController::setReloadTrace({});
    pane.reloadSpecifier(named);
    EXPECT_EQ(told, (std::vector<std::string>{"alpha", "size"}));
}

TEST_F(PSListControllerTest, ItsMethodsCanBeCalledByName) {
    auto size = row({{"defaults", text("com.example.one")}, {"key", text("size")}});
    Pane pane({size});
    auto value = PropertyList::floatNumber(1.5f);
    PerformSelector(pane, "setPreferenceValue:specifier:", {&value, size});
    auto read = PerformSelector(pane, "readPreferenceValue:", {nullptr, size});
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(*read, value);
    std::string told;
    PSListController::setReloadTrace([&](const std::string& identifier) { told = identifier; });
    PerformSelector(pane, "reloadSpecifier:", {nullptr, size});
    PSListController::setReloadTrace({});
    EXPECT_EQ(told, "size");

    // Without a value or a row there is nothing to do.
    PerformSelector(pane, "setPreferenceValue:specifier:", {nullptr, size});
    PerformSelector(pane, "setPreferenceValue:specifier:", {&value, nullptr});
    EXPECT_EQ(PerformSelector(pane, "readPreferenceValue:"), nullptr);
    PerformSelector(pane, "reloadSpecifier:");
    EXPECT_EQ(PerformSelector(pane, "unknown:", {&value, size}), nullptr);
    EXPECT_FALSE(RespondsToSelector(pane, "unknown:"));
    EXPECT_EQ(&pane.methods(), &PSListController::classMethods());
    EXPECT_EQ(CFPreferencesCopyAppValue("size", "com.example.one"), value);
}

TEST_F(PSListControllerTest, RowsCanBeLoadedLate) {
    class LatePane final : public PSListController {
      public:
        const std::vector<PSSpecifierRef>& specifiers() override {
            if (specifiers_.empty()) specifiers_.push_back(row({{"id", text("late")}}));
            return specifiers_;
        }
    } pane;
    auto found = pane.specifierForID("late");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(pane.specifierForID("late"), found);
}

TEST_F(PSListControllerTest, SpecifiersHoldProperties) {
    PSSpecifier specifier;
    EXPECT_EQ(specifier.propertyForKey("label"), nullptr);
    specifier.setPropertyForKey(text("Size"), "label");
    specifier.setPropertyForKey(text("Larger"), "label");
    ASSERT_NE(specifier.propertyForKey("label"), nullptr);
    EXPECT_EQ(*specifier.propertyForKey("label"), text("Larger"));
    EXPECT_EQ(specifier.properties().count(), 1u);
}

TEST_F(PSListControllerTest, CellsAreMadeForTheirSpecifier) {
    PSTableCell cell;
    EXPECT_EQ(cell.frame(), CGRectMake(0, 0, 320, 44));
    EXPECT_EQ(cell.specifier(), nullptr);
    auto specifier = row({{"id", text("preview")}});
    EXPECT_TRUE(cell.initWithStyleReuseIdentifierSpecifier(1, "PreviewCell", specifier));
    EXPECT_EQ(cell.specifier(), specifier);
    EXPECT_EQ(cell.style(), 1);
    EXPECT_EQ(cell.reuseIdentifier(), "PreviewCell");
    EXPECT_STREQ(cell.className(), "PSTableCell");
}

} // namespace
} // namespace tallyforge::test
