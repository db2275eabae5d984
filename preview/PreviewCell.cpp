#include "preview/PreviewCell.h"

#include "foundation/NSFileManager.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/Settings.h"
#include "settings/SilentFailures.h"
#include "uikit/UIDevice.h"
#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIGraphics.h"

#include <cmath>

namespace tallyforge {

namespace {

struct StockIcon {
    const char* name;
    const char* phoneImage;
    const char* tabletImage;
};

constexpr StockIcon kStockIcons[] = {
    {"App Store", "/Applications/AppStore.app/AppIcon60x60.png",
     "/Applications/AppStore.app/AppIcon76x76.png"},
    {"Messages", "/Applications/MobileSMS.app/AppIcon60x60.png",
     "/Applications/MobileSMS.app/AppIcon76x76.png"},
    {"Mail", "/Applications/MobileMail.app/AppIcon60x60.png",
     "/Applications/MobileMail.app/AppIcon76x76.png"},
    {"Preferences", "/Applications/Preferences.app/AppIcon60x60.png",
     "/Applications/Preferences.app/AppIcon76x76.png"},
    {"Cydia", "/Applications/Cydia.app/Icon-60.png", "/Applications/Cydia.app/Icon-76.png"},
};
constexpr int32_t kMessages = 1; // the last resort when icons are missing

constexpr std::string_view kConfigFolder = "/var/mobile/Documents/Tallyforge/Config";
constexpr std::string_view kConfigFile = "/var/mobile/Documents/Tallyforge/Config/config.tfc";
constexpr std::string_view kConfigIconKey = "configpreviewicon";

int32_t IconAfter(int32_t icon) {
    return icon > 3 ? 0 : icon + 1;
}

int32_t ReadConfiguredIcon() {
    auto bytes = NSFileManager::defaultManager().contentsAtPath(kConfigFile);
    if (!bytes) return 0;
    auto root = NSKeyedUnarchiver::unarchiveObjectWithData(*bytes);
    const Dictionary* config = root ? root->asDictionary() : nullptr;
    const PropertyList* icon = config ? config->objectForKey(kConfigIconKey) : nullptr;
    return icon ? icon->intValue() : 0;
}

Status WriteConfiguredIcon(int32_t icon) {
    NSFileManager& files = NSFileManager::defaultManager();
    if (!files.fileExistsAtPath(kConfigFile)) {
        if (auto made = files.createDirectoryAtPath(kConfigFolder); !made) return made;
    }
    Dictionary config;
    config.setObjectForKey(PropertyList::integer(icon), kConfigIconKey);
    auto archive = NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(std::move(config)));
    return files.writeDataToFile(kConfigFile, archive);
}

// The image in the shape that icons have.
UIImage WithRoundedCorners(const UIImage& image, const CGRect& bounds) {
    UIGraphicsBeginImageContextWithOptions(bounds.size, false, UIScreen::mainScreen().scale());
    CGContextRef context = UIGraphicsGetCurrentContext();
    CGPath outline;
    outline.addRoundedRect(bounds, 12, 12);
    CGContextAddPath(context, outline);
    CGContextClip(context);
    image.drawInRect(bounds);
    UIImage rounded = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    return rounded;
}

} // namespace

bool PreviewCell::initWithSpecifier(std::shared_ptr<PSSpecifier> specifier) {
    return initWithStyleReuseIdentifierSpecifier(0, "PreviewCell", std::move(specifier));
}

bool PreviewCell::initWithStyleReuseIdentifierSpecifier(int style, std::string reuseIdentifier,
                                                        std::shared_ptr<PSSpecifier> specifier) {
    if (!PSTableCell::initWithStyleReuseIdentifierSpecifier(style, std::move(reuseIdentifier),
                                                            std::move(specifier)))
        return false;
    size_ = frame().size;
    currentIcon_ = ReadConfiguredIcon();
    setIcon();
    realod();
    addGestureRecognizer(std::make_shared<UITapGestureRecognizer>([this] { tap(); }));
    reloadObservation_ =
        NSNotificationCenter::defaultCenter().addObserver(kReloadPreviewNotification, [this] { realod(); });
    return true;
}

