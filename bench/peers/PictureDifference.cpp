#include "PictureDifference.h"

#include "PairedRuns.h"
#include "coregraphics/Canvas.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tallyforge {

namespace {

constexpr int kChannels = 4;
constexpr int kSeen = 32;

int channel(uint32_t pixel, int index) {
    return int(pixel >> (8 * index) & 255);
}

} // namespace

PictureDifference DifferenceOf(const CGImage& a, const CGImage& b) {
    double sum = 0, seen = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            int largest = 0;
            for (int i = 0; i < kChannels; ++i) {
                const int step = std::abs(channel(a.pixel(x, y), i) - channel(b.pixel(x, y), i));
                sum += step;
                largest = std::max(largest, step);
            }
            seen += largest > kSeen;
        }
    }
    const double pixels = double(a.width()) * a.height();
    return {sum / pixels / kChannels, seen / pixels};
}

std::string Describe(const PictureDifference& difference) {
    return "the pictures differ by " + PairedRuns::figure(difference.mean, 3) + " of 255 steps on average; " +
           PairedRuns::figure(100 * difference.share, 2) + " % of the pixels by more than " +
           std::to_string(kSeen);
}

double PeakSignalToNoise(const CGImage& a, const CGImage& b) {
    double squares = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            for (int i = 0; i < kChannels; ++i) {
                const double step = channel(a.pixel(x, y), i) - channel(b.pixel(x, y), i);
                squares += step * step;
            }
        }
    }
    const double mean = squares / (double(kChannels) * a.width() * a.height());
    return 10 * std::log10(255.0 * 255.0 / mean);
}

void KeepPicture(const CGImage& picture, const std::string& name) {
    const char* folder = std::getenv("TALLYFORGE_BENCH_PICTURES");
    if (!folder) return;
    const std::vector<uint8_t> bytes = Graphics::current()->encodePNG(picture);
    std::ofstream(std::filesystem::path(folder) / (name + ".png"), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

} // namespace tallyforge
