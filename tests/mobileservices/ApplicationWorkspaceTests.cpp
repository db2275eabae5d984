#include "mobileservices/LSApplicationWorkspace.h"
#include "support/AppBundles.h"
#include "support/CpuTime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <sys/stat.h>

namespace tallyforge {
namespace {

using test::DictionaryOf;
using test::InstallApp;
using test::InstallUserApp;
using test::kUserApps;
using test::TextList;
using test::WriteList;
using testing::ElementsAre;
using testing::IsEmpty;

class ApplicationWorkspaceTest : public testing::Test {
  protected:
    ApplicationWorkspaceTest() { RegisterApplicationWorkspace(); }

    static std::vector<std::shared_ptr<NSObject>> apps() {
        const ObjCClass* cls = NSClassFromString("LSApplicationWorkspace");
        auto workspace =
            std::dynamic_pointer_cast<LSApplicationWorkspace>(cls->performSelector("defaultWorkspace"));
        return workspace ? workspace->allInstalledApplications() : std::vector<std::shared_ptr<NSObject>>();
    }
    // The attribute as text; "none" without one.
    static std::string text(NSObject& app, std::string_view attribute) {
        auto value = PerformSelector(app, attribute);
        return value ? value->description() : "none";
    }
    static std::vector<std::string> all(std::string_view attribute) {
        const auto list = apps();
        std::vector<std::string> texts;
        texts.reserve(list.size());
        for (const auto& app : list)
            texts.push_back(text(*app, attribute));
        return texts;
    }
    void info(const std::string& entries) const {
        const std::string list =
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
        device.write("/Applications/A.app/Info.plist", {list.begin(), list.end()});
    }
    static std::string entry(const std::string& key, const std::string& text) {
        return "<key>" + key + "</key><string>" + text + "</string>";
    }
    test::TestDevice device;
};

TEST_F(ApplicationWorkspaceTest, IsKnownByNameAndThereIsOne) {
    const ObjCClass* cls = NSClassFromString("LSApplicationWorkspace");
    ASSERT_TRUE(cls);
    EXPECT_TRUE(cls->performSelector("defaultWorkspace"));
    EXPECT_EQ(cls->performSelector("defaultWorkspace"), cls->performSelector("defaultWorkspace"));
    EXPECT_EQ(cls->performSelector("otherWorkspace"), nullptr);
}

TEST_F(ApplicationWorkspaceTest, AnEmptyDeviceHasNoApplications) {
    EXPECT_THAT(apps(), IsEmpty());
}

TEST_F(ApplicationWorkspaceTest, ListsTheSystemsFirstThenTheUsersOfBothPlaces) {
    InstallApp(device, "/var/mobile/Containers/Bundle/Application/U2/Later.app", "later", "Later");
    InstallUserApp(device, "user", "User");
    InstallApp(device, "/Applications/B.app", "b", "B");
    InstallApp(device, "/Applications/A.app", "a", "A");
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("a", "b", "user", "later"));
    EXPECT_THAT(all("applicationType"), ElementsAre("System", "System", "User", "User"));
}

TEST_F(ApplicationWorkspaceTest, AnEntryHasWhatItsListsSay) {
    InstallUserApp(device, "com.example.loom", "Loom",
                   DictionaryOf({{"CFBundleShortVersionString", PropertyList::string("2.0")},
                                 {"SBAppTags", TextList({"hidden", "beta"})}}));
    WriteList(device, kUserApps + "com.example.loom/iTunesMetadata.plist",
              DictionaryOf({{"itemId", PropertyList::integer(9100583316)},
                            {"itemName", PropertyList::string("Loom – Drafting")},
                            {"artistName", PropertyList::string("Heddle")},
                            {"teamID", PropertyList::string("T34M")},
                            {"variantID", PropertyList::string("universal")}}));
    const std::string data = "/var/mobile/Containers/Data/Application/D 1/";
    WriteList(device, data + ".com.apple.mobile_container_manager.metadata.plist",
              DictionaryOf({{"MCMMetadataIdentifier", PropertyList::string("com.example.loom")}}));
    auto list = apps();
    ASSERT_EQ(list.size(), 1U);
    NSObject& app = *list.front();
    EXPECT_EQ(text(app, "localizedName"), "Loom");
    EXPECT_EQ(text(app, "shortVersionString"), "2.0");
    EXPECT_EQ(text(app, "vendorName"), "Heddle");
    EXPECT_EQ(text(app, "applicationIdentifier"), "com.example.loom");
    EXPECT_EQ(*PerformSelector(app, "itemID"), PropertyList::integer(9100583316)) << "a number stays one";
    EXPECT_EQ(text(app, "itemName"), "Loom – Drafting");
    EXPECT_EQ(text(app, "teamID"), "T34M");
    EXPECT_EQ(text(app, "bundleURL"), "file:///var/containers/Bundle/Application/com.example.loom/App.app/");
    EXPECT_EQ(text(app, "dataContainerURL"), "file:///var/mobile/Containers/Data/Application/D%201/");
    EXPECT_EQ(text(app, "applicationVariant"), "universal");
    EXPECT_EQ(*PerformSelector(app, "appTags"), TextList({"hidden", "beta"}));
    EXPECT_EQ(PerformSelector(app, "somethingElse"), nullptr);
}

TEST_F(ApplicationWorkspaceTest, WhatTheListsDoNotSayIsMissing) {
    info(entry("CFBundleIdentifier", "a"));
    auto list = apps();
    ASSERT_EQ(list.size(), 1U);
    for (const char* attribute : {"shortVersionString", "vendorName", "itemID", "itemName", "teamID",
                                  "dataContainerURL", "applicationVariant", "appTags"})
        EXPECT_EQ(text(*list.front(), attribute), "none") << attribute;
}

TEST_F(ApplicationWorkspaceTest, TheNameIsTheFirstThatThereIs) {
    const std::string identifier = entry("CFBundleIdentifier", "a");
    info(identifier + entry("CFBundleDisplayName", "Display") + entry("CFBundleName", "Name") +
         entry("CFBundleExecutable", "Run"));
    EXPECT_THAT(all("localizedName"), ElementsAre("Display"));
    info(identifier + entry("CFBundleDisplayName", "") + entry("CFBundleName", "Name") +
         entry("CFBundleExecutable", "Run"));
    EXPECT_THAT(all("localizedName"), ElementsAre("Name"));
    info(identifier + "<key>CFBundleName</key><integer>3</integer>" + entry("CFBundleExecutable", "Run"));
    EXPECT_THAT(all("localizedName"), ElementsAre("Run"));
    info(identifier);
    EXPECT_THAT(all("localizedName"), ElementsAre("A"));
}

TEST_F(ApplicationWorkspaceTest, ATranslatedNameGoesFirst) {
    InstallApp(device, "/Applications/A.app", "a", "Sea Chart");
    const auto translate = [&](const std::string& language, const char* name) {
        WriteList(device, "/Applications/A.app/" + language + ".lproj/InfoPlist.strings",
                  DictionaryOf({{"CFBundleDisplayName", PropertyList::string(name)}}));
    };
    translate("fr", "Carte marine");
    EXPECT_THAT(all("localizedName"), ElementsAre("Sea Chart")) << "nobody asked for French";
    translate("en", "Chart");
    EXPECT_THAT(all("localizedName"), ElementsAre("Chart"));
    WriteList(device, "/var/mobile/Library/Preferences/.GlobalPreferences.plist",
              DictionaryOf({{"AppleLanguages", TextList({"sv-FI", "fr-CA", "en"})}}));
    EXPECT_THAT(all("localizedName"), ElementsAre("Carte marine"));
    translate("sv", "Sjökort");
    EXPECT_THAT(all("localizedName"), ElementsAre("Sjökort"));
    device.write("/Applications/A.app/sv.lproj/InfoPlist.strings", {'x'});
    EXPECT_THAT(all("localizedName"), ElementsAre("Carte marine")) << "a broken translation is none";
}

// Each key by itself: a short name in the user's language is no reason to leave the display name.
TEST_F(ApplicationWorkspaceTest, ATranslatedShortNameComesAfterADisplayName) {
    WriteList(device, "/Applications/A.app/Info.plist",
              DictionaryOf({{"CFBundleIdentifier", PropertyList::string("a")},
                            {"CFBundleDisplayName", PropertyList::string("Sea Chart")},
                            {"CFBundleName", PropertyList::string("Chart")}}));
    WriteList(device, "/Applications/A.app/en.lproj/InfoPlist.strings",
              DictionaryOf({{"CFBundleName", PropertyList::string("Map")}}));
    EXPECT_THAT(all("localizedName"), ElementsAre("Sea Chart"));
}

TEST_F(ApplicationWorkspaceTest, WithoutTheUsersLanguageItsOwnCounts) {
    WriteList(device, "/Applications/A.app/Info.plist",
              DictionaryOf({{"CFBundleIdentifier", PropertyList::string("a")},
                            {"CFBundleDevelopmentRegion", PropertyList::string("fr")},
                            {"CFBundleDisplayName", PropertyList::string("A1")}}));
    WriteList(device, "/Applications/A.app/fr.lproj/InfoPlist.strings",
              DictionaryOf({{"CFBundleDisplayName", PropertyList::string("Carte marine")}}));
    EXPECT_THAT(all("localizedName"), ElementsAre("Carte marine"));
}

TEST_F(ApplicationWorkspaceTest, ANameOfBlanksIsNone) {
    WriteList(device, "/Applications/A.app/Info.plist",
              DictionaryOf({{"CFBundleIdentifier", PropertyList::string("a")},
                            {"CFBundleDisplayName", PropertyList::string("   ")},
                            {"CFBundleName", PropertyList::string("Chart")}}));
    EXPECT_THAT(all("localizedName"), ElementsAre("Chart"));
}

TEST_F(ApplicationWorkspaceTest, ATwiceReachablePlaceIsListedOnce) {
    InstallUserApp(device, "user", "User");
    std::filesystem::create_directories(device.file("/var/mobile/Containers/Bundle"));
    std::filesystem::create_directory_symlink(kUserApps,
                                              device.file("/var/mobile/Containers/Bundle/Application"));
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("user"));
}

