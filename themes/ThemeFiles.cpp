#include "themes/ThemeFiles.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/ArchiveGlance.h"
#include "foundation/FolderReader.h"
#include "foundation/NSFileManager.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/Settings.h"
#include "themes/ThemeNames.h"

#include <algorithm>
#include <optional>

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

std::string ShownName(const std::string* name) {
    return name && name->size() <= kLongestName ? *name : std::string();
}

// The name of the theme in the file, empty when it has none; nothing when the file is no theme.
std::optional<std::string> ReadThemeName(FolderReader& folder, const FolderReader::Entry& file,
                                         const std::string& path) {
    // Folders hold many themes and only their names are wanted: whatever is not told at a glance is read.
    if (const auto glance = GlanceAtArchivedDictionary(folder.peek(file), kThemeNameKey); glance.isDictionary)
        return ShownName(glance.text ? &*glance.text : nullptr);
    const auto theme = ReadTheme(path);
    return theme ? std::optional(NameOfTheme(*theme)) : std::nullopt;
}

std::string WithoutExtension(std::string_view fileName) {
    return std::string(fileName.substr(0, fileName.rfind('.')));
}

} // namespace

ThemeListing ListThemes() {
    ThemeListing listing;
    auto folder = FolderReader::open(kThemeFolder);
    if (!folder) return listing;
    listing.empty = folder->entries().empty();
    for (const FolderReader::Entry& file : folder->entries()) {
        if (!HasThemeExtension(file.name)) continue;
        std::string path = std::string(kThemeFolder).append(file.name);
        auto name = ReadThemeName(*folder, file, path);
        if (!name) continue;
        if (name->empty()) name = WithoutExtension(file.name);
        listing.themes.push_back({std::move(*name), std::move(path)});
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
    return ShownName(name ? name->asString() : nullptr);
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
        const PropertyList* value = ThemeValue(domain, key);
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
