#pragma once

#include "panes/PaneController.h"

#include <memory>

namespace tallyforge {

/// The first screen: the ways to the marks and the themes, and to the makers.
class tallyforgeprefsListController final : public BundleListController {
  public:
    tallyforgeprefsListController() : BundleListController("tallyforgeprefs") {}
    const char* className() const override { return "tallyforgeprefsListController"; }
    const MethodTable& methods() const override;

    /// Opens the makers' profile in the first client that is installed, else its web page.
    void followMe(const std::shared_ptr<NSObject>& sender);
    /// Opens the web page for donations.
    void donate(const std::shared_ptr<NSObject>& sender);
};

} // namespace tallyforge
