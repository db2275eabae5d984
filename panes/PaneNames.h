#pragma once

#include <string>
#include <string_view>

namespace tallyforge {

/// What the screens are called on the command line: the stems of their lists, in the order of the way through
/// them.
inline constexpr std::string_view kPaneNames[] = {
    "tallyforge",   "badge",    "badgecolor",    "badgelabel",    "badgeborder",    "badgeanim",
    "badgeglow",    "closebox", "closeboxcolor", "closeboxlabel", "closeboxborder", "closeboxanim",
    "closeboxglow", "newdot",   "newdotcolor",   "newdotanim",    "themes",         "conditionalthemes"};

/// All of them in one line.
inline std::string PaneNamesInOneLine() {
    std::string line;
    for (std::string_view name : kPaneNames)
        line.append(line.empty() ? "" : ", ").append(name);
    return line;
}

} // namespace tallyforge
