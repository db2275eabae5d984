#pragma once

#include <algorithm>

namespace tallyforge {

/// The left upper corner of a pixel.
struct PixelPlace {
    int x = 0;
    int y = 0;
};

/// Whole pixels: left and top inside, right and bottom outside.
struct PixelRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool empty() const { return right <= left || bottom <= top; }
    PixelRect intersected(const PixelRect& o) const {
        PixelRect r{std::max(left, o.left), std::max(top, o.top), std::min(right, o.right),
                    std::min(bottom, o.bottom)};
        return r.empty() ? PixelRect{} : r;
    }
    bool operator==(const PixelRect&) const = default;
};

} // namespace tallyforge
