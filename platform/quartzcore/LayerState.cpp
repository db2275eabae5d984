#include "quartzcore/LayerState.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {
namespace {

constexpr CGFloat invisible = 0.001F; // alpha at which nothing is drawn; opacities are single precision

bool isFinite(const CGRect& r) {
    return std::isfinite(r.origin.x) && std::isfinite(r.origin.y) && std::isfinite(r.size.width) &&
           std::isfinite(r.size.height);
}

// Turned edge-on or scaled to nothing, measured against its own size.
bool isFlat(const CGAffineTransform& t) {
    const CGFloat size = t.a * t.a + t.b * t.b + t.c * t.c + t.d * t.d;
    return !(std::abs(t.a * t.d - t.b * t.c) > 1e-10 * size);
}

// Sines of half turns are not quite zero; without this, upright layers would be drawn as slanted ones.
CGAffineTransform straightened(CGAffineTransform t) {
    const CGFloat largest = std::max({std::abs(t.a), std::abs(t.b), std::abs(t.c), std::abs(t.d)});
    for (CGFloat* part : {&t.a, &t.b, &t.c, &t.d}) {
        if (std::abs(*part) < 1e-12 * largest) *part = 0;
    }
    return t;
}

// From a layer's own coordinates to those of its superlayer.
CGAffineTransform toSuperlayer(const CAPresentation& p) {
    const CGFloat x = p.bounds.origin.x + p.anchorPoint.x * p.bounds.size.width;
    const CGFloat y = p.bounds.origin.y + p.anchorPoint.y * p.bounds.size.height;
    CGAffineTransform t = CATransform3DGetAffineTransform(p.transform);
    t.tx += p.position.x - (t.a * x + t.c * y);
    t.ty += p.position.y - (t.b * x + t.d * y);
    return t;
}

// How many things are drawn on top of each other.
int partsOf(const CALayer& layer, const CAPresentation& values, const CGRect& bounds) {
    int parts = 0;
    if (!CGRectIsEmpty(bounds)) {
        const CGImageRef& image = layer.contents();
        parts += int(CAShows(layer.backgroundColor())) +
                 int(image && image->width() > 0 && image->height() > 0) +
                 int(values.borderWidth > 0 && CAShows(layer.borderColor()));
    }
    if (dynamic_cast<const CATextLayer*>(&layer)) ++parts;
    if (const auto* shape = dynamic_cast<const CAShapeLayer*>(&layer))
        parts += int(CAShows(shape->fillColor())) + int(CAShows(shape->strokeColor()));
    for (const auto& sublayer : layer.sublayers())
        parts += sublayer->hidden() ? 0 : 1;
    return parts;
}

struct Extent {
    CGRect reach;
    bool still = true; // nothing in it is animated, so that it can be kept
};

Extent extentOf(const CALayer& layer, const CAPresentation& values, CGFloat seconds) {
    const CGRect bounds = CGRectStandardize(values.bounds);
    const bool unanimated = layer.animations().empty();
    if (layer.masksToBounds()) return {bounds, unanimated};
    CALayer::KeptReach& kept = layer.keptReach();
    if (kept.revision == layer.revision()) return {kept.reach, true};

    Extent extent{CAOwnReach(layer, bounds), unanimated};
    for (const auto& sublayer : layer.sublayers()) {
        if (sublayer->hidden()) continue;
        const CAPresentation inside = CAPresentationAt(*sublayer, seconds);
        const CGAffineTransform t = toSuperlayer(inside);
        extent.still = extent.still && sublayer->animations().empty();
        if (!isFinite(inside.bounds) || !CGAffineTransformIsFinite(t) || isFlat(t)) continue;
        const Extent within = extentOf(*sublayer, inside, seconds);
        extent.still = extent.still && within.still;
        const CGRect reach = CGRectApplyAffineTransform(within.reach, t);
        if (isFinite(reach)) extent.reach = CGRectUnion(extent.reach, reach);
    }
    if (extent.still) kept = {layer.revision(), extent.reach};
    return extent;
}

} // namespace

CGFloat CALayerState::radius() const {
    const CGFloat most = std::min(bounds.size.width, bounds.size.height) / 2;
    return values.cornerRadius > 0 ? std::min(values.cornerRadius, most) : 0;
}

