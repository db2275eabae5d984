#include "settings/ColorValues.h"

#include "coregraphics/CGContext.h"
#include "foundation/Random.h"
#include "foundation/UTFText.h"
#include "settings/Settings.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tallyforge {

namespace {

bool IsWhiteSpaceOrNewline(char32_t c) {
    return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
           c == 0x3000;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// An unsigned 32-bit hexadecimal number: white space, an optional prefix, digits; held at all ones.
uint32_t ScanHexInt(std::string_view text) {
    for (std::string_view rest = text; !rest.empty(); text = rest) {
        if (!IsWhiteSpaceOrNewline(TakeUTF8(rest))) break;
    }
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    uint64_t number = 0;
    for (char c : text) {
        int digit = HexDigit(c);
        if (digit < 0) break;
        number = number * 16 + static_cast<uint64_t>(digit);
        if (number > UINT32_MAX) return UINT32_MAX;
    }
    return static_cast<uint32_t>(number);
}

UIColor OpaqueColor(uint32_t red, uint32_t green, uint32_t blue) {
    return UIColor::colorWithRed(red / 255.0, green / 255.0, blue / 255.0, 1);
}

std::optional<AutomaticColorMode> AutomaticMode(std::string_view word) {
    if (word == kColorAutomatic) return AutomaticColorMode::all;
    if (word == kColorAutomaticDark) return AutomaticColorMode::ignoreBright;
    if (word == kColorAutomaticBright) return AutomaticColorMode::ignoreDark;
    return std::nullopt;
}

struct PixelSums {
    uint64_t red = 0;
    uint64_t green = 0;
    uint64_t blue = 0;
    uint64_t count = 0;
};

// The inner sums fit 32 bits for any row (4096 pixels of 255), so that the loop can run on wide vectors.
template <class Skip>
[[gnu::always_inline]] inline PixelSums SumPixelsUnless(const CGImage& bitmap, Skip skip) {
    PixelSums sums;
    for (int y = 0; y < bitmap.height(); ++y) {
        const uint32_t* row = bitmap.row(y);
        uint32_t red = 0;
        uint32_t green = 0;
        uint32_t blue = 0;
        uint32_t count = 0;
        for (int x = 0; x < bitmap.width(); ++x) {
            uint32_t r = (row[x] >> 16) & 255;
            uint32_t g = (row[x] >> 8) & 255;
            uint32_t b = row[x] & 255;
            uint32_t taken = skip(r, g, b) ? 0 : 1;
            red += r * taken;
            green += g * taken;
            blue += b * taken;
            count += taken;
        }
        sums.red += red;
        sums.green += green;
        sums.blue += blue;
        sums.count += count;
    }
    return sums;
}

PixelSums SumPixels(const CGImage& bitmap, AutomaticColorMode mode) {
    switch (mode) {
    case AutomaticColorMode::ignoreBright:
        return SumPixelsUnless(bitmap, [](uint32_t r, uint32_t g, uint32_t b) {
            return (r >= 211) & (g >= 211) & (b >= 211); // without branches
        });
    case AutomaticColorMode::ignoreDark:
        return SumPixelsUnless(
            bitmap, [](uint32_t r, uint32_t g, uint32_t b) { return (r <= 44) & (g <= 44) & (b <= 44); });
    case AutomaticColorMode::all:
        break;
    }
    return SumPixelsUnless(bitmap, [](uint32_t, uint32_t, uint32_t) { return false; });
}

} // namespace

std::optional<UIColor> SettingColor(std::string_view key, const UIImage& iconImage) {
    const PropertyList* value = SettingsSnapshot().objectForKey(key);
    if (!value) value = SettingsDefaults().objectForKey(key);
    const std::string* text = value ? value->asString() : nullptr;
    if (!text) // nothing that could be read as a colour
        return UIColor::blackColor();

    if (*text == kColorNone) return std::nullopt;
    if (iconImage) {
        if (auto mode = AutomaticMode(*text)) return AutomaticColorFromImage(iconImage, *mode);
    }
    if (*text == kColorTransparent) return UIColor::clearColor();
    return ColorFromHexString(*text);
}

UIColor ColorFromHexString(std::string_view text) {
    if (text.empty()) return UIColor::blackColor();
    // A character beyond the basic plane is two units on the device; its second half is no digit.
    if (TakeUTF8(text) > 0xFFFF) return UIColor::blackColor();
    uint32_t n = ScanHexInt(text);
    return OpaqueColor((n >> 16) & 255, (n >> 8) & 255, n & 255);
}

std::string HexStringFromColor(double red, double green, double blue) {
    auto channel = [](double value) {
        return value > 0 ? static_cast<unsigned>(std::min(value, 255.0)) : 0U;
    };
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02X%02X%02X", channel(red) & 255U, channel(green) & 255U,
                  channel(blue) & 255U);
    return text.data();
}

std::string RandomColorString() {
    constexpr std::string_view kAlphabet = "ABCDEF0123456789";
    std::string text = "#";
    for (int i = 0; i < 6; ++i)
        text += kAlphabet[arc4random_uniform(static_cast<uint32_t>(kAlphabet.size()))];
    return text;
}

UIColor AutomaticColorFromImage(const UIImage& image, AutomaticColorMode mode) {
    CGSize size = image.size();
    auto width = static_cast<size_t>(size.width);
    auto height = static_cast<size_t>(size.height);
    CGContextRef context = CGBitmapContextCreate(width, height);
    if (!context) return UIColor::blackColor();
    CGContextDrawImage(context, CGRectMake(0, 0, static_cast<CGFloat>(width), static_cast<CGFloat>(height)),
                       image.uprightBitmap());

    PixelSums sums = SumPixels(context->bitmap(), mode);
    if (sums.count == 0) return UIColor::blackColor();
    return OpaqueColor(static_cast<uint32_t>(sums.red / sums.count),
                       static_cast<uint32_t>(sums.green / sums.count),
                       static_cast<uint32_t>(sums.blue / sums.count));
}

bool IsColorString(std::string_view text) {
    if (text == kColorNone || text == kColorTransparent || AutomaticMode(text)) return true;
    return text.size() == 7 && text[0] == '#' &&
           std::all_of(text.begin() + 1, text.end(), [](char c) { return HexDigit(c) >= 0; });
}

} // namespace tallyforge
