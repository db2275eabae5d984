#pragma once

#include "foundation/Result.h"
#include "mobileservices/ByteReader.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyforge {

/// The container of compiled catalogues: numbered blocks of bytes, some of them named, some of them roots of
/// trees that map keys to values. It looks into the bytes it was opened over, which must stay.
class BOMStore {
  public:
    static constexpr size_t kMostTreeEntries = 65536;

    /// Fails when the bytes are no such container or its tables lie outside it.
    static Result<BOMStore> open(Bytes file);

    bool contains(std::string_view name) const;
    /// The bytes of the named block; none when there is no such name or its block lies outside the file.
    Bytes blockNamed(std::string_view name) const;

    struct Entry {
        Bytes key;
        Bytes value;
    };
    /// All entries of the named tree in the tree's order. Fails when there is no such tree, when it is
    /// broken, or when it has more than kMostTreeEntries entries.
    Result<std::vector<Entry>> entriesOfTree(std::string_view name) const;

  private:
    Bytes block(uint32_t number) const;

    Bytes file_;
    Bytes blockTable_; // pairs of offset and length, big-endian
    std::vector<std::pair<std::string, uint32_t>> names_;
};

} // namespace tallyforge
