#pragma once

#include <string_view>
#include <vector>

namespace tallyforge {

/// One colour to choose: its name for people, and what is stored for it (a colour string or a special word).
struct ColorRecord {
    std::string_view name;
    std::string_view hex;
    bool operator==(const ColorRecord&) const = default;
};

struct Palette {
    std::string_view title;
    std::vector<ColorRecord> colors;
};

// The places of the two palettes that are shown in a way of their own.
inline constexpr int kSpecialPalette = 0;
inline constexpr int kCustomPalette = 3;

/// What stands for the mixed colour in the last palette; it is never stored.
inline constexpr std::string_view kColorCustom = "custom";

/// The four palettes, in the order in which they are shown.
const std::vector<Palette>& palettes();
std::vector<ColorRecord> specialColors();
std::vector<ColorRecord> iOSColors();
std::vector<ColorRecord> crayonColors();
std::vector<ColorRecord> customColor();

/// Whether any row of any palette, special words and the custom row included, has exactly this value; letters
/// in another case are another value.
bool presetColorExists(std::string_view value);

/// By hue, then saturation, then brightness, each ascending. What is no colour string sorts as black.
std::vector<ColorRecord> sortPaletteByHue(std::vector<ColorRecord> colors);

} // namespace tallyforge
