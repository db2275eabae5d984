#pragma once

#include "panes/PaneController.h"

namespace tallyforge {

/// The badge: shape, size, rotation, position, numerals; and the way to all else about it.
class badgeListController final : public MarkPaneController {
  public:
    badgeListController() : MarkPaneController("badgeprefs", MarkKind::badge) {}
    const char* className() const override { return "badgeListController"; }
    const MethodTable& methods() const override;
    /// Turning Roman numerals off also tells the home screen to put the numeric count back.
    void setValueForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
};

/// The badge's fill and opacity.
class badgecolorListController final : public PaneController {
  public:
    badgecolorListController() : PaneController("badgecolorprefs") {}
    const char* className() const override { return "badgecolorListController"; }
    const MethodTable& methods() const override;
    using PaneController::resetSpecifierWithValue;
    using PaneController::setSliderForSpecifier;
};

/// The badge's number.
class badgelabelListController final : public PaneController {
  public:
    badgelabelListController() : PaneController("badgelabelprefs") {}
    const char* className() const override { return "badgelabelListController"; }
    const MethodTable& methods() const override;
    using PaneController::resetSpecifierWithValue;
    using PaneController::setValueForSpecifier;
};

class badgeborderListController final : public PaneController {
  public:
    badgeborderListController() : PaneController("badgeborderprefs") {}
    const char* className() const override { return "badgeborderListController"; }
    const MethodTable& methods() const override;
    using PaneController::setSliderForSpecifier;
};

class badgeanimListController final : public PaneController {
  public:
    badgeanimListController() : PaneController("badgeanimprefs") {}
    const char* className() const override { return "badgeanimListController"; }
    const MethodTable& methods() const override;
    using PaneController::resetSpecifierWithValue;
    using PaneController::setPresetForSpecifier;
    using PaneController::setSliderForSpecifier;
};

class badgeglowListController final : public PaneController {
  public:
    badgeglowListController() : PaneController("badgeglowprefs") {}
    const char* className() const override { return "badgeglowListController"; }
    const MethodTable& methods() const override;
    using PaneController::setSliderForSpecifier;
};

} // namespace tallyforge
