#include "preview/imaging/MarkImages.h"

#include "uikit/UIGraphics.h"

namespace tallyforge {

namespace {

/// An offscreen picture that ends with its scope.
class ImageContext {
  public:
    /// At the screen's scale when `scale` is 0.
    ImageContext(const CGSize& size, CGFloat scale) {
        UIGraphicsBeginImageContextWithOptions(size, false, scale);
    }
    ~ImageContext() { UIGraphicsEndImageContext(); }
    ImageContext(const ImageContext&) = delete;
    ImageContext& operator=(const ImageContext&) = delete;

    CGContextRef context() const { return UIGraphicsGetCurrentContext(); }
    UIImage image() const { return UIGraphicsGetImageFromCurrentImageContext(); }
};

constexpr CGFloat kScreenScale = 0;
constexpr CGFloat kTintScale = 2; // whatever the screen's is

// The fill lies in the middle of the border, made smaller by a tenth for every point of border width; the
// triangle's a little lower, where its mass is.
UIImage FillInsideBorder(int shape, const UIImage& border, const UIImage& fill, CGFloat k) {
    CGSize size = border.size();
    ImageContext picture(size, kScreenScale);
    border.drawInRect(CGRectMake(0, 0, size.width, size.height));
    CGRect inset =
        CGRectMake(size.width * (1 - k) / 2, size.height * (1 - k) / 2, size.width * k, size.height * k);
    if (shape == kShapeTriangle) inset.origin.y += (1 - k) * 5;
    fill.drawInRect(inset);
    return picture.image();
}

std::string_view GlowArtwork(int shape) {
    switch (shape) {
    case kShapeSquare:
        return "glow_square.png";
    case kShapeTriangle:
    case kShapeTriangleDown:
        return "glow_triangle.png";
    case kShapeHexagon:
        return "glow_hexagon.png";
    case kShapeStar:
        return "glow_star.png";
    case kShapeIcon:
        return "glow_icon.png";
    default:
        return "glow_circle.png";
    }
}

} // namespace

UIImage ResizeImage(const UIImage& image, CGFloat width, CGFloat height) {
    ImageContext picture({width, height}, kScreenScale);
    image.drawInRect(CGRectMake(0, 0, width, height));
    return picture.image();
}

UIImage TintImage(const UIImage& image, const UIColor& color, CGFloat alpha) {
    CGSize size = image.size();
    ImageContext picture(size, kTintScale);
    image.drawAtPoint(CGPointZero);
    CGContextSetFillColorWithColor(picture.context(), color);
    CGContextSetBlendMode(picture.context(), kCGBlendModeSourceAtop);
    CGContextSetAlpha(picture.context(), alpha);
    CGContextFillRect(picture.context(), CGRectMake(0, 0, size.width, size.height));
    return picture.image();
}

UIImage TurnImageUpsideDown(const UIImage& image) {
    CGSize size = image.size();
    ImageContext picture({size.height, size.width}, kScreenScale);
    UIImage turned = UIImage::imageWithCGImage(image.bitmap(), 1, UIImageOrientationDown);
    turned.drawInRect(CGRectMake(0, 0, size.height, size.width));
    return picture.image();
}

UIImage BorderedShapeImage(int shape, const UIImage& base, const UIColor& fill,
                           const std::optional<UIColor>& border, CGFloat borderWidth) {
    auto layerImage = [&](const UIColor& color) {
        return shape == kShapeArtwork || shape == kShapeIcon ? TintImage(base, color, 1)
                                                             : ShapeImage(base, color, shape, 1);
    };
    UIImage fillImage = layerImage(fill);
    if (!border) return fillImage;

    CGFloat k = 1 - borderWidth / 10;
    if (k != 1) fillImage = FillInsideBorder(shape, layerImage(*border), fillImage, k);
    if (shape == kShapeTriangleDown) // without a border colour the triangle stays upright
        fillImage = TurnImageUpsideDown(fillImage);
    return fillImage;
}

std::shared_ptr<UIImageView> MakeGlowView(UIView& parent, const std::optional<UIColor>& color, int shape,
                                          CGFloat tintAlpha, CGFloat viewAlpha, CGFloat scale) {
    if (!color || tintAlpha == 0) return nullptr;
    UIImage artwork = BundleImage(GlowArtwork(shape));
    if (shape == kShapeTriangleDown) artwork = TurnImageUpsideDown(artwork);
    if (shape == kShapeIcon)
        artwork = ResizeImage(artwork, artwork.size().width + 1, artwork.size().height + 1);

    auto glow = std::make_shared<UIImageView>(TintImage(artwork, *color, tintAlpha));
    CGFloat origin = shape == kShapeIcon ? -11 : -10.5;
    glow->setFrame({{origin, origin}, glow->frame().size});
    glow->setAlpha(viewAlpha);
    glow->setTransform(CGAffineTransformMakeScale(scale, scale));
    parent.insertSubviewAtIndex(glow, 0);
    return glow;
}

} // namespace tallyforge
