#include "quartzcore/FrameUpdate.h"

#include "quartzcore/DamageList.h"
#include "quartzcore/LayerState.h"
#include "quartzcore/RenderServer.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace tallyforge {
namespace {

// What a layer's superlayers have to do with how it is drawn.
struct Surroundings {
    CGAffineTransform superToPixels;
    CGFloat handedDown = 1;
    CGRect clip; // whole pixels
    bool operator==(const Surroundings&) const = default;
};

// The pixels that the area touches, within the clip; all of the clip where that cannot be told.
CGRect touchedPixels(const CGRect& area, const CGAffineTransform& toPixels, const CGRect& clip) {
    const CGRect r = CGRectApplyAffineTransform(area, toPixels);
    const CGFloat left = std::floor(r.origin.x), top = std::floor(r.origin.y);
    const CGFloat right = std::ceil(r.origin.x + r.size.width),
                  bottom = std::ceil(r.origin.y + r.size.height);
    if (!std::isfinite(left) || !std::isfinite(top) || !std::isfinite(right) || !std::isfinite(bottom))
        return clip;
    return CGRectIntersection({{left, top}, {right - left, bottom - top}}, clip);
}

CGRect unionOf(const CGRect& a, const CGRect& b) {
    if (CGRectIsEmpty(a)) return b;
    return CGRectIsEmpty(b) ? a : CGRectUnion(a, b);
}

} // namespace

// A layer as it was painted.
struct CAFrameUpdater::Seen {
    uint64_t serial = 0; // 0: not yet
    uint64_t revision = 0;
    uint64_t ownRevision = 0;
    Surroundings surroundings;
    CALayerState state;
    bool masks = false;
    bool moves = false; // by itself, or something in it does
    CGRect own;         // pixels that what it shows itself may touch
    CGRect all;         // with what is in it
    std::vector<Seen> sublayers;

    // Whether everything in the layer is drawn where and how it was, as far as this layer has a say in it.
    bool drawsSublayersAs(const CALayerState& now, bool masksNow) const {
        if (!state.shown && !now.shown) return true;
        return state.shown == now.shown && state.toPixels == now.toPixels && state.alpha == now.alpha &&
               state.flattened == now.flattened && masks == masksNow &&
               (!masks || (state.bounds == now.bounds && state.radius() == now.radius()));
    }
    bool showsItselfAs(const CALayerState& now) const {
        return state.bounds == now.bounds && state.values.cornerRadius == now.values.cornerRadius &&
               state.values.borderWidth == now.values.borderWidth;
    }
};

// Goes through the tree, brings what was seen up to date and notes what differs.
class CAFrameUpdater::Comparison {
  public:
    Comparison(CGFloat seconds, DamageList& damage) : seconds_(seconds), damage_(damage) {}

    // Without `note` the whole of it is painted again anyway.
    void look(const CALayer& layer, Seen& seen, const Surroundings& surroundings, bool note) {
        const bool known = seen.serial == layer.serial();
        const bool sameAround = seen.surroundings == surroundings;
        if (known && sameAround && !seen.moves && seen.revision == layer.revision()) return;

        const CALayerState state =
            CAStateOf(layer, seconds_, surroundings.superToPixels, surroundings.handedDown);
        const bool masks = layer.masksToBounds();
        const bool inPlace =
            known && seen.surroundings.clip == surroundings.clip && seen.drawsSublayersAs(state, masks);
        const bool whole = note && !inPlace;
        const bool itself =
            note && inPlace && !(seen.ownRevision == layer.ownRevision() && seen.showsItselfAs(state));
        if (whole) damage_.add(seen.all);
        if (itself) damage_.add(seen.own);

        seen.serial = layer.serial();
        seen.revision = layer.revision();
        seen.ownRevision = layer.ownRevision();
        seen.surroundings = surroundings;
        seen.state = state;
        seen.masks = masks;
        seen.moves = !layer.hidden() && CAHasUnfinishedAnimation(layer, seconds_);
        seen.own = {};
        if (state.shown) {
            const CGRect& clip = surroundings.clip;
            seen.own = touchedPixels(CAOwnReach(layer, state.bounds), state.toPixels, clip);
            const CGRect within = masks ? touchedPixels(state.bounds, state.toPixels, clip) : clip;
            lookAtSublayers(layer, seen, {state.toPixels, state.alphaOfParts(), within}, note && inPlace);
        } else {
            seen.sublayers.clear();
            seen.all = {};
        }
        if (itself) damage_.add(seen.own);
        if (whole) damage_.add(seen.all);
    }

