#include "uikit/UITableView.h"

#include "quartzcore/TextLayout.h"
#include "uikit/UILabel.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kFirstGap = 35;     // above the first group
constexpr CGFloat kGroupGap = 35;     // between groups
constexpr CGFloat kCaptionInset = 15;
constexpr CGFloat kCaptionFont = 13;
constexpr CGFloat kHeaderTextBottom = 7; // below a header's text
constexpr CGFloat kFooterTextTop = 7;
constexpr CGFloat kFocusMargin = 150; // kept in view around the focused row

UIColor captionColor() {
    return UIColor::colorWithRed(109.0 / 255, 109.0 / 255, 114.0 / 255, 1);
}

// ASCII letters only: the system's own texts have no others.
std::string upperCased(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
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

void UITableView::setFrame(const CGRect& frame) {
    UIScrollView::setFrame(frame);
    if (bounds().size.width != measuredWidth_) setNeedsLayout();
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

void UITableView::reloadRow(NSIndexPath path) {
    if (path.section < 0 || path.row < 0 || path.row >= numberOfRowsInSection(path.section)) return;
    if (cells_.contains(path)) recycle(path);
    measure();
    showCells();
}

int UITableView::numberOfRowsInSection(int section) const {
    if (section < 0 || section >= numberOfSections()) return 0;
    return static_cast<int>(sections_[static_cast<size_t>(section)].rowTops.size()) - 1;
}

const std::string& UITableView::titleForHeaderInSection(int section) const {
    static const std::string none;
    return section < 0 || section >= numberOfSections() ? none : sections_[static_cast<size_t>(section)].title;
}

void UITableView::measure() {
    measuredWidth_ = bounds().size.width;
    sections_.clear();
    for (const auto& captions : {&headers_, &footers_}) {
        for (const auto& [section, view] : *captions)
            view->removeFromSuperview();
        captions->clear();
    }
    CGFloat y = 0;
    const CGFloat captionWidth = std::max<CGFloat>(0, measuredWidth_ - 2 * (sideMargin_ + kCaptionInset));
    const int count = dataSource_ ? dataSource_->numberOfSectionsInTableView(*this) : 0;
    for (int index = 0; index < count; ++index) {
        Section section;
        section.top = y;
        section.title = dataSource_->tableViewTitleForHeaderInSection(*this, index);
        section.header = upperCased(section.title);
        section.footer = dataSource_->tableViewTitleForFooterInSection(*this, index);
        const CGFloat gap = index == 0 ? kFirstGap : kGroupGap / 2;
        section.headerHeight =
            section.header.empty() ? gap : gap + captionHeight(section.header, captionWidth) + kHeaderTextBottom / 2;
        y += section.headerHeight;
        const int rows = dataSource_->tableViewNumberOfRowsInSection(*this, index);
        section.rowTops.reserve(static_cast<size_t>(std::max(rows, 0)) + 1);
        section.rowTops.push_back(y);
        for (int row = 0; row < rows; ++row) {
            y += delegate_ ? delegate_->tableViewHeightForRowAtIndexPath(*this, {index, row}) : rowHeight_;
            section.rowTops.push_back(y);
        }
        section.footerHeight =
            kGroupGap / 2 +
            (section.footer.empty() ? 0 : kFooterTextTop / 2 + captionHeight(section.footer, captionWidth));
        y += section.footerHeight;
        sections_.push_back(std::move(section));
    }
    setContentSize({measuredWidth_, y + kGroupGap / 2});
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
             row + 1 < static_cast<std::ptrdiff_t>(tops.size()) && tops[static_cast<size_t>(row)] < bottom; ++row)
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

std::shared_ptr<UITableViewCell>
UITableView::dequeueReusableCellWithIdentifier(std::string_view identifier) {
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
    cell->removeFromSuperview();
    if (!cell->reuseIdentifier().empty()) reusable_.emplace(cell->reuseIdentifier(), std::move(cell));
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

// Cells for the rows on screen, and only for those; a row that the keyboard is on stays.
void UITableView::showCells() {
    if (!dataSource_ || showing_) return;
    showing_ = true;
    const auto visible = indexPathsForVisibleRows();
    std::vector<NSIndexPath> gone;
    for (const auto& [path, cell] : cells_) {
        if (!std::binary_search(visible.begin(), visible.end(), path)) gone.push_back(path);
    }
    for (NSIndexPath path : gone)
        recycle(path);
    for (NSIndexPath path : visible) {
        if (cells_.contains(path)) continue;
        auto cell = dataSource_->tableViewCellForRowAtIndexPath(*this, path);
        if (!cell) continue;
        cell->setSelectable(!delegate_ || (delegate_->tableViewShouldHighlightRowAtIndexPath(*this, path)));
        cells_[path] = cell;
        placeCell(path, *cell);
        insertSubviewAtIndex(cell, 0);
        cell->layoutIfNeeded();
    }
    showCaptions();
    showing_ = false;
}

void UITableView::placeCell(NSIndexPath path, UITableViewCell& cell) {
    using Edge = UITableViewCell::Edge;
    cell.setFrame(rectForRowAtIndexPath(path));
    bool last = path.row + 1 == numberOfRowsInSection(path.section);
    cell.setSeparators(path.row == 0 ? Edge::full : Edge::none, last ? Edge::full : Edge::inset);
}

void UITableView::showCaptions() {
    const CGFloat top = contentOffset().y, bottom = top + bounds().size.height;
    auto show = [&](std::map<int, std::shared_ptr<UIView>>& captions, int index, const std::string& text,
                    const CGRect& frame) {
        bool onScreen = !text.empty() && CGRectGetMaxY(frame) > top && frame.origin.y < bottom;
        auto found = captions.find(index);
        if (!onScreen) {
            if (found == captions.end()) return;
            found->second->removeFromSuperview();
            captions.erase(found);
            return;
        }
        if (found != captions.end()) return;
        auto label = std::make_shared<UILabel>(frame);
        label->setFont(UIFont::systemFontOfSize(kCaptionFont));
        label->setTextColor(captionColor());
        label->setNumberOfLines(0);
        label->setText(text);
        label->setUserInteractionEnabled(false);
        captions[index] = label;
        insertSubviewAtIndex(label, 0);
    };
    const CGFloat x = sideMargin_ + kCaptionInset;
    const CGFloat width = std::max<CGFloat>(0, bounds().size.width - 2 * x);
    for (int index = 0; index < numberOfSections(); ++index) {
        const Section& section = sections_[static_cast<size_t>(index)];
        if (!section.header.empty()) {
            CGFloat height = captionHeight(section.header, width);
            show(headers_, index, section.header,
                 CGRectMake(x, section.rowTops.front() - height - kHeaderTextBottom, width, height));
        }
        if (!section.footer.empty())
            show(footers_, index, section.footer,
                 CGRectMake(x, section.rowTops.back() + kFooterTextTop, width, captionHeight(section.footer, width)));
    }
}

void UITableView::scrollToRowAtIndexPath(NSIndexPath path, bool animated) {
    if (!loaded_) reloadData();
    CGRect rect = rectForRowAtIndexPath(path);
    if (CGRectIsEmpty(rect)) return;
    // The captions beside it come into view as well, as far as there is room.
    scrollRectToVisible(CGRectInset(rect, 0, -std::min<CGFloat>(60, std::max<CGFloat>(0, bounds().size.height - topInset() - rect.size.height) / 2)),
                        animated);
}

void UITableView::prepareNeighbours(const UIView& focusedView) {
    scrollRectToVisible(
        CGRectInset(focusedView.convertRectToView(focusedView.bounds(), this), 0, -kFocusMargin));
    layoutIfNeeded();
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

void UITableView::touchesBegan(const UITouch& touch) {
    if (caughtByFinger()) return; // it only stopped the table
    auto path = indexPathForRowAtPoint(touch.locationInView(*this));
    if (!path) return;
    auto cell = cellForRowAtIndexPath(*path);
    bool takes = cell && cell->userInteractionEnabled() &&
                 (!delegate_ || delegate_->tableViewShouldHighlightRowAtIndexPath(*this, *path));
    if (takes) {
        deselectRow(false);
        highlight(path);
    }
}

void UITableView::touchesMoved(const UITouch& touch) {
    if (highlighted_ && indexPathForRowAtPoint(touch.locationInView(*this)) != highlighted_)
        highlight(std::nullopt);
}

void UITableView::touchesEnded(const UITouch& touch) {
    touchesMoved(touch);
    if (!highlighted_) return;
    NSIndexPath path = *highlighted_;
    highlighted_.reset(); // the row stays grey until it is deselected
    selectRow(path);
}

void UITableView::touchesCancelled(const UITouch&) {
    highlight(std::nullopt);
}

void UITableView::selectRow(NSIndexPath path) {
    auto cell = cellForRowAtIndexPath(path);
    if (!cell || !cell->userInteractionEnabled()) return;
    if (delegate_ && !delegate_->tableViewShouldHighlightRowAtIndexPath(*this, path)) return;
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
