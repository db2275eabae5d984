#pragma once

#include "quartzcore/CAAnimation.h"
#include "uikit/UIView.h"

#include <nlohmann/json_fwd.hpp>

namespace tallyforge {

/// A view and all below it as JSON: class, name, geometry, looks, layer, contents, animations, subviews from
/// back to front. Numbers read back as the same doubles; those that are not finite are null.
nlohmann::ordered_json InspectView(const UIView& view);

/// An animation as JSON: its class, its timing, and what it has of values.
nlohmann::ordered_json InspectAnimation(const CAAnimation& animation);

/// A point, size or rectangle as an object of its fields.
nlohmann::ordered_json InspectPoint(const CGPoint& point);
nlohmann::ordered_json InspectSize(const CGSize& size);
nlohmann::ordered_json InspectRect(const CGRect& rect);

} // namespace tallyforge
