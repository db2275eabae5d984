#include "uikit/UIImageView.h"

namespace tallyforge {

UIImageView::UIImageView(const UIImage& image) : UIView({{0, 0}, image.size()}) {
    setImage(image);
}

void UIImageView::setImage(const UIImage& image) {
    image_ = image;
    layer()->setContents(image.uprightBitmap());
    layer()->setContentsScale(image.scale());
}

void UIImageView::setContentMode(UIViewContentMode mode) {
    UIView::setContentMode(mode);
    switch (mode) {
    case UIViewContentMode::scaleToFill:
        layer()->setContentsGravity(CAGravity::resize);
        break;
    case UIViewContentMode::scaleAspectFit:
        layer()->setContentsGravity(CAGravity::resizeAspect);
        break;
    case UIViewContentMode::scaleAspectFill:
        layer()->setContentsGravity(CAGravity::resizeAspectFill);
        break;
    case UIViewContentMode::center:
        layer()->setContentsGravity(CAGravity::center);
        break;
    }
}

} // namespace tallyforge
