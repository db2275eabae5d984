#include "PreferencesDevice.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/PropertyListFormat.h"

#include <fcntl.h>
#include <limits>

namespace tallyforge {

namespace {

using Keys = std::vector<std::string>;

constexpr const char* domain = "com.example.look";
const std::string folderPath = "/var/mobile/Library/Preferences";
const std::string path = folderPath + "/com.example.look.plist";

class CFPreferencesTests : public PreferencesDevice {
  protected:
    void TearDown() override {
        CFPreferencesSetTrace({});
        PreferencesDevice::TearDown();
    }

    static std::optional<PropertyList> get(const char* key) { return CFPreferencesCopyAppValue(key, domain); }
    static void set(const char* key, int64_t value) {
        CFPreferencesSetAppValue(key, PropertyList::integer(value), domain);
    }
    static void remove(const char* key) { CFPreferencesSetAppValue(key, std::nullopt, domain); }
    static std::optional<Keys> keys() {
        return CFPreferencesCopyKeyList(domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    }
    static std::string synchronize() {
        return CFPreferencesAppSynchronize(domain) ? "saved" : CFPreferencesSynchronizeFailure(domain);
    }
    /// Writes the file as another process would, with these keys, all of value 1.
    void putKeys(const Keys& names) const {
        Dictionary values;
        for (const auto& name : names)
            values.setObjectForKey(PropertyList::integer(1), name);
        const auto bytes = BinaryPropertyList::Serialize(PropertyList::dictionary(values));
        put(path + ".other", std::string(bytes.begin(), bytes.end()));
        std::filesystem::rename(host(path + ".other"), host(path));
    }
    /// The keys in the file, read around the code under test.
    Keys keysInFile() const {
        const auto parsed = DeserializePropertyList(Bytes(text(path)));
        Keys names;
        if (!parsed || !parsed->asDictionary()) return {"<unreadable>"};
        for (const auto& entry : *parsed->asDictionary())
            names.push_back(entry.key);
        return names;
    }
};

TEST_F(CFPreferencesTests, AMissingDomainHasNoKeyList) {
    EXPECT_EQ(keys(), std::nullopt);
    EXPECT_EQ(get("a"), std::nullopt);
    EXPECT_EQ(CFPreferencesReadFailure(domain), "");
    EXPECT_EQ(CFPreferencesPath(domain), path);
}

TEST_F(CFPreferencesTests, WhatIsSetIsReadBeforeAndAfterItIsSaved) {
    set("a", 1);
    EXPECT_TRUE(CFPreferencesHasPending(domain));
    EXPECT_EQ(get("a"), PropertyList::integer(1));
    EXPECT_EQ(keys(), Keys{"a"});
    EXPECT_FALSE(std::filesystem::exists(host(path)));
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_FALSE(CFPreferencesHasPending(domain));
    EXPECT_EQ(get("a"), PropertyList::integer(1));
    EXPECT_EQ(text(path).substr(0, 8), "bplist00");
    EXPECT_EQ(status(path).st_mode, S_IFREG | 0644u);
    CFPreferencesForgetAll();
    EXPECT_EQ(get("a"), PropertyList::integer(1));
    remove("a");
    EXPECT_EQ(get("a"), std::nullopt);
    EXPECT_EQ(keys(), Keys{});
    EXPECT_EQ(keysInFile(), Keys{"a"});
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), Keys{});
    EXPECT_EQ(keys(), Keys{});
}

TEST_F(CFPreferencesTests, KnownKeysKeepTheirOrderAndNewOnesComeLast) {
    putKeys({"c", "a", "b"});
    set("z", 9);
    set("a", 5);
    set("d", 9);
    remove("c");
    EXPECT_EQ(keys(), (Keys{"a", "b", "z", "d"}));
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"a", "b", "z", "d"}));
    EXPECT_EQ(get("a"), PropertyList::integer(5));
}

