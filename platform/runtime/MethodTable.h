#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tallyforge {

class NSObject;
class PropertyList;

/// What a method that is called by its selector's text is handed. "tap" takes nothing, "followMe:" the
/// object, "setValue:forSpecifier:" the value and the object, "resetSpecifier:withValue:" the text and the
/// value.
struct MethodArguments {
    const PropertyList* value = nullptr;
    std::shared_ptr<NSObject> object = nullptr;
    std::string_view text = {};
};

/// What a method gives back: a value, or nothing.
using MethodResult = std::shared_ptr<const PropertyList>;

/// One method of a class under its selector's text.
struct MethodEntry {
    std::string_view selector;
    MethodResult (*call)(NSObject& self, const MethodArguments& arguments);
};

/// The methods of a class that can be called by name: its own, then those of the class above it.
struct MethodTable {
    std::span<const MethodEntry> own;
    const MethodTable* superclass = nullptr;

    /// The nearest method of that selector, or nullptr.
    const MethodEntry* find(std::string_view selector) const;
};

/// Whether the object has a method of that selector.
bool RespondsToSelector(const NSObject& object, std::string_view selector);
/// Calls it; nothing when the object has no such method.
MethodResult PerformSelector(NSObject& object, std::string_view selector,
                             const MethodArguments& arguments = {});

} // namespace tallyforge
