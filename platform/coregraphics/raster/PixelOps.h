#pragma once

#include "coregraphics/CGImage.h"

#include <cstdint>

namespace tallyforge {

/// Loops over runs of premultiplied pixels. Every result is within one step of the exact value, and no
/// channel is ever above its alpha.

/// Weights of inks are in these parts: so two of them times a byte are summed in one step of a register.
inline constexpr int kInkBits = 14;
inline constexpr int kInkOne = 1 << kInkBits;

/// A colour made ready for painting.
struct Ink {
    uint32_t pixel = 0;      ///< premultiplied
    uint16_t weight[4] = {}; ///< blue, green, red, alpha, premultiplied, kInkOne is 1
    bool opaque() const { return pixel >> 24 == 255; }
    bool nothing() const { return weight[3] == 0; }
};
/// Nothing to paint when a number is not finite.
Ink MakeInk(const CGColor& color, CGFloat alpha);

/// Paints the colour over the pixels.
void InkOver(uint32_t* pixels, int count, const Ink& ink);
void InkOver(uint32_t* pixels, int count, const Ink& ink, const uint8_t* coverage);
/// Paints the colour where the pixels are opaque already; their alpha stays: colour x alpha of the pixel +
/// pixel x (1 - alpha of the colour).
void InkAtop(uint32_t* pixels, int count, const Ink& ink);
void InkAtop(uint32_t* pixels, int count, const Ink& ink, const uint8_t* coverage);

/// Paints pixels over pixels, the source faded to alpha (0 to 255) and by the coverage, which may be nullptr.
void PixelsOver(uint32_t* pixels, const uint32_t* source, int count, int alpha, const uint8_t* coverage);
void PixelsAtop(uint32_t* pixels, const uint32_t* source, int count, int alpha, const uint8_t* coverage);

/// pixels = before + (pixels - before) x coverage.
void Mix(uint32_t* pixels, const uint32_t* before, const uint8_t* coverage, int count);

} // namespace tallyforge
