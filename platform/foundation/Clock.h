#pragma once

#include <cstdint>

namespace tallyforge {

/// Where the time of animations, delays and momentum comes from, in nanoseconds since an arbitrary start.
/// The host owns it; nothing else reads a clock of the machine.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual int64_t nanoseconds() const = 0;
};

/// Stands still until it is moved.
class VirtualClock final : public Clock {
  public:
    int64_t nanoseconds() const override { return now_; }
    void advanceTo(int64_t nanoseconds) { now_ = nanoseconds > now_ ? nanoseconds : now_; }

  private:
    int64_t now_ = 0;
};

/// The machine's monotonic clock.
class MonotonicClock final : public Clock {
  public:
    int64_t nanoseconds() const override;
};

} // namespace tallyforge
