#include "preferences/PSTableCell.h"

namespace tallyforge {

bool PSTableCell::initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                        std::shared_ptr<PSSpecifier> specifier) {
    specifier_ = std::move(specifier);
    return initWithStyleReuseIdentifier(style, std::move(reuseIdentifier));
}

} // namespace tallyforge
