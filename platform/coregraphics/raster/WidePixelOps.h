#pragma once

#include "rastergraphics/PixelOps.h"

namespace tallyforge {

/// The loops of PixelOps.h for machines with registers of 8 pixels: each does the beginning of a run, as far
/// as whole registers go, and returns how many pixels that were. The results are those of the plain loops. On
/// other machines they do nothing.
int WideFill(uint32_t* pixels, int count, uint32_t pixel);
int WideInkOver(uint32_t* pixels, int count, const Ink& ink);
int WideInkOver(uint32_t* pixels, int count, const Ink& ink, const uint8_t* coverage);
int WideInkAtop(uint32_t* pixels, int count, const Ink& ink);
int WidePixelsOver(uint32_t* pixels, const uint32_t* source, int count, int alpha, const uint8_t* coverage);

} // namespace tallyforge
