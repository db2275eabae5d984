#include "cli/Inspector.h"

#include "cli/ValueJson.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"
#include "uikit/UISegmentedControl.h"
#include "uikit/UISlider.h"
#include "uikit/UISwitch.h"
#include "uikit/UITextField.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;
/// Which instance variable holds which object.
using Names = std::map<const NSObject*, const char*>;

// "#RRGGBBAA", or null for no colour.
Json ColorJson(const std::optional<CGColor>& color) {
    if (!color) return nullptr;
    auto channel = [](CGFloat value) {
        return static_cast<unsigned>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
    };
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "#%02X%02X%02X%02X", channel(color->red) & 255U,
                  channel(color->green) & 255U, channel(color->blue) & 255U, channel(color->alpha) & 255U);
    return text.data();
}

Json TransformJson(const CGAffineTransform& t) {
    return {{"a", t.a}, {"b", t.b}, {"c", t.c}, {"d", t.d}, {"tx", t.tx}, {"ty", t.ty}};
}

void AddImage(Json& json, const UIImageView& view) {
    const UIImage& image = view.image();
    if (!image) return;
    json["image"] = {{"size", InspectSize(image.size())},
                     {"scale", image.scale()},
                     {"pixels", {{"width", image.bitmap()->width()}, {"height", image.bitmap()->height()}}}};
}

void AddText(Json& json, const UILabel& label) {
    json["text"] = label.text();
    json["font"] = {{"size", label.font().pointSize()}};
    json["textColor"] = ColorJson(label.textColor().cgColor());
}

void AddControl(Json& json, const UIControl& control) {
    if (const auto* slider = dynamic_cast<const UISlider*>(&control))
        json["value"] = ValueJson(PropertyList::floatNumber(slider->value()));
    if (const auto* turned = dynamic_cast<const UISwitch*>(&control)) json["on"] = turned->isOn();
    if (const auto* segments = dynamic_cast<const UISegmentedControl*>(&control))
        json["value"] = segments->selectedSegmentIndex();
    if (const auto* field = dynamic_cast<const UITextField*>(&control)) json["text"] = field->text();
    json["enabled"] = control.enabled();
}

Json ViewJson(const UIView& view, Names names) {
    for (const auto& variable : view.instanceVariables())
        names.emplace(variable.value, variable.name);
    const CALayer& layer = *view.layer();

    Json json;
    json["class"] = view.className();
    if (auto name = names.find(&view); name != names.end()) json["name"] = name->second;
    json["frame"] = InspectRect(view.frame());
    json["bounds"] = InspectRect(view.bounds());
    json["center"] = InspectPoint(view.center());
    json["anchorPoint"] = InspectPoint(layer.anchorPoint());
    json["transform"] = TransformJson(view.transform());
    json["alpha"] = view.alpha();
    json["hidden"] = view.hidden();
    json["tag"] = view.tag();
    json["backgroundColor"] = ColorJson(layer.backgroundColor());
    json["layer"] = {{"borderWidth", layer.borderWidth()},
                     {"borderColor", ColorJson(layer.borderColor())},
                     {"cornerRadius", layer.cornerRadius()}};
    if (const auto* imageView = dynamic_cast<const UIImageView*>(&view)) AddImage(json, *imageView);
    if (const auto* label = dynamic_cast<const UILabel*>(&view)) AddText(json, *label);
    if (const auto* control = dynamic_cast<const UIControl*>(&view)) AddControl(json, *control);
    json["animations"] = Json::object();
    for (const auto& keyed : layer.animations())
        json["animations"][keyed.key] = InspectAnimation(*keyed.animation);
    json["subviews"] = Json::array();
    for (const auto& subview : view.subviews())
        json["subviews"].push_back(ViewJson(*subview, names));
    return json;
}

} // namespace

Json InspectPoint(const CGPoint& point) {
    return {{"x", point.x}, {"y", point.y}};
}

Json InspectSize(const CGSize& size) {
    return {{"width", size.width}, {"height", size.height}};
}

Json InspectRect(const CGRect& rect) {
    return {
        {"x", rect.origin.x}, {"y", rect.origin.y}, {"width", rect.size.width}, {"height", rect.size.height}};
}

Json InspectView(const UIView& view) {
    return ViewJson(view, {});
}

} // namespace tallyforge
