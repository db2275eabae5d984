#include "appselect/AppInfo.h"
#include "appselect/QuillonAppList.h"
#include "mobileservices/LSApplicationWorkspace.h"
#include "support/AppBundles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace tallyforge {
namespace {

using test::TextList;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

using Attributes = std::map<std::string, PropertyList, std::less<>>;

/// An entry of a platform of the test's own: answers only what it is given.
class Entry final : public NSObject {
  public:
    explicit Entry(Attributes attributes) : attributes_(std::move(attributes)) {}
    const MethodTable& methods() const override {
        static constexpr MethodEntry own[] = {
            {"localizedName", answer<0>},
            {"shortVersionString", answer<1>},
            {"vendorName", answer<2>},
            {"applicationIdentifier", answer<3>},
            {"itemID", answer<4>},
            {"itemName", answer<5>},
            {"teamID", answer<6>},
            {"bundleURL", answer<7>},
            {"dataContainerURL", answer<8>},
            {"applicationType", answer<9>},
            {"applicationVariant", answer<10>},
            {"appTags", answer<11>},
        };
        static constexpr MethodTable table{own};
        return table;
    }
    static constexpr const char* kNames[] = {"localizedName",
                                             "shortVersionString",
                                             "vendorName",
                                             "applicationIdentifier",
                                             "itemID",
                                             "itemName",
                                             "teamID",
                                             "bundleURL",
                                             "dataContainerURL",
                                             "applicationType",
                                             "applicationVariant",
                                             "appTags"};
    static inline std::vector<std::string> asked;

  private:
    template <size_t index>
    static MethodResult answer(NSObject& self, const MethodArguments&) {
        asked.emplace_back(kNames[index]);
        const auto& attributes = static_cast<Entry&>(self).attributes_;
        auto found = attributes.find(kNames[index]);
        return found == attributes.end() ? nullptr : std::make_shared<const PropertyList>(found->second);
    }
    Attributes attributes_;
};

class Platform final : public LSApplicationWorkspace {
  public:
    explicit Platform(std::vector<Attributes> entries) : entries_(std::move(entries)) {}
    std::vector<std::shared_ptr<NSObject>> allInstalledApplications() const override {
        std::vector<std::shared_ptr<NSObject>> list;
        for (const Attributes& entry : entries_)
            list.push_back(std::make_shared<Entry>(entry));
        return list;
    }

  private:
    std::vector<Attributes> entries_;
};

PropertyList Text(const char* text) {
    return PropertyList::string(text);
}

Attributes App(const char* identifier, const char* name, const char* type) {
    return {{"applicationIdentifier", Text(identifier)},
            {"localizedName", Text(name)},
            {"applicationType", Text(type)}};
}

class AppListTest : public testing::Test {
  protected:
    ~AppListTest() override { RegisterClass("LSApplicationWorkspace", {}); }

