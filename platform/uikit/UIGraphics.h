#pragma once

#include "coregraphics/CGContext.h"
#include "uikit/UIColor.h"
#include "uikit/UIImage.h"

namespace tallyforge {

/// Begins an offscreen picture of that size in points at scale 1, and makes it the current context.
void UIGraphicsBeginImageContext(const CGSize& size);
/// The same at a scale; 0 means the screen's.
void UIGraphicsBeginImageContextWithOptions(const CGSize& size, bool opaque, CGFloat scale);
/// The innermost one begun and not ended; nullptr when there is none or it could not be made (a side that is
/// not positive, or too large).
CGContextRef UIGraphicsGetCurrentContext();
/// What has been drawn into the current context; no image without one.
UIImage UIGraphicsGetImageFromCurrentImageContext();
void UIGraphicsEndImageContext();

inline void CGContextSetFillColorWithColor(const CGContextRef& context, const UIColor& color) {
    CGContextSetFillColor(context, color.cgColor());
}

} // namespace tallyforge
