#include "rastergraphics/Stroke.h"

#include "rastergraphics/ToolkitPath.h"

#include <QPainterPath>
#include <QPainterPathStroker>

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

/// Farther out nothing is seen, and the stroker's own sums stay exact.
constexpr double kFarthest = 1e6;

QPointF held(const CGPoint& p) {
    return {std::clamp(p.x, -kFarthest, kFarthest), std::clamp(p.y, -kFarthest, kFarthest)};
}

QPainterPath toolkitPath(const CGPath& path, double scale) {
    QPainterPath result;
    auto point = [scale](const CGPoint& p) { return held({p.x * scale, p.y * scale}); };
    for (const CGPath::Element& element : path.elements()) {
        switch (element.verb) {
        case CGPath::Verb::move:
            result.moveTo(point(element.points[0]));
            break;
        case CGPath::Verb::line:
            result.lineTo(point(element.points[0]));
            break;
        case CGPath::Verb::cubic:
            result.cubicTo(point(element.points[0]), point(element.points[1]), point(element.points[2]));
            break;
        case CGPath::Verb::close:
            result.closeSubpath();
            break;
        }
    }
    return result;
}

} // namespace

CGPath PathFromToolkit(const QPainterPath& path) {
    CGPath result;
    for (int i = 0; i < path.elementCount(); ++i) {
        QPainterPath::Element e = path.elementAt(i);
        switch (e.type) {
        case QPainterPath::MoveToElement:
            result.closeSubpath();
            result.moveToPoint(e.x, e.y);
            break;
        case QPainterPath::LineToElement:
            result.addLineToPoint(e.x, e.y);
            break;
        case QPainterPath::CurveToElement: {
            QPainterPath::Element c2 = path.elementAt(i + 1);
            QPainterPath::Element end = path.elementAt(i + 2);
            result.addCurveToPoint({e.x, e.y}, {c2.x, c2.y}, {end.x, end.y});
            i += 2;
            break;
        }
        case QPainterPath::CurveToDataElement:
            break;
        }
    }
    return result;
}

CGPath StrokeOutline(const CGPath& path, const CGAffineTransform& toPixels, CGFloat width, bool round) {
    if (!std::isfinite(width) || width <= 0 || !CGAffineTransformIsFinite(toPixels)) return {};
    // The line is outlined at the size at which it is seen, so that its curves are as fine as needed; what is
    // left of the transform (rotation, skew) comes afterwards.
    double scale = std::max(std::hypot(toPixels.a, toPixels.b), std::hypot(toPixels.c, toPixels.d));
    if (!std::isfinite(scale) || scale <= 0) return {};
    for (const CGPath::Element& element : path.elements()) {
        for (const CGPoint& p : element.points) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y)) return {};
        }
    }
    QPainterPathStroker stroker;
    stroker.setWidth(std::min(width * scale, kFarthest));
    stroker.setCapStyle(round ? Qt::RoundCap : Qt::FlatCap);
    stroker.setJoinStyle(round ? Qt::RoundJoin : Qt::SvgMiterJoin);
    stroker.setMiterLimit(10);
    stroker.setCurveThreshold(0.02);
    CGAffineTransform rest = CGAffineTransformScale(toPixels, 1 / scale, 1 / scale);
    return PathFromToolkit(stroker.createStroke(toolkitPath(path, scale))).transformed(rest);
}

} // namespace tallyforge
