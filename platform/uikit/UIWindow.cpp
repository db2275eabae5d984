#include "uikit/UIWindow.h"

#include "uikit/UIGestureRecognizer.h"
#include "uikit/UINavigationController.h"
#include "uikit/UIPickerView.h"
#include "uikit/UITableView.h"
#include "uikit/UITextField.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

UIWindow* key = nullptr;

template <class View> View* enclosing(UIView* view) {
    for (; view; view = view->superview()) {
        if (auto* found = dynamic_cast<View*>(view)) return found;
    }
    return nullptr;
}

bool isFocusable(const UIView& view) {
    const auto* cell = dynamic_cast<const UITableViewCell*>(&view);
    return view.canBecomeFocused() || (cell && cell->selectable());
}

void collectFocusable(UIView& view, std::vector<UIView*>& found) {
    if (view.hidden() || !view.userInteractionEnabled()) return;
    if (isFocusable(view)) found.push_back(&view);
    for (const auto& subview : view.subviews())
        collectFocusable(*subview, found);
}

UIScrollView* frontScrollView(UIView& view) {
    const auto& views = view.subviews();
    if (auto* scroll = dynamic_cast<UIScrollView*>(&view)) return scroll;
    for (auto subview = views.rbegin(); subview != views.rend(); ++subview) {
        if (UIScrollView* found = (*subview)->hidden() ? nullptr : frontScrollView(**subview)) return found;
    }
    return nullptr;
}

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
    if (root_) root_->view()->removeFromSuperview();
    root_ = std::move(controller);
    if (!root_) return;
    root_->view()->setFrame(bounds());
    root_->viewWillAppear(false);
    insertSubviewAtIndex(root_->view(), 0);
    root_->viewDidAppear(false);
}

