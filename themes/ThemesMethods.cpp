// What the screen of themes can be told by name. A method of several arguments beside the object takes them
// as an array.
#include "panes/PaneMethods.h"
#include "themes/ThemesController.h"

namespace tallyforge {

namespace {

themesListController& Themes(NSObject& self) {
    return static_cast<themesListController&>(self);
}

const PropertyList* Argument(const MethodArguments& arguments, size_t index) {
    const PropertyList::Array* several = arguments.value ? arguments.value->asArray() : nullptr;
    if (!several) return index == 0 ? arguments.value : nullptr;
    return index < several->size() ? &(*several)[index] : nullptr;
}

std::string Text(const MethodArguments& arguments, size_t index) {
    const PropertyList* value = Argument(arguments, index);
    const std::string* text = value ? value->asString() : nullptr;
    return text ? *text : std::string();
}

int Number(const MethodArguments& arguments, size_t index) {
    const PropertyList* value = Argument(arguments, index);
    return value ? value->intValue() : 0;
}

template <void (themesListController::*act)()>
MethodResult Act(NSObject& self, const MethodArguments& /*arguments*/) {
    (Themes(self).*act)();
    return nullptr;
}

MethodResult ShowAlert(NSObject& self, const MethodArguments& arguments) {
    Themes(self).showAlertWithTitleMessage(Text(arguments, 0), Text(arguments, 1));
    return nullptr;
}

MethodResult ShowActionAlert(NSObject& self, const MethodArguments& arguments) {
    Themes(self).showActionAlertWithTitleMessageButtonTag(Text(arguments, 0), Text(arguments, 1),
                                                          Text(arguments, 2), Number(arguments, 3));
    return nullptr;
}

MethodResult ShowPickerAlert(NSObject& self, const MethodArguments& arguments) {
    Themes(self).showPickerAlertWithTileMessageBtnNameTag(Text(arguments, 0), Text(arguments, 1),
                                                          Text(arguments, 2), Number(arguments, 3));
    return nullptr;
}

MethodResult ClickedButton(NSObject& self, const MethodArguments& arguments) {
    if (auto alert = std::dynamic_pointer_cast<UIAlertView>(arguments.object))
        Themes(self).alertViewClickedButtonAtIndex(*alert, Number(arguments, 0));
    return nullptr;
}

MethodResult SaveProfile(NSObject& self, const MethodArguments& arguments) {
    Themes(self).saveProfileOverwriteIfExists(Text(arguments, 0), Number(arguments, 1) != 0);
    return nullptr;
}

MethodResult Components(NSObject& self, const MethodArguments& arguments) {
    auto picker = std::dynamic_pointer_cast<UIPickerView>(arguments.object);
    if (!picker) return nullptr;
    return std::make_shared<const PropertyList>(
        PropertyList::integer(Themes(self).numberOfComponentsInPickerView(*picker)));
}

MethodResult Rows(NSObject& self, const MethodArguments& arguments) {
    auto picker = std::dynamic_pointer_cast<UIPickerView>(arguments.object);
    if (!picker) return nullptr;
    return std::make_shared<const PropertyList>(
        PropertyList::integer(Themes(self).pickerViewNumberOfRowsInComponent(*picker, Number(arguments, 0))));
}

MethodResult RowTitle(NSObject& self, const MethodArguments& arguments) {
    auto picker = std::dynamic_pointer_cast<UIPickerView>(arguments.object);
    if (!picker) return nullptr;
    return std::make_shared<const PropertyList>(PropertyList::string(
        Themes(self).pickerViewTitleForRow(*picker, Number(arguments, 0), Number(arguments, 1))));
}

MethodResult SelectRow(NSObject& self, const MethodArguments& arguments) {
    if (auto picker = std::dynamic_pointer_cast<UIPickerView>(arguments.object))
        Themes(self).pickerViewDidSelectRow(*picker, Number(arguments, 0), Number(arguments, 1));
    return nullptr;
}

constexpr MethodEntry kSaveTheme{"saveTheme", Act<&themesListController::saveTheme>};
constexpr MethodEntry kLoadTheme{"loadTheme", Act<&themesListController::loadTheme>};
constexpr MethodEntry kDeleteTheme{"deleteTheme", Act<&themesListController::deleteTheme>};
constexpr MethodEntry kRestoreThemes{"restoreThemes", Act<&themesListController::restoreThemes>};
constexpr MethodEntry kLoadProfile{"loadProfile", Act<&themesListController::loadProfile>};
constexpr MethodEntry kDeleteProfile{"deleteProfile", Act<&themesListController::deleteProfile>};
constexpr MethodEntry kSaveProfile{"saveProfile:overwriteIfExists:", SaveProfile};
constexpr MethodEntry kShowAlert{"showAlertWithTitle:message:", ShowAlert};
constexpr MethodEntry kShowActionAlert{"showActionAlertWithTitle:message:button:tag:", ShowActionAlert};
constexpr MethodEntry kShowPickerAlert{"showPickerAlertWithTile:message:btnName:tag:", ShowPickerAlert};
constexpr MethodEntry kClickedButton{"alertView:clickedButtonAtIndex:", ClickedButton};
constexpr MethodEntry kComponents{"numberOfComponentsInPickerView:", Components};
constexpr MethodEntry kRows{"pickerView:numberOfRowsInComponent:", Rows};
constexpr MethodEntry kRowTitle{"pickerView:titleForRow:forComponent:", RowTitle};
constexpr MethodEntry kSelectRow{"pickerView:didSelectRow:inComponent:", SelectRow};

} // namespace

const MethodTable& themesListController::methods() const {
    return PaneMethods::Table<PaneMethods::kSpecifiers<themesListController>, kSaveTheme, kLoadTheme,
                              kDeleteTheme, kRestoreThemes, kShowAlert, kShowActionAlert, kShowPickerAlert,
                              kClickedButton, kComponents, kRows, kRowTitle, kSelectRow, kSaveProfile,
                              kLoadProfile, kDeleteProfile>();
}

} // namespace tallyforge
