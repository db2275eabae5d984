#include "cli/ThemeCommands.h"

#include "cli/Device.h"
#include "cli/Report.h"
#include "cli/ThemeChoice.h"
#include "cli/ValueJson.h"
#include "cli/ValueText.h"
#include "corefoundation/CFPreferences.h"
#include "device/HostFile.h"
#include "foundation/NSFileManager.h"
#include "themes/ThemeCheck.h"
#include "themes/ThemeNames.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kLargestTheme = 4u << 20; // bytes; as for themes of the device

PropertyList ValueOrFallback(const Dictionary& theme, const SettingKey& key) {
    const PropertyList* value = ThemeValue(theme, key);
    return value ? *value : *SettingsDefaults().objectForKey(key.name);
}

int List(const Command& command) {
    const auto listing = UsersThemes();
    if (!listing) return CouldNot(command.name, listing.reason());
    Json list = Json::array();
    for (const Theme& theme : listing->themes) {
        if (command.json)
            list.push_back({{"name", theme.name}, {"file", FileNameOf(theme)}});
        else
            Print(OneLineText(theme.name) + "\t" + OneLineText(FileNameOf(theme)) + "\n");
    }
    if (command.json) PrintJson(list);
    return std::max({FinishOutput(command.name), ComplainOfUnread(command, listing->unread)});
}

int Show(const Command& command) {
    const auto found = FindTheme(command);
    if (!found) return CouldNot(command.name, found.reason());
    const auto theme = ReadTheme(found->path);
    if (!theme) return CouldNot(command.name, found->path + ": " + theme.reason());
    Json settings = Json::array();
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList value = ValueOrFallback(*theme, key);
        const char* source = ThemeValue(*theme, key) ? "set" : "fallback";
        if (command.json)
            settings.push_back({{"key", key.name}, {"value", ValueJson(value)}, {"source", source}});
        else
            Print(std::string(key.name) + "\t" + OneLineText(value.description()) + "\t" + source + "\n");
    }
    if (command.json)
        PrintJson({{"name", found->name}, {"file", FileNameOf(*found)}, {"settings", settings}});
    return FinishOutput(command.name);
}

// Says so, when a theme of that name cannot be written or may not be.
std::optional<int> RefuseName(const Command& command, const std::string& name) {
    const std::string file = ThemeFileName(name);
    if (command.overwrite ||
        !NSFileManager::defaultManager().fileExistsAtPath(std::string(kThemeFolder) + file))
        return std::nullopt;
    return CouldNot(command.name, "there is a theme for the name '" + name + "' already (" + file +
                                      "); --overwrite replaces it");
}

int Write(const Command& command, const Dictionary& theme, const std::string& name) {
    const std::string path = std::string(kThemeFolder) + ThemeFileName(name);
    const auto written = WriteTheme(theme, path, command.overwrite ? Overwrite::yes : Overwrite::no);
    return written ? int{kDone} : CouldNot(command.name, path + ": " + written.reason());
}

int Save(const Command& command) {
    if (IsBlankThemeName(command.theme)) return WrongWords(command.name, "a theme needs a name");
    if (!IsUTF8(command.theme)) return WrongWords(command.name, "the name is not in UTF-8");
    if (const std::string why = WhyNoThemeFile(command.theme); !why.empty())
        return WrongWords(command.name, why);
    if (const auto refused = RefuseName(command, command.theme)) return *refused;
    const auto theme = ThemeOfSettings(command.theme);
    if (!theme) return CouldNot(command.name, theme.reason());
    return Write(command, *theme, command.theme);
}

int Load(const Command& command) {
    const auto found = FindTheme(command);
    if (!found) return CouldNot(command.name, found.reason());
    const auto theme = ReadTheme(found->path);
    if (!theme) return CouldNot(command.name, found->path + ": " + theme.reason());
    ApplyTheme(*theme);
    return SettingsOutcome(command);
}

int Delete(const Command& command) {
    const auto found = FindTheme(command);
    if (!found) return CouldNot(command.name, found.reason());
    if (const auto removed = RemoveTheme(found->path); !removed)
        return CouldNot(command.name, found->path + ": " + removed.reason());
    AnnounceThemeRemoved();
    return kDone;
}

int Restore(const Command& command) {
    const RestoredThemes restored = RestoreDefaultThemes();
    for (const auto& [path, outcome] : restored.failures)
        Complain(command.name, path + ": " + outcome.reason());
    for (const std::string& file : restored.files)
        Print(OneLineText(file) + "\n");
    const int printed = FinishOutput(command.name);
    return restored.failures.empty() ? printed : int{kFailed};
}

int Export(const Command& command) {
    const auto found = FindTheme(command);
    if (!found) return CouldNot(command.name, found.reason());
    const auto bytes = NSFileManager::defaultManager().contentsAtPath(found->path, kLargestTheme);
    if (!bytes) return CouldNot(command.name, found->path + ": " + bytes.reason());
    const auto written = WriteHostFile(command.output, *bytes, Durable::yes);
    return written ? int{kDone} : CouldNot(command.name, written.reason());
}

Result<Dictionary> ThemeOfHostFile(const std::string& file) {
    const auto bytes = ReadHostFile(file, kLargestTheme);
    if (!bytes) return bytes.error();
    const auto theme = ThemeFromArchive(*bytes);
    auto checked = theme ? CheckedTheme(*theme) : Result<Dictionary>(theme.error());
    if (!checked) return Error{file + ": " + checked.reason()};
    return checked;
}

int Import(const Command& command) {
    const auto theme = ThemeOfHostFile(command.output);
    if (!theme) return CouldNot(command.name, theme.reason());
    const std::string name = NameOfTheme(*theme);
    if (const auto refused = RefuseName(command, name)) return *refused;
    return Write(command, *theme, name);
}

Result<Dictionary> ThemeNamed(const std::string& name) {
    const auto found = FindTheme(name, "; name the file");
    if (!found) return found.error();
    auto theme = ReadTheme(found->path);
    if (!theme) return Error{found->path + ": " + theme.reason()};
    return theme;
}

int Diff(const Command& command) {
    const auto a = ThemeNamed(command.theme);
    if (!a) return CouldNot(command.name, a.reason());
    const auto b = ThemeNamed(command.otherTheme);
    if (!b) return CouldNot(command.name, b.reason());
    Json list = Json::array();
    for (const SettingKey& key : SettingsKeyTable()) {
        const PropertyList left = ValueOrFallback(*a, key), right = ValueOrFallback(*b, key);
        if (SameSettingValue(left, right)) continue;
        if (command.json)
            list.push_back({{"key", key.name}, {"a", ValueJson(left)}, {"b", ValueJson(right)}});
        else
            Print(std::string(key.name) + "\t" + OneLineText(left.description()) + "\t" +
                  OneLineText(right.description()) + "\n");
    }
    if (command.json) PrintJson(list);
    return FinishOutput(command.name);
}

struct Verb {
    std::string_view name;
    int (*run)(const Command& command);
};
constexpr Verb kVerbs[] = {{"theme list", List},     {"theme show", Show},     {"theme save", Save},
                           {"theme load", Load},     {"theme delete", Delete}, {"theme restore", Restore},
                           {"theme export", Export}, {"theme import", Import}, {"theme diff", Diff}};

} // namespace

int RunTheme(const Command& command) {
    for (const Verb& verb : kVerbs) {
        if (verb.name == command.name) return verb.run(command);
    }
    return WrongWords(command.name, "no such command");
}

} // namespace tallyforge
