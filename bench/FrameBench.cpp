// What a frame costs that is painted only where something has changed: a pane at rest, one with three
// animated marks, a scrolled one, a row that is changed. All of a phone's screen at 2 pixels a point.

#include "coregraphics/Canvas.h"
#include "quartzcore/FrameUpdate.h"
#include "rastergraphics/RasterGraphics.h"

#include <benchmark/benchmark.h>

#include <numbers>
#include <string>

namespace tallyforge {

namespace {

constexpr CGAffineTransform kToPixels{2, 0, 0, 2, 0, 0};

CGImageRef picture(int side) {
    auto image = std::make_shared<CGImage>(side, side);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x)
            image->row(y)[x] = 0xFF000000U | unsigned(x * 255 / side) << 16 | unsigned(y * 255 / side);
    }
    return image;
}

template <typename Layer = CALayer>
std::shared_ptr<Layer> add(CALayer& to, const CGRect& frame) {
    auto layer = std::make_shared<Layer>();
    layer->setFrame(frame);
    to.addSublayer(layer);
    return layer;
}

std::shared_ptr<CATextLayer> addText(CALayer& to, const CGRect& frame, const std::string& text) {
    auto layer = add<CATextLayer>(to, frame);
    layer->setString(text);
    return layer;
}

/// A bar, a preview cell with an icon, a name and three marks with glows, and rows of text and lines.
struct Scene {
    std::shared_ptr<CALayer> root = std::make_shared<CALayer>();
    std::shared_ptr<CALayer> table;
    std::shared_ptr<CATextLayer> value;
    std::shared_ptr<CALayer> thumb;
    int layers = 1;

    explicit Scene(bool animated) {
        root->setAnchorPoint({0, 0});
        root->setBounds({{0, 0}, {375, 667}});
        root->setBackgroundColor(CGColor{0.94, 0.94, 0.96, 1});
        table = add(*root, {{0, 64}, {375, 603}});
        table->setMasksToBounds(true);
        addMarks(*add(*table, {{0, 35}, {375, 150}}), animated);
        for (int i = 0; i < 30; ++i)
            addRow(i);
        const auto bar = add(*root, {{0, 0}, {375, 64}});
        bar->setBackgroundColor(CGColor{0.97, 0.97, 0.97, 1});
        addText(*bar, {{100, 30}, {175, 24}}, "Badge")->setAlignmentMode(CATextAlignment::center);
        layers += 3;
    }

    void addMarks(CALayer& cell, bool animated) {
        cell.setBackgroundColor(CGColor{1, 1, 1, 1});
        const auto icon = add(cell, {{157, 30}, {60, 60}});
        icon->setContents(picture(120));
        addText(cell, {{120, 95}, {135, 20}}, "Messages")->setAlignmentMode(CATextAlignment::center);
        const char* paths[] = {"transform.rotation.z", "position.y", "transform.scale"};
        const CGFloat from[] = {0, 0, 1}, to[] = {2 * std::numbers::pi, 0, 1.3};
        for (int i = 0; i < 3; ++i) {
            const CGRect place{{147 + 28.0 * i, 20 + 24.0 * i}, {24, 24}};
            const auto glow = add(cell, CGRectInset(place, -12, -12));
            glow->setContents(picture(96));
            glow->setOpacity(0.6F);
            const auto mark = add(cell, place);
            mark->setContents(picture(48));
            addText(*mark, {{0, 2}, {24, 20}}, "7")->setAlignmentMode(CATextAlignment::center);
            layers += 3;
            if (!animated) continue;
            auto animation = CABasicAnimation::animationWithKeyPath(paths[i]);
            animation->setFromValue(i == 1 ? mark->position().y : from[i]);
            animation->setToValue(i == 1 ? mark->position().y - 12 : to[i]);
            animation->setDuration(1);
            animation->setRepeatCount(1e9F);
            animation->setBeginTime(1);
            mark->addAnimation(*animation, "a");
        }
        layers += 3;
    }

    void addRow(int i) {
        const auto row = add(*table, {{0, 220 + 44.0 * i}, {375, 44}});
        row->setBackgroundColor(CGColor{1, 1, 1, 1});
        addText(*row, {{15, 10}, {200, 24}}, "Row number " + std::to_string(i));
        value = addText(*row, {{260, 10}, {100, 24}}, "0.50");
        add(*row, {{15, 43.5}, {360, 0.5}})->setBackgroundColor(CGColor{0.78, 0.78, 0.8, 1});
        thumb = add(*row, {{180, 8}, {28, 28}});
        thumb->setCornerRadius(14);
        thumb->setBackgroundColor(CGColor{0.9, 0.9, 0.9, 1});
        layers += 5;
        if (i > 4) return;
        shownValue = value;
        shownThumb = thumb;
    }
    std::shared_ptr<CATextLayer> shownValue;
    std::shared_ptr<CALayer> shownThumb;
};

void run(benchmark::State& state, bool animated, void (*change)(Scene&, int)) {
    Scene scene(animated);
    CGImage bitmap(750, 1334);
    CAFrameUpdater updater;
    double seconds = 2, pixels = 0;
    updater.update(*scene.root, seconds, kToPixels, bitmap);
    int frame = 0;
    for (auto _ : state) {
        change(scene, ++frame);
        seconds += 1.0 / 60;
        for (const CGRect& rect : updater.update(*scene.root, seconds, kToPixels, bitmap))
            pixels += rect.size.width * rect.size.height;
    }
    state.counters["pixels"] = benchmark::Counter(pixels, benchmark::Counter::kAvgIterations);
    state.counters["layers"] = scene.layers;
}

void Nothing(benchmark::State& state) {
    run(state, false, [](Scene&, int) {});
}
BENCHMARK(Nothing)->Unit(benchmark::kMicrosecond);

void ThreeAnimations(benchmark::State& state) {
    run(state, true, [](Scene&, int) {});
}
BENCHMARK(ThreeAnimations)->Unit(benchmark::kMicrosecond);

void SliderDrag(benchmark::State& state) {
    run(state, false, [](Scene& scene, int frame) {
        scene.shownThumb->setPosition({150.0 + frame % 100, 22});
        scene.shownValue->setString("0." + std::to_string(10 + frame % 90));
    });
}
BENCHMARK(SliderDrag)->Unit(benchmark::kMicrosecond);

void Scroll(benchmark::State& state) {
    run(state, false, [](Scene& scene, int frame) {
        scene.table->setBounds({{0, CGFloat(frame % 600)}, {375, 603}});
    });
}
BENCHMARK(Scroll)->Unit(benchmark::kMicrosecond);

void Everything(benchmark::State& state) {
    Scene scene(true);
    CGImage bitmap(750, 1334);
    for (auto _ : state) {
        CAFrameUpdater updater;
        benchmark::DoNotOptimize(updater.update(*scene.root, 2, kToPixels, bitmap));
    }
}
BENCHMARK(Everything)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    using namespace tallyforge;
    Graphics::install(MakeRasterGraphics());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    Graphics::install(nullptr);
    return 0;
}
