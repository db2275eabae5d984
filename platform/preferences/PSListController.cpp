#include "preferences/PSListController.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/NSFileManager.h"
#include "foundation/PropertyListFormat.h"
#include "preferences/PSTableCell.h"

#include <utility>

namespace tallyforge {

namespace {

// The largest of our own lists is a hundredth of this.
constexpr PropertyListLimits kListLimits{
    .bytes = 1u << 20, .objects = 16'384, .depth = 16, .nodes = 32'768, .text = 4u << 20};
constexpr size_t kMostRows = 1024;

const std::string* TextProperty(const PSSpecifierRef& specifier, std::string_view name) {
    const PropertyList* value = specifier ? specifier->propertyForKey(name) : nullptr;
    return value ? value->asString() : nullptr;
}

std::function<void(const std::string&)>& ReloadTrace() {
    static std::function<void(const std::string&)> trace;
    return trace;
}

PSListController::SpareLists& Spare() {
    static PSListController::SpareLists lists;
    return lists;
}

// The list's bytes; empty when there is no such list. One that is there but cannot be read is no reason to
// look for another.
std::vector<uint8_t> ListBytes(const std::string& path) {
    NSFileManager& files = NSFileManager::defaultManager();
    for (const std::string& place : {path, "/bootstrap" + path}) {
        if (!files.fileExistsAtPath(place)) continue;
        auto bytes = files.contentsAtPath(place, kListLimits.bytes);
        return bytes ? std::move(*bytes) : std::vector<uint8_t>();
    }
    return Spare() ? Spare()(path) : std::vector<uint8_t>();
}

PSListController& List(NSObject& self) {
    return static_cast<PSListController&>(self);
}

PSSpecifierRef Row(const MethodArguments& arguments) {
    return std::dynamic_pointer_cast<PSSpecifier>(arguments.object);
}

MethodResult SetPreferenceValue(NSObject& self, const MethodArguments& arguments) {
    if (arguments.value) List(self).setPreferenceValueSpecifier(*arguments.value, Row(arguments));
    return nullptr;
}

MethodResult ReadPreferenceValue(NSObject& self, const MethodArguments& arguments) {
    auto value = List(self).readPreferenceValue(Row(arguments));
    return value ? std::make_shared<const PropertyList>(std::move(*value)) : nullptr;
}

MethodResult ReloadSpecifier(NSObject& self, const MethodArguments& arguments) {
    List(self).reloadSpecifier(Row(arguments));
    return nullptr;
}

} // namespace

const MethodTable& PSListController::classMethods() {
    static constexpr MethodEntry own[] = {
        {"setPreferenceValue:specifier:", SetPreferenceValue},
        {"readPreferenceValue:", ReadPreferenceValue},
        {"reloadSpecifier:", ReloadSpecifier},
    };
    static constexpr MethodTable table{own};
    return table;
}

const MethodTable& PSListController::methods() const {
    return classMethods();
}

void PSListController::setSpareLists(SpareLists lists) {
    Spare() = std::move(lists);
}

void PSListController::setReloadTrace(std::function<void(const std::string& identifier)> trace) {
    ReloadTrace() = std::move(trace);
}

std::vector<PSSpecifierRef> PSListController::loadSpecifiersFromPlistNameTarget(std::string_view name,
                                                                                NSObject& target) {
    std::vector<PSSpecifierRef> rows;
    std::string folder = bundlePath();
    if (folder.empty()) return rows;
    auto list = DeserializePropertyList(ListBytes(folder + std::string(name) + ".plist"), kListLimits);
    const Dictionary* contents = list ? std::as_const(*list).asDictionary() : nullptr;
    if (!contents) return rows;
    const PropertyList* ownTitle = contents->objectForKey("title");
    if (ownTitle && ownTitle->isString() && title().empty()) setTitle(*ownTitle->asString());
    const PropertyList* items = contents->objectForKey("items");
    const PropertyList::Array* entries = items ? items->asArray() : nullptr;
    if (!entries) return rows;
    for (const PropertyList& entry : *entries) {
        if (!entry.asDictionary()) continue;
        if (rows.size() == kMostRows) break;
        auto row = std::make_shared<PSSpecifier>(*entry.asDictionary());
        row->setSelf(row);
        row->setTarget(&target);
        rows.push_back(std::move(row));
    }
    return rows;
}

PSSpecifierRef PSListController::specifierForID(std::string_view identifier) {
    if (identifier.empty()) return nullptr;
    for (const PSSpecifierRef& specifier : specifiers()) {
        if (specifier->identifier() == identifier) return specifier;
    }
    return nullptr;
}

void PSListController::setPreferenceValueSpecifier(const PropertyList& value,
                                                   const PSSpecifierRef& specifier) {
    const std::string* domain = TextProperty(specifier, "defaults");
    const std::string* key = TextProperty(specifier, "key");
    if (!domain || !key) return;
    CFPreferencesSetAppValue(*key, value, *domain);
    if (const std::string* notification = TextProperty(specifier, "PostNotification")) {
        CFPreferencesAppSynchronize(*domain); // whoever hears of it reads the file
        CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), *notification,
                                             nullptr, nullptr, true);
    }
    specifier->setPropertyForKey(value, "value");
}

std::optional<PropertyList> PSListController::readPreferenceValue(const PSSpecifierRef& specifier) {
    if (!specifier) return std::nullopt;
    std::optional<PropertyList> value;
    const std::string* domain = TextProperty(specifier, "defaults");
    const std::string* key = TextProperty(specifier, "key");
    if (domain && key) value = CFPreferencesCopyAppValue(*key, *domain);
    if (const PropertyList* fallback = specifier->propertyForKey("default"); !value && fallback)
        value = *fallback;
    if (value)
        specifier->setPropertyForKey(*value, "value");
    else
        specifier->removePropertyForKey("value");
    return value;
}

void PSListController::reloadSpecifier(const PSSpecifierRef& specifier) {
    if (!specifier) return;
    if (ReloadTrace()) ReloadTrace()(specifier->identifier());
    if (!table()) return;
    auto path = indexPathForSpecifier(specifier);
    auto cell =
        path ? std::dynamic_pointer_cast<PSTableCell>(table()->cellForRowAtIndexPath(*path)) : nullptr;
    if (!cell) return;
    cell->refreshCellContents();
    cell->setNeedsLayout();
}

} // namespace tallyforge
