#pragma once

class QIcon;

namespace tallyforge {

/// The program's icon: an app with a badge at its corner.
QIcon WindowIcon();

} // namespace tallyforge
