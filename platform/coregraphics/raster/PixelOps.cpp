#include "rastergraphics/PixelOps.h"

#include "rastergraphics/WideLoops.h"
#include "rastergraphics/WidePixelOps.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

/// Every channel times a / 255, rounded to nearest.
INLINED uint32_t scaled(uint32_t pixel, uint32_t a) {
    uint32_t low = (pixel & 0xff00ff) * a + 0x800080;
    low = ((low + ((low >> 8) & 0xff00ff)) >> 8) & 0xff00ff;
    uint32_t high = ((pixel >> 8) & 0xff00ff) * a + 0x800080;
    high = (high + ((high >> 8) & 0xff00ff)) & 0xff00ff00;
    return low | high;
}

INLINED uint32_t over(uint32_t below, uint32_t source) {
    return source + scaled(below, 255 - (source >> 24));
}

INLINED uint32_t mixed(uint32_t from, uint32_t to, uint32_t amount) {
    return scaled(to, amount) + scaled(from, 255 - amount);
}

INLINED uint32_t atop(uint32_t below, uint32_t source) {
    // Both channels are at most their alphas, so the sum is at most 255 x the pixel's own.
    uint32_t alpha = below >> 24;
    uint32_t rest = 255 - (source >> 24);
    uint32_t result = below & 0xff000000;
    for (int shift = 0; shift < 24; shift += 8) {
        uint32_t sum = ((source >> shift) & 255) * alpha + ((below >> shift) & 255) * rest + 128;
        result |= ((sum + (sum >> 8)) >> 8) << shift;
    }
    return result;
}

/// The colour atop the pixel.
INLINED uint32_t inkAtop(uint32_t pixel, const uint16_t* weight) {
    uint32_t alpha = pixel >> 24;
    uint32_t rest = uint32_t(kInkOne) - weight[3];
    uint32_t result = pixel & 0xff000000;
    for (int channel = 0; channel < 3; ++channel) {
        uint32_t below = (pixel >> (8 * channel)) & 255;
        result |= ((weight[channel] * alpha + below * rest + kInkOne / 2) >> kInkBits) << (8 * channel);
    }
    return result;
}

} // namespace

Ink MakeInk(const CGColor& color, CGFloat alpha) {
    if (!std::isfinite(color.red) || !std::isfinite(color.green) || !std::isfinite(color.blue) ||
        !std::isfinite(color.alpha) || !std::isfinite(alpha))
        return {};
    auto unit = [](CGFloat v) { return std::clamp(v, 0.0, 1.0); };
    CGFloat total = unit(color.alpha) * unit(alpha);
    auto weight = [total](CGFloat v) { return uint16_t(std::lround(v * total * kInkOne)); };
    Ink ink;
    ink.pixel = PixelFromColor({color.red, color.green, color.blue, total});
    ink.weight[0] = weight(unit(color.blue));
    ink.weight[1] = weight(unit(color.green));
    ink.weight[2] = weight(unit(color.red));
    ink.weight[3] = weight(1);
    return ink;
}

void InkOver(uint32_t* pixels, int count, const Ink& ink) {
    uint32_t source = ink.pixel;
    if (ink.opaque()) {
        int done = WideFill(pixels, count, source);
        std::fill(pixels + done, pixels + count, source);
        return;
    }
    uint32_t rest = 255 - (source >> 24);
    for (int i = WideInkOver(pixels, count, ink); i < count; ++i)
        pixels[i] = source + scaled(pixels[i], rest);
}

void InkOver(uint32_t* pixels, int count, const Ink& ink, const uint8_t* coverage) {
    uint32_t source = ink.pixel;
    for (int i = WideInkOver(pixels, count, ink, coverage); i < count; ++i)
        pixels[i] = over(pixels[i], scaled(source, coverage[i]));
}

void InkAtop(uint32_t* pixels, int count, const Ink& ink) {
    for (int i = WideInkAtop(pixels, count, ink); i < count; ++i)
        pixels[i] = inkAtop(pixels[i], ink.weight);
}

WIDE_TOO void InkAtop(uint32_t* pixels, int count, const Ink& ink, const uint8_t* coverage) {
    const uint16_t weight[4] = {ink.weight[0], ink.weight[1], ink.weight[2], ink.weight[3]};
    for (int i = 0; i < count; ++i) {
        uint32_t pixel = mixed(pixels[i], inkAtop(pixels[i], weight), coverage[i]);
        pixels[i] = (pixel & 0xffffff) | (pixels[i] & 0xff000000);
    }
}

void PixelsOver(uint32_t* pixels, const uint32_t* source, int count, int alpha, const uint8_t* coverage) {
    uint32_t fade = uint32_t(alpha);
    for (int i = WidePixelsOver(pixels, source, count, alpha, coverage); i < count; ++i) {
        uint32_t painted = scaled(source[i], fade);
        pixels[i] = over(pixels[i], coverage ? scaled(painted, coverage[i]) : painted);
    }
}

WIDE_TOO void PixelsAtop(uint32_t* pixels, const uint32_t* source, int count, int alpha,
                         const uint8_t* coverage) {
    uint32_t fade = uint32_t(alpha);
    for (int i = 0; i < count; ++i) {
        uint32_t painted = scaled(source[i], fade);
        pixels[i] = atop(pixels[i], coverage ? scaled(painted, coverage[i]) : painted);
    }
}

WIDE_TOO void Mix(uint32_t* pixels, const uint32_t* before, const uint8_t* coverage, int count) {
    for (int i = 0; i < count; ++i)
        pixels[i] = mixed(before[i], pixels[i], coverage[i]);
}

} // namespace tallyforge
