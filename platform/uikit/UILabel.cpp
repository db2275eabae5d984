#include "uikit/UILabel.h"

namespace tallyforge {

UILabel::UILabel(const CGRect& frame) : UIView(frame, std::make_shared<CATextLayer>()) {
    setFont(font_);
    setTextColor(UIColor::blackColor());
}

void UILabel::setFont(const UIFont& font) {
    font_ = font;
    textLayer().setFont(font.face());
}

UIColor UILabel::textColor() const {
    const CGColor& color = textLayer().foregroundColor();
    return UIColor::colorWithRed(color.red, color.green, color.blue, color.alpha);
}

void UILabel::setTextAlignment(NSTextAlignment alignment) {
    alignment_ = alignment;
    switch (alignment) {
    case NSTextAlignment::left:
        textLayer().setAlignmentMode(CATextAlignment::left);
        break;
    case NSTextAlignment::center:
        textLayer().setAlignmentMode(CATextAlignment::center);
        break;
    case NSTextAlignment::right:
        textLayer().setAlignmentMode(CATextAlignment::right);
        break;
    }
}

} // namespace tallyforge
