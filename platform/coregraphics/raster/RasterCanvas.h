#pragma once

#include "coregraphics/Canvas.h"
#include "rastergraphics/PendingFills.h"
#include "rastergraphics/PixelOps.h"
#include "rastergraphics/PixelRect.h"

#include <memory>
#include <vector>

namespace tallyforge {

class PictureCache;
class SampleGrid;
class TextEngine;

/// The canvas over a bitmap. A path clip does not narrow painting itself: painting goes on inside its bounds,
/// and when the clip ends, the bitmap is mixed with what it was before, by the clip's coverage. So edges are
/// antialiased however many things are painted on top of each other.
class RasterCanvas final : public Canvas {
  public:
    RasterCanvas(CGImage& bitmap, TextEngine& text, PictureCache& pictures);
    ~RasterCanvas() override;
    RasterCanvas(const RasterCanvas&) = delete;
    RasterCanvas& operator=(const RasterCanvas&) = delete;

    void save() override;
    void restore() override;
    void setTransform(const CGAffineTransform& userToPixels) override;
    CGAffineTransform transform() const override;
    void clipToRect(const CGRect& rect) override;
    void clipToPath(const CGPath& path) override;
    CGRect clipBounds() const override;
    void fillRect(const CGRect& rect, const CGColor& color, CGFloat alpha, CGBlendMode mode) override;
    void fillPath(const CGPath& path, const CGColor& color, CGFloat alpha, CGBlendMode mode) override;
    void strokePath(const CGPath& path, const CGColor& color, CGFloat width, bool round) override;
    void drawImage(const CGImageRef& image, const CGRect& rect, CGFloat alpha, CGBlendMode mode) override;
    void drawText(std::string_view utf8, const FontFace& font, const CGPoint& baseline, const CGColor& color,
                  CGFloat alpha) override;
    void beginGroup(const CGRect& bounds, CGFloat alpha) override;
    void endGroup() override;
    void flush() override;

    /// Where painting goes at present: the bitmap, or the innermost group's own.
    struct Surface {
        PixelRect area;
        uint32_t* pixels = nullptr;
        uint32_t* at(int x, int y) const {
            return pixels + ptrdiff_t(y - area.top) * area.width() + (x - area.left);
        }
    };

  private:
    struct ClipMask;
    struct State {
        CGAffineTransform transform;
        PixelRect clip;
        std::vector<ClipMask> masks; ///< in the order in which they were set
    };
    struct Group {
        Surface surface;
        std::unique_ptr<uint32_t[]> storage;
        int alpha; ///< 0 to 255
        size_t outerStates;
    };

    State& state() { return states_.back(); }
    const State& state() const { return states_.back(); }
    const Surface& surface() const { return groups_.empty() ? base_ : groups_.back().surface; }
    bool paintable() const;
    /// Before anything but an opaque rectangle is painted there.
    void settle(const PixelRect& area) {
        if (groups_.empty()) pending_.settle(area);
    }
    void settle(const CGPath& path, const CGAffineTransform& toPixels);
    void popState();
    void fillDeviceRect(const PixelRect& rect, const Ink& ink, CGBlendMode mode);
    void drawUpright(const CGImageRef& image, const CGAffineTransform& unitToPixels, int alpha,
                     CGBlendMode mode);
    void copyUpright(const CGImage& image, const PixelPlace& at, PixelRect area, int alpha, CGBlendMode mode);
    void drawInside(const SampleGrid& grid, const PixelRect& part, const PixelRect& area, int alpha,
                    CGBlendMode mode);
    void drawTurned(const CGImage& image, const CGAffineTransform& unitToPixels, int alpha, CGBlendMode mode);

    Surface base_;
    PendingFills pending_; // in the base
    TextEngine& text_;
    PictureCache& pictures_;
    std::vector<State> states_;
    std::vector<Group> groups_;
};

} // namespace tallyforge
