// The system's own mark artwork. It is tinted when used: its alpha is its form, its greys only show through.
#pragma once

#include <QImage>

namespace tallyforge {

inline constexpr double plateSide = 24;
inline constexpr double crossSide = 12;
inline constexpr double dotSide = 8;

/// The round plate of badge and close box.
QImage drawPlate(int scale);
/// The close box's cross.
QImage drawCross(int scale);
/// The dot of newly installed apps.
QImage drawDot(int scale);
/// The plate in the outline of an app icon.
QImage drawIconPlate(int scale);

} // namespace tallyforge
