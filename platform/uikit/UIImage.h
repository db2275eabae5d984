#pragma once

#include "coregraphics/CGImage.h"

#include <string>
#include <string_view>

namespace tallyforge {

/// How the bitmap is turned when it is shown. Only these two occur here.
enum class UIImageOrientation { up = 0, down = 1 };
inline constexpr auto UIImageOrientationUp = UIImageOrientation::up;
inline constexpr auto UIImageOrientationDown = UIImageOrientation::down;

/// Whether what shows the image may draw its shape in a colour of its own (a template), or shows its own
/// colours.
enum class UIImageRenderingMode { automatic = 0, alwaysOriginal = 1, alwaysTemplate = 2 };
inline constexpr auto UIImageRenderingModeAutomatic = UIImageRenderingMode::automatic;
inline constexpr auto UIImageRenderingModeAlwaysOriginal = UIImageRenderingMode::alwaysOriginal;

/// A picture in points: a shared bitmap, its pixels per point, and which way up it is. A default-made one is
/// no image: its size is zero and it draws nothing.
class UIImage {
  public:
    UIImage() = default;
    static UIImage imageWithCGImage(CGImageRef bitmap, CGFloat scale, UIImageOrientation orientation);
    /// The picture in the file, or no image. For "name.png" the file of the screen's own scale beside it
    /// ("name@2x.png", "name@3x.png", with "~iphone" or "~ipad" before the dot first) counts before the other
    /// scales; its scale is the one it is named for. Read files are kept and used again until they change.
    static UIImage imageWithContentsOfFile(std::string_view path);
    /// The same picture, to be shown in that mode.
    UIImage imageWithRenderingMode(UIImageRenderingMode mode) const;

    explicit operator bool() const { return bitmap_ != nullptr; }
    CGSize size() const; ///< points
    CGFloat scale() const { return scale_; }
    UIImageOrientation imageOrientation() const { return orientation_; }
    UIImageRenderingMode renderingMode() const { return renderingMode_; }
    const CGImageRef& bitmap() const { return bitmap_; }
    /// The bitmap as it is shown, turned if need be.
    CGImageRef uprightBitmap() const;

    /// Draw into the current image context.
    void drawInRect(const CGRect& rect) const;
    void drawAtPoint(const CGPoint& point) const;

  private:
    CGImageRef bitmap_;
    CGFloat scale_ = 1;
    UIImageOrientation orientation_ = UIImageOrientationUp;
    UIImageRenderingMode renderingMode_ = UIImageRenderingModeAutomatic;
};

/// Forgets all files that were read.
void UIImageForgetFiles();

} // namespace tallyforge
