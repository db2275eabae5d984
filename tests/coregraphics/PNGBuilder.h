#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

using Bytes = std::vector<uint8_t>;

inline void append32(Bytes& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(uint8_t(v >> shift));
}

inline void appendChunk(Bytes& out, std::string_view type, const Bytes& data) {
    append32(out, uint32_t(data.size()));
    Bytes body(type.begin(), type.end());
    body.insert(body.end(), data.begin(), data.end());
    out.insert(out.end(), body.begin(), body.end());
    append32(out, uint32_t(crc32(0, body.data(), uInt(body.size()))));
}

inline Bytes pngSignature() {
    return {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
}

inline Bytes pngHeader(uint32_t width, uint32_t height, int depth, int colorType, bool interlaced = false) {
    Bytes header;
    append32(header, width);
    append32(header, height);
    header.insert(header.end(), {uint8_t(depth), uint8_t(colorType), 0, 0, uint8_t(interlaced)});
    return header;
}

/// windowBits: 15 with zlib header, -15 without.
inline Bytes deflated(const Bytes& data, int windowBits) {
    z_stream stream{};
    deflateInit2(&stream, 6, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY);
    Bytes out(deflateBound(&stream, uLong(data.size())) + 16);
    Bytes input = data;
    stream.next_in = input.data();
    stream.avail_in = uInt(input.size());
    stream.next_out = out.data();
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

struct PNGChunk {
    std::string type;
    Bytes data;
};

/// A PNG, or the device's own kind of one; the rows are given with their filter bytes.
inline Bytes buildPNG(bool device, const Bytes& header, const Bytes& rows,
                      const std::vector<PNGChunk>& before = {}) {
    Bytes out = pngSignature();
    if (device) appendChunk(out, "CgBI", {0x50, 0x00, 0x20, 0x02});
    appendChunk(out, "IHDR", header);
    for (const PNGChunk& chunk : before)
        appendChunk(out, chunk.type, chunk.data);
    Bytes packed = deflated(rows, device ? -15 : 15);
    // In two pieces, as large files have them.
    auto middle = packed.begin() + long(packed.size() / 2);
    appendChunk(out, "IDAT", Bytes(packed.begin(), middle));
    appendChunk(out, "IDAT", Bytes(middle, packed.end()));
    appendChunk(out, "IEND", {});
    return out;
}

} // namespace tallyforge
