#include "panes/BadgePanes.h"

#include "corefoundation/CFNotificationCenter.h"
#include "panes/PaneMethods.h"
#include "settings/Settings.h"

namespace tallyforge {

using namespace PaneMethods;

void badgeListController::setValueForSpecifier(const PropertyList& value, const PSSpecifierRef& specifier) {
    MarkPaneController::setValueForSpecifier(value, specifier);
    if (specifier && specifier->identifier() == "convertbadgeroman" && !value.boolValue())
        CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(),
                                             kConvertArabicNotification, nullptr, nullptr, true);
}

const MethodTable& badgeListController::methods() const {
    using Pane = badgeListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kRandomize<Pane>, kReset<Pane>, kSetValue<Pane>,
                 kViewDidAppear<Pane>>();
}

const MethodTable& badgecolorListController::methods() const {
    using Pane = badgecolorListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kSetSlider<Pane>, kViewDidAppear<Pane>>();
}

const MethodTable& badgelabelListController::methods() const {
    using Pane = badgelabelListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kSetValue<Pane>, kViewDidAppear<Pane>>();
}

const MethodTable& badgeborderListController::methods() const {
    using Pane = badgeborderListController;
    return Table<kSpecifiers<Pane>, kSetSlider<Pane>, kViewDidAppear<Pane>>();
}

const MethodTable& badgeanimListController::methods() const {
    using Pane = badgeanimListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kSetPreset<Pane>, kSetSlider<Pane>,
                 kViewDidAppear<Pane>>();
}

const MethodTable& badgeglowListController::methods() const {
    using Pane = badgeglowListController;
    return Table<kSpecifiers<Pane>, kSetSlider<Pane>, kViewDidAppear<Pane>>();
}

} // namespace tallyforge
