#include "foundation/Clock.h"

#include <chrono>

namespace tallyforge {

int64_t MonotonicClock::nanoseconds() const {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count();
}

} // namespace tallyforge
