#include "cli/SettingsCommands.h"

#include "cli/Device.h"
#include "cli/Report.h"
#include "cli/ValueJson.h"
#include "cli/ValueText.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "settings/Settings.h"
#include "settings/SettingsKeys.h"

#include <nlohmann/json.hpp>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;

// The close box's preset is no look setting, but people may set it all the same.
constexpr SettingKey kPresetKey{
    kPresetCloseBoxKey, MarkKind::closeBox, SettingType::code, 0, 0, {}, 0, std::span(&kPresetCrossOnly, 1)};

const SettingKey* FindKey(std::string_view name) {
    return name == kPresetCloseBoxKey ? &kPresetKey : FindSettingKey(name);
}

PropertyList Fallback(const SettingKey& key) {
    const PropertyList* value = SettingsDefaults().objectForKey(key.name);
    return value ? *value : PropertyList::integer(0);
}

struct Reading {
    PropertyList value;
    bool set;
};

Reading Read(const SettingKey& key) {
    const PropertyList* value = SettingsSnapshot().objectForKey(key.name);
    return value ? Reading{*value, true} : Reading{Fallback(key), false};
}

const char* Source(const Reading& reading) {
    return reading.set ? "set" : "fallback";
}

std::string ToText(const PropertyList& value) {
    return OneLineText(value.description());
}

int UnknownKey(const Command& command, const std::string& key) {
    return WrongWords(command.name, "'" + key + "' is no setting; 'tallyforge list' names them");
}

int SaveAndAnnounce(const Command& command) {
    const bool saved = CFPreferencesAppSynchronize(kSettingsDomain);
    if (saved) {
        NSUserDefaults::standardUserDefaults().synchronize();
        AnnounceSettingsChanged();
    }
    return SettingsOutcome(command);
}

} // namespace

int RunList(const Command& command) {
    LoadSettingsSnapshot();
    WarnOfUnreadableSettings(command);
    Json list = Json::array();
    for (const SettingKey& key : SettingsKeyTable()) {
        Reading reading = Read(key);
        if (command.json)
            list.push_back(
                {{"key", key.name}, {"value", ValueJson(reading.value)}, {"source", Source(reading)}});
        else
            Print(std::string(key.name) + "\t" + ToText(reading.value) + "\t" + Source(reading) + "\n");
    }
    if (command.json) PrintJson(list);
    return FinishOutput(command.name);
}

int RunGet(const Command& command) {
    const SettingKey* key = FindKey(command.words.front());
    if (!key) return UnknownKey(command, command.words.front());
    LoadSettingsSnapshot();
    WarnOfUnreadableSettings(command);
    Reading reading = Read(*key);
    if (command.json)
        PrintJson({{"key", key->name}, {"value", ValueJson(reading.value)}, {"source", Source(reading)}});
    else
        Print(ToText(reading.value) + "\n");
    return FinishOutput(command.name);
}

int RunSet(const Command& command) {
    std::vector<std::pair<std::string, PropertyList>> values;
    for (size_t i = 0; i + 1 < command.words.size(); i += 2) {
        const SettingKey* key = FindKey(command.words[i]);
        if (!key) return UnknownKey(command, command.words[i]);
        auto value = SettingFromText(*key, command.words[i + 1]);
        if (!value) return WrongWords(command.name, value.reason());
        values.emplace_back(command.words[i], std::move(*value));
    }
    for (auto& [key, value] : values)
        CFPreferencesSetAppValue(key, std::move(value), kSettingsDomain);
    return SaveAndAnnounce(command);
}

int RunUnset(const Command& command) {
    for (const std::string& word : command.words) {
        if (!FindKey(word)) return UnknownKey(command, word);
    }
    for (const std::string& word : command.words)
        CFPreferencesSetAppValue(word, std::nullopt, kSettingsDomain);
    return SaveAndAnnounce(command);
}

} // namespace tallyforge
