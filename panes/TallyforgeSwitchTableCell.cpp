#include "panes/TallyforgeSwitchTableCell.h"

#include "uikit/UIColor.h"

namespace tallyforge {

bool TallyforgeSwitchTableCell::initWithStyleReuseIdentifierSpecifier(
    int style, std::string reuseIdentifier, std::shared_ptr<PSSpecifier> specifier) {
    if (!PSSwitchTableCell::initWithStyleReuseIdentifierSpecifier(style, std::move(reuseIdentifier),
                                                                  std::move(specifier)))
        return false;
    const auto green = UIColor::colorWithRed(79.0 / 255, 219.0 / 255, 148.0 / 255, 1);
    switchControl()->setOnTintColor(green);
    switchControl()->setTintColor(green);
    return true;
}

} // namespace tallyforge
