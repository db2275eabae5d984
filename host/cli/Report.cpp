#include "cli/Report.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tallyforge {

namespace {

int outputFailure = 0; // errno of the first write that failed

} // namespace

void Complain(std::string_view what, std::string_view why) {
    std::string line = "tallyforge: " + std::string(what) + ": " + std::string(why);
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    }
    line += '\n';
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
    std::string line;
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            line += c;
            continue;
        }
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), "\\x%02X", byte);
        line += code.data();
    }
    return line;
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
