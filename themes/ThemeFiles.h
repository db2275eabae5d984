#pragma once

#include "foundation/PropertyList.h"
#include "foundation/Result.h"
#include "settings/SettingsKeys.h"
#include "themes/UnreadFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The entry of a theme that holds its name as it was typed.
inline constexpr std::string_view kThemeNameKey = "themename";

/// One of the user's themes.
struct Theme {
    std::string name; ///< its "themename"; its file's name without the extension where it has none
    std::string path; ///< its file
};

/// What is in the user's folder.
struct ThemeListing {
    bool empty = true;              ///< no entry of any kind but such as are being written, or no folder
    std::vector<Theme> themes;      ///< in the order of the folder's listing
    std::vector<UnreadFile> unread; ///< files that may be themes
    std::string unreadable;         ///< why the folder cannot be listed; empty when it can, or is not there
};

/// Every file of the folder with the extension "tft" that unarchives to a dictionary; whatever else stands
/// there is passed over. A file that cannot be read is told, as it may be one.
ThemeListing ListThemes();
/// The same for a screen, which says nothing of a folder that cannot be listed or of a file that cannot be
/// read: those are told as silent failures.
ThemeListing ListThemesForScreen();

/// The dictionary that the file unarchives to, or why it is no theme.
Result<Dictionary> ReadTheme(std::string_view path);
/// The same of bytes that stand in no file of the device.
Result<Dictionary> ThemeFromArchive(const std::vector<uint8_t>& archive);
/// The theme's own name; empty when it has none that can be shown.
std::string NameOfTheme(const Dictionary& theme);
/// The theme's value of the setting, or nullptr when it has none. Only numbers and strings are values.
const PropertyList* ThemeValue(const Dictionary& theme, const SettingKey& key);

/// The present look under that name: what the domain holds, and fallbacks for what it does not.
Result<Dictionary> ThemeOfSettings(std::string_view name);
enum class Overwrite { no, yes };
/// Archives the theme into the file, atomically; makes the user's folder where it is missing. Where a file
/// stands there and is not to be overwritten nothing is written, whoever wrote it and however lately.
Status WriteTheme(const Dictionary& theme, std::string_view path, Overwrite overwrite);
/// Sets the theme's settings in the domain, fallbacks for what it does not have; nothing is saved yet.
void SetTheme(const Dictionary& theme);
/// Makes the theme the present look: sets it, saves the domain and announces it.
void ApplyTheme(const Dictionary& theme);
Status RemoveTheme(std::string_view path);
/// Tells the home screen that there is one theme less.
void AnnounceThemeRemoved();

/// What came of restoring the default themes.
struct RestoredThemes {
    std::vector<std::string> missing; ///< names that no entry of the user's folder had
    std::vector<std::string> files;   ///< names of those that are there now
    struct Failure {
        std::string path;
        Status outcome;
    };
    std::vector<Failure> failures; ///< what could not be read or written
};
/// Copies every default theme whose name no entry of the user's folder has; never overwrites one.
RestoredThemes RestoreDefaultThemes();

} // namespace tallyforge
