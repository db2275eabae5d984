#pragma once

#include "mobileservices/ByteReader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tallyforge {

/// How the rows of a rendition are packed, by the catalogue's numbers. What is not named here is not
/// unpacked.
enum class CatalogPacking : uint32_t { none = 0, zip = 2, lzvn = 3, lzfse = 4, palette = 8 };

/// Unpacks at most `most` bytes. Nothing when the bytes are broken, hold more than that, or are packed in a
/// way that is not known here. Memory grows with what really comes out.
std::optional<std::vector<uint8_t>> Unpack(CatalogPacking packing, Bytes packed, size_t most);

/// The blocks of an LZFSE stream: plain ones, compressed ones (with the packed head, the only one that is
/// written) and LZVN.
std::optional<std::vector<uint8_t>> UnpackLZFSE(Bytes packed, size_t most);

/// A bare LZVN stream. Appends to `out` up to `most` bytes in all; matches reach back no further than what
/// this call appended. False when the stream is broken or holds more.
bool AppendLZVN(Bytes packed, size_t most, std::vector<uint8_t>& out);

} // namespace tallyforge
