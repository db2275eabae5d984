// The bundle's own work: colours, image operations, one rebuild of the marks, one painted frame.

#include "corefoundation/CFPreferences.h"
#include "coregraphics/CGContext.h"
#include "coregraphics/Canvas.h"
#include "foundation/DeviceRoot.h"
#include "foundation/Dispatch.h"
#include "foundation/Random.h"
#include "preview/PreviewCell.h"
#include "preview/imaging/MarkImages.h"
#include "quartzcore/Presentation.h"
#include "quartzcore/RenderServer.h"
#include "rastergraphics/RasterGraphics.h"
#include "settings/ColorValues.h"
#include "settings/Settings.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace tallyforge {

namespace {

UIImage Icon180() {
    auto bitmap = std::make_shared<CGImage>(180, 180);
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 180; ++x)
            bitmap->row(y)[x] = 0xFF000000U | (arc4random() & 0xFFFFFFU);
    }
    return UIImage::imageWithCGImage(bitmap, 1, UIImageOrientationUp);
}

void ParseColor(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(ColorFromHexString("#3355FF"));
}
BENCHMARK(ParseColor);

void FormatColor(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(HexStringFromColor(51, 85.5, 255));
}
BENCHMARK(FormatColor);

void AutomaticColorOf180(benchmark::State& state) {
    UIImage icon = Icon180();
    auto mode = static_cast<AutomaticColorMode>(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(AutomaticColorFromImage(icon, mode));
}
BENCHMARK(AutomaticColorOf180)->Arg(1)->Arg(2)->Arg(3);

void ReadSystemMark(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(SystemMarkImage(kPlateArtwork));
}
BENCHMARK(ReadSystemMark);

void TintPlate(benchmark::State& state) {
    UIImage plate = SystemMarkImage(kPlateArtwork);
    UIColor color = UIColor::colorWithRed(0.2, 0.3, 1, 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(TintImage(plate, color, 0.65));
}
BENCHMARK(TintPlate);

void ResizeIcon(benchmark::State& state) {
    UIImage icon = Icon180();
    for (auto _ : state)
        benchmark::DoNotOptimize(ResizeImage(icon, 24, 24));
}
BENCHMARK(ResizeIcon);

void TurnPlate(benchmark::State& state) {
    UIImage plate = SystemMarkImage(kPlateArtwork);
    for (auto _ : state)
        benchmark::DoNotOptimize(TurnImageUpsideDown(plate));
}
BENCHMARK(TurnPlate);

void DrawShape(benchmark::State& state) {
    UIImage plate = SystemMarkImage(kPlateArtwork);
    UIColor color = UIColor::redColor();
    for (auto _ : state)
        benchmark::DoNotOptimize(ShapeImage(plate, color, static_cast<int>(state.range(0)), 1));
}
BENCHMARK(DrawShape)->DenseRange(1, 4);

void DrawBorderedShape(benchmark::State& state) {
    UIImage plate = SystemMarkImage(kPlateArtwork);
    UIColor fill = UIColor::redColor();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            BorderedShapeImage(static_cast<int>(state.range(0)), plate, fill, UIColor::whiteColor(), 1.5));
}
BENCHMARK(DrawBorderedShape)->Arg(0)->Arg(1)->Arg(4)->Arg(6);

void MakeGlow(benchmark::State& state) {
    UIView parent;
    for (auto _ : state) {
        auto glow = MakeGlowView(parent, UIColor::redColor(), kShapeStar, 1, 1, 1);
        glow->removeFromSuperview();
    }
}
BENCHMARK(MakeGlow);

/// A cell with all three marks, glows and three animations.
std::shared_ptr<PreviewCell> BusyCell() {
    auto set = [](const char* key, float value) {
        CFPreferencesSetAppValue(key, PropertyList::floatNumber(value), kSettingsDomain);
    };
    set("badgeglowalpha", 80);
    set("badgeshape", 4);
    set("badgeanimtype", 1);
    set("closeboxanimtype", 6);
    set("newdotanimtype", 11);
    CFPreferencesAppSynchronize(kSettingsDomain);
    auto cell = std::make_shared<PreviewCell>();
    cell->initWithSpecifier(std::make_shared<PSSpecifier>());
    cell->setFrame(CGRectMake(0, 0, 375, 150));
    return cell;
}

void LoadSnapshot(benchmark::State& state) {
    for (const SettingKey& key : SettingsKeyTable())
        CFPreferencesSetAppValue(key.name, *SettingsDefaults().objectForKey(key.name), kSettingsDomain);
    CFPreferencesAppSynchronize(kSettingsDomain);
    for (auto _ : state)
        LoadSettingsSnapshot();
}
BENCHMARK(LoadSnapshot);

void LoadSnapshotFromFile(benchmark::State& state) {
    for (auto _ : state) {
        CFPreferencesForgetAll();
        LoadSettingsSnapshot();
    }
}
BENCHMARK(LoadSnapshotFromFile);

void RebuildAllMarks(benchmark::State& state) {
    auto cell = BusyCell();
    for (auto _ : state)
        cell->realod();
}
BENCHMARK(RebuildAllMarks)->Unit(benchmark::kMicrosecond);

void PaintPreviewFrame(benchmark::State& state) {
    auto cell = BusyCell();
    CGImage bitmap(750, 300);
    auto canvas = Graphics::current()->makeCanvas(bitmap);
    double time = CACurrentMediaTime();
    for (auto _ : state) {
        time += 1.0 / 60;
        RenderServer::paint(*cell->layer(), time, *canvas, CGAffineTransformMakeScale(2, 2));
    }
}
BENCHMARK(PaintPreviewFrame)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    using namespace tallyforge;
    std::string root = (std::filesystem::temp_directory_path() / "tallyforge-bench-XXXXXX").string();
    if (!mkdtemp(root.data())) return 1;
    std::filesystem::copy(TALLYFORGE_RESOURCES "/stock", root,
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    if (!DeviceRoot::set(root)) return 1;
    Graphics::install(MakeRasterGraphics());
    SeedRandomSource(1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
    return 0;
}
