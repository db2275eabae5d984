#pragma once

#include "foundation/Result.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tallyforge {

/// The system-wide notify centre: a post reaches every process of the session. On this machine it is a signal
/// on the session bus: path /com/quillon/tallyforge, interface the name up to its last dot, member the rest.
/// Without a bus a post reaches nobody and is no error.
class CFNotificationCenter {
  public:
    ~CFNotificationCenter();
    /// Hears of every post of this process, whether or not there is a bus; for traces. Empty removes it.
    void setTrace(std::function<void(std::string_view name)> trace);

  private:
    CFNotificationCenter();
    friend CFNotificationCenter& CFNotificationCenterGetDarwinNotifyCenter();
    friend void CFNotificationCenterPostNotification(CFNotificationCenter&, std::string_view, const void*,
                                                     const void*, bool);
    struct Connection;
    std::unique_ptr<Connection> connection_;
    std::function<void(std::string_view)> trace_;
};

CFNotificationCenter& CFNotificationCenterGetDarwinNotifyCenter();
/// Darwin notifications carry neither object nor user info: both are nullptr. The post has left the process
/// when this returns.
void CFNotificationCenterPostNotification(CFNotificationCenter& center, std::string_view name,
                                          const void* object, const void* userInfo, bool deliverImmediately);

/// Listens for the system's notifications of all processes.
class DarwinNotificationListener {
  public:
    /// Fails, with what is missing, where there is no session bus.
    static Result<std::unique_ptr<DarwinNotificationListener>>
    create(std::function<void(std::string_view name)> heard);
    ~DarwinNotificationListener();

    /// Waits up to the given time (negative: as long as it takes) and tells what has come. False when the bus
    /// has gone away.
    bool wait(double seconds);
    /// For an event loop: the descriptor to poll for reading; then call wait(0).
    int fileDescriptor() const;

  private:
    struct Connection;
    explicit DarwinNotificationListener(std::unique_ptr<Connection> connection);
    std::unique_ptr<Connection> connection_;
};

} // namespace tallyforge
