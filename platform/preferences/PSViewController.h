#pragma once

#include "preferences/PSSpecifier.h"
#include "uikit/UIViewController.h"

namespace tallyforge {

/// A screen that is opened from a row of a settings screen and knows that row.
class PSViewController : public UIViewController {
  public:
    const char* className() const override { return "PSViewController"; }
    /// The row it was opened from; nullptr for the first screen.
    const PSSpecifierRef& specifier() const { return specifier_; }
    virtual void setSpecifier(PSSpecifierRef specifier) { specifier_ = std::move(specifier); }

  private:
    PSSpecifierRef specifier_;
};

} // namespace tallyforge
