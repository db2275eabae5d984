#include "mobileservices/CatalogCompression.h"

#include <algorithm>
#include <array>
#include <limits>
#include <zlib.h>

namespace tallyforge {

namespace {

constexpr size_t kMostAtOnce = std::numeric_limits<uInt>::max();

// The stream may be dressed as gzip or zlib, which the library tells apart itself, or be bare.
std::optional<std::vector<uint8_t>> Inflate(Bytes packed, size_t most, int windowBits) {
    if (packed.size() > kMostAtOnce) return std::nullopt;
    z_stream stream{};
    if (inflateInit2(&stream, windowBits) != Z_OK) return std::nullopt;
    stream.next_in = const_cast<Bytef*>(packed.data());
    stream.avail_in = uInt(packed.size());

    std::vector<uint8_t> out;
    std::array<uint8_t, 16384> buffer;
    int state = Z_OK;
    while (state == Z_OK && out.size() <= most) {
        stream.next_out = buffer.data();
        stream.avail_out = uInt(buffer.size());
        state = inflate(&stream, Z_NO_FLUSH);
        out.insert(out.end(), buffer.begin(), buffer.end() - stream.avail_out);
    }
    inflateEnd(&stream);
    if (state != Z_STREAM_END || out.size() > most) return std::nullopt;
    return out;
}

std::optional<std::vector<uint8_t>> UnpackZip(Bytes packed, size_t most) {
    constexpr int kDressed = MAX_WBITS + 32;
    constexpr int kBare = -MAX_WBITS;
    if (auto out = Inflate(packed, most, kDressed)) return out;
    return Inflate(packed, most, kBare);
}

// Bare, or wrapped into blocks. No bare stream starts with the letters of a block: read as an instruction,
// they reach back before the beginning.
std::optional<std::vector<uint8_t>> UnpackLZVN(Bytes packed, size_t most) {
    constexpr std::array<uint8_t, 3> kBlock = {'b', 'v', 'x'};
    if (packed.size() >= kBlock.size() && std::equal(kBlock.begin(), kBlock.end(), packed.begin()))
        return UnpackLZFSE(packed, most);
    std::vector<uint8_t> out;
    if (!AppendLZVN(packed, most, out)) return std::nullopt;
    return out;
}

} // namespace

std::optional<std::vector<uint8_t>> Unpack(CatalogPacking packing, Bytes packed, size_t most) {
    switch (packing) {
    case CatalogPacking::none:
        if (packed.size() > most) return std::nullopt;
        return std::vector<uint8_t>(packed.begin(), packed.end());
    case CatalogPacking::zip:
        return UnpackZip(packed, most);
    case CatalogPacking::lzvn:
        return UnpackLZVN(packed, most);
    case CatalogPacking::lzfse:
    case CatalogPacking::palette:
        return UnpackLZFSE(packed, most);
    }
    return std::nullopt;
}

} // namespace tallyforge
