#pragma once

#include "coregraphics/CGImage.h"
#include "rastergraphics/PixelRect.h"
#include "rastergraphics/Resample.h"

#include <array>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tallyforge {

/// Whether an image is drawn with its sides changed over.
struct Mirroring {
    bool across = false;
    bool down = false;
    bool operator==(const Mirroring&) const = default;
};

/// The image so mirrored, which is itself where nothing is changed over.
class Mirrored {
  public:
    Mirrored(const CGImage& image, const Mirroring& mirroring);
    const CGImage& image() const { return turned_ ? *turned_ : original_; }

  private:
    const CGImage& original_;
    std::optional<CGImage> turned_;
};

/// Images as they were drawn lately, at their size in pixels and their part of a pixel: an icon that stays is
/// scaled once, however often it is painted. What is seen only once, as what moves is, is not kept.
class PictureCache {
  public:
    struct Picture {
        PixelRect area; ///< from 0, 0 on
        std::vector<uint32_t> pixels;
    };
    /// The image stretched over the place, which begins in the first pixel. Nothing when it was not seen
    /// lately, or is too large to be kept.
    std::shared_ptr<const Picture> find(const CGImageRef& image, const StretchTarget& within,
                                        const Mirroring& mirrored);

  private:
    struct Key {
        const CGImage* image = nullptr;
        std::array<double, 4> place{}; ///< left, top, right, bottom
        Mirroring mirrored;
        bool operator==(const Key&) const = default;
    };
    struct Hash {
        size_t operator()(const Key& key) const;
    };
    struct Entry {
        Key key;
        std::weak_ptr<const CGImage> image; ///< another image may come to lie at the same address
        std::shared_ptr<const Picture> picture;
    };
    struct Seen {
        Key key;
        std::weak_ptr<const CGImage> image;
    };

    std::mutex mutex_;
    std::list<Entry> entries_; ///< the latest used first
    std::unordered_map<Key, std::list<Entry>::iterator, Hash> byKey_;
    size_t bytes_ = 0;
    std::array<Seen, 32> seenOnce_; ///< the oldest is replaced
    size_t nextSeen_ = 0;
};

} // namespace tallyforge
