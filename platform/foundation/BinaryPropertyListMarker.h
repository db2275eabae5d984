#pragma once

#include <cstdint>

namespace tallyforge {

/// The first byte of an object in a binary property list; the low half is 0 where it tells the size or
/// length.
enum BinaryPropertyListMarker : uint8_t {
    kFalse = 0x08,
    kTrue = 0x09,
    kInteger = 0x10,
    kReal = 0x20,
    kDate = 0x33,
    kData = 0x40,
    kASCIIText = 0x50,
    kUTF16Text = 0x60,
    kUID = 0x80,
    kArray = 0xA0,
    kDictionary = 0xD0,
};

} // namespace tallyforge
