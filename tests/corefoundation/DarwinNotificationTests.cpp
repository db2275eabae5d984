// Notifications between processes, over a bus of the test's own.

#include "Subprocess.h"
#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace tallyforge {

namespace {

using Names = std::vector<std::string>;

class DarwinNotificationTests : public testing::Test {
  protected:
    void SetUp() override {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        unsetenv("XDG_RUNTIME_DIR");
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-bus-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }

    void TearDown() override {
        stopBus();
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        unsetenv("XDG_RUNTIME_DIR");
        std::filesystem::remove_all(folder_);
    }

    /// A bus that ends with the test.
    void startBus(const std::string& socketName = "bus") {
        int ends[2] = {};
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        address_ = "unix:path=" + folder_ + "/" + socketName;
        bus_ = Start({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address",
                      "--address=" + address_},
                     ends[1]);
        close(ends[1]);
        char first = 0;
        const bool answers = read(ends[0], &first, 1) == 1;
        close(ends[0]);
        ASSERT_TRUE(answers) << "dbus-daemon does not start: is the package dbus-daemon installed?";
    }

    void stopBus() {
        if (bus_ <= 0) return;
        kill(bus_, SIGCONT);
        kill(bus_, SIGTERM);
        Ended(bus_);
        bus_ = 0;
    }

    void useBus() const { setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1); }

    std::unique_ptr<DarwinNotificationListener> listen() {
        auto made =
            DarwinNotificationListener::create([this](std::string_view name) { heard_.emplace_back(name); });
        EXPECT_TRUE(made) << made.reason();
        return made ? std::move(*made) : nullptr;
    }

    /// Waits until as many names have come, for some seconds at most.
    void waitFor(DarwinNotificationListener& listener, size_t count) {
        for (int tries = 0; tries < 20 && heard_.size() < count; ++tries)
            ASSERT_TRUE(listener.wait(0.5));
    }

    static void post(std::string_view name) {
        CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), name, nullptr,
                                             nullptr, true);
    }

    static int postElsewhere(Names names) {
        names.insert(names.begin(), {std::string(TALLYFORGE_BIN) + "/corefoundation_helper", "post"});
        return Ended(Start(names));
    }

    static double secondsOf(const std::function<void()>& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    std::string folder_;
    std::string address_;
    pid_t bus_ = 0;
    Names heard_;
};

TEST_F(DarwinNotificationTests, AnotherProcessHearsEveryPost) {
    startBus();
    useBus();
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    EXPECT_EQ(postElsewhere({"com.quillon.tallyforge.prefs", "com.example.a.b", "com.example.a.b"}), 0);
    waitFor(*listener, 3);
    EXPECT_EQ(heard_, (Names{"com.quillon.tallyforge.prefs", "com.example.a.b", "com.example.a.b"}));
}

// A command posts and ends at once; what it posted must arrive all the same.
TEST_F(DarwinNotificationTests, NothingIsLostWhenThePosterEndsAtOnce) {
    startBus();
    useBus();
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    constexpr size_t posters = 60;
    for (size_t i = 0; i < posters; ++i)
        EXPECT_EQ(postElsewhere({"com.example.quick"}), 0);
    waitFor(*listener, posters);
    EXPECT_EQ(heard_.size(), posters);
}

