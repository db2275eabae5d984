#pragma once

namespace tallyforge {

/// Makes the bundle's screens and cells known by their names, as its lists name them.
void RegisterPanes();

} // namespace tallyforge
