#pragma once

#include "uikit/UIColor.h"
#include "uikit/UIImage.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyforge {

/// Words that stand in place of a colour string.
inline constexpr std::string_view kColorNone = "none";                    ///< no colour of the setting's own
inline constexpr std::string_view kColorTransparent = "transparent";      ///< drawn invisible
inline constexpr std::string_view kColorAutomatic = "automatic";          ///< the icon's average colour
inline constexpr std::string_view kColorAutomaticDark = "automatic_dark"; ///< without bright pixels
inline constexpr std::string_view kColorAutomaticBright = "automatic_bright"; ///< without dark pixels

/// One colour setting as it is to be drawn; nothing for "none". A key that is not set takes its fallback. The
/// automatic words count only where the icon is supplied.
std::optional<UIColor> SettingColor(std::string_view key, const UIImage& iconImage = {});

/// The colour that a string stands for: one character is skipped, then a hexadecimal number is read as a
/// scanner reads one. Never fails; what cannot be read is black.
UIColor ColorFromHexString(std::string_view text);

/// "#" and six upper-case digits for channels from 0 to 255, each cut to a whole number.
std::string HexStringFromColor(double red, double green, double blue);

/// Any colour, each as likely as the others.
std::string RandomColorString();

enum class AutomaticColorMode { all = 1, ignoreBright = 2, ignoreDark = 3 };
/// The average colour of the image's pixels at one pixel a point; black when every pixel is ignored or the
/// pixels cannot be had.
UIColor AutomaticColorFromImage(const UIImage& image, AutomaticColorMode mode);

/// Whether people may write this as a colour: "#" and six hexadecimal digits, or one of the special words.
bool IsColorString(std::string_view text);

} // namespace tallyforge