void UIWindow::presentOverlay(std::shared_ptr<UIView> overlay) {
    focusView(nullptr);
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
    if (UITextField* field = editedField(); field && field != hit && frontOverlay() == nullptr)
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

void UIWindow::scrollBy(const CGPoint& location, CGFloat points) {
    if (touching_) return;
    layoutIfNeeded();
    UIView* hit = front().hitTest(convertPointToView(location, &front()));
    if (auto* picker = enclosing<UIPickerView>(hit)) {
        picker->pressKey(points > 0 ? UIKey::down : UIKey::up);
        return;
    }
    if (auto* scroll = enclosing<UIScrollView>(hit)) scroll->scrollBy(points);
}

UITextField* UIWindow::editedField() const {
    return dynamic_cast<UITextField*>(edited_.lock().get());
}

bool UIWindow::insertText(std::string_view utf8) {
    UITextField* field = editedField();
    if (!field) return false;
    field->insertText(utf8);
    return true;
}

bool UIWindow::sendKey(UIKey pressed) {
    layoutIfNeeded();
    if (offerKey(pressed)) return true;
    switch (pressed) {
    case UIKey::down:
    case UIKey::tab:
        return moveFocus(1);
    case UIKey::up:
    case UIKey::backTab:
        return moveFocus(-1);
    case UIKey::left:
    case UIKey::right:
        return frontOverlay() && moveFocus(pressed == UIKey::right ? 1 : -1);
    case UIKey::escape:
        if (auto* navigation = dynamic_cast<UINavigationController*>(root_.get());
            navigation && !frontOverlay())
            return navigation->popViewController(true);
        return false;
    default:
        return scrollByKey(pressed);
    }
}

// To the field that is being edited, the focused view, and what is around it.
bool UIWindow::offerKey(UIKey pressed) {
    if (UITextField* field = editedField(); field && field->pressKey(pressed)) return true;
    UIView* view = focusedView();
    if (view && !view->isDescendantOf(front())) {
        focusView(nullptr);
        view = nullptr;
    }
    if (!view) view = &front();
    while (view) {
        auto kept = view->weak_from_this().lock();
        auto* cell = dynamic_cast<UITableViewCell*>(view);
        if (cell && cell->selectable() && (pressed == UIKey::enter || pressed == UIKey::space)) {
            auto* table = enclosing<UITableView>(cell);
            if (auto path = table ? table->indexPathForCell(*cell) : std::nullopt) {
                table->selectRow(*path);
                return true;
            }
        }
        if (view->pressKey(pressed)) return true;
        view = view->superview();
    }
    return false;
}

bool UIWindow::scrollByKey(UIKey pressed) {
    UIScrollView* scroll = frontOverlay() ? nullptr : frontScrollView(*this);
    if (!scroll) return false;
    CGFloat page = scroll->bounds().size.height * 0.85;
    CGFloat from = scroll->contentOffset().y, to = from;
    if (pressed == UIKey::pageDown || pressed == UIKey::space) to = from + page;
    if (pressed == UIKey::pageUp) to = from - page;
    if (pressed == UIKey::home) to = scroll->minimumOffset();
    if (pressed == UIKey::end) to = scroll->maximumOffset();
    to = std::clamp(to, scroll->minimumOffset(), scroll->maximumOffset());
    if (to == from) return false;
    focusView(nullptr);
    scroll->setContentOffsetAnimated({0, to});
    return true;
}

// As one reads the screen.
std::vector<UIView*> UIWindow::focusOrder() {
    std::vector<UIView*> order;
    collectFocusable(front(), order);
    std::stable_sort(order.begin(), order.end(), [](const UIView* a, const UIView* b) {
        CGRect left = a->convertRectToView(a->bounds(), nullptr);
        CGRect right = b->convertRectToView(b->bounds(), nullptr);
        if (std::abs(left.origin.y - right.origin.y) > 0.5) return left.origin.y < right.origin.y;
        return left.origin.x < right.origin.x;
    });
    return order;
}

bool UIWindow::moveFocus(int step) {
    UIView* now = focusedView();
    if (now) {
        if (auto* table = enclosing<UITableView>(now)) table->prepareNeighbours(*now);
        layoutIfNeeded();
        now = focusedView();
    }
    auto order = focusOrder();
    if (order.empty()) return false;
    auto place = std::find(order.begin(), order.end(), now);
    if (place == order.end()) {
        // The first thing on the screen itself, not in the bar above it.
        place = std::find_if(order.begin(), order.end(),
                             [](UIView* view) { return enclosing<UITableView>(view) != nullptr; });
        focusView(place == order.end() ? order.front() : *place);
        return true;
    }
    auto count = static_cast<std::ptrdiff_t>(order.size());
    auto index = ((place - order.begin()) + step + count) % count;
    focusView(order[static_cast<size_t>(index)]);
    return true;
}

void UIWindow::focusView(UIView* view) {
    if (UIView* before = focusedView()) {
        if (before == view) return;
        before->setFocused(false);
    }
    if (ring_) ring_->removeFromSuperview();
    ring_ = nullptr;
    focused_ = view ? view->weak_from_this() : std::weak_ptr<UIView>();
    if (!view) return;
    view->setFocused(true);
    if (auto* table = enclosing<UITableView>(view)) {
        auto* cell = enclosing<UITableViewCell>(view);
        if (auto path = cell ? table->indexPathForCell(*cell) : std::nullopt)
            table->scrollToRowAtIndexPath(*path);
    }
    showRing(*view);
}

// Around the row, or around the view itself where the row has several that can be reached.
void UIWindow::showRing(UIView& view) {
    UIView* around = &view;
    if (auto* cell = enclosing<UITableViewCell>(&view)) {
        std::vector<UIView*> reachable;
        collectFocusable(*cell, reachable);
        if (reachable.size() < 2) around = cell;
    }
    constexpr CGFloat kWidth = 2;
    ring_ = std::make_shared<UIView>(around->bounds());
    ring_->setUserInteractionEnabled(false);
    ring_->layer()->setBorderWidth(kWidth);
    ring_->layer()->setBorderColor(CGColor{0, 122.0 / 255, 1, 0.7});
    ring_->layer()->setCornerRadius(dynamic_cast<UITableViewCell*>(around) ? 0 : 4);
    around->addSubview(ring_);
}

} // namespace tallyforge
