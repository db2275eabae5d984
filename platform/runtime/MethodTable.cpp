#include "runtime/MethodTable.h"

#include "runtime/ClassRegistry.h"

#include <algorithm>

namespace tallyforge {

const MethodEntry* MethodTable::find(std::string_view selector) const {
    for (const MethodTable* table = this; table; table = table->superclass) {
        auto entry = std::find_if(table->own.begin(), table->own.end(),
                                  [&](const MethodEntry& method) { return method.selector == selector; });
        if (entry != table->own.end()) return &*entry;
    }
    return nullptr;
}

bool RespondsToSelector(const NSObject& object, std::string_view selector) {
    return object.methods().find(selector) != nullptr;
}

MethodResult PerformSelector(NSObject& object, std::string_view selector, const MethodArguments& arguments) {
    const MethodEntry* method = object.methods().find(selector);
    return method ? method->call(object, arguments) : nullptr;
}

} // namespace tallyforge
