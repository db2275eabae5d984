// Themes that other archivers have written.

#include "ThemesFixture.h"

namespace tallyforge::test {
namespace {

using ForeignThemesTest = ThemesTest;

TEST_F(ForeignThemesTest, AnIndependentWritersThemesAreRead) {
    const Ended python = RunProgram({"python3", TALLYFORGE_TEST_DATA "/make_archives.py", folder().string()},
                                    {{"PYTHONUTF8", "1"}});
    ASSERT_EQ(python.status, 0) << python.errors;
    const auto themes = ListThemes().themes;
    EXPECT_EQ(themes.size(), 11U);
    for (const Theme& each : themes) {
        SCOPED_TRACE(each.path);
        EXPECT_EQ(each.path, std::string(kThemeFolder) + each.name + ".tft");
        const auto theme = ReadTheme(each.path);
        ASSERT_TRUE(theme) << theme.reason();
        EXPECT_EQ(NameOfTheme(*theme), each.name);
        EXPECT_EQ(ThemeValue(*theme, *FindSettingKey("badgesize"))->floatValue(), 1.25F);
        EXPECT_EQ(*ThemeValue(*theme, *FindSettingKey("badgebgcol"))->asString(), "#ABCDEF");
        EXPECT_EQ(ThemeValue(*theme, *FindSettingKey("badgepos")), nullptr);
    }
}

TEST_F(ForeignThemesTest, ThemesOfOneNameAreBothListed) {
    put("b.tft", archive(theme("Same")));
    put("a.tft", archive(theme("Same")));
    EXPECT_EQ(names(), (std::vector<std::string>{"Same", "Same"}));
    EXPECT_TRUE(ListThemes().themes.front().path.ends_with("/a.tft"));
}

TEST_F(ForeignThemesTest, AThemeThatCannotBeCalledByItsNameIsCalledByItsFile) {
    Dictionary nameless = theme("x");
    nameless.removeObjectForKey(kThemeNameKey);
    put("nameless.tft", archive(nameless));
    put("number.tft", archive([] {
            Dictionary numbered = theme("x");
            numbered.setObjectForKey(PropertyList::integer(7), kThemeNameKey);
            return numbered;
        }()));
    put("empty.tft", archive(theme("")));
    put("endless.tft", archive(theme(std::string(5'000, 'x'))));
    EXPECT_EQ(names(), (std::vector<std::string>{"empty", "endless", "nameless", "number"}));
}

TEST_F(ForeignThemesTest, OnlyFilesWithTheExtensionCount) {
    for (const char* file : {"a.TFT", "a.tft.bak", "tft", ".tft", "a", "a.txt"})
        put(file, archive(theme(file)));
    put("yes.tft", archive(theme("Yes")));
    put(".hidden.tft", archive(theme("Hidden")));
    EXPECT_EQ(names(), (std::vector<std::string>{"Hidden", "Yes"}));
    EXPECT_FALSE(ListThemes().empty);
}

// The device's own archives: most are no themes. Each is listed if it is a dictionary, and harms nobody.
TEST_F(ForeignThemesTest, ArchivesOfTheDeviceAreTakenOrPassedOver) {
    const std::filesystem::path fixtures = std::filesystem::path(TALLYFORGE_FIXTURES) / "keyed-archives";
    if (!std::filesystem::exists(fixtures)) GTEST_SKIP() << "no archives in " << fixtures;
    size_t number = 0, dictionaries = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(fixtures)) {
        if (!entry.is_regular_file()) continue;
        const auto target = folder() / ("archive" + std::to_string(number++) + ".tft");
        std::filesystem::copy_file(entry.path(), target);
        dictionaries += static_cast<bool>(ReadTheme(std::string(kThemeFolder) + target.filename().string()));
    }
    EXPECT_EQ(number, 67U);
    EXPECT_GT(dictionaries, 0U);
    put("mine.tft", archive(theme("Mine")));
    const Ended ended = tallyforge({"theme", "list"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_NE(ended.output.find("Mine\tmine.tft\n"), std::string::npos);
    EXPECT_EQ(static_cast<size_t>(std::count(ended.output.begin(), ended.output.end(), '\n')),
              dictionaries + 1);
}

} // namespace
} // namespace tallyforge::test
