#include "themes/ThemeNames.h"

#include "foundation/LowercaseString.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr std::string_view kExtension = ".tft";

} // namespace

bool IsBlankThemeName(std::string_view name) {
    return name.find_first_not_of(' ') == std::string_view::npos;
}

std::string ThemeFileName(std::string_view name) {
    std::string file = NSStringLowercaseString(name).append(kExtension);
    std::replace(file.begin(), file.end(), ' ', '_');
    return file;
}

std::string WhyNoThemeFile(std::string_view name) {
    if (name.find('/') != std::string_view::npos) return "A theme name can't contain the character /";
    if (name.find('\0') != std::string_view::npos) return "A theme name can't contain a null character";
    if (ThemeFileName(name).size() > kLongestFileName) return "This theme name is too long";
    return {};
}

bool HasThemeExtension(std::string_view fileName) {
    // A name that is nothing but an extension has none.
    return fileName.size() > kExtension.size() && fileName.ends_with(kExtension);
}

} // namespace tallyforge
