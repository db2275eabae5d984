#include "mobileservices/UIAssetManager.h"

#include "foundation/NSFileManager.h"
#include "mobileservices/AssetCatalog.h"
#include "mobileservices/LSApplicationWorkspace.h"

#include <map>
#include <tuple>

namespace tallyforge {

namespace {

constexpr size_t kMostKeptPictures = 64;
constexpr size_t kMostKeptPixels = size_t{512} * 512; // of one picture

using PictureKey = std::tuple<std::string, CatalogIdiom, CGFloat>;

/// A catalogue and what was decoded from it.
struct OpenCatalogue {
    std::shared_ptr<const AssetCatalog> catalog;
    std::map<PictureKey, UIImage> pictures;
};

/// The catalogue that was opened last. Managers are made for one question each, and the system's own
/// catalogue is large.
struct KeptCatalogue {
    std::string path;
    FileIdentity identity;
    std::shared_ptr<OpenCatalogue> open;
};

std::shared_ptr<OpenCatalogue> CatalogueAtPath(const std::string& path) {
    static KeptCatalogue kept;
    auto& files = NSFileManager::defaultManager();
    FileIdentity identity = files.identityOfFileAtPath(path);
    if (!identity.exists()) return nullptr;
    if (kept.open && kept.path == path && kept.identity == identity) return kept.open;
    kept = {};
    auto bytes = files.contentsAtPath(path, AssetCatalog::kMostFileBytes);
    if (!bytes) return nullptr;
    auto catalog = AssetCatalog::open(std::move(*bytes));
    if (!catalog) return nullptr;
    kept = {path, identity, std::make_shared<OpenCatalogue>(OpenCatalogue{*catalog, {}})};
    return kept.open;
}

class AssetManager final : public UIAssetManager {
  public:
    bool initWithNameInBundleIdiom(std::string_view name, std::string_view bundlePath,
                                   UIUserInterfaceIdiom idiom) override {
        open_ = nullptr;
        idiom_ = idiom == UIUserInterfaceIdiomPad ? CatalogIdiom::pad : CatalogIdiom::phone;
        if (name.empty() || name.find('/') != std::string_view::npos) return false;
        std::string path(bundlePath);
        if (!path.ends_with('/')) path += '/';
        open_ = CatalogueAtPath(path + std::string(name) + ".car");
        return open_ != nullptr;
    }

    std::vector<std::string> valueForKeyPath(std::string_view keyPath) const override {
        if (!open_ || keyPath != "catalog.themeStore.store.allRenditionNames") return {};
        return open_->catalog->facetNames();
    }

    UIImage imageNamed(std::string_view name) const override {
        if (!open_) return {};
        CGFloat scale = UIScreen::mainScreen().scale();
        PictureKey key{name, idiom_, scale};
        if (auto known = open_->pictures.find(key); known != open_->pictures.end()) return known->second;
        auto picture = open_->catalog->pictureNamed(name, idiom_, scale);
        if (!picture.bitmap) return {};
        UIImage image = UIImage::imageWithCGImage(picture.bitmap, picture.scale, UIImageOrientationUp);
        if (picture.bitmap->pixels().size() > kMostKeptPixels) return image;
        if (open_->pictures.size() >= kMostKeptPictures) open_->pictures.clear();
        open_->pictures.emplace(std::move(key), image);
        return image;
    }

  private:
    std::shared_ptr<OpenCatalogue> open_;
    CatalogIdiom idiom_ = CatalogIdiom::phone;
};

} // namespace

void RegisterMobileServices() {
    RegisterClass("_UIAssetManager", {[] { return std::make_shared<AssetManager>(); }});
    RegisterApplicationWorkspace();
}

} // namespace tallyforge
