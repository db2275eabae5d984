#pragma once

#include "uikit/UITouch.h"

#include <optional>

class QKeyEvent;

namespace tallyforge {

/// The key as screens know it; nothing for keys that they do not.
std::optional<UIKey> ScreenKey(const QKeyEvent& event);
/// Whether the key closes the window.
bool ClosesWindow(const QKeyEvent& event);
/// Whether the key writes its text.
bool WritesText(const QKeyEvent& event);

} // namespace tallyforge
