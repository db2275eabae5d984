#pragma once

#include "foundation/PropertyList.h"
#include "settings/SettingsKeys.h"

#include <cstdint>
#include <string_view>

namespace tallyforge {

class PSListController;

/// In process: the preview takes a new snapshot and draws again.
inline constexpr std::string_view kReloadPreviewNotification = "reloadTallyforgePreviewNotify";
/// System-wide: the home screen reads the domain again.
inline constexpr std::string_view kPrefsNotification = "com.quillon.tallyforge.prefs";
/// System-wide: the home screen puts the numeric count back.
inline constexpr std::string_view kConvertArabicNotification = "com.quillon.tallyforge.convertArabic";

/// Replaces the snapshot by what the domain holds now; an absent or unreadable domain is an empty one.
void LoadSettingsSnapshot();
/// The domain as it was when it was last loaded; a key that is not set is not in it.
const Dictionary& SettingsSnapshot();

/// The snapshot's value as a float number, or `absent` when the key is not set.
float SettingNumber(std::string_view key, float absent);
/// The same as a whole number, for codes (`intValue`).
int32_t SettingCode(std::string_view key, int32_t absent);
/// The same read as a float number and truncated towards zero, held to 32 bits.
int32_t SettingTruncated(std::string_view key, float absent);
/// The same as a truth value (`boolValue`); false when the key is not set.
bool SettingFlag(std::string_view key);

/// Tells the preview, then the home screen, that the domain has changed.
void AnnounceSettingsChanged();

enum class DrawMode { wholeNumber, fraction };
/// The value that the random number r stands for: between the bounds inclusive for whole numbers, from `min`
/// up to but never `max` for fractions (in single precision).
float RandomValue(uint32_t r, DrawMode mode, float min, float max);
/// Draws a value and writes it through the pane's row whose identifier is the key, which shows it at once.
void SetRandomSpecifierValue(std::string_view key, PSListController& controller, bool isFloat, float min,
                             float max);
/// Draws a value and writes it straight into the domain.
void WriteRandomValue(std::string_view key, bool isFloat, float min, float max);

/// The scale factor that a size setting stands for: growing counts in full, shrinking by half.
float GrowthFactor(float v);

} // namespace tallyforge
