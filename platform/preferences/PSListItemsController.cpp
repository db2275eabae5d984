#include "preferences/PSListItemsController.h"

namespace tallyforge {

const std::vector<PSSpecifierRef>& PSListItemsController::specifiers() {
    if (!specifiers_.empty() || !specifier()) return specifiers_;
    Dictionary group;
    group.setObjectForKey(PropertyList::string("PSGroupCell"), "cell");
    if (std::string footer = specifier()->textForKey("staticTextMessage"); !footer.empty())
        group.setObjectForKey(PropertyList::string(std::move(footer)), "footerText");
    specifiers_.push_back(std::make_shared<PSSpecifier>(std::move(group)));
    for (const PSSpecifier::Choice& choice : specifier()->choices()) {
        Dictionary row;
        row.setObjectForKey(PropertyList::string("PSListItemCell"), "cell");
        row.setObjectForKey(PropertyList::string(choice.title), "label");
        row.setObjectForKey(choice.value, "value");
        auto item = std::make_shared<PSSpecifier>(std::move(row));
        item->setSelf(item);
        item->setTarget(this);
        specifiers_.push_back(std::move(item));
    }
    return specifiers_;
}

void PSListItemsController::setSpecifier(PSSpecifierRef specifier) {
    setTitle(specifier ? specifier->name() : std::string());
    PSListController::setSpecifier(std::move(specifier));
}

void PSListItemsController::mark(UITableViewCell& cell, const PSSpecifier& row) const {
    auto present = specifier()->performGetter();
    const PropertyList* own = row.propertyForKey("value");
    bool chosen = present && own && PSSpecifier::Choice{*own, {}}.stands(*present);
    cell.setAccessoryType(chosen ? UITableViewCellAccessoryType::checkmark
                                 : UITableViewCellAccessoryType::none);
}

std::shared_ptr<UITableViewCell> PSListItemsController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                       NSIndexPath path) {
    auto cell = PSListController::tableViewCellForRowAtIndexPath(table, path);
    if (auto row = specifierAtIndexPath(path); cell && row) mark(*cell, *row);
    return cell;
}

void PSListItemsController::tableViewDidSelectRowAtIndexPath(UITableView& table, NSIndexPath path) {
    const auto self = weak_from_this().lock(); // the setter may take the screen away
    const auto shown = table.weak_from_this().lock();
    auto row = specifierAtIndexPath(path);
    if (const PropertyList* value = row ? row->propertyForKey("value") : nullptr)
        specifier()->performSetter(*value);
    table.deselectRow(true);
    refreshRows();
}

void PSListItemsController::refreshRows() {
    if (!table()) return;
    for (NSIndexPath path : table()->indexPathsForVisibleRows()) {
        auto cell = table()->cellForRowAtIndexPath(path);
        if (auto row = specifierAtIndexPath(path); cell && row) mark(*cell, *row);
    }
}

} // namespace tallyforge
