#include "uikit/UITableView.h"

#include "foundation/UTFText.h"
#include "quartzcore/TextLayout.h"
#include "uikit/ControlDrawing.h"
#include "uikit/UILabel.h"
#include "uikit/UIWindow.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cwctype>
#include <string_view>

namespace tallyforge {

namespace {

constexpr CGFloat kFirstGap = 35; // above the first group
constexpr CGFloat kGroupGap = 35; // between groups
constexpr CGFloat kCaptionInset = 15;
constexpr CGFloat kCaptionFont = 13;
constexpr CGFloat kHeaderTextBottom = 7; // below a header's text
constexpr CGFloat kFooterTextTop = 7;
constexpr CGFloat kRowMargin = 60; // shown above and below a row that is scrolled to, for its captions
constexpr size_t kMostSpares = 64; // cells of one identifier that wait to be used again

UIColor captionColor() {
    return UIColor::colorWithRed(109.0 / 255, 109.0 / 255, 114.0 / 255, 1);
}

// Letters with one capital of their own; the others ("ß") and what is no text stay as they are.
std::string upperCased(std::string_view text) {
    static const locale_t letters = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    std::string capitals;
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t letter = TakeUTF8(text);
        const bool ascii = letter >= 'a' && letter <= 'z';
        char32_t capital = ascii ? letter - 'a' + 'A' : letter;
        if (letters && !ascii)
            capital = static_cast<char32_t>(towupper_l(static_cast<wint_t>(letter), letters));
        if (capital != letter)
            AppendUTF8(capitals, capital);
        else
            capitals.append(before.substr(0, before.size() - text.size()));
    }
    return capitals;
}

CGFloat captionHeight(const std::string& text, CGFloat width) {
    auto laidOut = CALayOutText(text, UIFont::systemFontOfSize(kCaptionFont).face(), {width, 1000}, true);
    size_t lines = std::max<size_t>(1, laidOut->lines.size());
    CGFloat line = laidOut->lineHeight > 0 ? laidOut->lineHeight : kCaptionFont * 1.25;
    return std::ceil(static_cast<CGFloat>(lines) * line);
}

} // namespace

CGFloat UITableViewDelegate::tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath) {
    return table.rowHeight();
}

UITableView::UITableView(const CGRect& frame) : UIScrollView(frame) {
    setBackgroundColor(UIColor::colorWithRed(239.0 / 255, 239.0 / 255, 244.0 / 255, 1));
}

void UITableView::setSideMargin(CGFloat points) {
    sideMargin_ = points;
    measuredWidth_ = -1;
    setNeedsLayout();
}

void UITableView::reloadData() {
    loaded_ = true;
    highlighted_.reset();
    selected_.reset();
    while (!cells_.empty())
        recycle(cells_.begin()->first);
    measure();
    showCells();
}

void UITableView::remakeCells() {
    if (!loaded_) return;
    while (!cells_.empty())
        recycle(cells_.begin()->first);
    reusable_.clear();
    reloadData();
}

void UITableView::reloadRow(NSIndexPath path) {
    if (path.section < 0 || path.row < 0 || path.row >= numberOfRowsInSection(path.section)) return;
    if (cells_.contains(path)) recycle(path);
    measure();
    showCells();
    setNeedsLayout(); // rows below may have moved
}

int UITableView::numberOfRowsInSection(int section) const {
    if (section < 0 || section >= numberOfSections()) return 0;
    return static_cast<int>(sections_[static_cast<size_t>(section)].rowTops.size()) - 1;
}

const std::string& UITableView::titleForHeaderInSection(int section) const {
    static const std::string none;
    return section < 0 || section >= numberOfSections() ? none
                                                        : sections_[static_cast<size_t>(section)].title;
}

