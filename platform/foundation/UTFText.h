#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace tallyforge {

inline bool IsHighSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
inline bool IsLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

inline bool IsASCII(const void* text, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(text);
    uint64_t high = 0;
    const auto take = [&high](const uint8_t* at, auto word) {
        std::memcpy(&word, at, sizeof word);
        high |= word;
    };
    // The last word laps over the one before it.
    if (size >= 8) {
        for (size_t at = 0; at + 8 < size; at += 8)
            take(bytes + at, uint64_t{});
        take(bytes + size - 8, uint64_t{});
    } else if (size >= 4) {
        take(bytes, uint32_t{});
        take(bytes + size - 4, uint32_t{});
    } else {
        for (size_t at = 0; at < size; ++at)
            high |= uint64_t{bytes[at]};
    }
    return (high & 0x8080808080808080u) == 0;
}

/// A surrogate takes its three-byte form.
inline void AppendUTF8(std::string& text, char32_t c) {
    const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

/// Takes one character off the text (never empty). A surrogate in its three-byte form is one; a byte that
/// begins nothing valid is `invalid` and goes alone.
inline char32_t TakeUTF8(std::string_view& text, char32_t invalid = 0xFFFD) {
    const auto byte = [&text](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byte(0);
    const size_t length = lead < 0x80   ? 1
                          : lead < 0xC2 ? 0
                          : lead < 0xE0 ? 2
                          : lead < 0xF0 ? 3
                          : lead < 0xF5 ? 4
                                        : 0;
    char32_t c = length <= 1 ? lead : lead & (0x7Fu >> length);
    bool valid = length > 0 && length <= text.size();
    for (size_t i = 1; valid && i < length; ++i) {
        valid = (byte(i) & 0xC0) == 0x80;
        c = (c << 6) | (byte(i) & 0x3Fu);
    }
    valid = valid && !(length == 3 && c < 0x800) && !(length == 4 && (c < 0x10000 || c > 0x10FFFF));
    text.remove_prefix(valid ? length : 1);
    return valid ? c : invalid;
}

/// UTF-16 of `units` 16-bit units as UTF-8; a lone surrogate is kept in its three-byte form.
inline std::string UTF8FromUTF16(const uint8_t* bytes, size_t units, bool bigEndian = true) {
    const auto unit = [&](size_t i) {
        const char32_t first = bytes[2 * i], second = bytes[2 * i + 1];
        return bigEndian ? first << 8 | second : second << 8 | first;
    };
    std::string text;
    text.reserve(units + units / 2);
    for (size_t i = 0; i < units; ++i) {
        char32_t c = unit(i);
        if (IsHighSurrogate(c) && i + 1 < units && IsLowSurrogate(unit(i + 1)))
            c = 0x10000 + ((c - 0xD800) << 10) + (unit(++i) - 0xDC00);
        AppendUTF8(text, c);
    }
    return text;
}

} // namespace tallyforge
