#include "foundation/DeviceRoot.h"
#include "foundation/Dispatch.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace tallyforge {

namespace {

class DispatchTests : public testing::Test {
  protected:
    void SetUp() override { queue_.setClock(&clock_); }
    std::function<void()> say(const std::string& word) {
        return [this, word] { said_ += word + "@" + std::to_string(clock_.nanoseconds()) + " "; };
    }
    VirtualClock clock_;
    MainQueue queue_;
    std::string said_;
};

TEST_F(DispatchTests, RunsInTheOrderOfTimesAndEqualTimesInTheOrderOfComing) {
    queue_.after(30, say("c"));
    queue_.after(10, say("a1"));
    queue_.after(20, say("b"));
    queue_.after(10, say("a2"));
    queue_.after(10, say("a3"));
    clock_.advanceTo(25);
    queue_.runDue();
    EXPECT_EQ(said_, "a1@25 a2@25 a3@25 b@25 ");
    EXPECT_EQ(queue_.nextDeadline(), 30);
}

TEST_F(DispatchTests, ManyEqualTimesKeepTheirOrder) {
    std::vector<int> ran;
    for (int i = 0; i < 1000; ++i)
        queue_.after(i % 7, [&ran, i] { ran.push_back(i); });
    queue_.runUntil(clock_, 7);
    ASSERT_EQ(ran.size(), 1000u);
    for (size_t i = 1; i < ran.size(); ++i)
        EXPECT_LT(std::pair(ran[i - 1] % 7, ran[i - 1]), std::pair(ran[i] % 7, ran[i]));
}

TEST_F(DispatchTests, RunUntilRunsEachJobAtItsOwnTimeAndEndsAtTheGivenOne) {
    queue_.after(10, [this] {
        say("first")();
        queue_.after(clock_.nanoseconds() + 5, say("nested"));
        queue_.after(3, say("late")); // its time has passed: runs at the present one
    });
    queue_.after(40, say("beyond"));
    queue_.runUntil(clock_, 30);
    EXPECT_EQ(said_, "first@10 late@10 nested@15 ");
    EXPECT_EQ(clock_.nanoseconds(), 30);
    queue_.runUntil(clock_, 40);
    EXPECT_EQ(said_, "first@10 late@10 nested@15 beyond@40 ");
    EXPECT_EQ(queue_.nextDeadline(), std::nullopt);
}

TEST_F(DispatchTests, JobsThatAreQueuedMeanwhileRunTooWhenTheyAreDue) {
    queue_.after(0, [this] { queue_.after(0, [this] { queue_.after(0, say("third")); }); });
    queue_.runDue();
    EXPECT_EQ(said_, "third@0 ");
}

TEST_F(DispatchTests, AJobMayForgetTheRest) {
    queue_.after(1, [this] { queue_.clear(); });
    queue_.after(2, say("forgotten"));
    queue_.runUntil(clock_, 5);
    EXPECT_EQ(said_, "");
}

TEST_F(DispatchTests, TheHostHearsOfEveryJobAndSeesItsDeadline) {
    std::vector<int64_t> deadlines;
    queue_.setWakeUp([&] { deadlines.push_back(queue_.nextDeadline().value_or(-1)); });
    queue_.after(50, [] {});
    queue_.after(20, [] {});
    queue_.after(70, [] {});
    queue_.setWakeUp({});
    queue_.after(1, [] {});
    EXPECT_EQ(deadlines, (std::vector<int64_t>{50, 20, 20}));
}

TEST_F(DispatchTests, TimesAreCountedFromTheMainQueuesClock) {
    auto& main = dispatch_get_main_queue();
    EXPECT_EQ(&main, &MainQueue::main());
    main.setClock(&clock_);
    clock_.advanceTo(7);
    EXPECT_EQ(dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_SEC), 2'000'000'007);
    EXPECT_EQ(dispatch_time(100, 5), 105);
    constexpr auto last = std::numeric_limits<int64_t>::max();
    EXPECT_EQ(dispatch_time(last - 1, 5), last);
    EXPECT_EQ(dispatch_time(std::numeric_limits<int64_t>::min() + 1, -5),
              std::numeric_limits<int64_t>::min());
    dispatch_after(DISPATCH_TIME_NOW, main, say("now"));
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 3), main, say("later"));
    main.runDue();
    EXPECT_EQ(said_, "now@7 ");
    main.runUntil(clock_, 20);
    EXPECT_EQ(said_, "now@7 later@10 ");
    main.setClock(nullptr);
}

TEST(ClockTests, TheVirtualClockNeverGoesBack) {
    VirtualClock clock;
    EXPECT_EQ(clock.nanoseconds(), 0);
    clock.advanceTo(5);
    clock.advanceTo(3);
    EXPECT_EQ(clock.nanoseconds(), 5);
}

TEST(ClockTests, WithoutAClockTheMachinesServes) {
    const MainQueue queue;
    const int64_t before = MonotonicClock().nanoseconds();
    const int64_t now = queue.clock().nanoseconds();
    EXPECT_LE(before, now);
    EXPECT_LE(now, MonotonicClock().nanoseconds());
}

// This program never sets a root.
TEST(NoDeviceRootTests, NothingOpensBeforeThereIsARoot) {
    errno = 0;
    EXPECT_EQ(DeviceRoot::open("/", O_RDONLY), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(DeviceRoot::set("/no/such/folder/anywhere").reason(), "no such file");
    EXPECT_EQ(DeviceRoot::set("/proc/self/status").reason(), "not a folder");
    EXPECT_EQ(DeviceRoot::set(std::string("/tmp\0/x", 7)).reason(), "not a usable path");
    EXPECT_EQ(DeviceRoot::hostFolder(), "");
}

} // namespace

} // namespace tallyforge
