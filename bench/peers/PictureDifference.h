#pragma once

#include "coregraphics/CGImage.h"

#include <string>

namespace tallyforge {

/// How far two pictures of the same size are apart.
struct PictureDifference {
    double mean = 0;  ///< of all channels, in steps of 255
    double share = 0; ///< of the pixels that differ by more than 32 steps in a channel
};
PictureDifference DifferenceOf(const CGImage& a, const CGImage& b);
/// In words.
std::string Describe(const PictureDifference& difference);

/// In decibels against the largest value; infinite where they are the same.
double PeakSignalToNoise(const CGImage& a, const CGImage& b);

/// When TALLYFORGE_BENCH_PICTURES names a folder, the picture is kept there for looking at.
void KeepPicture(const CGImage& picture, const std::string& name);

} // namespace tallyforge
