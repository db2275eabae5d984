#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/SessionBus.h"

#include <cmath>
#include <utility>

namespace tallyforge {

namespace {

constexpr auto patience = std::chrono::seconds(5);
/// Beyond this a wait is as good as endless, and its end would not fit the clock.
constexpr double longestWait = 1e8;

SessionBus::Deadline DeadlineAfter(double seconds) {
    if (seconds < 0 || std::isnan(seconds) || seconds > longestWait) return SessionBus::Deadline::max();
    return std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                                  std::chrono::duration<double>(seconds));
}

} // namespace

struct DarwinNotificationListener::Connection {
    SessionBus bus;
    std::function<void(std::string_view)> heard;
    uint64_t count = 0;

    static int tell(sd_bus_message* message, void* self, sd_bus_error*);
};

int DarwinNotificationListener::Connection::tell(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& connection = *static_cast<Connection*>(self);
    const char* interface = connection.bus.library().messageInterface(message);
    const char* member = connection.bus.library().messageMember(message);
    if (!interface || !member) return 0;
    ++connection.count;
    if (connection.heard) connection.heard(std::string(interface) + "." + member);
    return 0;
}

Result<std::unique_ptr<DarwinNotificationListener>>
DarwinNotificationListener::create(std::function<void(std::string_view)> heard) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    auto bus = SessionBus::connect(SessionBus::address(), deadline);
    if (!bus) return bus.error();
    auto connection = std::make_unique<Connection>();
    connection->bus = std::move(*bus);
    connection->heard = std::move(heard);
    // Returns when the bus has confirmed the match, so that no later post is missed.
    const std::string match = std::string("type='signal',path='") + darwinObjectPath + "'";
    const BusLibrary& library = connection->bus.library();
    if (library.addMatch(connection->bus.get(), nullptr, match.c_str(), &Connection::tell, connection.get()) <
        0)
        return Error{"the session bus: it refused to pass notifications on"};
    return std::unique_ptr<DarwinNotificationListener>(new DarwinNotificationListener(std::move(connection)));
}

DarwinNotificationListener::DarwinNotificationListener(std::unique_ptr<Connection> connection)
    : connection_(std::move(connection)) {}

DarwinNotificationListener::~DarwinNotificationListener() = default;

bool DarwinNotificationListener::wait(double seconds) {
    auto& bus = connection_->bus;
    const uint64_t before = connection_->count;
    if (bus.runUntil(DeadlineAfter(seconds), [&] { return connection_->count != before; }) < 0) return false;
    // What has come along with it is told too.
    const BusLibrary& library = bus.library();
    int processed = 0;
    do {
        processed = library.process(bus.get(), nullptr);
    } while (processed > 0);
    return processed == 0;
}

int DarwinNotificationListener::fileDescriptor() const {
    return connection_->bus.library().fileDescriptor(connection_->bus.get());
}

} // namespace tallyforge
