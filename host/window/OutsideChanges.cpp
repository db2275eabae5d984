#include "window/OutsideChanges.h"

#include "foundation/DeviceRoot.h"
#include "settings/Settings.h"
#include "settings/SettingsKeys.h"

#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>

namespace tallyforge {

namespace {

constexpr std::string_view kFolder = "/var/mobile/Library/Preferences";
constexpr uint32_t kFileChanges = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
constexpr uint32_t kFolderGone = IN_DELETE_SELF | IN_MOVE_SELF;

} // namespace

OutsideChanges::OutsideChanges(std::function<void()> changed)
    : changed_(std::move(changed)), events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (events_) {
        watchFolder();
        folderNotifier_ = std::make_unique<QSocketNotifier>(events_.get(), QSocketNotifier::Read);
        QObject::connect(folderNotifier_.get(), &QSocketNotifier::activated, [this] { readFolderEvents(); });
    }
    listen();
}

// The folder comes into being with the first setting; until then the nearest one above tells of it.
void OutsideChanges::watchFolder() {
    if (watch_ >= 0) inotify_rm_watch(events_.get(), watch_);
    watch_ = -1;
    for (std::string_view path = kFolder; watch_ < 0; path = path.substr(0, path.rfind('/'))) {
        const FileDescriptor folder(
            DeviceRoot::open(path.empty() ? "/" : path, O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (folder) {
            const std::string link = "/proc/self/fd/" + std::to_string(folder.get());
            watch_ = inotify_add_watch(events_.get(), link.c_str(), kFileChanges | kFolderGone);
            watchesDomain_ = path == kFolder;
        }
        if (path.empty()) return;
    }
}

void OutsideChanges::readFolderEvents() {
    alignas(inotify_event) char buffer[8192];
    const std::string file = std::string(kSettingsDomain) + ".plist";
    bool concerned = false, again = false;
    for (ssize_t got = 0; (got = ::read(events_.get(), buffer, sizeof buffer)) > 0;) {
        for (const char* at = buffer; at < buffer + got;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(at);
            at += sizeof event + event.len;
            const std::string_view name = event.len > 0 ? event.name : "";
            if (event.wd != watch_ && !(event.mask & IN_Q_OVERFLOW)) continue; // of a watch that is over
            again = again || !watchesDomain_ || (event.mask & (kFolderGone | IN_IGNORED));
            concerned = concerned || name == file || (event.mask & IN_Q_OVERFLOW);
        }
    }
    if (again) watchFolder();
    if (again || concerned) changed_();
}

void OutsideChanges::listen() {
    auto listener = DarwinNotificationListener::create([this](std::string_view name) {
        if (name == kPrefsNotification) changed_();
    });
    if (!listener) return; // no bus: the file tells enough
    listener_ = std::move(*listener);
    busNotifier_ = std::make_unique<QSocketNotifier>(listener_->fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(busNotifier_.get(), &QSocketNotifier::activated, [this] {
        if (!listener_->wait(0)) busNotifier_->setEnabled(false); // the bus has gone away
    });
}

} // namespace tallyforge
