// The preferences and the themes beside libplist: reading all keys from the file, decoding and encoding a
// theme.

#include "BenchDevice.h"
#include "PairedRuns.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/Settings.h"
#include "settings/SettingsKeys.h"
#include "themes/ThemeFiles.h"

#include <plist/plist.h>

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyforge::bench {

namespace {

using Node = std::unique_ptr<void, void (*)(plist_t)>;

Node Owned(plist_t node) {
    return {node, plist_free};
}

/// Every setting under its key, none of them at its fallback.
Dictionary AllSettings() {
    Dictionary settings;
    for (const SettingKey& key : SettingsKeyTable())
        settings.setObjectForKey(key.type == SettingType::color ? PropertyList::string("#3355FF")
                                                                : PropertyList::floatNumber(1.25F),
                                 key.name);
    return settings;
}

Dictionary ExampleTheme() {
    Dictionary theme;
    theme.setObjectForKey(PropertyList::string("Northern Lights"), kThemeNameKey);
    for (const SettingKey& key : SettingsKeyTable())
        theme.setObjectForKey(*AllSettings().objectForKey(key.name), key.name);
    return theme;
}

std::vector<uint8_t> ReadFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    Demand(file >= 0 && fstat(file, &status) == 0, "a file could not be opened");
    std::vector<uint8_t> bytes(static_cast<size_t>(status.st_size));
    Demand(read(file, bytes.data(), bytes.size()) == status.st_size, "a file could not be read");
    close(file);
    return bytes;
}

Node Parse(const std::vector<uint8_t>& bytes) {
    plist_t node = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()), static_cast<uint32_t>(bytes.size()), &node);
    Demand(node != nullptr, "libplist could not read a list");
    return Owned(node);
}

/// The value as its reader uses it; the sum keeps the compiler from leaving it out.
double ValueOf(plist_t node) {
    if (plist_get_node_type(node) == PLIST_REAL) {
        double number = 0;
        plist_get_real_val(node, &number);
        return number;
    }
    uint64_t length = 0;
    plist_get_string_ptr(node, &length);
    return static_cast<double>(length);
}

double ValueOf(const PropertyList& value) {
    return value.isNumber() ? value.floatValue() : static_cast<double>(value.asString()->size());
}

double sum = 0;

void ReadKeysWithOurs() {
    CFPreferencesForgetAll(); // or nothing would be read
    const auto keys =
        CFPreferencesCopyKeyList(kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    Demand(keys && keys->size() == SettingsKeyTable().size(), "keys are missing");
    const Dictionary values =
        CFPreferencesCopyMultiple(*keys, kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    for (const SettingKey& key : SettingsKeyTable())
        sum += ValueOf(*values.objectForKey(key.name));
}

void ReadKeysWithPeer(const std::string& path) {
    const Node list = Parse(ReadFile(path));
    for (const SettingKey& key : SettingsKeyTable()) {
        const plist_t value = plist_dict_get_item(list.get(), key.name.data());
        Demand(value != nullptr, "libplist misses a key");
        sum += ValueOf(value);
    }
}

void DecodeWithOurs(const std::vector<uint8_t>& archive) {
    const auto theme = ThemeFromArchive(archive);
    Demand(bool(theme), "a theme could not be read");
    for (const SettingKey& key : SettingsKeyTable())
        sum += ValueOf(*ThemeValue(*theme, key));
}

plist_t Resolved(plist_t objects, plist_t uid) {
    uint64_t index = 0;
    plist_get_uid_val(uid, &index);
    return plist_array_get_item(objects, static_cast<uint32_t>(index));
}

/// Parses, follows the root's keys and values, and makes a dictionary of them.
void DecodeWithPeer(const std::vector<uint8_t>& archive) {
    const Node list = Parse(archive);
    const plist_t objects = plist_dict_get_item(list.get(), "$objects");
    const plist_t root = Resolved(objects, plist_access_path(list.get(), 2, "$top", "root"));
    const plist_t names = plist_dict_get_item(root, "NS.keys"),
                  values = plist_dict_get_item(root, "NS.objects");
    const Node theme = Owned(plist_new_dict());
    for (uint32_t i = 0; i < plist_array_get_size(names); ++i) {
        const char* name = plist_get_string_ptr(Resolved(objects, plist_array_get_item(names, i)), nullptr);
        plist_dict_set_item(theme.get(), name,
                            plist_copy(Resolved(objects, plist_array_get_item(values, i))));
    }
    for (const SettingKey& key : SettingsKeyTable()) {
        const plist_t value = plist_dict_get_item(theme.get(), key.name.data());
        Demand(value != nullptr, "libplist misses a value of the theme");
        sum += ValueOf(value);
    }
}

void EncodeWithOurs(const Dictionary& theme) {
    sum += static_cast<double>(
        NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme)).size());
}

