#pragma once

#include "mobileservices/ByteReader.h"

#include <vector>

namespace tallyforge {

/// The output of an unpacker that repeats what it wrote before. Never writes beyond the given size and never
/// reaches back before what was there when it was made.
class SlidingCopy {
  public:
    SlidingCopy(std::vector<uint8_t>& out, size_t most) : out_(out), start_(out.size()), most_(most) {}

    bool literals(Bytes bytes) {
        if (bytes.size() > room()) return false;
        out_.insert(out_.end(), bytes.begin(), bytes.end());
        return true;
    }

    /// Repeats `count` bytes from `distance` back, which may be bytes of this very repetition.
    bool match(size_t count, size_t distance) {
        if (count == 0) return true;
        if (count > room() || distance == 0 || distance > out_.size() - start_) return false;
        size_t from = out_.size() - distance;
        size_t to = out_.size();
        out_.resize(to + count);
        uint8_t* bytes = out_.data();
        for (size_t i = 0; i < count; i++)
            bytes[to + i] = bytes[from + i];
        return true;
    }

  private:
    size_t room() const { return most_ > out_.size() ? most_ - out_.size() : 0; }

    std::vector<uint8_t>& out_;
    size_t start_;
    size_t most_;
};

} // namespace tallyforge
