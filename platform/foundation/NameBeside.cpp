#include "foundation/NameBeside.h"

#include <climits>
#include <cstdint>

namespace tallyforge {

namespace {

uint64_t FNV1a(std::string_view text) {
    uint64_t hash = 0xCBF29CE484222325u;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    return hash;
}

} // namespace

std::string NameBeside(std::string_view prefix, std::string_view name, std::string_view suffix) {
    std::string middle(name);
    if (prefix.size() + name.size() + suffix.size() > NAME_MAX) {
        constexpr std::string_view digits = "0123456789abcdef";
        const uint64_t value = FNV1a(name);
        std::string hash = "-";
        for (int shift = 60; shift >= 0; shift -= 4)
            hash += digits[value >> shift & 15];
        size_t kept = NAME_MAX - prefix.size() - suffix.size() - hash.size();
        while (kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0) == 0x80)
            --kept; // not in the middle of a character
        middle = std::string(name.substr(0, kept)) + hash;
    }
    return std::string(prefix) + middle + std::string(suffix);
}

} // namespace tallyforge