/// Appends the object to the archive's table and its UID to the list that names it.
void Archive(plist_t objects, plist_t uids, plist_t object) {
    plist_array_append_item(uids, plist_new_uid(plist_array_get_size(objects)));
    plist_array_append_item(objects, object);
}

plist_t ClassRecord() {
    plist_t record = plist_new_dict(), classes = plist_new_array();
    for (const char* name : {"NSMutableDictionary", "NSDictionary", "NSObject"})
        plist_array_append_item(classes, plist_new_string(name));
    plist_dict_set_item(record, "$classname", plist_new_string("NSMutableDictionary"));
    plist_dict_set_item(record, "$classes", classes);
    return record;
}

void EncodeWithPeer(const Dictionary& theme) {
    const Node archive = Owned(plist_new_dict());
    plist_t top = plist_new_dict(), objects = plist_new_array(), root = plist_new_dict();
    plist_t names = plist_new_array(), values = plist_new_array();
    plist_dict_set_item(top, "root", plist_new_uid(1));
    plist_array_append_item(objects, plist_new_string("$null"));
    plist_array_append_item(objects, root);
    for (const Dictionary::Entry& entry : theme)
        Archive(objects, names, plist_new_string(entry.key.c_str()));
    for (const Dictionary::Entry& entry : theme)
        Archive(objects, values,
                entry.value.isString() ? plist_new_string(entry.value.asString()->c_str())
                                       : plist_new_real(entry.value.doubleValue()));
    plist_dict_set_item(root, "$class", plist_new_uid(plist_array_get_size(objects)));
    plist_array_append_item(objects, ClassRecord());
    plist_dict_set_item(root, "NS.keys", names);
    plist_dict_set_item(root, "NS.objects", values);
    plist_dict_set_item(archive.get(), "$version", plist_new_uint(100'000));
    plist_dict_set_item(archive.get(), "$archiver", plist_new_string("NSKeyedArchiver"));
    plist_dict_set_item(archive.get(), "$top", top);
    plist_dict_set_item(archive.get(), "$objects", objects);
    char* bytes = nullptr;
    uint32_t size = 0;
    plist_to_bin(archive.get(), &bytes, &size);
    Demand(bytes != nullptr, "libplist could not write a theme");
    sum += size;
    plist_to_bin_free(bytes);
}

} // namespace

} // namespace tallyforge::bench

int main(int count, char** words) {
    using namespace tallyforge;
    using namespace tallyforge::bench;
    const PairedRuns runs(count, words, "Property lists by ours and by libplist.");
    const BenchDevice device;
    const std::string path = device.root() + CFPreferencesPath(kSettingsDomain);
    WriteFile(path, BinaryPropertyList::Serialize(PropertyList::dictionary(AllSettings())));
    const Dictionary theme = ExampleTheme();
    const auto archive = NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(theme));
    runs.measure("read-keys", ReadKeysWithOurs, [&] { ReadKeysWithPeer(path); });
    runs.measure(
        "decode-theme", [&] { DecodeWithOurs(archive); }, [&] { DecodeWithPeer(archive); });
    runs.measure(
        "encode-theme", [&] { EncodeWithOurs(theme); }, [&] { EncodeWithPeer(theme); });
    Demand(sum > 0, "nothing was read");
    return 0;
}
