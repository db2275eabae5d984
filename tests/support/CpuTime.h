#pragma once

#include <ctime>

namespace tallyforge::test {

/// What the checks that are built in may cost: bounds on time are for the program without them.
#if ADDRESS_SANITIZER || THREAD_SANITIZER
inline constexpr double kSlowdown = 6;
#else
inline constexpr double kSlowdown = 1;
#endif

/// Milliseconds of work of this thread so far, whatever else the machine does meanwhile.
inline double CpuMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace tallyforge::test