void UITableView::measure() {
    measuredWidth_ = bounds().size.width;
    for (const auto& captions : {&headers_, &footers_}) {
        for (const auto& [section, view] : *captions)
            view->removeFromSuperview();
        captions->clear();
    }
    std::vector<Section> sections;
    CGFloat y = 0;
    const int count = dataSource_ ? dataSource_->numberOfSectionsInTableView(*this) : 0;
    for (int index = 0; index < count; ++index) {
        sections.push_back(measureSection(index, y));
        const Section& section = sections.back();
        y = section.rowTops.back() + kGroupGap / 2;
        if (!section.footer.empty()) y += kFooterTextTop / 2 + section.footerFrame.size.height;
    }
    sections_ = std::move(sections);
    setContentSize({measuredWidth_, y + kGroupGap / 2});
}

UITableView::Section UITableView::measureSection(int index, CGFloat top) {
    const CGFloat x = sideMargin_ + kCaptionInset;
    const CGFloat width = std::max<CGFloat>(0, measuredWidth_ - 2 * x);
    Section section;
    section.title = dataSource_->tableViewTitleForHeaderInSection(*this, index);
    section.header = upperCased(section.title);
    section.footer = dataSource_->tableViewTitleForFooterInSection(*this, index);
    CGFloat y = top + (index == 0 ? kFirstGap : kGroupGap / 2);
    if (!section.header.empty()) {
        const CGFloat height = captionHeight(section.header, width);
        y += height + kHeaderTextBottom / 2;
        section.headerFrame = CGRectMake(x, y - height - kHeaderTextBottom, width, height);
    }
    const int rows = dataSource_->tableViewNumberOfRowsInSection(*this, index);
    section.rowTops.reserve(static_cast<size_t>(std::max(rows, 0)) + 1);
    section.rowTops.push_back(WholePixels(y));
    for (int row = 0; row < rows; ++row) {
        const CGFloat height =
            delegate_ ? delegate_->tableViewHeightForRowAtIndexPath(*this, {index, row}) : rowHeight_;
        if (height > 0 && std::isfinite(height)) y += height;
        section.rowTops.push_back(WholePixels(y));
    }
    if (!section.footer.empty())
        section.footerFrame = CGRectMake(x, y + kFooterTextTop, width, captionHeight(section.footer, width));
    return section;
}

CGRect UITableView::rectForRowAtIndexPath(NSIndexPath path) const {
    if (path.row < 0 || path.row >= numberOfRowsInSection(path.section)) return CGRectZero;
    const auto& tops = sections_[static_cast<size_t>(path.section)].rowTops;
    auto row = static_cast<size_t>(path.row);
    return CGRectMake(sideMargin_, tops[row], std::max<CGFloat>(0, bounds().size.width - 2 * sideMargin_),
                      tops[row + 1] - tops[row]);
}

std::vector<NSIndexPath> UITableView::indexPathsForVisibleRows() const {
    std::vector<NSIndexPath> paths;
    const CGFloat top = contentOffset().y, bottom = top + bounds().size.height;
    for (size_t index = 0; index < sections_.size(); ++index) {
        const auto& tops = sections_[index].rowTops;
        if (tops.back() <= top) continue;
        if (tops.front() >= bottom) break;
        auto first = std::upper_bound(tops.begin(), tops.end(), top) - tops.begin() - 1;
        for (auto row = std::max<std::ptrdiff_t>(0, first);
             row + 1 < static_cast<std::ptrdiff_t>(tops.size()) && tops[static_cast<size_t>(row)] < bottom;
             ++row)
            paths.push_back({static_cast<int>(index), static_cast<int>(row)});
    }
    return paths;
}

std::optional<NSIndexPath> UITableView::indexPathForRowAtPoint(const CGPoint& point) const {
    if (point.x < sideMargin_ || point.x >= bounds().size.width - sideMargin_) return std::nullopt;
    for (size_t index = 0; index < sections_.size(); ++index) {
        const auto& tops = sections_[index].rowTops;
        if (point.y < tops.front() || point.y >= tops.back()) continue;
        auto row = std::upper_bound(tops.begin(), tops.end(), point.y) - tops.begin() - 1;
        return NSIndexPath{static_cast<int>(index), static_cast<int>(row)};
    }
    return std::nullopt;
}

