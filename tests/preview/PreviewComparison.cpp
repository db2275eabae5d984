#include "PreviewComparison.h"

#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

namespace tallyforge::test {

namespace {

/// Collects the differences below one view or animation.
class Comparison {
  public:
    explicit Comparison(std::string place) : place_(std::move(place)) { lines_.precision(9); }

    /// To 1e-5 of the larger of the numbers, of 1, and of `size`; and to `slack` times that.
    void near(const char* what, CGFloat expected, CGFloat actual, CGFloat size = 0, CGFloat slack = 0) {
        const CGFloat scale = std::max({1.0, std::abs(expected), std::abs(size)});
        if (std::abs(expected - actual) <= (1e-5 + slack) * scale) return;
        lines_ << place_ << ": " << what << " is " << actual << ", expected " << expected << "\n";
    }
    template <class T>
    void same(const char* what, const T& expected, const T& actual) {
        if (expected != actual)
            lines_ << place_ << ": " << what << " is " << actual << ", expected " << expected << "\n";
    }
    void pixel(const char* what, uint32_t expected, uint32_t actual, int tolerance) {
        for (int shift = 0; shift < 32; shift += 8) {
            if (std::abs(int(expected >> shift & 255) - int(actual >> shift & 255)) > tolerance) {
                lines_ << place_ << ": " << what << " pixel is " << std::hex << actual << ", expected "
                       << expected << std::dec << "\n";
                return;
            }
        }
    }
    void color(const char* what, const CGColor& expected, const CGColor& actual, CGFloat tolerance) {
        const CGFloat wanted[] = {expected.red, expected.green, expected.blue, expected.alpha};
        const CGFloat have[] = {actual.red, actual.green, actual.blue, actual.alpha};
        for (int i = 0; i < 4; ++i) {
            if (std::abs(wanted[i] - have[i]) > tolerance)
                lines_ << place_ << ": " << what << " channel " << i << " is " << have[i] << ", expected "
                       << wanted[i] << "\n";
        }
    }
    void append(const std::string& more) { lines_ << more; }
    std::string text() const { return lines_.str(); }

