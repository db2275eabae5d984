#include "themes/ThemeFiles.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/NSFileManager.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/Settings.h"
#include "themes/ThemeNames.h"

#include <algorithm>

namespace tallyforge {

namespace {

// No file name allows a longer one to have been saved, even where capitals take more bytes than small
// letters.
constexpr size_t kLongestName = 1'024; // bytes

Dictionary WholeDomain() {
    auto keys = CFPreferencesCopyKeyList(kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    if (!keys) return {};
    return CFPreferencesCopyMultiple(*keys, kSettingsDomain, kCFPreferencesCurrentUser,
                                     kCFPreferencesAnyHost);
}

const PropertyList& Fallback(const SettingKey& key) {
    return *SettingsDefaults().objectForKey(key.name);
}

std::string WithoutExtension(std::string_view fileName) {
    return std::string(fileName.substr(0, fileName.rfind('.')));
}

} // namespace

ThemeListing ListThemes() {
    ThemeListing listing;
    const auto files = NSFileManager::defaultManager().contentsOfDirectoryAtPath(kThemeFolder);
    if (!files) return listing;
    listing.empty = files->empty();
    for (const std::string& file : *files) {
        if (!HasThemeExtension(file)) continue;
        std::string path = std::string(kThemeFolder) + file;
        const auto theme = ReadTheme(path);
        if (!theme) continue;
        std::string name = NameOfTheme(*theme);
        listing.themes.push_back({name.empty() ? WithoutExtension(file) : std::move(name), std::move(path)});
    }
    return listing;
}

Result<Dictionary> ReadTheme(std::string_view path) {
    const auto bytes = NSFileManager::defaultManager().contentsAtPath(path);
    if (!bytes) return bytes.error();
    return ThemeFromArchive(*bytes);
}

Result<Dictionary> ThemeFromArchive(const std::vector<uint8_t>& archive) {
    auto root = NSKeyedUnarchiver::unarchiveObjectWithData(archive);
    if (!root) return root.error();
    Dictionary* theme = root->asDictionary();
    if (!theme) return Error{"an archive of something else than a dictionary"};
    return std::move(*theme);
}

std::string NameOfTheme(const Dictionary& theme) {
    const PropertyList* name = theme.objectForKey(kThemeNameKey);
    const std::string* text = name ? name->asString() : nullptr;
    return text && text->size() <= kLongestName ? *text : std::string();
}

const PropertyList* ThemeValue(const Dictionary& theme, const SettingKey& key) {
    const PropertyList* value = theme.objectForKey(key.name);
    return value && (value->isNumber() || value->isString()) ? value : nullptr;
}

Dictionary ThemeOfSettings(std::string_view name) {
    const Dictionary domain = WholeDomain();
    Dictionary theme;
    theme.reserve(SettingsKeyTable().size() + 1);
    theme.setObjectForKey(PropertyList::string(std::string(name)), kThemeNameKey);
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList* value = domain.objectForKey(key.name);
        theme.setObjectForKey(value ? *value : Fallback(key), key.name);
    }
    return theme;
}

Status WriteTheme(const Dictionary& theme, std::string_view path) {
    NSFileManager& files = NSFileManager::defaultManager();
    if (auto made = files.createDirectoryAtPath(kThemeFolder); !made) return made;
    return files.writeDataToFile(
        path, NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme)));
}

void SetTheme(const Dictionary& theme) {
    Dictionary domain = WholeDomain();
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList* value = ThemeValue(theme, key);
        domain.setObjectForKey(value ? *value : Fallback(key), key.name);
    }
    CFPreferencesSetMultiple(domain, {}, kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

void ApplyTheme(const Dictionary& theme) {
    SetTheme(theme);
    NSUserDefaults::standardUserDefaults().synchronize();
    AnnounceSettingsChanged();
}

Status RemoveTheme(std::string_view path) {
    return NSFileManager::defaultManager().removeItemAtPath(path);
}

void AnnounceThemeRemoved() {
    CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), kPrefsNotification,
                                         nullptr, nullptr, true);
}

RestoredThemes RestoreDefaultThemes() {
    NSFileManager& files = NSFileManager::defaultManager();
    RestoredThemes restored;
    auto note = [&](std::string path, Status outcome) {
        if (!outcome) restored.failures.push_back({std::move(path), std::move(outcome)});
    };
    note(std::string(kThemeFolder), files.createDirectoryAtPath(kThemeFolder));
    const auto defaults = files.contentsOfDirectoryAtPath(kDefaultThemeFolder);
    const auto own = files.contentsOfDirectoryAtPath(kThemeFolder);
    if (!defaults) return restored;
    for (const std::string& file : *defaults) {
        if (own && std::binary_search(own->begin(), own->end(), file)) continue;
        restored.files.push_back(file);
        const auto bytes = files.contentsAtPath(std::string(kDefaultThemeFolder) + file);
        std::string target = std::string(kThemeFolder) + file;
        Status written = bytes ? files.writeDataToFile(target, *bytes) : Status(bytes.error());
        note(std::move(target), std::move(written));
    }
    return restored;
}

} // namespace tallyforge
