#pragma once

#include "foundation/PropertyList.h"
#include "runtime/ClassRegistry.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The system's list of installed applications, known on the device as "LSApplicationWorkspace" and reached
/// only by that name through the class registry, by the operation "defaultWorkspace" of the class.
class LSApplicationWorkspace : public NSObject {
  public:
    /// One `LSApplicationProxy` for every application that is installed now: the system's, then the user's,
    /// each in the order of their folders. Attributes are read by their names ("localizedName", "appTags",
    /// ...). Folders that are no sound application are left out.
    virtual std::vector<std::shared_ptr<NSObject>> allInstalledApplications() const = 0;
};

/// Makes the class known by name. Part of RegisterMobileServices, and enough for those who draw nothing.
void RegisterApplicationWorkspace();

/// The bundle of one installed application.
struct LSBundle {
    std::string path; ///< of its folder on the device, with a "/" at its end
    Dictionary info;  ///< what its Info.plist says
};
/// The bundle of the application of that identifier; nothing when it is not installed.
std::optional<LSBundle> LSBundleForIdentifier(std::string_view identifier);

} // namespace tallyforge