TEST_F(ApplicationWorkspaceTest, AnApplicationBehindALinkStaysOnTheDevice) {
    InstallApp(device, "/var/stash/Applications/Moved.app", "moved", "Moved");
    std::filesystem::create_directory_symlink("/var/stash/Applications", device.file("/Applications"));
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("moved"));
}

TEST_F(ApplicationWorkspaceTest, OnlyFoldersOfApplicationsCount) {
    InstallApp(device, "/Applications/NoApp", "no", "No");
    InstallApp(device, "/Applications/.app", "hidden", "Hidden");
    device.write("/Applications/File.app", {'x'});
    InstallApp(device, "/Applications/Deep/Inner.app", "deep", "Deep");
    EXPECT_THAT(apps(), IsEmpty());
}

TEST_F(ApplicationWorkspaceTest, ANewApplicationIsThereAtTheNextQuestion) {
    InstallApp(device, "/Applications/A.app", "a", "A");
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("a"));
    InstallApp(device, "/Applications/B.app", "b", "B");
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("a", "b"));
    std::filesystem::remove_all(device.file("/Applications/A.app"));
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("b"));
}

TEST_F(ApplicationWorkspaceTest, ABundleIsFoundByItsIdentifier) {
    EXPECT_FALSE(LSBundleForIdentifier("a"));
    InstallApp(device, "/Applications/A.app", "a", "A");
    auto bundle = LSBundleForIdentifier("a");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->path, "/Applications/A.app/");
    EXPECT_EQ(bundle->info.objectForKey("CFBundleDisplayName")->description(), "A");
    std::filesystem::rename(device.file("/Applications/A.app"), device.file("/Applications/Z.app"));
    bundle = LSBundleForIdentifier("a");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->path, "/Applications/Z.app/");
    std::filesystem::remove_all(device.file("/Applications/Z.app"));
    EXPECT_FALSE(LSBundleForIdentifier("a"));
}

