#pragma once

#include "foundation/Result.h"

#include <string>

namespace tallyforge {

/// Finds out whether a window can be opened here, before the toolkit is started: that one would end the whole
/// program where it cannot. The result is the name of the toolkit's platform; failing says what is missing,
/// in words that fit "no window: ...".
Result<std::string> FindDisplay();

} // namespace tallyforge
