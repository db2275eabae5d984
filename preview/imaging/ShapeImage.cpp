#include "preview/imaging/MarkImages.h"
#include "uikit/UIGraphics.h"

#include <cmath>
#include <numbers>

namespace tallyforge {

namespace {

CGPath TrianglePath(CGFloat w, CGFloat h) {
    CGPath path;
    path.moveToPoint(w / 2, 0);
    path.addLineToPoint(w, h);
    path.addLineToPoint(w, h);
    path.addLineToPoint(0, h);
    path.addLineToPoint(0, h);
    path.addLineToPoint(w / 2, 0);
    path.closeSubpath();
    return path;
}

// One vertex at the bottom, one at the top.
CGPath HexagonPath(CGFloat w, CGFloat h) {
    CGFloat r = h / 2;
    CGPath path;
    path.moveToPoint(w / 2, h / 2 + r);
    for (int i = 1; i <= 5; ++i) {
        CGFloat a = 2 * i * std::numbers::pi / 6;
        path.addLineToPoint(w / 2 + std::sin(a) * r, h / 2 + std::cos(a) * r);
    }
    path.closeSubpath();
    return path;
}

// Seven overlapping spikes: within each pass the angle advances by whole radians, from pass to pass by a
// seventh of the circle.
CGPath StarPath(CGFloat w, CGFloat h) {
    constexpr float kStep = 0.2991993F; // 2 pi / 21
    CGFloat outer = std::trunc(w / 2);
    CGFloat inner = std::trunc(std::trunc(w / 2) - w / 6);
    auto pointAt = [&](CGFloat angle, CGFloat radius) {
        return CGPointMake(std::trunc(w / 2 + std::sin(angle) * radius),
                           std::trunc(h / 2 + std::cos(angle) * radius));
    };
    CGPath path;
    for (int i = 0; i <= 18; i += 3) {
        CGFloat a = static_cast<float>(i) * kStep;
        CGPoint first = pointAt(a, inner);
        CGPoint tip = pointAt(a + 1, outer);
        CGPoint last = pointAt(a + 2, inner);
        i == 0 ? path.moveToPoint(first.x, first.y) : path.addLineToPoint(first.x, first.y);
        path.addLineToPoint(tip.x, tip.y);
        path.addLineToPoint(last.x, last.y);
    }
    path.closeSubpath();
    return path;
}

} // namespace

UIImage ShapeImage(const UIImage& model, const UIColor& color, int shape, CGFloat alpha) {
    CGSize size = model.size();
    UIGraphicsBeginImageContext(size); // at scale 1, whatever the screen's is
    CGContextRef context = UIGraphicsGetCurrentContext();
    CGContextSetFillColorWithColor(context, color);
    CGContextSetAlpha(context, alpha);

    switch (shape) {
    case kShapeSquare:
        CGContextFillRect(context, CGRectMake(0, 0, size.width, size.height));
        break;
    case kShapeTriangle:
    case kShapeTriangleDown:
        CGContextAddPath(context, TrianglePath(size.width, size.height));
        CGContextFillPath(context);
        break;
    case kShapeHexagon:
        CGContextAddPath(context, HexagonPath(size.width, size.height));
        CGContextFillPath(context);
        break;
    case kShapeStar:
        CGContextAddPath(context, StarPath(size.width, size.height));
        CGContextFillPath(context);
        break;
    default: // no such shape: nothing is drawn
        break;
    }
    UIImage image = UIGraphicsGetImageFromCurrentImageContext();
    UIGraphicsEndImageContext();
    return image;
}

} // namespace tallyforge
