#pragma once

#include "uikit/UIScrollView.h"
#include "uikit/UITableViewCell.h"

#include <compare>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge {

class UITableView;

struct NSIndexPath {
    int section = 0;
    int row = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): the 0 of comparisons
    auto operator<=>(const NSIndexPath&) const = default;
};

/// What a table shows.
class UITableViewDataSource {
  public:
    virtual ~UITableViewDataSource() = default;
    virtual int numberOfSectionsInTableView(UITableView&) { return 1; }
    virtual int tableViewNumberOfRowsInSection(UITableView& table, int section) = 0;
    virtual std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                            NSIndexPath path) = 0;
    /// Empty: none.
    virtual std::string tableViewTitleForHeaderInSection(UITableView&, int) { return {}; }
    virtual std::string tableViewTitleForFooterInSection(UITableView&, int) { return {}; }
};

/// What a table asks about its rows, and tells about them.
class UITableViewDelegate {
  public:
    virtual ~UITableViewDelegate() = default;
    virtual CGFloat tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path);
    virtual bool tableViewShouldHighlightRowAtIndexPath(UITableView&, NSIndexPath) { return true; }
    virtual void tableViewDidSelectRowAtIndexPath(UITableView&, NSIndexPath) {}
};

/// A grouped table: sections of rows with headers and footers, as many cells as are on screen (and the one
/// that the keyboard is on).
class UITableView final : public UIScrollView {
  public:
    explicit UITableView(const CGRect& frame);

    const char* className() const override { return "UITableView"; }
    /// Must outlive the table or be taken off it.
    void setDataSource(UITableViewDataSource* source) { dataSource_ = source; }
    void setDelegate(UITableViewDelegate* delegate) { delegate_ = delegate; }
    CGFloat rowHeight() const { return rowHeight_; }
    void setRowHeight(CGFloat points) { rowHeight_ = points; }
    /// Rows lie this far from the left and right edges.
    CGFloat sideMargin() const { return sideMargin_; }
    void setSideMargin(CGFloat points);

    /// Asks for everything again.
    void reloadData();
    /// The same with new cells, none of those that were used before.
    void remakeCells();
    /// Asks for the row's cell and height again.
    void reloadRow(NSIndexPath path);
    int numberOfSections() const { return static_cast<int>(sections_.size()); }
    int numberOfRowsInSection(int section) const;
    /// As the data source gave it; empty for none.
    const std::string& titleForHeaderInSection(int section) const;

    CGRect rectForRowAtIndexPath(NSIndexPath path) const; ///< in the content; empty for no such row
    std::optional<NSIndexPath> indexPathForRowAtPoint(const CGPoint& point) const;
    std::optional<NSIndexPath> indexPathForCell(const UITableViewCell& cell) const;
    /// The cell when it is on screen, else nullptr.
    std::shared_ptr<UITableViewCell> cellForRowAtIndexPath(NSIndexPath path) const;
    std::vector<NSIndexPath> indexPathsForVisibleRows() const;
    /// A cell with the identifier that is not in use any more, or nullptr.
    std::shared_ptr<UITableViewCell> dequeueReusableCellWithIdentifier(std::string_view identifier);
    void scrollToRowAtIndexPath(NSIndexPath path, bool animated = false);
    void deselectRow(bool animated);
    std::optional<NSIndexPath> selectedRow() const { return selected_; }
    /// As a tap on the row does it.
    void selectRow(NSIndexPath path);

    void layoutSubviews() override;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;

  protected:
    void didScroll() override;

  private:
    struct Section {
        std::string title, header, footer; // the header is the title in capitals
        CGRect headerFrame, footerFrame;   // of the texts
        std::vector<CGFloat> rowTops;      // one more than there are rows
    };
    void measure();
    Section measureSection(int index, CGFloat top);
    bool mayHighlight(NSIndexPath path);
    bool hasFocus(const UITableViewCell& cell) const;
    void showCells();
    void showCell(NSIndexPath path);
    void placeCell(NSIndexPath path, UITableViewCell& cell);
    void recycle(NSIndexPath path);
    void showCaptions();
    void showCaption(std::map<int, std::shared_ptr<UIView>>& captions, int index, const std::string& text,
                     const CGRect& frame);
    void highlight(std::optional<NSIndexPath> path);

    UITableViewDataSource* dataSource_ = nullptr;
    UITableViewDelegate* delegate_ = nullptr;
    CGFloat rowHeight_ = 44;
    CGFloat sideMargin_ = 0;
    CGFloat measuredWidth_ = -1;
    bool loaded_ = false;
    bool showing_ = false; // cells are being made
    std::vector<Section> sections_;
    std::map<NSIndexPath, std::shared_ptr<UITableViewCell>> cells_;
    std::map<int, std::shared_ptr<UIView>> headers_, footers_;
    std::multimap<std::string, std::shared_ptr<UITableViewCell>, std::less<>> reusable_;
    std::optional<NSIndexPath> highlighted_;
    std::optional<NSIndexPath> selected_;
};

} // namespace tallyforge
