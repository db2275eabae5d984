#pragma once

#include "foundation/PropertyList.h"

#include <span>
#include <string_view>

namespace tallyforge {

/// The preference domain that holds the look of the three marks.
inline constexpr std::string_view kSettingsDomain = "com.quillon.tallyforge";

/// Which of the three marks a setting belongs to.
enum class MarkKind { badge = 0, closeBox = 1, newDot = 2 };

/// What kind of value a setting takes.
enum class SettingType {
    color,   ///< a colour string or a special word
    number,  ///< any number between the bounds
    code,    ///< a whole number that stands for a choice
    boolean, ///< 0 or 1
};

/// One setting. Every number is written as a float number, colours as strings.
struct SettingKey {
    std::string_view name;
    MarkKind mark;
    SettingType type;
    float min; ///< the bounds that the randomiser draws from and sliders offer; 0 for colours
    float max;
    std::string_view fallbackColor; ///< for colours
    double fallbackNumber;          ///< for all others
    /// Codes beyond `max` that the mark's renderer accepts although the randomiser never draws them.
    std::span<const int> furtherCodes;

    /// Whether a number is within the bounds, or for a code is one that the mark accepts.
    bool accepts(double number) const;
};

/// All 46 settings: the badge's, the close box's, the new dot's.
std::span<const SettingKey> SettingsKeyTable();

/// The setting of that name, or nullptr.
const SettingKey* FindSettingKey(std::string_view name);

/// The defaults dictionary: the 46 fallbacks, in the table's order, with the kinds that they have there
/// (whole numbers, two fractions, one boolean). `SettingColor` falls back on its colours; renderers have
/// numbers of their own for absent numeric keys.
const Dictionary& SettingsDefaults();

/// Read by the close box renderer alone: 98 shows the cross without plates. Not part of a look.
inline constexpr std::string_view kPresetCloseBoxKey = "presetcloseboxbg";
inline constexpr int kPresetCrossOnly = 98;

} // namespace tallyforge
