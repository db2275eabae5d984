#pragma once

#include "cli/Command.h"
#include "foundation/Result.h"
#include "themes/ThemeFiles.h"

#include <string_view>

namespace tallyforge {

/// The theme that people mean by a name: the one whose "themename" it is, else the one whose file is called
/// so. Refused when there is none, or when several bear the name; then the reason ends with the advice. Where
/// there is none, the reason names the files that could not be read.
Result<Theme> FindTheme(const std::string& name, std::string_view advice = {});

/// The theme that the command names, where `--file` says which of several it is.
Result<Theme> FindTheme(const Command& command);

/// The user's themes, or why their folder cannot be listed, in words for people.
Result<ThemeListing> UsersThemes();

/// Says which files could not be read; the status that a listing without them ends with.
int ComplainOfUnread(const Command& command, const std::vector<UnreadFile>& unread);

/// The last part of the path.
std::string FileNameOf(const Theme& theme);

} // namespace tallyforge
