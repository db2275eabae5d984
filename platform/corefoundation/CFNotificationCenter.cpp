#include "corefoundation/CFNotificationCenter.h"

#include "corefoundation/SessionBus.h"
#include "corefoundation/SignalSocket.h"

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
    std::optional<SignalSocket> socket;
    SignalSocket::Deadline leftAloneUntil{};
    std::string leftAloneAddress;

    void post(const SignalName& name);
    SignalSocket::Outcome connect(SignalSocket::Deadline deadline);
    void leaveAlone();
};

/// Sends the signal, over a new connection when the old one turns out to be lost.
void CFNotificationCenter::Connection::post(const SignalName& name) {
    using Outcome = SignalSocket::Outcome;
    if (!SignalSocket::areValidNames(name.interface, name.member))
        return; // no signal can bear this name, so it is nobody's
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (int tries = 0; tries < 2; ++tries) {
        const bool connected = socket.has_value();
        Outcome outcome = connected ? Outcome::done : connect(deadline);
        if (outcome == Outcome::done)
            outcome = socket->send(darwinObjectPath, name.interface, name.member, deadline);
        if (outcome == Outcome::done) return;
        socket.reset();
        if (outcome == Outcome::tookTooLong) leaveAlone();
        if (outcome == Outcome::tookTooLong || !connected) return;
    }
}

SignalSocket::Outcome CFNotificationCenter::Connection::connect(SignalSocket::Deadline deadline) {
    const std::string address = SessionBus::address();
    if (address.empty()) return SignalSocket::Outcome::lost;
    if (std::chrono::steady_clock::now() < leftAloneUntil && address == leftAloneAddress)
        return SignalSocket::Outcome::lost;
    return SignalSocket::connect(address, deadline, socket);
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
