#include "uikit/UIView.h"

#include "uikit/UIGestureRecognizer.h"

#include <algorithm>

namespace tallyforge {

UIView::UIView(const CGRect& frame) : UIView(frame, std::make_shared<CALayer>()) {}

UIView::UIView(const CGRect& frame, std::shared_ptr<CALayer> layer) : layer_(std::move(layer)) {
    layer_->setFrame(frame);
}

UIView::~UIView() {
    for (const auto& view : subviews_)
        view->superview_ = nullptr;
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
}

void UIView::removeFromSuperview() {
    if (!superview_) return;
    auto& siblings = superview_->subviews_;
    superview_ = nullptr;
    layer_->removeFromSuperlayer();
    auto self = std::find_if(siblings.begin(), siblings.end(),
                             [this](const auto& view) { return view.get() == this; });
    if (self != siblings.end()) siblings.erase(self); // may end this view
}

void UIView::addGestureRecognizer(std::shared_ptr<UIGestureRecognizer> recognizer) {
    recognizers_.push_back(std::move(recognizer));
}

} // namespace tallyforge
