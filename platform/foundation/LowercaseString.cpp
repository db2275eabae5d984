#include "foundation/LowercaseString.h"

#include "foundation/UTFText.h"

#include <clocale>
#include <cwctype>
#include <locale.h>

namespace tallyforge {

namespace {

constexpr char32_t kCapitalIWithDot = 0x130;                   // the one character whose lower case is two
constexpr char32_t kCapitalSigma = 0x3A3, kFinalSigma = 0x3C2; // at a word's end it has a form of its own
constexpr char32_t kInvalid = 0xFFFFFFFF;

// The C library's own table of all of Unicode; the locale is part of the library and needs no files.
locale_t unicode() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

bool hasCase(char32_t c) {
    return unicode() && (iswupper_l(static_cast<wint_t>(c), unicode()) != 0 ||
                         iswlower_l(static_cast<wint_t>(c), unicode()) != 0);
}

// What may stand within a word without being a letter of it.
bool isIgnorable(char32_t c) {
    return c == '\'' || c == '.' || c == ':' || c == 0xAD || c == 0xB7 || c == 0x2019 ||
           (c >= 0x300 && c <= 0x36F);
}

// Whether the rest of the text goes on with a letter.
bool wordGoesOn(std::string_view rest) {
    while (!rest.empty()) {
        const char32_t c = TakeUTF8(rest, kInvalid);
        if (!isIgnorable(c)) return c != kInvalid && hasCase(c);
    }
    return false;
}

char32_t lowercase(char32_t c) {
    return unicode() ? static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), unicode())) : c;
}

} // namespace

std::string NSStringLowercaseString(std::string_view text) {
    std::string lower;
    lower.reserve(text.size());
    bool inWord = false;
    while (!text.empty()) {
        const char first = text.front();
        const char32_t c = TakeUTF8(text, kInvalid);
        if (c < 0x80)
            lower.push_back(static_cast<char>(c >= 'A' && c <= 'Z' ? c + 0x20 : c));
        else if (c == kInvalid)
            lower.push_back(first);
        else if (c == kCapitalIWithDot)
            lower += "i\u0307";
        else if (c == kCapitalSigma && inWord && !wordGoesOn(text))
            AppendUTF8(lower, kFinalSigma);
        else
            AppendUTF8(lower, lowercase(c));
        if (!isIgnorable(c)) inWord = c != kInvalid && hasCase(c);
    }
    return lower;
}

} // namespace tallyforge
