#include "colorpicker/ColorPalettes.h"

#include "PaletteTable.h"
#include "settings/ColorValues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace tallyforge::test {
namespace {

std::vector<std::string> namesOf(const std::vector<ColorRecord>& colors) {
    std::vector<std::string> names;
    for (const ColorRecord& record : colors)
        names.emplace_back(record.name);
    return names;
}

TEST(ColorPalettesTest, AllRowsStandInTheirOrder) {
    ASSERT_EQ(std::size(kPaletteRows), 64U);
    const auto& all = palettes();
    ASSERT_EQ(all.size(), 4U);
    const std::vector<std::pair<std::string_view, size_t>> sections{
        {"Special", 5}, {"iOS Palette", 10}, {"Crayons", 48}, {"Custom", 1}};
    for (size_t i = 0; i < sections.size(); ++i) {
        EXPECT_EQ(all[i].title, sections[i].first);
        EXPECT_EQ(all[i].colors.size(), sections[i].second);
    }
    for (const PaletteRow& row : kPaletteRows) {
        const auto& colors = all[static_cast<size_t>(row.section)].colors;
        ASSERT_LT(static_cast<size_t>(row.row), colors.size());
        EXPECT_EQ(colors[static_cast<size_t>(row.row)], (ColorRecord{row.name, row.hex}));
    }
}

TEST(ColorPalettesTest, TheProvidersGiveThePalettes) {
    EXPECT_EQ(specialColors(), palettes()[0].colors);
    EXPECT_EQ(iOSColors(), palettes()[1].colors);
    EXPECT_EQ(crayonColors(), palettes()[2].colors);
    EXPECT_EQ(customColor(), palettes()[3].colors);
}

TEST(ColorPalettesTest, NoValueStandsTwice) {
    std::set<std::string_view> values;
    for (const Palette& palette : palettes()) {
        for (const ColorRecord& record : palette.colors)
            EXPECT_TRUE(values.insert(record.hex).second) << record.hex;
    }
    EXPECT_EQ(values.size(), 64U);
}

TEST(ColorPalettesTest, EveryRowIsAPresetLetterForLetter) {
    for (const PaletteRow& row : kPaletteRows) {
        EXPECT_TRUE(presetColorExists(row.hex)) << row.hex;
        std::string other(row.hex);
        for (char& c : other)
            c = static_cast<char>(std::islower(c) ? std::toupper(c) : std::tolower(c));
        EXPECT_EQ(presetColorExists(other), other == row.hex) << other; // digits alone have no case
        EXPECT_FALSE(presetColorExists(std::string(row.hex) + " "));
        EXPECT_FALSE(presetColorExists(row.name == row.hex ? "?" : row.name));
    }
    EXPECT_FALSE(presetColorExists("#ffffff"));
    EXPECT_FALSE(presetColorExists("#123456"));
    EXPECT_FALSE(presetColorExists(""));
    EXPECT_FALSE(presetColorExists("#FFFFF"));
}

TEST(ColorPalettesTest, SortingByHueKeepsGreysAmongTheirHues) {
    EXPECT_EQ(namesOf(sortPaletteByHue(iOSColors())),
              (std::vector<std::string>{"System Red", "Orange", "Yellow", "System Green", "Marine Blue",
                                        "Light Blue", "System Blue", "Gray", "Purple", "Pink"}));
}

TEST(ColorPalettesTest, EqualHuesSortBySaturationThenBrightness) {
    // All of hue 0: saturation 0 (grey), then 0.5, then 1 in two brightnesses.
    EXPECT_EQ(namesOf(sortPaletteByHue(
                  {{"full", "#FF0000"}, {"dark", "#800000"}, {"half", "#FF8080"}, {"grey", "#808080"}})),
              (std::vector<std::string>{"grey", "half", "dark", "full"}));
}

TEST(ColorPalettesTest, WordsSortAsBlack) {
    auto sorted = sortPaletteByHue({{"red", "#FF0000"}, {"Automatic", "automatic"}, {"grey", "#010101"}});
    EXPECT_EQ(sorted.front().name, "Automatic");
    // Even a word that begins with hexadecimal digits after its first letter.
    EXPECT_EQ(sortPaletteByHue({{"dark grey", "#010101"}, {"word", "xFFFFFF"}}).front().name, "word");
    EXPECT_TRUE(sortPaletteByHue({}).empty());
}

// The order of all rows against the plain formula, in whole numbers.
TEST(ColorPalettesTest, SortingAgreesWithTheFormulaOnAllRows) {
    struct Key {
        double hue, saturation, brightness;
    };
    auto keyOf = [](std::string_view hex) -> Key {
        if (hex.front() != '#') return {0, 0, 0};
        const long n = std::stol(std::string(hex.substr(1)), nullptr, 16);
        const double r = static_cast<double>(n >> 16), g = static_cast<double>((n >> 8) & 255),
                     b = static_cast<double>(n & 255);
        const double top = std::max({r, g, b}), spread = top - std::min({r, g, b});
        double hue = 0;
        if (spread > 0) {
            hue = top == r ? (g - b) / spread : top == g ? 2 + (b - r) / spread : 4 + (r - g) / spread;
            if (hue < 0) hue += 6;
        }
        return {hue / 6, top > 0 ? spread / top : 0, top / 255};
    };
    std::vector<ColorRecord> all;
    for (const PaletteRow& row : kPaletteRows)
        all.push_back({row.name, row.hex});
    const auto sorted = sortPaletteByHue(all);
    ASSERT_EQ(sorted.size(), all.size());
    for (size_t i = 1; i < sorted.size(); ++i) {
        const Key a = keyOf(sorted[i - 1].hex), b = keyOf(sorted[i].hex);
        if (std::abs(a.hue - b.hue) > 1e-9)
            EXPECT_LT(a.hue, b.hue) << sorted[i].name;
        else if (std::abs(a.saturation - b.saturation) > 1e-9)
            EXPECT_LT(a.saturation, b.saturation) << sorted[i].name;
        else
            EXPECT_LE(a.brightness, b.brightness + 1e-9) << sorted[i].name;
    }
}

} // namespace
} // namespace tallyforge::test
