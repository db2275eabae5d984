#pragma once

namespace tallyforge {

/// Called by what draws so that the checkers' settings, which stand beside it, are linked into the program.
void PrepareLeakChecker();

} // namespace tallyforge