std::optional<NSIndexPath> UITableView::indexPathForCell(const UITableViewCell& cell) const {
    for (const auto& [path, shown] : cells_) {
        if (shown.get() == &cell) return path;
    }
    return std::nullopt;
}

std::shared_ptr<UITableViewCell> UITableView::cellForRowAtIndexPath(NSIndexPath path) const {
    auto found = cells_.find(path);
    return found == cells_.end() ? nullptr : found->second;
}

std::shared_ptr<UITableViewCell> UITableView::dequeueReusableCellWithIdentifier(std::string_view identifier) {
    auto found = reusable_.find(identifier);
    if (found == reusable_.end()) return nullptr;
    auto cell = std::move(found->second);
    reusable_.erase(found);
    cell->prepareForReuse();
    return cell;
}

void UITableView::recycle(NSIndexPath path) {
    auto found = cells_.find(path);
    auto cell = std::move(found->second);
    cells_.erase(found);
    cell->setHighlighted(false);
    if (hasFocus(*cell)) window()->focusView(nullptr);
    cell->removeFromSuperview();
    const auto& identifier = cell->reuseIdentifier();
    if (!identifier.empty() && reusable_.count(identifier) < kMostSpares)
        reusable_.emplace(identifier, std::move(cell));
}

void UITableView::layoutSubviews() {
    if (!loaded_) return reloadData();
    if (bounds().size.width != measuredWidth_) measure();
    for (const auto& [path, cell] : cells_)
        placeCell(path, *cell);
    showCells();
}

void UITableView::didScroll() {
    if (loaded_) showCells();
}

bool UITableView::hasFocus(const UITableViewCell& cell) const {
    const UIWindow* in = window();
    const UIView* focused = in ? in->focusedView() : nullptr;
    return focused && focused->isDescendantOf(cell);
}

// Cells for the rows on screen, and only for those; a row that the keyboard is on stays.
void UITableView::showCells() {
    if (!dataSource_ || showing_) return;
    showing_ = true;
    const auto visible = indexPathsForVisibleRows();
    std::vector<NSIndexPath> gone;
    for (const auto& [path, cell] : cells_) {
        if (std::binary_search(visible.begin(), visible.end(), path)) continue;
        if (path.row >= numberOfRowsInSection(path.section) || !hasFocus(*cell)) gone.push_back(path);
    }
    for (NSIndexPath path : gone)
        recycle(path);
    for (NSIndexPath path : visible)
        showCell(path);
    showCaptions();
    showing_ = false;
}

void UITableView::showCell(NSIndexPath path) {
    if (cells_.contains(path)) return;
    auto cell = dataSource_->tableViewCellForRowAtIndexPath(*this, path);
    if (!cell) return;
    cell->setSelectable(!delegate_ || delegate_->tableViewShouldHighlightRowAtIndexPath(*this, path));
    if (path == selected_ && cell->selectionStyle() != UITableViewCellSelectionStyle::none)
        cell->setHighlighted(true);
    cells_[path] = cell;
    placeCell(path, *cell);
    insertSubviewAtIndex(cell, 0);
    cell->layoutIfNeeded();
}

void UITableView::placeCell(NSIndexPath path, UITableViewCell& cell) {
    using Edge = UITableViewCell::Edge;
    cell.setFrame(rectForRowAtIndexPath(path));
    bool last = path.row + 1 == numberOfRowsInSection(path.section);
    cell.setSeparators(path.row == 0 ? Edge::full : Edge::none, last ? Edge::full : Edge::inset);
}

void UITableView::showCaptions() {
    for (int index = 0; index < numberOfSections(); ++index) {
        const Section& section = sections_[static_cast<size_t>(index)];
        showCaption(headers_, index, section.header, section.headerFrame);
        showCaption(footers_, index, section.footer, section.footerFrame);
    }
}

