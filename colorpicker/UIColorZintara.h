#pragma once

#include "coregraphics/CGGeometry.h"
#include "uikit/UIColor.h"
#include "uikit/UIImage.h"

#include <string_view>

namespace tallyforge {

/// What this bundle adds to the platform's colours.
namespace UIColorZintara {

/// As ColorFromHexString.
UIColor colorFromHexString(std::string_view text);

/// A picture of that size in points, at scale 1, filled with the colour; no image where a side is not
/// positive or too large.
UIImage thumbnailWithSize(const UIColor& color, const CGSize& size);

/// Whether a thumbnail of that colour could not be told from the white around it.
inline bool needsBorder(std::string_view color) {
    return color == "#FFFFFF";
}
/// What such a border is drawn with.
inline UIColor borderColor() {
    return UIColor::colorWithWhite(0.8, 1);
}

} // namespace UIColorZintara

} // namespace tallyforge
