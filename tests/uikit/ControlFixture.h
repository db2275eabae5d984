#pragma once

#include "support/TouchFixture.h"
#include "uikit/UIControl.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tallyforge::test {

/// The window is white. Animations are off.
class ControlFixture : public TouchFixture {
  protected:
    ControlFixture() : TouchFixture(false) { window_->setBackgroundColor(UIColor::whiteColor()); }

    std::shared_ptr<CGImage> picture(CGFloat scale = 2) { return TouchFixture::picture(scale); }
    static uint32_t at(const CGImage& image, CGFloat scale, const CGPoint& point) {
        return image.pixel(static_cast<int>(point.x * scale), static_cast<int>(point.y * scale)) & 0xFFFFFFU;
    }
    /// The greatest difference of a channel.
    static int difference(uint32_t a, uint32_t b) {
        int most = 0;
        for (const unsigned shift : {0U, 8U, 16U})
            most = std::max(most, std::abs(int(a >> shift & 255U) - int(b >> shift & 255U)));
        return most;
    }
    /// Writes down the events of the control, in the order in which they come.
    static void record(UIControl& control, std::vector<std::string>& events) {
        const std::pair<uint32_t, const char*> names[] = {
            {UIControlEventTouchDown, "down"},         {UIControlEventTouchUpInside, "inside"},
            {UIControlEventTouchUpOutside, "outside"}, {UIControlEventTouchCancel, "cancel"},
            {UIControlEventValueChanged, "value"},     {UIControlEventEditingChanged, "editing"}};
        for (const auto& [event, name] : names)
            control.addTargetForControlEvents(
                [&events, name = name](UIControl&) { events.emplace_back(name); }, event);
    }
};

using Events = std::vector<std::string>;

} // namespace tallyforge::test
