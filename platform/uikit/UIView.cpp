#include "uikit/UIView.h"

#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIWindow.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr CGFloat kLeastAlpha = 0.01F; // views fainter than this take no touches

// From a view's own coordinates to those of its superview, its animations left aside.
CGAffineTransform toSuperview(const UIView& view) {
    const CALayer& layer = *view.layer();
    const CGRect bounds = layer.bounds();
    CGFloat x = bounds.origin.x + layer.anchorPoint().x * bounds.size.width;
    CGFloat y = bounds.origin.y + layer.anchorPoint().y * bounds.size.height;
    CGAffineTransform t = layer.affineTransform();
    t.tx += layer.position().x - (t.a * x + t.c * y);
    t.ty += layer.position().y - (t.b * x + t.d * y);
    return t;
}

CGAffineTransform toWindow(const UIView& view) {
    CGAffineTransform t = toSuperview(view);
    for (const UIView* above = view.superview(); above; above = above->superview())
        t = CGAffineTransformConcat(t, toSuperview(*above));
    return t;
}

} // namespace

CGPoint UITouch::locationInView(const UIView& view) const {
    return view.convertPointFromView(locationInWindow, nullptr);
}

UIView::UIView(const CGRect& frame) : UIView(frame, std::make_shared<CALayer>()) {}

UIView::UIView(const CGRect& frame, std::shared_ptr<CALayer> layer) : layer_(std::move(layer)) {
    layer_->setFrame(frame);
}

UIView::~UIView() {
    for (const auto& view : subviews_)
        view->superview_ = nullptr;
    for (const auto& recognizer : recognizers_)
        recognizer->view_ = nullptr;
}

void UIView::setFrame(const CGRect& frame) {
    const CGSize before = layer_->bounds().size;
    layer_->setFrame(frame);
    if (!(layer_->bounds().size == before)) setNeedsLayout();
}

void UIView::setBounds(const CGRect& bounds) {
    const CGSize before = layer_->bounds().size;
    layer_->setBounds(bounds);
    if (!(bounds.size == before)) setNeedsLayout();
}

std::optional<UIColor> UIView::backgroundColor() const {
    const auto& color = layer_->backgroundColor();
    if (!color) return std::nullopt;
    return UIColor::colorWithRed(color->red, color->green, color->blue, color->alpha);
}

void UIView::setBackgroundColor(const std::optional<UIColor>& color) {
    layer_->setBackgroundColor(color ? std::optional(color->cgColor()) : std::nullopt);
}

void UIView::addSubview(std::shared_ptr<UIView> view) {
    insertSubviewAtIndex(std::move(view), subviews_.size());
}

void UIView::insertSubviewAtIndex(std::shared_ptr<UIView> view, size_t index) {
    for (const UIView* above = this; above; above = above->superview_) {
        if (above == view.get()) return; // a view cannot be within itself
    }
    if (!view) return;
    view->removeFromSuperview();
    index = std::min(index, subviews_.size());

    // Layers of views keep the order of the views; layers that are no view's stay where they are.
    const auto& layers = layer_->sublayers();
    size_t place = layers.size();
    if (index < subviews_.size())
        place = static_cast<size_t>(std::find(layers.begin(), layers.end(), subviews_[index]->layer_) -
                                    layers.begin());
    layer_->insertSublayer(view->layer_, place);
    subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(index), view);
    view->superview_ = this;
    setNeedsLayout();
    view->setNeedsLayout();
}

void UIView::removeFromSuperview() {
    if (!superview_) return;
    superview_->setNeedsLayout();
    auto& siblings = superview_->subviews_;
    superview_ = nullptr;
    layer_->removeFromSuperlayer();
    auto self = std::find_if(siblings.begin(), siblings.end(),
                             [this](const auto& view) { return view.get() == this; });
    if (self != siblings.end()) siblings.erase(self); // may end this view
}

