#pragma once

#include "uikit/UIColor.h"
#include "uikit/UIImage.h"
#include "uikit/UIImageView.h"

#include <memory>
#include <optional>
#include <string_view>

namespace tallyforge {

/// The system's own artwork of that name: SpringBoard's file, else its asset catalogue's rendition; for the
/// badge and close-box plate also the bundle's own copy. No image when there is none.
UIImage SystemMarkImage(std::string_view name);
inline constexpr std::string_view kPlateArtwork = "IconBadgeAndCloseBox";
inline constexpr std::string_view kCrossArtwork = "IconCloseBoxX";
inline constexpr std::string_view kNewDotArtwork = "IconNewDot";

/// An image of the bundle, by its path there, else the same below "/bootstrap".
UIImage BundleImage(std::string_view name);

/// The image drawn into that many points, at the screen's scale.
UIImage ResizeImage(const UIImage& image, CGFloat width, CGFloat height);

/// The image with the colour, at that alpha, over it wherever it is opaque. Always at scale 2.
UIImage TintImage(const UIImage& image, const UIColor& color, CGFloat alpha);

/// The image turned by 180 degrees.
UIImage TurnImageUpsideDown(const UIImage& image);

/// Shapes that marks can have. The close box alone knows the system box.
enum MarkShape : int {
    kShapeArtwork = 0,
    kShapeSquare = 1,
    kShapeTriangle = 2,
    kShapeHexagon = 3,
    kShapeStar = 4,
    kShapeIcon = 5,
    kShapeTriangleDown = 6,
    kShapeSystemBox = 10,
};

/// A plain shape in one colour, as large as the model. Always at scale 1. An unknown shape is empty.
UIImage ShapeImage(const UIImage& model, const UIColor& color, int shape, CGFloat alpha);

/// A mark's plate: the fill laid into the border. Without a border colour just the fill.
UIImage BorderedShapeImage(int shape, const UIImage& base, const UIColor& fill,
                           const std::optional<UIColor>& border, CGFloat borderWidth);

/// The glow behind a mark, put behind all that the parent holds; nullptr when there is no colour or the tint
/// alpha is 0.
std::shared_ptr<UIImageView> MakeGlowView(UIView& parent, const std::optional<UIColor>& color, int shape,
                                          CGFloat tintAlpha, CGFloat viewAlpha, CGFloat scale);

} // namespace tallyforge
