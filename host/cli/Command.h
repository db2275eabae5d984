#pragma once

#include "coregraphics/CGGeometry.h"
#include "settings/SettingsKeys.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tallyforge {

/// One command line, understood. The words of all commands are here; each command looks at its own.
struct Command {
    std::string name; ///< "list", "get", "theme list", ...; empty when no command was given

    std::optional<std::string> root;
    bool pad = false;
    bool json = false;

    std::vector<std::string> words; ///< KEY ..., or KEY VALUE ...
    std::string output;             ///< OUT.png, OUT.webp; FILE of this machine
    std::string script;             ///< of `drive`; empty means standard input
    std::optional<std::string> pane;
    std::optional<std::string> trace; ///< the file that effects are written to; "-" is standard output

    std::optional<CGSize> size; ///< points
    double scale = 2;           ///< pixels a point
    double time = 0;            ///< seconds
    double seconds = 4;
    double framesPerSecond = 30;

    std::string apps = "all";        ///< which of them: "all", "nonhidden", "system" or "user"
    std::string theme;               ///< NAME of a theme; the first of two
    std::string otherTheme;          ///< the second
    std::optional<std::string> file; ///< which of several themes of that name
    bool overwrite = false;
    std::string app; ///< a bundle identifier
    bool all = false;

    std::optional<MarkKind> mark;
    std::optional<uint64_t> seed;

    std::optional<uint64_t> count;
    std::optional<double> timeout; ///< seconds
};

/// What the words ask for: a command, or nothing more to do than to end with a status (help was shown, or the
/// words are wrong and it has been said why).
std::variant<Command, int> ParseCommandLine(int argc, const char* const* argv);

/// Whether the command is done by the program that draws.
bool CommandDraws(const Command& command);

} // namespace tallyforge