// Two processes change one domain at the same time and say so; a third hears each of them, and nothing is
// lost.
TEST_F(DarwinNotificationTests, TwoWritersAtATimeAreHeardByAThird) {
    startBus();
    useBus();
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    const std::string device = folder_ + "/device";
    std::filesystem::create_directory(device);
    const std::string helper = std::string(TALLYFORGE_BIN) + "/corefoundation_helper";
    std::vector<pid_t> writers;
    for (const char* prefix : {"left", "right"})
        writers.push_back(Start(
            {helper, "set", device, "com.example.look", prefix, "500", "com.quillon.tallyforge.prefs"}));
    for (int silent = 0; silent < 60 && heard_.size() < 1000;) {
        const size_t before = heard_.size();
        ASSERT_TRUE(listener->wait(0.5));
        silent = heard_.size() == before ? silent + 1 : 0;
    }
    for (pid_t writer : writers)
        EXPECT_EQ(Ended(writer), 0);
    EXPECT_EQ(heard_.size(), 1000U);
    EXPECT_EQ(std::ranges::count(heard_, "com.quillon.tallyforge.prefs"),
              static_cast<std::ptrdiff_t>(heard_.size()));

    ASSERT_TRUE(DeviceRoot::set(device));
    CFPreferencesForgetAll();
    const auto keys =
        CFPreferencesCopyKeyList("com.example.look", kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    ASSERT_TRUE(keys);
    EXPECT_EQ(keys->size(), 1000U);
    CFPreferencesForgetAll();
}

TEST_F(DarwinNotificationTests, TheBusInTheRuntimeFolderIsFound) {
    startBus();
    setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    post("com.example.own");
    waitFor(*listener, 1);
    EXPECT_EQ(heard_, Names{"com.example.own"});
}

TEST_F(DarwinNotificationTests, NamesThatNoSignalCanBearAreNotSent) {
    startBus();
    useBus();
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    for (const std::string& name :
         {std::string(), std::string("plain"), std::string("two.parts"), std::string("a..b"),
          std::string("com.example."), std::string("com.example.with space"), std::string("com.1example.x"),
          std::string("com.example\0.x", 14), "com.example." + std::string(256, 'x')})
        post(name);
    post("com.example.last");
    waitFor(*listener, 1);
    EXPECT_EQ(heard_, Names{"com.example.last"});
}

TEST_F(DarwinNotificationTests, SignalsOfOtherPathsAreNotHeard) {
    startBus();
    useBus();
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    EXPECT_EQ(
        Ended(Start({"dbus-send", "--session", "--type=signal", "/com/quillon/other", "com.example.X.a"})),
        0);
    EXPECT_EQ(Ended(Start(
                  {"dbus-send", "--session", "--type=signal", "/com/quillon/tallyforge", "com.example.X.b"})),
              0);
    waitFor(*listener, 1);
    EXPECT_EQ(heard_, Names{"com.example.X.b"});
}

TEST_F(DarwinNotificationTests, WithoutABusAPostIsNoError) {
    Names traced;
    auto& center = CFNotificationCenterGetDarwinNotifyCenter();
    center.setTrace([&](std::string_view name) { traced.emplace_back(name); });
    EXPECT_LT(secondsOf([] { post("com.example.nobody"); }), 0.5);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder_ + "/none").c_str(), 1);
    EXPECT_LT(secondsOf([] { post("com.example.gone"); }), 0.5);
    setenv("DBUS_SESSION_BUS_ADDRESS", "no address at all", 1);
    post("com.example.odd");
    post("nodot");
    center.setTrace({});
    EXPECT_EQ(traced, (Names{"com.example.nobody", "com.example.gone", "com.example.odd", "nodot"}));
}

TEST_F(DarwinNotificationTests, AListenerSaysWhatIsMissing) {
    const auto none = DarwinNotificationListener::create({});
    ASSERT_FALSE(none);
    EXPECT_EQ(none.reason(),
              "no session bus (neither DBUS_SESSION_BUS_ADDRESS nor a bus in XDG_RUNTIME_DIR)");
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder_ + "/none").c_str(), 1);
    const auto gone = DarwinNotificationListener::create({});
    ASSERT_FALSE(gone);
    EXPECT_EQ(gone.reason(), "the session bus: nobody answers at its address");
}

TEST_F(DarwinNotificationTests, ABusThatDoesNotAnswerHoldsUpOnePostForASecondAtMost) {
    const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    (folder_ + "/mute").copy(name.sun_path, sizeof name.sun_path - 1);
    ASSERT_EQ(bind(listening, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    ASSERT_EQ(::listen(listening, 10), 0);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder_ + "/mute").c_str(), 1);
    EXPECT_LT(secondsOf([] { post("com.example.first"); }), 1.5);
    EXPECT_LT(secondsOf([] { post("com.example.second"); }), 0.2); // it is left alone for a while
    close(listening);
}

TEST_F(DarwinNotificationTests, ABusThatStopsReadingHoldsUpNobody) {
    startBus("stopping");
    useBus();
    post("com.example.connects");
    ASSERT_EQ(kill(bus_, SIGSTOP), 0);
    // More than the socket takes in: some post finds it full, waits its second, and the rest do not wait.
    const double seconds = secondsOf([] {
        for (int i = 0; i < 20'000; ++i)
            post("com.example.flood");
    });
    EXPECT_LT(seconds, 20);
}

TEST_F(DarwinNotificationTests, ALostConnectionIsMadeAnew) {
    startBus("first");
    useBus();
    {
        const auto listener = listen();
        ASSERT_NE(listener, nullptr);
        post("com.example.one");
        waitFor(*listener, 1);
        stopBus();
        EXPECT_FALSE([&] {
            bool connected = true;
            for (int tries = 0; connected && tries < 10; ++tries)
                connected = listener->wait(0.5);
            return connected;
        }());
    }
    post("com.example.nobody");
    startBus("second");
    useBus();
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    post("com.example.two");
    waitFor(*listener, 2);
    EXPECT_EQ(heard_, (Names{"com.example.one", "com.example.two"}));
}

TEST_F(DarwinNotificationTests, AnEventLoopCanWaitOnTheDescriptor) {
    startBus();
    useBus();
    const auto listener = listen();
    ASSERT_NE(listener, nullptr);
    EXPECT_TRUE(listener->wait(0));
    EXPECT_EQ(heard_, Names{});
    EXPECT_GE(secondsOf([&] { EXPECT_TRUE(listener->wait(0.2)); }), 0.2);
    post("com.example.polled");
    pollfd polled{listener->fileDescriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&polled, 1, 5000), 1);
    EXPECT_TRUE(listener->wait(0));
    EXPECT_EQ(heard_, Names{"com.example.polled"});
}

} // namespace

} // namespace tallyforge
