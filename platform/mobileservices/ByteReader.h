#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tallyforge {

using Bytes = std::span<const uint8_t>;

/// Walks over bytes of unknown honesty. Reading beyond the end gives zeros and marks the reader as failed,
/// for good; so a record can be read whole and checked once.
class ByteReader {
  public:
    explicit ByteReader(Bytes bytes) : left_(bytes) {}

    bool ok() const { return ok_; }
    Bytes left() const { return left_; }

    /// The next bytes, or none when there are fewer.
    Bytes take(size_t count) {
        if (count > left_.size()) {
            ok_ = false;
            left_ = {};
            return {};
        }
        Bytes taken = left_.first(count);
        left_ = left_.subspan(count);
        return taken;
    }

    uint8_t u8() { return uint8_t(little(1)); }
    uint16_t little16() { return uint16_t(little(2)); }
    uint32_t little32() { return uint32_t(little(4)); }
    uint64_t little64() { return little(8); }
    uint16_t big16() { return uint16_t(big(2)); }
    uint32_t big32() { return uint32_t(big(4)); }

  private:
    uint64_t little(size_t count) {
        uint64_t value = 0;
        Bytes taken = take(count);
        for (size_t i = taken.size(); i-- > 0;)
            value = value << 8 | taken[i];
        return value;
    }
    uint64_t big(size_t count) {
        uint64_t value = 0;
        for (uint8_t byte : take(count))
            value = value << 8 | byte;
        return value;
    }

    Bytes left_;
    bool ok_ = true;
};

/// The part of the bytes that starts at the offset, or none when it does not lie within them.
inline Bytes PartOf(Bytes bytes, uint64_t offset, uint64_t length) {
    if (offset > bytes.size() || length > bytes.size() - offset) return {};
    return bytes.subspan(size_t(offset), size_t(length));
}

/// Four letters as they stand in a file, read as a little-endian number.
constexpr uint32_t FourLetters(const char (&letters)[5]) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; i--)
        value = value << 8 | uint8_t(letters[i]);
    return value;
}

} // namespace tallyforge
