#include "mobileservices/LZFSEBlock.h"

#include <algorithm>
#include <numeric>

namespace tallyforge {

namespace {

constexpr size_t kPackedHeadBytes = 32; // the four letters included, the frequencies not

/// A few bits out of a number.
uint32_t Field(uint64_t number, int offset, int bits) {
    return uint32_t(number >> offset & ((1u << bits) - 1));
}

/// Bits from the lowest to the highest of each byte. Beyond the end there are zeros, and that is remembered.
class ForwardBits {
  public:
    explicit ForwardBits(Bytes bytes) : bytes_(bytes) {}

    uint32_t peek(size_t count) const {
        uint32_t value = 0;
        for (size_t i = 0; i < count; i++) {
            size_t bit = at_ + i;
            if (bit / 8 < bytes_.size() && (bytes_[bit / 8] >> (bit % 8) & 1)) value |= 1u << i;
        }
        return value;
    }
    void skip(size_t count) { at_ += count; }
    /// All bytes were used and none beyond them; what remains of the last byte is padding.
    bool isAtEnd() const { return (at_ + 7) / 8 == bytes_.size(); }

  private:
    Bytes bytes_;
    size_t at_ = 0;
};

// A frequency is written with a prefix code: small ones in 2, 3 or 5 bits, up to 23 in 8, the others in 14.
uint16_t ReadFrequency(ForwardBits& in) {
    uint32_t bits = in.peek(14);
    if ((bits & 3) == 0) return in.skip(2), uint16_t(0);
    if ((bits & 3) == 2) return in.skip(2), uint16_t(1);
    if ((bits & 7) == 1) return in.skip(3), uint16_t(2);
    if ((bits & 7) == 5) return in.skip(3), uint16_t(3);
    if ((bits & 7) == 3) return in.skip(5), uint16_t(4 + (bits >> 3 & 3));
    if ((bits & 15) == 7) return in.skip(8), uint16_t(8 + (bits >> 4 & 15));
    return in.skip(14), uint16_t(24 + (bits >> 4));
}

template <size_t count>
bool FitsStates(const std::array<uint16_t, count>& frequencies, uint32_t states) {
    return std::accumulate(frequencies.begin(), frequencies.end(), 0u) <= states;
}

} // namespace

std::optional<LZFSEBlockHead> LZFSEBlockHead::read(ByteReader& in) {
    LZFSEBlockHead head;
    head.rawBytes = in.little32();
    uint64_t literals = in.little64();
    uint64_t states = in.little64();
    uint64_t rest = in.little64();
    uint32_t headBytes = uint32_t(rest);
    if (!in.ok() || headBytes < kPackedHeadBytes) return std::nullopt;

    head.literals = Field(literals, 0, 20);
    head.literalBytes = Field(literals, 20, 20);
    head.matches = Field(literals, 40, 20);
    head.literalBits = int(Field(literals, 60, 3)) - 7;
    for (int i = 0; i < 4; i++)
        head.literalStates[size_t(i)] = uint16_t(Field(states, i * 10, 10));
    head.matchBytes = Field(states, 40, 20);
    head.matchBits = int(Field(states, 60, 3)) - 7;
    head.lengthState = uint16_t(Field(rest, 32, 10));
    head.matchState = uint16_t(Field(rest, 42, 10));
    head.distanceState = uint16_t(Field(rest, 52, 10));

    Bytes packed = in.take(headBytes - kPackedHeadBytes);
    ForwardBits bits(packed);
    for (uint16_t& frequency : head.lengthFrequencies)
        frequency = ReadFrequency(bits);
    for (uint16_t& frequency : head.matchFrequencies)
        frequency = ReadFrequency(bits);
    for (uint16_t& frequency : head.distanceFrequencies)
        frequency = ReadFrequency(bits);
    for (uint16_t& frequency : head.literalFrequencies)
        frequency = ReadFrequency(bits);
    if (!in.ok() || !bits.isAtEnd() || !head.isSound()) return std::nullopt;
    return head;
}

bool LZFSEBlockHead::isSound() const {
    // Literals are coded in fours, so up to three more than come out. More would be work for nothing.
    bool countsFit = literals <= kMostLiterals && literals % 4 == 0 && literals <= uint64_t(rawBytes) + 3 &&
                     matches <= kMostMatches && rawBytes > 0;
    bool bitsFit = literalBits >= -7 && literalBits <= 0 && matchBits >= -7 && matchBits <= 0;
    bool statesFit = lengthState < kLengthStates && matchState < kLengthStates &&
                     distanceState < kDistanceStates &&
                     std::all_of(literalStates.begin(), literalStates.end(),
                                 [](uint16_t state) { return state < kLiteralStates; });
    return countsFit && bitsFit && statesFit && FitsStates(lengthFrequencies, kLengthStates) &&
           FitsStates(matchFrequencies, kLengthStates) && FitsStates(distanceFrequencies, kDistanceStates) &&
           FitsStates(literalFrequencies, kLiteralStates);
}

} // namespace tallyforge