TEST_F(CFPreferencesTests, ManyAtOnceAreSetThenRemoved) {
    putKeys({"a", "b"});
    Dictionary values;
    values.setObjectForKey(PropertyList::string("x"), "s");
    values.setObjectForKey(PropertyList::string("y"), "both");
    CFPreferencesSetMultiple(values, {"both", "b"}, domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"a", "s"}));
    const auto several = CFPreferencesCopyMultiple({"s", "both", "none", "a"}, domain,
                                                   kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    ASSERT_EQ(several.count(), 2u);
    EXPECT_EQ(*several.objectForKey("s"), PropertyList::string("x"));
    EXPECT_EQ(*several.objectForKey("a"), PropertyList::integer(1));
}

TEST_F(CFPreferencesTests, WhatOthersSaveIsSeenAndKept) {
    putKeys({"a"});
    EXPECT_EQ(keys(), Keys{"a"});
    set("mine", 2);
    putKeys({"a", "theirs"});
    EXPECT_EQ(keys(), (Keys{"a", "theirs", "mine"}));
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"a", "theirs", "mine"}));
    std::filesystem::remove(host(path));
    EXPECT_EQ(keys(), std::nullopt);
}

TEST_F(CFPreferencesTests, EverySaveBuildsOnWhatStandsInTheFile) {
    set("a", 1);
    EXPECT_EQ(synchronize(), "saved");
    putKeys({"b"}); // as long as what was saved
    set("c", 1);
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"b", "c"}));
    set("d", 1);
    EXPECT_EQ(synchronize(), "saved"); // on its own last one
    EXPECT_EQ(keysInFile(), (Keys{"b", "c", "d"}));

    const std::string inTheWay = host(folderPath + "/.tallyforge-new");
    std::filesystem::create_directory(inTheWay);
    set("e", 1);
    EXPECT_NE(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"b", "c", "d"}));
    std::filesystem::remove(inTheWay);
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"b", "c", "d", "e"}));
    remove("b");
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"c", "d", "e"}));
}

// Versions of one size saved one after the other: inode numbers come back, and clocks tick slowly.
TEST_F(CFPreferencesTests, QuickVersionsAreNeverMistakenForEachOther) {
    for (int i = 0; i < 2000; ++i) {
        const std::string name = std::to_string(1000 + i);
        putKeys({name});
        ASSERT_EQ(keys(), Keys{name});
    }
}

TEST_F(CFPreferencesTests, AnEmptyKeyKeepsNothing) {
    set("", 1);
    EXPECT_FALSE(get(""));
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_FALSE(std::filesystem::exists(host(path)));
}

TEST_F(CFPreferencesTests, NothingPendingWritesNothing) {
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_FALSE(std::filesystem::exists(host("/var")));
    remove("a");
    EXPECT_EQ(synchronize(), "saved"); // there is nothing to remove it from
    EXPECT_FALSE(CFPreferencesHasPending(domain));
    EXPECT_FALSE(std::filesystem::exists(host("/var")));
    putKeys({"a"});
    const ino_t inode = status(path).st_ino;
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(status(path).st_ino, inode);
}

TEST_F(CFPreferencesTests, TheFilesModeStays) {
    putKeys({"a"});
    chmod(host(path).c_str(), 0600);
    set("b", 1);
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(status(path).st_mode, S_IFREG | 0600u);
}

TEST_F(CFPreferencesTests, AFileThatCannotBeParsedReadsAsEmptyAndIsKeptAside) {
    const auto array = BinaryPropertyList::Serialize(PropertyList::array({PropertyList::integer(1)}));
    const std::vector<std::string> unreadable = {"rubbish", "", "bplist00", "<?xml version=\"1.0\"?><plist>",
                                                 std::string(array.begin(), array.end())};
    for (size_t i = 0; i < unreadable.size(); ++i) {
        put(path, unreadable[i]);
        CFPreferencesForgetAll();
        EXPECT_EQ(keys(), Keys{});
        EXPECT_NE(CFPreferencesReadFailure(domain), "");
        EXPECT_EQ(synchronize(), "saved"); // nothing to write, nothing to replace
        EXPECT_EQ(text(path), unreadable[i]);
        set("a", 1);
        EXPECT_EQ(synchronize(), "saved");
        EXPECT_EQ(keysInFile(), Keys{"a"});
        EXPECT_EQ(CFPreferencesReadFailure(domain), "");
        std::string kept = path + ".unreadable";
        if (i > 0) kept.append(1, '.').append(std::to_string(i + 1));
        EXPECT_EQ(text(kept), unreadable[i]);
    }
}

