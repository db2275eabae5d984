#pragma once

#include "foundation/PropertyList.h"
#include "runtime/ClassRegistry.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

class PSSpecifier;
using PSSpecifierRef = std::shared_ptr<PSSpecifier>;

/// What one row of a settings screen is: a dictionary of properties ("cell", "id", "key", "defaults", ...),
/// and the object that its actions are sent to.
class PSSpecifier final : public NSObject {
  public:
    PSSpecifier() = default;
    explicit PSSpecifier(Dictionary properties) : properties_(std::move(properties)) {}

    const PropertyList* propertyForKey(std::string_view key) const { return properties_.objectForKey(key); }
    void setPropertyForKey(PropertyList value, std::string_view key) {
        properties_.setObjectForKey(std::move(value), key);
    }
    void removePropertyForKey(std::string_view key) { properties_.removeObjectForKey(key); }
    const Dictionary& properties() const { return properties_; }

    /// The property as text; empty when it is absent or no text.
    std::string textForKey(std::string_view key) const;
    /// The same, told from an absent one.
    std::optional<std::string> textIfSet(std::string_view key) const;
    bool flagForKey(std::string_view key, bool absent) const;
    double numberForKey(std::string_view key, double absent) const;

    /// "id", else "key".
    std::string identifier() const;
    /// "label".
    std::string name() const { return textForKey("label"); }
    /// The kind of row ("PSSliderCell", ...).
    std::string cellKind() const { return textForKey("cell"); }

    /// Objects that belong to the row, such as its cell ("cellObject") and its control ("control").
    std::shared_ptr<NSObject> objectForKey(std::string_view key) const;
    void setObjectForKey(const std::weak_ptr<NSObject>& object, std::string_view key);

    /// The object whose methods the row names; it owns the specifier.
    NSObject* target() const { return target_; }
    void setTarget(NSObject* target) { target_ = target; }

    /// The choices of a list or of segments: "validValues" with "validTitles", else what the target's methods
    /// give that "valuesDataSource" and "titlesDataSource" name. As many as both have.
    struct Choice {
        PropertyList value;
        std::string title;
        /// Whether this is the choice of a value; numbers are compared as numbers, whatever their kinds.
        bool stands(const PropertyList& forValue) const {
            return value.isNumber() && forValue.isNumber() ? value.doubleValue() == forValue.doubleValue()
                                                           : value == forValue;
        }
    };
    std::vector<Choice> choices();

    /// The row's value by its "get" method, else by the target's `readPreferenceValue:`.
    std::optional<PropertyList> performGetter();
    /// Hands the value to the row's "set" method, else to the target's `setPreferenceValue:specifier:`.
    void performSetter(const PropertyList& value);

    /// The specifier as the shared object that methods are handed.
    void setSelf(const PSSpecifierRef& self) { self_ = self; }

  private:
    Dictionary properties_;
    std::map<std::string, std::weak_ptr<NSObject>, std::less<>> objects_;
    NSObject* target_ = nullptr;
    std::weak_ptr<PSSpecifier> self_;
};

} // namespace tallyforge
