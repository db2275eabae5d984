#include "uikit/ControlDrawing.h"

#include "uikit/UIDevice.h"
#include "uikit/UIImageView.h"
#include "uikit/UIScrollView.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>

namespace tallyforge {

namespace {

constexpr CGFloat kShadowSize = 48; // points; the disc is in the middle

struct Shadow {
    CGFloat drop, blur, alpha; // points, points, share
};
constexpr Shadow kShadows[] = {{3, 2.6, 0.17}, {0.5, 0.55, 0.12}, {0, 0.4, 0.12}};

// How dark a blurred disc is at a distance from its middle: exact for a straight edge, and near enough for
// one that is bent as little as this.
CGFloat shade(const Shadow& shadow, CGFloat x, CGFloat y) {
    const CGFloat beyond = std::hypot(x, y - shadow.drop) - kThumbSize / 2;
    return shadow.alpha * 0.5 * std::erfc(beyond / (shadow.blur * std::numbers::sqrt2));
}

CGImageRef drawShadow(CGFloat scale) {
    const int side = std::clamp(static_cast<int>(std::lround(kShadowSize * scale)), 1, 1024);
    auto picture = std::make_shared<CGImage>(side, side);
    const auto points = [&](int pixel) { return (pixel + 0.5) * kShadowSize / side - kShadowSize / 2; };
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            CGFloat light = 1;
            for (const Shadow& shadow : kShadows)
                light *= 1 - shade(shadow, points(column), points(row));
            picture->row(row)[column] = static_cast<uint32_t>(std::lround((1 - light) * 255)) << 24U;
        }
    }
    return picture;
}

// One picture serves all thumbs of a screen.
UIImage shadowImage() {
    static std::map<CGFloat, CGImageRef> drawn;
    const CGFloat scale = UIScreen::mainScreen().scale();
    CGImageRef& picture = drawn[scale];
    if (!picture) picture = drawShadow(scale);
    return UIImage::imageWithCGImage(picture, scale, UIImageOrientationUp);
}

} // namespace

UIColor ControlColor(uint32_t rgb, CGFloat alpha) {
    return UIColor::colorWithRed((rgb >> 16U & 255U) / 255.0, (rgb >> 8U & 255U) / 255.0,
                                 (rgb & 255U) / 255.0, alpha);
}

CGFloat HairlineWidth() {
    return 1 / UIScreen::mainScreen().scale();
}

CGFloat WholePixels(CGFloat points) {
    const CGFloat scale = UIScreen::mainScreen().scale();
    return std::round(points * scale) / scale;
}

CGRect AlignedToPixels(const UIView& in, const CGRect& rect) {
    const CGFloat scale = UIScreen::mainScreen().scale();
    CGPoint zero = in.convertPointToView({0, 0}, nullptr);
    if (auto* scroll = enclosing<UIScrollView>(const_cast<UIView*>(&in))) zero.y += scroll->contentOffset().y;
    const auto place = [&](CGFloat at, CGFloat from) {
        return std::round((at + from) * scale) / scale - from;
    };
    const auto length = [&](CGFloat points) {
        return std::max<CGFloat>(std::round(points * scale), 1) / scale;
    };
    return {{place(rect.origin.x, zero.x), place(rect.origin.y, zero.y)},
            {length(rect.size.width), length(rect.size.height)}};
}

std::shared_ptr<UIImageView> MakeThumb() {
    auto thumb = std::make_shared<UIImageView>(shadowImage());
    thumb->setFrame(CGRectMake(0, 0, kShadowSize, kShadowSize));
    thumb->setUserInteractionEnabled(false);
    constexpr CGFloat kMargin = (kShadowSize - kThumbSize) / 2;
    auto disc = std::make_shared<UIView>(CGRectMake(kMargin, kMargin, kThumbSize, kThumbSize));
    disc->setBackgroundColor(UIColor::whiteColor());
    disc->layer()->setCornerRadius(kThumbSize / 2);
    thumb->addSubview(disc);
    return thumb;
}

void SetThumbColor(UIImageView& thumb, const UIColor& color) {
    thumb.subviews().front()->setBackgroundColor(color);
}

} // namespace tallyforge
