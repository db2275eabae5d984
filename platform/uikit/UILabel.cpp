#include "uikit/UILabel.h"

namespace tallyforge {

namespace {

constexpr CGFloat kDisabled = 0.7; // white level of the text

} // namespace

UILabel::UILabel(const CGRect& frame) : UIView(frame, std::make_shared<CATextLayer>()) {
    setFont(font_);
    setTextColor(UIColor::blackColor());
}

void UILabel::setFont(const UIFont& font) {
    font_ = font;
    textLayer().setFont(font.face());
}

void UILabel::setTextColor(const UIColor& color) {
    textColor_ = color;
    textLayer().setForegroundColor(enabled_ ? color.cgColor()
                                            : UIColor::colorWithWhite(kDisabled, 1).cgColor());
}

void UILabel::setEnabled(bool enabled) {
    enabled_ = enabled;
    setTextColor(textColor_);
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
