#include "coregraphics/CGGeometry.h"

#include <algorithm>

namespace tallyforge {

namespace {

CGRect RectFromEdges(CGFloat left, CGFloat top, CGFloat right, CGFloat bottom) {
    return {{left, top}, {right - left, bottom - top}};
}

} // namespace

CGRect CGRectInset(const CGRect& r, CGFloat dx, CGFloat dy) {
    CGRect s = CGRectStandardize(r);
    CGRect inset{{s.origin.x + dx, s.origin.y + dy}, {s.size.width - 2 * dx, s.size.height - 2 * dy}};
    return inset.size.width < 0 || inset.size.height < 0 ? CGRectZero : inset;
}

CGRect CGRectOffset(const CGRect& r, CGFloat dx, CGFloat dy) {
    CGRect s = CGRectStandardize(r);
    return {{s.origin.x + dx, s.origin.y + dy}, s.size};
}

CGRect CGRectUnion(const CGRect& a, const CGRect& b) {
    return RectFromEdges(
        std::min(CGRectGetMinX(a), CGRectGetMinX(b)), std::min(CGRectGetMinY(a), CGRectGetMinY(b)),
        std::max(CGRectGetMaxX(a), CGRectGetMaxX(b)), std::max(CGRectGetMaxY(a), CGRectGetMaxY(b)));
}

CGRect CGRectIntersection(const CGRect& a, const CGRect& b) {
    if (!CGRectIntersectsRect(a, b)) return CGRectZero;
    return RectFromEdges(
        std::max(CGRectGetMinX(a), CGRectGetMinX(b)), std::max(CGRectGetMinY(a), CGRectGetMinY(b)),
        std::min(CGRectGetMaxX(a), CGRectGetMaxX(b)), std::min(CGRectGetMaxY(a), CGRectGetMaxY(b)));
}

bool CGRectIntersectsRect(const CGRect& a, const CGRect& b) {
    return std::max(CGRectGetMinX(a), CGRectGetMinX(b)) < std::min(CGRectGetMaxX(a), CGRectGetMaxX(b)) &&
           std::max(CGRectGetMinY(a), CGRectGetMinY(b)) < std::min(CGRectGetMaxY(a), CGRectGetMaxY(b));
}

} // namespace tallyforge
