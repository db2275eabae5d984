#include "quartzcore/AnimationValues.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tallyforge {
namespace {

CGFloat mix(CGFloat from, CGFloat to, CGFloat share) {
    return from * (1 - share) + to * share;
}
CGPoint mix(const CGPoint& from, const CGPoint& to, CGFloat share) {
    return {mix(from.x, to.x, share), mix(from.y, to.y, share)};
}

struct Quaternion {
    CGFloat x = 0, y = 0, z = 0, w = 1;
};

Quaternion operator*(const Quaternion& p, const Quaternion& q) {
    return {p.w * q.x + p.x * q.w + p.y * q.z - p.z * q.y, p.w * q.y - p.x * q.z + p.y * q.w + p.z * q.x,
            p.w * q.z + p.x * q.y - p.y * q.x + p.z * q.w, p.w * q.w - p.x * q.x - p.y * q.y - p.z * q.z};
}

// First about x, then y, then z.
Quaternion rotationOf(const CATransformComponents& c) {
    const Quaternion x{std::sin(c.rotationX / 2), 0, 0, std::cos(c.rotationX / 2)};
    const Quaternion y{0, std::sin(c.rotationY / 2), 0, std::cos(c.rotationY / 2)};
    const Quaternion z{0, 0, std::sin(c.rotationZ / 2), std::cos(c.rotationZ / 2)};
    return z * y * x;
}

Quaternion turn(const Quaternion& from, Quaternion to, CGFloat share) {
    CGFloat cosine = from.x * to.x + from.y * to.y + from.z * to.z + from.w * to.w;
    if (cosine < 0) { // the other way round is shorter
        to = {-to.x, -to.y, -to.z, -to.w};
        cosine = -cosine;
    }
    const CGFloat angle = std::acos(std::min<CGFloat>(cosine, 1));
    CGFloat f = 1 - share, t = share;
    if (angle > 1e-6) {
        f = std::sin((1 - share) * angle) / std::sin(angle);
        t = std::sin(share * angle) / std::sin(angle);
    }
    return {from.x * f + to.x * t, from.y * f + to.y * t, from.z * f + to.z * t, from.w * f + to.w * t};
}

void setRotation(CATransformComponents& c, const Quaternion& q) {
    const CGFloat angle = 2 * std::atan2(std::hypot(q.x, q.y, q.z), q.w);
    const CATransformComponents turned =
        CATransform3DDecompose(CATransform3DMakeRotation(angle, q.x, q.y, q.z));
    c.rotationX = turned.rotationX;
    c.rotationY = turned.rotationY;
    c.rotationZ = turned.rotationZ;
}

bool onlyScalesAndMoves(const CATransform3D& t) {
    CATransform3D rest = t;
    rest.m11 = rest.m22 = rest.m33 = 1;
    rest.m41 = rest.m42 = rest.m43 = 0;
    return rest == CATransform3DIdentity && t.m11 >= 0 && t.m22 >= 0 && t.m33 >= 0;
}

CATransform3D mix(const CATransform3D& from, const CATransform3D& to, CGFloat share) {
    if (share == 0) return from;
    if (share == 1) return to;
    if (onlyScalesAndMoves(from) && onlyScalesAndMoves(to)) {
        CATransform3D t;
        t.m11 = mix(from.m11, to.m11, share);
        t.m22 = mix(from.m22, to.m22, share);
        t.m33 = mix(from.m33, to.m33, share);
        t.m41 = mix(from.m41, to.m41, share);
        t.m42 = mix(from.m42, to.m42, share);
        t.m43 = mix(from.m43, to.m43, share);
        return t;
    }
    const CATransformComponents a = CATransform3DDecompose(from), b = CATransform3DDecompose(to);
    CATransformComponents c;
    for (const auto part :
         {&CATransformComponents::translationX, &CATransformComponents::translationY,
          &CATransformComponents::translationZ, &CATransformComponents::scaleX,
          &CATransformComponents::scaleY, &CATransformComponents::scaleZ, &CATransformComponents::shearXY,
          &CATransformComponents::shearXZ, &CATransformComponents::shearYZ})
        c.*part = mix(a.*part, b.*part, share);
    setRotation(c, turn(rotationOf(a), rotationOf(b), share));
    return CATransform3DCompose(c);
}

CATransform3D power(CATransform3D base, CGFloat times) {
    CATransform3D result;
    if (!(times >= 1)) return result;
    for (auto left = static_cast<uint64_t>(std::min<CGFloat>(times, 1e15)); left > 0; left /= 2) {
        if (left % 2 == 1) result = CATransform3DConcat(result, base);
        base = CATransform3DConcat(base, base);
    }
    return result;
}

// The keyframe before a share of the whole time, and how far it is from there to the next one.
struct Place {
    size_t index;
    CGFloat share;
};

bool usable(const std::vector<CGFloat>& keyTimes, size_t count) {
    if (keyTimes.size() != count) return false;
    return std::is_sorted(keyTimes.begin(), keyTimes.end()) &&
           std::all_of(keyTimes.begin(), keyTimes.end(), [](CGFloat t) { return t >= 0 && t <= 1; });
}

// For at least two keyframes.
Place placeAt(CGFloat progress, const std::vector<CGFloat>& keyTimes, size_t count) {
    progress = std::clamp<CGFloat>(progress, 0, 1);
    if (!usable(keyTimes, count)) {
        const CGFloat whole = progress * CGFloat(count - 1);
        const size_t index = std::min(size_t(whole), count - 2);
        return {index, whole - CGFloat(index)};
    }
    const auto after = std::upper_bound(keyTimes.begin(), keyTimes.end(), progress);
    if (after == keyTimes.begin()) return {0, 0};
    if (after == keyTimes.end()) return {count - 2, 1};
    const CGFloat before = *(after - 1);
    return {size_t(after - keyTimes.begin()) - 1, (progress - before) / (*after - before)};
}

struct Segment {
    CGPoint start, control1, control2, end;
    bool curved = false;

