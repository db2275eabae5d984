#include "mobileservices/CatalogCompression.h"
#include "mobileservices/LZFSEBlock.h"
#include "mobileservices/SlidingCopy.h"

#include <array>
#include <bit>

namespace tallyforge {

namespace {

constexpr uint32_t kEndOfStream = FourLetters("bvx$");
constexpr uint32_t kPlainBlock = FourLetters("bvx-");
constexpr uint32_t kCompressedBlock = FourLetters("bvx2");
constexpr uint32_t kLZVNBlock = FourLetters("bvxn");

// A symbol of a number stands for a base and so many bits that are added to it.
constexpr std::array<uint8_t, 20> kLengthExtra = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 5, 8};
constexpr std::array<uint8_t, 20> kMatchExtra = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 5, 8, 11};
constexpr std::array<uint8_t, 64> kDistanceExtra = [] {
    std::array<uint8_t, 64> extra{};
    for (size_t i = 0; i < extra.size(); i++)
        extra[i] = uint8_t(i / 4);
    return extra;
}();

/// Each base starts where the numbers of the symbol before end.
template <size_t count>
constexpr std::array<uint32_t, count> BasesOf(const std::array<uint8_t, count>& extra) {
    std::array<uint32_t, count> bases{};
    for (size_t i = 1; i < count; i++)
        bases[i] = bases[i - 1] + (1u << extra[i - 1]);
    return bases;
}
constexpr auto kLengthBases = BasesOf(kLengthExtra);
constexpr auto kMatchBases = BasesOf(kMatchExtra);
constexpr auto kDistanceBases = BasesOf(kDistanceExtra);

/// Bits taken from the end of the bytes towards their beginning.
class BackwardBits {
  public:
    /// `unused` is how many of the last bits do not count, as a number from -7 to 0.
    BackwardBits(Bytes bytes, int unused) : bytes_(bytes) {
        size_t drop = size_t(-unused);
        ok_ = bytes.size() * 8 >= drop;
        left_ = ok_ ? bytes.size() * 8 - drop : 0;
    }

    bool ok() const { return ok_; }

    /// At most 32 bits. Zero once there are too few.
    uint32_t take(size_t count) {
        if (count > left_) {
            ok_ = false;
            left_ = 0;
            return 0;
        }
        left_ -= count;
        size_t byte = left_ / 8;
        uint64_t word = 0;
        for (size_t i = 0; i < 5 && byte + i < bytes_.size(); i++)
            word |= uint64_t(bytes_[byte + i]) << (i * 8);
        return uint32_t(word >> (left_ % 8) & ((uint64_t(1) << count) - 1));
    }

  private:
    Bytes bytes_;
    size_t left_ = 0;
    bool ok_ = true;
};

/// A coder of finite states: each state stands for a symbol, and leads to the next state with some bits.
template <uint32_t states>
class Coder {
  public:
    template <size_t count>
    explicit Coder(const std::array<uint16_t, count>& frequencies) {
        uint32_t state = 0;
        static_assert(count <= UINT16_MAX);
        for (size_t index = 0; index < count; index++) {
            auto symbol = static_cast<uint16_t>(index);
            uint32_t frequency = frequencies[index];
            if (frequency == 0) continue;
            // The symbol's states are spread over all next states: the first ones take one bit more.
            uint32_t bits = uint32_t(std::bit_width(states) - std::bit_width(frequency));
            uint32_t longer = (2 * states >> bits) - frequency;
            for (uint32_t i = 0; i < frequency; i++) {
                Step& step = steps_[state++];
                step.symbol = symbol;
                step.bits = uint8_t(i < longer ? bits : bits - 1);
                step.base =
                    uint16_t(i < longer ? ((frequency + i) << bits) - states : (i - longer) << step.bits);
            }
        }
        used_ = state;
    }

    /// The state's symbol; moves on to the next state. False for a state that stands for nothing.
    bool next(uint16_t& state, BackwardBits& in, uint16_t& symbol) const {
        if (state >= used_) return false;
        const Step& step = steps_[state];
        symbol = step.symbol;
        state = uint16_t(step.base + in.take(step.bits));
        return true;
    }

  private:
    struct Step {
        uint16_t symbol = 0;
        uint16_t base = 0;
        uint8_t bits = 0;
    };
    std::array<Step, states> steps_{};
    uint32_t used_ = 0;
};

