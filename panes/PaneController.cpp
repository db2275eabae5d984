#include "panes/PaneController.h"

#include "corefoundation/NSUserDefaults.h"
#include "foundation/NSNotificationCenter.h"
#include "panes/Randomise.h"
#include "panes/Reset.h"
#include "settings/Settings.h"

namespace tallyforge {

const std::vector<PSSpecifierRef>& BundleListController::specifiers() {
    if (!loaded_) {
        loaded_ = true;
        specifiers_ = loadSpecifiersFromPlistNameTarget(listName_, *this);
    }
    return specifiers_;
}

std::string BundleListController::bundlePath() const {
    return "/Library/PreferenceBundles/tallyforgeprefs.bundle/";
}

void PaneController::viewDidAppear(bool animated) {
    BundleListController::viewDidAppear(animated);
    NSNotificationCenter::defaultCenter().postNotificationName(kReloadPreviewNotification);
}

void PaneController::setValueForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier) {
    // Switches and codes too are stored as float numbers.
    setPreferenceValueSpecifier(value.isNumber() ? PropertyList::floatNumber(value.floatValue()) : value,
                                specifier);
    reloadSpecifier(specifier);
    NSUserDefaults::standardUserDefaults().synchronize();
    AnnounceSettingsChanged();
}

void PaneController::setSliderForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier) {
    PaneController::setValueForSpecifier(value, specifier);
}

void PaneController::setPresetForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier) {
    PaneController::setValueForSpecifier(value, specifier);
}

void PaneController::resetSpecifierWithValue(std::string_view identifier, float value) {
    auto specifier = specifierForID(identifier);
    setPreferenceValueSpecifier(PropertyList::floatNumber(value), specifier);
    reloadSpecifier(specifier);
}

void MarkPaneController::randomize() {
    RandomiseMark(mark_, *this);
}

void MarkPaneController::reset() {
    ResetMark(mark_, *this);
}

} // namespace tallyforge
