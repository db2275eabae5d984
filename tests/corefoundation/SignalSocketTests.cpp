// Sending signals without a library: what goes over the wire, and what is made of every kind of answer. The
// bus is played by the test.

#include "corefoundation/SignalSocket.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace tallyforge {

namespace {

using Outcome = SignalSocket::Outcome;
using namespace std::chrono_literals;

// A method return without fields: what the greeting wants to see.
const std::string kWelcome("l\2\1\1\0\0\0\0\1\0\0\0\0\0\0\0", 16);
const std::string kRefusal("l\3\1\1\0\0\0\0\1\0\0\0\0\0\0\0", 16);
const std::string kAccepted = "OK 0123456789abcdef0123456789abcdef\r\n";

class SignalSocketTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-bus-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override {
        if (bus_.joinable()) bus_.join();
        std::filesystem::remove_all(folder_);
    }

    FileDescriptor listenAt(const std::string& name, bool abstract = false) const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = (abstract ? std::string(1, '\0') : std::string()) + folder_ + "/" + name;
        path.copy(address.sun_path, path.size());
        const size_t size = offsetof(sockaddr_un, sun_path) + path.size() + (abstract ? 0 : 1);
        FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(
            bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size)),
            0);
        EXPECT_EQ(listen(listener.get(), 4), 0);
        return listener;
    }

    /// Plays a bus that gives these answers, one after the other, and keeps what it hears until the other
    /// side hangs up.
    void play(std::vector<std::string> answers, const std::string& name = "bus", bool abstract = false) {
        bus_ = std::thread([this, answers = std::move(answers), listener = listenAt(name, abstract)] {
            const FileDescriptor client(accept(listener.get(), nullptr, nullptr));
            for (const std::string& answer : answers) {
                if (send(client.get(), answer.data(), answer.size(), MSG_NOSIGNAL) < 0) return;
                std::this_thread::sleep_for(5ms); // so that they come apart
            }
            char bytes[512];
            for (ssize_t got = 0; (got = recv(client.get(), bytes, sizeof bytes, 0)) > 0;)
                heard_.append(bytes, static_cast<size_t>(got));
        });
    }
    /// One that hears the greeting, gives the answer and hangs up.
    std::thread answerOnceAndHangUp(const std::string& name, const std::string& answer) const {
        return std::thread([listener = listenAt(name), answer] {
            const FileDescriptor client(accept(listener.get(), nullptr, nullptr));
            char bytes[512];
            EXPECT_GT(recv(client.get(), bytes, sizeof bytes, 0), 0);
            send(client.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
        });
    }
    std::string heard() {
        bus_.join();
        return heard_;
    }
    std::string at(const std::string& name) const { return "unix:path=" + folder_ + "/" + name; }

    static Outcome connect(const std::string& address, std::optional<SignalSocket>& socket,
                           std::chrono::milliseconds patience = 5s) {
        return SignalSocket::connect(address, std::chrono::steady_clock::now() + patience, socket);
    }
    Outcome connectOnce(const std::string& address, std::chrono::milliseconds patience = 5s) {
        std::optional<SignalSocket> socket;
        return connect(address, socket, patience);
    }

    std::string folder_;
    std::thread bus_;
    std::string heard_;
};

std::string Bytes(uint32_t number) {
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(number >> 8 * i);
    return bytes;
}

// Laid out by hand: the text, its length before it and a zero after it, on a multiple of eight.
std::string Field(char code, char type, const std::string& text) {
    return std::string{code, 1, type, 0} + Bytes(static_cast<uint32_t>(text.size())) + text + '\0';
}
std::string Padded(std::string bytes) {
    while (bytes.size() % 8 != 0)
        bytes += '\0';
    return bytes;
}

TEST_F(SignalSocketTest, GreetsAndSendsTheSignal) {
    play({kAccepted + kWelcome});
    std::optional<SignalSocket> socket;
    ASSERT_EQ(connect(at("bus"), socket), Outcome::done);
    EXPECT_EQ(socket->send("/a/b", "com.example", "now", std::chrono::steady_clock::now() + 5s),
              Outcome::done);
    socket.reset();
    const std::string all = heard();

    std::string user;
    for (const char digit : std::to_string(geteuid()))
        user.append("3").append(1, digit); // the digits' codes are 0x30 to 0x39
    const std::string opening = std::string(1, '\0') + "AUTH EXTERNAL " + user + "\r\nBEGIN\r\n";
    ASSERT_EQ(all.substr(0, opening.size()), opening);

    const std::string hello = Padded(Field(1, 'o', "/org/freedesktop/DBus")) +
                              Padded(Field(6, 's', "org.freedesktop.DBus")) +
                              Padded(Field(2, 's', "org.freedesktop.DBus")) + Field(3, 's', "Hello");
    const std::string signal =
        Padded(Field(1, 'o', "/a/b")) + Padded(Field(2, 's', "com.example")) + Field(3, 's', "now");
    const std::string expected = Padded(std::string("l\1\0\1", 4) + Bytes(0) + Bytes(1) +
                                        Bytes(static_cast<uint32_t>(hello.size())) + hello) +
                                 Padded(std::string("l\4\1\1", 4) + Bytes(0) + Bytes(2) +
                                        Bytes(static_cast<uint32_t>(signal.size())) + signal);
    EXPECT_EQ(all.substr(opening.size()), expected);
}

