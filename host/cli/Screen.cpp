#include "cli/Screen.h"

#include "cli/Inspector.h"
#include "cli/ValueJson.h"
#include "preferences/PSListController.h"
#include "preferences/PSTableCell.h"
#include "uikit/UIAlertView.h"
#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIPickerView.h"
#include "uikit/UISegmentedControl.h"
#include "uikit/UISlider.h"
#include "uikit/UISwitch.h"
#include "uikit/UITextField.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;

template <class View>
View* firstBelow(UIView& view) {
    if (auto* found = dynamic_cast<View*>(&view)) return found;
    for (const auto& subview : view.subviews()) {
        if (subview->hidden()) continue;
        if (View* found = firstBelow<View>(*subview)) return found;
    }
    return nullptr;
}

CGRect inWindow(const UIView& view) {
    return view.convertRectToView(view.bounds(), nullptr);
}

void collectShowing(UIView& view, const std::string& text, std::vector<UIView*>& found) {
    if (view.hidden()) return;
    if (view.accessibilityLabel() == text) found.push_back(&view);
    for (const auto& subview : view.subviews())
        collectShowing(*subview, text, found);
}

// In the order in which they are read; a view before what is within it.
std::vector<UIView*> viewsShowing(UIView& within, const std::string& text) {
    std::vector<UIView*> found;
    if (text.empty()) return found;
    collectShowing(within, text, found);
    std::stable_sort(found.begin(), found.end(), [](const UIView* a, const UIView* b) {
        const CGPoint first = inWindow(*a).origin, second = inWindow(*b).origin;
        return first.y != second.y ? first.y < second.y : first.x < second.x;
    });
    return found;
}

CGPoint middle(const CGRect& rect) {
    return {CGRectGetMidX(rect), CGRectGetMidY(rect)};
}

// Whether a finger on it may do something; the rows of a table and of a picker count, whatever they are for.
bool isTouchable(UIView* view) {
    if (enclosing<UIControl>(view) || enclosing<UITableViewCell>(view) || enclosing<UIPickerView>(view))
        return true;
    for (; view; view = view->superview()) {
        for (const auto& gesture : view->gestureRecognizers()) {
            if (dynamic_cast<const UITapGestureRecognizer*>(gesture.get())) return true;
        }
    }
    return false;
}

std::string accessoryName(UITableViewCell& cell) {
    if (cell.accessoryView()) return cell.accessoryView()->className();
    switch (cell.accessoryType()) {
    case UITableViewCellAccessoryType::none:
        return "none";
    case UITableViewCellAccessoryType::disclosureIndicator:
        return "disclosureIndicator";
    case UITableViewCellAccessoryType::checkmark:
        return "checkmark";
    }
    return "none";
}

// What is set, or what a choice stands for. Reading a row that keeps no value would take its own from it.
Json rowValue(PSSpecifier& specifier) {
    std::optional<PropertyList> value;
    if (specifier.propertyForKey("key") || specifier.propertyForKey("get"))
        value = specifier.performGetter();
    else if (const PropertyList* own = specifier.propertyForKey("value"))
        value = *own;
    return value ? ValueJson(*value) : Json(nullptr);
}

Json alertJson(const AlertPanel& panel) {
    Json alert;
    const auto& contents = panel.contents();
    alert["title"] = contents.title;
    alert["message"] = contents.message;
    const auto& shown = UIAlertView::visibleAlerts();
    bool tagged = !shown.empty() && shown.back()->title() == contents.title &&
                  shown.back()->message() == contents.message;
    alert["tag"] = tagged ? shown.back()->tag() : 0;
    alert["buttons"] = Json::array();
    for (const auto& button : contents.buttons)
        alert["buttons"].push_back(button.title);
    alert["textField"] = panel.textField() ? Json(panel.textField()->text()) : Json(nullptr);
    alert["picker"] = nullptr;
    auto* picker = dynamic_cast<UIPickerView*>(contents.accessory.get());
    if (!picker) return alert;
    Json rows = Json::array();
    for (int row = 0; row < picker->numberOfRowsInComponent(0); ++row)
        rows.push_back(picker->titleForRow(row));
    alert["picker"] = {{"rows", rows}, {"selected", picker->selectedRowInComponent(0)}};
    return alert;
}

} // namespace

