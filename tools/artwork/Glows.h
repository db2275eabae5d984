// The soft lights that lie behind a mark.
#pragma once

#include <QImage>
#include <QPainterPath>

namespace tallyforge {

/// How far the glow's picture reaches beyond the mark on each side, and its whole side.
inline constexpr double glowMargin = 10.5;
inline constexpr double glowSide = 45;

/// White light of the mark outline's form: full inside it, fading to nothing within the margin.
QImage drawGlow(const QPainterPath& outline, int scale);

} // namespace tallyforge