void UIView::removeAllSubviews() {
    while (!subviews_.empty())
        subviews_.back()->removeFromSuperview();
}

UIView* UIView::viewWithTag(int tag) {
    if (tag_ == tag) return this;
    for (const auto& view : subviews_) {
        if (UIView* found = view->viewWithTag(tag)) return found;
    }
    return nullptr;
}

bool UIView::isDescendantOf(const UIView& view) const {
    for (const UIView* above = this; above; above = above->superview_) {
        if (above == &view) return true;
    }
    return false;
}

UIWindow* UIView::window() const {
    const UIView* top = this;
    while (top->superview_)
        top = top->superview_;
    return const_cast<UIWindow*>(dynamic_cast<const UIWindow*>(top));
}

CGPoint UIView::convertPointToView(const CGPoint& point, const UIView* view) const {
    CGPoint inWindow = CGPointApplyAffineTransform(point, toWindow(*this));
    return view ? CGPointApplyAffineTransform(inWindow, CGAffineTransformInvert(toWindow(*view))) : inWindow;
}

CGPoint UIView::convertPointFromView(const CGPoint& point, const UIView* view) const {
    CGPoint inWindow = view ? CGPointApplyAffineTransform(point, toWindow(*view)) : point;
    return CGPointApplyAffineTransform(inWindow, CGAffineTransformInvert(toWindow(*this)));
}

CGRect UIView::convertRectToView(const CGRect& rect, const UIView* view) const {
    CGAffineTransform t = toWindow(*this);
    if (view) t = CGAffineTransformConcat(t, CGAffineTransformInvert(toWindow(*view)));
    return CGRectApplyAffineTransform(rect, t);
}

void UIView::setNeedsLayout() {
    if (layingOut_) return; // it is being done
    needsLayout_ = true;
    for (UIView* view = this; view; view = view->superview_)
        view->subtreeNeedsLayout_ = true;
}

void UIView::layoutIfNeeded() {
    const auto self = weak_from_this().lock(); // laying out may end this view
    // Laying out one view may ask for another pass of those above; a few passes settle any screen.
    for (int pass = 0; subtreeNeedsLayout_ && pass < 8; ++pass) {
        subtreeNeedsLayout_ = false;
        if (needsLayout_) {
            needsLayout_ = false;
            layingOut_ = true;
            layoutSubviews();
            layingOut_ = false;
        }
        const auto views = subviews_; // laying out may change them
        for (const auto& view : views)
            view->layoutIfNeeded();
    }
}

UIView* UIView::hitTest(const CGPoint& point) {
    if (hidden() || !userInteractionEnabled_ || !(alpha() >= kLeastAlpha) || !pointInside(point))
        return nullptr;
    for (auto view = subviews_.rbegin(); view != subviews_.rend(); ++view) {
        const CGAffineTransform t = toSuperview(**view);
        if (t.a * t.d == t.b * t.c) continue; // squeezed to nothing
        CGPoint inside = CGPointApplyAffineTransform(point, CGAffineTransformInvert(t));
        if (UIView* found = (*view)->hitTest(inside)) return found;
    }
    return this;
}

bool UIView::pointInside(const CGPoint& point) const {
    return CGRectContainsPoint(bounds(), point);
}

void UIView::touchesBegan(const UITouch& touch) {
    if (superview_) superview_->touchesBegan(touch);
}

void UIView::touchesMoved(const UITouch& touch) {
    if (superview_) superview_->touchesMoved(touch);
}

void UIView::touchesEnded(const UITouch& touch) {
    if (superview_) superview_->touchesEnded(touch);
}

void UIView::touchesCancelled(const UITouch& touch) {
    if (superview_) superview_->touchesCancelled(touch);
}

void UIView::addGestureRecognizer(std::shared_ptr<UIGestureRecognizer> recognizer) {
    recognizer->view_ = this;
    recognizers_.push_back(std::move(recognizer));
}

} // namespace tallyforge
