#include "corefoundation/SignalSocket.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tallyforge {

namespace {

// As D-Bus has it: "Message Format", "Authentication Protocol", "Server Addresses".
enum : uint8_t { kMethodCall = 1, kMethodReturn = 2, kError = 3, kSignal = 4 };
enum : uint8_t { kPath = 1, kInterface = 2, kMember = 3, kDestination = 6 };
constexpr uint8_t kNoReplyExpected = 1;
constexpr size_t kFixedHeader = 16;
constexpr size_t kLongestName = 255;
constexpr size_t kLongestAnswer = 65'536; // to the greeting; real ones take some hundred bytes

struct Field {
    uint8_t code;
    char type;
    std::string_view text;
};

void append(std::string& bytes, uint32_t number) {
    std::array<char, sizeof number> raw{};
    std::memcpy(raw.data(), &number, sizeof number);
    bytes.append(raw.data(), raw.size());
}

void pad(std::string& bytes) {
    bytes.resize((bytes.size() + 7) / 8 * 8);
}

std::string Message(uint8_t type, uint8_t flags, uint32_t serial, std::initializer_list<Field> fields) {
    std::string listed;
    for (const Field& field : fields) {
        pad(listed);
        listed.append({static_cast<char>(field.code), 1, field.type, 0});
        append(listed, static_cast<uint32_t>(field.text.size()));
        listed.append(field.text).append(1, '\0');
    }
    std::string bytes;
    bytes.append({std::endian::native == std::endian::little ? 'l' : 'B', static_cast<char>(type),
                  static_cast<char>(flags), 1});
    append(bytes, 0); // of the body
    append(bytes, serial);
    append(bytes, static_cast<uint32_t>(listed.size()));
    bytes += listed;
    pad(bytes);
    return bytes;
}

uint32_t NumberAt(std::string_view bytes, size_t at, bool little) {
    uint32_t number = 0;
    for (size_t i = 0; i < 4; ++i)
        number |= uint32_t{static_cast<unsigned char>(bytes[at + i])} << 8 * (little ? i : 3 - i);
    return number;
}

/// The size of the message that the bytes begin with, as far as it can be told; nothing when they are none.
std::optional<size_t> MessageSize(std::string_view bytes) {
    if (bytes.size() < kFixedHeader) return kFixedHeader;
    const bool little = bytes[0] == 'l';
    if (!little && bytes[0] != 'B') return std::nullopt;
    const size_t body = NumberAt(bytes, 4, little), fields = NumberAt(bytes, 12, little);
    if (body > kLongestAnswer || fields > kLongestAnswer) return std::nullopt;
    return kFixedHeader + (fields + 7) / 8 * 8 + body;
}

std::string Hexadecimal(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text)
        result.append(
            {digits[static_cast<unsigned char>(c) >> 4], digits[static_cast<unsigned char>(c) & 15]});
    return result;
}

/// The value with its %XX undone.
std::string Unescaped(std::string_view value) {
    std::string text;
    for (size_t at = 0; at < value.size(); ++at) {
        unsigned code = 0;
        if (value[at] == '%' && at + 2 < value.size() &&
            std::from_chars(value.data() + at + 1, value.data() + at + 3, code, 16).ptr ==
                value.data() + at + 3) {
            text += static_cast<char>(code);
            at += 2;
        } else {
            text += value[at];
        }
    }
    return text;
}

/// The socket that one entry of an address names; nothing when it is not one of a file or an abstract one.
struct SocketName {
    sockaddr_un address{};
    socklen_t size = 0;
};
std::optional<SocketName> SocketOf(std::string_view entry) {
    constexpr std::string_view transport = "unix:";
    if (!entry.starts_with(transport)) return std::nullopt;
    entry.remove_prefix(transport.size());
    while (!entry.empty()) {
        const std::string_view pair = entry.substr(0, entry.find(','));
        entry.remove_prefix(std::min(entry.size(), pair.size() + 1));
        const bool path = pair.starts_with("path="), abstract = pair.starts_with("abstract=");
        if (!path && !abstract) continue;
        const std::string name =
            (abstract ? std::string(1, '\0') : std::string()) + Unescaped(pair.substr(pair.find('=') + 1));
        SocketName socket;
        if (name.size() >= sizeof socket.address.sun_path) return std::nullopt;
        socket.address.sun_family = AF_UNIX;
        std::memcpy(socket.address.sun_path, name.data(), name.size());
        socket.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size() + (path ? 1 : 0));
        return socket;
    }
    return std::nullopt;
}

int MillisecondsUntil(SignalSocket::Deadline deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<int64_t>(left.count(), 0, 1'000'000));
}

/// Whether the socket can be read from, or written to, before the time is up.
bool WaitFor(int socket, int16_t event, SignalSocket::Deadline deadline) {
    pollfd waited{socket, event, 0};
    for (;;) {
        const int ready = poll(&waited, 1, MillisecondsUntil(deadline));
        if (ready >= 0 || errno != EINTR) return ready > 0;
    }
}

} // namespace

