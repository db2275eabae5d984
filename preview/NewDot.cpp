// The dot of a newly installed app: PreviewCell::reloadNewDot and what only it needs.

#include "preview/PreviewCell.h"
#include "preview/animation/MarkAnimation.h"
#include "preview/imaging/MarkImages.h"
#include "settings/ColorValues.h"
#include "settings/Settings.h"

namespace tallyforge {

namespace {

constexpr float kDotTint = 0.6F;

UIImage MakeDotImage(const UIImage& icon) {
    UIImage artwork = SystemMarkImage(kNewDotArtwork);
    UIColor color = SettingColor("newdotbgcol", icon).value_or(UIColor::colorWithRed(0, 105 / 255.0, 1, 1));
    int32_t shape = SettingCode("newdotshape", kShapeSquare);
    if (shape == kShapeSquare || shape == kShapeTriangle || shape == kShapeHexagon)
        return ShapeImage(artwork, color, shape, kDotTint);
    return TintImage(artwork, color, kDotTint);
}

// In the label's coordinates. Width and height change places, which only a dot that is not square shows. An
// unknown code stays where it is.
void Place(UIView& dot, const CGSize& label, CGFloat iconHeight) {
    CGSize size = dot.frame().size;
    CGFloat x = SettingNumber("newdotoffsetX", 0);
    CGFloat y = SettingNumber("newdotoffsetY", 0);
    CGPoint origin;
    switch (SettingCode("newdotpos", 1)) {
    case 0: // left of the name
        origin = CGPointMake(x - 13, y + label.height / 2 - size.height / 2);
        break;
    case 1: // right of it
        origin = CGPointMake(x + label.width + 5, y + label.height / 2 - size.height / 2);
        break;
    case 2: // above the icon
        origin = CGPointMake(x + label.width / 2 - size.width / 2, y - 2 - iconHeight);
        break;
    case 3: // below the name
        origin = CGPointMake(x + label.width / 2 - size.width / 2, y + label.height / 1.55);
        break;
    default:
        return;
    }
    dot.setFrame({origin, {size.height, size.width}});
}

} // namespace

void PreviewCell::reloadNewDot() {
    if (auto previous = newDotView()) previous->removeFromSuperview();
    auto dot = std::make_shared<UIImageView>(MakeDotImage(iconView_->image()));
    newDotView_ = dot;
    dot->setCenter(CGPointMake(initialMarkCentreX(), 20));
    iconLabel_->addSubview(dot);

    // From here on the position is the dot's top-left corner, and the dot grows from there.
    dot->layer()->setAnchorPoint(CGPointZero);
    Place(*dot, iconLabel_->frame().size, iconView_->frame().size.height);
    float scale = GrowthFactor(SettingNumber("newdotsize", 0.1F));
    dot->setTransform(CGAffineTransformMakeScale(scale, scale));

    float alpha = SettingNumber("newdotalpha", 100) / 100;
    dot->setAlpha(alpha);
    ApplyMarkAnimation(dot->layer(), SettingTruncated("newdotanimtype", 0), SettingNumber("newdotanimspd", 1),
                       scale, alpha, MarkKind::newDot);
}

} // namespace tallyforge
