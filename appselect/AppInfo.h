#pragma once

#include "foundation/PropertyList.h"
#include "runtime/ClassRegistry.h"

#include <memory>
#include <string>

namespace tallyforge {

/// What is known of one installed app: the attributes of the platform's entry under the same names and in the
/// same kinds. One that the entry lacks is nothing.
class AppInfo final : public NSObject {
  public:
    using Value = std::shared_ptr<const PropertyList>;

    /// Filled by parseInfo.
    static std::shared_ptr<AppInfo> initWithLSApplicationProxy(NSObject& proxy);
    void parseInfo(NSObject& proxy);
    /// All attributes with their names, for people to read.
    std::string description() const;

    Value localizedName;
    Value shortVersionString;
    Value vendorName;
    Value applicationIdentifier;
    Value itemID;
    Value itemName;
    Value teamID;
    Value bundleURL;
    Value dataContainerURL;
    Value applicationType; ///< "System", "User"
    Value applicationVariant;
    Value appTags;
};

} // namespace tallyforge
