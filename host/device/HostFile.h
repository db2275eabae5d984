#pragma once

#include "foundation/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace tallyforge {

/// Files of this machine, outside the device.

/// The whole file; an error when it cannot be read, is no regular file or has more than `limit` bytes.
Result<std::vector<uint8_t>> ReadHostFile(const std::filesystem::path& path, size_t limit = SIZE_MAX);

/// Whether a file has to outlast a power cut. What can be made again by the same command need not, and what
/// is written along with many others is brought to the disk together with them.
enum class Durable { no, yes };

/// An error when it can be told beforehand that the file cannot be written; nothing is touched.
Status ExpectHostFileWritable(const std::filesystem::path& path);

/// Writes the file as a whole: under another name first ("." + NAME + kUnfinishedSuffix), then in its place.
/// What stood there stays as it was when this fails; only where the last step of a durable one fails, the
/// syncing of the folder, the new file is there.
Status WriteHostFile(const std::filesystem::path& path, std::span<const uint8_t> bytes,
                     Durable durable = Durable::no);

} // namespace tallyforge
