#pragma once

#include "rastergraphics/PixelRect.h"

#include <cstdint>
#include <vector>

namespace tallyforge {

/// Opaque rectangles that have been painted as far as anybody can tell, but are not in the bitmap yet.
/// Backgrounds lie on top of each other; of what ends up under another one not a pixel is ever written. What
/// is drawn upon them comes right after the pixels below it, while those are still near.
class PendingFills {
  public:
    /// Where the pixels go.
    struct Bitmap {
        uint32_t* pixels = nullptr;
        int width = 0;
    };
    explicit PendingFills(const Bitmap& bitmap) : bitmap_(bitmap) {}

    /// Worth putting off.
    static bool large(const PixelRect& rect);
    /// The rectangle hides what was added before. It lies in the bitmap.
    void add(const PixelRect& rect, uint32_t pixel);
    /// Everything that touches the area is written. To be called before anything else paints or reads there.
    void settle(const PixelRect& area);
    void settleAll();

  private:
    struct Fill {
        PixelRect rect;
        uint32_t pixel;
    };
    void write(const Fill& fill) const;

    Bitmap bitmap_;
    std::vector<Fill> fills_; // none overlaps with another
};

} // namespace tallyforge
