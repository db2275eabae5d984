#pragma once

#include "foundation/Result.h"
#include "mobileservices/BOMStore.h"
#include "mobileservices/CatalogRendition.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyforge {

/// The kinds of device as catalogues number them.
enum class CatalogIdiom : uint16_t { universal = 0, phone = 1, pad = 2 };

/// A compiled asset catalogue. Opening reads the indexes only; pixels are made when they are asked for.
class AssetCatalog {
  public:
    static constexpr size_t kMostFileBytes = 64u << 20;
    static constexpr size_t kMostNameBytes = 256;

    /// Fails when the bytes are no catalogue or its indexes are broken. Renditions may still turn out to be.
    static Result<std::shared_ptr<const AssetCatalog>> open(std::vector<uint8_t> file);

    /// The names pictures are asked for by, sorted, each once.
    std::vector<std::string> facetNames() const;

    struct Picture {
        CGImageRef bitmap;
        double scale = 1; ///< pixels a point
    };
    /// The pictures of that name made for the idiom come before those for all, plain ones before those made
    /// for special circumstances, and then those of the scale before the next sharper and the next coarser
    /// ones. The first that can be decoded; no bitmap when there is none.
    Picture pictureNamed(std::string_view name, CatalogIdiom idiom, double scale) const;

    /// Every rendition, those behind no name and those for other devices too.
    struct Indexed {
        CatalogKey key;
        Bytes bytes; ///< for CatalogRendition::parse
    };
    const std::vector<Indexed>& renditions() const { return renditions_; }
    /// The pixels of one of them, cut out of another one if it is a link. nullptr when it cannot be decoded.
    CGImageRef bitmapOf(const CatalogRendition& rendition) const;

  private:
    struct Candidate;

    explicit AssetCatalog(std::vector<uint8_t> file) : file_(std::move(file)) {}
    Status readIndexes();
    std::vector<Candidate> candidatesFor(std::string_view name, CatalogIdiom idiom, double scale) const;

    using Attributes = std::vector<std::pair<uint16_t, uint16_t>>;
    std::vector<uint8_t> file_;
    std::map<std::string, Attributes, std::less<>> facets_;
    std::vector<Indexed> renditions_;
};

} // namespace tallyforge
