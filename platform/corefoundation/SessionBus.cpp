#include "corefoundation/SessionBus.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>

namespace tallyforge {

namespace {

template <class Function>
bool Find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool FindAll(void* library, BusLibrary& table) {
    return Find(library, "sd_bus_new", table.create) &&
           Find(library, "sd_bus_set_address", table.setAddress) &&
           Find(library, "sd_bus_set_bus_client", table.setBusClient) &&
           Find(library, "sd_bus_set_method_call_timeout", table.setCallTimeout) &&
           Find(library, "sd_bus_start", table.start) && Find(library, "sd_bus_is_ready", table.isReady) &&
           Find(library, "sd_bus_process", table.process) && Find(library, "sd_bus_wait", table.wait) &&
           Find(library, "sd_bus_get_fd", table.fileDescriptor) &&
           Find(library, "sd_bus_close", table.close) && Find(library, "sd_bus_unref", table.unref) &&
           Find(library, "sd_bus_add_match", table.addMatch) &&
           Find(library, "sd_bus_message_get_interface", table.messageInterface) &&
           Find(library, "sd_bus_message_get_member", table.messageMember);
}

/// A path as it is written in a bus address: all but these characters as %XX.
std::string EscapedForAddress(std::string_view path) {
    constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_/.\\*";
    constexpr std::string_view digits = "0123456789abcdef";
    std::string escaped;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (plain.find(c) != std::string_view::npos)
            escaped += c;
        else
            escaped.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return escaped;
}

uint64_t MicrosecondsUntil(SessionBus::Deadline deadline) {
    if (deadline == SessionBus::Deadline::max()) return UINT64_MAX;
    const auto left = deadline - std::chrono::steady_clock::now();
    const auto microseconds = std::chrono::ceil<std::chrono::microseconds>(left).count();
    return microseconds > 0 ? static_cast<uint64_t>(microseconds) : 0;
}

} // namespace

const BusLibrary* BusLibrary::load() {
    static const BusLibrary* const loaded = []() -> const BusLibrary* {
        static BusLibrary table{};
        void* library = dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL); // stays for good
        return library && FindAll(library, table) ? &table : nullptr;
    }();
    return loaded;
}

void SessionBus::Closer::operator()(sd_bus* bus) const {
    const BusLibrary* library = BusLibrary::load();
    library->close(bus); // not the flushing kind: that may wait without end
    library->unref(bus);
}

std::string SessionBus::address() {
    const char* given = secure_getenv("DBUS_SESSION_BUS_ADDRESS");
    if (given && *given) return given;
    const char* runtime = secure_getenv("XDG_RUNTIME_DIR");
    if (!runtime || !*runtime) return {};
    const std::string socket = std::string(runtime) + "/bus";
    if (access(socket.c_str(), F_OK) != 0) return {};
    return "unix:path=" + EscapedForAddress(socket);
}

Result<SessionBus> SessionBus::connect(const std::string& address, Deadline deadline) {
    if (address.empty())
        return Error{"no session bus (neither DBUS_SESSION_BUS_ADDRESS nor a bus in XDG_RUNTIME_DIR)"};
    SessionBus session;
    session.library_ = BusLibrary::load();
    if (!session.library_) return Error{"libsystemd.so.0 cannot be loaded"};
    const BusLibrary& library = *session.library_;
    sd_bus* bus = nullptr;
    if (library.create(&bus) < 0) return Error{"the session bus: out of memory"};
    session.bus_.reset(bus);
    constexpr uint64_t callTimeout = 1'000'000; // microseconds
    if (library.setAddress(bus, address.c_str()) < 0 || library.setBusClient(bus, 1) < 0 ||
        library.setCallTimeout(bus, callTimeout) < 0)
        return Error{"the session bus: its address is not usable"};
    if (library.start(bus) < 0) return Error{"the session bus: nobody answers at its address"};
    const int ready = session.runUntil(deadline, [&] { return library.isReady(bus) > 0; });
    if (ready == 0) return Error{"the session bus: no answer in time"};
    if (ready < 0) return Error{"the session bus: it refused the connection"};
    return session;
}

int SessionBus::runUntil(Deadline deadline, const std::function<bool()>& condition) {
    for (;;) {
        if (condition()) return 1;
        const int processed = library_->process(bus_.get(), nullptr);
        if (processed < 0) return -1;
        if (processed > 0) continue;
        const uint64_t left = MicrosecondsUntil(deadline);
        const int waited = library_->wait(bus_.get(), left);
        if (waited == -EINTR) return 0;
        if (waited < 0) return -1;
        if (waited == 0 && MicrosecondsUntil(deadline) == 0) return 0;
    }
}

} // namespace tallyforge
