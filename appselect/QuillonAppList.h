#pragma once

#include "foundation/NSPredicate.h"
#include "runtime/ClassRegistry.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge {

/// The installed apps: display names by bundle identifiers. Every query asks the platform afresh. Main thread
/// only.
class QuillonAppList final : public NSObject {
  public:
    using Catalogue = std::map<std::string, std::string>;

    /// The one instance, made at its first use.
    static QuillonAppList& sharedApplicationList();

    /// The platform's entries of all installed apps; none where it keeps no list.
    std::vector<std::shared_ptr<NSObject>> listAllInstalledApps() const;
    /// Those that satisfy the predicate, all without one. Entries without a name or an identifier are left
    /// out; of two with one identifier the later counts.
    Catalogue applicationsFilteredUsingPredicate(const std::optional<NSPredicate>& predicate) const;

    Catalogue allApplications() const;
    Catalogue allNonHiddenApplications() const; ///< neither hidden nor web apps
    Catalogue allSystemApplications() const;    ///< of those, the system's
    Catalogue allUserApplications() const;      ///< of those, the user's
};

} // namespace tallyforge
