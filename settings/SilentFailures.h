#pragma once

#include "foundation/Result.h"

#include <functional>
#include <string>
#include <string_view>

namespace tallyforge {

/// The screens go on after a file could not be written or removed, with the words they say after a success.
/// Whoever runs them can hear of it here; an empty listener hears nothing.
using SilentFailureListener = std::function<void(const std::string& path, const std::string& why)>;
void SetSilentFailureListener(SilentFailureListener listener);

/// Tells the listener if the act on the file failed.
void TellSilentFailure(std::string_view path, const Status& outcome);

} // namespace tallyforge
