#include "colorpicker/UIColorZintara.h"

#include "settings/ColorValues.h"
#include "uikit/UIGraphics.h"

namespace tallyforge::UIColorZintara {

UIColor colorFromHexString(std::string_view text) {
    return ColorFromHexString(text);
}

UIImage thumbnailWithSize(const UIColor& color, const CGSize& size) {
    UIGraphicsBeginImageContext(size);
    if (CGContextRef context = UIGraphicsGetCurrentContext()) {
        CGContextSetFillColorWithColor(context, color);
        CGContextFillRect(context, {CGPointZero, size});
    }
    UIImage image = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    return image;
}

} // namespace tallyforge::UIColorZintara
