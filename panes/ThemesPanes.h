#pragma once

#include "panes/PaneController.h"

namespace tallyforge {

/// What themes are for.
class themesListController final : public BundleListController {
  public:
    themesListController() : BundleListController("themesprefs") {}
    const char* className() const override { return "themesListController"; }
    const MethodTable& methods() const override;
};

/// What themes of single apps are for.
class conditionalthemesListController final : public BundleListController {
  public:
    conditionalthemesListController() : BundleListController("conditionalthemesprefs") {}
    const char* className() const override { return "conditionalthemesListController"; }
    const MethodTable& methods() const override;
};

} // namespace tallyforge