  private:
    void lookAtSublayers(const CALayer& layer, Seen& seen, const Surroundings& within, bool note) {
        const auto& sublayers = layer.sublayers();
        const bool sameOnes = std::equal(
            sublayers.begin(), sublayers.end(), seen.sublayers.begin(), seen.sublayers.end(),
            [](const auto& sublayer, const Seen& before) { return sublayer->serial() == before.serial; });
        if (!sameOnes) arrange(sublayers, seen.sublayers, note);
        seen.all = seen.own;
        for (size_t i = 0; i < sublayers.size(); ++i) {
            Seen& sublayer = seen.sublayers[i];
            look(*sublayers[i], sublayer, within, note);
            seen.all = unionOf(seen.all, sublayer.all);
            seen.moves = seen.moves || sublayer.moves;
        }
    }

    // Puts what was seen into the order of the sublayers now. Of two that have changed places the one that is
    // now in front counts as changed; so do those that have gone.
    void arrange(const std::vector<std::shared_ptr<CALayer>>& sublayers, std::vector<Seen>& seen, bool note) {
        std::unordered_map<uint64_t, size_t> places;
        for (size_t i = 0; i < seen.size(); ++i)
            places.emplace(seen[i].serial, i);
        std::vector<Seen> arranged(sublayers.size());
        size_t farthest = 0;
        for (size_t i = 0; i < sublayers.size(); ++i) {
            const auto place = places.find(sublayers[i]->serial());
            if (place == places.end()) continue;
            const size_t before = place->second;
            places.erase(place);
            if (note && before < farthest) damage_.add(seen[before].all);
            farthest = std::max(farthest, before);
            arranged[i] = std::move(seen[before]);
        }
        for (const auto& [serial, place] : places) {
            if (note) damage_.add(seen[place].all);
        }
        seen = std::move(arranged);
    }

    CGFloat seconds_;
    DamageList& damage_;
};

CAFrameUpdater::CAFrameUpdater() = default;
CAFrameUpdater::~CAFrameUpdater() = default;

void CAFrameUpdater::forget() {
    seen_.reset();
}

std::vector<CGRect> CAFrameUpdater::update(const CALayer& root, CGFloat seconds,
                                           const CGAffineTransform& toPixels, CGImage& bitmap) {
    Graphics* const graphics = Graphics::current();
    if (!graphics) return {};
    const CGSize size{CGFloat(bitmap.width()), CGFloat(bitmap.height())};
    const CGRect everything{{0, 0}, size};
    const bool goesOn = seen_ && seen_->serial == root.serial() && toPixels_ == toPixels &&
                        bitmap_ == &bitmap && size_ == size && seconds >= seconds_;
    DamageList damage;
    if (!goesOn) {
        seen_ = std::make_unique<Seen>();
        damage.add(everything);
    }
    Comparison(seconds, damage).look(root, *seen_, {toPixels, 1, everything}, goesOn);
    toPixels_ = toPixels;
    seconds_ = seconds;
    bitmap_ = &bitmap;
    size_ = size;
    if (damage.rects().empty()) return {};

    const auto canvas = graphics->makeCanvas(bitmap);
    if (!canvas) {
        forget();
        return {};
    }
    for (const CGRect& rect : damage.rects()) {
        canvas->save();
        canvas->setTransform(CGAffineTransformIdentity);
        canvas->clipToRect(rect);
        canvas->fillRect(rect, CGColor{1, 1, 1, 1});
        RenderServer::paint(root, seconds, *canvas, toPixels);
        canvas->restore();
    }
    return damage.rects();
}

} // namespace tallyforge