std::string Screen::whyEmpty() const {
    auto* list = dynamic_cast<PSListController*>(&controller());
    if (!list || !list->specifiers().empty()) return {};
    return list->bundlePath() + ": no readable list of this screen's rows; it is empty";
}

UITableView* Screen::table() const {
    return firstBelow<UITableView>(*controller().view());
}

UIView* Screen::viewShowing(const std::string& text, Wanted wanted) {
    app_.step();
    const auto alert = FrontAlertPanel();
    std::vector<UIView*> found = viewsShowing(alert ? static_cast<UIView&>(*alert) : app_.window(), text);
    const auto touchable = std::find_if(found.begin(), found.end(), isTouchable);
    if (wanted == Wanted::touchable) return touchable != found.end() ? *touchable : nullptr;
    // Rather something else than the title in the bar, and in an alert a button rather than a word.
    auto isInBar = [&](UIView* view) {
        return !alert && middle(inWindow(*view)).y < app_.navigation().contentFrame().origin.y &&
               !enclosing<UIControl>(view);
    };
    auto best = std::find_if_not(found.begin(), found.end(), isInBar);
    if (alert && touchable != found.end()) best = touchable;
    return best != found.end() ? *best : found.empty() ? nullptr : found.front();
}

UIView* Screen::findScrolling(const std::string& text, Wanted wanted) {
    if (UIView* view = viewShowing(text, wanted)) return view;
    UITableView* scroll = FrontAlertPanel() ? nullptr : table();
    if (!scroll) return nullptr;
    const CGPoint before = scroll->contentOffset();
    const CGFloat page = std::max<CGFloat>(44, scroll->bounds().size.height - 44);
    for (CGFloat offset = scroll->minimumOffset();; offset += page) {
        scroll->setContentOffset({0, std::min(offset, scroll->maximumOffset())});
        if (UIView* view = viewShowing(text, wanted)) return view;
        if (offset >= scroll->maximumOffset()) break;
    }
    scroll->setContentOffset(before);
    app_.step();
    return nullptr;
}

UIView* Screen::bringOnScreen(const std::string& text, Wanted wanted) {
    UIView* view = findScrolling(text, wanted);
    auto* scroll = view ? enclosing<UITableView>(view) : nullptr;
    if (!scroll) return view;
    scroll->scrollRectToVisible(view->convertRectToView(view->bounds(), scroll));
    if (auto* cell = enclosing<UITableViewCell>(view)) {
        if (auto path = scroll->indexPathForCell(*cell)) scroll->scrollToRowAtIndexPath(*path);
    }
    return viewShowing(text, wanted); // another one, where the row has been made anew
}

Status Screen::scrollTo(const std::string& text) {
    if (bringOnScreen(text, Wanted::anything)) return Done{};
    return Error{"nothing on the screen shows '" + text + "'"};
}

Result<CGPoint> Screen::pointShowing(const std::string& text) {
    UIView* view = bringOnScreen(text, Wanted::touchable);
    if (!view) {
        if (auto shown = scrollTo(text); !shown) return shown.error();
        return Error{"'" + text + "' is no row, button or other control"};
    }
    if (auto* segments = enclosing<UISegmentedControl>(view)) {
        const auto& titles = segments->titles();
        auto index = std::find(titles.begin(), titles.end(), text) - titles.begin();
        if (index < static_cast<std::ptrdiff_t>(titles.size()))
            return segments->convertPointToView(middle(segments->rectForSegment(static_cast<int>(index))),
                                                nullptr);
    }
    if (enclosing<UIControl>(view)) return middle(inWindow(*view));
    auto* cell = enclosing<UITableViewCell>(view);
    if (!cell) return middle(inWindow(*view));
    // A row is operated by its switch where it has one.
    if (auto* own = dynamic_cast<UISwitch*>(cell->accessoryView().get())) return middle(inWindow(*own));
    // Of a row that has the text as its name, the place where that stands.
    if (view == cell) {
        const auto shown = viewsShowing(*cell->contentView(), text);
        if (!shown.empty()) view = shown.front();
    }
    const CGRect row = inWindow(*cell);
    return CGPoint{middle(inWindow(*view)).x,
                   row.size.height > 88 ? middle(inWindow(*view)).y : middle(row).y};
}

