#pragma once

#include <cstdint>

namespace tallyforge {

/// A uniformly random 32-bit number: from the system's source, or from the seeded one.
uint32_t arc4random();
/// Uniform below the bound, without modulo bias; 0 for a bound of 0 or 1.
uint32_t arc4random_uniform(uint32_t upperBound);

/// From now on the draws are the repeatable sequence of this seed (splitmix64, upper 32 bits of each step).
void SeedRandomSource(uint64_t seed);
/// Back to the system's source.
void UnseedRandomSource();

} // namespace tallyforge
