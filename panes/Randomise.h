#pragma once

#include "settings/SettingsKeys.h"

namespace tallyforge {

class MarkPaneController;

/// How a setting is written: through the pane's row, which shows it at once, or straight into the domain,
/// because its row is on another screen.
enum class Via { row, direct };

/// Draws a value for every setting of the mark, in a fixed order, and writes it; then announces the change
/// once. Colours come out as plain colour strings only.
void RandomiseMark(MarkKind mark, MarkPaneController& pane);

} // namespace tallyforge
