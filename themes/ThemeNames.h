#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tallyforge {

/// The user's themes; made when a theme is first written.
inline constexpr std::string_view kThemeFolder = "/var/mobile/Documents/Tallyforge/";
/// The themes that came with the package.
inline constexpr std::string_view kDefaultThemeFolder = "/Library/Application Support/Tallyforge/";
/// In bytes: what a file's name may have on every file system here.
inline constexpr size_t kLongestFileName = 255;

/// Nothing but spaces.
bool IsBlankThemeName(std::string_view name);

/// The file that a theme of that name has: "My Theme" is "my_theme.tft". Names that differ in case alone, or
/// in spaces and underscores, have the same file.
std::string ThemeFileName(std::string_view name);

/// Why a name can have no file in the themes' folder, in words for people; empty when it can.
///
/// The rule above keeps every character but spaces, so a name with "/" would lead into another folder, one
/// with a NUL would end there, and one of over 255 bytes fits no file system. Those are refused before
/// anything is looked at or written. Dots are harmless wherever they stand: with ".tft" after them even "."
/// and ".." are names like any other.
std::string WhyNoThemeFile(std::string_view name);

/// Whether a file of that name can be a theme: its extension is "tft".
bool HasThemeExtension(std::string_view fileName);

} // namespace tallyforge