CALayerState CAStateOf(const CALayer& layer, CGFloat seconds, const CGAffineTransform& superToPixels,
                       CGFloat handedDown) {
    if (layer.hidden()) return {};
    const CAPresentation values = CAPresentationAt(layer, seconds);
    return CAStateOf(layer, values, CGAffineTransformConcat(toSuperlayer(values), superToPixels), handedDown);
}

CALayerState CAStateOf(const CALayer& layer, const CAPresentation& values, const CGAffineTransform& toPixels,
                       CGFloat handedDown) {
    CALayerState state{values, CGRectStandardize(values.bounds), {}, 0, false, false};
    state.alpha = handedDown * std::clamp<CGFloat>(values.opacity, 0, 1);
    if (layer.hidden() || !(state.alpha > invisible)) return state;
    if (!isFinite(values.bounds) || !CGAffineTransformIsFinite(toPixels) || isFlat(toPixels)) return state;
    state.toPixels = straightened(toPixels);
    state.shown = true;
    state.flattened = state.alpha < 1 && partsOf(layer, values, state.bounds) > 1;
    return state;
}

CGRect CAContentsRect(const CALayer& layer, const CGRect& bounds) {
    const CGFloat scale =
        layer.contentsScale() > 0 && std::isfinite(layer.contentsScale()) ? layer.contentsScale() : 1;
    const CGSize natural{layer.contents()->width() / scale, layer.contents()->height() / scale};
    const CGFloat fitX = bounds.size.width / natural.width, fitY = bounds.size.height / natural.height;
    const auto placed = [&bounds](CGFloat width, CGFloat height, CGFloat shareX, CGFloat shareY) -> CGRect {
        return {{bounds.origin.x + (bounds.size.width - width) * shareX,
                 bounds.origin.y + (bounds.size.height - height) * shareY},
                {width, height}};
    };
    const auto atOwnSize = [&](CGFloat shareX, CGFloat shareY) {
        return placed(natural.width, natural.height, shareX, shareY);
    };
    const auto scaledBy = [&](CGFloat factor) {
        return placed(natural.width * factor, natural.height * factor, 0.5, 0.5);
    };
    switch (layer.contentsGravity()) {
    case CAGravity::resize:
        return bounds;
    case CAGravity::resizeAspect:
        return scaledBy(std::min(fitX, fitY));
    case CAGravity::resizeAspectFill:
        return scaledBy(std::max(fitX, fitY));
    case CAGravity::center:
        return atOwnSize(0.5, 0.5);
    case CAGravity::top:
        return atOwnSize(0.5, 0);
    case CAGravity::bottom:
        return atOwnSize(0.5, 1);
    case CAGravity::left:
        return atOwnSize(0, 0.5);
    case CAGravity::right:
        return atOwnSize(1, 0.5);
    case CAGravity::topLeft:
        return atOwnSize(0, 0);
    case CAGravity::topRight:
        return atOwnSize(1, 0);
    case CAGravity::bottomLeft:
        return atOwnSize(0, 1);
    case CAGravity::bottomRight:
        return atOwnSize(1, 1);
    }
    return bounds;
}

CGRect CAOwnReach(const CALayer& layer, const CGRect& bounds) {
    CGRect reach = bounds;
    const auto extend = [&reach](const CGRect& to) { // what is not finite paints nothing
        if (isFinite(to)) reach = CGRectUnion(reach, to);
    };
    if (layer.contents()) extend(CAContentsRect(layer, bounds));
    if (const auto* text = dynamic_cast<const CATextLayer*>(&layer)) // glyphs may lean out of their line
        extend(CGRectInset(bounds, -text->font().size, -text->font().size));
    if (const auto* shape = dynamic_cast<const CAShapeLayer*>(&layer); shape && shape->path()) {
        const CGFloat miter = CAShows(shape->strokeColor()) ? shape->lineWidth() * 5 : 0;
        extend(CGRectInset(shape->path()->boundingBox(), -miter, -miter));
    }
    return layer.masksToBounds() ? CGRectIntersection(reach, bounds) : reach;
}

CGRect CAReach(const CALayer& layer, const CAPresentation& values, CGFloat seconds) {
    return extentOf(layer, values, seconds).reach;
}

} // namespace tallyforge
