#pragma once

namespace tallyforge {

/// Makes the screens of themes known by their names.
void RegisterThemes();

} // namespace tallyforge