    CGPoint at(CGFloat share) const {
        if (!curved) return mix(start, end, share);
        const CGPoint a = mix(start, control1, share), b = mix(control1, control2, share),
                      c = mix(control2, end, share);
        return mix(mix(a, b, share), mix(b, c, share), share);
    }
};

// A path that is only a move is one segment that goes nowhere.
std::vector<Segment> segmentsOf(const CGPath& path) {
    std::vector<Segment> segments;
    CGPoint current, subpathStart;
    for (const CGPath::Element& element : path.elements()) {
        switch (element.verb) {
        case CGPath::Verb::move:
            current = subpathStart = element.points[0];
            break;
        case CGPath::Verb::line:
            segments.push_back({current, current, element.points[0], element.points[0]});
            current = element.points[0];
            break;
        case CGPath::Verb::cubic:
            segments.push_back({current, element.points[0], element.points[1], element.points[2], true});
            current = element.points[2];
            break;
        case CGPath::Verb::close:
            if (current != subpathStart) segments.push_back({current, current, subpathStart, subpathStart});
            current = subpathStart;
            break;
        }
    }
    if (segments.empty()) segments.push_back({current, current, current, current});
    return segments;
}

bool hasPath(const CAKeyframeAnimation& animation) {
    return animation.path() && !animation.path()->empty();
}

bool isFinite(const CAValue& value) {
    if (const auto* number = std::get_if<CGFloat>(&value)) return std::isfinite(*number);
    if (const auto* point = std::get_if<CGPoint>(&value))
        return std::isfinite(point->x) && std::isfinite(point->y);
    if (const auto* t = std::get_if<CATransform3D>(&value)) {
        return CGAffineTransformIsFinite(CATransform3DGetAffineTransform(*t)) && std::isfinite(t->m13) &&
               std::isfinite(t->m23) && std::isfinite(t->m31) && std::isfinite(t->m32) &&
               std::isfinite(t->m33) && std::isfinite(t->m43);
    }
    return false;
}

struct NamedComponent {
    std::string_view keyPath;
    CGFloat CATransformComponents::*member;
};
constexpr std::array<NamedComponent, 10> namedComponents{{
    {"transform.rotation.z", &CATransformComponents::rotationZ},
    {"transform.rotation", &CATransformComponents::rotationZ},
    {"transform.rotation.x", &CATransformComponents::rotationX},
    {"transform.rotation.y", &CATransformComponents::rotationY},
    {"transform.scale.x", &CATransformComponents::scaleX},
    {"transform.scale.y", &CATransformComponents::scaleY},
    {"transform.scale.z", &CATransformComponents::scaleZ},
    {"transform.translation.x", &CATransformComponents::translationX},
    {"transform.translation.y", &CATransformComponents::translationY},
    {"transform.translation.z", &CATransformComponents::translationZ},
}};
constexpr std::string_view scalePath = "transform.scale";
constexpr std::string_view translationPath = "transform.translation";
constexpr std::string_view transformPath = "transform";

} // namespace