UISlider* Screen::sliderOf(const std::string& row) {
    UIView* view = bringOnScreen(row, Wanted::touchable);
    if (auto* slider = dynamic_cast<UISlider*>(view)) return slider;
    auto* cell = view ? enclosing<UITableViewCell>(view) : nullptr;
    return cell ? firstBelow<UISlider>(*cell) : nullptr;
}

Json Screen::rows() {
    Json rows = Json::array();
    UITableView* shown = table();
    if (!shown) return rows;
    // All rows get their cells when the table is as high as what it shows.
    const CGRect frame = shown->frame();
    const CGPoint offset = shown->contentOffset();
    const CGFloat everything = std::max(frame.size.height, offset.y + shown->contentSize().height);
    shown->setFrame({frame.origin, {frame.size.width, everything}});
    shown->setContentOffset({0, std::min(offset.y, shown->minimumOffset())});
    app_.window().layoutIfNeeded();
    for (int section = 0; section < shown->numberOfSections(); ++section) {
        for (int row = 0; row < shown->numberOfRowsInSection(section); ++row)
            rows.push_back(rowJson(*shown, {section, row}));
    }
    // First the place, so that no row that is on the screen loses its cell.
    shown->setContentOffset(offset);
    shown->setFrame(frame);
    shown->setNeedsLayout();
    app_.step();
    for (Json& row : rows)
        row["frame"] = InspectRect(shown->convertRectToView(
            shown->rectForRowAtIndexPath({row["section"].get<int>(), row["row"].get<int>()}), nullptr));
    return rows;
}

// Everything of a row but where it is.
Json Screen::rowJson(UITableView& shown, NSIndexPath path) {
    auto* list = dynamic_cast<PSListController*>(&controller());
    auto cell = shown.cellForRowAtIndexPath(path);
    auto specifier = list ? list->specifierAtIndexPath(path) : nullptr;
    auto* own = dynamic_cast<PSTableCell*>(cell.get());
    Json entry;
    entry["section"] = path.section;
    entry["row"] = path.row;
    entry["header"] = shown.titleForHeaderInSection(path.section);
    entry["title"] = cell ? cell->titleText() : std::string();
    entry["detail"] = cell ? cell->detailText() : std::string();
    entry["id"] = specifier ? specifier->identifier() : std::string();
    entry["cell"] = cell ? Json(cell->className()) : Json(nullptr);
    entry["value"] = specifier ? rowValue(*specifier) : Json(nullptr);
    if (cell && !specifier) {
        if (auto* turned = dynamic_cast<UISwitch*>(cell->accessoryView().get()))
            entry["value"] = turned->isOn();
    }
    entry["enabled"] = own ? own->cellEnabled() : cell && cell->userInteractionEnabled();
    entry["accessory"] = cell ? accessoryName(*cell) : "none";
    entry["frame"] = nullptr;
    return entry;
}

Json Screen::inspect(bool pad, double time) {
    app_.step();
    Json json;
    json["idiom"] = pad ? "pad" : "phone";
    json["time"] = time;
    json["title"] = controller().title();
    json["stack"] = Json::array();
    for (const auto& screen : app_.navigation().viewControllers())
        json["stack"].push_back(screen->title());
    json["rows"] = rows();
    auto panel = FrontAlertPanel();
    json["alert"] = panel ? alertJson(*panel) : Json(nullptr);
    json["view"] = InspectView(app_.window());
    return json;
}

} // namespace tallyforge
