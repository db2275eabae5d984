#include "quartzcore/RenderServer.h"

#include "quartzcore/LayerState.h"
#include "quartzcore/TextLayout.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {
namespace {

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

// Whether pixels lie in the clip; numbers that are none count as inside.
bool mayTouch(const CGRect& pixels, const CGRect& clip) {
    return !(pixels.origin.x >= clip.origin.x + clip.size.width) &&
           !(pixels.origin.y >= clip.origin.y + clip.size.height) &&
           !(pixels.origin.x + pixels.size.width <= clip.origin.x) &&
           !(pixels.origin.y + pixels.size.height <= clip.origin.y);
}

// One tree at one moment.
class Painter {
  public:
    Painter(Canvas& canvas, CGFloat seconds) : canvas_(canvas), seconds_(seconds) {}

    // The alpha is what superlayers that did not need flattening hand down; the clip is in pixels.
    void paint(const CALayer& layer, const CGAffineTransform& superToPixels, CGFloat alpha,
               const CGRect& clip) const {
        paint(layer, CAStateOf(layer, seconds_, superToPixels, alpha), clip);
    }

    void paint(const CALayer& layer, const CALayerState& state, const CGRect& clip) const {
        if (!state.shown) return;
        const CGRect reach = CAReach(layer, state.values, seconds_);
        if (!mayTouch(CGRectApplyAffineTransform(reach, state.toPixels), clip)) return;
        const Look look{layer, state};
        if (!state.flattened) return paintParts(look, clip);
        canvas_.setTransform(state.toPixels);
        canvas_.beginGroup(reach, state.alpha);
        paintParts(look, canvas_.clipBounds());
        canvas_.endGroup();
    }

  private:
    struct Look {
        const CALayer& layer;
        const CALayerState& state;

        bool hasBorder() const {
            return state.values.borderWidth > 0 && CAShows(layer.borderColor()) &&
                   !CGRectIsEmpty(state.bounds);
        }
        bool hasBackground() const {
            return CAShows(layer.backgroundColor()) && !CGRectIsEmpty(state.bounds);
        }
        bool hasContents() const {
            const CGImageRef& image = layer.contents();
            return image && image->width() > 0 && image->height() > 0 && !CGRectIsEmpty(state.bounds);
        }
    };

    void paintParts(const Look& look, const CGRect& clip) const {
        const CALayer& layer = look.layer;
        const CALayerState& state = look.state;
        const CGFloat alpha = state.alphaOfParts();
        canvas_.setTransform(state.toPixels);
        if (look.hasBackground()) fillBounds(look, *layer.backgroundColor(), alpha);
        const bool clips = layer.masksToBounds();
        if (clips) {
            if (CGRectIsEmpty(state.bounds)) return;
            canvas_.save();
            if (state.radius() > 0)
                canvas_.clipToPath(roundedPath(state.bounds, state.radius()));
            else
                canvas_.clipToRect(state.bounds);
        }
        if (look.hasContents())
            canvas_.drawImage(layer.contents(), CAContentsRect(layer, state.bounds), alpha);
        if (const auto* text = dynamic_cast<const CATextLayer*>(&layer))
            paintText(*text, state.bounds, alpha);
        if (const auto* shape = dynamic_cast<const CAShapeLayer*>(&layer)) paintShape(*shape, alpha);
        const CGRect within = clips ? canvas_.clipBounds() : clip;
        for (const auto& sublayer : layer.sublayers())
            paint(*sublayer, state.toPixels, alpha, within);
        if (clips) canvas_.restore();
        if (look.hasBorder()) {
            canvas_.setTransform(state.toPixels);
            paintBorder(look, alpha);
        }
    }

    void fillBounds(const Look& look, const CGColor& color, CGFloat alpha) const {
        if (look.state.radius() > 0)
            canvas_.fillPath(roundedPath(look.state.bounds, look.state.radius()), color, alpha);
        else
            canvas_.fillRect(look.state.bounds, color, alpha);
    }

    void paintBorder(const Look& look, CGFloat alpha) const {
        const CGColor& color = *look.layer.borderColor();
        const CGRect& outer = look.state.bounds;
        const CGFloat width = look.state.values.borderWidth;
        if (2 * width >= std::min(outer.size.width, outer.size.height)) return fillBounds(look, color, alpha);
        const CGRect inner = CGRectInset(outer, width, width);
        if (look.state.radius() > 0) {
            CGPath ring = roundedPath(outer, look.state.radius());
            appendReversed(ring, roundedPath(inner, std::max<CGFloat>(look.state.radius() - width, 0)));
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
        if (CAShows(layer.fillColor())) canvas_.fillPath(*layer.path(), *layer.fillColor(), alpha);
        if (CAShows(layer.strokeColor()) && layer.lineWidth() > 0) {
            CGColor color = *layer.strokeColor();
            color.alpha *= alpha;
            canvas_.strokePath(*layer.path(), color, layer.lineWidth());
        }
    }

    Canvas& canvas_;
    CGFloat seconds_;
};

} // namespace

void RenderServer::paint(const CALayer& root, CGFloat seconds, Canvas& canvas,
                         const CGAffineTransform& toPixels) {
    canvas.save();
    Painter(canvas, seconds).paint(root, toPixels, 1, canvas.clipBounds());
    canvas.restore();
}

std::shared_ptr<CGImage> RenderServer::render(const CALayer& root, CGFloat seconds, CGFloat scale) {
    const CAPresentation values = CAPresentationAt(root, seconds);
    const CGRect bounds = CGRectStandardize(values.bounds);
    const CGFloat width = std::round(bounds.size.width * scale),
                  height = std::round(bounds.size.height * scale);
    Graphics* const graphics = Graphics::current();
    if (!graphics || !std::isfinite(bounds.origin.x) || !std::isfinite(bounds.origin.y)) return nullptr;
    if (!(width >= 1 && width <= 4096 && height >= 1 && height <= 4096)) return nullptr;

    auto picture = std::make_shared<CGImage>(int(width), int(height));
    std::fill_n(picture->row(0), picture->pixels().size(), 0xFFFFFFFFU);
    const auto canvas = graphics->makeCanvas(*picture);
    if (!canvas) return nullptr;
    const CGAffineTransform toPixels{scale, 0, 0, scale, -bounds.origin.x * scale, -bounds.origin.y * scale};
    Painter(*canvas, seconds).paint(root, CAStateOf(root, values, toPixels, 1), canvas->clipBounds());
    return picture;
}

} // namespace tallyforge
