// The themes that come with the package.

#include "ThemesFixture.h"

#include "themes/ThemeCheck.h"

#include <fstream>
#include <iterator>
#include <set>

namespace tallyforge::test {
namespace {

const std::filesystem::path kDefaults = TALLYFORGE_RESOURCES "/stock/Library/Application Support/Tallyforge";

std::string BytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class DefaultThemesTest : public ThemesTest {
  protected:
    DefaultThemesTest() {
        for (const auto& entry : std::filesystem::directory_iterator(kDefaults))
            std::filesystem::copy_file(entry.path(), folder() / entry.path().filename());
    }
};

TEST_F(DefaultThemesTest, EachIsWholeAndAllowedAndHasTheFileOfItsName) {
    const auto themes = ListThemes().themes;
    EXPECT_GE(themes.size(), 8U);
    for (const Theme& each : themes) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(each.path, std::string(kThemeFolder) + ThemeFileName(each.name));
        const auto theme = ReadTheme(each.path);
        ASSERT_TRUE(theme);
        EXPECT_EQ(theme->count(), 47U);
        EXPECT_TRUE(CheckedTheme(*theme)) << CheckedTheme(*theme).reason();
        for (const SettingKey& key : SettingsKeyTable()) {
            const PropertyList* value = ThemeValue(*theme, key);
            ASSERT_NE(value, nullptr) << key.name;
            if (key.type != SettingType::color) {
                EXPECT_TRUE(key.accepts(value->doubleValue())) << key.name;
            }
        }
    }
}

TEST_F(DefaultThemesTest, TogetherTheyShowWhatThereIs) {
    std::set<int> shapes, animations;
    std::set<std::string> fills;
    bool roman = false, automatic = false, glows = false;
    for (const Theme& each : ListThemes().themes) {
        const auto theme = ReadTheme(each.path);
        ASSERT_TRUE(theme);
        shapes.insert(theme->objectForKey("badgeshape")->intValue());
        animations.insert(theme->objectForKey("badgeanimtype")->intValue());
        roman = roman || theme->objectForKey("convertbadgeroman")->boolValue();
        glows = glows || theme->objectForKey("badgeglowalpha")->floatValue() > 0;
        const std::string fill = *theme->objectForKey("badgebgcol")->asString();
        automatic = automatic || fill.starts_with("automatic");
        EXPECT_TRUE(fills.insert(fill).second) << each.name << " has another one's colour";
    }
    EXPECT_GE(shapes.size(), 6U);
    EXPECT_GE(animations.size(), 4U);
    EXPECT_TRUE(roman);
    EXPECT_TRUE(automatic);
    EXPECT_TRUE(glows);
}

TEST_F(DefaultThemesTest, TheToolMakesTheVeryFiles) {
    const auto made = device.root() / "made";
    const Ended ended = RunProgram(
        {TALLYFORGE_RESOURCES "/../tools/make-themes", TALLYFORGE_BIN "/tallyforge", made.string()});
    ASSERT_EQ(ended.status, 0) << ended.errors;
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(kDefaults)) {
        ++files;
        EXPECT_EQ(BytesOf(made / entry.path().filename()), BytesOf(entry.path())) << entry.path().filename();
    }
    EXPECT_EQ(static_cast<size_t>(std::distance(std::filesystem::directory_iterator(made), {})), files);
}

} // namespace
} // namespace tallyforge::test
