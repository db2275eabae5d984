#include "foundation/NSLocale.h"

#include "TemporaryDevice.h"

#include <gmock/gmock.h>

namespace tallyforge {
namespace {

using testing::ElementsAre;

constexpr const char* kPreferences = "/var/mobile/Library/Preferences/.GlobalPreferences.plist";

class NSLocaleTest : public TemporaryDevice {
  protected:
    void SetUp() override {
        TemporaryDevice::SetUp();
        for (const char* name : {"LC_ALL", "LC_COLLATE", "LANG"})
            unsetenv(name);
    }
    void preferences(const std::string& entries) const {
        put(kPreferences,
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>");
    }
};

TEST_F(NSLocaleTest, IsEnglishWhereNothingSaysOtherwise) {
    EXPECT_THAT(NSLocalePreferredLanguages(), ElementsAre("en"));
    EXPECT_EQ(NSLocaleCurrentIdentifier(), "en");
}

TEST_F(NSLocaleTest, TheDeviceNamesItsLanguagesAndItsLocale) {
    preferences("<key>AppleLanguages</key><array><string>pt-BR</string><string>pt-PT</string>"
                "<string>zh-Hans-CN</string></array><key>AppleLocale</key><string>de_AT</string>");
    EXPECT_THAT(NSLocalePreferredLanguages(),
                ElementsAre("pt-BR", "pt", "pt-PT", "zh-Hans-CN", "zh-Hans", "zh"));
    EXPECT_EQ(NSLocaleCurrentIdentifier(), "de_AT");
}

TEST_F(NSLocaleTest, TheFirstLanguageStandsInForTheLocale) {
    preferences("<key>AppleLanguages</key><array><string>sv</string><string>en</string></array>");
    EXPECT_EQ(NSLocaleCurrentIdentifier(), "sv");
}

TEST_F(NSLocaleTest, ThenTheEnvironmentDoes) {
    setenv("LANG", "da_DK.UTF-8", 1);
    EXPECT_EQ(NSLocaleCurrentIdentifier(), "da_DK");
    EXPECT_THAT(NSLocalePreferredLanguages(), ElementsAre("en")) << "the language is the device's";
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EQ(NSLocaleCurrentIdentifier(), "en") << "no locale of people";
}

TEST_F(NSLocaleTest, NamesThatWouldBePathsAreNoLanguages) {
    preferences(
        "<key>AppleLanguages</key><array><string>../../etc</string><string></string><integer>4</integer>"
        "<string>fr</string></array><key>AppleLocale</key><string>a/b</string>");
    EXPECT_THAT(NSLocalePreferredLanguages(), ElementsAre("fr"));
    EXPECT_EQ(NSLocaleCurrentIdentifier(), "fr");
}

TEST_F(NSLocaleTest, BrokenPreferencesSayNothing) {
    put(kPreferences, "bplist00 and no more");
    EXPECT_THAT(NSLocalePreferredLanguages(), ElementsAre("en"));
}

} // namespace
} // namespace tallyforge
