#include "uikit/UIFont.h"

#include <algorithm>

namespace tallyforge {

CGSize NSStringBoundingSize(std::string_view text, const CGSize& box, const UIFont& font) {
    Graphics* graphics = Graphics::current();
    if (!graphics) return CGSizeZero;
    TextMeasure measure = graphics->measureText(text, font.face());
    return {std::min(measure.width, box.width), std::min(measure.lineHeight(), box.height)};
}

} // namespace tallyforge
