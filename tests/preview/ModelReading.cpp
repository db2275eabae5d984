#include "ModelReading.h"

#include <cmath>
#include <map>
#include <string>

namespace tallyforge::test {

float ModelReading::number(std::string_view key, float absent) const {
    const PropertyList* value = domain_.objectForKey(key);
    return value ? value->floatValue() : absent;
}

int32_t ModelReading::code(std::string_view key, int32_t absent) const {
    const PropertyList* value = domain_.objectForKey(key);
    return value ? value->intValue() : absent;
}

int32_t ModelReading::animationType(std::string_view key) const {
    const float value = number(key, 0);
    return std::abs(value) < 1e9f ? static_cast<int32_t>(value) : 99;
}

bool ModelReading::flag(std::string_view key) const {
    const PropertyList* value = domain_.objectForKey(key);
    return value && value->boolValue();
}

bool ModelReading::isText(std::string_view key, std::string_view text) const {
    const PropertyList* value = domain_.objectForKey(key);
    return value && value->asString() && *value->asString() == text;
}

float ModelReading::growth(std::string_view key, float absent) const {
    const float v = number(key, absent);
    return v < 0 ? 1 + v / 2 : 1 + v;
}

std::optional<ModelColor> ModelReading::color(std::string_view key) const {
    static const std::map<std::string_view, std::string_view> fallbacks = {
        {"badgebgcol", "#00FF00"},        {"badgetxtcol", "#FFFFFF"},     {"badgebordercol", "#FF0000"},
        {"badgeglowcol", "#00FF00"},      {"closeboxbgcol", "#FFA500"},   {"closeboxtxtcol", "#FFFFFF"},
        {"closeboxbordercol", "#000000"}, {"closeboxglowcol", "#FF0000"}, {"newdotbgcol", "#FF0000"}};
    std::string text(fallbacks.at(key));
    if (const PropertyList* value = domain_.objectForKey(key))
        text = value->asString() ? *value->asString() : "";
    if (text == "none") return std::nullopt;
    if (text == "automatic") return automatic_[0];
    if (text == "automatic_dark") return automatic_[1];
    if (text == "automatic_bright") return automatic_[2];
    if (text == "transparent") return ModelColor{{0, 0, 0, 0}};
    return ModelColor{ModelColorFromText(text)};
}

CGColor ModelColorFromText(std::string_view text) {
    size_t i = 1;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n'))
        ++i;
    auto digit = [&](size_t at) {
        constexpr std::string_view digits = "0123456789abcdef0123456789ABCDEF";
        const size_t found = at < text.size() ? digits.find(text[at]) : std::string_view::npos;
        return found == std::string_view::npos ? -1 : int(found % 16);
    };
    if (i + 1 < text.size() && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X') &&
        digit(i + 2) >= 0)
        i += 2;
    uint64_t n = 0;
    for (; digit(i) >= 0; ++i)
        n = std::min<uint64_t>(n * 16 + uint64_t(digit(i)), uint64_t(1) << 40);
    if (n > 0xFFFFFFFF) n = 0xFFFFFFFF;
    return {CGFloat(n >> 16 & 255) / 255, CGFloat(n >> 8 & 255) / 255, CGFloat(n & 255) / 255, 1};
}

std::array<ModelColor, 3> ModelAutomaticColors(const CGImage& icon, int scale) {
    std::array<ModelColor, 3> result;
    std::array<std::array<uint64_t, 4>, 3> sums{}; // red, green, blue, count for each mode
    for (int y = 0; y + scale <= icon.height(); y += scale) {
        for (int x = 0; x + scale <= icon.width(); x += scale) {
            std::array<int, 3> pixel{};
            for (int channel = 0; channel < 3; ++channel) {
                int sum = 0;
                for (int j = 0; j < scale; ++j)
                    for (int i = 0; i < scale; ++i)
                        sum += int(icon.pixel(x + i, y + j) >> (16 - 8 * channel) & 255);
                pixel[size_t(channel)] = (sum + scale * scale / 2) / (scale * scale);
            }
            const bool bright = pixel[0] >= 211 && pixel[1] >= 211 && pixel[2] >= 211;
            const bool dark = pixel[0] <= 44 && pixel[1] <= 44 && pixel[2] <= 44;
            for (size_t mode = 0; mode < 3; ++mode) {
                if ((mode == 1 && bright) || (mode == 2 && dark)) continue;
                for (size_t channel = 0; channel < 3; ++channel)
                    sums[mode][channel] += uint64_t(pixel[channel]);
                ++sums[mode][3];
            }
        }
    }
    for (size_t mode = 0; mode < 3; ++mode) {
        auto average = [&](size_t channel) {
            const uint64_t count = sums[mode][3];
            return count ? CGFloat(sums[mode][channel] / count) / 255 : 0.0;
        };
        result[mode] = {{average(0), average(1), average(2), 1}, scale != 1};
    }
    return result;
}

} // namespace tallyforge::test