// What stands in the place of one application's Info.plist.
struct Hostile {
    const char* name;
    void (*plant)(const test::TestDevice& device, const std::string& path);
};

std::vector<uint8_t> Bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

const Hostile kHostile[] = {
    {"Missing", [](const test::TestDevice&, const std::string&) {}},
    {"Empty", [](const test::TestDevice& device, const std::string& path) { device.write(path, {}); }},
    {"Garbage",
     [](const test::TestDevice& device, const std::string& path) { device.write(path, Bytes("<<<")); }},
    {"ShortBinary", [](const test::TestDevice& device,
                       const std::string& path) { device.write(path, Bytes("bplist00\xD1")); }},
    {"NoDictionary",
     [](const test::TestDevice& device, const std::string& path) {
         device.write(path, BinaryPropertyList::Serialize(TextList({"CFBundleIdentifier"})));
     }},
    {"NoIdentifier",
     [](const test::TestDevice& device, const std::string& path) {
         WriteList(device, path, DictionaryOf({{"CFBundleName", PropertyList::string("X")}}));
     }},
    {"IdentifierNoText",
     [](const test::TestDevice& device, const std::string& path) {
         WriteList(device, path, DictionaryOf({{"CFBundleIdentifier", PropertyList::integer(1)}}));
     }},
    {"FIFO", [](const test::TestDevice& device,
                const std::string& path) { ASSERT_EQ(mkfifo(device.file(path).c_str(), 0644), 0); }},
    {"Folder", [](const test::TestDevice& device,
                  const std::string& path) { std::filesystem::create_directory(device.file(path)); }},
    {"LinkOutOfTheDevice",
     [](const test::TestDevice& device, const std::string& path) {
         std::filesystem::create_symlink("../../../../../../../../dev/zero", device.file(path));
     }},
    {"LinkToItself",
     [](const test::TestDevice& device, const std::string& path) {
         std::filesystem::create_symlink("Info.plist", device.file(path));
     }},
    {"Giant",
     [](const test::TestDevice& device, const std::string& path) {
         device.write(path, Bytes("bplist00"));
         std::filesystem::resize_file(device.file(path), uintmax_t{1} << 40);
     }},
    {"DeepXML",
     [](const test::TestDevice& device, const std::string& path) {
         std::string text = "<?xml version=\"1.0\"?><plist version=\"1.0\">";
         for (int i = 0; i < 100'000; ++i)
             text += "<array>";
         device.write(path, Bytes(text));
     }},
    {"CyclicBinary",
     [](const test::TestDevice& device, const std::string& path) {
         // A list whose only item is itself.
         std::string text("bplist00\xA1\x00\x08", 11);
         text.append("\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x0A", 32);
         device.write(path, Bytes(text));
     }},
};

class HostileBundle : public ApplicationWorkspaceTest, public testing::WithParamInterface<Hostile> {};

TEST_P(HostileBundle, IsLeftOutAndHarmsNobody) {
    InstallApp(device, "/Applications/A.app", "a", "A");
    InstallApp(device, "/Applications/Z.app", "z", "Z");
    std::filesystem::create_directory(device.file("/Applications/M.app"));
    GetParam().plant(device, "/Applications/M.app/Info.plist");
    apps(); // the files are known to the machine
    const double begin = test::CpuMilliseconds();
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("a", "z"));
    EXPECT_LT(test::CpuMilliseconds() - begin, 50 * test::kSlowdown);
}

