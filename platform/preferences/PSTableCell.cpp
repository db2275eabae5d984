#include "preferences/PSTableCell.h"

#include "preferences/PSListController.h"
#include "uikit/UIDevice.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

namespace tallyforge {

namespace {

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
    if (kind != "PSListItemCell") // a choice's checkmark is set by its list
        setAccessoryType(links ? UITableViewCellAccessoryType::disclosureIndicator
                               : UITableViewCellAccessoryType::none);
    if (kind == "PSLinkListCell" || kind == "PSTitleValueCell")
        detailTextLabel().setText(valueTitle(*specifier_));
    if (kind == "PSButtonCell")
        textLabel().setTextColor(specifier_->flagForKey("destructive", false) ? destructiveColor()
                                                                              : buttonColor());
    showIcon();
    const bool leadsNowhere = links && !NSClassFromString(specifier_->textForKey("detail"));
    setCellEnabled(specifier_->flagForKey("enabled", true) && !leadsNowhere);
}

void PSTableCell::showIcon() {
    std::string icon = specifier_->textForKey("icon");
    if (!icon.empty()) icon.insert(0, bundlePathOf(*specifier_));
    const CGFloat scale = UIScreen::mainScreen().scale();
    if (icon == icon_ && scale == iconScale_) return;
    icon_ = std::move(icon);
    iconScale_ = scale;
    imageView().setImage(icon_.empty() ? UIImage() : UIImage::imageWithContentsOfFile(icon_));
}

void PSTableCell::setCellEnabled(bool enabled) {
    cellEnabled_ = enabled;
    setUserInteractionEnabled(enabled);
    const CGFloat alpha = enabled ? 1 : kDisabledAlpha;
    if (!titleText().empty()) textLabel().setAlpha(alpha);
    if (!UITableViewCell::detailText().empty()) detailTextLabel().setAlpha(alpha);
}

} // namespace tallyforge
