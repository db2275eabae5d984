#include "foundation/Random.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <pthread.h>
#include <sys/random.h>

namespace tallyforge {

namespace {

/// The system's numbers, fetched a block at a time: a call a number would cost more than the number.
class SystemSource {
  public:
    uint32_t next() {
        if (used_ == block_.size()) fill();
        return block_[used_++];
    }

    void forget() { used_ = block_.size(); }

  private:
    void fill() {
        // Blocks of up to 256 bytes are never cut short once the system's source has started.
        constexpr auto wanted = static_cast<ssize_t>(sizeof block_);
        ssize_t got = 0;
        do {
            got = getrandom(block_.data(), sizeof block_, 0);
        } while (got < 0 && errno == EINTR);
        if (got != wanted) {
            std::perror("tallyforge: no random numbers from the system");
            std::abort();
        }
        used_ = 0;
    }

    std::array<uint32_t, 64> block_{};
    size_t used_ = block_.size();
};

SystemSource& TheSystemSource() {
    static SystemSource source;
    // A child of fork must not draw the numbers that its parent is about to draw.
    static const int registered = pthread_atfork(nullptr, nullptr, [] { TheSystemSource().forget(); });
    static_cast<void>(registered);
    return source;
}

std::optional<uint64_t>& SeededState() {
    static std::optional<uint64_t> state;
    return state;
}

} // namespace

uint32_t arc4random() {
    auto& seeded = SeededState();
    if (!seeded) return TheSystemSource().next();
    // splitmix64: Steele, Lea and Flood, "Fast splittable pseudorandom number generators", 2014.
    *seeded += 0x9E3779B97F4A7C15u;
    uint64_t z = *seeded;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    z ^= z >> 31;
    return static_cast<uint32_t>(z >> 32);
}

uint32_t arc4random_uniform(uint32_t upperBound) {
    if (upperBound < 2) return 0;
    // 2^32 modulo the bound: from there on the numbers are a whole multiple of the bound.
    const uint32_t least = (0u - upperBound) % upperBound;
    uint32_t drawn = arc4random();
    while (drawn < least)
        drawn = arc4random();
    return drawn % upperBound;
}

void SeedRandomSource(uint64_t seed) {
    SeededState() = seed;
}

void UnseedRandomSource() {
    SeededState().reset();
}

} // namespace tallyforge
