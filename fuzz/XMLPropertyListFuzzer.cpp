// Whatever the bytes are: refused with a reason, or read, and then written and read again as the same value.

#include "PropertyListMutator.h"

#include "foundation/PropertyListFormat.h"

#include <cstdlib>

using namespace tallyforge;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Result<PropertyList> value = XMLPropertyList::Deserialize({data, size});
    if (!value) {
        if (value.reason().empty()) std::abort();
        return 0;
    }
    // Text grows by its escapes on writing, and <plist> may be one element more.
    PropertyListLimits limits;
    limits.bytes = SIZE_MAX / 2;
    ++limits.objects;
    const std::vector<uint8_t> bytes = XMLPropertyList::Serialize(*value);
    const Result<PropertyList> again = XMLPropertyList::Deserialize(bytes, limits);
    // A NaN's sign and payload are the only thing that the form cannot tell, and writing does not change
    // twice.
    if (!again || XMLPropertyList::Serialize(*again) != bytes) std::abort();
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    static constexpr std::string_view words[] = {"key",    "text",   "\xC3\xA9", "\xED\xA0\x80",
                                                 "CF$UID", "<>&\"'", "]]>"};
    return fuzz::MutatePropertyList(data, size, most, seed, words);
}