INSTANTIATE_TEST_SUITE_P(All, HostileBundle, testing::ValuesIn(kHostile),
                         [](const auto& hostile) { return hostile.param.name; });

TEST_F(ApplicationWorkspaceTest, BrokenStoreFactsLeaveTheApplication) {
    InstallUserApp(device, "user", "User");
    ASSERT_EQ(mkfifo(device.file(kUserApps + "user/iTunesMetadata.plist").c_str(), 0644), 0);
    EXPECT_THAT(all("localizedName"), ElementsAre("User"));
    EXPECT_THAT(all("itemName"), ElementsAre("none"));
}

TEST_F(ApplicationWorkspaceTest, TheLargestListThatIsReadIsReadQuickly) {
    // As many objects and as much text as fit: a megabyte of small entries.
    std::string entries = entry("CFBundleIdentifier", "a");
    for (int i = 0; entries.size() < (1U << 20) - 200 && i < 8000; ++i)
        entries += entry("k" + std::to_string(i), std::string(100, 'x'));
    info(entries);
    apps();
    const double begin = test::CpuMilliseconds();
    EXPECT_THAT(all("applicationIdentifier"), ElementsAre("a"));
    EXPECT_LT(test::CpuMilliseconds() - begin, 50 * test::kSlowdown);
}

TEST_F(ApplicationWorkspaceTest, TheStockDevicesApplicationsAreAllListed) {
    device.furnish();
    EXPECT_THAT(all("localizedName"),
                testing::UnorderedElementsAre(
                    "App Store", "Beacon", "Cydia", "Field Test Bench", "Ledgerline", "Metronome", "Mail",
                    "Messages", "Preferences", "Quarry",
                    "The Considerably Extended Almanac of Small Hours and Quiet Weather", "Paperlantern",
                    "Éclair à Propos", "Pocket Orchard", "星図帳", "Loom", "4913", "Kilometre", "Tidewatch"));
}

} // namespace
} // namespace tallyforge
