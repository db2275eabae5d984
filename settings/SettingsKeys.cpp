#include "settings/SettingsKeys.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr int kBadgeFurtherShapes[] = {5, 6};
constexpr int kCloseBoxFurtherShapes[] = {5, 6, 10};

constexpr SettingKey Color(std::string_view name, MarkKind mark, std::string_view fallback) {
    return {name, mark, SettingType::color, 0, 0, fallback, 0, {}};
}

constexpr SettingKey Number(std::string_view name, MarkKind mark, float min, float max, double fallback) {
    return {name, mark, SettingType::number, min, max, {}, fallback, {}};
}

constexpr SettingKey Code(std::string_view name, MarkKind mark, float max, double fallback,
                          std::span<const int> further = {}) {
    return {name, mark, SettingType::code, 0, max, {}, fallback, further};
}

constexpr MarkKind B = MarkKind::badge;
constexpr MarkKind C = MarkKind::closeBox;
constexpr MarkKind N = MarkKind::newDot;

constexpr SettingKey kTable[] = {
    Color("badgebgcol", B, "#00FF00"),
    Color("badgetxtcol", B, "#FFFFFF"),
    Number("badgealpha", B, 0, 100, 100),
    Code("badgeshape", B, 4, 1, kBadgeFurtherShapes),
    {"convertbadgeroman", B, SettingType::boolean, 0, 1, {}, 0, {}},
    Number("badgesize", B, -1.5F, 2.25F, 0),
    Number("badgetxtsize", B, -1.5F, 2.25F, 0),
    Number("badgerotation", B, 0, 360, 0),
    Code("badgepos", B, 8, 2),
    Number("badgeoffsetX", B, -20, 20, 0),
    Number("badgeoffsetY", B, -20, 20, 0),
    Number("badgetxtoffsetX", B, -20, 20, 0),
    Number("badgetxtoffsetY", B, -20, 20, 0),
    Color("badgebordercol", B, "#FF0000"),
    Number("badgebordersize", B, 0, 5, 1.5),
    Color("badgeglowcol", B, "#00FF00"),
    Number("badgeglowalpha", B, 0, 100, 0),
    Code("badgeanimtype", B, 12, 0),
    Number("badgeanimspd", B, 0.2F, 4, 1),

    Color("closeboxbgcol", C, "#FFA500"),
    Color("closeboxtxtcol", C, "#FFFFFF"),
    Number("closeboxalpha", C, 0, 100, 100),
    Code("closeboxshape", C, 4, 2, kCloseBoxFurtherShapes),
    Number("closeboxsize", C, -1.5F, 1.5F, 0),
    Number("closeboxtxtsize", C, -1.5F, 2.25F, 0),
    Number("closeboxrotation", C, 0, 360, 180),
    Code("closeboxpos", C, 8, 1),
    Number("closeboxoffsetX", C, -20, 20, 0),
    Number("closeboxoffsetY", C, -20, 20, 0),
    Number("closeboxtxtoffsetX", C, -20, 20, 0),
    Number("closeboxtxtoffsetY", C, -20, 20, 0),
    Color("closeboxbordercol", C, "#000000"),
    Number("closeboxbordersize", C, 0, 6, 0),
    Color("closeboxglowcol", C, "#FF0000"),
    Number("closeboxglowalpha", C, 0, 100, 100),
    Code("closeboxanimtype", C, 12, 0),
    Number("closeboxanimspd", C, 0.2F, 4, 1),

    Color("newdotbgcol", N, "#FF0000"),
    Number("newdotalpha", N, 0, 100, 100),
    Code("newdotanimtype", N, 12, 0),
    Number("newdotanimspd", N, 0.2F, 4, 1),
    Code("newdotshape", N, 3, 1),
    Number("newdotsize", N, -1, 1, 0.1),
    Code("newdotpos", N, 3, 1),
    Number("newdotoffsetX", N, -20, 20, 0),
    Number("newdotoffsetY", N, -20, 20, 0),
};
static_assert(std::size(kTable) == 46);

PropertyList FallbackValue(const SettingKey& key) {
    if (key.type == SettingType::color) return PropertyList::string(std::string(key.fallbackColor));
    if (key.type == SettingType::boolean) return PropertyList::boolean(key.fallbackNumber != 0);
    if (key.fallbackNumber == std::trunc(key.fallbackNumber))
        return PropertyList::integer(static_cast<int64_t>(key.fallbackNumber));
    return PropertyList::floatNumber(static_cast<float>(key.fallbackNumber));
}

} // namespace

bool SettingKey::accepts(double number) const {
    if (type == SettingType::color || !std::isfinite(number)) return false;
    // Compared as it will be stored, so that the bound 0.2 itself is within the bounds.
    auto stored = static_cast<float>(number);
    bool within = stored >= min && stored <= max;
    if (type == SettingType::number) return within;
    if (number != std::trunc(number)) return false;
    return within || std::ranges::any_of(furtherCodes, [&](int code) { return code == number; });
}

std::span<const SettingKey> SettingsKeyTable() {
    return kTable;
}

const SettingKey* FindSettingKey(std::string_view name) {
    const auto* found = std::ranges::find(kTable, name, &SettingKey::name);
    return found == std::end(kTable) ? nullptr : found;
}

const Dictionary& SettingsDefaults() {
    static const Dictionary defaults = [] {
        Dictionary dictionary;
        for (const SettingKey& key : kTable)
            dictionary.setObjectForKey(FallbackValue(key), key.name);
        return dictionary;
    }();
    return defaults;
}

} // namespace tallyforge
