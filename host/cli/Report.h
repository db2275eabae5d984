#pragma once

#include <string>
#include <string_view>

namespace tallyforge {

/// Exit statuses.
enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,   ///< it could not be done
    kBadWords = 2, ///< the words or values are wrong; nothing was changed
};

/// Says "tallyforge: WHAT: WHY" on standard error, on one line whatever the texts hold.
void Complain(std::string_view what, std::string_view why);
/// The same, and returns the status for it.
int CouldNot(std::string_view what, std::string_view why);
int WrongWords(std::string_view what, std::string_view why);

/// The text for a line of output: control characters, and those that turn the direction of what follows, are
/// shown as "\x0A", not sent.
std::string OneLineText(std::string_view text);

/// Writes to standard output. The first failure is remembered for FinishOutput.
void Print(std::string_view text);

/// Ends standard output; kFailed, said, when something could not be written to it.
int FinishOutput(std::string_view what);

} // namespace tallyforge
