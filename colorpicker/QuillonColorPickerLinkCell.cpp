#include "colorpicker/QuillonColorPickerLinkCell.h"

#include "colorpicker/UIColorZintara.h"
#include "corefoundation/CFPreferences.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

namespace tallyforge {

namespace {

constexpr CGSize kLabelSize{100, 32};
constexpr CGSize kThumbnailSize{24, 24};
constexpr CGFloat kRightGap = 4;

// At the right end of the content, in the middle of its height.
void placeAtRight(UIView& view, const CGSize& content) {
    const CGSize own = view.bounds().size;
    view.setFrame(CGRectMake(content.width - own.width - kRightGap, (content.height - own.height) / 2,
                             own.width, own.height));
}

} // namespace

std::vector<NSObject::InstanceVariable> QuillonColorPickerLinkCell::instanceVariables() const {
    return {{"thumbnailView", thumbnailView_.get()}, {"valueLabel", valueLabel_.get()}};
}

bool QuillonColorPickerLinkCell::initWithStyleReuseIdentifierSpecifier(
    int style, std::string reuseIdentifier, std::shared_ptr<PSSpecifier> specifier) {
    if (!PSTableCell::initWithStyleReuseIdentifierSpecifier(style, std::move(reuseIdentifier),
                                                            std::move(specifier)))
        return false;
    valueLabel_ = std::make_shared<UILabel>(CGRect{CGPointZero, kLabelSize});
    valueLabel_->setFont(UIFont::systemFontOfSize(12));
    valueLabel_->setTextColor(UIColor::colorWithWhite(0.8, 1));
    valueLabel_->setTextAlignment(NSTextAlignmentRight);
    valueLabel_->setHidden(true);
    contentView()->addSubview(valueLabel_);

    thumbnailView_ = std::make_shared<UIImageView>(UIImage());
    thumbnailView_->setFrame({CGPointZero, kThumbnailSize});
    thumbnailView_->layer()->setBorderColor(UIColorZintara::borderColor().cgColor());
    thumbnailView_->setHidden(true);
    contentView()->addSubview(thumbnailView_);
    return true;
}

void QuillonColorPickerLinkCell::loadColorValueFromPrefs() {
    if (!specifier()) return;
    const std::string key = specifier()->textForKey("key");
    appID_ = specifier()->textForKey("defaults");
    std::optional<PropertyList> value;
    if (!key.empty() && !appID_.empty()) {
        CFPreferencesAppSynchronize(appID_);
        value = CFPreferencesCopyAppValue(key, appID_);
        if (value && value->isString()) selectedColor_ = *value->asString();
    }
    if (!selectedColor_) selectedColor_ = specifier()->textIfSet("default");
    noteRead(value);
}

// So that its screen can tell whether the setting has become another one since.
void QuillonColorPickerLinkCell::noteRead(const std::optional<PropertyList>& value) {
    const PropertyList* fallback = specifier()->propertyForKey("default");
    if (value)
        specifier()->setPropertyForKey(*value, "value");
    else if (fallback)
        specifier()->setPropertyForKey(PropertyList(*fallback), "value");
    else
        specifier()->removePropertyForKey("value");
}

void QuillonColorPickerLinkCell::layoutSubviews() {
    PSTableCell::layoutSubviews();
    loadColorValueFromPrefs();
    const std::string shown = selectedColor_.value_or(std::string());
    if (shown.starts_with('#'))
        showSwatch(shown);
    else
        showWord(shown);
    const CGSize content = contentView()->bounds().size;
    placeAtRight(*thumbnailView_, content);
    placeAtRight(*valueLabel_, content);
}

void QuillonColorPickerLinkCell::showSwatch(const std::string& color) {
    valueLabel_->setHidden(true);
    thumbnailView_->setImage(UIColorZintara::thumbnailWithSize(UIColorZintara::colorFromHexString(color),
                                                               thumbnailView_->bounds().size));
    thumbnailView_->setHidden(false);
    thumbnailView_->layer()->setBorderWidth(UIColorZintara::needsBorder(color) ? 1 : 0);
}

void QuillonColorPickerLinkCell::showWord(const std::string& word) {
    thumbnailView_->setHidden(true);
    valueLabel_->setText(word);
    valueLabel_->setHidden(false);
}

std::string QuillonColorPickerLinkCell::detailText() const {
    return selectedColor_.value_or(std::string());
}

} // namespace tallyforge
