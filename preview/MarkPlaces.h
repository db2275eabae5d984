#pragma once

#include "coregraphics/CGGeometry.h"

#include <cstdint>
#include <optional>

namespace tallyforge {

/// How far the badge and the close box stand beyond the icon's left, right and top edge, in points.
inline constexpr CGFloat kMarkMargin = 9;

/// The columns and rows that a badge or close box can stand in, as frame origins in the icon.
struct MarkPlaces {
    CGFloat left, centre, right;
    CGFloat top, bottom, middle;

    /// The place of a position code, 0 to 8: top, bottom and middle row, each from left to right. Nothing for
    /// any other code, which leaves a mark where it is.
    std::optional<CGPoint> origin(int32_t code) const {
        if (code < 0 || code > 8) return std::nullopt;
        const CGFloat columns[] = {left, centre, right};
        const CGFloat rows[] = {top, bottom, middle};
        return CGPointMake(columns[code % 3], rows[code / 3]);
    }
};

} // namespace tallyforge
