#include "window/Display.h"

#include "foundation/FileDescriptor.h"

#include <QLibraryInfo>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

namespace tallyforge {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

struct Library {
    void operator()(void* handle) const { dlclose(handle); }
};
using LibraryHandle = std::unique_ptr<void, Library>;

/// The toolkit's plugin for the platform: it may not be installed, or lack libraries of its own.
Status pluginLoads(const std::string& file) {
    const std::string path =
        QLibraryInfo::path(QLibraryInfo::PluginsPath).toStdString() + "/platforms/" + file;
    if (LibraryHandle(dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL))) return Done{};
    const char* reason = dlerror();
    return Error{reason ? reason : path + " cannot be loaded"};
}

/// Asks the X server as the toolkit will, authority and all, through the library that it uses.
Status reachX11(const std::string& display) {
    if (Status loads = pluginLoads("libqxcb.so"); !loads) return loads;
    const LibraryHandle xcb(dlopen("libxcb.so.1", RTLD_LAZY | RTLD_LOCAL));
    if (!xcb) return Error{"libxcb.so.1 cannot be loaded"};
    struct Connection;
    auto* const connect =
        reinterpret_cast<Connection* (*)(const char*, int*)>(dlsym(xcb.get(), "xcb_connect"));
    auto* const failed = reinterpret_cast<int (*)(Connection*)>(dlsym(xcb.get(), "xcb_connection_has_error"));
    auto* const disconnect = reinterpret_cast<void (*)(Connection*)>(dlsym(xcb.get(), "xcb_disconnect"));
    if (!connect || !failed || !disconnect) return Error{"libxcb.so.1 is no X library"};
    Connection* const connection = connect(display.c_str(), nullptr);
    const bool reached = connection && failed(connection) == 0;
    disconnect(connection); // also one that has failed
    return reached ? Status(Done{}) : Error{"the X display " + display + " cannot be reached"};
}

Status reachWayland(const std::string& display) {
    if (Status loads = pluginLoads("libqwayland-generic.so"); !loads) return loads;
    const std::string path = display.front() == '/' ? display : environment("XDG_RUNTIME_DIR") + "/" + display;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return Error{path + ": name too long"};
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return Done{};
    return Error{"the Wayland display " + path + " cannot be reached: " + ReasonOfErrno(errno)};
}

} // namespace

Result<std::string> FindDisplay() {
    const std::string wanted = environment("QT_QPA_PLATFORM");
    const std::string platform = wanted.substr(0, wanted.find_first_of(":;"));
    if (!platform.empty() && platform != "xcb" && !platform.starts_with("wayland"))
        return platform; // whoever asks for another one knows why
    const std::string wayland = environment("WAYLAND_DISPLAY");
    const std::string x11 = environment("DISPLAY");
    if (wayland.empty() && x11.empty())
        return Error{"neither DISPLAY nor WAYLAND_DISPLAY is set"};

    std::string reasons;
    const auto note = [&reasons](const Status& status) {
        reasons += (reasons.empty() ? "" : "; ") + status.reason();
    };
    if (!wayland.empty() && platform != "xcb") {
        const Status reached = reachWayland(wayland);
        if (reached) return std::string("wayland");
        note(reached);
    }
    if (!x11.empty() && !platform.starts_with("wayland")) {
        const Status reached = reachX11(x11);
        if (reached) return std::string("xcb");
        note(reached);
    }
    return Error{reasons.empty() ? "there is no display for " + platform : reasons};
}

} // namespace tallyforge
