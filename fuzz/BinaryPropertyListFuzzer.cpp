// Whatever the bytes are: refused with a reason, or read, and then written and read again as the same value.

#include "PropertyListMutator.h"

#include "foundation/PropertyListFormat.h"

#include <cstdlib>

using namespace tallyforge;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Result<PropertyList> value = BinaryPropertyList::Deserialize({data, size});
    if (!value) {
        if (value.reason().empty()) std::abort();
        return 0;
    }
    const std::vector<uint8_t> bytes = BinaryPropertyList::Serialize(*value);
    // Sharing is lost on writing, so what is read again may have more objects than a file from elsewhere.
    PropertyListLimits limits;
    limits.bytes = limits.text = SIZE_MAX / 2;
    limits.objects = limits.nodes;
    const Result<PropertyList> again = BinaryPropertyList::Deserialize(bytes, limits);
    if (!again || !(*again == *value) || BinaryPropertyList::Serialize(*again) != bytes) std::abort();
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    static constexpr std::string_view words[] = {"key", "text", "\xC3\xA9", "\xED\xA0\x80", "CF$UID"};
    return fuzz::MutatePropertyList(data, size, most, seed, words);
}
