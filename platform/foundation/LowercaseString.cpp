#include "foundation/LowercaseString.h"

#include "foundation/UTFText.h"

#include <clocale>
#include <cwctype>
#include <locale.h>

namespace tallyforge {

namespace {

constexpr char32_t kCapitalIWithDot = 0x130; // the one character whose lower case is two
constexpr char32_t kInvalid = 0xFFFFFFFF;

// The C library's own table of all of Unicode; the locale is part of the library and needs no files.
locale_t unicode() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

char32_t lowercase(char32_t c) {
    return unicode() ? static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), unicode())) : c;
}

} // namespace

std::string NSStringLowercaseString(std::string_view text) {
    std::string lower;
    lower.reserve(text.size());
    while (!text.empty()) {
        const char first = text.front();
        const char32_t c = TakeUTF8(text, kInvalid);
        if (c < 0x80)
            lower.push_back(static_cast<char>(c >= 'A' && c <= 'Z' ? c + 0x20 : c));
        else if (c == kInvalid)
            lower.push_back(first);
        else if (c == kCapitalIWithDot)
            lower += "i\u0307";
        else
            AppendUTF8(lower, lowercase(c));
    }
    return lower;
}

} // namespace tallyforge
