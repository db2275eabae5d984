#include "appselect/AppInfo.h"

#include <array>
#include <string_view>

namespace tallyforge {

namespace {

struct Attribute {
    std::string_view name;
    AppInfo::Value AppInfo::*value;
};

constexpr std::array<Attribute, 12> kAttributes{{
    {"localizedName", &AppInfo::localizedName},
    {"shortVersionString", &AppInfo::shortVersionString},
    {"vendorName", &AppInfo::vendorName},
    {"applicationIdentifier", &AppInfo::applicationIdentifier},
    {"itemID", &AppInfo::itemID},
    {"itemName", &AppInfo::itemName},
    {"teamID", &AppInfo::teamID},
    {"bundleURL", &AppInfo::bundleURL},
    {"dataContainerURL", &AppInfo::dataContainerURL},
    {"applicationType", &AppInfo::applicationType},
    {"applicationVariant", &AppInfo::applicationVariant},
    {"appTags", &AppInfo::appTags},
}};

// As the platform writes a value into a text: lists have an item a line.
std::string TextForm(const AppInfo::Value& value) {
    if (!value) return "(null)";
    const PropertyList::Array* list = value->asArray();
    if (!list) return value->description();
    std::string text = "(";
    for (const PropertyList& item : *list)
        text.append(text.size() > 1 ? ",\n    " : "\n    ").append(item.description());
    return text + "\n)";
}

} // namespace

std::shared_ptr<AppInfo> AppInfo::initWithLSApplicationProxy(NSObject& proxy) {
    auto info = std::make_shared<AppInfo>();
    info->parseInfo(proxy);
    return info;
}

void AppInfo::parseInfo(NSObject& proxy) {
    for (const Attribute& attribute : kAttributes)
        this->*attribute.value = PerformSelector(proxy, attribute.name);
}

std::string AppInfo::description() const {
    std::string text;
    for (const Attribute& attribute : kAttributes)
        text.append(attribute.name).append(": \n").append(TextForm(this->*attribute.value)).append("\n\n");
    return text;
}

} // namespace tallyforge