void UITableView::showCaption(std::map<int, std::shared_ptr<UIView>>& captions, int index,
                              const std::string& text, const CGRect& frame) {
    const CGFloat top = contentOffset().y, bottom = top + bounds().size.height;
    const bool onScreen = !text.empty() && CGRectGetMaxY(frame) > top && frame.origin.y < bottom;
    auto found = captions.find(index);
    if (!onScreen && found != captions.end()) {
        found->second->removeFromSuperview();
        captions.erase(found);
    }
    if (!onScreen || found != captions.end()) return;
    auto label = std::make_shared<UILabel>(frame);
    label->setFont(UIFont::systemFontOfSize(kCaptionFont));
    label->setTextColor(captionColor());
    label->setNumberOfLines(0);
    label->setText(text);
    label->setUserInteractionEnabled(false);
    captions[index] = label;
    insertSubviewAtIndex(label, 0);
}

void UITableView::scrollToRowAtIndexPath(NSIndexPath path, bool animated) {
    if (!loaded_) reloadData();
    const CGRect rect = rectForRowAtIndexPath(path);
    if (CGRectIsEmpty(rect)) return;
    const CGFloat room = bounds().size.height - topInset() - rect.size.height;
    scrollRectToVisible(CGRectInset(rect, 0, -std::clamp(room / 2, 0.0, kRowMargin)), animated);
}

void UITableView::highlight(std::optional<NSIndexPath> path) {
    if (highlighted_ == path) return;
    if (highlighted_) {
        if (auto cell = cellForRowAtIndexPath(*highlighted_)) cell->setHighlighted(false);
    }
    highlighted_ = path;
    if (!path) return;
    auto cell = cellForRowAtIndexPath(*path);
    if (cell && cell->selectionStyle() != UITableViewCellSelectionStyle::none) cell->setHighlighted(true);
}

// Rows that cannot be operated take no touches and no keys.
bool UITableView::mayHighlight(NSIndexPath path) {
    const auto cell = cellForRowAtIndexPath(path);
    return cell && cell->userInteractionEnabled() &&
           (!delegate_ || delegate_->tableViewShouldHighlightRowAtIndexPath(*this, path));
}

void UITableView::touchesBegan(const UITouch& touch) {
    if (caughtByFinger()) return; // it only stopped the table
    const auto path = indexPathForRowAtPoint(touch.locationInView(*this));
    if (!path || !mayHighlight(*path)) return;
    deselectRow(false);
    highlight(path);
}

void UITableView::touchesMoved(const UITouch& touch) {
    if (highlighted_ && indexPathForRowAtPoint(touch.locationInView(*this)) != highlighted_)
        highlight(std::nullopt);
}

void UITableView::touchesEnded(const UITouch& touch) {
    touchesMoved(touch);
    if (!highlighted_) return;
    const NSIndexPath path = *highlighted_;
    if (!mayHighlight(path)) return highlight(std::nullopt);
    highlighted_.reset(); // the row stays grey until it is deselected
    selectRow(path);
}

void UITableView::touchesCancelled(const UITouch&) {
    highlight(std::nullopt);
}

void UITableView::selectRow(NSIndexPath path) {
    if (!mayHighlight(path)) return;
    const auto self = weak_from_this().lock(); // the row may lead anywhere
    if (selected_ != path) deselectRow(false);
    const auto cell = cellForRowAtIndexPath(path);
    if (cell->selectionStyle() != UITableViewCellSelectionStyle::none) cell->setHighlighted(true);
    selected_ = path;
    if (delegate_) delegate_->tableViewDidSelectRowAtIndexPath(*this, path);
}

void UITableView::deselectRow(bool animated) {
    if (!selected_) return;
    if (auto cell = cellForRowAtIndexPath(*selected_)) cell->setHighlighted(false, animated);
    selected_.reset();
}

} // namespace tallyforge
