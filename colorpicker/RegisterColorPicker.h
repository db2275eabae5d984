#pragma once

namespace tallyforge {

/// Makes the colour picker's screen and its row known by name, so that rows can name them.
void RegisterColorPicker();

} // namespace tallyforge
