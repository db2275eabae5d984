#pragma once

#include "panes/PaneController.h"

namespace tallyforge {

/// The methods of panes as their tables hold them. `Pane` is the class itself, so that a table can name only
/// what its class has.
namespace PaneMethods {

inline PSSpecifierRef Row(const MethodArguments& arguments) {
    return std::dynamic_pointer_cast<PSSpecifier>(arguments.object);
}

/// The properties of each row, as an array of dictionaries.
template <class Pane>
inline constexpr MethodEntry kSpecifiers{
    "specifiers", [](NSObject& self, const MethodArguments&) -> MethodResult {
        PropertyList::Array rows;
        for (const PSSpecifierRef& row : static_cast<Pane&>(self).specifiers())
            rows.push_back(PropertyList::dictionary(row->properties()));
        return std::make_shared<const PropertyList>(PropertyList::array(std::move(rows)));
    }};

template <class Pane>
inline constexpr MethodEntry kSetValue{
    "setValue:forSpecifier:", [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
        if (arguments.value) static_cast<Pane&>(self).setValueForSpecifier(*arguments.value, Row(arguments));
        return nullptr;
    }};

template <class Pane>
inline constexpr MethodEntry kSetSlider{
    "setSlider:forSpecifier:", [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
        if (arguments.value) static_cast<Pane&>(self).setSliderForSpecifier(*arguments.value, Row(arguments));
        return nullptr;
    }};

template <class Pane>
inline constexpr MethodEntry kSetPreset{
    "setPreset:forSpecifier:", [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
        if (arguments.value) static_cast<Pane&>(self).setPresetForSpecifier(*arguments.value, Row(arguments));
        return nullptr;
    }};

template <class Pane>
inline constexpr MethodEntry kResetSpecifier{
    "resetSpecifier:withValue:", [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
        if (arguments.value)
            static_cast<Pane&>(self).resetSpecifierWithValue(arguments.text, arguments.value->floatValue());
        return nullptr;
    }};

template <class Pane>
inline constexpr MethodEntry kRandomize{"randomize",
                                        [](NSObject& self, const MethodArguments&) -> MethodResult {
                                            static_cast<Pane&>(self).randomize();
                                            return nullptr;
                                        }};

template <class Pane>
inline constexpr MethodEntry kReset{"reset", [](NSObject& self, const MethodArguments&) -> MethodResult {
                                        static_cast<Pane&>(self).reset();
                                        return nullptr;
                                    }};

template <class Pane>
inline constexpr MethodEntry kViewDidAppear{
    "viewDidAppear:", [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
        static_cast<Pane&>(self).viewDidAppear(arguments.value && arguments.value->boolValue());
        return nullptr;
    }};

/// The table of the methods, with those of all settings screens behind it.
template <const MethodEntry&... methods>
const MethodTable& Table() {
    static constexpr MethodEntry own[] = {methods...};
    static const MethodTable table{own, &PSListController::classMethods()};
    return table;
}

} // namespace PaneMethods

} // namespace tallyforge
