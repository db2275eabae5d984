#include "corefoundation/CFNotificationCenter.h"

#include "corefoundation/SessionBus.h"

#include <optional>
#include <utility>

namespace tallyforge {

namespace {

using namespace std::chrono_literals;

/// How long one post may wait for the bus, and for how long a bus that kept a post waiting is left alone.
constexpr auto patience = 900ms;
constexpr auto respite = 30s;

/// A name divided into the interface and the member of a signal.
struct SignalName {
    std::string interface;
    std::string member;
};

std::optional<SignalName> Divide(std::string_view name) {
    const size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || name.find('\0') != std::string_view::npos) return std::nullopt;
    return SignalName{std::string(name.substr(0, dot)), std::string(name.substr(dot + 1))};
}

} // namespace

struct CFNotificationCenter::Connection {
    std::optional<SessionBus> bus;
    SessionBus::Deadline leftAloneUntil{};
    std::string leftAloneAddress;

    void post(const SignalName& name);
    bool connect(SessionBus::Deadline deadline);
    int send(const SignalName& name, SessionBus::Deadline deadline);
    void leaveAlone();
};

/// Sends the signal, over a new connection when the old one turns out to be lost.
void CFNotificationCenter::Connection::post(const SignalName& name) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (int tries = 0; tries < 2; ++tries) {
        const bool connected = bus.has_value();
        if (!connected && !connect(deadline)) return;
        const int sent = send(name, deadline);
        if (sent > 0) return;
        bus.reset();
        if (sent == 0) leaveAlone();
        if (sent == 0 || !connected) return;
    }
}

bool CFNotificationCenter::Connection::connect(SessionBus::Deadline deadline) {
    const std::string address = SessionBus::address();
    if (address.empty()) return false;
    if (std::chrono::steady_clock::now() < leftAloneUntil && address == leftAloneAddress) return false;
    bool mute = false;
    auto connected = SessionBus::connect(address, deadline, mute);
    if (mute) leaveAlone();
    if (!connected) return false;
    bus = std::move(*connected);
    return true;
}

/// 1 when the signal has left the process, 0 when the bus took too long, -1 when the connection is lost.
int CFNotificationCenter::Connection::send(const SignalName& name, SessionBus::Deadline deadline) {
    const BusLibrary& library = bus->library();
    if (!library.interfaceIsValid(name.interface.c_str()) || !library.memberIsValid(name.member.c_str()))
        return 1; // no signal can bear this name, so it is nobody's
    sd_bus_message* message = nullptr;
    if (library.newSignal(bus->get(), &message, darwinObjectPath, name.interface.c_str(),
                          name.member.c_str()) < 0)
        return -1;
    const int sent = library.send(bus->get(), message, nullptr);
    library.unrefMessage(message);
    if (sent < 0) return -1;
    return bus->runUntil(deadline, [this] { return bus->everythingSent(); });
}

void CFNotificationCenter::Connection::leaveAlone() {
    leftAloneUntil = std::chrono::steady_clock::now() + respite;
    leftAloneAddress = SessionBus::address();
}

CFNotificationCenter::CFNotificationCenter() : connection_(std::make_unique<Connection>()) {}

CFNotificationCenter::~CFNotificationCenter() = default;

void CFNotificationCenter::setTrace(std::function<void(std::string_view)> trace) {
    trace_ = std::move(trace);
}

CFNotificationCenter& CFNotificationCenterGetDarwinNotifyCenter() {
    static CFNotificationCenter center;
    return center;
}

void CFNotificationCenterPostNotification(CFNotificationCenter& center, std::string_view name, const void*,
                                          const void*, bool) {
    if (center.trace_) center.trace_(name);
    if (const auto divided = Divide(name)) center.connection_->post(*divided);
}

} // namespace tallyforge
