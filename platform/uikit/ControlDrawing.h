#pragma once

#include "coregraphics/CGGeometry.h"
#include "uikit/UIColor.h"

#include <cstdint>
#include <memory>

namespace tallyforge {

class UIImageView;
class UIView;

/// What the controls draw with. Colours are 0xRRGGBB.
UIColor ControlColor(uint32_t rgb, CGFloat alpha = 1);
inline constexpr uint32_t kControlTint = 0x007AFF;

/// One device pixel, in points.
CGFloat HairlineWidth();
/// The length to the nearest whole device pixel, in points.
CGFloat WholePixels(CGFloat points);
/// The rectangle (in the view's coordinates) with its corner on a whole pixel of the window and sides of
/// whole pixels, at least one. Within what scrolls: when that is at rest.
CGRect AlignedToPixels(const UIView& in, const CGRect& rect);

inline constexpr CGFloat kThumbSize = 28;
/// A white disc of that size with a soft shadow below it; what is moved is its centre.
std::shared_ptr<UIImageView> MakeThumb();
void SetThumbColor(UIImageView& thumb, const UIColor& color);

} // namespace tallyforge
