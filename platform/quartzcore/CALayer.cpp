#include "quartzcore/CALayer.h"

#include "quartzcore/Presentation.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace tallyforge {
namespace {

// The bounds around the anchor point, which is what the transform acts on.
CGRect boundsAroundAnchor(const CGSize& size, const CGPoint& anchor) {
    return {{-anchor.x * size.width, -anchor.y * size.height}, size};
}

// The size whose transformed bounding box is the wanted one. Where there is none, as for most rotated
// boxes, the box that the wanted one makes when the transform is undone.
CGSize untransformedSize(const CGSize& wanted, const CGAffineTransform& t) {
    const CGFloat a = std::abs(t.a), b = std::abs(t.b), c = std::abs(t.c), d = std::abs(t.d);
    if (!(std::abs(t.a * t.d - t.b * t.c) > 1e-12 * (a * a + b * b + c * c + d * d))) return wanted;
    const CGFloat determinant = a * d - b * c;
    const CGSize exact{(wanted.width * d - wanted.height * c) / determinant,
                       (wanted.height * a - wanted.width * b) / determinant};
    if (std::abs(determinant) > 1e-9 * (a * d + b * c) && exact.width >= 0 && exact.height >= 0) return exact;
    return CGRectApplyAffineTransform({{0, 0}, wanted}, CGAffineTransformInvert(t)).size;
}

} // namespace

CALayer::~CALayer() {
    // Sublayers may be held by others, such as a job that still wants to animate them.
    for (const auto& sublayer : sublayers_)
        sublayer->superlayer_ = nullptr;
}

CGRect CALayer::frame() const {
    CGRect box = boundsAroundAnchor(bounds_.size, anchorPoint_);
    if (transform_ != CATransform3DIdentity) box = CGRectApplyAffineTransform(box, affineTransform());
    return {{position_.x + box.origin.x, position_.y + box.origin.y}, box.size};
}

uint64_t CALayer::nextSerial() {
    static std::atomic<uint64_t> last = 0;
    return ++last;
}

void CALayer::setFrame(const CGRect& frame) {
    const CGRect wanted = CGRectStandardize(frame);
    const CGAffineTransform t = affineTransform();
    const bool transformed = transform_ != CATransform3DIdentity && CGAffineTransformIsFinite(t);
    const CGSize size = transformed ? untransformedSize(wanted.size, t) : wanted.size;
    CGRect box = boundsAroundAnchor(size, anchorPoint_);
    if (transformed) box = CGRectApplyAffineTransform(box, t);
    setBounds({bounds_.origin, size});
    setPosition({wanted.origin.x - box.origin.x, wanted.origin.y - box.origin.y});
}

void CALayer::addSublayer(std::shared_ptr<CALayer> layer) {
    insertSublayer(std::move(layer), sublayers_.size());
}

void CALayer::insertSublayer(std::shared_ptr<CALayer> layer, size_t index) {
    for (const CALayer* ancestor = this; ancestor; ancestor = ancestor->superlayer_) {
        if (ancestor == layer.get()) return; // a layer cannot lie within itself
    }
    if (!layer) return;
    layer->removeFromSuperlayer();
    layer->superlayer_ = this;
    index = std::min(index, sublayers_.size());
    sublayers_.insert(sublayers_.begin() + std::ptrdiff_t(index), std::move(layer));
    changed();
}

void CALayer::removeFromSuperlayer() {
    if (!superlayer_) return;
    CALayer* const from = superlayer_;
    superlayer_ = nullptr;
    const auto place = std::find_if(from->sublayers_.begin(), from->sublayers_.end(),
                                    [this](const auto& sublayer) { return sublayer.get() == this; });
    const std::shared_ptr<CALayer> keptAlive = *place;
    from->sublayers_.erase(place);
    from->changed();
}

void CALayer::addAnimation(const CAAnimation& animation, std::string_view key) {
    std::shared_ptr<CAAnimation> stamped = animation.copy();
    if (stamped->beginTime() == 0 || std::isnan(stamped->beginTime()))
        stamped->setBeginTime(CACurrentMediaTime());
    std::erase_if(animations_, [key](const KeyedAnimation& present) { return present.key == key; });
    animations_.push_back({std::string(key), std::move(stamped)});
    changed();
}

void CALayer::removeAnimationForKey(std::string_view key) {
    if (std::erase_if(animations_, [key](const KeyedAnimation& present) { return present.key == key; }))
        changed();
}

void CALayer::removeAllAnimations() {
    if (animations_.empty()) return;
    animations_.clear();
    changed();
}

const CAAnimation* CALayer::animationForKey(std::string_view key) const {
    for (const KeyedAnimation& present : animations_) {
        if (present.key == key) return present.animation.get();
    }
    return nullptr;
}

void CALayer::changed() {
    for (CALayer* layer = this; layer; layer = layer->superlayer_)
        ++layer->revision_;
}

} // namespace tallyforge
