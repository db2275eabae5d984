#include "settings/SilentFailures.h"

#include <utility>

namespace tallyforge {

namespace {

SilentFailureListener& Listener() {
    static SilentFailureListener listener;
    return listener;
}

} // namespace

void SetSilentFailureListener(SilentFailureListener listener) {
    Listener() = std::move(listener);
}

void TellSilentFailure(std::string_view path, const Status& outcome) {
    if (!outcome && Listener()) Listener()(std::string(path), outcome.reason());
}

} // namespace tallyforge
