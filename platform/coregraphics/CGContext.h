#pragma once

#include "coregraphics/Canvas.h"

#include <memory>
#include <vector>

namespace tallyforge {

/// An offscreen drawing context: a bitmap, a canvas on it and the drawing state. User space has y downwards
/// and one unit is `scale` pixels.
class CGContext {
  public:
    /// Nothing when a side is not positive, is larger than 4096 pixels, or nothing draws on this machine.
    static std::shared_ptr<CGContext> create(int pixelWidth, int pixelHeight, CGFloat scale, bool opaque);

    CGFloat scale() const { return scale_; }
    Canvas& canvas();
    /// What has been painted so far; it stays as it is when painting goes on.
    CGImageRef makeImage();
    /// The pixels themselves, for reading.
    const CGImage& bitmap();
    /// Keep and bring back fill colour, alpha, blend mode, transform and clip, but not the path. Restoring
    /// more often than saving does nothing.
    void saveState();
    void restoreState();

    CGColor fillColor{0, 0, 0, 1};
    CGFloat alpha = 1;
    CGBlendMode blendMode = kCGBlendModeNormal;
    CGPath path;

  private:
    CGContext(int pixelWidth, int pixelHeight, CGFloat scale);
    std::shared_ptr<CGImage> bitmap_;
    bool lent_ = false; ///< the bitmap is behind an image now, and is not painted in any more
    CGFloat scale_;
    std::unique_ptr<Canvas> canvas_;
    struct SavedState {
        CGColor fillColor;
        CGFloat alpha;
        CGBlendMode blendMode;
    };
    std::vector<SavedState> saved_;
};

using CGContextRef = std::shared_ptr<CGContext>;

/// An RGBA bitmap context of 8 bits a channel, alpha premultiplied, 1 unit a pixel, all transparent. Nothing
/// when it cannot be made.
CGContextRef CGBitmapContextCreate(size_t width, size_t height);
CGImageRef CGBitmapContextCreateImage(const CGContextRef& context);

/// All do nothing for a context of nullptr, as on the device.
void CGContextSetFillColor(const CGContextRef& context, const CGColor& color);
void CGContextSetAlpha(const CGContextRef& context, CGFloat alpha);
void CGContextSetBlendMode(const CGContextRef& context, CGBlendMode mode);
void CGContextFillRect(const CGContextRef& context, const CGRect& rect);
void CGContextMoveToPoint(const CGContextRef& context, CGFloat x, CGFloat y);
void CGContextAddLineToPoint(const CGContextRef& context, CGFloat x, CGFloat y);
void CGContextClosePath(const CGContextRef& context);
void CGContextAddPath(const CGContextRef& context, const CGPath& path);
/// Fills the path and empties it.
void CGContextFillPath(const CGContextRef& context);
/// Narrows the clip to the path and empties it. Without a path it does nothing.
void CGContextClip(const CGContextRef& context);
void CGContextSaveGState(const CGContextRef& context);
void CGContextRestoreGState(const CGContextRef& context);
void CGContextDrawImage(const CGContextRef& context, const CGRect& rect, const CGImageRef& image);

} // namespace tallyforge
