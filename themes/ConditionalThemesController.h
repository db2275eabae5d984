#pragma once

#include "panes/PaneController.h"

namespace tallyforge {

/// The screen that ties themes to single apps.
class conditionalthemesListController final : public BundleListController {
  public:
    conditionalthemesListController() : BundleListController("conditionalthemesprefs") {}
    const char* className() const override { return "conditionalthemesListController"; }
    const MethodTable& methods() const override;
};

} // namespace tallyforge
