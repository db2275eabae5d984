#pragma once

#include "coregraphics/CGAffineTransform.h"
#include "coregraphics/CGGeometry.h"

#include <memory>
#include <vector>

namespace tallyforge {

/// Lines and curves. Subpaths are filled by the non-zero winding rule, open ones as if they were closed.
class CGPath {
  public:
    enum class Verb { move, line, cubic, close };
    struct Element {
        Verb verb;
        CGPoint points[3]; ///< move and line use the first; a cubic has its two control points, then its end
    };

    void moveToPoint(CGFloat x, CGFloat y);
    /// Without a current point it moves there.
    void addLineToPoint(CGFloat x, CGFloat y);
    void addCurveToPoint(CGPoint control1, CGPoint control2, CGPoint end);
    void closeSubpath();
    void addRect(const CGRect& rect);
    /// Corners are quarter circles, drawn as cubics, and never larger than half a side.
    void addRoundedRect(const CGRect& rect, CGFloat cornerWidth, CGFloat cornerHeight);
    void addEllipseInRect(const CGRect& rect);

    const std::vector<Element>& elements() const { return elements_; }
    bool empty() const { return elements_.empty(); }
    /// The smallest rectangle around all points, control points included.
    CGRect boundingBox() const;
    CGPath transformed(const CGAffineTransform& t) const;

  private:
    std::vector<Element> elements_;
};

using CGPathRef = std::shared_ptr<const CGPath>;
using CGMutablePathRef = std::shared_ptr<CGPath>;

inline CGMutablePathRef CGPathCreateMutable() {
    return std::make_shared<CGPath>();
}
inline void CGPathMoveToPoint(const CGMutablePathRef& path, const CGAffineTransform* m, CGFloat x,
                              CGFloat y) {
    CGPoint p = m ? CGPointApplyAffineTransform({x, y}, *m) : CGPoint{x, y};
    path->moveToPoint(p.x, p.y);
}
inline void CGPathAddLineToPoint(const CGMutablePathRef& path, const CGAffineTransform* m, CGFloat x,
                                 CGFloat y) {
    CGPoint p = m ? CGPointApplyAffineTransform({x, y}, *m) : CGPoint{x, y};
    path->addLineToPoint(p.x, p.y);
}
inline void CGPathRelease(CGMutablePathRef& path) {
    path.reset();
}

} // namespace tallyforge
