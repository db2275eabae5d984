#include "themes/ThemeFiles.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/ArchiveGlance.h"
#include "foundation/DurableFile.h"
#include "foundation/FolderReader.h"
#include "foundation/NSFileManager.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/Settings.h"
#include "settings/SilentFailures.h"
#include "themes/ThemeNames.h"

#include <algorithm>
#include <cerrno>
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

// The name of the theme in the file, empty when it has none; nothing when the file is no theme, or was not
// read.
std::optional<std::string> ReadThemeName(const std::string& path, std::vector<UnreadFile>& unread) {
    const NSFileManager& files = NSFileManager::defaultManager();
    const auto bytes = files.contentsAtPath(path);
    if (!bytes) {
        if (files.isUnreadFileAtPath(path, bytes.error())) unread.push_back({path, bytes.reason()});
        return std::nullopt;
    }
    const auto theme = ThemeFromArchive(*bytes);
    return theme ? std::optional(NameOfTheme(*theme)) : std::nullopt;
}

// By the places of the folder's entries: the names of the themes that can be told at a glance.
std::vector<std::optional<std::string>> GlanceAtThemeNames(const FolderReader& folder) {
    std::vector<std::optional<std::string>> names(folder.entries().size());
    folder.peekAll([&](size_t place, std::span<const uint8_t> bytes) {
        if (!HasThemeExtension(folder.entries()[place].name)) return;
        const auto glance = GlanceAtArchivedDictionary(bytes, kThemeNameKey);
        if (glance.isDictionary) names[place] = ShownName(glance.text ? &*glance.text : nullptr);
    });
    return names;
}

std::string WithoutExtension(std::string_view fileName) {
    return std::string(fileName.substr(0, fileName.rfind('.')));
}

} // namespace

ThemeListing ListThemes() {
    ThemeListing listing;
    auto folder = FolderReader::open(kThemeFolder);
    if (!folder) {
        if (folder.number() != ENOENT) listing.unreadable = folder.reason();
        return listing;
    }
    listing.empty =
        std::ranges::all_of(folder->entries(), DurableFile::isUnfinished, &FolderReader::Entry::name);
    // Folders hold many themes and only their names are wanted: what a glance does not tell is read whole.
    auto names = GlanceAtThemeNames(*folder);
    listing.themes.reserve(names.size());
    for (size_t place = 0; place < names.size(); ++place) {
        const std::string& file = folder->entries()[place].name;
        if (!HasThemeExtension(file)) continue;
        std::string path;
        path.reserve(kThemeFolder.size() + file.size());
        path.append(kThemeFolder).append(file);
        auto& name = names[place];
        if (!name) name = ReadThemeName(path, listing.unread);
        if (!name) continue;
        if (name->empty()) name = WithoutExtension(file);
        listing.themes.push_back({std::move(*name), std::move(path)});
    }
    return listing;
}

ThemeListing ListThemesForScreen() {
    ThemeListing listing = ListThemes();
    if (!listing.unreadable.empty()) TellSilentFailure(kThemeFolder, Error{listing.unreadable});
    for (const UnreadFile& file : listing.unread)
        TellSilentFailure(file.path, Error{file.reason});
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

Result<Dictionary> ThemeOfSettings(std::string_view name) {
    const Dictionary domain = WholeDomain();
    // A theme of nothing but fallbacks would be saved for the user's own look.
    std::string why = CFPreferencesTakeMissedReading(kSettingsDomain);
    if (why.empty()) why = CFPreferencesReadFailure(kSettingsDomain);
    if (!why.empty()) return Error{CFPreferencesPath(kSettingsDomain) + ": " + why};
    Dictionary theme;
    theme.reserve(SettingsKeyTable().size() + 1);
    theme.setObjectForKey(PropertyList::string(std::string(name)), kThemeNameKey);
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList* value = ThemeValue(domain, key);
        theme.setObjectForKey(value ? *value : Fallback(key), key.name);
    }
    return theme;
}

Status WriteTheme(const Dictionary& theme, std::string_view path, Overwrite overwrite) {
    NSFileManager& files = NSFileManager::defaultManager();
    if (auto made = files.createDirectoryAtPath(kThemeFolder); !made) return made;
    const auto archive = NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme));
    return overwrite == Overwrite::yes ? files.writeDataToFile(path, archive)
                                       : files.writeDataToNewFile(path, archive);
}

void SetTheme(const Dictionary& theme) {
    Dictionary domain = WholeDomain();
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList* value = ThemeValue(theme, key);
        domain.setObjectForKey(value ? *value : Fallback(key), key.name);
    }
    CFPreferencesSetMultiple(domain, {}, kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    // The theme counts whole, also where a part of it was there already and somebody else changes it
    // meanwhile.
    std::vector<std::string> keys;
    for (const SettingKey& key : SettingsKeyTable())
        keys.emplace_back(key.name);
    CFPreferencesInsistOn(keys, kSettingsDomain);
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
    if (!defaults) {
        if (defaults.number() != ENOENT) note(std::string(kDefaultThemeFolder), defaults.error());
        return restored;
    }
    const auto own = files.contentsOfDirectoryAtPath(kThemeFolder);
    if (!own && restored.failures.empty()) note(std::string(kThemeFolder), own.error());
    for (const std::string& file : *defaults) {
        if (own && std::binary_search(own->begin(), own->end(), file)) continue;
        restored.missing.push_back(file);
        if (!own) continue; // something of the user's might be written over
        std::string source = std::string(kDefaultThemeFolder) + file;
        std::string target = std::string(kThemeFolder) + file;
        const auto bytes = files.contentsAtPath(source);
        if (!bytes) {
            note(std::move(source), bytes.error());
            continue;
        }
        auto written = files.writeDataToNewFile(target, *bytes);
        if (written) restored.files.push_back(file);
        note(std::move(target), std::move(written));
    }
    return restored;
}

} // namespace tallyforge
