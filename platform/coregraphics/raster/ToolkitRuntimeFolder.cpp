#include "rastergraphics/ToolkitRuntimeFolder.h"

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge {

namespace {

constexpr const char* kVariable = "XDG_RUNTIME_DIR";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// Whether the toolkit takes it: a folder that is the user's own and nobody else's.
bool suits(const std::string& folder) {
    struct stat status {};
    constexpr mode_t kRights = 07777;
    return !folder.empty() && lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & kRights) == S_IRWXU;
}

std::string newFolder() {
    const std::string temporary = environment("TMPDIR");
    const std::string stem =
        (temporary.empty() ? "/tmp" : temporary) + "/tallyforge-run-" + std::to_string(getpid());
    for (int i = 0; i < 16; ++i) {
        std::string folder = stem + "-" + std::to_string(i);
        if (mkdir(folder.c_str(), S_IRWXU) == 0) return folder;
        if (errno != EEXIST) break;
    }
    return {};
}

} // namespace

ToolkitRuntimeFolder::ToolkitRuntimeFolder() : former_(environment(kVariable)) {
    const bool mayHoldTheDisplay = !former_.empty() && !environment("WAYLAND_DISPLAY").empty();
    if (mayHoldTheDisplay || suits(former_)) return;
    folder_ = newFolder();
    if (!folder_.empty()) setenv(kVariable, folder_.c_str(), 1);
}

ToolkitRuntimeFolder::~ToolkitRuntimeFolder() {
    if (folder_.empty()) return;
    if (former_.empty())
        unsetenv(kVariable);
    else
        setenv(kVariable, former_.c_str(), 1);
    rmdir(folder_.c_str());
}

} // namespace tallyforge
