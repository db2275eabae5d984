#pragma once

#include <string_view>

namespace tallyforge::test {

/// What the picker offers, row by row: the palette, the row in it, the name, and what is stored.
struct PaletteRow {
    int section, row;
    std::string_view name, hex;
};
inline constexpr PaletteRow kPaletteRows[] = {
    {0, 0, "None", "none"},
    {0, 1, "Transparent", "transparent"},
    {0, 2, "Automatic", "automatic"},
    {0, 3, "Automatic - only dark colors", "automatic_dark"},
    {0, 4, "Automatic - only bright colors", "automatic_bright"},
    {1, 0, "Purple", "#5856D6"},
    {1, 1, "System Blue", "#007AFF"},
    {1, 2, "Marine Blue", "#34AADC"},
    {1, 3, "Light Blue", "#5AC8FA"},
    {1, 4, "Pink", "#FF2D55"},
    {1, 5, "System Red", "#FF3B30"},
    {1, 6, "Orange", "#FF9500"},
    {1, 7, "Yellow", "#FFCC00"},
    {1, 8, "System Green", "#4CD964"},
    {1, 9, "Gray", "#8E8E93"},
    {2, 0, "Snow", "#FFFFFF"},
    {2, 1, "Mercury", "#E6E6E6"},
    {2, 2, "Silver", "#CCCCCC"},
    {2, 3, "Magnesium", "#B3B3B3"},
    {2, 4, "Aluminum", "#999999"},
    {2, 5, "Nickel", "#808080"},
    {2, 6, "Tin", "#7F7F7F"},
    {2, 7, "Steel", "#666666"},
    {2, 8, "Iron", "#4C4C4C"},
    {2, 9, "Tungsten", "#333333"},
    {2, 10, "Lead", "#191919"},
    {2, 11, "Licorice", "#000000"},
    {2, 12, "Marascino", "#FF0000"},
    {2, 13, "Cayenne", "#800000"},
    {2, 14, "Salmon", "#FF6666"},
    {2, 15, "Maroon", "#800040"},
    {2, 16, "Strawberry", "#FF0080"},
    {2, 17, "Carnation", "#FF6FCF"},
    {2, 18, "Magenta", "#FF00FF"},
    {2, 19, "Plum", "#800080"},
    {2, 20, "BubbleGum", "#FF66FF"},
    {2, 21, "Lavender", "#CC66FF"},
    {2, 22, "Grape", "#8000FF"},
    {2, 23, "Eggplant", "#400080"},
    {2, 24, "Blueberry", "#0000FF"},
    {2, 25, "Midnight", "#000080"},
    {2, 26, "Orchid", "#6666FF"},
    {2, 27, "Ocean", "#004080"},
    {2, 28, "Aqua", "#0080FF"},
    {2, 29, "Sky", "#66CCFF"},
    {2, 30, "Turquoise", "#00FFFF"},
    {2, 31, "Teal", "#008080"},
    {2, 32, "Ice", "#66FFFF"},
    {2, 33, "Spindrift", "#66FFCC"},
    {2, 34, "Sea Foam", "#00FF80"},
    {2, 35, "Moss", "#008040"},
    {2, 36, "Spring", "#00FF00"},
    {2, 37, "Clover", "#008000"},
    {2, 38, "Flora", "#66FF66"},
    {2, 39, "Fern", "#408000"},
    {2, 40, "Lime", "#80FF00"},
    {2, 41, "Honeydew", "#CCFF66"},
    {2, 42, "Lemon", "#FFFF00"},
    {2, 43, "Asperagus", "#808000"},
    {2, 44, "Banana", "#FFFF66"},
    {2, 45, "Cantaloupe", "#FFCC66"},
    {2, 46, "Tangerine", "#FF8000"},
    {2, 47, "Mocha", "#804000"},
    {3, 0, "Custom", "custom"},
};

} // namespace tallyforge::test
