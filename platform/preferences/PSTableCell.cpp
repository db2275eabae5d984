#include "preferences/PSTableCell.h"

#include "preferences/PSListController.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

namespace tallyforge {

namespace {

constexpr CGFloat kDisabledAlpha = 0.4; // of the texts of a row that cannot be operated

const UIColor& buttonColor() {
    static const UIColor blue = UIColor::colorWithRed(0, 122.0 / 255, 1, 1);
    return blue;
}

const UIColor& destructiveColor() {
    static const UIColor red = UIColor::colorWithRed(1, 59.0 / 255, 48.0 / 255, 1);
    return red;
}

// What a row shows as its value: the title of the choice, else the value as people read it.
std::string valueTitle(PSSpecifier& specifier) {
    auto value = specifier.performGetter();
    if (!value) return {};
    for (const PSSpecifier::Choice& choice : specifier.choices()) {
        if (choice.stands(*value)) return choice.title;
    }
    return specifier.cellKind() == "PSLinkListCell" ? std::string() : value->description();
}

std::string bundlePathOf(const PSSpecifier& specifier) {
    const auto* screen = dynamic_cast<const PSListController*>(specifier.target());
    return screen ? screen->bundlePath() : std::string();
}

} // namespace

bool PSTableCell::initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                        std::shared_ptr<PSSpecifier> specifier) {
    specifier_ = std::move(specifier);
    return initWithStyleReuseIdentifier(style, std::move(reuseIdentifier));
}

void PSTableCell::refreshCellContents() {
    if (!specifier_) return;
    const std::string kind = specifier_->cellKind();
    const std::string title = specifier_->name();
    if (!title.empty() || !titleText().empty()) textLabel().setText(title);

    const bool links = kind == "PSLinkCell" || kind == "PSLinkListCell";
    setAccessoryType(links ? UITableViewCellAccessoryType::disclosureIndicator
                           : UITableViewCellAccessoryType::none);
    if (kind == "PSLinkListCell" || kind == "PSTitleValueCell") detailTextLabel().setText(valueTitle(*specifier_));
    if (kind == "PSButtonCell")
        textLabel().setTextColor(specifier_->flagForKey("destructive", false) ? destructiveColor()
                                                                              : buttonColor());
    if (std::string icon = specifier_->textForKey("icon"); !icon.empty())
        imageView().setImage(UIImage::imageWithContentsOfFile(bundlePathOf(*specifier_) + icon));
    setCellEnabled(specifier_->flagForKey("enabled", true));
}

void PSTableCell::setCellEnabled(bool enabled) {
    cellEnabled_ = enabled;
    setUserInteractionEnabled(enabled);
    if (!titleText().empty()) textLabel().setAlpha(enabled ? 1 : kDisabledAlpha);
    if (!detailText().empty()) detailTextLabel().setAlpha(enabled ? 1 : kDisabledAlpha);
}

} // namespace tallyforge
