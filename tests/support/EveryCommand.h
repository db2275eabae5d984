#pragma once

#include "support/Program.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace tallyforge::test {

using Words = std::vector<std::string>;

/// Every command in each of its forms, in an order in which all of them can be done on the stock device,
/// again and again. What they read and write on this machine lies in the folder. `watch` alone needs a bus.
inline std::vector<Words> EveryCommand(const std::filesystem::path& folder) {
    const std::string script = (folder / "script").string(), trace = (folder / "trace").string();
    const std::string picture = (folder / "out.png").string(), moving = (folder / "out.webp").string();
    const std::string theme = (folder / "out.tft").string(), gallery = (folder / "themes.png").string();
    std::ofstream(script) << "open badge\ntap \"Reset\"\nopen themes\nopen conditionalthemes\n";
    return {{"list"},
            {"set", "badgesize", "1"},
            {"get", "badgesize"},
            {"unset", "badgesize"},
            {"colors"},
            {"randomize", "badge"},
            {"reset", "closebox"},
            {"watch", "--timeout", "0.05"},
            {"apps"},
            {"render", picture},
            {"render", picture, "--pane", "tallyforge"},
            {"animate", moving, "--seconds", "0.1"},
            {"inspect"},
            {"inspect", "--pane", "badge"},
            {"theme", "restore"},
            {"theme", "save", "Mine"},
            {"theme", "export", "Mine", theme},
            {"theme", "delete", "Mine"},
            {"theme", "import", theme},
            {"theme", "list"},
            {"theme", "show", "Mine"},
            {"theme", "diff", "Mine", "caesar.tft"},
            {"theme", "gallery", gallery},
            {"theme", "load", "Mine"},
            {"tie", "set", "com.quillon.stock.cydia", "Mine"},
            {"tie", "list"},
            {"tie", "clear", "com.quillon.stock.cydia"},
            {"tie", "set", "com.quillon.stock.cydia", "none"},
            {"tie", "clear", "--all"},
            {"theme", "delete", "Mine"},
            {"drive", script, "--trace", trace}};
}

inline std::string Spoken(const Words& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

/// The commands below these words that the program's own help names: "list", "theme list", ...
inline std::set<std::string> CommandsOfHelp(const Words& words = {}) {
    Words asked = words;
    asked.insert(asked.begin(), TALLYFORGE_BIN "/tallyforge");
    asked.emplace_back("--help");
    std::istringstream help(RunProgram(asked).output);
    std::set<std::string> found;
    bool listed = false;
    for (std::string line; std::getline(help, line);) {
        if (line == "Subcommands:")
            listed = true;
        else if (line.empty())
            listed = false;
        else if (listed && line.starts_with("  ") && line[2] != ' ') {
            Words command = words;
            command.push_back(line.substr(2, line.find_first_of(", ", 2) - 2));
            const auto below = CommandsOfHelp(command);
            if (below.empty())
                found.insert(Spoken(command));
            else
                found.insert(below.begin(), below.end());
        }
    }
    return found;
}

} // namespace tallyforge::test
