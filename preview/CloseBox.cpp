// The edit-mode close box: PreviewCell::reloadCloseBox and what only it needs.

#include "preview/MarkPlaces.h"
#include "preview/PreviewCell.h"
#include "preview/animation/MarkAnimation.h"
#include "preview/imaging/MarkImages.h"
#include "settings/ColorValues.h"
#include "settings/Settings.h"

#include <numbers>

namespace tallyforge {

namespace {

constexpr float kSystemTint = 0.65F; // of the system-style plate and its border
// The base of the icon shape; unlike other artwork of the bundle it is looked for in this one place.

struct Plates {
    std::shared_ptr<UIImageView> back;
    std::shared_ptr<UIImageView> background;
};

float Alpha() {
    return SettingNumber("closeboxalpha", 85) / 100;
}

// A grey plate under a tinted one, with a round border that the layer draws.
Plates MakeSystemPlates(const UIColor& fill, const std::optional<UIColor>& border) {
    UIImage artwork = SystemMarkImage(kPlateArtwork);
    UIColor systemGrey = UIColor::colorWithRed(207 / 255.0, 203 / 255.0, 219 / 255.0, 1);
    Plates plates;
    plates.back = std::make_shared<UIImageView>(TintImage(artwork, systemGrey, Alpha()));
    plates.background = std::make_shared<UIImageView>(TintImage(artwork, fill, kSystemTint));
    CALayer& layer = *plates.background->layer();
    layer.setBorderColor(border ? std::optional(border->colorWithAlphaComponent(kSystemTint).cgColor())
                                : std::nullopt);
    layer.setBorderWidth(SettingNumber("closeboxbordersize", 0));
    layer.setCornerRadius(layer.bounds().size.width / 2);
    return plates;
}

// The back plate has no image; the border is part of the plate's own.
Plates MakeShapedPlates(int32_t shape, const UIColor& fill, const std::optional<UIColor>& border) {
    UIImage base = shape == kShapeIcon ? BundleImage("icon_shape.png") : SystemMarkImage(kPlateArtwork);
    Plates plates;
    plates.back = std::make_shared<UIImageView>(UIImage());
    plates.background = std::make_shared<UIImageView>(
        BorderedShapeImage(shape, base, fill, border, SettingNumber("closeboxbordersize", 0)));
    return plates;
}

std::shared_ptr<UIImageView> MakeCross(const CGSize& plate, const UIImage& icon) {
    UIColor color = SettingColor("closeboxtxtcol", icon).value_or(UIColor::grayColor());
    auto cross = std::make_shared<UIImageView>(TintImage(SystemMarkImage(kCrossArtwork), color, 1));
    cross->setCenter(CGPointMake(plate.width / 2, plate.height / 2));
    cross->setAlpha(Alpha());

    cross->setFrame(CGRectOffset(cross->frame(), SettingNumber("closeboxtxtoffsetX", 0),
                                 SettingNumber("closeboxtxtoffsetY", 0)));
    CGFloat k = GrowthFactor(SettingNumber("closeboxtxtsize", 0));
    cross->setContentMode(UIViewContentModeScaleAspectFit);
    CGRect f = cross->frame();
    cross->setFrame(CGRectMake(f.origin.x - f.size.width * (k - 1) * 0.5,
                               f.origin.y - f.size.height * (k - 1) * 0.5, f.size.width * k,
                               f.size.height * k));
    return cross;
}

} // namespace

float PreviewCell::CloseBoxRotation() {
    return static_cast<float>(double{SettingNumber("closeboxrotation", 180)} / 180 * std::numbers::pi);
}

void PreviewCell::reloadCloseBox() {
    if (auto previous = closeBoxView()) previous->removeFromSuperview();
    const UIImage& icon = iconView_->image();
    UIColor fill = SettingColor("closeboxbgcol", icon).value_or(UIColor::whiteColor());
    auto border = SettingColor("closeboxbordercol", icon);
    int32_t shape = SettingCode("closeboxshape", kShapeTriangle);

    Plates plates =
        shape == kShapeSystemBox ? MakeSystemPlates(fill, border) : MakeShapedPlates(shape, fill, border);
    plates.background->setAlpha(Alpha());
    auto cross = MakeCross(plates.background->frame().size, icon);

    auto container = std::make_shared<UIView>(plates.background->frame());
    closeBoxView_ = container;
    container->setCenter(CGPointMake(initialMarkCentreX(), 35));
    iconView_->addSubview(container);
    placeCloseBox(*container);
    if (SettingCode(kPresetCloseBoxKey, 0) != kPresetCrossOnly) {
        container->addSubview(plates.back);
        container->addSubview(plates.background);
    }
    container->addSubview(cross);

    float scale = GrowthFactor(SettingNumber("closeboxsize", 0));
    container->setTransform(CGAffineTransformMakeScale(scale, scale));
    container->setTransform(CGAffineTransformRotate(container->transform(), CloseBoxRotation()));

    ApplyMarkAnimation(container->layer(), SettingTruncated("closeboxanimtype", 0),
                       SettingNumber("closeboxanimspd", 1), scale,
                       static_cast<float>(plates.background->alpha()), MarkKind::closeBox);
    MakeGlowView(*container, SettingColor("closeboxglowcol", icon), shape,
                 SettingNumber("closeboxglowalpha", 100) / 100, Alpha(), 1);
}

// Beyond the icon's edge at the left, right and top, but centred on its bottom edge. The middle left place
// takes its height from the badge. An unknown code stays where it is.
void PreviewCell::placeCloseBox(UIView& box) const {
    CGSize icon = iconView_->bounds().size;
    CGSize size = box.bounds().size;
    CGFloat x = SettingNumber("closeboxoffsetX", 0);
    CGFloat y = SettingNumber("closeboxoffsetY", 0);
    auto cx = static_cast<float>(icon.width / 2 - size.width / 2);
    auto cy = static_cast<float>(icon.height / 2 - size.height / 2);
    float right = 2 * cx + static_cast<float>(kMarkMargin);

    const MarkPlaces places{
        x - kMarkMargin, x + cx, x + right, y - kMarkMargin, y + icon.height - size.height / 2, y + cy};
    int32_t code = SettingCode("closeboxpos", 1);
    auto origin = places.origin(code);
    if (!origin) return;
    if (code == 6) {
        auto badge = badgeView();
        size.height = badge ? badge->bounds().size.height : 0;
    }
    box.setFrame({*origin, size});
}

} // namespace tallyforge
