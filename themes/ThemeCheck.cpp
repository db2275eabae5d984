#include "themes/ThemeCheck.h"

#include "settings/ColorValues.h"
#include "settings/SettingsKeys.h"
#include "themes/ThemeFiles.h"
#include "themes/ThemeNames.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

char Capital(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool IsValueOf(const SettingKey& key, const PropertyList& value) {
    if (key.type == SettingType::color) return value.isString() && IsColorString(*value.asString());
    return value.isNumber() && std::isfinite(value.floatValue());
}

} // namespace

Result<Dictionary> CheckedTheme(const Dictionary& theme) {
    const std::string name = NameOfTheme(theme);
    if (IsBlankThemeName(name)) return Error{"a theme without a name"};
    if (std::string why = WhyNoThemeFile(name); !why.empty()) return Error{std::move(why)};
    Dictionary checked;
    checked.setObjectForKey(PropertyList::string(name), kThemeNameKey);
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList* value = theme.objectForKey(key.name);
        if (!value) continue;
        if (!IsValueOf(key, *value))
            return Error{"its " + std::string(key.name) + " is no " +
                         (key.type == SettingType::color ? "colour" : "number")};
        checked.setObjectForKey(*value, key.name);
    }
    if (checked.count() == 1) return Error{"a theme without a single setting"};
    return checked;
}

bool SameSettingValue(const PropertyList& a, const PropertyList& b) {
    if (a.isNumber() && b.isNumber()) return a.floatValue() == b.floatValue();
    if (!a.isString() || !b.isString()) return a == b;
    return std::equal(a.asString()->begin(), a.asString()->end(), b.asString()->begin(), b.asString()->end(),
                      [](char x, char y) { return Capital(x) == Capital(y); });
}

} // namespace tallyforge
