#include "uikit/UIColor.h"

#include <algorithm>

namespace tallyforge {

UIColor::HueSaturationBrightness UIColor::hueSaturationBrightness() const {
    const CGFloat largest = std::max({red(), green(), blue()});
    const CGFloat smallest = std::min({red(), green(), blue()});
    const CGFloat spread = largest - smallest;
    HueSaturationBrightness result{0, largest > 0 ? spread / largest : 0, largest};
    if (spread <= 0) return result;
    CGFloat sixths = 0; // of the way around
    if (largest == red())
        sixths = (green() - blue()) / spread;
    else if (largest == green())
        sixths = 2 + (blue() - red()) / spread;
    else
        sixths = 4 + (red() - green()) / spread;
    if (sixths < 0) sixths += 6;
    result.hue = sixths / 6;
    return result;
}

} // namespace tallyforge
