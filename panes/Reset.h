#pragma once

#include "settings/SettingsKeys.h"

#include <string_view>
#include <vector>

namespace tallyforge {

class MarkPaneController;

/// Puts every setting of the mark back to a fixed value, in a fixed order; then announces the change once.
/// The values are the system's own look; they are not the fallbacks.
void ResetMark(MarkKind mark, MarkPaneController& pane);

/// The settings that are randomised and reset through a row of the pane which its list lacks: they would stay
/// as they are. None for a list that is whole.
std::vector<std::string_view> SettingsWithoutRow(MarkKind mark, MarkPaneController& pane);

} // namespace tallyforge