  private:
    std::string place_;
    std::ostringstream lines_;
};

void compareValue(Comparison& result, const char* what, const CAValue& expected, const CAValue& actual,
                  CGFloat slack) {
    result.same(what, expected.index(), actual.index());
    if (expected.index() != actual.index()) return;
    if (const CGFloat* number = std::get_if<CGFloat>(&expected))
        result.near(what, *number, std::get<CGFloat>(actual));
    if (const CATransform3D* t = std::get_if<CATransform3D>(&expected)) {
        const CATransform3D& a = std::get<CATransform3D>(actual);
        const CGFloat wanted[] = {t->m11, t->m12, t->m13, t->m14, t->m21, t->m22, t->m23, t->m24,
                                  t->m31, t->m32, t->m33, t->m34, t->m41, t->m42, t->m43, t->m44};
        const CGFloat have[] = {a.m11, a.m12, a.m13, a.m14, a.m21, a.m22, a.m23, a.m24,
                                a.m31, a.m32, a.m33, a.m34, a.m41, a.m42, a.m43, a.m44};
        // The height that a keyframe rises by depends on the angle and on the scale.
        for (int i = 0; i < 16; ++i)
            result.near(what, wanted[i], have[i], i == 13 ? 100 * t->m11 : 0, i == 13 ? slack : 0);
    }
}

std::string animationDifferences(const std::string& place, const ModelAnimation& expected,
                                 const CAAnimation& actual, const CGSize& size, CGFloat slack) {
    Comparison result(place + " animation");
    result.same("class", expected.className, std::string(actual.className()));
    result.near("duration", expected.duration, actual.duration());
    result.same("repeat count", expected.repeatCount, actual.repeatCount());
    result.same("autoreverses", expected.autoreverses, actual.autoreverses());
    result.same("fill mode", int(expected.fill), int(actual.fillMode()));
    result.same("timing", expected.timing,
                actual.timingFunction() ? std::string(actual.timingFunction()->name()) : "linear");
    if (auto* property = dynamic_cast<const CAPropertyAnimation*>(&actual)) {
        result.same("key path", expected.keyPath, property->keyPath());
        result.same("cumulative", expected.cumulative, property->cumulative());
        result.same("additive", expected.additive, property->additive());
    }
    if (auto* basic = dynamic_cast<const CABasicAnimation*>(&actual)) {
        compareValue(result, "from", expected.from, basic->fromValue(), slack);
        compareValue(result, "to", expected.to, basic->toValue(), slack);
    }
    if (auto* keyframes = dynamic_cast<const CAKeyframeAnimation*>(&actual)) {
        result.same("count of values", expected.values.size(), keyframes->values().size());
        for (size_t i = 0; i < std::min(expected.values.size(), keyframes->values().size()); ++i)
            compareValue(result, "value", expected.values[i], keyframes->values()[i], slack);
        result.same("count of key times", expected.keyTimes.size(), keyframes->keyTimes().size());
        for (size_t i = 0; i < std::min(expected.keyTimes.size(), keyframes->keyTimes().size()); ++i)
            result.near("key time", expected.keyTimes[i], keyframes->keyTimes()[i]);
        const size_t points = keyframes->path() ? keyframes->path()->elements().size() : 0;
        result.same("count of path elements", expected.path.size(), points);
        for (size_t i = 0; i < std::min(expected.path.size(), points); ++i) {
            const CGPath::Element& element = keyframes->path()->elements()[i];
            result.same("path element", int(i ? CGPath::Verb::line : CGPath::Verb::move), int(element.verb));
            result.near("path x", expected.path[i].x, element.points[0].x, size.width);
            result.near("path y", expected.path[i].y, element.points[0].y, size.height);
        }
    }
    if (auto* group = dynamic_cast<const CAAnimationGroup*>(&actual)) {
        result.same("count of parts", expected.parts.size(), group->animations().size());
        for (size_t i = 0; i < std::min(expected.parts.size(), group->animations().size()); ++i)
            result.append(animationDifferences(place + " part", expected.parts[i], *group->animations()[i],
                                               size, slack));
    }
    return result.text();
}

void compareGeometry(Comparison& result, const ModelView& expected, const UIView& view) {
    const CGSize size = expected.size;
    result.near("width", size.width, view.bounds().size.width);
    result.near("height", size.height, view.bounds().size.height);
    result.near("centre x", expected.centre.x, view.center().x, size.width);
    result.near("centre y", expected.centre.y, view.center().y, size.height);
    result.near("anchor x", expected.anchor.x, view.layer()->anchorPoint().x);
    result.near("anchor y", expected.anchor.y, view.layer()->anchorPoint().y);
    const CGAffineTransform &e = expected.transform, a = view.transform();
    const CGFloat scale = std::hypot(e.a, e.b);
    result.near("transform a", e.a, a.a, scale, expected.slack);
    result.near("transform b", e.b, a.b, scale, expected.slack);
    result.near("transform c", e.c, a.c, scale, expected.slack);
    result.near("transform d", e.d, a.d, scale, expected.slack);
    result.near("transform tx", e.tx, a.tx);
    result.near("transform ty", e.ty, a.ty);
}

void compareContent(Comparison& result, const ModelView& expected, const UIView& view) {
    if (auto* shown = dynamic_cast<const UIImageView*>(&view)) {
        const UIImage& image = shown->image();
        result.same("has an image", expected.picture.has_value(), bool(image));
        if (expected.picture && image) {
            const ModelPicture& picture = *expected.picture;
            const CGImageRef bitmap = image.uprightBitmap();
            result.near("image width", picture.size.width, image.size().width);
            result.near("image height", picture.size.height, image.size().height);
            const int tolerance = picture.rough ? 5 : 2;
            if (picture.centre)
                result.pixel("centre", *picture.centre,
                             bitmap->pixel(bitmap->width() / 2, bitmap->height() / 2), tolerance);
            if (picture.corner) result.pixel("corner", *picture.corner, bitmap->pixel(0, 0), tolerance);
        }
    }
    if (auto* label = dynamic_cast<const UILabel*>(&view); label && expected.label) {
        result.same("text", expected.label->text, label->text());
        result.near("font size", expected.label->fontSize, label->font().pointSize());
        result.color("text colour", expected.label->color.color, label->textColor().cgColor(),
                     expected.label->color.rough ? 4 / 255.0 : 1e-6);
        result.same("alignment", int(NSTextAlignmentCenter), int(label->textAlignment()));
    }
    const CALayer& layer = *view.layer();
    result.near("border width", expected.border ? expected.border->width : 0, layer.borderWidth());
    result.near("corner radius", expected.border ? expected.border->radius : 0, layer.cornerRadius());
    if (expected.border) {
        result.same("has a border colour", expected.border->color.has_value(),
                    layer.borderColor().has_value());
        if (expected.border->color && layer.borderColor())
            result.color("border", *expected.border->color, *layer.borderColor(), 4 / 255.0);
    }
}

} // namespace

std::string Differences(const ModelView& expected, const UIView& view, bool later) {
    Comparison result(expected.name);
    result.same("class", expected.className, std::string(view.className()));
    compareGeometry(result, expected, view);
    result.near("alpha", expected.alpha, view.alpha());
    result.same("content mode", expected.contentMode, int(view.contentMode()));
    result.same("hidden", false, view.hidden());
    compareContent(result, expected, view);

    const auto& animations = view.layer()->animations();
    const bool animated = expected.animation && (later || !expected.animation->delayed);
    result.same("count of animations", size_t(animated), animations.size());
    if (animated && animations.size() == 1) {
        result.same("animation key", std::string("badgeAnim"), animations[0].key);
        result.append(animationDifferences(expected.name, *expected.animation, *animations[0].animation,
                                           expected.size, expected.slack));
    }

    result.same("count of subviews", expected.children.size(), view.subviews().size());
    for (size_t i = 0; i < std::min(expected.children.size(), view.subviews().size()); ++i) {
        std::string below = Differences(expected.children[i], *view.subviews()[i], later);
        if (!below.empty()) result.append("in " + expected.name + ", " + below);
    }
    return result.text();
}

} // namespace tallyforge::test
