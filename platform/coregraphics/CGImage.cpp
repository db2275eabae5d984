#include "coregraphics/CGImage.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

uint32_t PixelFromColor(const CGColor& color) {
    // Written so that a number that is no number counts as 0.
    auto unit = [](CGFloat v) { return v > 0 ? std::min(v, 1.0) : 0.0; };
    CGFloat alpha = unit(color.alpha);
    auto channel = [](CGFloat v) { return uint32_t(std::lround(v * 255)); };
    return channel(alpha) << 24 | channel(unit(color.red) * alpha) << 16 |
           channel(unit(color.green) * alpha) << 8 | channel(unit(color.blue) * alpha);
}

} // namespace tallyforge
