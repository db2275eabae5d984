#pragma once

#include "preferences/PSSpecifier.h"
#include "uikit/UITableViewCell.h"

#include <memory>
#include <string>

namespace tallyforge {

/// A row of a settings screen, made for a specifier. Making one is done in two steps, as on the device: the
/// object first, then one of its initialisers, which says whether it succeeded.
class PSTableCell : public UITableViewCell {
  public:
    const char* className() const override { return "PSTableCell"; }
    virtual bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                       std::shared_ptr<PSSpecifier> specifier);
    const std::shared_ptr<PSSpecifier>& specifier() const { return specifier_; }

  private:
    std::shared_ptr<PSSpecifier> specifier_;
};

} // namespace tallyforge
