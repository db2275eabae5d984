#pragma once

#include <cstddef>
#include <functional>

namespace tallyforge {

/// Runs the work for every number below `count`, each once and in no order: on the calling thread and, where
/// there are many and the processor has more than one core, on others beside it. Returns when all is done.
/// The work must bear being run for several numbers at once, and throws nothing.
void dispatch_apply(size_t count, const std::function<void(size_t)>& work);

} // namespace tallyforge
