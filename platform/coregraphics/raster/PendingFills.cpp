#include "rastergraphics/PendingFills.h"

#include "rastergraphics/PixelOps.h"

#include <cstddef>
#include <utility>

namespace tallyforge {

namespace {

constexpr int kLarge = 4096; // pixels
constexpr size_t kMost = 64;
/// Strips of fewer rows are not worth keeping apart.
constexpr int kLowest = 4;

bool overlap(const PixelRect& a, const PixelRect& b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

} // namespace

bool PendingFills::large(const PixelRect& rect) {
    return int64_t(rect.width()) * rect.height() >= kLarge;
}

void PendingFills::write(const Fill& fill) const {
    const PixelRect& rect = fill.rect;
    Ink ink;
    ink.pixel = fill.pixel;
    uint32_t* pixels = bitmap_.pixels + ptrdiff_t(rect.top) * bitmap_.width + rect.left;
    if (rect.width() == bitmap_.width) return InkOver(pixels, rect.width() * rect.height(), ink);
    for (int y = rect.top; y < rect.bottom; ++y, pixels += bitmap_.width)
        InkOver(pixels, rect.width(), ink);
}

void PendingFills::add(const PixelRect& rect, uint32_t pixel) {
    const size_t before = fills_.size();
    size_t kept = 0;
    std::vector<Fill> rest; // what sticks out of the ones that are cut
    for (size_t i = 0; i < before; ++i) {
        const Fill fill = fills_[i];
        if (!overlap(fill.rect, rect)) {
            fills_[kept++] = fill;
            continue;
        }
        const PixelRect& old = fill.rect;
        const PixelRect middle{old.left, std::max(old.top, rect.top), old.right,
                               std::min(old.bottom, rect.bottom)};
        for (const PixelRect& part : {PixelRect{old.left, old.top, old.right, rect.top},
                                      PixelRect{old.left, rect.bottom, old.right, old.bottom},
                                      PixelRect{old.left, middle.top, rect.left, middle.bottom},
                                      PixelRect{rect.right, middle.top, old.right, middle.bottom}}) {
            if (!part.empty()) rest.push_back({part, fill.pixel});
        }
    }
    fills_.resize(kept);
    fills_.insert(fills_.end(), rest.begin(), rest.end());
    if (fills_.size() >= kMost) settleAll();
    fills_.push_back({rect, pixel});
}

void PendingFills::settle(const PixelRect& area) {
    for (size_t i = 0; i < fills_.size();) {
        const Fill fill = fills_[i];
        if (!overlap(fill.rect, area)) {
            ++i;
            continue;
        }
        // Whole rows of it: the rest stays in two parts at most.
        PixelRect strip = fill.rect;
        if (area.top - strip.top >= kLowest) strip.top = area.top;
        if (strip.bottom - area.bottom >= kLowest) strip.bottom = area.bottom;
        write({strip, fill.pixel});
        const PixelRect above{fill.rect.left, fill.rect.top, fill.rect.right, strip.top};
        const PixelRect below{fill.rect.left, strip.bottom, fill.rect.right, fill.rect.bottom};
        if (!above.empty() && !below.empty()) {
            fills_[i].rect = above;
            fills_.insert(fills_.begin() + ptrdiff_t(i) + 1, {below, fill.pixel});
            i += 2;
        } else if (!above.empty() || !below.empty()) {
            fills_[i++].rect = above.empty() ? below : above;
        } else {
            fills_.erase(fills_.begin() + ptrdiff_t(i));
        }
    }
}

void PendingFills::settleAll() {
    for (const Fill& fill : fills_)
        write(fill);
    fills_.clear();
}

} // namespace tallyforge
