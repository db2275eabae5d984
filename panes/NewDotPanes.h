#pragma once

#include "panes/PaneController.h"

namespace tallyforge {

/// The new dot: shape, size, position; and the way to all else about it.
class newdotListController final : public MarkPaneController {
  public:
    newdotListController() : MarkPaneController("newdotprefs", MarkKind::newDot) {}
    const char* className() const override { return "newdotListController"; }
    const MethodTable& methods() const override;
};

/// The new dot's colour and opacity.
class newdotcolorListController final : public PaneController {
  public:
    newdotcolorListController() : PaneController("newdotcolorprefs") {}
    const char* className() const override { return "newdotcolorListController"; }
    const MethodTable& methods() const override;
    using PaneController::setSliderForSpecifier;
};

class newdotanimListController final : public PaneController {
  public:
    newdotanimListController() : PaneController("newdotanimprefs") {}
    const char* className() const override { return "newdotanimListController"; }
    const MethodTable& methods() const override;
    using PaneController::resetSpecifierWithValue;
    using PaneController::setPresetForSpecifier;
    using PaneController::setSliderForSpecifier;
};

} // namespace tallyforge
