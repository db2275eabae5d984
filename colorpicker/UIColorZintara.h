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

} // namespace UIColorZintara

} // namespace tallyforge
