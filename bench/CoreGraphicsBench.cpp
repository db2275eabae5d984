#include "coregraphics/CGContext.h"
#include "rastergraphics/RasterGraphics.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>

namespace tallyforge {
namespace {

Graphics& graphics() {
    if (!Graphics::current()) Graphics::install(MakeRasterGraphics());
    return *Graphics::current();
}

std::shared_ptr<CGImage> picture(int width, int height) {
    auto image = std::make_shared<CGImage>(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image->row(y)[x] =
                PixelFromColor({double(x) / width, (x / 3 + y / 5) % 2 * 0.8, double(y) / height, 1});
    }
    return image;
}

/// A list screen of the phone at scale 2.
std::shared_ptr<CGImage> listScreen() {
    auto image = std::make_shared<CGImage>(750, 1334);
    auto canvas = graphics().makeCanvas(*image);
    canvas->setTransform(CGAffineTransformMakeScale(2, 2));
    canvas->fillRect({{0, 0}, {375, 667}}, {0.937, 0.937, 0.957, 1});
    for (int row = 0; row < 12; ++row) {
        canvas->fillRect({{0, 64 + row * 44.0}, {375, 43.5}}, {1, 1, 1, 1});
        canvas->drawText("Badge settings", {17, 400}, {15, 92 + row * 44.0}, {0, 0, 0, 1});
        canvas->drawText("Off", {17, 400}, {310, 92 + row * 44.0}, {0.56, 0.56, 0.58, 1});
    }
    return image;
}

void Tint48(benchmark::State& state) {
    CGImage image = *picture(48, 48);
    auto canvas = graphics().makeCanvas(image);
    for (auto _ : state)
        canvas->fillRect({{0, 0}, {48, 48}}, {0.9, 0.3, 0.1, 1}, 0.65, kCGBlendModeSourceAtop);
}
BENCHMARK(Tint48);

void ShrinkIcon180To120(benchmark::State& state) {
    CGImageRef icon = picture(180, 180);
    CGImage target(120, 120);
    auto canvas = graphics().makeCanvas(target);
    for (auto _ : state) // another image each time: what comes again is kept
        canvas->drawImage(CGImageRef(icon.get(), [](const CGImage*) {}), {{0, 0}, {120, 120}});
}
BENCHMARK(ShrinkIcon180To120);

void TurnedMark72(benchmark::State& state) {
    CGImageRef mark = picture(72, 72);
    CGImage target(120, 120);
    auto canvas = graphics().makeCanvas(target);
    canvas->setTransform(CGAffineTransformRotate(CGAffineTransformMakeTranslation(60, 60), 0.5));
    for (auto _ : state)
        canvas->drawImage(mark, {{-36, -36}, {72, 72}}, 0.85);
}
BENCHMARK(TurnedMark72);

void RoundedClip180(benchmark::State& state) {
    CGImage target(200, 200);
    auto canvas = graphics().makeCanvas(target);
    CGPath rounded;
    rounded.addRoundedRect({{10, 10}, {180, 180}}, 36, 36);
    for (auto _ : state) {
        canvas->save();
        canvas->clipToPath(rounded);
        canvas->restore();
    }
}
BENCHMARK(RoundedClip180);

void LabelAgain(benchmark::State& state) {
    CGImage target(400, 80);
    auto canvas = graphics().makeCanvas(target);
    for (auto _ : state)
        canvas->drawText("General Settings", {34, 400}, {10, 50}, {0, 0, 0, 1});
}
BENCHMARK(LabelAgain);

void LabelAtANewPlace(benchmark::State& state) {
    CGImage target(400, 80);
    auto canvas = graphics().makeCanvas(target);
    double shift = 0;
    for (auto _ : state) {
        shift = shift < 1 ? shift + 0.0001 : 0;
        canvas->drawText("General Settings", {34, 400}, {10 + shift, 50}, {0, 0, 0, 1});
    }
}
BENCHMARK(LabelAtANewPlace);

void EncodeListScreen(benchmark::State& state) {
    auto screen = listScreen();
    for (auto _ : state)
        benchmark::DoNotOptimize(graphics().encodePNG(*screen));
}
BENCHMARK(EncodeListScreen)->Unit(benchmark::kMillisecond);

void DecodeListScreen(benchmark::State& state) {
    std::vector<uint8_t> file = graphics().encodePNG(*listScreen());
    for (auto _ : state)
        benchmark::DoNotOptimize(graphics().decodeImage(file));
}
BENCHMARK(DecodeListScreen)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tallyforge

BENCHMARK_MAIN();
