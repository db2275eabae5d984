#pragma once

#include "foundation/PropertyList.h"
#include "foundation/PropertyListFormat.h"
#include "foundation/Result.h"

#include <span>
#include <vector>

namespace tallyforge {

/// Which class a dictionary is archived as.
enum class ArchivedDictionaryClass { NSDictionary, NSMutableDictionary };

/// Writes one root object (a dictionary, array, string, number, boolean or data) as a keyed archive: a binary
/// property list with "$version" 100000, "$archiver", "$top" and "$objects". Equal strings are one entry, as
/// are equal numbers of one kind; the class record of a container follows its contents.
///
/// Empty when the root holds a UID, which has no meaning outside the archive that it came from.
class NSKeyedArchiver {
  public:
    static std::vector<uint8_t>
    archivedDataWithRootObject(const PropertyList& root,
                               ArchivedDictionaryClass cls = ArchivedDictionaryClass::NSMutableDictionary);
};

/// Reads a keyed archive whose root is made of dictionaries, arrays, strings, numbers, booleans, data and
/// dates; NSDictionary and NSMutableDictionary, NSArray and NSMutableArray, NSString and NSMutableString
/// alike, binary or XML. Anything else is refused with a reason.
class NSKeyedUnarchiver {
  public:
    static Result<PropertyList> unarchiveObjectWithData(std::span<const uint8_t> bytes,
                                                        const PropertyListLimits& limits = {});
};

} // namespace tallyforge
