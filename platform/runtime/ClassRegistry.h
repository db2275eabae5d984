#pragma once

#include "runtime/MethodTable.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
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

/// A class that is known by name: how to make an instance of it, and the operations of the class itself that
/// give an object, by selector ("defaultWorkspace").
struct ObjCClass {
    using MakeObject = std::function<std::shared_ptr<NSObject>()>;
    MakeObject alloc;
    std::map<std::string, MakeObject, std::less<>> classMethods = {};

    /// The object that the operation gives; nullptr when the class has no such one.
    std::shared_ptr<NSObject> performSelector(std::string_view selector) const;
};

/// The class of that name, or nullptr when this system has none.
const ObjCClass* NSClassFromString(std::string_view name);
/// Makes a class known by name; the last registration of a name counts. Nothing as `alloc` removes the class.
void RegisterClass(std::string_view name, ObjCClass cls);

} // namespace tallyforge
