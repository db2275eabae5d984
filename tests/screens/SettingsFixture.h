#pragma once

#include "ScreenFixture.h"
#include "preferences/PSControlCells.h"
#include "preferences/PSListController.h"
#include "preferences/PSListItemsController.h"
#include "uikit/UINavigationController.h"

#include <utility>

namespace tallyforge::test {

using Row = std::vector<std::pair<const char*, PropertyList>>;

inline PropertyList text(const std::string& value) {
    return PropertyList::string(value);
}
inline PropertyList number(double value) {
    return PropertyList::doubleNumber(value);
}
inline PropertyList flag(bool value) {
    return PropertyList::boolean(value);
}

/// A settings screen of rows that a test says. It notes what is set and which button is pressed.
class Pane final : public PSListController {
  public:
    explicit Pane(const std::vector<Row>& rows) {
        for (const Row& row : rows) {
            Dictionary properties;
            for (const auto& [key, value] : row)
                properties.setObjectForKey(value, key);
            auto specifier = std::make_shared<PSSpecifier>(std::move(properties));
            specifier->setSelf(specifier);
            specifier->setTarget(this);
            specifiers_.push_back(std::move(specifier));
        }
    }
    std::string bundlePath() const override { return "/Library/Test.bundle/"; }
    const MethodTable& methods() const override {
        static constexpr MethodEntry own[] = {{"tap:", tap}, {"leave", leave}, {"keep:for:", keep}};
        static const MethodTable whole{own, &PSListController::classMethods()};
        return whole;
    }
    Log log;
    std::function<void()> whenLeft;

  private:
    static MethodResult tap(NSObject& self, const MethodArguments& arguments) {
        auto row = std::dynamic_pointer_cast<PSSpecifier>(arguments.object);
        static_cast<Pane&>(self).log.push_back("tap " + (row ? row->name() : "nobody"));
        return nullptr;
    }
    static MethodResult leave(NSObject& self, const MethodArguments&) {
        const auto then = static_cast<Pane&>(self).whenLeft;
        if (then) then();
        return nullptr;
    }
    static MethodResult keep(NSObject& self, const MethodArguments& arguments) {
        auto row = std::dynamic_pointer_cast<PSSpecifier>(arguments.object);
        static_cast<Pane&>(self).log.push_back("keep " + row->name() + " " + arguments.value->description());
        static_cast<Pane&>(self).setPreferenceValueSpecifier(*arguments.value, row);
        return nullptr;
    }
};

class EmptyScreen final : public PSViewController {};

class SettingsFixture : public ScreenFixture {
  protected:
    SettingsFixture() {
        RegisterClass("EmptyScreen", {[] { return std::make_shared<EmptyScreen>(); }});
        RegisterClass("PSListItemsController", {[] { return std::make_shared<PSListItemsController>(); }});
    }
    ~SettingsFixture() override {
        window_->setRootViewController(nullptr);
        for (const char* name : {"EmptyScreen", "PSListItemsController", "OwnCell", "NoCell"})
            RegisterClass(name, {});
    }
    Pane& open(const std::vector<Row>& rows) {
        pane_ = std::make_shared<Pane>(rows);
        navigation_ = std::make_shared<UINavigationController>(pane_);
        window_->setRootViewController(navigation_);
        window_->layoutIfNeeded();
        return *pane_;
    }
    template <class Cell = PSTableCell>
    std::shared_ptr<Cell> cell(int section, int row) {
        return std::dynamic_pointer_cast<Cell>(pane_->table()->cellForRowAtIndexPath({section, row}));
    }
    void tapRow(int section, int row) {
        UITableView& table = *pane_->table();
        const CGRect rect = table.rectForRowAtIndexPath({section, row});
        tap(table.convertPointToView({CGRectGetMidX(rect), CGRectGetMidY(rect)}, nullptr));
    }
    static Row kept(const char* kind, const std::string& label, Row more = {}) {
        Row row{{"cell", text(kind)},
                {"label", text(label)},
                {"key", text(label)},
                {"defaults", text("com.example.one")}};
        row.insert(row.end(), more.begin(), more.end());
        return row;
    }
    static std::optional<PropertyList> stored(const std::string& key) {
        return CFPreferencesCopyAppValue(key, "com.example.one");
    }
    static void store(const std::string& key, const PropertyList& value) {
        CFPreferencesSetAppValue(key, value, "com.example.one");
        CFPreferencesAppSynchronize("com.example.one");
    }

    std::shared_ptr<Pane> pane_;
    std::shared_ptr<UINavigationController> navigation_;
};

} // namespace tallyforge::test
