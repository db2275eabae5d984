#pragma once

#include "runtime/MethodTable.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The root of everything that can be made or asked by a name known only at run time.
class NSObject {
  public:
    virtual ~NSObject() = default;

    /// A variable of the instance that refers to another object, by its name in the class.
    struct InstanceVariable {
        const char* name;
        const NSObject* value;
    };
    /// Those that a class shows to tools which look at it from outside.
    virtual std::vector<InstanceVariable> instanceVariables() const { return {}; }

    /// The methods that can be called by their selectors' texts.
    virtual const MethodTable& methods() const;
};

/// A class that is known by name: how to make an instance of it.
struct ObjCClass {
    std::function<std::shared_ptr<NSObject>()> alloc;
};

/// The class of that name, or nullptr when this system has none.
const ObjCClass* NSClassFromString(std::string_view name);
/// Makes a class known by name; the last registration of a name counts. Nothing as `alloc` removes the class.
void RegisterClass(std::string_view name, ObjCClass cls);

} // namespace tallyforge
