#include "cli/Inspector.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;

const char* FillModeName(CAFillMode mode) {
    switch (mode) {
    case CAFillMode::removed:
        return "removed";
    case CAFillMode::forwards:
        return "forwards";
    case CAFillMode::backwards:
        return "backwards";
    case CAFillMode::both:
        return "both";
    }
    return "removed";
}

// A transform is its 16 numbers, row by row.
Json ValueJson(const CAValue& value) {
    if (const auto* number = std::get_if<CGFloat>(&value)) return *number;
    if (const auto* point = std::get_if<CGPoint>(&value)) return InspectPoint(*point);
    if (const auto* t = std::get_if<CATransform3D>(&value))
        return {t->m11, t->m12, t->m13, t->m14, t->m21, t->m22, t->m23, t->m24,
                t->m31, t->m32, t->m33, t->m34, t->m41, t->m42, t->m43, t->m44};
    return nullptr;
}

bool IsSet(const CAValue& value) {
    return !std::holds_alternative<std::monostate>(value);
}

Json PathJson(const CGPath& path) {
    Json points = Json::array();
    for (const CGPath::Element& element : path.elements()) {
        if (element.verb == CGPath::Verb::close) continue;
        points.push_back(InspectPoint(element.points[element.verb == CGPath::Verb::cubic ? 2 : 0]));
    }
    return points;
}

void AddKeyframes(Json& json, const CAKeyframeAnimation& animation) {
    if (!animation.values().empty()) {
        Json values = Json::array();
        for (const CAValue& value : animation.values())
            values.push_back(ValueJson(value));
        json["values"] = std::move(values);
    }
    if (!animation.keyTimes().empty()) json["keyTimes"] = animation.keyTimes();
    if (animation.path()) json["path"] = PathJson(*animation.path());
}

} // namespace

Json InspectAnimation(const CAAnimation& animation) {
    const auto* property = dynamic_cast<const CAPropertyAnimation*>(&animation);
    Json json;
    json["class"] = animation.className();
    if (property) json["keyPath"] = property->keyPath();
    json["duration"] = animation.duration();
    json["repeatCount"] = std::isinf(animation.repeatCount()) ? Json("inf") : Json(animation.repeatCount());
    json["autoreverses"] = animation.autoreverses();
    json["cumulative"] = property && property->cumulative();
    json["additive"] = property && property->additive();
    json["fillMode"] = FillModeName(animation.fillMode());
    json["timingFunction"] =
        animation.timingFunction() ? animation.timingFunction()->name() : kCAMediaTimingFunctionLinear;

    if (const auto* basic = dynamic_cast<const CABasicAnimation*>(&animation)) {
        if (IsSet(basic->fromValue())) json["fromValue"] = ValueJson(basic->fromValue());
        if (IsSet(basic->toValue())) json["toValue"] = ValueJson(basic->toValue());
    }
    if (const auto* keyframes = dynamic_cast<const CAKeyframeAnimation*>(&animation))
        AddKeyframes(json, *keyframes);
    if (const auto* group = dynamic_cast<const CAAnimationGroup*>(&animation)) {
        Json animations = Json::array();
        for (const auto& child : group->animations())
            animations.push_back(InspectAnimation(*child));
        json["animations"] = std::move(animations);
    }
    return json;
}

} // namespace tallyforge