TEST_F(SignalSocketTest, AnAnswerMayComeInPieces) {
    std::vector<std::string> pieces;
    for (const char c : kAccepted + kWelcome)
        pieces.emplace_back(1, c);
    play(pieces);
    EXPECT_EQ(connectOnce(at("bus")), Outcome::done);
}

TEST_F(SignalSocketTest, OtherMessagesMayComeBeforeTheWelcome) {
    const std::string signal("l\4\1\1\3\0\0\0\1\0\0\0\5\0\0\0fields\0\0xyz", 27);
    play({kAccepted + signal + kWelcome});
    EXPECT_EQ(connectOnce(at("bus")), Outcome::done);
}

TEST_F(SignalSocketTest, ABusOfTheOtherByteOrderIsUnderstood) {
    play({kAccepted + std::string("B\2\1\1\0\0\0\0\0\0\0\1\0\0\0\0", 16)});
    EXPECT_EQ(connectOnce(at("bus")), Outcome::done);
}

TEST_F(SignalSocketTest, RefusalsAndNonsenseAreALostConnection) {
    const std::vector<std::string> answers{
        "REJECTED EXTERNAL\r\n",
        kAccepted + kRefusal,
        kAccepted + "nonsense instead of a message",
        kAccepted + std::string("l\2\1\1\xff\xff\xff\xff\1\0\0\0\0\0\0\0", 16),
        std::string(100'000, 'x'),
        "",
    };
    for (size_t i = 0; i < answers.size(); ++i) {
        const std::string name = "bus" + std::to_string(i);
        std::thread bus = answerOnceAndHangUp(name, answers[i]);
        EXPECT_EQ(connectOnce(at(name)), Outcome::lost) << i;
        bus.join();
    }
}

TEST_F(SignalSocketTest, ABusThatSaysNothingTakesTooLong) {
    play({"OK"});
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(connectOnce(at("bus"), 100ms), Outcome::tookTooLong);
    EXPECT_GE(std::chrono::steady_clock::now() - begun, 100ms);
}

TEST_F(SignalSocketTest, ABusThatHangsUpLaterIsNoticed) {
    std::thread bus = answerOnceAndHangUp("bus", kAccepted + kWelcome);
    std::optional<SignalSocket> socket;
    EXPECT_EQ(connect(at("bus"), socket), Outcome::done);
    bus.join();
    ASSERT_TRUE(socket);
    EXPECT_EQ(socket->send("/a", "a.b", "c", std::chrono::steady_clock::now() + 5s), Outcome::lost);
}

TEST_F(SignalSocketTest, AbstractAndEscapedNamesAreFound) {
    play({kAccepted + kWelcome}, "abstract one", true);
    EXPECT_EQ(connectOnce("unix:abstract=" + folder_ + "/abstract%20one,guid=00"), Outcome::done);
    bus_.join();
    play({kAccepted + kWelcome}, "with space;and,more");
    EXPECT_EQ(connectOnce("unix:guid=00,path=" + folder_ + "/with%20space%3Band%2cmore"), Outcome::done);
}

TEST_F(SignalSocketTest, TheFirstSocketOfAListThatAnswersIsTaken) {
    play({kAccepted + kWelcome});
    EXPECT_EQ(connectOnce("tcp:host=localhost,port=1;" + at("missing") + ";;" + at("bus")), Outcome::done);
}

TEST_F(SignalSocketTest, AddressesWithoutAnybodyAreLost) {
    const std::string tooLong(200, 'x');
    for (const std::string& address : {std::string(), std::string("unix:"), std::string("nonsense"),
                                       std::string("unix:guid=00"), at("missing"), at(tooLong), at("%zz")})
        EXPECT_EQ(connectOnce(address), Outcome::lost) << address;
}

TEST(SignalNamesTest, OnlyNamesThatASignalCanBearAreValid) {
    const std::string longest(251, 'm');
    for (const auto& [interface, member] : std::initializer_list<std::pair<std::string, std::string>>{
             {"com.example", "now"}, {"_a.b1", "_9"}, {"a.b.c.d", "E"}, {"a." + longest + "mm", "x"}})
        EXPECT_TRUE(SignalSocket::areValidNames(interface, member)) << interface << " " << member;
    for (const auto& [interface, member] :
         std::initializer_list<std::pair<std::string, std::string>>{{"com", "now"},
                                                                    {"", "now"},
                                                                    {"com.example", ""},
                                                                    {".com.example", "now"},
                                                                    {"com.example.", "now"},
                                                                    {"com..example", "now"},
                                                                    {"com.1example", "now"},
                                                                    {"com.ex-ample", "now"},
                                                                    {"com.example", "1now"},
                                                                    {"com.example", "no w"},
                                                                    {"com.example", "n\xC3\xA4"},
                                                                    {"a." + longest + "mmm", "x"},
                                                                    {"a.b", longest + "mmmmm"}})
        EXPECT_FALSE(SignalSocket::areValidNames(interface, member)) << interface << " " << member;
}

} // namespace

} // namespace tallyforge
