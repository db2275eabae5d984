#pragma once

#include "foundation/PropertyList.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace tallyforge {

/// A value as JSON. A float number has the digits that people wrote ("1.2"), not those of the nearest double;
/// lists and dictionaries are taken over; data and dates are null.
nlohmann::ordered_json ValueJson(const PropertyList& value);

/// The JSON as the commands print it, its end of line included.
std::string DumpJson(const nlohmann::ordered_json& json);

} // namespace tallyforge
