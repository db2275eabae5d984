// A device of 2,000 apps and 10,000 themes: the catalogue beside a loop that only opens, reads and closes the
// same files, opening the screen that chooses apps, and the lists of the screen that ties themes to apps.

#include "appselect/QuillonAppList.h"
#include "appselect/QuillonAppSelect.h"
#include "foundation/DeviceRoot.h"
#include "foundation/LocalizedCompare.h"
#include "foundation/NSKeyedArchiver.h"
#include "mobileservices/UIAssetManager.h"
#include "peers/ManyApps.h"
#include "rastergraphics/RasterGraphics.h"
#include "settings/SettingsKeys.h"
#include "themes/ConditionalThemesController.h"
#include "themes/ThemeFiles.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tallyforge {

namespace {

using bench::WriteFile;

constexpr int kApps = 2000;
constexpr int kThemes = 10'000;

std::vector<std::string> files; // of the catalogue, on this machine

void writeThemes(const std::string& root) {
    Dictionary theme = SettingsDefaults();
    for (int i = 0; i < kThemes; ++i) {
        const std::string number = std::to_string(i);
        theme.setObjectForKey(PropertyList::string("Theme " + number), kThemeNameKey);
        WriteFile(root + "/var/mobile/Documents/Tallyforge/theme_" + number + ".tft",
                  NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme)));
    }
}

void furnish(const std::string& root) {
    files = bench::InstallApps(root, kApps);
    writeThemes(root);
}

// The floor: nothing but the files.
void OpenReadClose(benchmark::State& state) {
    std::vector<char> buffer(size_t{1} << 20);
    for (auto _ : state) {
        size_t bytes = 0;
        for (const std::string& file : files) {
            const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
            bytes +=
                static_cast<size_t>(std::max<ssize_t>(0, read(descriptor, buffer.data(), buffer.size())));
            close(descriptor);
        }
        benchmark::DoNotOptimize(bytes);
    }
    state.counters["files"] = static_cast<double>(files.size());
}
BENCHMARK(OpenReadClose)->Unit(benchmark::kMillisecond);

void Catalogue(benchmark::State& state) {
    size_t found = 0;
    for (auto _ : state)
        found = QuillonAppList::sharedApplicationList().allNonHiddenApplications().size();
    state.counters["apps"] = static_cast<double>(found);
}
BENCHMARK(Catalogue)->Unit(benchmark::kMillisecond);

void SortNames(benchmark::State& state) {
    const auto apps = QuillonAppList::sharedApplicationList().allApplications();
    for (auto _ : state) {
        std::vector<std::string> names;
        for (const auto& app : apps)
            names.push_back(app.second);
        std::ranges::sort(names,
                          [](const auto& a, const auto& b) { return localizedStandardCompare(a, b) < 0; });
        benchmark::DoNotOptimize(names.data());
    }
}
BENCHMARK(SortNames)->Unit(benchmark::kMillisecond);

// Two questions to the catalogue, the names sorted, and the rows on screen with their icons.
void OpenChooser(benchmark::State& state) {
    size_t cells = 0;
    for (auto _ : state) {
        auto screen = std::make_shared<QuillonAppSelect>();
        screen->view()->layoutIfNeeded();
        cells = screen->tableView()->indexPathsForVisibleRows().size();
    }
    state.counters["cells"] = static_cast<double>(cells);
}
BENCHMARK(OpenChooser)->Unit(benchmark::kMillisecond);

// The rows on screen alone, as scrolling brings them.
void ScrollAScreen(benchmark::State& state) {
    auto screen = std::make_shared<QuillonAppSelect>();
    screen->view()->layoutIfNeeded();
    const CGFloat page = 44 * 14;
    CGFloat at = 0;
    for (auto _ : state) {
        at = at > 44 * 1800 ? 0 : at + page;
        screen->tableView()->setContentOffset({0, at});
    }
}
BENCHMARK(ScrollAScreen)->Unit(benchmark::kMillisecond);

// The values and titles of both lists, as their rows ask for them when the screen opens.
void PerAppLists(benchmark::State& state) {
    size_t listed = 0;
    for (auto _ : state) {
        conditionalthemesListController screen;
        listed = screen.valueAppDataFromTarget().asArray()->size();
        listed += screen.titlesAppDataFromTarget().asArray()->size();
        listed += screen.valueThemeDataFromTarget().asArray()->size();
        listed += screen.titlesThemeDataFromTarget().asArray()->size();
    }
    state.counters["listed"] = static_cast<double>(listed);
}
BENCHMARK(PerAppLists)->Unit(benchmark::kMillisecond);

double residentMegabytes() {
    long pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    using namespace tallyforge;
    benchmark::Initialize(&argc, argv);
    const bench::BenchDevice device;
    Graphics::install(MakeRasterGraphics());
    RegisterMobileServices();
    furnish(device.root());
    localizedStandardCompare("a", "b");
    const double before = residentMegabytes();
    auto screen = std::make_shared<QuillonAppSelect>();
    screen->view()->layoutIfNeeded();
    std::printf("an open chooser of %d apps holds %.1f MiB more than none\n", kApps,
                residentMegabytes() - before);
    benchmark::RunSpecifiedBenchmarks();
    screen = nullptr;
    return 0;
}
