#pragma once

#include "foundation/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// A connection to a D-Bus over a Unix socket that can do one thing: send signals without a body. To send a
/// single one takes a command 0.2 ms, where loading libsystemd for it takes 1.5.
class SignalSocket {
  public:
    using Deadline = std::chrono::steady_clock::time_point;
    enum class Outcome { done, tookTooLong, lost };

    /// Connects to the first of the address's Unix sockets that somebody listens on, and is greeted.
    static Outcome connect(std::string_view address, Deadline deadline,
                           std::optional<SignalSocket>& connected);

    /// Whether a signal can bear the names.
    static bool areValidNames(std::string_view interface, std::string_view member);
    /// The signal has left the process when this is done. After anything else the connection is of no more
    /// use.
    Outcome send(std::string_view path, std::string_view interface, std::string_view member,
                 Deadline deadline);

  private:
    explicit SignalSocket(FileDescriptor socket) : socket_(std::move(socket)) {}
    Outcome greet(Deadline deadline);
    Outcome write(const std::string& bytes, Deadline deadline);
    Outcome readSome(std::string& into, Deadline deadline);
    bool isStillConnected();

    FileDescriptor socket_;
    uint32_t serial_ = 0;
};

} // namespace tallyforge
