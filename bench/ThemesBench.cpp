// What a folder of 10,000 themes costs beside a loop that only opens, reads and closes the same files. The
// two are run in turns, so that a machine that is busy for a while is busy for both; the aim is 1.4 times at
// most. Usage: themes_bench TALLYFORGE; the command's own listing is measured as a whole process.

#include "foundation/DeviceRoot.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/SettingsKeys.h"
#include "themes/ThemeFiles.h"
#include "themes/ThemesController.h"
#include "uikit/UIAlertView.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tallyforge {

namespace {

constexpr int kThemes = 10'000;
constexpr int kRounds = 15;

/// A device root on the disk that TMPDIR names, with the themes in it.
class Device {
  public:
    Device() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data()) || !DeviceRoot::set(pattern)) std::abort();
        root_ = pattern;
        std::filesystem::create_directories(folder());
        Dictionary theme = SettingsDefaults();
        for (int i = 0; i < kThemes; ++i) {
            theme.setObjectForKey(PropertyList::string("Theme " + std::to_string(i)), kThemeNameKey);
            const auto bytes = NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme));
            files_.push_back(folder() + "/theme_" + std::to_string(i) + ".tft");
            std::ofstream(files_.back(), std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::streamsize>(bytes.size()));
        }
    }
    ~Device() { std::filesystem::remove_all(root_); }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    const std::string& root() const { return root_; }
    const std::vector<std::string>& files() const { return files_; }

  private:
    std::string folder() const { return root_ + "/var/mobile/Documents/Tallyforge"; }
    std::string root_;
    std::vector<std::string> files_;
};

void BareLoop(const Device& device) {
    std::array<char, 65'536> bytes{};
    for (const std::string& file : device.files()) {
        const int opened = open(file.c_str(), O_RDONLY | O_CLOEXEC);
        if (opened < 0 || read(opened, bytes.data(), bytes.size()) <= 0) std::abort();
        close(opened);
    }
}

void List() {
    if (ListThemes().themes.size() != kThemes) std::abort();
}

void OpenPicker() {
    const auto controller = std::make_shared<themesListController>();
    controller->loadTheme();
    const auto alert = UIAlertView::visibleAlerts().back();
    const auto* picker = dynamic_cast<UIPickerView*>(alert->accessoryView().get());
    if (!picker || picker->numberOfRowsInComponent(0) != kThemes) std::abort();
    alert->clickButton(0);
}

void RunCommand(const char* command, const Device& device) {
    const pid_t child = fork();
    if (child == 0) {
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDOUT_FILENO);
        execl(command, command, "--root", device.root().c_str(), "theme", "list", nullptr);
        _exit(127);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0) std::abort();
}

double MillisecondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Compare(const char* name, const Device& device, const std::function<void()>& work) {
    std::vector<double> ours, bare, ratios;
    for (int round = 0; round < kRounds; ++round) {
        const bool first = (round & 1) == 0;
        if (first) bare.push_back(MillisecondsOf([&] { BareLoop(device); }));
        ours.push_back(MillisecondsOf(work));
        if (!first) bare.push_back(MillisecondsOf([&] { BareLoop(device); }));
        ratios.push_back(ours.back() / bare.back());
    }
    std::printf("%-12s %7.1f ms   loop %7.1f ms   ratio %.2f   best %.1f / %.1f\n", name, Median(ours),
                Median(bare), Median(ratios), *std::min_element(ours.begin(), ours.end()),
                *std::min_element(bare.begin(), bare.end()));
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    using namespace tallyforge;
    const Device device;
    Compare("list", device, List);
    Compare("open picker", device, OpenPicker);
    if (argc > 1) Compare("theme list", device, [&] { RunCommand(argv[1], device); });
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    std::printf("peak memory %.1f MiB\n", static_cast<double>(used.ru_maxrss) / 1024);
    return 0;
}
