// The program talks to the session bus and to the display, and to nobody else.

#include "WindowFixture.h"
#include "support/EveryCommand.h"
#include "support/PrivateBus.h"

#include <set>

namespace tallyforge::test {

namespace {

using Lines = std::set<std::string>;

class SocketsTest : public WindowTest {
  protected:
    /// Python under the eyes of the kernel; the interpreter itself and alone. A shell script that stands for
    /// "python3", and Python on its way to the user's own libraries, may ask the name service who the user
    /// is, which opens a socket.
    Ended python(const std::string& what) const {
        static const std::string interpreter = [] {
            const std::string said =
                RunProgram({"python3", "-c", "import sys; print(sys.executable)"}).output;
            return said.substr(0, said.find('\n'));
        }();
        EXPECT_NE(interpreter, "") << "python3 is needed";
        return RunProgram(watched({interpreter, "-I", "-S", "-c",
                                   "import ctypes, mmap, os, socket\nfrom socket import *\n" + what}),
                          environment());
    }
    /// The words that let a program run under the eyes of the kernel.
    Words watched(Words words) const {
        words.insert(words.begin(), {TALLYFORGE_BIN "/socket_watch", log().string()});
        return words;
    }
    std::filesystem::path log() const { return device.root() / "sockets"; }
    /// What has been seen since the last time.
    Lines seen() const {
        Lines found;
        std::ifstream lines(log());
        for (std::string line; std::getline(lines, line);)
            found.insert(line);
        std::filesystem::remove(log());
        return found;
    }
    Ended run(Words words, std::map<std::string, std::string> changes) const {
        words.insert(words.begin(), TALLYFORGE_BIN "/tallyforge");
        changes.merge(environment());
        return RunProgram(watched(words), changes);
    }
};

// "unix:path=/tmp/dbus-x,guid=..." or "unix:abstract=..."
std::string AddressOfBus(const std::string& address) {
    const size_t at = address.find('=');
    std::string path = address.substr(at + 1, address.find(',') - at - 1);
    return address.substr(0, at) == "unix:abstract" ? "@" + path : path;
}

// What the other tests stand on: each of these would be seen, also where libc is left aside.
TEST_F(SocketsTest, EveryWayToTalkToOthersIsSeen) {
    const auto after = [this](const std::string& what) {
        const Ended ended = python(what);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return seen();
    };
    EXPECT_EQ(after("pass"), Lines());
    EXPECT_EQ(after("socket(AF_UNIX)"), Lines{"socket unix"});
    EXPECT_EQ(after("socket(AF_INET)"), Lines{"socket inet"});
    EXPECT_EQ(after("socket(AF_INET6)"), Lines{"socket inet6"});
    EXPECT_EQ(after("socket(AF_NETLINK, SOCK_RAW)"), Lines{"socket family 16"});
    EXPECT_EQ(after("ctypes.CDLL(None).syscall(os.uname().machine == 'x86_64' and 41 or 198, 2, 1, 0)"),
              Lines{"socket inet"});
    EXPECT_EQ(after("a, b = socketpair()\na.send(b'x')\na.sendmsg([b'x'])"), Lines{"socketpair unix"});
    EXPECT_EQ(after("socket(AF_UNIX).connect_ex('/nowhere')\nsocket(AF_UNIX).connect_ex('\\0nowhere')"),
              (Lines{"socket unix", "connect unix /nowhere", "connect unix @nowhere"}));
    EXPECT_EQ(after("s = socket()\ns.bind(('127.0.0.1', 0))\ns.listen()\ns.settimeout(0)\n"
                    "try: s.accept()\nexcept OSError: pass"),
              (Lines{"socket inet", "bind inet 127.0.0.1 0", "listen", "accept"}));
    EXPECT_EQ(after("socket(AF_UNIX).bind('" + (device.root() / "bound").string() + "')"),
              (Lines{"socket unix", "bind unix " + (device.root() / "bound").string()}));
    EXPECT_EQ(after("socket(AF_INET, SOCK_DGRAM).sendto(b'x', ('127.0.0.1', 9))"),
              (Lines{"socket inet", "sendto inet 127.0.0.1 9"}));
    EXPECT_EQ(after("socket(AF_INET, SOCK_DGRAM).sendmsg([b'x'], [], 0, ('127.0.0.1', 9))"),
              (Lines{"socket inet", "sendmsg inet 127.0.0.1 9"}));
    EXPECT_EQ(after("if os.fork(): os.wait()\nelse: socket(AF_INET)"), Lines{"socket inet"});
}

// Calls that nobody could look into: queued ones, and those of the machine's other sets.
TEST_F(SocketsTest, WaysAroundAreNone) {
    const auto status = [this](const std::string& what) { return python(what).status; };
    EXPECT_EQ(status("ctypes.CDLL(None).syscall(425, 1, 0)"), 128 + SIGSYS);
#ifdef __x86_64__
    EXPECT_EQ(status("ctypes.CDLL(None).syscall(0x40000029, 2, 1, 0)"), 128 + SIGSYS);
    EXPECT_EQ(status("page = mmap.mmap(-1, 4096, prot=7)\n"
                     "page.write(bytes.fromhex('b867010000cd80c3'))\n" // the 32-bit socket
                     "ctypes.CFUNCTYPE(ctypes.c_int)(ctypes.addressof(ctypes.c_char.from_buffer(page)))()"),
              128 + SIGSYS);
#endif
}

TEST_F(SocketsTest, WithoutABusCommandsOpenNone) {
    for (const Words& words : EveryCommand(device.root())) {
        const Ended ended = run(words, {{"DISPLAY", ""}});
        EXPECT_EQ(ended.status, words[0] == "watch" ? 1 : 0) << Spoken(words) << ": " << ended.errors;
        EXPECT_EQ(seen(), Lines()) << Spoken(words);
    }
}

// As for somebody who works with another user's surroundings.
TEST_F(SocketsTest, DrawingOpensNoneWhereTheRuntimeFolderIsNoGood) {
    for (const char* folder : {"/usr", "/nowhere"}) {
        const Ended ended = run({"inspect"}, {{"DISPLAY", ""}, {"XDG_RUNTIME_DIR", folder}});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(seen(), Lines()) << folder;
    }
}

TEST_F(SocketsTest, AloneWithoutADisplayItOpensNone) {
    const Ended ended = run({}, {{"DISPLAY", ""}, {"XDG_DATA_HOME", (device.root() / "home").string()}});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(seen(), Lines());
}

TEST_F(SocketsTest, CommandsConnectToTheBusAlone) {
    const PrivateBus bus;
    ASSERT_NE(bus.address(), "") << "dbus-daemon is needed";
    size_t announced = 0;
    for (const Words& words : EveryCommand(device.root())) {
        const Ended ended = run(words, {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}});
        EXPECT_EQ(ended.status, 0) << Spoken(words) << ": " << ended.errors;
        Lines lines = seen();
        const size_t connected = lines.erase("connect unix " + AddressOfBus(bus.address()));
        EXPECT_EQ(lines.erase("socket unix"), connected) << Spoken(words);
        EXPECT_EQ(lines, Lines()) << Spoken(words);
        announced += connected;
    }
    EXPECT_GE(announced, 5U); // so the log does hear
}

TEST_F(SocketsTest, TheWindowConnectsToTheDisplayAndTheBusAlone) {
    const PrivateBus bus;
    ASSERT_NE(bus.address(), "") << "dbus-daemon is needed";
    auto changed = environment();
    changed["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    program = std::make_unique<Program>(watched({TALLYFORGE_BIN "/tallyforge"}), changed);
    ASSERT_TRUE(waitFor([this] {
        window = server->xdo({"search", "--onlyvisible", "--name", "^Tallyforge$"}).output;
        window = window.substr(0, window.find('\n'));
        return !window.empty();
    })) << program->wait(0).errors;
    server->xdo({"windowmove", "--sync", window, "0", "0", "windowfocus", "--sync", window});
    clickAt(middleOf(rowFrame("tallyforge", "Badge")));
    expectScreen("badge");
    key("Escape");
    expectScreen("tallyforge");
    server->close(window);
    const Ended ended = program->wait(30);
    EXPECT_EQ(ended.status, 0) << ended.errors;

    Lines lines = seen();
    const std::string display = "/tmp/.X11-unix/X" + server->display().substr(1);
    EXPECT_GE(lines.erase("connect unix " + display) + lines.erase("connect unix @" + display), 1U);
    EXPECT_EQ(lines.erase("connect unix " + AddressOfBus(bus.address())), 1U);
    EXPECT_EQ(lines, Lines{"socket unix"});
}

} // namespace

} // namespace tallyforge::test
