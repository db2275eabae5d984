#include "quartzcore/RenderServer.h"

#include "quartzcore/Presentation.h"
#include "quartzcore/TextLayout.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {
namespace {

constexpr CGFloat invisible = 0.001F; // alpha at which nothing is drawn; opacities are single precision

bool isFinite(const CGRect& r) {
    return std::isfinite(r.origin.x) && std::isfinite(r.origin.y) && std::isfinite(r.size.width) &&
           std::isfinite(r.size.height);
}

bool shows(const std::optional<CGColor>& color) {
    return color && color->alpha > 0;
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

// Where contents of this size lie in the bounds.
CGRect contentsRect(const CALayer& layer, const CGRect& bounds) {
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

// The inner outline runs the other way round, so that filling leaves it open.
void appendReversed(CGPath& path, const CGPath& closedOutline) {
    const auto& elements = closedOutline.elements();
    const auto endOf = [](const CGPath::Element& e) {
        return e.points[e.verb == CGPath::Verb::cubic ? 2 : 0];
    };
    size_t count = elements.size();
    while (count > 0 && elements[count - 1].verb == CGPath::Verb::close)
        --count;
    if (count == 0) return;
    const CGPoint start = endOf(elements[count - 1]);
    path.moveToPoint(start.x, start.y);
    for (size_t i = count - 1; i > 0; --i) {
        const CGPoint end = endOf(elements[i - 1]);
        if (elements[i].verb == CGPath::Verb::cubic)
            path.addCurveToPoint(elements[i].points[1], elements[i].points[0], end);
        else
            path.addLineToPoint(end.x, end.y);
    }
    path.closeSubpath();
}

CGPath roundedPath(const CGRect& rect, CGFloat radius) {
    CGPath path;
    if (radius > 0)
        path.addRoundedRect(rect, radius, radius);
    else
        path.addRect(rect);
    return path;
}

// One layer at one moment.
class Painter {
  public:
    Painter(Canvas& canvas, CGFloat seconds) : canvas_(canvas), seconds_(seconds) {}

    // The alpha is what superlayers that did not need flattening hand down.
    void paint(const CALayer& layer, const CGAffineTransform& superToPixels, CGFloat alpha) const {
        if (layer.hidden()) return;
        const CAPresentation values = CAPresentationAt(layer, seconds_);
        paint(layer, values, CGAffineTransformConcat(toSuperlayer(values), superToPixels), alpha);
    }

    void paint(const CALayer& layer, const CAPresentation& values, const CGAffineTransform& toPixels,
               CGFloat alpha) const {
        alpha *= std::clamp<CGFloat>(values.opacity, 0, 1);
        if (layer.hidden() || !(alpha > invisible)) return;
        if (!isFinite(values.bounds) || !CGAffineTransformIsFinite(toPixels) || isFlat(toPixels)) return;
        const Look look{layer, values, CGRectStandardize(values.bounds), straightened(toPixels)};
        const bool flatten = alpha < 1 && partsOf(look) > 1;
        if (!flatten) return paintParts(look, alpha);
        canvas_.setTransform(look.toPixels);
        canvas_.beginGroup(reachOf(layer, values), alpha);
        paintParts(look, 1);
        canvas_.endGroup();
    }

  private:
    struct Look {
        const CALayer& layer;
        const CAPresentation& values;
        CGRect bounds;
        CGAffineTransform toPixels;

        CGFloat radius() const {
            const CGFloat most = std::min(bounds.size.width, bounds.size.height) / 2;
            return values.cornerRadius > 0 ? std::min(values.cornerRadius, most) : 0;
        }
        bool hasBorder() const {
            return values.borderWidth > 0 && shows(layer.borderColor()) && !CGRectIsEmpty(bounds);
        }
        bool hasBackground() const { return shows(layer.backgroundColor()) && !CGRectIsEmpty(bounds); }
        bool hasContents() const {
            const CGImageRef& image = layer.contents();
            return image && image->width() > 0 && image->height() > 0 && !CGRectIsEmpty(bounds);
        }
    };

    // How many things are drawn on top of each other.
    static int partsOf(const Look& look) {
        int parts = int(look.hasBackground()) + int(look.hasContents()) + int(look.hasBorder());
        if (dynamic_cast<const CATextLayer*>(&look.layer)) ++parts;
        if (const auto* shape = dynamic_cast<const CAShapeLayer*>(&look.layer))
            parts += int(shows(shape->fillColor())) + int(shows(shape->strokeColor()));
        for (const auto& sublayer : look.layer.sublayers())
            parts += sublayer->hidden() ? 0 : 1;
        return parts;
    }

    void paintParts(const Look& look, CGFloat alpha) const {
        const CALayer& layer = look.layer;
        canvas_.setTransform(look.toPixels);
        if (look.hasBackground()) fillBounds(look, *layer.backgroundColor(), alpha);
        const bool clips = layer.masksToBounds();
        if (clips) {
            if (CGRectIsEmpty(look.bounds)) return;
            canvas_.save();
            if (look.radius() > 0)
                canvas_.clipToPath(roundedPath(look.bounds, look.radius()));
            else
                canvas_.clipToRect(look.bounds);
        }
        if (look.hasContents()) canvas_.drawImage(layer.contents(), contentsRect(layer, look.bounds), alpha);
        if (const auto* text = dynamic_cast<const CATextLayer*>(&layer)) paintText(*text, look.bounds, alpha);
        if (const auto* shape = dynamic_cast<const CAShapeLayer*>(&layer)) paintShape(*shape, alpha);
        for (const auto& sublayer : layer.sublayers())
            paint(*sublayer, look.toPixels, alpha);
        if (clips) canvas_.restore();
        if (look.hasBorder()) {
            canvas_.setTransform(look.toPixels);
            paintBorder(look, alpha);
        }
    }

    void fillBounds(const Look& look, const CGColor& color, CGFloat alpha) const {
        if (look.radius() > 0)
            canvas_.fillPath(roundedPath(look.bounds, look.radius()), color, alpha);
        else
            canvas_.fillRect(look.bounds, color, alpha);
    }

    void paintBorder(const Look& look, CGFloat alpha) const {
        const CGColor& color = *look.layer.borderColor();
        const CGRect& outer = look.bounds;
        const CGFloat width = look.values.borderWidth;
        if (2 * width >= std::min(outer.size.width, outer.size.height)) return fillBounds(look, color, alpha);
        const CGRect inner = CGRectInset(outer, width, width);
        if (look.radius() > 0) {
            CGPath ring = roundedPath(outer, look.radius());
            appendReversed(ring, roundedPath(inner, std::max<CGFloat>(look.radius() - width, 0)));
            return canvas_.fillPath(ring, color, alpha);
        }
        const CGFloat left = outer.origin.x, top = outer.origin.y;
        canvas_.fillRect({{left, top}, {outer.size.width, width}}, color, alpha);
        canvas_.fillRect({{left, CGRectGetMaxY(inner)}, {outer.size.width, width}}, color, alpha);
        canvas_.fillRect({{left, inner.origin.y}, {width, inner.size.height}}, color, alpha);
        canvas_.fillRect({{CGRectGetMaxX(inner), inner.origin.y}, {width, inner.size.height}}, color, alpha);
    }

    void paintText(const CATextLayer& layer, const CGRect& bounds, CGFloat alpha) const {
        const auto text = CALayOutText(layer.string(), layer.font(), bounds.size, layer.wrapped());
        const CGFloat height = text->lineHeight * CGFloat(text->lines.size());
        CGFloat baseline = bounds.origin.y + (bounds.size.height - height) / 2 + text->ascent;
        for (const CATextLines::Line& line : text->lines) {
            const CGFloat room = bounds.size.width - line.width;
            const CGFloat share = layer.alignmentMode() == CATextAlignment::left     ? 0
                                  : layer.alignmentMode() == CATextAlignment::center ? 0.5
                                                                                     : 1;
            const CGPoint start{bounds.origin.x + room * share, baseline};
            canvas_.drawText(line.text, layer.font(), start, layer.foregroundColor(), alpha);
            baseline += text->lineHeight;
        }
    }

    void paintShape(const CAShapeLayer& layer, CGFloat alpha) const {
        if (!layer.path() || layer.path()->empty()) return;
        if (shows(layer.fillColor())) canvas_.fillPath(*layer.path(), *layer.fillColor(), alpha);
        if (shows(layer.strokeColor()) && layer.lineWidth() > 0) {
            CGColor color = *layer.strokeColor();
            color.alpha *= alpha;
            canvas_.strokePath(*layer.path(), color, layer.lineWidth());
        }
    }

    // How far the layer and everything in it may reach, in its own coordinates.
    CGRect reachOf(const CALayer& layer, const CAPresentation& values) const {
        const CGRect bounds = CGRectStandardize(values.bounds);
        if (layer.masksToBounds()) return bounds;
        CGRect reach = bounds;
        const auto extend = [&reach](const CGRect& to) { // what is not finite paints nothing
            if (isFinite(to)) reach = CGRectUnion(reach, to);
        };
        if (layer.contents()) extend(contentsRect(layer, bounds));
        if (const auto* text = dynamic_cast<const CATextLayer*>(&layer)) // glyphs may lean out of their line
            extend(CGRectInset(bounds, -text->font().size, -text->font().size));
        if (const auto* shape = dynamic_cast<const CAShapeLayer*>(&layer); shape && shape->path()) {
            const CGFloat miter = shows(shape->strokeColor()) ? shape->lineWidth() * 5 : 0;
            extend(CGRectInset(shape->path()->boundingBox(), -miter, -miter));
        }
        for (const auto& sublayer : layer.sublayers()) {
            if (sublayer->hidden()) continue;
            const CAPresentation inside = CAPresentationAt(*sublayer, seconds_);
            const CGAffineTransform t = toSuperlayer(inside);
            if (!isFinite(inside.bounds) || !CGAffineTransformIsFinite(t) || isFlat(t)) continue;
            extend(CGRectApplyAffineTransform(reachOf(*sublayer, inside), t));
        }
        return reach;
    }

    Canvas& canvas_;
    CGFloat seconds_;
};

} // namespace

void RenderServer::paint(const CALayer& root, CGFloat seconds, Canvas& canvas,
                         const CGAffineTransform& toPixels) {
    canvas.save();
    Painter(canvas, seconds).paint(root, toPixels, 1);
    canvas.restore();
}

std::shared_ptr<CGImage> RenderServer::render(const CALayer& root, CGFloat seconds, CGFloat scale) {
    const CAPresentation values = CAPresentationAt(root, seconds);
    const CGRect bounds = CGRectStandardize(values.bounds);
    const CGFloat width = std::round(bounds.size.width * scale),
                  height = std::round(bounds.size.height * scale);
    Graphics* const graphics = Graphics::current();
    if (!graphics || !isFinite(bounds) || !(width >= 1 && width <= 4096 && height >= 1 && height <= 4096))
        return nullptr;

    auto picture = std::make_shared<CGImage>(int(width), int(height));
    std::fill_n(picture->row(0), picture->pixels().size(), 0xFFFFFFFFU);
    const auto canvas = graphics->makeCanvas(*picture);
    if (!canvas) return nullptr;
    const CGAffineTransform toPixels{scale, 0, 0, scale, -bounds.origin.x * scale, -bounds.origin.y * scale};
    Painter(*canvas, seconds).paint(root, values, toPixels, 1);
    return picture;
}

} // namespace tallyforge
