#pragma once

#include "foundation/DeviceRoot.h"
#include "foundation/Result.h"

#include <cstdint>
#include <vector>

namespace tallyforge {

/// Why something of this mode is no regular file; empty when it is one.
std::string WhyNotRegular(unsigned mode);

/// Everything from the descriptor's position to the end, if that is at most `limit` bytes; `expected` is how
/// much there should be.
Result<std::vector<uint8_t>> ReadToEnd(int descriptor, size_t expected, size_t limit);

/// The bytes of what is open, if it is a regular file of at most `limit` bytes.
Result<std::vector<uint8_t>> ReadRegularFile(int descriptor, size_t limit);

/// The identity of what is open; one that does not exist when it is no regular file.
FileIdentity IdentityOfDescriptor(int descriptor);

} // namespace tallyforge
