// The screens' own work: from a touch to the painted frame, a frame of three moving marks, scrolling,
// opening.

#include "corefoundation/CFPreferences.h"
#include "coregraphics/Canvas.h"
#include "foundation/DeviceRoot.h"
#include "foundation/Dispatch.h"
#include "mobileservices/UIAssetManager.h"
#include "preferences/PSControlCells.h"
#include "preferences/PSListController.h"
#include "quartzcore/FrameUpdate.h"
#include "quartzcore/Presentation.h"
#include "rastergraphics/RasterGraphics.h"
#include "settings/SettingsKeys.h"
#include "settings_app/SettingsApp.h"
#include "uikit/UIDevice.h"
#include "uikit/UIViewAnimation.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace tallyforge {

namespace {

constexpr CGFloat kScale = 2;
constexpr int64_t kFrame = NSEC_PER_SEC / 60;

/// The app on a clock of its own, painted into a bitmap as the window does it.
class Bench {
  public:
    Bench() {
        MainQueue::main().setClock(&clock_);
        UIScreen::mainScreen().setScale(kScale);
        UIViewSetAnimationsEnabled(false);
        app_ = std::make_unique<SettingsApp>();
        CGSize size = app_->size();
        bitmap_ = std::make_unique<CGImage>(static_cast<int>(size.width * kScale),
                                            static_cast<int>(size.height * kScale));
        frame();
    }
    ~Bench() {
        app_.reset();
        MainQueue::main().clear();
        MainQueue::main().setClock(nullptr);
    }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    SettingsApp& app() { return *app_; }
    PSListController& pane() {
        return dynamic_cast<PSListController&>(*app_->navigation().topViewController());
    }
    void frame() {
        app_->step();
        auto painted =
            updater_.update(app_->layer(), CACurrentMediaTime(), {kScale, 0, 0, kScale, 0, 0}, *bitmap_);
        benchmark::DoNotOptimize(painted);
    }
    void nextFrameTime() { MainQueue::main().runUntil(clock_, clock_.nanoseconds() + kFrame); }
    void touch(UITouchPhase phase, const CGPoint& point) {
        app_->window().sendTouch({phase, point, clock_.nanoseconds()});
    }

  private:
    VirtualClock clock_;
    std::unique_ptr<SettingsApp> app_;
    std::unique_ptr<CGImage> bitmap_;
    CAFrameUpdater updater_;
};

void set(std::string_view key, float value) {
    CFPreferencesSetAppValue(key, PropertyList::floatNumber(value), kSettingsDomain);
}

void busyLook() {
    set("badgeanimtype", 6);
    set("closeboxanimtype", 1);
    set("newdotanimtype", 4);
    set("badgeglowalpha", 80);
    set("badgeshape", 4);
    CFPreferencesAppSynchronize(kSettingsDomain);
}

void report(benchmark::State& state, std::vector<double>& microseconds) {
    std::sort(microseconds.begin(), microseconds.end());
    state.counters["median_us"] = microseconds[microseconds.size() / 2];
    state.counters["p99_us"] = microseconds[microseconds.size() * 99 / 100];
    state.counters["worst_us"] = microseconds.back();
}

// The finger moves the thumb: the value is durably in the file and the frame painted.
void RoadOfOneChange(benchmark::State& state) {
    Bench bench;
    bench.app().openPane("badge");
    bench.frame();
    auto row = bench.pane().specifierForID("badgesize");
    auto path = bench.pane().indexPathForSpecifier(row);
    auto cell =
        std::dynamic_pointer_cast<PSSliderTableCell>(bench.pane().table()->cellForRowAtIndexPath(*path));
    UISlider& slider = *cell->slider();
    auto at = [&](float value) {
        return slider.convertPointToView(slider.thumbCentreForValue(value), nullptr);
    };
    bench.touch(UITouchPhase::began, at(slider.value()));
    std::vector<double> microseconds;
    int i = 0;
    for (auto _ : state) {
        auto from = std::chrono::steady_clock::now();
        bench.touch(UITouchPhase::moved, at(-1.0F + 0.01F * static_cast<float>(++i % 200)));
        bench.frame();
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - from).count());
    }
    bench.touch(UITouchPhase::ended, at(0));
    report(state, microseconds);
}
BENCHMARK(RoadOfOneChange)->Unit(benchmark::kMicrosecond);

void FrameOfThreeAnimations(benchmark::State& state) {
    busyLook();
    Bench bench;
    bench.app().openPane("badge");
    bench.nextFrameTime();
    bench.frame();
    std::vector<double> microseconds;
    for (auto _ : state) {
        auto from = std::chrono::steady_clock::now();
        bench.nextFrameTime();
        bench.frame();
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - from).count());
    }
    report(state, microseconds);
}
BENCHMARK(FrameOfThreeAnimations)->Unit(benchmark::kMicrosecond);

// The table goes up and down by that many points a frame.
void scroll(benchmark::State& state, Bench& bench, UITableView& table, CGFloat step) {
    std::vector<double> microseconds;
    for (auto _ : state) {
        auto from = std::chrono::steady_clock::now();
        if (table.contentOffset().y + step > table.maximumOffset() ||
            table.contentOffset().y + step < table.minimumOffset())
            step = -step;
        table.scrollBy(step);
        bench.nextFrameTime();
        bench.frame();
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - from).count());
    }
    report(state, microseconds);
}

void ScrollingAPane(benchmark::State& state) {
    Bench bench;
    bench.app().openPane("badge");
    bench.frame();
    scroll(state, bench, *bench.pane().table(), 7);
}
BENCHMARK(ScrollingAPane)->Unit(benchmark::kMicrosecond);

void OpeningAPane(benchmark::State& state) {
    Bench bench;
    for (auto _ : state) {
        bench.app().openPane("badge");
        bench.frame();
        bench.app().openPane("tallyforge");
        bench.frame();
    }
}
BENCHMARK(OpeningAPane)->Unit(benchmark::kMicrosecond);

// The colour picker from the pane with its row to the painted frame, and a frame of it while it scrolls up
// and down through all of its rows.
void OpeningThePicker(benchmark::State& state) {
    Bench bench;
    std::vector<double> microseconds;
    for (auto _ : state) {
        state.PauseTiming();
        bench.app().openPane("badgecolor");
        bench.frame();
        state.ResumeTiming();
        auto from = std::chrono::steady_clock::now();
        bench.app().openPane("badgebgcol");
        bench.frame();
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - from).count());
    }
    report(state, microseconds);
}
BENCHMARK(OpeningThePicker)->Unit(benchmark::kMicrosecond);

void ScrollingThePicker(benchmark::State& state) {
    Bench bench;
    bench.app().openPane("badgebgcol");
    bench.frame();
    auto& table = dynamic_cast<UITableView&>(*bench.app().navigation().topViewController()->view());
    scroll(state, bench, table, 23);
}
BENCHMARK(ScrollingThePicker)->Unit(benchmark::kMicrosecond);

void FrameOfNothing(benchmark::State& state) {
    Bench bench;
    bench.app().openPane("badge");
    bench.frame();
    for (auto _ : state)
        bench.frame();
}
BENCHMARK(FrameOfNothing)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    using namespace tallyforge;
    std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-bench-XXXXXX").string();
    std::filesystem::path root = mkdtemp(pattern.data());
    std::filesystem::copy(TALLYFORGE_RESOURCES "/stock", root, std::filesystem::copy_options::recursive);
    if (!DeviceRoot::set(root)) return 1;
    Graphics::install(MakeRasterGraphics());
    RegisterMobileServices();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(root);
    return 0;
}
