// Any text as a colour: read by the bundle, and by the rule written down once more.

#include "FuzzDevice.h"

#include "colorpicker/UIColorZintara.h"
#include "settings/ColorValues.h"
#include "settings/Settings.h"

#include <cmath>

using namespace tallyforge;
using fuzz::Require;

namespace {

// The text as the device holds it, in units of 16 bits; a byte that begins no character is a strange one.
std::u16string Units(const std::string& text) {
    const auto continues = [&](size_t at) { return at < text.size() && (text[at] & 0xC0) == 0x80; };
    constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000}; // shorter forms are the valid ones
    std::u16string units;
    for (size_t at = 0; at < text.size();) {
        const auto lead = static_cast<unsigned char>(text[at++]);
        size_t more = lead < 0xC0 || lead > 0xF7 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        char32_t point = lead < 0x80 ? lead : lead & (0x3FU >> more);
        size_t taken = 0;
        for (; taken < more && continues(at + taken); ++taken)
            point = point << 6 | static_cast<char32_t>(text[at + taken] & 0x3F);
        const bool whole = taken == more && point >= kLeast[more] && point <= 0x10FFFF;
        if (lead >= 0x80 && (more == 0 || !whole)) {
            units += u'\uFFFD';
            continue;
        }
        at += more;
        if (point > 0xFFFF)
            units += u"\U0001F600"; // two halves, whichever they are
        else
            units += static_cast<char16_t>(point);
    }
    return units;
}

// One unit is passed over; then white space, "0x" and hexadecimal digits as a scanner reads them.
uint32_t Expected(const std::string& text) {
    const std::u16string units = Units(text);
    const std::u16string_view spaces = u"\t\n\v\f\r \x85\xA0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006"
                                       u"\u2007\u2008\u2009\u200A\u2028\u2029\u202F\u205F\u3000";
    size_t at = units.find_first_not_of(spaces, 1);
    if (at == std::u16string::npos) return 0;
    if (units[at] == u'0' && at + 1 < units.size() && (units[at + 1] == u'x' || units[at + 1] == u'X'))
        at += 2;
    std::string digits;
    for (; at < units.size() && units[at] < 0x80 && std::isxdigit(static_cast<int>(units[at])); ++at)
        digits += static_cast<char>(units[at]);
    digits.erase(0, std::min(digits.size(), digits.find_first_not_of('0')));
    if (digits.empty()) return 0;
    return digits.size() > 8 ? 0xFFFFFFFF : static_cast<uint32_t>(std::stoul(digits, nullptr, 16));
}

UIColor ColorOf(uint32_t number) {
    return UIColor::colorWithRed((number / 65536 % 256) / 255.0, (number / 256 % 256) / 255.0,
                                 (number % 256) / 255.0, 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::TheDevice();
    const std::string text(reinterpret_cast<const char*>(data), size);
    const UIColor color = ColorFromHexString(text);
    Require(color == ColorOf(Expected(text)), "a text is the colour that the rule gives");
    Require(UIColorZintara::colorFromHexString(text) == color, "the picker reads colours the same way");

    const uint32_t number = Expected(text);
    const std::string written = HexStringFromColor(number / 65536 % 256, number / 256 % 256, number % 256);
    Require(IsColorString(written) && ColorFromHexString(written) == color,
            "a colour is read as it was written");
    const bool word = text == "none" || text == "transparent" || text == "automatic" ||
                      text == "automatic_dark" || text == "automatic_bright";
    const bool six = size == 7 && text[0] == '#' &&
                     text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
    Require(IsColorString(text) == (word || six), "what people may write is a colour or a word");

    CFPreferencesForgetAll();
    CFPreferencesSetAppValue("badgebgcol", PropertyList::string(text), kSettingsDomain);
    LoadSettingsSnapshot();
    const auto drawn = SettingColor("badgebgcol");
    if (text == "none")
        Require(!drawn, "none is no colour");
    else
        Require(drawn && *drawn == (text == "transparent" ? UIColor::clearColor() : color),
                "a setting is drawn in its colour");
    return 0;
}
