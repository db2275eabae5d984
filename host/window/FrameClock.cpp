#include "window/FrameClock.h"

#include "foundation/Dispatch.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr int64_t kMillisecond = 1'000'000;
constexpr int64_t kLongestWait = 24LL * 3600 * 1000; // milliseconds; the timer is then set again

} // namespace

FrameClock::FrameClock(const Clock& clock, std::function<void()> frame, std::function<void()> jobsDue)
    : clock_(clock) {
    for (QTimer* timer : {&frameTimer_, &jobTimer_}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    QObject::connect(&frameTimer_, &QTimer::timeout, std::move(frame));
    QObject::connect(&jobTimer_, &QTimer::timeout, std::move(jobsDue));
}

void FrameClock::setFramesPerSecond(double frames) {
    const double held = std::isfinite(frames) ? std::clamp(frames, 20.0, 240.0) : 60;
    interval_ = std::llround(1e9 / held);
}

void FrameClock::askForFrame() {
    if (frameTimer_.isActive()) return;
    const int64_t now = clock_.nanoseconds();
    // Timers count whole milliseconds: what is planned is kept exactly, so that the pace is right on average.
    frameAt_ = std::max(frameAt_ + interval_, now);
    frameTimer_.start(int((frameAt_ - now + kMillisecond / 2) / kMillisecond));
}

void FrameClock::followMainQueue() {
    const auto next = MainQueue::main().nextDeadline();
    if (!next) return jobTimer_.stop();
    if (jobTimer_.isActive() && jobAt_ == *next) return;
    jobAt_ = *next;
    const int64_t wait =
        (std::max<int64_t>(*next - clock_.nanoseconds(), 0) + kMillisecond - 1) / kMillisecond;
    jobTimer_.start(int(std::min(wait, kLongestWait)));
}

} // namespace tallyforge
