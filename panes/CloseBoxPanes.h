#pragma once

#include "panes/PaneController.h"

namespace tallyforge {

/// The close box: shape, size, rotation, position; and the way to all else about it.
class closeboxListController final : public MarkPaneController {
  public:
    closeboxListController() : MarkPaneController("closeboxprefs", MarkKind::closeBox) {}
    const char* className() const override { return "closeboxListController"; }
    const MethodTable& methods() const override;
};

/// The close box's fill and opacity.
class closeboxcolorListController final : public PaneController {
  public:
    closeboxcolorListController() : PaneController("closeboxcolorprefs") {}
    const char* className() const override { return "closeboxcolorListController"; }
    const MethodTable& methods() const override;
    using PaneController::setSliderForSpecifier;
};

/// The cross in the close box.
class closeboxlabelListController final : public PaneController {
  public:
    closeboxlabelListController() : PaneController("closeboxlabelprefs") {}
    const char* className() const override { return "closeboxlabelListController"; }
    const MethodTable& methods() const override;
    using PaneController::resetSpecifierWithValue;
    using PaneController::setValueForSpecifier;
};

class closeboxborderListController final : public PaneController {
  public:
    closeboxborderListController() : PaneController("closeboxborderprefs") {}
    const char* className() const override { return "closeboxborderListController"; }
    const MethodTable& methods() const override;
    using PaneController::setSliderForSpecifier;
};

class closeboxanimListController final : public PaneController {
  public:
    closeboxanimListController() : PaneController("closeboxanimprefs") {}
    const char* className() const override { return "closeboxanimListController"; }
    const MethodTable& methods() const override;
    using PaneController::resetSpecifierWithValue;
    using PaneController::setPresetForSpecifier;
    using PaneController::setSliderForSpecifier;
};

class closeboxglowListController final : public PaneController {
  public:
    closeboxglowListController() : PaneController("closeboxglowprefs") {}
    const char* className() const override { return "closeboxglowListController"; }
    const MethodTable& methods() const override;
    using PaneController::setSliderForSpecifier;
};

} // namespace tallyforge
