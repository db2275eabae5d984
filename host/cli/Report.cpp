#include "cli/Report.h"

#include "foundation/UTFText.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tallyforge {

namespace {

int outputFailure = 0; // errno of the first write that failed

// What a terminal obeys instead of showing it: control characters, ends of lines, and what turns the
// direction of all that follows. The marks of single words, which names do hold, turn nothing else.
bool IsObeyed(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029 ||
           (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// The text with something else in the place of each such character.
std::string WithoutObeyed(std::string_view text, std::string (*instead)(std::string_view character)) {
    std::string shown;
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t c = TakeUTF8(text, static_cast<unsigned char>(before[0])); // a strange byte is itself
        const std::string_view character = before.substr(0, before.size() - text.size());
        shown += IsObeyed(c) ? instead(character) : std::string(character);
    }
    return shown;
}

} // namespace

void Complain(std::string_view what, std::string_view why) {
    const std::string text = "tallyforge: " + std::string(what) + ": " + std::string(why);
    const std::string line = WithoutObeyed(text, [](std::string_view) { return std::string(" "); }) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

int CouldNot(std::string_view what, std::string_view why) {
    Complain(what, why);
    return kFailed;
}

int WrongWords(std::string_view what, std::string_view why) {
    Complain(what, why);
    return kBadWords;
}

std::string OneLineText(std::string_view text) {
    return WithoutObeyed(text, [](std::string_view character) {
        std::string codes;
        for (const char byte : character) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned char>(byte));
            codes += code.data();
        }
        return codes;
    });
}

void Print(std::string_view text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() && outputFailure == 0)
        outputFailure = errno;
}

int FinishOutput(std::string_view what) {
    errno = 0;
    if (std::fflush(stdout) != 0 && outputFailure == 0) outputFailure = errno;
    if (outputFailure == 0) return kDone;
    return CouldNot(what, std::string("standard output: ") + std::strerror(outputFailure));
}

} // namespace tallyforge
