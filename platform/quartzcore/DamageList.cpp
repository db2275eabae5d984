#include "quartzcore/DamageList.h"

#include <algorithm>
#include <limits>

namespace tallyforge {
namespace {

constexpr size_t most = 8;
/// So many pixels are painted about as fast as the tree is walked once more for a rectangle of their own.
constexpr CGFloat worthOneWalk = 1024;

CGFloat areaOf(const CGRect& r) {
    return r.size.width * r.size.height;
}

bool overlap(const CGRect& a, const CGRect& b) {
    return a.origin.x < b.origin.x + b.size.width && b.origin.x < a.origin.x + a.size.width &&
           a.origin.y < b.origin.y + b.size.height && b.origin.y < a.origin.y + a.size.height;
}

// Pixels that are painted in vain when the two become one.
CGFloat waste(const CGRect& a, const CGRect& b) {
    return areaOf(CGRectUnion(a, b)) - areaOf(a) - areaOf(b);
}

} // namespace

void DamageList::add(CGRect pixels) {
    if (!(pixels.size.width > 0 && pixels.size.height > 0)) return;
    // What is taken in may make it overlap with others.
    const auto joins = [&pixels](const CGRect& other) {
        return overlap(pixels, other) || waste(pixels, other) <= worthOneWalk;
    };
    while (true) {
        auto other = std::find_if(rects_.begin(), rects_.end(), joins);
        if (other == rects_.end()) {
            if (rects_.size() < most) break;
            other = std::min_element(rects_.begin(), rects_.end(), [&pixels](const auto& a, const auto& b) {
                return waste(pixels, a) < waste(pixels, b);
            });
        }
        pixels = CGRectUnion(pixels, *other);
        rects_.erase(other);
    }
    rects_.push_back(pixels);
}

} // namespace tallyforge
