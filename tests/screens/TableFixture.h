#pragma once

#include "ScreenFixture.h"
#include "uikit/UILabel.h"
#include "uikit/UITableView.h"

#include <functional>

namespace tallyforge::test {

/// A table's contents as a test says them.
class Contents : public UITableViewDataSource, public UITableViewDelegate {
  public:
    struct Section {
        std::string header, footer;
        int rows = 0;
    };
    std::vector<Section> sections;
    std::function<std::shared_ptr<UITableViewCell>(UITableView&, NSIndexPath)> makeCell;
    std::function<CGFloat(NSIndexPath)> height = [](NSIndexPath) { return 44.0; };
    std::function<bool(NSIndexPath)> mayHighlight = [](NSIndexPath) { return true; };
    std::function<void(NSIndexPath)> whenSelected;
    std::vector<NSIndexPath> selected;
    int made = 0, asked = 0;

    int numberOfSectionsInTableView(UITableView&) override { return static_cast<int>(sections.size()); }
    int tableViewNumberOfRowsInSection(UITableView&, int section) override { return at(section).rows; }
    std::string tableViewTitleForHeaderInSection(UITableView&, int section) override {
        return at(section).header;
    }
    std::string tableViewTitleForFooterInSection(UITableView&, int section) override {
        return at(section).footer;
    }
    std::shared_ptr<UITableViewCell> tableViewCellForRowAtIndexPath(UITableView& table,
                                                                    NSIndexPath path) override {
        ++asked;
        if (makeCell) return makeCell(table, path);
        auto cell = table.dequeueReusableCellWithIdentifier("row");
        if (!cell) {
            cell = std::make_shared<UITableViewCell>(UITableViewCellStyleValue1, "row");
            ++made;
        }
        cell->textLabel().setText(nameOf(path));
        return cell;
    }
    CGFloat tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath path) override { return height(path); }
    bool tableViewShouldHighlightRowAtIndexPath(UITableView&, NSIndexPath path) override {
        return mayHighlight(path);
    }
    void tableViewDidSelectRowAtIndexPath(UITableView&, NSIndexPath path) override {
        selected.push_back(path);
        if (whenSelected) whenSelected(path);
    }
    static std::string nameOf(NSIndexPath path) {
        return std::to_string(path.section) + "." + std::to_string(path.row);
    }

  private:
    const Section& at(int section) const { return sections[static_cast<size_t>(section)]; }
};

class TableFixture : public ScreenFixture {
  protected:
    TableFixture() {
        table_->setDataSource(&contents_);
        table_->setDelegate(&contents_);
    }
    ~TableFixture() override {
        window_->removeAllSubviews();
        table_->setDataSource(nullptr);
        table_->setDelegate(nullptr);
    }
    void load(std::vector<Contents::Section> sections) {
        contents_.sections = std::move(sections);
        show(table_);
        table_->reloadData();
        window_->layoutIfNeeded();
    }
    std::shared_ptr<UITableViewCell> cell(int section, int row) const {
        return table_->cellForRowAtIndexPath({section, row});
    }
    CGFloat offset() const { return table_->contentOffset().y; }
    CGPoint middleOfRow(int section, int row) const {
        const CGRect rect = table_->rectForRowAtIndexPath({section, row});
        return table_->convertPointToView({CGRectGetMidX(rect), CGRectGetMidY(rect)}, nullptr);
    }
    int cellsShown() const {
        return static_cast<int>(
            std::count_if(table_->subviews().begin(), table_->subviews().end(), [](const auto& view) {
                return dynamic_cast<UITableViewCell*>(view.get()) != nullptr;
            }));
    }
    std::vector<UILabel*> captions() const {
        std::vector<UILabel*> labels;
        for (const auto& view : table_->subviews()) {
            if (auto* label = dynamic_cast<UILabel*>(view.get())) labels.push_back(label);
        }
        return labels;
    }

    Contents contents_;
    std::shared_ptr<UITableView> table_ = std::make_shared<UITableView>(CGRectMake(0, 67, 375, 600));
};

} // namespace tallyforge::test
