#include "cli/GalleryTile.h"

#include "preview/PreviewCell.h"
#include "quartzcore/RenderServer.h"
#include "uikit/UIDevice.h"
#include "uikit/UIGraphics.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

namespace tallyforge {

namespace {

constexpr CGFloat kBezel = 5;        // around the screen
constexpr CGFloat kOuterRadius = 22; // of the device
constexpr CGFloat kNameHeight = 26;  // below the device
constexpr CGFloat kNameSize = 13;
constexpr CGFloat kIndicatorWidth = 40;
constexpr CGFloat kCellWidth = 320; // as the preview makes itself; its icon stands at width / 1.6
constexpr CGFloat kIconX = kCellWidth / 1.6;
constexpr CGFloat kIconY = 75;

const UIColor kDeviceColor = UIColor::colorWithRed(0.13, 0.14, 0.17, 1);
const UIColor kNameColor = UIColor::colorWithRed(0.18, 0.19, 0.23, 1);

CGSize DeviceSize() {
    return UIDevice::currentDevice().isPad() ? CGSize{176, 204} : CGSize{138, 176};
}

// A soft light from above, so that bright and dark marks both stand out from it.
UIImage Wallpaper(const CGSize& size, double scale) {
    constexpr int kSteps = 48;
    UIGraphicsBeginImageContextWithOptions(size, true, scale);
    const CGContextRef context = UIGraphicsGetCurrentContext();
    for (int step = 0; step < kSteps; ++step) {
        const CGFloat share = static_cast<CGFloat>(step) / (kSteps - 1);
        CGContextSetFillColorWithColor(
            context, UIColor::colorWithRed(0.93 - 0.16 * share, 0.95 - 0.12 * share, 0.98 - 0.06 * share, 1));
        CGContextFillRect(context, CGRectMake(0, size.height * step / kSteps, size.width, size.height));
    }
    UIImage picture = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    return picture;
}

std::shared_ptr<UIView> HomeScreen(const CGSize& size, double scale) {
    auto screen = std::make_shared<UIView>(CGRect{{0, 0}, size});
    screen->layer()->setCornerRadius(kOuterRadius - kBezel);
    screen->setClipsToBounds(true);
    auto wallpaper = std::make_shared<UIImageView>(Wallpaper(size, scale));
    wallpaper->setFrame({{0, 0}, size});
    screen->addSubview(wallpaper);

    auto cell = std::make_shared<PreviewCell>();
    cell->initWithSpecifier(std::make_shared<PSSpecifier>());
    cell->setBackgroundColor(std::nullopt);
    // The icon and its label together stand in the middle.
    constexpr CGFloat kLabelBelow = 8;
    cell->setFrame(
        CGRectMake(size.width / 2 - kIconX, size.height / 2 - kIconY - kLabelBelow, kCellWidth, 2 * kIconY));
    cell->layoutSubviews();
    screen->addSubview(cell);

    auto indicator = std::make_shared<UIView>(
        CGRectMake((size.width - kIndicatorWidth) / 2, size.height - 8, kIndicatorWidth, 3));
    indicator->setBackgroundColor(UIColor::colorWithWhite(0, 0.35));
    indicator->layer()->setCornerRadius(1.5);
    screen->addSubview(indicator);
    return screen;
}

std::shared_ptr<UILabel> NameLabel(const std::string& name, const CGRect& frame) {
    auto label = std::make_shared<UILabel>(frame);
    label->setFont(UIFont::semiboldSystemFontOfSize(kNameSize));
    label->setTextColor(kNameColor);
    label->setTextAlignment(NSTextAlignmentCenter);
    label->setText(name);
    return label;
}

} // namespace

CGSize GalleryTileSize() {
    const CGSize device = DeviceSize();
    return {device.width, device.height + kNameHeight};
}

std::shared_ptr<CGImage> DrawGalleryTile(const std::string& name, double scale) {
    const CGSize size = GalleryTileSize();
    const CGSize device = DeviceSize();
    auto tile = std::make_shared<UIView>(CGRect{{0, 0}, size});
    tile->setBackgroundColor(UIColor::colorWithRed((kGalleryPaper >> 16 & 0xFF) / 255.0,
                                                   (kGalleryPaper >> 8 & 0xFF) / 255.0,
                                                   (kGalleryPaper & 0xFF) / 255.0, 1));
    auto body = std::make_shared<UIView>(CGRect{{0, 0}, device});
    body->setBackgroundColor(kDeviceColor);
    body->layer()->setCornerRadius(kOuterRadius);
    tile->addSubview(body);
    auto screen = HomeScreen({device.width - 2 * kBezel, device.height - 2 * kBezel}, scale);
    screen->setFrame(CGRectInset({{0, 0}, device}, kBezel, kBezel));
    tile->addSubview(screen);
    tile->addSubview(NameLabel(name, CGRectMake(0, device.height + 6, size.width, kNameHeight - 6)));
    return RenderServer::render(*tile->layer(), 0, scale);
}

} // namespace tallyforge
