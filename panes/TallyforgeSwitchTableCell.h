#pragma once

#include "preferences/PSControlCells.h"

namespace tallyforge {

/// The bundle's switch row: a switch in the bundle's own green.
class TallyforgeSwitchTableCell final : public PSSwitchTableCell {
  public:
    const char* className() const override { return "TallyforgeSwitchTableCell"; }
    bool initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                               std::shared_ptr<PSSpecifier> specifier) override;
};

} // namespace tallyforge
