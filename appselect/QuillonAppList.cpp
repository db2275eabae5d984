#include "appselect/QuillonAppList.h"

#include "appselect/AppInfo.h"
#include "mobileservices/LSApplicationWorkspace.h"

#include <utility>

namespace tallyforge {

namespace {

// All of these must hold; a type adds a third condition to the two that leave out hidden and web apps.
std::optional<NSPredicate> VisibleApps(const char* type = nullptr) {
    std::vector<NSPredicate> parts;
    const auto add = [&](std::string_view format, const std::vector<PropertyList>& arguments = {}) {
        parts.push_back(*NSPredicate::predicateWithFormat(format, arguments));
    };
    add("not (appTags contains 'hidden')");
    add("not (applicationIdentifier contains 'com.apple.webapp')");
    if (type) add("applicationType == %@", {PropertyList::string(type)});
    return NSPredicate::andPredicateWithSubpredicates(std::move(parts));
}

const std::string* TextOf(const AppInfo::Value& value) {
    return value ? value->asString() : nullptr;
}

} // namespace

QuillonAppList& QuillonAppList::sharedApplicationList() {
    static QuillonAppList list;
    return list;
}

std::vector<std::shared_ptr<NSObject>> QuillonAppList::listAllInstalledApps() const {
    const ObjCClass* workspaceClass = NSClassFromString("LSApplicationWorkspace");
    if (!workspaceClass) return {};
    auto workspace = std::dynamic_pointer_cast<LSApplicationWorkspace>(
        workspaceClass->performSelector("defaultWorkspace"));
    return workspace ? workspace->allInstalledApplications() : std::vector<std::shared_ptr<NSObject>>();
}

QuillonAppList::Catalogue
QuillonAppList::applicationsFilteredUsingPredicate(const std::optional<NSPredicate>& predicate) const {
    Catalogue catalogue;
    for (const auto& entry : listAllInstalledApps()) {
        const auto attributes = [&](std::string_view key) { return PerformSelector(*entry, key); };
        if (predicate && !predicate->evaluateWithObject(attributes)) continue;
        const auto app = AppInfo::initWithLSApplicationProxy(*entry);
        const std::string* name = TextOf(app->localizedName);
        const std::string* identifier = TextOf(app->applicationIdentifier);
        if (name && identifier) catalogue.insert_or_assign(*identifier, *name);
    }
    return catalogue;
}

QuillonAppList::Catalogue QuillonAppList::allApplications() const {
    return applicationsFilteredUsingPredicate(std::nullopt);
}

QuillonAppList::Catalogue QuillonAppList::allNonHiddenApplications() const {
    return applicationsFilteredUsingPredicate(VisibleApps());
}

QuillonAppList::Catalogue QuillonAppList::allSystemApplications() const {
    return applicationsFilteredUsingPredicate(VisibleApps("System"));
}

QuillonAppList::Catalogue QuillonAppList::allUserApplications() const {
    return applicationsFilteredUsingPredicate(VisibleApps("User"));
}

} // namespace tallyforge