std::optional<std::vector<uint8_t>> UnpackLiterals(const LZFSEBlockHead& head, Bytes packed) {
    Coder<LZFSEBlockHead::kLiteralStates> coder(head.literalFrequencies);
    BackwardBits in(packed, head.literalBits);
    auto states = head.literalStates; // four coders take turns
    std::vector<uint8_t> literals(head.literals);
    for (size_t i = 0; i < literals.size(); i++) {
        uint16_t symbol = 0;
        if (!coder.next(states[i % 4], in, symbol)) return std::nullopt;
        literals[i] = uint8_t(symbol);
    }
    if (!in.ok()) return std::nullopt;
    return literals;
}

bool AppendCompressedBlock(ByteReader& in, size_t most, std::vector<uint8_t>& out, SlidingCopy& copy) {
    auto head = LZFSEBlockHead::read(in);
    if (!head || head->rawBytes > most - out.size()) return false;
    Bytes packedLiterals = in.take(head->literalBytes);
    Bytes packedMatches = in.take(head->matchBytes);
    if (!in.ok()) return false;
    auto literals = UnpackLiterals(*head, packedLiterals);
    if (!literals) return false;

    Coder<LZFSEBlockHead::kLengthStates> lengths(head->lengthFrequencies);
    Coder<LZFSEBlockHead::kLengthStates> matches(head->matchFrequencies);
    Coder<LZFSEBlockHead::kDistanceStates> distances(head->distanceFrequencies);
    BackwardBits bits(packedMatches, head->matchBits);
    // A number is its symbol's base and some bits more, which follow those that lead to the next state.
    auto number = [&bits](const auto& coder, uint16_t& state, const auto& bases, const auto& extra) {
        uint16_t symbol = 0;
        if (!coder.next(state, bits, symbol)) return std::optional<uint32_t>();
        return std::optional<uint32_t>(bases[symbol] + bits.take(extra[symbol]));
    };

    size_t end = out.size() + head->rawBytes;
    ByteReader literalsLeft(*literals);
    uint32_t distance = 0;
    for (uint32_t i = 0; i < head->matches; i++) {
        auto length = number(lengths, head->lengthState, kLengthBases, kLengthExtra);
        auto match = number(matches, head->matchState, kMatchBases, kMatchExtra);
        auto newDistance = number(distances, head->distanceState, kDistanceBases, kDistanceExtra);
        if (!length || !match || !newDistance || !bits.ok()) return false;
        if (*newDistance) distance = *newDistance;
        size_t written = size_t(*length) + *match;
        if (written == 0 || written > end - out.size()) return false;
        Bytes plain = literalsLeft.take(*length);
        if (!literalsLeft.ok() || !copy.literals(plain) || !copy.match(*match, distance)) return false;
    }
    return out.size() == end;
}

bool AppendLZVNBlock(ByteReader& in, size_t most, std::vector<uint8_t>& out) {
    uint32_t rawBytes = in.little32();
    uint32_t packedBytes = in.little32();
    Bytes packed = in.take(packedBytes);
    if (!in.ok() || rawBytes > most - out.size()) return false;
    size_t end = out.size() + rawBytes;
    return AppendLZVN(packed, end, out) && out.size() == end;
}

bool AppendPlainBlock(ByteReader& in, SlidingCopy& copy) {
    uint32_t rawBytes = in.little32();
    Bytes plain = in.take(rawBytes);
    return in.ok() && copy.literals(plain);
}

} // namespace

std::optional<std::vector<uint8_t>> UnpackLZFSE(Bytes packed, size_t most) {
    ByteReader in(packed);
    std::vector<uint8_t> out;
    SlidingCopy copy(out, most);
    // A writer closes a block when it is full. Crowds of tiny blocks only cost time.
    size_t blocksLeft = 64 + most / 256;
    while (blocksLeft-- > 0) {
        uint32_t kind = in.little32();
        if (!in.ok()) return std::nullopt;
        bool appended = false;
        if (kind == kEndOfStream) return out;
        if (kind == kPlainBlock)
            appended = AppendPlainBlock(in, copy);
        else if (kind == kLZVNBlock)
            appended = AppendLZVNBlock(in, most, out);
        else if (kind == kCompressedBlock)
            appended = AppendCompressedBlock(in, most, out, copy);
        if (!appended) return std::nullopt;
    }
    return std::nullopt;
}

} // namespace tallyforge
