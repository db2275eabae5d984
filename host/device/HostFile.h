#pragma once

#include "foundation/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace tallyforge {

/// Files of this machine, outside the device.

/// The whole file; an error when it cannot be read or has more than `limit` bytes.
Result<std::vector<uint8_t>> ReadHostFile(const std::filesystem::path& path, size_t limit = SIZE_MAX);

/// Writes the file as a whole: under another name first, then in its place. What stood there stays as it was
/// when this fails.
Status WriteHostFile(const std::filesystem::path& path, std::span<const uint8_t> bytes);

} // namespace tallyforge
