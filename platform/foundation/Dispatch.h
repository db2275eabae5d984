#pragma once

#include "foundation/Clock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tallyforge {

/// The main thread's queue of deferred work. The host decides when due jobs run; nothing here sleeps.
/// Jobs run in the order of their times, equal times in the order of their coming.
class MainQueue {
  public:
    /// The queue that `dispatch_after` uses.
    static MainQueue& main();

    /// Must outlive its use; without one the machine's monotonic clock serves.
    void setClock(const Clock* clock);
    const Clock& clock() const;

    void after(int64_t atNanoseconds, std::function<void()> job);
    /// When the next job is due, or nothing when none waits.
    std::optional<int64_t> nextDeadline() const;
    /// How many jobs wait.
    size_t waiting() const { return jobs_.size(); }
    /// Runs what is due by the clock's present time; jobs queued meanwhile run too if they are due.
    void runDue();
    /// Moves the virtual clock from deadline to deadline up to the time and runs each job at its own time.
    void runUntil(VirtualClock& clock, int64_t nanoseconds);
    /// Forgets all waiting jobs.
    void clear();
    /// Called whenever a job is queued, so that the host can set its timer; empty removes it.
    void setWakeUp(std::function<void()> wakeUp);

  private:
    struct Job {
        int64_t at;
        uint64_t sequence;
        std::function<void()> work;
    };
    bool runFirstUpTo(int64_t nanoseconds);

    const Clock* clock_ = nullptr;
    std::vector<Job> jobs_; // a heap, earliest first
    uint64_t sequence_ = 0;
    std::function<void()> wakeUp_;
};

using dispatch_time_t = int64_t;
inline constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;
inline constexpr int64_t NSEC_PER_SEC = 1'000'000'000;

/// The time `delta` nanoseconds after `when`, where DISPATCH_TIME_NOW is the present moment.
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta);
MainQueue& dispatch_get_main_queue();
void dispatch_after(dispatch_time_t when, MainQueue& queue, std::function<void()> job);

} // namespace tallyforge
