// What the screen of per-app themes can be told by name.
#include "panes/PaneMethods.h"
#include "themes/ConditionalThemesController.h"

namespace tallyforge {

namespace {

using Controller = conditionalthemesListController;

Controller& PerAppThemes(NSObject& self) {
    return static_cast<Controller&>(self);
}

template <PropertyList (Controller::*source)()>
MethodResult Data(NSObject& self, const MethodArguments& /*requesting target*/) {
    return std::make_shared<const PropertyList>((PerAppThemes(self).*source)());
}

// What is found is an object, which a value cannot hold; whether there is one can be told.
template <std::shared_ptr<NSObject> (Controller::*find)(std::string_view)>
MethodResult Find(NSObject& self, const MethodArguments& arguments) {
    const std::string* identifier = arguments.value ? arguments.value->asString() : nullptr;
    const auto found = identifier ? (PerAppThemes(self).*find)(*identifier) : nullptr;
    return std::make_shared<const PropertyList>(PropertyList::boolean(found != nullptr));
}

MethodResult EnableDisable(NSObject& self, const MethodArguments& /*arguments*/) {
    PerAppThemes(self).setPerAppThemeEnableDisable();
    return nullptr;
}

MethodResult SetPerAppValue(NSObject& self, const MethodArguments& arguments) {
    if (arguments.value)
        PerAppThemes(self).setPerAppValueForSpecifier(*arguments.value, PaneMethods::Row(arguments));
    return nullptr;
}

MethodResult WillAppear(NSObject& self, const MethodArguments& arguments) {
    PerAppThemes(self).viewWillAppear(arguments.value && arguments.value->boolValue());
    return nullptr;
}

MethodResult Clear(NSObject& self, const MethodArguments& /*arguments*/) {
    PerAppThemes(self).clearperappthemes();
    return nullptr;
}

constexpr MethodEntry kAppValues{"valueAppDataFromTarget:", Data<&Controller::valueAppDataFromTarget>};
constexpr MethodEntry kAppTitles{"titlesAppDataFromTarget:", Data<&Controller::titlesAppDataFromTarget>};
constexpr MethodEntry kThemeValues{"valueThemeDataFromTarget:", Data<&Controller::valueThemeDataFromTarget>};
constexpr MethodEntry kThemeTitles{"titlesThemeDataFromTarget:",
                                   Data<&Controller::titlesThemeDataFromTarget>};
constexpr MethodEntry kView{"getViewForID:", Find<&Controller::getViewForID>};
constexpr MethodEntry kCell{"getCellForID:", Find<&Controller::getCellForID>};
constexpr MethodEntry kEnableDisable{"setPerAppThemeEnableDisable", EnableDisable};
constexpr MethodEntry kSetPerAppValue{"setPerAppValue:forSpecifier:", SetPerAppValue};
constexpr MethodEntry kWillAppear{"viewWillAppear:", WillAppear};
constexpr MethodEntry kClear{"clearperappthemes", Clear};

} // namespace

const MethodTable& conditionalthemesListController::methods() const {
    return PaneMethods::Table<PaneMethods::kSpecifiers<Controller>, kAppValues, kAppTitles, kThemeValues,
                              kThemeTitles, kView, kCell, kEnableDisable, PaneMethods::kSetValue<Controller>,
                              kSetPerAppValue, kWillAppear, kClear>();
}

} // namespace tallyforge
