#include "uikit/UIGraphics.h"

#include "uikit/UIDevice.h"

#include <cmath>
#include <vector>

namespace tallyforge {

namespace {

std::vector<CGContextRef>& ContextStack() {
    static std::vector<CGContextRef> stack;
    return stack;
}

// Whole pixels that cover the length; 0 for what is no length (a context of 0 is none).
int PixelsForLength(CGFloat length) {
    if (!(length > 0) || length > 1e6) return 0;
    return static_cast<int>(std::ceil(length - 1e-6));
}

} // namespace

void UIGraphicsBeginImageContext(const CGSize& size) {
    UIGraphicsBeginImageContextWithOptions(size, false, 1);
}

void UIGraphicsBeginImageContextWithOptions(const CGSize& size, bool opaque, CGFloat scale) {
    if (scale == 0) scale = UIScreen::mainScreen().scale();
    ContextStack().push_back(CGContext::create(PixelsForLength(size.width * scale),
                                               PixelsForLength(size.height * scale), scale, opaque));
}

CGContextRef UIGraphicsGetCurrentContext() {
    return ContextStack().empty() ? nullptr : ContextStack().back();
}

UIImage UIGraphicsGetImageFromCurrentImageContext() {
    CGContextRef context = UIGraphicsGetCurrentContext();
    if (!context) return {};
    return UIImage::imageWithCGImage(context->makeImage(), context->scale(), UIImageOrientationUp);
}

void UIGraphicsEndImageContext() {
    if (!ContextStack().empty()) ContextStack().pop_back();
}

} // namespace tallyforge