void PreviewCell::layoutSubviews() {
    PSTableCell::layoutSubviews();
}

bool PreviewCell::pressKey(UIKey key) {
    if (key != UIKey::space && key != UIKey::enter) return false;
    tap();
    return true;
}

void PreviewCell::tap() {
    currentIcon_ = IconAfter(currentIcon_);
    // After a failure the choice lasts as long as the cell.
    TellSilentFailure(kConfigFile, WriteConfiguredIcon(currentIcon_));
    setIcon();
    if (iconView_) iconView_->removeFromSuperview();
    iconView_ = nullptr;
    realod();
}

void PreviewCell::setIcon() {
    for (;;) {
        if (currentIcon_ >= 0 && currentIcon_ < static_cast<int32_t>(std::size(kStockIcons))) {
            const StockIcon& icon = kStockIcons[currentIcon_];
            appIconImage_ = UIImage::imageWithContentsOfFile(
                UIDevice::currentDevice().isPad() ? icon.tabletImage : icon.phoneImage);
            selectedAppName_ = icon.name;
        }
        if (appIconImage_ || currentIcon_ == kMessages) return;
        // Below the table there is nothing to load on the way up to its first row.
        currentIcon_ = currentIcon_ < 0 ? 0 : IconAfter(currentIcon_);
    }
}

void PreviewCell::createIcon() {
    CGFloat expectedHeight = UIDevice::currentDevice().isPad() ? 76 : 60;
    if (appIconImage_.size().height > expectedHeight) {
        auto scale =
            std::floor(static_cast<CGFloat>(CGImageGetHeight(appIconImage_.bitmap())) / expectedHeight);
        appIconImage_ = UIImage::imageWithCGImage(appIconImage_.bitmap(), scale, UIImageOrientationUp);
    }

    iconView_ = std::make_shared<UIImageView>(appIconImage_);
    iconView_->setImage(WithRoundedCorners(appIconImage_, iconView_->bounds()));
    iconView_->setCenter(CGPointMake(size_.width / 1.6, 75));
    addSubview(iconView_);

    UIFont font = UIFont::systemFontOfSize(UIDevice::currentDevice().isPad() ? 14 : 12);
    if (iconLabel_) iconLabel_->removeFromSuperview();
    CGSize textSize = NSStringBoundingSize(selectedAppName_, CGSizeMake(400, 20), font);
    iconLabel_ = std::make_shared<UILabel>(CGRectMake(size_.width / 1.7, 12, textSize.width, size_.height));
    iconLabel_->setCenter(CGPointMake(iconView_->bounds().size.width / 2, size_.height + 45));
    iconLabel_->setTextColor(UIColor::blackColor());
    iconLabel_->setTextAlignment(NSTextAlignmentCenter);
    iconLabel_->setBackgroundColor(UIColor::clearColor());
    iconLabel_->setFont(font);
    iconLabel_->setText(selectedAppName_);
    iconView_->addSubview(iconLabel_);
}

void PreviewCell::realod() {
    LoadSettingsSnapshot();
    if (!iconView_) createIcon();
    if (!iconView_) return;
    reloadBadge();
    reloadCloseBox();
    reloadNewDot();
}

// Where the close box and the new dot are made, before they are placed: the same on phones and tablets.
CGFloat PreviewCell::initialMarkCentreX() const {
    return size_.width / 1.6;
}

std::vector<NSObject::InstanceVariable> PreviewCell::instanceVariables() const {
    return {{"iconView", iconView_.get()},
            {"iconLabel", iconLabel_.get()},
            {"badgeView", badgeView_.lock().get()},
            {"closeBoxView", closeBoxView_.lock().get()},
            {"newDotView", newDotView_.lock().get()}};
}

} // namespace tallyforge
