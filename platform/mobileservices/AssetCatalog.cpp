#include "mobileservices/AssetCatalog.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace tallyforge {

namespace {

constexpr uint32_t kCatalogHeader = FourLetters("RATC");
constexpr uint32_t kKeyFormat = FourLetters("tmfk");
constexpr uint32_t kMostKeyAttributes = 64;
constexpr double kMostScale = 16;
// How many broken renditions are passed over before a name counts as having no picture.
constexpr size_t kMostTries = 4;

Result<std::vector<uint16_t>> ReadKeyFormat(Bytes bytes) {
    ByteReader in(bytes);
    uint32_t magic = in.little32();
    in.little32(); // version
    uint32_t count = in.little32();
    if (!in.ok() || magic != kKeyFormat || count > kMostKeyAttributes)
        return Error{"the catalogue does not say how its keys are made"};
    std::vector<uint16_t> attributes;
    for (uint32_t i = 0; i < count; i++) {
        uint32_t attribute = in.little32();
        attributes.push_back(uint16_t(std::min<uint32_t>(attribute, CatalogKey::kAttributes)));
    }
    if (!in.ok()) return Error{"the catalogue does not say how its keys are made"};
    return attributes;
}

} // namespace

struct AssetCatalog::Candidate {
    std::tuple<int, int, int, double> rank; // smaller is better
    CatalogRendition rendition;
    double scale = 1;
};

Result<std::shared_ptr<const AssetCatalog>> AssetCatalog::open(std::vector<uint8_t> file) {
    if (file.size() > kMostFileBytes) return Error{"the catalogue is too large"};
    std::shared_ptr<AssetCatalog> catalog(new AssetCatalog(std::move(file)));
    if (auto read = catalog->readIndexes(); !read) return read.error();
    return std::shared_ptr<const AssetCatalog>(catalog);
}

Status AssetCatalog::readIndexes() {
    auto store = BOMStore::open(file_);
    if (!store) return store.error();
    if (ByteReader(store->blockNamed("CARHEADER")).little32() != kCatalogHeader)
        return Error{"not a catalogue of assets"};
    auto keyFormat = ReadKeyFormat(store->blockNamed("KEYFORMAT"));
    if (!keyFormat) return keyFormat.error();
    auto facets = store->entriesOfTree("FACETKEYS");
    if (!facets) return facets.error();
    auto renditions = store->entriesOfTree("RENDITIONS");
    if (!renditions) return renditions.error();

    for (const auto& [key, value] : *facets) {
        std::string name(key.begin(), std::find(key.begin(), key.end(), 0));
        ByteReader in(value);
        in.little32(); // a cursor's hot spot
        uint16_t count = in.little16();
        Attributes attributes;
        for (uint16_t i = 0; i < count && i < kMostKeyAttributes; i++) {
            uint16_t attribute = in.little16();
            attributes.emplace_back(attribute, in.little16());
        }
        if (in.ok() && !name.empty() && name.size() <= kMostNameBytes)
            facets_.try_emplace(std::move(name), std::move(attributes));
    }
    for (const auto& [key, value] : *renditions) {
        ByteReader in(key);
        Indexed indexed{{}, value};
        for (uint16_t attribute : *keyFormat)
            indexed.key.set(attribute, in.little16());
        if (in.ok()) renditions_.push_back(indexed);
    }
    return Done{};
}

std::vector<std::string> AssetCatalog::facetNames() const {
    std::vector<std::string> names;
    names.reserve(facets_.size());
    for (const auto& [name, attributes] : facets_)
        names.push_back(name);
    return names;
}

std::vector<AssetCatalog::Candidate> AssetCatalog::candidatesFor(std::string_view name, CatalogIdiom idiom,
                                                                 double screenScale) const {
    auto facet = facets_.find(name);
    if (facet == facets_.end()) return {};
    CatalogKey plain;
    for (auto [attribute, value] : facet->second)
        plain.set(attribute, value);

    std::vector<Candidate> candidates;
    for (const Indexed& indexed : renditions_) {
        bool belongs = std::all_of(facet->second.begin(), facet->second.end(), [&](auto wanted) {
            return indexed.key.value(wanted.first) == wanted.second;
        });
        uint16_t madeFor = indexed.key[CatalogAttribute::idiom];
        if (!belongs || (madeFor != uint16_t(idiom) && madeFor != uint16_t(CatalogIdiom::universal)))
            continue;
        auto rendition = CatalogRendition::parse(indexed.bytes);
        if (!rendition || !rendition->isPicture()) continue;

        int specials = 0;
        for (uint16_t attribute = 0; attribute < CatalogKey::kAttributes; attribute++) {
            bool isRankedItself = attribute == uint16_t(CatalogAttribute::scale) ||
                                  attribute == uint16_t(CatalogAttribute::idiom);
            specials += !isRankedItself && indexed.key.value(attribute) != plain.value(attribute);
        }
        double scale = indexed.key[CatalogAttribute::scale];
        if (scale == 0) scale = rendition->scale > 0 ? rendition->scale : 1;
        if (scale > kMostScale) continue;
        int side = scale == screenScale ? 0 : scale > screenScale ? 1 : 2;
        candidates.push_back({{madeFor != uint16_t(idiom), specials, side, std::abs(scale - screenScale)},
                              std::move(*rendition),
                              scale});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.rank < b.rank; });
    return candidates;
}

AssetCatalog::Picture AssetCatalog::pictureNamed(std::string_view name, CatalogIdiom idiom,
                                                 double scale) const {
    std::vector<Candidate> candidates = candidatesFor(name, idiom, scale);
    candidates.resize(std::min(candidates.size(), kMostTries));
    for (const Candidate& candidate : candidates) {
        if (CGImageRef bitmap = bitmapOf(candidate.rendition)) return {bitmap, candidate.scale};
    }
    return {};
}

CGImageRef AssetCatalog::bitmapOf(const CatalogRendition& rendition) const {
    if (!rendition.link) return rendition.decode();

    // A link leads to a picture with pixels of its own, never to another link.
    const auto& link = *rendition.link;
    auto target = std::find_if(renditions_.begin(), renditions_.end(),
                               [&link](const Indexed& indexed) { return indexed.key == link.key; });
    if (target == renditions_.end()) return nullptr;
    auto packed = CatalogRendition::parse(target->bytes);
    if (!packed || link.width == 0 || link.height == 0) return nullptr;
    if (link.x > packed->width || link.width > packed->width - link.x || link.bottom > packed->height ||
        link.height > packed->height - link.bottom)
        return nullptr;
    CGImageRef whole = packed->decode();
    if (!whole || uint32_t(whole->width()) != packed->width || uint32_t(whole->height()) != packed->height)
        return nullptr;

    auto part = std::make_shared<CGImage>(int(link.width), int(link.height));
    int top = int(packed->height - link.bottom - link.height);
    for (int y = 0; y < part->height(); y++)
        std::copy_n(whole->row(top + y) + link.x, link.width, part->row(y));
    return part;
}

} // namespace tallyforge
