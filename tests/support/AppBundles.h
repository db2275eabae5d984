#pragma once

#include "foundation/PropertyListFormat.h"
#include "support/DeviceFixture.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace tallyforge::test {

inline PropertyList TextList(std::initializer_list<const char*> items) {
    PropertyList::Array list;
    for (const char* item : items)
        list.push_back(PropertyList::string(item));
    return PropertyList::array(std::move(list));
}

inline Dictionary DictionaryOf(std::initializer_list<std::pair<const char*, PropertyList>> entries) {
    Dictionary dictionary;
    for (const auto& [key, value] : entries)
        dictionary.setObjectForKey(value, key);
    return dictionary;
}

inline void WriteList(const TestDevice& device, const std::string& path, const Dictionary& list) {
    device.write(path, BinaryPropertyList::Serialize(PropertyList::dictionary(list)));
}

/// Puts an application of that identifier and display name into the folder ("/Applications/Mail.app").
inline void InstallApp(const TestDevice& device, const std::string& folder, const std::string& identifier,
                       const std::string& name, const Dictionary& more = {}) {
    Dictionary info = more;
    info.setObjectForKey(PropertyList::string(identifier), "CFBundleIdentifier");
    info.setObjectForKey(PropertyList::string(name), "CFBundleDisplayName");
    WriteList(device, folder + "/Info.plist", info);
}

inline const std::string kUserApps = "/var/containers/Bundle/Application/";

/// The same for an application of the user's, in a container of its own.
inline void InstallUserApp(const TestDevice& device, const std::string& identifier, const std::string& name,
                           const Dictionary& more = {}) {
    InstallApp(device, kUserApps + identifier + "/App.app", identifier, name, more);
}

} // namespace tallyforge::test
