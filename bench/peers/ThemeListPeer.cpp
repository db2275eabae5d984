// What a folder of 10,000 themes costs beside a loop that only opens, reads and closes the same files.
// Of the command it is the whole process.

#include "ManyThemes.h"
#include "PairedRuns.h"
#include "themes/ThemeFiles.h"
#include "themes/ThemesController.h"
#include "uikit/UIAlertView.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tallyforge::bench {

namespace {

constexpr int kThemes = 10'000;

void OpenPicker() {
    const auto controller = std::make_shared<themesListController>();
    controller->loadTheme();
    const auto alert = UIAlertView::visibleAlerts().back();
    const auto* picker = dynamic_cast<UIPickerView*>(alert->accessoryView().get());
    Demand(picker && picker->numberOfRowsInComponent(0) == kThemes, "the picker lacks themes");
    alert->clickButton(0);
}

void RunCommand(const char* program, const BenchDevice& device) {
    const pid_t child = vfork();
    if (child == 0) {
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDOUT_FILENO);
        execl(program, program, "--root", device.root().c_str(), "theme", "list", nullptr);
        _exit(127);
    }
    int status = 0;
    Demand(waitpid(child, &status, 0) == child && status == 0, "theme list failed");
}

} // namespace

} // namespace tallyforge::bench

int main(int count, char** words) {
    using namespace tallyforge;
    using namespace tallyforge::bench;
    const PairedRuns runs(count, words, "10,000 themes listed, and their files opened, read and closed.",
                          PairedRuns::Clock::wall);
    const BenchDevice device;
    const auto files = WriteThemes(device, kThemes);
    const auto bare = [&] { ReadFiles(files); };
    const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "tallyforge";
    const auto list = [] { Demand(ListThemes().themes.size() == kThemes, "themes are missing"); };
    PairedRuns::remark("list-themes", "ours reads on all cores; of the processor it takes " +
                                          PairedRuns::figure(PairedRuns::secondsOf(list) * 1e3, 1) +
                                          " ms, the peer " +
                                          PairedRuns::figure(PairedRuns::secondsOf(bare) * 1e3, 1) + " ms");
    runs.measure("list-themes", list, bare);
    runs.measure("open-theme-picker", OpenPicker, bare);
    runs.measure(
        "theme-list-command", [&] { RunCommand(program.c_str(), device); }, bare);
    return 0;
}
