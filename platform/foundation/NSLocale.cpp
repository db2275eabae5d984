#include "foundation/NSLocale.h"

#include "foundation/NSFileManager.h"
#include "foundation/PropertyListFormat.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

namespace tallyforge {

namespace {

constexpr std::string_view kGlobalPreferences = "/var/mobile/Library/Preferences/.GlobalPreferences.plist";
constexpr size_t kMostLanguages = 16;
constexpr size_t kLongestName = 64;

// Names become parts of paths.
bool IsLocaleName(std::string_view name) {
    return !name.empty() && name.size() <= kLongestName && std::ranges::all_of(name, [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '@' || c == '=';
    });
}

const std::string* LocaleName(const PropertyList* value) {
    const std::string* name = value ? value->asString() : nullptr;
    return name && IsLocaleName(*name) ? name : nullptr;
}

Dictionary GlobalPreferences() {
    auto bytes = NSFileManager::defaultManager().contentsAtPath(kGlobalPreferences);
    if (!bytes) return {};
    auto list = DeserializePropertyList(*bytes);
    Dictionary* contents = list ? list->asDictionary() : nullptr;
    return contents ? std::move(*contents) : Dictionary();
}

std::vector<std::string> NamedLanguages(const Dictionary& preferences) {
    std::vector<std::string> names;
    const PropertyList* value = preferences.objectForKey("AppleLanguages");
    const PropertyList::Array* list = value ? value->asArray() : nullptr;
    if (!list) return names;
    for (const PropertyList& name : *list) {
        if (LocaleName(&name) && names.size() < kMostLanguages) names.push_back(*name.asString());
    }
    return names;
}

// The locale without the character set: "de_DE" of "de_DE.UTF-8". The programmers' locales are none of a
// user's.
std::optional<std::string> LocaleOfEnvironment() {
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* text = std::getenv(variable);
        if (!text || !*text) continue;
        std::string name(text);
        name.erase(std::min(name.find('.'), name.size()));
        if (name == "C" || name == "POSIX" || !IsLocaleName(name)) return std::nullopt;
        return name;
    }
    return std::nullopt;
}

} // namespace

std::vector<std::string> NSLocalePreferredLanguages() {
    std::vector<std::string> languages;
    const auto add = [&](const std::string& name) {
        if (std::ranges::find(languages, name) == languages.end()) languages.push_back(name);
    };
    for (const std::string& name : NamedLanguages(GlobalPreferences())) {
        for (size_t end = name.size(); end != std::string::npos && end > 0;
             end = name.find_last_of("-_", end - 1))
            add(name.substr(0, end));
    }
    if (languages.empty()) add("en");
    return languages;
}

std::string NSLocaleCurrentIdentifier() {
    const Dictionary preferences = GlobalPreferences();
    if (const auto* locale = LocaleName(preferences.objectForKey("AppleLocale"))) return *locale;
    if (auto languages = NamedLanguages(preferences); !languages.empty()) return languages.front();
    return LocaleOfEnvironment().value_or("en");
}

} // namespace tallyforge
