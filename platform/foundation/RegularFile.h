#pragma once

#include "foundation/DeviceRoot.h"
#include "foundation/Result.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tallyforge {

/// An error, of EISDIR or ENXIO, when something of this mode is no regular file.
Status ExpectRegular(unsigned mode);

/// Everything from the descriptor's position to the end, if that is at most `limit` bytes; `expected` is how
/// much there should be.
Result<std::vector<uint8_t>> ReadToEnd(int descriptor, size_t expected, size_t limit);

/// The bytes of what is open, if it is a regular file of at most `limit` bytes; and its identity where that
/// is wanted, as it was before the reading.
Result<std::vector<uint8_t>> ReadRegularFile(int descriptor, size_t limit, FileIdentity* identity = nullptr);

/// Writes them all; false, with errno set, when that fails.
bool WriteAll(int descriptor, std::span<const uint8_t> bytes);

/// The identity of what is open; one that does not exist when it is no regular file.
FileIdentity IdentityOfDescriptor(int descriptor);

} // namespace tallyforge