CAValue CAInterpolate(const CAValue& from, const CAValue& to, CGFloat share) {
    if (from.index() != to.index()) return {};
    if (const auto* a = std::get_if<CGFloat>(&from)) return mix(*a, std::get<CGFloat>(to), share);
    if (const auto* a = std::get_if<CGPoint>(&from)) return mix(*a, std::get<CGPoint>(to), share);
    if (const auto* a = std::get_if<CATransform3D>(&from)) return mix(*a, std::get<CATransform3D>(to), share);
    return {};
}

CAValue CAAccumulate(const CAValue& value, const CAValue& end, CGFloat times) {
    if (times <= 0 || value.index() != end.index()) return value;
    if (const auto* a = std::get_if<CGFloat>(&value)) return *a + std::get<CGFloat>(end) * times;
    if (const auto* a = std::get_if<CGPoint>(&value)) {
        const CGPoint& e = std::get<CGPoint>(end);
        return CGPoint{a->x + e.x * times, a->y + e.y * times};
    }
    if (const auto* a = std::get_if<CATransform3D>(&value))
        return CATransform3DConcat(*a, power(std::get<CATransform3D>(end), times));
    return value;
}

CAValue CABasicValue(const CABasicAnimation& animation, const CAValue& model, CGFloat progress) {
    const auto orModel = [&model](const CAValue& value) -> const CAValue& {
        return value.index() ? value : model;
    };
    return CAInterpolate(orModel(animation.fromValue()), orModel(animation.toValue()), progress);
}

CAValue CAKeyframeValue(const CAKeyframeAnimation& animation, CGFloat progress) {
    if (hasPath(animation)) {
        const std::vector<Segment> segments = segmentsOf(*animation.path());
        const Place place = placeAt(progress, animation.keyTimes(), segments.size() + 1);
        return segments[place.index].at(place.share);
    }
    const std::vector<CAValue>& values = animation.values();
    if (values.empty()) return {};
    if (values.size() == 1) return values.front();
    const Place place = placeAt(progress, animation.keyTimes(), values.size());
    return CAInterpolate(values[place.index], values[place.index + 1], place.share);
}

CAValue CAKeyframeEnd(const CAKeyframeAnimation& animation) {
    if (hasPath(animation)) return segmentsOf(*animation.path()).back().end;
    return animation.values().empty() ? CAValue{} : animation.values().back();
}

CAAnimatedValues::CAAnimatedValues(const CALayer& layer)
    : values_{layer.bounds(),           layer.position(),     layer.anchorPoint(), layer.transform(),
              CGFloat(layer.opacity()), layer.cornerRadius(), layer.borderWidth()} {}

