#pragma once

namespace tallyforge {

/// Makes the screen that chooses apps, and the cell of the rows that lead to it, known by their names.
void RegisterAppSelect();

} // namespace tallyforge
