#pragma once

#include "coregraphics/CGImage.h"

namespace tallyforge {

/// A colour of the drawing layer: red, green, blue and alpha from 0 to 1.
class UIColor {
  public:
    static UIColor colorWithRed(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) {
        return UIColor({red, green, blue, alpha});
    }
    static UIColor colorWithWhite(CGFloat white, CGFloat alpha) {
        return UIColor({white, white, white, alpha});
    }
    static UIColor blackColor() { return colorWithWhite(0, 1); }
    static UIColor whiteColor() { return colorWithWhite(1, 1); }
    static UIColor grayColor() { return colorWithWhite(0.5, 1); }
    static UIColor redColor() { return colorWithRed(1, 0, 0, 1); }
    static UIColor greenColor() { return colorWithRed(0, 1, 0, 1); }
    static UIColor blueColor() { return colorWithRed(0, 0, 1, 1); }
    static UIColor clearColor() { return colorWithWhite(0, 0); }

    UIColor colorWithAlphaComponent(CGFloat alpha) const {
        return UIColor({color_.red, color_.green, color_.blue, alpha});
    }
    const tallyforge::CGColor& cgColor() const { return color_; }
    CGFloat red() const { return color_.red; }
    CGFloat green() const { return color_.green; }
    CGFloat blue() const { return color_.blue; }
    CGFloat alpha() const { return color_.alpha; }
    bool operator==(const UIColor&) const = default;

    /// Each from 0 to 1. Greys have the hue and saturation 0.
    struct HueSaturationBrightness {
        CGFloat hue = 0, saturation = 0, brightness = 0;
    };
    /// By the usual hexagonal cone: brightness is the largest channel, saturation the share that the largest
    /// is above the smallest, hue the place between the channels, red first.
    HueSaturationBrightness hueSaturationBrightness() const;

  private:
    explicit UIColor(const tallyforge::CGColor& color) : color_(color) {}
    tallyforge::CGColor color_;
};

} // namespace tallyforge