SignalSocket::Outcome SignalSocket::connect(std::string_view address, Deadline deadline,
                                            std::optional<SignalSocket>& connected) {
    while (!address.empty()) {
        const std::string_view entry = address.substr(0, address.find(';'));
        address.remove_prefix(std::min(address.size(), entry.size() + 1));
        const auto name = SocketOf(entry);
        if (!name) continue;
        FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (!socket) return Outcome::lost;
        const auto* to = reinterpret_cast<const sockaddr*>(&name->address);
        while (::connect(socket.get(), to, name->size) != 0) {
            // EAGAIN: so many wait there already that a queue is full.
            if (errno == EAGAIN && MillisecondsUntil(deadline) > 0)
                poll(nullptr, 0, 1);
            else if (errno == EAGAIN)
                return Outcome::tookTooLong;
            else if (errno != EINTR)
                break;
        }
        sockaddr_un peer{};
        socklen_t size = sizeof peer;
        if (getpeername(socket.get(), reinterpret_cast<sockaddr*>(&peer), &size) != 0) continue;
        SignalSocket made(std::move(socket));
        const Outcome greeted = made.greet(deadline);
        if (greeted == Outcome::done) connected = std::move(made);
        return greeted;
    }
    return Outcome::lost;
}

/// Says who this is and asks for a name on the bus, all at once: a bus that takes the one takes the other.
SignalSocket::Outcome SignalSocket::greet(Deadline deadline) {
    constexpr std::string_view bus = "org.freedesktop.DBus";
    std::string greeting(1, '\0');
    greeting += "AUTH EXTERNAL " + Hexadecimal(std::to_string(geteuid())) + "\r\nBEGIN\r\n";
    greeting += Message(kMethodCall, 0, ++serial_,
                        {{kPath, 'o', "/org/freedesktop/DBus"},
                         {kDestination, 's', bus},
                         {kInterface, 's', bus},
                         {kMember, 's', "Hello"}});
    if (const Outcome sent = write(greeting, deadline); sent != Outcome::done) return sent;
    std::string answer;
    size_t message = 0; // where the first message begins that has not been looked at
    for (;;) {
        if (message == 0) {
            const size_t end = answer.find("\r\n");
            if (end != std::string::npos && !answer.starts_with("OK")) return Outcome::lost; // refused
            if (end != std::string::npos) message = end + 2;
        }
        while (message > 0) {
            const std::string_view rest = std::string_view(answer).substr(message);
            const auto size = MessageSize(rest);
            if (!size || *size > kLongestAnswer) return Outcome::lost;
            if (rest.size() < *size) break;
            if (rest[1] == kMethodReturn) return Outcome::done;
            if (rest[1] == kError) return Outcome::lost;
            message += *size;
        }
        if (answer.size() > kLongestAnswer) return Outcome::lost;
        if (const Outcome got = readSome(answer, deadline); got != Outcome::done) return got;
    }
}

bool SignalSocket::areValidNames(std::string_view interface, std::string_view member) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    const auto isElement = [&](std::string_view text) {
        return !text.empty() && isLetter(text.front()) &&
               std::ranges::all_of(text, [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); });
    };
    if (interface.size() > kLongestName || member.size() > kLongestName || !isElement(member)) return false;
    if (interface.find('.') == std::string_view::npos) return false;
    for (size_t from = 0; from <= interface.size();) {
        const size_t end = std::min(interface.find('.', from), interface.size());
        if (!isElement(interface.substr(from, end - from))) return false;
        from = end + 1;
    }
    return true;
}

SignalSocket::Outcome SignalSocket::send(std::string_view path, std::string_view interface,
                                         std::string_view member, Deadline deadline) {
    if (!isStillConnected()) return Outcome::lost;
    return write(Message(kSignal, kNoReplyExpected, ++serial_,
                         {{kPath, 'o', path}, {kInterface, 's', interface}, {kMember, 's', member}}),
                 deadline);
}

/// Reads away what the bus has said since, which is of no interest; not without end, should it never stop.
bool SignalSocket::isStillConnected() {
    std::array<char, 4096> ignored{};
    for (size_t read = 0; read < kLongestAnswer;) {
        const ssize_t got = recv(socket_.get(), ignored.data(), ignored.size(), MSG_DONTWAIT);
        if (got == 0 || (got < 0 && errno != EINTR)) return got < 0 && errno == EAGAIN;
        read += static_cast<size_t>(std::max<ssize_t>(got, 1));
    }
    return true;
}

SignalSocket::Outcome SignalSocket::write(const std::string& bytes, Deadline deadline) {
    std::string_view left = bytes;
    while (!left.empty()) {
        const ssize_t sent = ::send(socket_.get(), left.data(), left.size(), MSG_NOSIGNAL);
        if (sent >= 0)
            left.remove_prefix(static_cast<size_t>(sent));
        else if (errno == EAGAIN) {
            if (!WaitFor(socket_.get(), POLLOUT, deadline)) return Outcome::tookTooLong;
        } else if (errno != EINTR)
            return Outcome::lost;
    }
    return Outcome::done;
}

SignalSocket::Outcome SignalSocket::readSome(std::string& into, Deadline deadline) {
    std::array<char, 1024> some{};
    for (;;) {
        const ssize_t got = recv(socket_.get(), some.data(), some.size(), 0);
        if (got > 0) {
            into.append(some.data(), static_cast<size_t>(got));
            return Outcome::done;
        }
        if (got == 0 || (errno != EAGAIN && errno != EINTR)) return Outcome::lost;
        if (!WaitFor(socket_.get(), POLLIN, deadline)) return Outcome::tookTooLong;
    }
}

} // namespace tallyforge
