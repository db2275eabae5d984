#pragma once

#include "foundation/Result.h"

#include <memory>
#include <string>

namespace tallyforge {

/// A display that windows can be opened on.
struct ReachableDisplay {
    std::string platform; ///< the toolkit's name for its kind
    /// To be held until the toolkit is connected: a server that its last client leaves may start anew, and
    /// refuses whoever comes meanwhile.
    std::shared_ptr<void> connection;
};

/// Finds out whether a window can be opened here, before the toolkit is started: that one would end the whole
/// program where it cannot. Failing says what is missing, in words that fit "no window: ...".
Result<ReachableDisplay> FindDisplay();

} // namespace tallyforge
