#pragma once

#include "mobileservices/ByteReader.h"

#include <array>
#include <cstdint>
#include <optional>

namespace tallyforge {

/// What the head of an LZFSE block says: how often each symbol occurs, where the coders start, and how much
/// of each there is. Every number is within the format's bounds once it was read.
struct LZFSEBlockHead {
    static constexpr uint32_t kMostLiterals = 40000;
    static constexpr uint32_t kMostMatches = 10000;
    static constexpr uint32_t kLiteralStates = 1024;
    static constexpr uint32_t kLengthStates = 64;
    static constexpr uint32_t kDistanceStates = 256;

    uint32_t rawBytes = 0;
    uint32_t literals = 0;
    uint32_t matches = 0;
    uint32_t literalBytes = 0; ///< packed
    uint32_t matchBytes = 0;   ///< packed
    int literalBits = 0;       ///< unused bits at the end of the packed literals, from -7 to 0
    int matchBits = 0;
    std::array<uint16_t, 4> literalStates{};
    uint16_t lengthState = 0;   ///< how many literals
    uint16_t matchState = 0;    ///< how long a match
    uint16_t distanceState = 0; ///< how far back
    std::array<uint16_t, 20> lengthFrequencies{};
    std::array<uint16_t, 20> matchFrequencies{};
    std::array<uint16_t, 64> distanceFrequencies{};
    std::array<uint16_t, 256> literalFrequencies{};

    /// Reads what follows the block's four letters, up to the packed literals. Nothing when it is broken.
    static std::optional<LZFSEBlockHead> read(ByteReader& in);

  private:
    bool isSound() const;
};

} // namespace tallyforge
