#include "corefoundation/NSUserDefaults.h"

#include "corefoundation/PendingDomains.h"

#include <utility>

namespace tallyforge {

NSUserDefaults& NSUserDefaults::standardUserDefaults() {
    static NSUserDefaults defaults;
    return defaults;
}

bool NSUserDefaults::synchronize() {
    if (trace_) trace_();
    return SynchronizePendingDomains();
}

void NSUserDefaults::setTrace(std::function<void()> trace) {
    trace_ = std::move(trace);
}

} // namespace tallyforge
