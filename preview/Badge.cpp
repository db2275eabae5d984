// The notification badge: PreviewCell::reloadBadge and what only it needs.

#include "preview/MarkPlaces.h"
#include "preview/PreviewCell.h"
#include "preview/RomanNumerals.h"
#include "preview/animation/MarkAnimation.h"
#include "preview/imaging/MarkImages.h"
#include "settings/ColorValues.h"
#include "settings/Settings.h"

#include <numbers>

namespace tallyforge {

namespace {

CGFloat TextHeightDivisor() {
    switch (SettingCode("badgeshape", kShapeSquare)) {
    case kShapeTriangle:
        return 1.6;
    case kShapeStar:
        return 2.2;
    case kShapeTriangleDown:
        return 3;
    default:
        return 2;
    }
}

std::shared_ptr<UIImageView> MakeBackground(const UIImage& icon) {
    UIColor fill = SettingColor("badgebgcol", icon).value_or(UIColor::redColor());
    int32_t shape = SettingCode("badgeshape", kShapeSquare);
    UIImage base = shape == kShapeIcon ? ResizeImage(icon, 24, 24) : SystemMarkImage(kPlateArtwork);
    auto border = SettingColor("badgebordercol", icon);
    auto background = std::make_shared<UIImageView>(
        BorderedShapeImage(shape, base, fill, border, SettingNumber("badgebordersize", 1.5F)));
    background->setAlpha(SettingNumber("badgealpha", 100) / 100);
    return background;
}

std::shared_ptr<UILabel> MakeCount(CGFloat cellWidth, const CGSize& plate, const UIImage& icon) {
    float t = GrowthFactor(SettingNumber("badgetxtsize", 0));
    auto label = std::make_shared<UILabel>(CGRectMake(cellWidth / 1.7, 12, plate.width, plate.height));
    label->setCenter(CGPointMake(plate.width / 2, plate.height / TextHeightDivisor()));
    label->setTextAlignment(NSTextAlignmentCenter);
    label->setTextColor(SettingColor("badgetxtcol", icon).value_or(UIColor::whiteColor()));
    label->setBackgroundColor(UIColor::clearColor());
    label->setFont(UIFont::systemFontOfSize(15 * t));
    label->setText("6");
    label->setAlpha(SettingNumber("badgealpha", 100) / 100);

    label->setFrame(CGRectOffset(label->frame(), SettingNumber("badgetxtoffsetX", 0),
                                 SettingNumber("badgetxtoffsetY", 0)));
    label->setContentMode(UIViewContentModeScaleAspectFit);
    CGRect f = label->frame();
    CGFloat growth = t - 1;
    label->setFrame(CGRectMake(f.origin.x - f.size.width * growth / 2,
                               f.origin.y - f.size.height * growth / 2, f.size.width * t, f.size.height * t));

    if (SettingFlag("convertbadgeroman"))
        label->setText(RomanNumeral(static_cast<uint32_t>(NSStringIntValue(label->text()))));
    return label;
}

// The bottom row is centred on the icon's edge, where the others stand out; an unknown code stays where it
// is.
void Place(UIView& badge, const UIView& iconView) {
    CGSize icon = iconView.bounds().size;
    CGSize size = badge.frame().size;
    CGFloat x = SettingNumber("badgeoffsetX", 0);
    CGFloat y = SettingNumber("badgeoffsetY", 0);
    CGFloat cx = (icon.width - size.width) / 2;
    CGFloat cy = (icon.height - size.height) / 2;

    const MarkPlaces places{
        x - kMarkMargin, x + cx, x + 2 * cx + kMarkMargin, y - kMarkMargin, y + icon.height - size.height / 2,
        y + cy};
    if (auto origin = places.origin(SettingCode("badgepos", 2))) badge.setFrame({*origin, size});
}

} // namespace

void PreviewCell::reloadBadge() {
    if (auto previous = badgeView()) previous->removeFromSuperview();
    const UIImage& icon = iconView_->image();
    auto background = MakeBackground(icon);
    auto count = MakeCount(size_.width, background->frame().size, icon);

    auto container = std::make_shared<UIView>(background->frame());
    badgeView_ = container;
    iconView_->addSubview(container);
    Place(*container, *iconView_);
    const PropertyList* fill = SettingsSnapshot().objectForKey("badgebgcol");
    bool transparent = fill && fill->asString() && *fill->asString() == kColorTransparent;
    if (!transparent) container->addSubview(background);
    container->addSubview(count);

    float scale = GrowthFactor(SettingNumber("badgesize", 0));
    CGFloat radians = SettingNumber("badgerotation", 0) * std::numbers::pi / 180;
    CGAffineTransform turned = CGAffineTransformRotate(CGAffineTransformMakeScale(scale, scale), radians);
    background->setTransform(turned);
    count->setTransform(turned);

    float alpha = SettingNumber("badgealpha", 100) / 100;
    ApplyMarkAnimation(container->layer(), SettingTruncated("badgeanimtype", 0),
                       SettingNumber("badgeanimspd", 1), scale, alpha, MarkKind::badge);
    MakeGlowView(*container, SettingColor("badgeglowcol", icon), SettingCode("badgeshape", kShapeSquare),
                 SettingNumber("badgeglowalpha", 0) / 100, alpha, scale);
}

} // namespace tallyforge
