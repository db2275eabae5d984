#pragma once

#include "coregraphics/CGAffineTransform.h"
#include "coregraphics/CGImage.h"
#include "coregraphics/CGPath.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The two blend modes that the system draws with, by the platform's numbers.
enum class CGBlendMode { kCGBlendModeNormal = 0, kCGBlendModeSourceAtop = 18 };
inline constexpr auto kCGBlendModeNormal = CGBlendMode::kCGBlendModeNormal;
inline constexpr auto kCGBlendModeSourceAtop = CGBlendMode::kCGBlendModeSourceAtop;

/// A font as drawing needs it. Weights as CSS counts them: 400 regular, 600 semibold.
struct FontFace {
    CGFloat size = 0; ///< points
    int weight = 400;
    bool operator==(const FontFace&) const = default;
};

/// What a line of text measures, in points.
struct TextMeasure {
    CGFloat width = 0;   ///< sum of advances
    CGFloat ascent = 0;  ///< baseline to top of the line
    CGFloat descent = 0; ///< baseline to bottom of the line, positive
    CGFloat lineHeight() const { return ascent + descent; }
};

/// Paints into a bitmap. Coordinates are in user space, y downwards, mapped by the current transform to
/// pixels. Edges are antialiased. Numbers that are not finite, or transforms that cannot be inverted, paint
/// nothing.
class Canvas {
  public:
    virtual ~Canvas() = default;

    virtual void save() = 0;
    virtual void restore() = 0;
    /// From user space to pixels, replacing the current one.
    virtual void setTransform(const CGAffineTransform& userToPixels) = 0;
    virtual CGAffineTransform transform() const = 0;

    /// Narrow the clip until the matching restore. Edges of path clips are antialiased.
    virtual void clipToRect(const CGRect& rect) = 0;
    virtual void clipToPath(const CGPath& path) = 0;
    /// An area of pixels that the clip lies in: painting outside of it does nothing. Empty when nothing can
    /// be painted; a canvas that cannot tell says that it is without end.
    virtual CGRect clipBounds() const { return {{-1e9, -1e9}, {2e9, 2e9}}; }

    /// Alpha multiplies the colour's own.
    virtual void fillRect(const CGRect& rect, const CGColor& color, CGFloat alpha = 1,
                          CGBlendMode mode = kCGBlendModeNormal) = 0;
    virtual void fillPath(const CGPath& path, const CGColor& color, CGFloat alpha = 1,
                          CGBlendMode mode = kCGBlendModeNormal) = 0;
    /// A line of the given width along the path, butt caps unless round, miter joins unless round.
    virtual void strokePath(const CGPath& path, const CGColor& color, CGFloat width, bool round = false) = 0;
    /// The whole image into the rectangle, smoothly scaled (a shrunk image is averaged, not sampled).
    virtual void drawImage(const CGImageRef& image, const CGRect& rect, CGFloat alpha = 1,
                           CGBlendMode mode = kCGBlendModeNormal) = 0;
    /// One line of text with its baseline starting at the point.
    virtual void drawText(std::string_view utf8, const FontFace& font, const CGPoint& baseline,
                          const CGColor& color, CGFloat alpha = 1) = 0;

    /// What is painted until the matching endGroup is flattened and then faded as one. The bounds (user
    /// space) say how far it may reach.
    virtual void beginGroup(const CGRect& bounds, CGFloat alpha) = 0;
    virtual void endGroup() = 0;

    /// Brings what was painted outside of groups into the bitmap, path clips in force included, so that it
    /// can be read while the canvas lives on. Otherwise the bitmap is complete once the canvas is gone.
    virtual void flush() = 0;
};

/// The machine's drawing: canvases, image files and text. There is one, installed by programs that draw;
/// programs that never draw have none, load no graphics library, and see no image and no text extent.
class Graphics {
  public:
    virtual ~Graphics() = default;

    /// A canvas over a bitmap that stays alive until the canvas is gone, and unread until then or a flush.
    /// The transform is the identity: one unit is one pixel.
    virtual std::unique_ptr<Canvas> makeCanvas(CGImage& bitmap) = 0;
    /// PNG (the device's own variant too), JPEG and what else the machine reads; nullptr when it is no image,
    /// is broken, or is larger than 4096 x 4096.
    virtual CGImageRef decodeImage(std::span<const uint8_t> bytes) = 0;
    virtual std::vector<uint8_t> encodePNG(const CGImage& image) = 0;
    virtual TextMeasure measureText(std::string_view utf8, const FontFace& font) = 0;
    /// Byte offsets in the text at which it may be cut without breaking a character as people see it,
    /// ascending, 0 and the length included.
    virtual std::vector<size_t> characterBoundaries(std::string_view utf8) = 0;

    /// The installed one, or nullptr.
    static Graphics* current();
    static void install(std::unique_ptr<Graphics> graphics);
};

} // namespace tallyforge
