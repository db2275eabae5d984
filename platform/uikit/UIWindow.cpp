#include "uikit/UIWindow.h"

#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIPickerView.h"
#include "uikit/UIScrollView.h"
#include "uikit/UITextField.h"
#include "uikit/UIViewController.h"

#include <algorithm>
#include <utility>

namespace tallyforge {

namespace {

UIWindow* key = nullptr;

} // namespace

UIWindow::UIWindow(const CGRect& frame) : UIView(frame) {
    setBackgroundColor(UIColor::blackColor());
}

UIWindow::~UIWindow() {
    if (key == this) key = nullptr;
}

UIWindow* UIWindow::keyWindow() {
    return key;
}

void UIWindow::makeKeyWindow() {
    key = this;
}

void UIWindow::setRootViewController(std::shared_ptr<UIViewController> controller) {
    if (const auto former = std::exchange(root_, nullptr)) {
        former->viewWillDisappear(false);
        former->view()->removeFromSuperview();
        former->viewDidDisappear(false);
    }
    root_ = std::move(controller);
    if (!root_) return;
    root_->view()->setFrame(bounds());
    root_->viewWillAppear(false);
    insertSubviewAtIndex(root_->view(), 0);
    root_->viewDidAppear(false);
}

void UIWindow::presentOverlay(std::shared_ptr<UIView> overlay) {
    focusView(nullptr);
    if (UITextField* field = editedField()) field->endEditing();
    overlay->setFrame(bounds());
    overlays_.push_back(overlay);
    addSubview(std::move(overlay));
}

void UIWindow::dismissOverlay(UIView& overlay) {
    auto place = std::find_if(overlays_.begin(), overlays_.end(),
                              [&](const auto& view) { return view.get() == &overlay; });
    if (place == overlays_.end()) return;
    std::shared_ptr<UIView> kept = *place;
    overlays_.erase(place);
    if (UITextField* field = editedField(); field && field->isDescendantOf(overlay)) field->endEditing();
    if (UIView* focused = focusedView(); focused && focused->isDescendantOf(overlay)) focusView(nullptr);
    kept->removeFromSuperview();
}

std::shared_ptr<UIView> UIWindow::frontOverlay() const {
    return overlays_.empty() ? nullptr : overlays_.back();
}

UIView& UIWindow::front() {
    return overlays_.empty() ? static_cast<UIView&>(*this) : *overlays_.back();
}

void UIWindow::sendTouch(const UITouch& touch) {
    const auto self = weak_from_this().lock(); // a touch may end anything
    if (touch.phase == UITouchPhase::began) {
        if (touching_) return;
        beginTouch(touch);
    } else if (!touching_) {
        return;
    }
    deliverToRecognizers(touch);
    if (!touchTaken_) deliverToView(touch);
    if (touch.phase == UITouchPhase::ended || touch.phase == UITouchPhase::cancelled) endTouch();
}

void UIWindow::beginTouch(const UITouch& touch) {
    touching_ = true;
    touchTaken_ = false;
    recognizers_.clear();
    layoutIfNeeded();
    focusView(nullptr);
    UIView* hit = front().hitTest(convertPointToView(touch.locationInWindow, &front()));
    touched_ = hit ? hit->weak_from_this() : std::weak_ptr<UIView>();
    for (UIView* view = hit; view; view = view->superview()) {
        for (const auto& recognizer : view->gestureRecognizers()) {
            if (!recognizer->enabled()) continue;
            recognizer->touched_ = hit;
            recognizers_.push_back(recognizer);
        }
        view->fingerCameDown();
    }
    if (UITextField* field = editedField();
        field && !(hit && hit->isDescendantOf(*field)) && frontOverlay() == nullptr)
        field->endEditing();
}

void UIWindow::endTouch() {
    for (const auto& entry : recognizers_) {
        auto recognizer = entry.lock();
        if (!recognizer) continue;
        recognizer->reset();
        recognizer->touched_ = nullptr;
    }
    recognizers_.clear();
    touched_.reset();
    touching_ = false;
}

void UIWindow::deliverToRecognizers(const UITouch& touch) {
    const auto recognizers = recognizers_; // what one does may end others
    for (const auto& entry : recognizers) {
        auto recognizer = entry.lock();
        if (!recognizer || !recognizer->view_ || recognizer->state_ == UIGestureRecognizerState::failed)
            continue;
        bool before = recognizer->state_ != UIGestureRecognizerState::possible;
        if (touchTaken_ && !before) continue; // another has recognised
        if (touched_.expired()) recognizer->touched_ = nullptr;
        if (!recognizer->enabled_ || !recognizer->view_->isDescendantOf(front())) {
            // Its view has gone, or something has come above it.
            if (before) recognizer->touchesCancelled(touch);
            recognizer->state_ = UIGestureRecognizerState::failed;
            continue;
        }
        switch (touch.phase) {
        case UITouchPhase::began:
            recognizer->touchesBegan(touch);
            break;
        case UITouchPhase::moved:
            recognizer->touchesMoved(touch);
            break;
        case UITouchPhase::ended:
            recognizer->touchesEnded(touch);
            break;
        case UITouchPhase::cancelled:
            recognizer->touchesCancelled(touch);
            break;
        }
        bool recognised = recognizer->state_ != UIGestureRecognizerState::possible &&
                          recognizer->state_ != UIGestureRecognizerState::failed;
        if (!recognised || touchTaken_) continue;
        touchTaken_ = true;
        if (auto view = touched_.lock()) {
            UITouch cancelled = touch;
            cancelled.phase = UITouchPhase::cancelled;
            view->touchesCancelled(cancelled);
        }
    }
}

void UIWindow::deliverToView(const UITouch& touch) {
    auto view = touched_.lock();
    if (!view) return;
    if (!view->isDescendantOf(front())) {
        // It has gone from the screen, or something has come above it: the rest of the touch is nobody's.
        touched_.reset();
        UITouch cancelled = touch;
        cancelled.phase = UITouchPhase::cancelled;
        return view->touchesCancelled(cancelled);
    }
    std::vector<std::shared_ptr<UIView>> kept; // those above may hear of it, and be ended by what they do
    for (UIView* above = view->superview(); above; above = above->superview())
        kept.push_back(above->weak_from_this().lock());
    switch (touch.phase) {
    case UITouchPhase::began:
        return view->touchesBegan(touch);
    case UITouchPhase::moved:
        return view->touchesMoved(touch);
    case UITouchPhase::ended:
        return view->touchesEnded(touch);
    case UITouchPhase::cancelled:
        return view->touchesCancelled(touch);
    }
}

void UIWindow::scrollBy(const CGPoint& location, CGFloat points, Turn turn) {
    if (touching_) return;
    layoutIfNeeded();
    UIView* hit = front().hitTest(convertPointToView(location, &front()));
    if (auto* picker = enclosing<UIPickerView>(hit)) return picker->turnBy(points);
    auto* scroll = enclosing<UIScrollView>(hit);
    if (!scroll) return;
    if (turn == Turn::notch)
        scroll->scrollSmoothlyBy(points);
    else
        scroll->scrollBy(points);
}

UITextField* UIWindow::editedField() const {
    return dynamic_cast<UITextField*>(edited_.lock().get());
}

} // namespace tallyforge
