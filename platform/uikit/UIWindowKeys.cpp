// The keyboard: what has the focus, and what keys do there.
#include "uikit/UIWindow.h"

#include "uikit/UINavigationController.h"
#include "uikit/UITableView.h"
#include "uikit/UITextField.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

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

// Whether one comes to the first before the second when reading the screen.
bool readsBefore(const UIView* a, const UIView* b) {
    const CGRect first = a->convertRectToView(a->bounds(), nullptr);
    const CGRect second = b->convertRectToView(b->bounds(), nullptr);
    const CGFloat above = std::round(first.origin.y), below = std::round(second.origin.y);
    return above != below ? above < below : first.origin.x < second.origin.x;
}

std::vector<UIView*> focusableIn(UIView& view) {
    std::vector<UIView*> found;
    collectFocusable(view, found);
    std::stable_sort(found.begin(), found.end(), readsBefore);
    return found;
}

// What the keyboard goes through: a table counts as one, whatever part of it is on screen.
void collectStops(UIView& view, std::vector<UIView*>& found) {
    if (view.hidden() || !view.userInteractionEnabled()) return;
    const bool table = dynamic_cast<UITableView*>(&view) != nullptr;
    if (table || isFocusable(view)) found.push_back(&view);
    if (table) return;
    for (const auto& subview : view.subviews())
        collectStops(*subview, found);
}

// The next one in the table, or without one to start from the first or last, scrolling as far as that takes;
// nullptr past the table's end.
UIView* neighbourInTable(UITableView& table, const UIView* from, int step) {
    if (from)
        table.scrollRectToVisible(from->convertRectToView(from->bounds(), &table));
    else
        table.scrollBy(step > 0 ? -table.contentSize().height : table.contentSize().height);
    table.layoutIfNeeded();
    for (;;) {
        const auto order = focusableIn(table);
        if (step > 0) {
            auto next = std::find(order.begin(), order.end(), from);
            if (next != order.end())
                ++next;
            else if (from)
                next = std::find_if(order.begin(), order.end(),
                                    [&](const UIView* view) { return readsBefore(from, view); });
            else
                next = order.begin();
            if (next != order.end()) return *next;
        } else {
            auto next = std::find(order.rbegin(), order.rend(), from);
            if (next != order.rend())
                ++next;
            else if (from)
                next = std::find_if(order.rbegin(), order.rend(),
                                    [&](const UIView* view) { return readsBefore(view, from); });
            else
                next = order.rbegin();
            if (next != order.rend()) return *next;
        }
        const CGFloat before = table.contentOffset().y;
        table.scrollBy(step * table.bounds().size.height / 2);
        table.layoutIfNeeded();
        if (table.contentOffset().y == before) return nullptr;
    }
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

bool UIWindow::moveFocus(int step) {
    UIView* const now = focusedView() ? focusedView() : editedField();
    UITableView* const table = enclosing<UITableView>(now);
    if (table) {
        if (UIView* next = neighbourInTable(*table, now, step)) {
            focusView(next);
            return true;
        }
    }
    std::vector<UIView*> stops;
    collectStops(front(), stops);
    std::stable_sort(stops.begin(), stops.end(), readsBefore);
    const auto count = static_cast<std::ptrdiff_t>(stops.size());
    auto place = std::find(stops.begin(), stops.end(), table ? table : now) - stops.begin();
    if (place == count) {
        // From nowhere one comes to the screen itself first, not to the bar above it.
        for (UIView* stop : stops) {
            if (!dynamic_cast<UITableView*>(stop)) continue;
            const auto shown = focusableIn(*stop);
            if (shown.empty()) continue;
            focusView(shown.front());
            return true;
        }
        place = step > 0 ? -1 : 0;
    }
    for (std::ptrdiff_t i = 1; i <= count; ++i) {
        UIView* next = stops[static_cast<size_t>((place + i * step + 2 * count) % count)];
        if (auto* other = dynamic_cast<UITableView*>(next)) next = neighbourInTable(*other, nullptr, step);
        if (!next) continue;
        focusView(next);
        return true;
    }
    return false;
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
    if (UITextField* field = editedField(); field && field != view) field->endEditing();
    view->setFocused(true);
    if (auto* table = enclosing<UITableView>(view)) {
        auto* cell = enclosing<UITableViewCell>(view);
        if (auto path = cell ? table->indexPathForCell(*cell) : std::nullopt)
            table->scrollToRowAtIndexPath(*path);
    }
    if (auto* scroll = enclosing<UIScrollView>(view->superview()))
        scroll->scrollRectToVisible(view->convertRectToView(view->bounds(), scroll));
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
