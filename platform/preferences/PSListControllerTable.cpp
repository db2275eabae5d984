// A settings screen as a table: which row is where, which cell shows it, and what a tap on it does.
#include "preferences/PSControlCells.h"
#include "preferences/PSListController.h"
#include "preferences/PSTableCell.h"
#include "uikit/UIDevice.h"
#include "uikit/UINavigationController.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr CGFloat kPadColumn = 460; // points; wide screens show rows in a column of this width

std::shared_ptr<PSTableCell> makeOwnCell(const PSSpecifier& specifier) {
    const std::string kind = specifier.cellKind();
    if (const ObjCClass* cls = NSClassFromString(specifier.textForKey("cellClass"))) {
        if (auto cell = std::dynamic_pointer_cast<PSTableCell>(cls->alloc())) return cell;
    }
    if (kind == "PSSwitchCell") return std::make_shared<PSSwitchTableCell>();
    if (kind == "PSSliderCell") return std::make_shared<PSSliderTableCell>();
    if (kind == "PSSegmentCell") return std::make_shared<PSSegmentTableCell>();
    return std::make_shared<PSTableCell>();
}

// A class of the bundle's own keeps its cell for its row; the framework's kinds are used again for any row.
std::string reuseIdentifierFor(const PSSpecifier& specifier) {
    if (std::string own = specifier.textForKey("cellClass"); !own.empty() && NSClassFromString(own))
        return own + " " + specifier.identifier();
    return specifier.cellKind().empty() ? "PSTableCell" : specifier.cellKind();
}

bool opensScreen(const PSSpecifier& specifier) {
    const std::string kind = specifier.cellKind();
    return kind == "PSLinkCell" || kind == "PSLinkListCell";
}

} // namespace

PSListController::~PSListController() {
    for (const PSSpecifierRef& specifier : specifiers_) {
        if (specifier->target() == this) specifier->setTarget(nullptr); // others may keep the row
    }
    if (!table_) return;
    table_->setDataSource(nullptr);
    table_->setDelegate(nullptr);
}

std::shared_ptr<UITableView> PSMakeTable() {
    const CGSize screen = UIScreen::mainScreen().size();
    auto table = std::make_shared<UITableView>(CGRect{{0, 0}, screen});
    if (UIDevice::currentDevice().isPad())
        table->setSideMargin(std::max(0.0, (screen.width - kPadColumn) / 2));
    return table;
}

void PSListController::loadView() {
    table_ = PSMakeTable();
    table_->setDataSource(this);
    table_->setDelegate(this);
    setView(table_);
}

void PSListController::viewWillAppear(bool animated) {
    PSViewController::viewWillAppear(animated);
    if (!table_) return;
    refreshRows();
    table_->deselectRow(true);
}

void PSListController::viewDidAppear(bool animated) {
    PSViewController::viewDidAppear(animated);
}

const std::vector<PSListController::Group>& PSListController::groups() {
    if (grouped_) return groups_;
    grouped_ = true;
    for (const PSSpecifierRef& specifier : specifiers()) {
        if (specifier->cellKind() == "PSGroupCell")
            groups_.push_back({specifier, {}});
        else {
            if (groups_.empty()) groups_.push_back({nullptr, {}});
            groups_.back().rows.push_back(specifier);
        }
    }
    return groups_;
}

PSSpecifierRef PSListController::specifierAtIndexPath(NSIndexPath path) {
    const auto& all = groups();
    if (path.section < 0 || static_cast<size_t>(path.section) >= all.size()) return nullptr;
    const auto& rows = all[static_cast<size_t>(path.section)].rows;
    if (path.row < 0 || static_cast<size_t>(path.row) >= rows.size()) return nullptr;
    return rows[static_cast<size_t>(path.row)];
}

std::optional<NSIndexPath> PSListController::indexPathForSpecifier(const PSSpecifierRef& specifier) {
    const auto& all = groups();
    for (size_t section = 0; section < all.size(); ++section) {
        const auto& rows = all[section].rows;
        auto row = std::find(rows.begin(), rows.end(), specifier);
        if (row != rows.end())
            return NSIndexPath{static_cast<int>(section), static_cast<int>(row - rows.begin())};
    }
    return std::nullopt;
}

