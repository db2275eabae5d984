#pragma once

#include "coregraphics/CGGeometry.h"
#include "coregraphics/PixelMemory.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tallyforge {

/// A colour: red, green, blue from 0 to 1 (not premultiplied) and alpha from 0 to 1.
struct CGColor {
    CGFloat red = 0;
    CGFloat green = 0;
    CGFloat blue = 0;
    CGFloat alpha = 1;
    bool operator==(const CGColor&) const = default;
};

/// A colour as a pixel: 0xAARRGGBB, premultiplied, each channel rounded to the nearest of 256.
uint32_t PixelFromColor(const CGColor& color);

/// A bitmap: rows of 0xAARRGGBB pixels with premultiplied alpha, top row first, without gaps between rows.
/// Once it is behind a CGImageRef it never changes.
class CGImage {
  public:
    using Pixels = std::vector<uint32_t, PixelMemory<uint32_t>>;

    /// All clear.
    CGImage(int width, int height)
        : width_(width), height_(height), pixels_(size_t(width) * size_t(height)) {}

    int width() const { return width_; }   ///< pixels
    int height() const { return height_; } ///< pixels
    const uint32_t* row(int y) const { return pixels_.data() + size_t(y) * size_t(width_); }
    uint32_t* row(int y) { return pixels_.data() + size_t(y) * size_t(width_); }
    uint32_t pixel(int x, int y) const { return row(y)[x]; }
    const Pixels& pixels() const { return pixels_; }

  private:
    int width_;
    int height_;
    Pixels pixels_;
};

using CGImageRef = std::shared_ptr<const CGImage>;
inline size_t CGImageGetWidth(const CGImageRef& image) {
    return image ? size_t(image->width()) : 0;
}
inline size_t CGImageGetHeight(const CGImageRef& image) {
    return image ? size_t(image->height()) : 0;
}

} // namespace tallyforge
