#pragma once

#include "quartzcore/CALayer.h"
#include "settings/SettingsKeys.h"

#include <cstdint>
#include <memory>

namespace tallyforge {

/// The key under which every mark's animation is added.
inline constexpr std::string_view kMarkAnimationKey = "badgeAnim";

/// Attaches the looping animation of that type (0 none, 1 to 12) to a mark's layer.
///
/// `duration` is one cycle in seconds, `scale` the mark's own scale factor, `alpha` its own alpha. Type 0
/// removes all animations of the layer; types 8 and 9 add theirs 0.2 s later, on the main queue; an unknown
/// type leaves the layer alone.
void ApplyMarkAnimation(const std::shared_ptr<CALayer>& layer, int32_t type, float duration, float scale,
                        float alpha, MarkKind kind);

} // namespace tallyforge
