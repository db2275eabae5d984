#pragma once

#include "coregraphics/CGGeometry.h"
#include "quartzcore/CAMediaTimingFunction.h"
#include "uikit/UIView.h"

namespace tallyforge {

/// Whether changes of views may take time. Off: all of them happen at once, for programs that drive screens.
bool UIViewAnimationsEnabled();
void UIViewSetAnimationsEnabled(bool enabled);

/// Moves the view's centre there; on screen it arrives after the duration (seconds).
void UIViewAnimateCenter(UIView& view, const CGPoint& center, double duration);
/// Changes the alpha; on screen it is reached after the duration.
void UIViewAnimateAlpha(UIView& view, CGFloat alpha, double duration);

} // namespace tallyforge
