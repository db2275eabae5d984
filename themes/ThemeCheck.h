#pragma once

#include "foundation/PropertyList.h"
#include "foundation/Result.h"

namespace tallyforge {

/// A theme that comes from elsewhere, as it may be taken in: its name and its settings, without whatever else
/// the file holds. Refused when it has no name that can have a file, no setting at all, or a setting of a
/// wrong kind (a colour has to be a colour string, everything else a finite number); the reason says which.
Result<Dictionary> CheckedTheme(const Dictionary& theme);

/// Whether two values of a setting give the same look: numbers in single precision whatever their kinds,
/// colours in capitals or small letters.
bool SameSettingValue(const PropertyList& a, const PropertyList& b);

} // namespace tallyforge
