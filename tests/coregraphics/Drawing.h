#pragma once

#include "coregraphics/CGContext.h"
#include "rastergraphics/RasterGraphics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

namespace tallyforge {

inline Graphics& testGraphics() {
    if (!Graphics::current()) Graphics::install(MakeRasterGraphics());
    return *Graphics::current();
}

/// What the drawing leaves on a transparent bitmap.
inline CGImage painted(int width, int height, const std::function<void(Canvas&)>& draw) {
    CGImage bitmap(width, height);
    draw(*testGraphics().makeCanvas(bitmap));
    return bitmap;
}

inline int alphaOf(uint32_t pixel) {
    return int(pixel >> 24);
}
inline int redOf(uint32_t pixel) {
    return int(pixel >> 16 & 255);
}
inline int greenOf(uint32_t pixel) {
    return int(pixel >> 8 & 255);
}
inline int blueOf(uint32_t pixel) {
    return int(pixel & 255);
}

/// The covered area in pixels.
inline double inkArea(const CGImage& image) {
    double sum = 0;
    for (uint32_t pixel : image.pixels())
        sum += alphaOf(pixel) / 255.0;
    return sum;
}

inline bool validPremultiplied(const CGImage& image) {
    return std::all_of(image.pixels().begin(), image.pixels().end(), [](uint32_t p) {
        return redOf(p) <= alphaOf(p) && greenOf(p) <= alphaOf(p) && blueOf(p) <= alphaOf(p);
    });
}

inline bool blank(const CGImage& image) {
    return std::all_of(image.pixels().begin(), image.pixels().end(), [](uint32_t p) { return p == 0; });
}

inline int largestDifference(uint32_t a, uint32_t b) {
    return std::max({std::abs(alphaOf(a) - alphaOf(b)), std::abs(redOf(a) - redOf(b)),
                     std::abs(greenOf(a) - greenOf(b)), std::abs(blueOf(a) - blueOf(b))});
}

inline int largestDifference(const CGImage& a, const CGImage& b) {
    int largest = 0;
    for (size_t i = 0; i < a.pixels().size(); ++i)
        largest = std::max(largest, largestDifference(a.pixels()[i], b.pixels()[i]));
    return largest;
}

inline constexpr CGColor kRed{1, 0, 0, 1};
inline constexpr CGColor kBlue{0, 0, 1, 1};
inline constexpr CGColor kBlack{0, 0, 0, 1};
inline constexpr CGColor kWhite{1, 1, 1, 1};

} // namespace tallyforge
