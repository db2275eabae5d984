#pragma once

#include "foundation/PropertyList.h"
#include "foundation/Result.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tallyforge {

/// What a file from elsewhere may cost at most. Real domains, themes and archives are far below.
struct PropertyListLimits {
    size_t bytes = 4u << 20; ///< size of the file
    size_t objects = 65'536; ///< objects in the file
    size_t depth = 64;       ///< containers within containers
    size_t nodes = 262'144;  ///< objects once shared references are followed
    size_t text = 16u << 20; ///< bytes of all strings and data, counted as nodes are
};

/// The binary form ("bplist00").
namespace BinaryPropertyList {
bool Identify(std::span<const uint8_t> bytes);
Result<PropertyList> Deserialize(std::span<const uint8_t> bytes, const PropertyListLimits& limits = {});
/// Pre-order: the container, its keys, its values. Equal strings, numbers and data of one kind are written
/// once; so are booleans and dates. A UID that comes again refers to the first, yet leaves an object of its
/// own, as the device's writer has it. Reference and offset sizes are the smallest of 1, 2, 4, 8 bytes that
/// hold the count of objects and the offset table's place.
std::vector<uint8_t> Serialize(const PropertyList& value);
} // namespace BinaryPropertyList

/// The XML form.
namespace XMLPropertyList {
bool Identify(std::span<const uint8_t> bytes);
Result<PropertyList> Deserialize(std::span<const uint8_t> bytes, const PropertyListLimits& limits = {});
/// UID values are written as the dictionary {"CF$UID": n}, as the platform does, and read back as UIDs. The
/// form has no single-precision reals (they become doubles of the same value), no parts of a second, and no
/// control characters or lone surrogates (U+FFFD stands for them).
std::vector<uint8_t> Serialize(const PropertyList& value);
} // namespace XMLPropertyList

/// Either form, told by its first bytes.
Result<PropertyList> DeserializePropertyList(std::span<const uint8_t> bytes,
                                             const PropertyListLimits& limits = {});

} // namespace tallyforge
