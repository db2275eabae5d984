// Whatever the bytes are: refused with a reason, or unarchived, and then archived and unarchived as the same
// value.

#include "PropertyListMutator.h"

#include "foundation/NSKeyedArchiver.h"

#include <cstdlib>

using namespace tallyforge;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Result<PropertyList> value = NSKeyedUnarchiver::unarchiveObjectWithData({data, size});
    if (!value) {
        if (value.reason().empty()) std::abort();
        return 0;
    }
    PropertyListLimits limits;
    limits.bytes = limits.text = limits.objects = limits.nodes = SIZE_MAX / 2;
    for (const auto cls :
         {ArchivedDictionaryClass::NSDictionary, ArchivedDictionaryClass::NSMutableDictionary}) {
        const std::vector<uint8_t> bytes = NSKeyedArchiver::archivedDataWithRootObject(*value, cls);
        const Result<PropertyList> again = NSKeyedUnarchiver::unarchiveObjectWithData(bytes, limits);
        if (!again || !(*again == *value)) std::abort();
    }
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    static constexpr std::string_view words[] = {"$null",
                                                 "$archiver",
                                                 "NSKeyedArchiver",
                                                 "$version",
                                                 "$top",
                                                 "root",
                                                 "$objects",
                                                 "$class",
                                                 "$classes",
                                                 "$classname",
                                                 "NSMutableDictionary",
                                                 "NSDictionary",
                                                 "NSObject",
                                                 "NSArray",
                                                 "NSMutableArray",
                                                 "NSString",
                                                 "NSMutableString",
                                                 "NSDate",
                                                 "NSData",
                                                 "NS.keys",
                                                 "NS.objects",
                                                 "NS.string",
                                                 "NS.time",
                                                 "NS.data",
                                                 "CF$UID"};
    return fuzz::MutatePropertyList(data, size, most, seed, words);
}
