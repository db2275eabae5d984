#include "foundation/Dispatch.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tallyforge {

namespace {

int64_t SaturatingAdd(int64_t a, int64_t b) {
    int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum)) return sum;
    return b > 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
}

// The standard heap keeps the greatest in front; the greatest here is the one that comes first.
constexpr auto comesLater = [](const auto& a, const auto& b) {
    return a.at != b.at ? a.at > b.at : a.sequence > b.sequence;
};

} // namespace

MainQueue& MainQueue::main() {
    static MainQueue queue;
    return queue;
}

void MainQueue::setClock(const Clock* clock) {
    clock_ = clock;
}

const Clock& MainQueue::clock() const {
    static const MonotonicClock machine;
    return clock_ ? *clock_ : machine;
}

void MainQueue::after(int64_t atNanoseconds, std::function<void()> job) {
    jobs_.push_back({atNanoseconds, sequence_++, std::move(job)});
    std::push_heap(jobs_.begin(), jobs_.end(), comesLater);
    if (!wakeUp_) return;
    const auto wakeUp = wakeUp_; // it may replace itself
    wakeUp();
}

std::optional<int64_t> MainQueue::nextDeadline() const {
    if (jobs_.empty()) return std::nullopt;
    return jobs_.front().at;
}

void MainQueue::runDue() {
    // The present time is taken once: a job that queues itself anew on a running clock ends this turn.
    const int64_t now = clock().nanoseconds();
    while (runFirstUpTo(now)) {
    }
}

void MainQueue::runUntil(VirtualClock& clock, int64_t nanoseconds) {
    while (!jobs_.empty() && jobs_.front().at <= nanoseconds) {
        clock.advanceTo(jobs_.front().at);
        runFirstUpTo(nanoseconds);
    }
    clock.advanceTo(nanoseconds);
}

void MainQueue::clear() {
    jobs_.clear();
}

void MainQueue::setWakeUp(std::function<void()> wakeUp) {
    wakeUp_ = std::move(wakeUp);
}

bool MainQueue::runFirstUpTo(int64_t nanoseconds) {
    if (jobs_.empty() || jobs_.front().at > nanoseconds) return false;
    std::pop_heap(jobs_.begin(), jobs_.end(), comesLater);
    const auto work = std::move(jobs_.back().work); // out of the queue first: it may queue or clear
    jobs_.pop_back();
    if (work) work();
    return true;
}

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta) {
    const int64_t base = when == DISPATCH_TIME_NOW ? MainQueue::main().clock().nanoseconds() : when;
    return SaturatingAdd(base, delta);
}

MainQueue& dispatch_get_main_queue() {
    return MainQueue::main();
}

void dispatch_after(dispatch_time_t when, MainQueue& queue, std::function<void()> job) {
    queue.after(when == DISPATCH_TIME_NOW ? queue.clock().nanoseconds() : when, std::move(job));
}

} // namespace tallyforge
