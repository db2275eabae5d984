#include "runtime/ClassRegistry.h"

namespace tallyforge {

namespace {

std::map<std::string, ObjCClass, std::less<>>& Classes() {
    static std::map<std::string, ObjCClass, std::less<>> classes;
    return classes;
}

} // namespace

const MethodTable& NSObject::methods() const {
    static constexpr MethodTable none{};
    return none;
}

std::shared_ptr<NSObject> ObjCClass::performSelector(std::string_view selector) const {
    auto found = classMethods.find(selector);
    return found == classMethods.end() ? nullptr : found->second();
}

const ObjCClass* NSClassFromString(std::string_view name) {
    auto found = Classes().find(name);
    return found == Classes().end() ? nullptr : &found->second;
}

void RegisterClass(std::string_view name, ObjCClass cls) {
    if (cls.alloc)
        Classes().insert_or_assign(std::string(name), std::move(cls));
    else if (auto found = Classes().find(name); found != Classes().end())
        Classes().erase(found);
}

} // namespace tallyforge
