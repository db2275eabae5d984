#include "RandomDomain.h"

#include "settings/SettingsKeys.h"

#include <cmath>
#include <limits>

namespace tallyforge::test {

float RandomDomain::between(float min, float max) {
    return min + (max - min) * float(random_() >> 8) * 0x1p-24f;
}

// The same number as each kind that readers must accept.
PropertyList RandomDomain::ofAnyKind(double number) {
    switch (below(5)) {
    case 0:
        return PropertyList::integer(static_cast<int64_t>(number));
    case 1:
        return PropertyList::doubleNumber(number);
    case 2:
        return PropertyList::string(std::to_string(number) + oneOf({"", "x", " points", ".5"}));
    default:
        return PropertyList::floatNumber(static_cast<float>(number));
    }
}

PropertyList RandomDomain::noScalar() {
    switch (below(3)) {
    case 0:
        return PropertyList::data({1, 2, 3});
    case 1:
        return PropertyList::array({PropertyList::integer(5)});
    default:
        return PropertyList::dictionary({});
    }
}

PropertyList RandomDomain::color() {
    switch (below(20)) {
    case 0:
    case 1:
        return PropertyList::string("none");
    case 2:
    case 3:
        return PropertyList::string("transparent");
    case 4:
        return PropertyList::string("automatic");
    case 5:
        return PropertyList::string("automatic_dark");
    case 6:
        return PropertyList::string("automatic_bright");
    case 7:
        return PropertyList::string(oneOf({"", "#", "abc", "FF0000", "#FF000080", "#123456789ABC", "# 00ff00",
                                           "#0xFF8800", "#0x", "#12G456", "Automatic", "NONE", "Transparent",
                                           "none ", "#00ff00", "#\tFF", "x", "#-FF0000"}));
    case 8:
        return ofAnyKind(between(-10, 1e7f));
    case 9:
        return below(4) ? PropertyList::boolean(below(2)) : noScalar();
    default: {
        std::string text = "#";
        for (int i = 0; i < 6; ++i)
            text += "0123456789ABCDEFabcdef"[below(22)];
        return PropertyList::string(text);
    }
    }
}

PropertyList RandomDomain::code() {
    switch (below(12)) {
    case 0:
        return PropertyList::boolean(below(2));
    case 1:
        return PropertyList::integer(
            oneOf<int64_t>({-1, 13, 98, 99, 1'000'000, -1'000'000, 2'147'483'647, -2'147'483'648LL,
                            (int64_t(1) << 32) + 2, (int64_t(1) << 40) + 6, -(int64_t(1) << 33) + 10}));
    case 2:
        return PropertyList::string(
            oneOf({"", "abc", "3", " 4", "5.9", "-2", "12.5x", "6six", "99999999999"}));
    case 3:
        return PropertyList::floatNumber(oneOf({-1e9f, 1e9f, 1e20f, -0.f, 98.f, -3.f, 0.99f, 4.999f}));
    case 4:
        return below(3) ? PropertyList::doubleNumber(between(-1, 13)) : noScalar();
    default:
        return ofAnyKind(double(below(14)) - (below(8) == 0));
    }
}

PropertyList RandomDomain::number(float min, float max) {
    switch (below(16)) {
    case 0:
        return PropertyList::boolean(below(2));
    case 1:
        return PropertyList::string(
            oneOf({"12.5x", "", "abc", "-3", " 7", "1e2", ".5", "0x10", "inf", "nan", "+2"}));
    case 2:
        return ofAnyKind(oneOf({1e9, -1e9, 12345.678, -777.25, 360000.0}));
    case 3:
        return ofAnyKind(oneOf({0.0, -0.0, 1.0, -1.0, 10.0, 100.0, -2.0, -4.0}));
    case 4:
        return below(4) ? ofAnyKind(double(max) * 3) : noScalar();
    case 5:
        return ofAnyKind(-between(min, max));
    case 6:
        return PropertyList::floatNumber(below(2) ? min : max);
    default:
        return ofAnyKind(double(between(min, max)));
    }
}

PropertyList RandomDomain::wildNumber() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double value = oneOf({infinity, -infinity, std::nan(""), 1e300, -1e300, 3e38, 1e30, 1e-45});
    return below(2) ? PropertyList::doubleNumber(value)
                    : PropertyList::floatNumber(value > 3e38    ? std::numeric_limits<float>::infinity()
                                                : value < -3e38 ? -std::numeric_limits<float>::infinity()
                                                                : static_cast<float>(value));
}

Dictionary RandomDomain::next(bool wild) {
    Dictionary domain;
    // From nearly empty to nearly full.
    const uint32_t absent = below(10);
    for (const SettingKey& key : SettingsKeyTable()) {
        if (below(10) < absent) continue;
        PropertyList value = PropertyList::boolean(false);
        switch (key.type) {
        case SettingType::color:
            value = color();
            break;
        case SettingType::code:
            value = code();
            break;
        case SettingType::boolean:
            value = below(4) ? ofAnyKind(below(2)) : code();
            break;
        case SettingType::number:
            value = number(key.min, key.max);
            break;
        }
        if (wild && below(6) == 0) value = wildNumber();
        domain.setObjectForKey(value, key.name);
    }
    if (below(4) == 0)
        domain.setObjectForKey(below(2) ? PropertyList::integer(98) : code(), "presetcloseboxbg");
    return domain;
}

std::string DomainText(const Dictionary& domain) {
    std::string text;
    for (const auto& [key, value] : domain)
        text +=
            "  " + key + " = " + value.description() + " (kind " + std::to_string(int(value.kind())) + ")\n";
    return text;
}

} // namespace tallyforge::test