TEST_F(CFPreferencesTests, AFileThatCannotBeReadIsNotReplaced) {
    const auto refused = [&](const std::string& why, const std::string& whySave) {
        CFPreferencesForgetAll();
        set("a", 1);
        EXPECT_EQ(CFPreferencesReadFailure(domain), why);
        EXPECT_EQ(synchronize(), whySave);
        EXPECT_TRUE(CFPreferencesHasPending(domain));
        EXPECT_EQ(get("a"), PropertyList::integer(1));
    };
    folder(path);
    refused("a folder stands in its place", "a folder stands in its place");
    EXPECT_EQ(names(folderPath), Keys{"com.example.look.plist"});
    std::filesystem::remove(host(path));
    ASSERT_EQ(mkfifo(host(path).c_str(), 0666), 0);
    alarm(20);
    refused("not a regular file", "not a regular file");
    alarm(0);
    std::filesystem::remove(host(path));
    put(path, std::string((4 << 20) + 1, ' '));
    refused("larger than 4 MiB", "reading the old file: larger than 4 MiB");
    EXPECT_EQ(status(path).st_size, (4 << 20) + 1);
    EXPECT_EQ(names(folderPath), Keys{"com.example.look.plist"});
    // Once the obstacle is gone the same values are saved.
    std::filesystem::remove(host(path));
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), Keys{"a"});
    EXPECT_EQ(CFPreferencesSynchronizeFailure(domain), "");
}

TEST_F(CFPreferencesTests, WithoutPermissionNothingIsReplaced) {
    putKeys({"old"});
    chmod(host(path).c_str(), 0);
    chmod(host(folderPath).c_str(), 0777);
    const auto attempt = [] {
        set("a", 1);
        return synchronize() + (CFPreferencesHasPending(domain) ? ", pending" : ", done");
    };
    EXPECT_EQ(AsOrdinaryUser(attempt), "reading the old file: permission denied, pending");
    chmod(host(path).c_str(), 0644);
    chmod(host(folderPath).c_str(), 0555);
    EXPECT_EQ(AsOrdinaryUser(attempt), "creating the temporary file: permission denied, pending");
    EXPECT_EQ(keysInFile(), Keys{"old"});
    EXPECT_EQ(names(folderPath), Keys{"com.example.look.plist"});
    chmod(host(folderPath).c_str(), 0755);
}

TEST_F(CFPreferencesTests, AFileInTheWayOfTheFolderIsAFailure) {
    put("/var/mobile/Library", "a file");
    set("a", 1);
    EXPECT_EQ(synchronize(), "creating its folder: a part of its path is not a folder");
    EXPECT_TRUE(CFPreferencesHasPending(domain));
    EXPECT_EQ(text("/var/mobile/Library"), "a file");
}

TEST_F(CFPreferencesTests, ADomainThatNobodyCouldReadIsNotWritten) {
    putKeys({"old"});
    CFPreferencesSetAppValue("big", PropertyList::data(PropertyList::Data(5u << 20)), domain);
    EXPECT_TRUE(synchronize().starts_with("the domain would be unreadable: ")) << synchronize();
    EXPECT_EQ(keysInFile(), Keys{"old"});
    remove("big");
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), Keys{"old"});
    // Also after a save of this process's own.
    CFPreferencesSetAppValue("big", PropertyList::data(PropertyList::Data(5u << 20)), domain);
    EXPECT_NE(synchronize(), "saved");
    remove("big");
    set("new", 1);
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_EQ(keysInFile(), (Keys{"old", "new"}));
}