bool CAAnimatedValues::knows(std::string_view keyPath) {
    static const CALayer blank;
    return CAAnimatedValues(blank).get(keyPath).index() != 0;
}

CAValue CAAnimatedValues::get(std::string_view keyPath) {
    if (const CGFloat* slot = number(keyPath)) return *slot;
    if (const CGPoint* slot = point(keyPath)) return *slot;
    if (keyPath == transformPath) return result().transform;
    if (keyPath == translationPath) return CGPoint{components().translationX, components().translationY};
    if (keyPath == "bounds.size") return CGPoint{values_.bounds.size.width, values_.bounds.size.height};
    if (keyPath == scalePath) {
        const CATransformComponents& c = components();
        const bool uniform = c.scaleX == c.scaleY && c.scaleY == c.scaleZ;
        return uniform ? c.scaleX : (c.scaleX + c.scaleY + c.scaleZ) / 3;
    }
    return {};
}

void CAAnimatedValues::set(std::string_view keyPath, const CAValue& value, bool add) {
    if (!isFinite(value)) return;
    if (const auto* n = std::get_if<CGFloat>(&value)) {
        const auto put = [n, add](CGFloat& slot) { slot = add ? slot + *n : *n; };
        if (CGFloat* slot = number(keyPath)) {
            put(*slot);
        } else if (keyPath == scalePath) {
            put(components().scaleX);
            put(components().scaleY);
            put(components().scaleZ);
        }
    } else if (const auto* p = std::get_if<CGPoint>(&value)) {
        const auto put = [p, add](CGFloat& x, CGFloat& y) {
            x = add ? x + p->x : p->x;
            y = add ? y + p->y : p->y;
        };
        if (CGPoint* slot = point(keyPath))
            put(slot->x, slot->y);
        else if (keyPath == translationPath)
            put(components().translationX, components().translationY);
        else if (keyPath == "bounds.size")
            put(values_.bounds.size.width, values_.bounds.size.height);
    } else if (const auto* t = std::get_if<CATransform3D>(&value); t && keyPath == transformPath) {
        const CATransform3D replaced = add ? CATransform3DConcat(*t, result().transform) : *t;
        components_.reset();
        values_.transform = replaced;
    }
}

const CAPresentation& CAAnimatedValues::result() {
    if (components_) values_.transform = CATransform3DCompose(*components_);
    return values_;
}

CGFloat* CAAnimatedValues::number(std::string_view keyPath) {
    if (keyPath == "opacity") return &values_.opacity;
    if (keyPath == "cornerRadius") return &values_.cornerRadius;
    if (keyPath == "borderWidth") return &values_.borderWidth;
    if (keyPath == "position.x") return &values_.position.x;
    if (keyPath == "position.y") return &values_.position.y;
    if (keyPath == "anchorPoint.x") return &values_.anchorPoint.x;
    if (keyPath == "anchorPoint.y") return &values_.anchorPoint.y;
    if (keyPath == "bounds.size.width") return &values_.bounds.size.width;
    if (keyPath == "bounds.size.height") return &values_.bounds.size.height;
    if (keyPath == "bounds.origin.x") return &values_.bounds.origin.x;
    if (keyPath == "bounds.origin.y") return &values_.bounds.origin.y;
    for (const NamedComponent& named : namedComponents) {
        if (keyPath == named.keyPath) return &(components().*named.member);
    }
    return nullptr;
}

CGPoint* CAAnimatedValues::point(std::string_view keyPath) {
    if (keyPath == "position") return &values_.position;
    if (keyPath == "anchorPoint") return &values_.anchorPoint;
    if (keyPath == "bounds.origin") return &values_.bounds.origin;
    return nullptr;
}

CATransformComponents& CAAnimatedValues::components() {
    if (!components_) components_ = CATransform3DDecompose(values_.transform);
    return *components_;
}

} // namespace tallyforge
