#include "cli/ValueText.h"

#include "settings/ColorValues.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace tallyforge {

namespace {

std::optional<double> TextAsSwitch(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (std::string_view on : {"1", "on", "yes", "true"}) {
        if (lower == on) return 1;
    }
    for (std::string_view off : {"0", "off", "no", "false"}) {
        if (lower == off) return 0;
    }
    return std::nullopt;
}

std::string Wanted(const SettingKey& key) {
    switch (key.type) {
    case SettingType::color:
        return "'#RRGGBB' or one of none, transparent, automatic, automatic_dark, automatic_bright";
    case SettingType::boolean:
        return "0 or 1";
    case SettingType::number:
        return "a number from " + PropertyList::floatNumber(key.min).description() + " to " +
               PropertyList::floatNumber(key.max).description();
    case SettingType::code:
        break;
    }
    // "a whole number from 0 to 4, 5, 6 or 10"; "0 or 98"
    std::string text =
        key.max > 0 ? "a whole number from 0 to " + PropertyList::floatNumber(key.max).description() : "0";
    for (size_t i = 0; i < key.furtherCodes.size(); ++i)
        text += (i + 1 < key.furtherCodes.size() ? ", " : " or ") + std::to_string(key.furtherCodes[i]);
    return text;
}

} // namespace

std::optional<double> NumberFromText(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0;
    auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failed != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        return std::nullopt;
    return number + 0.0; // never -0
}

Result<PropertyList> SettingFromText(const SettingKey& key, std::string_view text) {
    Error wrong{"'" + std::string(text) + "' is no value for " + std::string(key.name) + "; wanted is " +
                Wanted(key)};
    if (key.type == SettingType::color) {
        if (!IsColorString(text)) return wrong;
        std::string color(text);
        if (color.front() == '#')
            std::ranges::transform(color, color.begin(),
                                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        return PropertyList::string(std::move(color));
    }
    auto number = key.type == SettingType::boolean ? TextAsSwitch(text) : NumberFromText(text);
    if (!number || !key.accepts(*number)) return wrong;
    return PropertyList::floatNumber(static_cast<float>(*number));
}

} // namespace tallyforge