TEST_F(CFPreferencesTests, WhatIsNoDomainNameIsRefused) {
    putKeys({"a"});
    for (const std::string& name : {std::string(), std::string("../Preferences/com.example.look"),
                                    std::string("a/b"), std::string("a\0b", 3), std::string(250, 'd')}) {
        EXPECT_EQ(CFPreferencesPath(name), "");
        EXPECT_EQ(CFPreferencesReadFailure(name), "not a domain name");
        EXPECT_EQ(CFPreferencesCopyKeyList(name, kCFPreferencesCurrentUser, kCFPreferencesAnyHost),
                  std::nullopt);
        CFPreferencesSetAppValue("k", PropertyList::integer(1), name);
        EXPECT_FALSE(CFPreferencesAppSynchronize(name));
        EXPECT_EQ(CFPreferencesSynchronizeFailure(name), "not a domain name");
    }
    EXPECT_EQ(names(folderPath), Keys{"com.example.look.plist"});
    const std::string longest(249, 'd'); // with ".plist" the 255 bytes that a name may have
    CFPreferencesSetAppValue("k", PropertyList::integer(1), longest);
    EXPECT_TRUE(CFPreferencesAppSynchronize(longest));
    EXPECT_TRUE(std::filesystem::exists(host(folderPath + "/" + longest + ".plist")));
}

TEST_F(CFPreferencesTests, BehindALinkTheNamedFileIsRewritten) {
    putKeys({"a"});
    std::filesystem::rename(host(path), host("/elsewhere"));
    link("/elsewhere", path);
    set("b", 1);
    EXPECT_EQ(synchronize(), "saved");
    EXPECT_TRUE(std::filesystem::is_symlink(host(path)));
    EXPECT_EQ(keys(), (Keys{"a", "b"}));
    std::filesystem::remove(host(path)); // its target means another file to this machine than to the device
    std::filesystem::rename(host("/elsewhere"), host(path));
    EXPECT_EQ(keysInFile(), (Keys{"a", "b"}));
}

TEST_F(CFPreferencesTests, TheStandardDefaultsSaveEveryPendingDomain) {
    std::string heard;
    NSUserDefaults::standardUserDefaults().setTrace([&] { heard += "d"; });
    set("a", 1);
    CFPreferencesSetAppValue("b", PropertyList::integer(2), "com.example.other");
    EXPECT_TRUE(NSUserDefaults::standardUserDefaults().synchronize());
    EXPECT_EQ(keysInFile(), Keys{"a"});
    EXPECT_EQ(names(folderPath), (Keys{"com.example.look.plist", "com.example.other.plist"}));
    EXPECT_TRUE(NSUserDefaults::standardUserDefaults().synchronize());
    folder(folderPath + "/com.example.aaa.plist");
    CFPreferencesSetAppValue("x", PropertyList::integer(1), "com.example.aaa");
    set("c", 3);
    EXPECT_FALSE(NSUserDefaults::standardUserDefaults().synchronize());
    EXPECT_EQ(keysInFile(), (Keys{"a", "c"})); // the failure of one does not keep the other back
    EXPECT_EQ(heard, "ddd");
    NSUserDefaults::standardUserDefaults().setTrace({});
}

TEST_F(CFPreferencesTests, TheTraceHearsEverySetAndSynchronise) {
    std::string heard;
    CFPreferencesSetTrace({[&](std::string_view in, std::string_view key, const PropertyList* value) {
                               heard += std::string(in) + " " + std::string(key) + " " +
                                        (value ? std::to_string(value->intValue()) : "-") + "; ";
                           },
                           [&](std::string_view in) { heard += "synchronize " + std::string(in) + "; "; }});
    set("a", 1);
    remove("b");
    CFPreferencesAppSynchronize(domain);
    EXPECT_EQ(heard, "com.example.look a 1; com.example.look b -; synchronize com.example.look; ");
}

} // namespace

} // namespace tallyforge
