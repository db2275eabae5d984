#include "coregraphics/CGPath.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

/// How far a cubic's control points stand from its ends, in radii, to come nearest to a quarter circle:
/// 4/3 (sqrt 2 - 1).
constexpr CGFloat kQuarterCircle = 0.5522847498307936;

int pointCount(CGPath::Verb verb) {
    switch (verb) {
    case CGPath::Verb::move:
    case CGPath::Verb::line:
        return 1;
    case CGPath::Verb::cubic:
        return 3;
    case CGPath::Verb::close:
        return 0;
    }
    return 0;
}

} // namespace

void CGPath::moveToPoint(CGFloat x, CGFloat y) {
    elements_.push_back({Verb::move, {{x, y}, {}, {}}});
}

void CGPath::addLineToPoint(CGFloat x, CGFloat y) {
    elements_.push_back({elements_.empty() ? Verb::move : Verb::line, {{x, y}, {}, {}}});
}

void CGPath::addCurveToPoint(CGPoint control1, CGPoint control2, CGPoint end) {
    if (elements_.empty()) moveToPoint(control1.x, control1.y);
    elements_.push_back({Verb::cubic, {control1, control2, end}});
}

void CGPath::closeSubpath() {
    if (!elements_.empty() && elements_.back().verb != Verb::close) elements_.push_back({Verb::close, {}});
}

void CGPath::addRect(const CGRect& rect) {
    CGFloat left = CGRectGetMinX(rect);
    CGFloat top = CGRectGetMinY(rect);
    CGFloat right = CGRectGetMaxX(rect);
    CGFloat bottom = CGRectGetMaxY(rect);
    moveToPoint(left, top);
    addLineToPoint(right, top);
    addLineToPoint(right, bottom);
    addLineToPoint(left, bottom);
    closeSubpath();
}

void CGPath::addRoundedRect(const CGRect& rect, CGFloat cornerWidth, CGFloat cornerHeight) {
    CGFloat rx = std::min(cornerWidth, CGRectGetWidth(rect) / 2);
    CGFloat ry = std::min(cornerHeight, CGRectGetHeight(rect) / 2);
    if (!(rx > 0 && ry > 0)) {
        addRect(rect);
        return;
    }
    CGFloat left = CGRectGetMinX(rect);
    CGFloat top = CGRectGetMinY(rect);
    CGFloat right = CGRectGetMaxX(rect);
    CGFloat bottom = CGRectGetMaxY(rect);
    CGFloat kx = rx * (1 - kQuarterCircle); // from the corner to the control point
    CGFloat ky = ry * (1 - kQuarterCircle);
    moveToPoint(left + rx, top);
    addLineToPoint(right - rx, top);
    addCurveToPoint({right - kx, top}, {right, top + ky}, {right, top + ry});
    addLineToPoint(right, bottom - ry);
    addCurveToPoint({right, bottom - ky}, {right - kx, bottom}, {right - rx, bottom});
    addLineToPoint(left + rx, bottom);
    addCurveToPoint({left + kx, bottom}, {left, bottom - ky}, {left, bottom - ry});
    addLineToPoint(left, top + ry);
    addCurveToPoint({left, top + ky}, {left + kx, top}, {left + rx, top});
    closeSubpath();
}

void CGPath::addEllipseInRect(const CGRect& rect) {
    addRoundedRect(rect, CGRectGetWidth(rect) / 2, CGRectGetHeight(rect) / 2);
}

CGRect CGPath::boundingBox() const {
    bool any = false;
    CGPoint low;
    CGPoint high;
    for (const Element& element : elements_) {
        for (int i = 0; i < pointCount(element.verb); ++i) {
            const CGPoint& p = element.points[i];
            low = any ? CGPoint{std::min(low.x, p.x), std::min(low.y, p.y)} : p;
            high = any ? CGPoint{std::max(high.x, p.x), std::max(high.y, p.y)} : p;
            any = true;
        }
    }
    return {low, {high.x - low.x, high.y - low.y}};
}

CGPath CGPath::transformed(const CGAffineTransform& t) const {
    CGPath result = *this;
    for (Element& element : result.elements_) {
        for (int i = 0; i < pointCount(element.verb); ++i)
            element.points[i] = CGPointApplyAffineTransform(element.points[i], t);
    }
    return result;
}

} // namespace tallyforge
