#pragma once

#include "cli/Command.h"
#include "foundation/Result.h"
#include "themes/ThemeFiles.h"

namespace tallyforge {

/// The theme that people mean by a name: the one whose "themename" it is, else the one whose file is called
/// so. Refused when there is none, or when several bear the name.
Result<Theme> FindTheme(const std::string& name);

/// The theme that the command names, where `--file` says which of several it is.
Result<Theme> FindTheme(const Command& command);

/// The last part of the path.
std::string FileNameOf(const Theme& theme);

} // namespace tallyforge
