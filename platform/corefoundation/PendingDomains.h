#pragma once

namespace tallyforge {

/// Synchronises every domain in which this process has set keys that are not in the file yet. True when all
/// of them are written; false leaves those that failed pending.
bool SynchronizePendingDomains();

} // namespace tallyforge
