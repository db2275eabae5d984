#pragma once

#include "foundation/PropertyList.h"

#include <string>

namespace tallyforge {

/// What one row of a settings screen is, as a dictionary of properties ("cell", "id", "key", "defaults",
/// ...).
class PSSpecifier {
  public:
    PSSpecifier() = default;
    explicit PSSpecifier(Dictionary properties) : properties_(std::move(properties)) {}

    const PropertyList* propertyForKey(std::string_view key) const { return properties_.objectForKey(key); }
    void setPropertyForKey(PropertyList value, std::string_view key) {
        properties_.setObjectForKey(std::move(value), key);
    }
    const Dictionary& properties() const { return properties_; }

  private:
    Dictionary properties_;
};

} // namespace tallyforge
