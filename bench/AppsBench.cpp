// A device of 2,000 apps and 10,000 themes: the catalogue beside a loop that only opens, reads and closes the
// same files, opening the screen that chooses apps, and the lists of the screen that ties themes to apps.

#include "appselect/QuillonAppList.h"
#include "appselect/QuillonAppSelect.h"
#include "coregraphics/Canvas.h"
#include "foundation/DeviceRoot.h"
#include "foundation/LocalizedCompare.h"
#include "foundation/NSKeyedArchiver.h"
#include "foundation/PropertyListFormat.h"
#include "mobileservices/UIAssetManager.h"
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

constexpr int kApps = 2000;
constexpr int kSystemApps = 100; // of them
constexpr int kThemes = 10'000;

std::vector<std::string> files; // of the catalogue, on this machine

void writeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void writeList(const std::string& path, const Dictionary& list) {
    writeFile(path, BinaryPropertyList::Serialize(PropertyList::dictionary(list)));
    files.push_back(path);
}

Dictionary texts(const std::map<std::string, std::string>& entries) {
    Dictionary list;
    for (const auto& [key, value] : entries)
        list.setObjectForKey(PropertyList::string(value), key);
    return list;
}

// As large as the lists of the stock device's applications.
void installApp(const std::string& root, int index, const std::vector<uint8_t>& icon) {
    const std::string number = std::to_string(index);
    const bool system = index < kSystemApps;
    const std::string container = root + "/var/containers/Bundle/Application/C" + number + "/";
    const std::string bundle = (system ? root + "/Applications/App" : container + "App") + number + ".app/";
    Dictionary info = texts({{"CFBundleIdentifier", "com.example.app" + number},
                             {"CFBundleDisplayName", "App " + std::to_string(index * 7919 % kApps)},
                             {"CFBundleName", "App"},
                             {"CFBundleExecutable", "App" + number},
                             {"CFBundleInfoDictionaryVersion", "6.0"},
                             {"CFBundlePackageType", "APPL"},
                             {"CFBundleShortVersionString", "1.0." + number},
                             {"CFBundleVersion", number},
                             {"MinimumOSVersion", "7.0"},
                             {"DTPlatformName", "iphoneos"},
                             {"CFBundleIconFile", "Icon"}});
    info.setObjectForKey(PropertyList::array({PropertyList::integer(1), PropertyList::integer(2)}),
                         "UIDeviceFamily");
    writeList(bundle + "Info.plist", info);
    writeFile(bundle + "Icon@2x.png", icon);
    if (system) return;
    Dictionary facts = texts({{"artistName", "Maker " + number},
                              {"itemName", "App number " + number},
                              {"genre", "Games"},
                              {"kind", "software"},
                              {"softwareVersionBundleId", "com.example.app" + number}});
    facts.setObjectForKey(PropertyList::integer(9'100'000'000 + index), "itemId");
    writeList(container + "iTunesMetadata.plist", facts);
}

void writeThemes(const std::string& root) {
    Dictionary theme = SettingsDefaults();
    for (int i = 0; i < kThemes; ++i) {
        const std::string number = std::to_string(i);
        theme.setObjectForKey(PropertyList::string("Theme " + number), kThemeNameKey);
        writeFile(root + "/var/mobile/Documents/Tallyforge/theme_" + number + ".tft",
                  NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme)));
    }
}

void furnish(const std::string& root) {
    CGImage picture(120, 120);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.row(y)[x] =
                0xFF000000U | static_cast<uint32_t>(x * 2) << 16U | static_cast<uint32_t>(y * 2);
    const auto icon = Graphics::current()->encodePNG(picture);
    for (int i = 0; i < kApps; ++i)
        installApp(root, i, icon);
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
    std::string root = (std::filesystem::temp_directory_path() / "tallyforge-bench-XXXXXX").string();
    if (!mkdtemp(root.data()) || !DeviceRoot::set(root)) return 1;
    Graphics::install(MakeRasterGraphics());
    RegisterMobileServices();
    furnish(root);
    localizedStandardCompare("a", "b");
    const double before = residentMegabytes();
    auto screen = std::make_shared<QuillonAppSelect>();
    screen->view()->layoutIfNeeded();
    std::printf("an open chooser of %d apps holds %.1f MiB more than none\n", kApps,
                residentMegabytes() - before);
    benchmark::RunSpecifiedBenchmarks();
    screen = nullptr;
    std::filesystem::remove_all(root);
    return 0;
}