void PSListController::refreshRows() {
    if (!table_) return;
    for (NSIndexPath path : table_->indexPathsForVisibleRows()) {
        if (auto cell = std::dynamic_pointer_cast<PSTableCell>(table_->cellForRowAtIndexPath(path))) {
            cell->refreshCellContents();
            cell->setNeedsLayout();
        }
    }
}

int PSListController::numberOfSectionsInTableView(UITableView&) {
    return static_cast<int>(groups().size());
}

int PSListController::tableViewNumberOfRowsInSection(UITableView&, int section) {
    return static_cast<int>(groups()[static_cast<size_t>(section)].rows.size());
}

std::string PSListController::tableViewTitleForHeaderInSection(UITableView&, int section) {
    const auto& group = groups()[static_cast<size_t>(section)].group;
    return group ? group->name() : std::string();
}

std::string PSListController::tableViewTitleForFooterInSection(UITableView&, int section) {
    const auto& group = groups()[static_cast<size_t>(section)].group;
    return group ? group->textForKey("footerText") : std::string();
}

std::shared_ptr<UITableViewCell> PSListController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                  NSIndexPath path) {
    auto specifier = specifierAtIndexPath(path);
    if (!specifier) return nullptr;
    const std::string identifier = reuseIdentifierFor(*specifier);
    auto cell = std::dynamic_pointer_cast<PSTableCell>(table.dequeueReusableCellWithIdentifier(identifier));
    if (cell) {
        if (const auto& former = cell->specifier(); former && former->objectForKey("cellObject") == cell) {
            former->setObjectForKey({}, "cellObject");
            former->setObjectForKey({}, "control");
        }
        cell->setSpecifier(specifier);
    } else {
        cell = makeOwnCell(*specifier);
        if (!cell->initWithStyleReuseIdentifierSpecifier(UITableViewCellStyleValue1, identifier, specifier))
            return nullptr;
        cell->setClipsToBounds(true); // what a row draws stays in it
    }
    specifier->setObjectForKey(cell, "cellObject");
    if (UIView* control = cell->control()) specifier->setObjectForKey(control->weak_from_this(), "control");
    cell->refreshCellContents();
    cell->setNeedsLayout();
    return cell;
}

CGFloat PSListController::tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) {
    auto specifier = specifierAtIndexPath(path);
    if (!specifier) return table.rowHeight();
    if (double height = specifier->numberForKey("height", 0); height > 0 && height <= 2000) return height;
    if (specifier->cellKind() == "PSSliderCell") {
        const auto cell = makeOwnCell(*specifier); // only to ask it
        cell->setSpecifier(specifier);
        if (auto height = cell->preferredHeight(table.bounds().size.width)) return *height;
    }
    return table.rowHeight();
}

bool PSListController::tableViewShouldHighlightRowAtIndexPath(UITableView& table, NSIndexPath path) {
    auto specifier = specifierAtIndexPath(path);
    if (!specifier) return false;
    if (auto cell = std::dynamic_pointer_cast<PSTableCell>(table.cellForRowAtIndexPath(path));
        cell && !cell->cellEnabled())
        return false;
    if (opensScreen(*specifier)) return NSClassFromString(specifier->textForKey("detail")) != nullptr;
    return specifier->cellKind() == "PSButtonCell" && specifier->target() &&
           RespondsToSelector(*specifier->target(), specifier->textForKey("action"));
}

void PSListController::tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) {
    auto specifier = specifierAtIndexPath(path);
    if (!specifier) return;
    const auto self = weak_from_this().lock(); // the row may lead to another screen
    if (opensScreen(*specifier)) {
        auto controller = controllerForSpecifier(specifier);
        if (controller && navigationController())
            navigationController()->pushViewController(std::move(controller), true);
        else
            table.deselectRow(true);
        return;
    }
    if (specifier->target())
        PerformSelector(*specifier->target(), specifier->textForKey("action"), {nullptr, specifier});
    table.deselectRow(true);
}

std::shared_ptr<UIViewController> PSListController::controllerForSpecifier(const PSSpecifierRef& specifier) {
    const ObjCClass* cls = NSClassFromString(specifier->textForKey("detail"));
    auto controller = cls ? std::dynamic_pointer_cast<UIViewController>(cls->alloc()) : nullptr;
    if (auto* screen = dynamic_cast<PSViewController*>(controller.get())) screen->setSpecifier(specifier);
    if (controller && controller->title().empty()) controller->setTitle(specifier->name());
    return controller;
}

} // namespace tallyforge
