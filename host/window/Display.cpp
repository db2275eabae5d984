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

using Library = std::shared_ptr<void>;

Library load(const std::string& name) {
    void* const handle = dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL);
    return handle ? Library(handle, dlclose) : nullptr;
}

/// The toolkit's plugin for the platform: it may not be installed, or lack libraries of its own.
Status pluginLoads(const std::string& file) {
    const std::string path =
        QLibraryInfo::path(QLibraryInfo::PluginsPath).toStdString() + "/platforms/" + file;
    if (load(path)) return Done{};
    const char* reason = dlerror();
    return Error{reason ? reason : path + " cannot be loaded"};
}

/// Asks the X server as the toolkit will, authority and all, through the library that it uses.
Result<ReachableDisplay> reachX11(const std::string& display) {
    if (Status loads = pluginLoads("libqxcb.so"); !loads) return loads.error();
    const Library xcb = load("libxcb.so.1");
    if (!xcb) return Error{"libxcb.so.1 cannot be loaded"};
    auto* const connect = reinterpret_cast<void* (*)(const char*, int*)>(dlsym(xcb.get(), "xcb_connect"));
    auto* const failed = reinterpret_cast<int (*)(void*)>(dlsym(xcb.get(), "xcb_connection_has_error"));
    auto* const disconnect = reinterpret_cast<void (*)(void*)>(dlsym(xcb.get(), "xcb_disconnect"));
    if (!connect || !failed || !disconnect) return Error{"libxcb.so.1 is no X library"};
    const std::shared_ptr<void> connection(connect(display.c_str(), nullptr),
                                           [xcb, disconnect](void* it) { disconnect(it); });
    if (!connection || failed(connection.get()) != 0)
        return Error{"the X display " + display + " cannot be reached"};
    return ReachableDisplay{"xcb", connection};
}

Result<ReachableDisplay> reachWayland(const std::string& display) {
    if (Status loads = pluginLoads("libqwayland-generic.so"); !loads) return loads.error();
    const std::string path =
        display.front() == '/' ? display : environment("XDG_RUNTIME_DIR") + "/" + display;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return Error{path + ": name too long"};
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return ReachableDisplay{"wayland", nullptr};
    return ErrorOfErrno(errno).during("the Wayland display " + path + " cannot be reached");
}

} // namespace

Result<ReachableDisplay> FindDisplay() {
    const std::string wanted = environment("QT_QPA_PLATFORM");
    const std::string platform = wanted.substr(0, wanted.find_first_of(":;"));
    if (!platform.empty() && platform != "xcb" && !platform.starts_with("wayland"))
        return ReachableDisplay{platform, nullptr}; // whoever asks for another one knows why
    const std::string wayland = environment("WAYLAND_DISPLAY");
    const std::string x11 = environment("DISPLAY");
    if (wayland.empty() && x11.empty()) return Error{"neither DISPLAY nor WAYLAND_DISPLAY is set"};

    std::string reasons;
    const auto note = [&reasons](const std::string& reason) {
        reasons += (reasons.empty() ? "" : "; ") + reason;
    };
    if (!wayland.empty() && platform != "xcb") {
        auto reached = reachWayland(wayland);
        if (reached) return reached;
        note(reached.reason());
    }
    if (!x11.empty() && !platform.starts_with("wayland")) {
        auto reached = reachX11(x11);
        if (reached) return reached;
        note(reached.reason());
    }
    return Error{reasons.empty() ? "there is no display for " + platform : reasons};
}

} // namespace tallyforge
