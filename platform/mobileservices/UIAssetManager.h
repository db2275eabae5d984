#pragma once

#include "runtime/ClassRegistry.h"
#include "uikit/UIDevice.h"
#include "uikit/UIImage.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// The system's reader of compiled asset catalogues, known on the device as "_UIAssetManager" and reached
/// only by that name through the class registry.
class UIAssetManager : public NSObject {
  public:
    /// Opens "<bundle>/<name>.car" on the device; false when there is none or it cannot be read.
    virtual bool initWithNameInBundleIdiom(std::string_view name, std::string_view bundlePath,
                                           UIUserInterfaceIdiom idiom) = 0;
    /// What the key path "catalog.themeStore.store.allRenditionNames" gives: the facet names of the
    /// catalogue, sorted, each once. Empty for any other key path.
    virtual std::vector<std::string> valueForKeyPath(std::string_view keyPath) const = 0;
    /// The rendition of that name that fits the idiom and the screen's scale best; no image without one.
    virtual UIImage imageNamed(std::string_view name) const = 0;
};

/// Makes the classes of this folder known by name. Called once by the host.
void RegisterMobileServices();

} // namespace tallyforge
