#include "rastergraphics/PictureCache.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace tallyforge {

namespace {

constexpr size_t kKeptBytes = size_t(2) << 20;
constexpr size_t kLargest = size_t(256) << 10;

} // namespace

Mirrored::Mirrored(const CGImage& image, const Mirroring& mirroring) : original_(image) {
    if (!mirroring.across && !mirroring.down) return;
    CGImage& turned = turned_.emplace(image.width(), image.height());
    for (int y = 0; y < image.height(); ++y) {
        const uint32_t* from = image.row(mirroring.down ? image.height() - 1 - y : y);
        if (mirroring.across)
            std::reverse_copy(from, from + image.width(), turned.row(y));
        else
            std::copy_n(from, image.width(), turned.row(y));
    }
}

size_t PictureCache::Hash::operator()(const Key& key) const {
    size_t hash = std::hash<const CGImage*>()(key.image);
    for (double part : key.place)
        hash = hash * 31 + std::hash<double>()(part);
    return hash * 4 + size_t(key.mirrored.across) * 2 + size_t(key.mirrored.down);
}

std::shared_ptr<const PictureCache::Picture>
PictureCache::find(const CGImageRef& image, const StretchTarget& within, const Mirroring& mirrored) {
    if ((within.right + 1) * (within.bottom + 1) * sizeof(uint32_t) > kLargest) return nullptr;
    const Key key{image.get(), {within.left, within.top, within.right, within.bottom}, mirrored};
    const auto sameImage = [&image](const std::weak_ptr<const CGImage>& other) {
        return !other.owner_before(image) && !image.owner_before(other);
    };

    std::lock_guard lock(mutex_);
    if (auto known = byKey_.find(key); known != byKey_.end()) {
        entries_.splice(entries_.begin(), entries_, known->second);
        if (sameImage(known->second->image)) return known->second->picture;
        bytes_ -= known->second->picture->pixels.size() * sizeof(uint32_t);
        entries_.erase(known->second);
        byKey_.erase(known);
    }
    const bool seen = std::ranges::any_of(
        seenOnce_, [&](const Seen& other) { return other.key == key && sameImage(other.image); });
    if (!seen) {
        seenOnce_[nextSeen_++ % seenOnce_.size()] = {key, image};
        return nullptr;
    }
    auto picture = std::make_shared<Picture>();
    picture->area = {0, 0, int(std::ceil(within.right)), int(std::ceil(within.bottom))};
    Stretch(Mirrored(*image, mirrored).image(), within, picture->area, picture->pixels);
    bytes_ += picture->pixels.size() * sizeof(uint32_t);
    entries_.push_front({key, image, picture});
    byKey_[key] = entries_.begin();
    while (bytes_ > kKeptBytes) {
        bytes_ -= entries_.back().picture->pixels.size() * sizeof(uint32_t);
        byKey_.erase(entries_.back().key);
        entries_.pop_back();
    }
    return picture;
}

} // namespace tallyforge
