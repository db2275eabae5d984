#include "colorpicker/ColorPalettes.h"

#include "settings/ColorValues.h"

#include <algorithm>
#include <tuple>

namespace tallyforge {

const std::vector<Palette>& palettes() {
    static const std::vector<Palette> all = {{"Special", specialColors()},
                                             {"iOS Palette", iOSColors()},
                                             {"Crayons", crayonColors()},
                                             {"Custom", customColor()}};
    return all;
}

std::vector<ColorRecord> specialColors() {
    return {{"None", kColorNone},
            {"Transparent", kColorTransparent},
            {"Automatic", kColorAutomatic},
            {"Automatic - only dark colors", kColorAutomaticDark},
            {"Automatic - only bright colors", kColorAutomaticBright}};
}

std::vector<ColorRecord> iOSColors() {
    return {{"Purple", "#5856D6"},     {"System Blue", "#007AFF"}, {"Marine Blue", "#34AADC"},
            {"Light Blue", "#5AC8FA"}, {"Pink", "#FF2D55"},        {"System Red", "#FF3B30"},
            {"Orange", "#FF9500"},     {"Yellow", "#FFCC00"},      {"System Green", "#4CD964"},
            {"Gray", "#8E8E93"}};
}

// Some names are spelt as they are known, and two greys lie one step apart.
std::vector<ColorRecord> crayonColors() {
    return {{"Snow", "#FFFFFF"},       {"Mercury", "#E6E6E6"},    {"Silver", "#CCCCCC"},
            {"Magnesium", "#B3B3B3"},  {"Aluminum", "#999999"},   {"Nickel", "#808080"},
            {"Tin", "#7F7F7F"},        {"Steel", "#666666"},      {"Iron", "#4C4C4C"},
            {"Tungsten", "#333333"},   {"Lead", "#191919"},       {"Licorice", "#000000"},
            {"Marascino", "#FF0000"},  {"Cayenne", "#800000"},    {"Salmon", "#FF6666"},
            {"Maroon", "#800040"},     {"Strawberry", "#FF0080"}, {"Carnation", "#FF6FCF"},
            {"Magenta", "#FF00FF"},    {"Plum", "#800080"},       {"BubbleGum", "#FF66FF"},
            {"Lavender", "#CC66FF"},   {"Grape", "#8000FF"},      {"Eggplant", "#400080"},
            {"Blueberry", "#0000FF"},  {"Midnight", "#000080"},   {"Orchid", "#6666FF"},
            {"Ocean", "#004080"},      {"Aqua", "#0080FF"},       {"Sky", "#66CCFF"},
            {"Turquoise", "#00FFFF"},  {"Teal", "#008080"},       {"Ice", "#66FFFF"},
            {"Spindrift", "#66FFCC"},  {"Sea Foam", "#00FF80"},   {"Moss", "#008040"},
            {"Spring", "#00FF00"},     {"Clover", "#008000"},     {"Flora", "#66FF66"},
            {"Fern", "#408000"},       {"Lime", "#80FF00"},       {"Honeydew", "#CCFF66"},
            {"Lemon", "#FFFF00"},      {"Asperagus", "#808000"},  {"Banana", "#FFFF66"},
            {"Cantaloupe", "#FFCC66"}, {"Tangerine", "#FF8000"},  {"Mocha", "#804000"}};
}

std::vector<ColorRecord> customColor() {
    return {{"Custom", kColorCustom}};
}

bool presetColorExists(std::string_view value) {
    return std::any_of(palettes().begin(), palettes().end(), [&](const Palette& palette) {
        return std::any_of(palette.colors.begin(), palette.colors.end(),
                           [&](const ColorRecord& record) { return record.hex == value; });
    });
}

std::vector<ColorRecord> sortPaletteByHue(std::vector<ColorRecord> colors) {
    auto key = [](const ColorRecord& record) {
        const auto color = IsColorString(record.hex) && record.hex.starts_with('#')
                               ? ColorFromHexString(record.hex)
                               : UIColor::blackColor();
        const auto hsb = color.hueSaturationBrightness();
        return std::tuple(hsb.hue, hsb.saturation, hsb.brightness);
    };
    std::sort(colors.begin(), colors.end(),
              [&](const ColorRecord& a, const ColorRecord& b) { return key(a) < key(b); });
    return colors;
}

} // namespace tallyforge
