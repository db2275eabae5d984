#include "cli/ValueText.h"

#include "foundation/UTFText.h"
#include "settings/ColorValues.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
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

} // namespace

std::optional<double> NumberFromText(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0;
    auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failed != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        return std::nullopt;
    return number + 0.0; // never -0
}

std::string AllowedValues(const SettingKey& key) {
    switch (key.type) {
    case SettingType::color:
        return "'#RRGGBB', none, transparent, automatic, automatic_dark or automatic_bright";
    case SettingType::boolean:
        return "0 or 1";
    case SettingType::number:
        return "a number from " + PropertyList::floatNumber(key.min).description() + " to " +
               PropertyList::floatNumber(key.max).description();
    case SettingType::code:
        break;
    }
    // "a whole number from 0 to 6 or 10"; "0 or 98"
    int last = static_cast<int>(key.max);
    std::string others;
    for (int code : key.furtherCodes) {
        if (code == last + 1 && last > 0)
            last = code;
        else
            others += " or " + std::to_string(code);
    }
    return (last > 0 ? "a whole number from 0 to " + std::to_string(last) : "0") + others;
}

Result<PropertyList> SettingFromText(const SettingKey& key, std::string_view text) {
    Error wrong{"'" + std::string(text) + "' is no value for " + std::string(key.name) + "; wanted is " +
                AllowedValues(key)};
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

bool IsUTF8(std::string_view text) {
    constexpr char32_t kInvalid = 0xFFFFFFFF;
    while (!text.empty()) {
        const char32_t c = TakeUTF8(text, kInvalid);
        if (c == kInvalid || IsHighSurrogate(c) || IsLowSurrogate(c)) return false;
    }
    return true;
}

} // namespace tallyforge
