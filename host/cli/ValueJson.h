#pragma once

#include "foundation/PropertyList.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace tallyforge {

/// A value as JSON. A float number has the digits that people wrote ("1.2"), not those of the nearest double;
/// lists and dictionaries are taken over; data and dates are null.
nlohmann::ordered_json ValueJson(const PropertyList& value);

/// Prints it on standard output as people read it; what is no UTF-8 becomes U+FFFD.
void PrintJson(const nlohmann::ordered_json& json);

} // namespace tallyforge
