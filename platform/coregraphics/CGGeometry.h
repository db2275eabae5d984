#pragma once

namespace tallyforge {

using CGFloat = double;

/// A point, in points unless said otherwise; y grows downwards.
struct CGPoint {
    CGFloat x = 0;
    CGFloat y = 0;
    bool operator==(const CGPoint&) const = default;
};

struct CGSize {
    CGFloat width = 0;
    CGFloat height = 0;
    bool operator==(const CGSize&) const = default;
};

struct CGRect {
    CGPoint origin;
    CGSize size;
    bool operator==(const CGRect&) const = default;
};

inline CGPoint CGPointMake(CGFloat x, CGFloat y) {
    return {x, y};
}
inline CGSize CGSizeMake(CGFloat width, CGFloat height) {
    return {width, height};
}
inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return {{x, y}, {width, height}};
}
inline constexpr CGPoint CGPointZero{};
inline constexpr CGSize CGSizeZero{};
inline constexpr CGRect CGRectZero{};

inline CGFloat CGRectGetMinX(const CGRect& r) {
    return r.size.width < 0 ? r.origin.x + r.size.width : r.origin.x;
}
inline CGFloat CGRectGetMinY(const CGRect& r) {
    return r.size.height < 0 ? r.origin.y + r.size.height : r.origin.y;
}
inline CGFloat CGRectGetMaxX(const CGRect& r) {
    return r.size.width < 0 ? r.origin.x : r.origin.x + r.size.width;
}
inline CGFloat CGRectGetMaxY(const CGRect& r) {
    return r.size.height < 0 ? r.origin.y : r.origin.y + r.size.height;
}
inline CGFloat CGRectGetMidX(const CGRect& r) {
    return r.origin.x + r.size.width / 2;
}
inline CGFloat CGRectGetMidY(const CGRect& r) {
    return r.origin.y + r.size.height / 2;
}
inline CGFloat CGRectGetWidth(const CGRect& r) {
    return r.size.width < 0 ? -r.size.width : r.size.width;
}
inline CGFloat CGRectGetHeight(const CGRect& r) {
    return r.size.height < 0 ? -r.size.height : r.size.height;
}
/// The same area with a positive size.
inline CGRect CGRectStandardize(const CGRect& r) {
    return {{CGRectGetMinX(r), CGRectGetMinY(r)}, {CGRectGetWidth(r), CGRectGetHeight(r)}};
}
inline bool CGRectIsEmpty(const CGRect& r) {
    return !(r.size.width != 0 && r.size.height != 0);
}
/// Holds the point: left and top edge inside, right and bottom edge outside.
inline bool CGRectContainsPoint(const CGRect& r, const CGPoint& p) {
    return p.x >= CGRectGetMinX(r) && p.x < CGRectGetMaxX(r) && p.y >= CGRectGetMinY(r) &&
           p.y < CGRectGetMaxY(r);
}
CGRect CGRectInset(const CGRect& r, CGFloat dx, CGFloat dy);
CGRect CGRectOffset(const CGRect& r, CGFloat dx, CGFloat dy);
CGRect CGRectUnion(const CGRect& a, const CGRect& b);
/// The common area; an empty rectangle at the origin when there is none.
CGRect CGRectIntersection(const CGRect& a, const CGRect& b);
bool CGRectIntersectsRect(const CGRect& a, const CGRect& b);

} // namespace tallyforge
