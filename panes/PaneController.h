#pragma once

#include "preferences/PSListController.h"
#include "settings/SettingsKeys.h"

#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// A screen of the Tallyforge bundle: the rows of one list, loaded at the first call.
class BundleListController : public PSListController {
  public:
    explicit BundleListController(std::string_view listName) : listName_(listName) {}

    const std::vector<PSSpecifierRef>& specifiers() override;
    std::string bundlePath() const override;

  private:
    std::string_view listName_;
    bool loaded_ = false;
};

/// A screen that edits a part of a mark's look and shows the preview. Each class opens to the outside what is
/// its own of the methods here; its method table says the same to the rows.
class PaneController : public BundleListController {
  public:
    using BundleListController::BundleListController;

    /// Has the preview at the top draw again; nobody else hears of it.
    void viewDidAppear(bool animated) override;

  protected:
    // The setters of rows. All write the value, show the row, synchronise, and announce the change, whether
    // or not the value is another one.
    void setValueForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
    void setSliderForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
    void setPresetForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
    /// Writes the value and shows the row of that identifier; synchronising and announcing is the caller's.
    void resetSpecifierWithValue(std::string_view identifier, float value);
};

/// A mark's own screen, from which the whole mark can be randomised and reset.
class MarkPaneController : public PaneController {
  public:
    MarkPaneController(std::string_view listName, MarkKind mark) : PaneController(listName), mark_(mark) {}

    using PaneController::resetSpecifierWithValue;
    using PaneController::setValueForSpecifier;
    /// Gives every setting of the mark a random value.
    void randomize();
    /// Puts every setting of the mark back to fixed values.
    void reset();

  private:
    MarkKind mark_;
};

} // namespace tallyforge
