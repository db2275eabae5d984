#pragma once

#include "foundation/PropertyList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The folder of one application on the device ("/Applications/Mail.app/").
struct ApplicationFolder {
    std::string path;  ///< with a "/" at its end
    std::string aside; ///< where the store's facts about it lie; empty for the system's own
    bool ofTheSystem() const { return aside.empty(); }
};

/// All folders on the device that are named as applications, the system's first. A place that is reached by
/// two ways is listed once.
std::vector<ApplicationFolder> ListApplicationFolders();
/// What tells whether an application has come or gone since.
std::string StampOfApplicationFolders();

/// What the property list at the path says; nothing when it is no sound one of a size that such lists have.
std::optional<Dictionary> ReadBundleList(const std::string& path);

/// The text under the key, when it is one and not empty.
const std::string* TextOf(const Dictionary& list, std::string_view key);

} // namespace tallyforge
