// The domain's file is shared: with other processes of this system, and with other programs altogether.

#include "PreferencesDevice.h"
#include "Subprocess.h"
#include "foundation/PropertyListFormat.h"

#include <limits>

namespace tallyforge {

namespace {

constexpr const char* domain = "com.example.look";
const std::string path = "/var/mobile/Library/Preferences/com.example.look.plist";

class PreferencesExchangeTests : public PreferencesDevice {
  protected:
    /// Runs the program with `path` set to the domain's file; what it printed, or how it failed.
    std::string python(const std::string& program) const {
        return Output(
            {"python3", "-c", "import plistlib, datetime, sys\npath = sys.argv[1]\n" + program, host(path)});
    }
};

// All values are written back, as a theme does that is loaded; what another process has set meanwhile stays.
TEST_F(PreferencesExchangeTests, WhatWasOnlyReadIsNotWrittenBackOverAnothersChange) {
    CFPreferencesSetAppValue("mine", PropertyList::integer(1), domain);
    CFPreferencesSetAppValue("other0", PropertyList::integer(7), domain);
    ASSERT_TRUE(CFPreferencesAppSynchronize(domain));
    const auto keys = CFPreferencesCopyKeyList(domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    ASSERT_TRUE(keys);
    Dictionary all =
        CFPreferencesCopyMultiple(*keys, domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    const std::string helper = std::string(TALLYFORGE_BIN) + "/corefoundation_helper";
    ASSERT_EQ(Ended(Start({helper, "set", root_, domain, "other", "1"})), 0); // other0 is 0 now
    all.setObjectForKey(PropertyList::integer(2), "mine");
    CFPreferencesSetMultiple(all, {}, domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    ASSERT_TRUE(CFPreferencesAppSynchronize(domain));
    EXPECT_EQ(CFPreferencesCopyAppValue("mine", domain), PropertyList::integer(2));
    EXPECT_EQ(CFPreferencesCopyAppValue("other0", domain), PropertyList::integer(0));
}

// But a theme that is loaded counts whole, or two at once would leave a look that is neither.
TEST_F(PreferencesExchangeTests, WhatIsInsistedOnWinsThoughItWasOnlyRead) {
    CFPreferencesSetAppValue("other0", PropertyList::integer(7), domain);
    ASSERT_TRUE(CFPreferencesAppSynchronize(domain));
    ASSERT_TRUE(CFPreferencesCopyAppValue("other0", domain));
    const std::string helper = std::string(TALLYFORGE_BIN) + "/corefoundation_helper";
    CFPreferencesInsistOn({"other0", "missing"}, domain);
    ASSERT_EQ(Ended(Start({helper, "set", root_, domain, "other", "1"})), 0); // other0 is 0 in the file
    ASSERT_TRUE(CFPreferencesAppSynchronize(domain));
    EXPECT_EQ(CFPreferencesCopyAppValue("other0", domain), PropertyList::integer(7));
    EXPECT_FALSE(CFPreferencesCopyAppValue("missing", domain));
}

TEST_F(PreferencesExchangeTests, AnotherReaderFindsTheSameValuesAndKinds) {
    const auto set = [](const char* key, PropertyList value) {
        CFPreferencesSetAppValue(key, std::move(value), domain);
    };
    set("yes", PropertyList::boolean(true));
    set("no", PropertyList::boolean(false));
    set("int", PropertyList::integer(-70000));
    set("float", PropertyList::floatNumber(0.1f));
    set("double", PropertyList::doubleNumber(0.1));
    set("text", PropertyList::string("Gr\xC3\xBC\xC3\x9F \xF0\x9F\x8D\x8E"));
    set("data", PropertyList::data({0, 255, 10}));
    set("date", PropertyList::date(86'400));
    Dictionary inner;
    inner.setObjectForKey(PropertyList::string("v"), "k");
    set("list", PropertyList::array({PropertyList::integer(1), PropertyList::dictionary(inner)}));
    ASSERT_TRUE(CFPreferencesAppSynchronize(domain)) << CFPreferencesSynchronizeFailure(domain);
    EXPECT_EQ(python("for key, value in plistlib.load(open(path, 'rb')).items(): print(key, ascii(value))"),
              "yes True\n"
              "no False\n"
              "int -70000\n"
              "float 0.10000000149011612\n"
              "double 0.1\n"
              "text 'Gr\\xfc\\xdf \\U0001f34e'\n"
              "data b'\\x00\\xff\\n'\n"
              "date datetime.datetime(2001, 1, 2, 0, 0)\n"
              "list [1, {'k': 'v'}]\n");
    // 0x22: a real of 4 bytes; 0x23: one of 8.
    EXPECT_NE(text(path).find("\x22\x3D\xCC\xCC\xCD"), std::string::npos);
    EXPECT_NE(text(path).find("\x23\x3F\xB9\x99\x99\x99\x99\x99\x9A"), std::string::npos);
}

TEST_F(PreferencesExchangeTests, WhatAnotherWriterWroteIsRead) {
    folder("/var/mobile/Library/Preferences");
    for (const char* format : {"FMT_BINARY", "FMT_XML"}) {
        ASSERT_EQ(python(std::string("value = {'z': 1, 'yes': True, 'real': 2.5, 'text': 'Gr\\u00fc\\u00df',"
                                     "'data': b'\\x00\\xff', 'date': datetime.datetime(2001, 1, 2),"
                                     "'list': [-1, 'a', {}]}\n"
                                     "plistlib.dump(value, open(path, 'wb'), sort_keys=False,"
                                     "fmt=plistlib.") +
                         format + ")"),
                  "");
        const auto get = [](const char* key) { return CFPreferencesCopyAppValue(key, domain); };
        const auto keys = CFPreferencesCopyKeyList(domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
        EXPECT_EQ(keys, (std::vector<std::string>{"z", "yes", "real", "text", "data", "date", "list"}));
        EXPECT_EQ(get("z"), PropertyList::integer(1));
        EXPECT_EQ(get("yes"), PropertyList::boolean(true));
        EXPECT_EQ(get("real"), PropertyList::doubleNumber(2.5));
        EXPECT_EQ(get("text"), PropertyList::string("Gr\xC3\xBC\xC3\x9F"));
        EXPECT_EQ(get("data"), PropertyList::data({0, 255}));
        EXPECT_EQ(get("date"), PropertyList::date(86'400));
        EXPECT_EQ(get("list"), PropertyList::array({PropertyList::integer(-1), PropertyList::string("a"),
                                                    PropertyList::dictionary({})}));
        // What is saved is in the binary form, whatever was there.
        CFPreferencesSetAppValue("more", PropertyList::integer(3), domain);
        ASSERT_TRUE(CFPreferencesAppSynchronize(domain));
        EXPECT_EQ(text(path).substr(0, 8), "bplist00");
        EXPECT_EQ(get("text"), PropertyList::string("Gr\xC3\xBC\xC3\x9F"));
        CFPreferencesSetAppValue("more", std::nullopt, domain);
        ASSERT_TRUE(CFPreferencesAppSynchronize(domain));
    }
}

} // namespace

} // namespace tallyforge
