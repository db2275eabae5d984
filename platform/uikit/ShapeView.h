#pragma once

#include "coregraphics/CGPath.h"
#include "uikit/UIColor.h"
#include "uikit/UIView.h"

#include <memory>

namespace tallyforge {

/// A view that is a filled shape, and takes no touches.
std::shared_ptr<UIView> MakeFilledShape(const CGRect& frame, CGPath path, const UIColor& fill);
/// A view that is an open line with round ends, as wide as given, and takes no touches.
std::shared_ptr<UIView> MakeStrokedShape(const CGRect& frame, CGPath path, const UIColor& stroke,
                                         CGFloat width);

} // namespace tallyforge