    static void platform(std::vector<Attributes> entries) {
        const std::shared_ptr<NSObject> workspace = std::make_shared<Platform>(std::move(entries));
        RegisterClass("LSApplicationWorkspace", {[] { return std::shared_ptr<NSObject>(); },
                                                 {{"defaultWorkspace", [workspace] { return workspace; }}}});
    }
    static QuillonAppList& list() { return QuillonAppList::sharedApplicationList(); }
};

TEST_F(AppListTest, ThereIsOneSharedList) {
    EXPECT_EQ(&QuillonAppList::sharedApplicationList(), &QuillonAppList::sharedApplicationList());
}

TEST_F(AppListTest, WithoutAWorkspaceEveryQueryIsEmpty) {
    RegisterClass("LSApplicationWorkspace", {});
    EXPECT_THAT(list().listAllInstalledApps(), IsEmpty());
    EXPECT_THAT(list().allApplications(), IsEmpty());
    EXPECT_THAT(list().allNonHiddenApplications(), IsEmpty());
    EXPECT_THAT(list().allSystemApplications(), IsEmpty());
    EXPECT_THAT(list().allUserApplications(), IsEmpty());
}

TEST_F(AppListTest, EachQueryHasItsTypes) {
    platform({App("s", "Sys", "System"), App("u", "Usr", "User"), App("o", "Other", "Internal")});
    EXPECT_THAT(list().listAllInstalledApps(), SizeIs(3));
    EXPECT_THAT(list().allApplications(),
                ElementsAre(Pair("o", "Other"), Pair("s", "Sys"), Pair("u", "Usr")));
    EXPECT_THAT(list().allNonHiddenApplications(),
                ElementsAre(Pair("o", "Other"), Pair("s", "Sys"), Pair("u", "Usr")));
    EXPECT_THAT(list().allSystemApplications(), ElementsAre(Pair("s", "Sys")));
    EXPECT_THAT(list().allUserApplications(), ElementsAre(Pair("u", "Usr")));
}

TEST_F(AppListTest, AHiddenAppIsOnlyAmongAll) {
    for (const char* type : {"System", "User"}) {
        Attributes hidden = App("h", "Hidden", type);
        hidden.insert_or_assign("appTags", TextList({"other", "hidden"}));
        platform({hidden});
        EXPECT_THAT(list().allApplications(), SizeIs(1));
        EXPECT_THAT(list().allNonHiddenApplications(), IsEmpty());
        EXPECT_THAT(list().allSystemApplications(), IsEmpty());
        EXPECT_THAT(list().allUserApplications(), IsEmpty());
    }
}

TEST_F(AppListTest, OtherTagsHideNothing) {
    Attributes tagged = App("t", "Tagged", "User");
    tagged.insert_or_assign("appTags", TextList({"hiddenish"}));
    platform({tagged});
    EXPECT_THAT(list().allUserApplications(), SizeIs(1));
}

TEST_F(AppListTest, AWebAppIsInNoFilteredQuery) {
    platform({App("com.apple.webapp", "W", "User"), App("com.apple.webapp-1", "W1", "System"),
              App("my.com.apple.webapp.x", "W2", "User"), App("com.apple.web", "No web app", "User")});
    EXPECT_THAT(list().allApplications(), SizeIs(4));
    EXPECT_THAT(list().allNonHiddenApplications(), ElementsAre(Pair("com.apple.web", "No web app")));
    EXPECT_THAT(list().allSystemApplications(), IsEmpty());
    EXPECT_THAT(list().allUserApplications(), SizeIs(1));
}

TEST_F(AppListTest, OfTwoEntriesWithOneIdentifierTheLaterCounts) {
    platform({App("a", "First", "User"), App("b", "B", "User"), App("a", "Second", "User")});
    EXPECT_THAT(list().allApplications(), ElementsAre(Pair("a", "Second"), Pair("b", "B")));
}

TEST_F(AppListTest, EntriesWithoutNameOrIdentifierAreLeftOut) {
    platform({{{"localizedName", Text("No identifier")}},
              {{"applicationIdentifier", Text("no.name")}},
              {{"localizedName", PropertyList::integer(3)}, {"applicationIdentifier", Text("number")}},
              {},
              {{"localizedName", Text("Bare")}, {"applicationIdentifier", Text("bare")}}});
    EXPECT_THAT(list().allApplications(), ElementsAre(Pair("bare", "Bare")));
    EXPECT_THAT(list().allNonHiddenApplications(), ElementsAre(Pair("bare", "Bare")));
    EXPECT_THAT(list().allUserApplications(), IsEmpty());
}

TEST_F(AppListTest, AQueryTakesAnyPredicateOrNone) {
    platform({App("a", "Ant", "User"), App("b", "Bee", "User")});
    EXPECT_THAT(list().applicationsFilteredUsingPredicate(std::nullopt), SizeIs(2));
    EXPECT_THAT(list().applicationsFilteredUsingPredicate(
                    *NSPredicate::predicateWithFormat("localizedName contains 'ee'")),
                ElementsAre(Pair("b", "Bee")));
}

TEST_F(AppListTest, TheConditionsAreAskedInTheirOrderBeforeARecordIsMade) {
    platform({App("a", "Ant", "User")});
    Entry::asked.clear();
    EXPECT_THAT(list().allSystemApplications(), IsEmpty());
    EXPECT_THAT(Entry::asked, ElementsAre("appTags", "applicationIdentifier", "applicationType"));
    Entry::asked.clear();
    list().allApplications();
    EXPECT_THAT(Entry::asked, testing::ElementsAreArray(Entry::kNames));
}

TEST_F(AppListTest, ANewAppIsListedAtTheNextQuery) {
    test::TestDevice device;
    RegisterApplicationWorkspace();
    test::InstallUserApp(device, "a", "A");
    EXPECT_THAT(list().allUserApplications(), ElementsAre(Pair("a", "A")));
    test::InstallUserApp(device, "b", "B");
    EXPECT_THAT(list().allUserApplications(), ElementsAre(Pair("a", "A"), Pair("b", "B")));
}

TEST_F(AppListTest, TheStockDeviceHidesItsFieldTest) {
    test::TestDevice device;
    device.furnish();
    RegisterApplicationWorkspace();
    EXPECT_THAT(list().allApplications(), SizeIs(19));
    EXPECT_THAT(list().allNonHiddenApplications(), SizeIs(18));
    EXPECT_EQ(list().allNonHiddenApplications().count("com.quillon.fieldtestbench"), 0U);
    EXPECT_THAT(list().allSystemApplications(), SizeIs(9));
    EXPECT_THAT(list().allUserApplications(), SizeIs(9));
}

TEST(AppInfo, KeepsWhatTheEntryReturns) {
    Entry entry({{"localizedName", Text("Loom")},
                 {"itemID", PropertyList::integer(42)},
                 {"appTags", TextList({"hidden"})},
                 {"bundleURL", Text("file:///Applications/Loom.app/")}});
    const auto info = AppInfo::initWithLSApplicationProxy(entry);
    EXPECT_EQ(*info->localizedName, Text("Loom"));
    EXPECT_EQ(*info->itemID, PropertyList::integer(42));
    EXPECT_EQ(*info->appTags, TextList({"hidden"}));
    EXPECT_EQ(info->vendorName, nullptr);
}

TEST(AppInfo, IsFilledAgainByAnotherEntry) {
    Entry one({{"localizedName", Text("One")}, {"vendorName", Text("V")}});
    Entry two({{"localizedName", Text("Two")}});
    const auto info = AppInfo::initWithLSApplicationProxy(one);
    info->parseInfo(two);
    EXPECT_EQ(*info->localizedName, Text("Two"));
    EXPECT_EQ(info->vendorName, nullptr);
}

TEST(AppInfo, DescribesItselfLineByLine) {
    Entry entry({{"localizedName", Text("Loom")},
                 {"shortVersionString", Text("2.0")},
                 {"applicationIdentifier", Text("net.heddle.loom")},
                 {"itemID", PropertyList::integer(9100583316)},
                 {"applicationType", Text("User")},
                 {"appTags", TextList({"hidden", "beta"})}});
    EXPECT_EQ(AppInfo::initWithLSApplicationProxy(entry)->description(),
              "localizedName: \nLoom\n\nshortVersionString: \n2.0\n\nvendorName: \n(null)\n\n"
              "applicationIdentifier: \nnet.heddle.loom\n\nitemID: \n9100583316\n\nitemName: \n(null)\n\n"
              "teamID: \n(null)\n\nbundleURL: \n(null)\n\ndataContainerURL: \n(null)\n\n"
              "applicationType: \nUser\n\napplicationVariant: \n(null)\n\n"
              "appTags: \n(\n    hidden,\n    beta\n)\n\n");
}

} // namespace
} // namespace tallyforge
