#include "uikit/ShapeView.h"

namespace tallyforge {

namespace {

class ShapeView final : public UIView {
  public:
    ShapeView(const CGRect& frame, CGPath path) : UIView(frame, std::make_shared<CAShapeLayer>()) {
        shape().setPath(std::make_shared<CGPath>(std::move(path)));
        shape().setFillColor(std::nullopt);
        setUserInteractionEnabled(false);
    }
    CAShapeLayer& shape() { return static_cast<CAShapeLayer&>(*layer()); }
};

} // namespace

std::shared_ptr<UIView> MakeFilledShape(const CGRect& frame, CGPath path, const UIColor& fill) {
    auto view = std::make_shared<ShapeView>(frame, std::move(path));
    view->shape().setFillColor(fill.cgColor());
    return view;
}

std::shared_ptr<UIView> MakeStrokedShape(const CGRect& frame, CGPath path, const UIColor& stroke,
                                         CGFloat width) {
    auto view = std::make_shared<ShapeView>(frame, std::move(path));
    view->shape().setStrokeColor(stroke.cgColor());
    view->shape().setLineWidth(width);
    return view;
}

} // namespace tallyforge
