// What a frame costs: the values of an animated layer, and the pixels of a cell with an icon and its marks.
#include "quartzcore/Presentation.h"
#include "quartzcore/RenderServer.h"
#include "rastergraphics/RasterGraphics.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

using namespace tallyforge;

namespace {

constexpr float forever = std::numeric_limits<float>::infinity();

std::shared_ptr<CABasicAnimation> makeBasic(const char* keyPath, CGFloat to) {
    auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
    animation->setToValue(to);
    animation->setDuration(2);
    animation->setRepeatCount(forever);
    return animation;
}

std::shared_ptr<CAKeyframeAnimation> makeHop() {
    const CGMutablePathRef path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, 40, 60);
    CGPathAddLineToPoint(path, nullptr, 40, 30);
    CGPathAddLineToPoint(path, nullptr, 40, 60);
    auto animation = CAKeyframeAnimation::animationWithKeyPath("position");
    animation->setPath(path);
    animation->setDuration(2);
    animation->setRepeatCount(forever);
    animation->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseOut));
    return animation;
}

std::shared_ptr<CAAnimation> makeBounce() {
    std::vector<CAValue> values;
    for (int i = 0; i < 22; ++i) {
        const CGFloat rise = 40 * std::sin(i * std::numbers::pi / 21);
        values.emplace_back(CATransform3DScale(CATransform3DMakeTranslation(0, -rise, 0), 1.5, 1.5, 1));
    }
    auto animation = CAKeyframeAnimation::animationWithKeyPath("transform");
    animation->setValues(std::move(values));
    animation->setDuration(2);
    animation->setRepeatCount(forever);
    return animation;
}

std::shared_ptr<CAAnimation> makeHopAndSpin() {
    auto group = CAAnimationGroup::animation();
    group->setAnimations({makeHop(), makeBasic("transform.rotation.z", 2 * std::numbers::pi)});
    group->setDuration(2);
    group->setRepeatCount(forever);
    return group;
}

void evaluate(benchmark::State& state, const std::shared_ptr<CAAnimation>& animation) {
    CALayer layer;
    layer.setBounds({{0, 0}, {24, 24}});
    layer.setTransform(CATransform3DMakeScale(1.5, 1.5, 1));
    if (animation) {
        animation->setBeginTime(1);
        layer.addAnimation(*animation, "animation");
    }
    CGFloat seconds = 1;
    for (auto _ : state)
        benchmark::DoNotOptimize(CAPresentationAt(layer, seconds += 1.0 / 60));
}

// A disc with a soft rim, so that there is alpha to mix.
CGImageRef makeDisc(int size, uint32_t grey) {
    auto image = std::make_shared<CGImage>(size, size);
    const double middle = (size - 1) / 2.0;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double inside = std::clamp(middle - std::hypot(x - middle, y - middle), 0.0, 1.0);
            const auto alpha = uint32_t(std::lround(255 * inside)), shade = grey * alpha / 255;
            image->row(y)[x] = alpha << 24 | alpha << 16 | shade << 8 | shade;
        }
    }
    return image;
}

template <typename Layer>
std::shared_ptr<Layer> addLayer(CALayer& to, const CGRect& frame) {
    auto layer = std::make_shared<Layer>();
    layer->setFrame(frame);
    to.addSublayer(layer);
    return layer;
}

// A cell of 375 x 150 points: icon, three marks of which one may spin, and a label.
std::shared_ptr<CALayer> makeCell(bool spinning) {
    auto cell = std::make_shared<CALayer>();
    cell->setBounds({{0, 0}, {375, 150}});
    cell->setBackgroundColor(CGColor{1, 1, 1, 1});
    addLayer<CALayer>(*cell, {{157.5, 30}, {60, 60}})->setContents(makeDisc(120, 90));
    const CGPoint marks[] = {{205, 18}, {145, 18}, {140, 95}};
    for (const CGPoint& at : marks)
        addLayer<CALayer>(*cell, {at, {24, 24}})->setContents(makeDisc(48, 40));
    if (spinning) {
        const auto spin = makeBasic("transform.rotation.z", 2 * std::numbers::pi);
        spin->setBeginTime(1);
        cell->sublayers()[1]->addAnimation(*spin, "spin");
    }
    const auto label = addLayer<CATextLayer>(*cell, {{137.5, 94}, {100, 20}});
    label->setString("Messages");
    label->setFont({12, 400});
    label->setAlignmentMode(CATextAlignment::center);
    return cell;
}

void paint(benchmark::State& state, const std::shared_ptr<CALayer>& cell) {
    CGImage bitmap(750, 300);
    CGFloat seconds = 1.1;
    for (auto _ : state) {
        const auto canvas = Graphics::current()->makeCanvas(bitmap);
        RenderServer::paint(*cell, seconds += 1.0 / 60, *canvas, {2, 0, 0, 2, 375, 150});
        canvas->flush();
        benchmark::DoNotOptimize(bitmap.pixel(375, 100));
    }
}

} // namespace

int main(int argc, char** argv) {
    Graphics::install(MakeRasterGraphics());
    const std::pair<const char*, std::shared_ptr<CAAnimation>> animations[] = {
        {"evaluate/none", nullptr},
        {"evaluate/spin", makeBasic("transform.rotation.z", 2 * std::numbers::pi)},
        {"evaluate/flip", makeBasic("transform.rotation.x", 2 * std::numbers::pi)},
        {"evaluate/hop", makeHop()},
        {"evaluate/bounce", makeBounce()},
        {"evaluate/hop and spin", makeHopAndSpin()},
        {"evaluate/pulse", makeBasic("transform.scale", 1.3)},
        {"evaluate/blink", makeBasic("opacity", 0)},
        {"evaluate/shake", makeBasic("position.x", 8)}};
    for (const auto& [name, animation] : animations)
        benchmark::RegisterBenchmark(name,
                                     [animation](benchmark::State& state) { evaluate(state, animation); });
    for (const bool spinning : {false, true})
        benchmark::RegisterBenchmark(
            spinning ? "paint/cell, one mark spinning" : "paint/cell at rest",
            [spinning](benchmark::State& state) { paint(state, makeCell(spinning)); })
            ->Unit(benchmark::kMicrosecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    Graphics::install(nullptr);
    return 0;
}
