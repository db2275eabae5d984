#include "preferences/PSListController.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"

namespace tallyforge {

namespace {

const std::string* TextProperty(const PSSpecifierRef& specifier, std::string_view name) {
    const PropertyList* value = specifier ? specifier->propertyForKey(name) : nullptr;
    return value ? value->asString() : nullptr;
}

} // namespace

PSSpecifierRef PSListController::specifierForID(std::string_view identifier) {
    for (const PSSpecifierRef& specifier : specifiers()) {
        const std::string* own = TextProperty(specifier, "id");
        if (!own) own = TextProperty(specifier, "key");
        if (own && *own == identifier) return specifier;
    }
    return nullptr;
}

void PSListController::setPreferenceValueSpecifier(const PropertyList& value,
                                                   const PSSpecifierRef& specifier) {
    const std::string* domain = TextProperty(specifier, "defaults");
    const std::string* key = TextProperty(specifier, "key");
    if (!domain || !key) return;
    CFPreferencesSetAppValue(*key, value, *domain);
    CFPreferencesAppSynchronize(*domain);
    if (const std::string* notification = TextProperty(specifier, "PostNotification"))
        CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), *notification,
                                             nullptr, nullptr, true);
}

std::optional<PropertyList> PSListController::readPreferenceValue(const PSSpecifierRef& specifier) {
    const std::string* domain = TextProperty(specifier, "defaults");
    const std::string* key = TextProperty(specifier, "key");
    if (domain && key) {
        if (auto value = CFPreferencesCopyAppValue(*key, *domain)) return value;
    }
    const PropertyList* fallback = specifier ? specifier->propertyForKey("default") : nullptr;
    return fallback ? std::optional(*fallback) : std::nullopt;
}

// A controller that has not been shown has no table whose row could be drawn again.
void PSListController::reloadSpecifier(const PSSpecifierRef&) {}

} // namespace tallyforge
