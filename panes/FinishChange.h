#pragma once

namespace tallyforge {

/// Ends a change of many settings: brings the domain to the file, then tells the preview and the home screen.
void FinishChange();

} // namespace tallyforge
