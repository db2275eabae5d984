// The bytes of a theme's file, up to the name in the list of themes and the values that loading it writes.

#include "FuzzDevice.h"
#include "PropertyListMutator.h"

#include "foundation/ArchiveGlance.h"
#include "foundation/NSKeyedArchiver.h"
#include "themes/ThemeCheck.h"
#include "themes/ThemeFiles.h"

using namespace tallyforge;
using fuzz::Require;

namespace {

constexpr std::string_view kFile = "/var/mobile/Documents/Tallyforge/stem.tft";

// What is told at a glance is what reading the whole gives.
void GlanceAgrees(std::span<const uint8_t> bytes, const Result<Dictionary>& theme) {
    const ArchiveGlance glance = GlanceAtArchivedDictionary(bytes, kThemeNameKey);
    if (!glance.isDictionary) return;
    Require(bool(theme), "what is a theme at a glance is one");
    const PropertyList* name = theme->objectForKey(kThemeNameKey);
    const std::string* text = name ? name->asString() : nullptr;
    Require(bool(text) == glance.text.has_value() && (!text || *text == *glance.text),
            "the name at a glance is the theme's");
}

void ListingAgrees(const Result<Dictionary>& theme) {
    const ThemeListing listing = ListThemes();
    Require(!listing.empty, "the folder is not empty");
    Require(listing.themes.size() == (theme ? 1 : 0), "a theme is listed, and nothing else");
    if (!theme) return;
    const std::string own = NameOfTheme(*theme);
    Require(listing.themes[0].path == kFile, "it is listed with its file");
    Require(listing.themes[0].name == (own.empty() ? "stem" : own), "it is listed with its name");
}

// Loading writes all settings and only those: the theme's numbers and texts, else the fallbacks.
void LoadingWritesSettings(const Dictionary& theme) {
    SetTheme(theme);
    Require(CFPreferencesAppSynchronize(kSettingsDomain), "what a theme holds can be saved");
    CFPreferencesForgetAll();
    auto keys = CFPreferencesCopyKeyList(kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    Require(keys && keys->size() == SettingsKeyTable().size(), "loading writes the settings alone");
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList* held = theme.objectForKey(key.name);
        const bool counts = held && (held->isNumber() || held->isString());
        const auto saved = CFPreferencesCopyAppValue(key.name, kSettingsDomain);
        Require(saved && *saved == (counts ? *held : *SettingsDefaults().objectForKey(key.name)),
                "a setting is the theme's, else its fallback");
    }
}

void CheckingKeepsOnlyThemes(const Dictionary& theme) {
    const auto checked = CheckedTheme(theme);
    if (!checked) return Require(!checked.reason().empty(), "a refusal has a reason");
    for (const auto& entry : *checked)
        Require(entry.key == kThemeNameKey || FindSettingKey(entry.key), "a checked theme holds settings");
    const auto archive = NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(*checked));
    const auto again = ThemeFromArchive(archive);
    Require(again && *again == *checked, "a checked theme is read as it was written");
    GlanceAgrees(archive, again);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint8_t> bytes(data, data + size);
    fuzz::TheDevice().write(std::string(kFile), bytes);
    const auto theme = ThemeFromArchive(bytes);
    GlanceAgrees(bytes, theme);
    ListingAgrees(theme);
    if (!theme) {
        Require(!theme.reason().empty(), "a refusal has a reason");
        return 0;
    }
    LoadingWritesSettings(*theme);
    CheckingKeepsOnlyThemes(*theme);
    CFPreferencesForgetAll();
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    static constexpr std::string_view words[] = {
        "themename",    "$null",      "$archiver", "NSKeyedArchiver", "$version",    "$top",
        "root",         "$objects",   "$class",    "$classes",        "$classname",  "NSMutableDictionary",
        "NSDictionary", "NSObject",   "NS.keys",   "NS.objects",      "NS.string",   "NSMutableString",
        "NSString",     "badgebgcol", "badgesize", "#FF0000",         "transparent", "CF$UID"};
    return fuzz::MutatePropertyList(data, size, most, seed, words);
}
