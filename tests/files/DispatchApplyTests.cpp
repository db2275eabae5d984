#include "foundation/DispatchApply.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace tallyforge {

namespace {

TEST(DispatchApplyTest, EveryNumberIsTakenOnce) {
    for (const size_t count : {0U, 1U, 63U, 64U, 65U, 128U, 1000U, 10'001U}) {
        std::vector<int> times(count);
        dispatch_apply(count, [&](size_t i) { ++times[i]; });
        EXPECT_EQ(times, std::vector<int>(count, 1));
    }
}

TEST(DispatchApplyTest, AllIsDoneWhenItReturns) {
    for (int round = 0; round < 200; ++round) {
        std::atomic<size_t> done = 0;
        dispatch_apply(500, [&](size_t) { ++done; });
        ASSERT_EQ(done, 500U);
    }
}

TEST(DispatchApplyTest, WorkMayItselfHaveParts) {
    std::atomic<size_t> sum = 0;
    dispatch_apply(200, [&](size_t i) { dispatch_apply(130, [&](size_t j) { sum += i * j; }); });
    EXPECT_EQ(sum, (129U * 130U / 2U) * (199U * 200U / 2U));
}

TEST(DispatchApplyTest, OtherThreadsHelpWhereTheProcessorHasMoreCores) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "there is one core";
    std::mutex mutex;
    std::set<std::thread::id> threads;
    dispatch_apply(1000, [&](size_t) {
        std::this_thread::sleep_for(std::chrono::microseconds(100)); // long enough for another to begin
        const std::lock_guard lock(mutex);
        threads.insert(std::this_thread::get_id());
    });
    EXPECT_GE(threads.size(), 2U);
    EXPECT_LE(threads.size(), 4U);
    EXPECT_TRUE(threads.contains(std::this_thread::get_id()));
}

} // namespace

} // namespace tallyforge
