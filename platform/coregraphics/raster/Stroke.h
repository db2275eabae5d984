#pragma once

#include "coregraphics/CGPath.h"

namespace tallyforge {

/// The outline, in pixels, of a line of the given width (user space) along the path: butt caps and miter
/// joins, or round ones. Empty when a number is not finite or the width is not positive.
CGPath StrokeOutline(const CGPath& path, const CGAffineTransform& toPixels, CGFloat width, bool round);

} // namespace tallyforge
