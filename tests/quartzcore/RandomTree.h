#pragma once

#include "quartzcore/CALayer.h"

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace tallyforge::test {

/// A tree of all kinds of layers that is changed at random: places, looks, order, members and animations.
class RandomTree {
  public:
    explicit RandomTree(unsigned seed) : random_(seed) {
        root_->setBounds({{0, 0}, {kWidth, kHeight}});
        root_->setAnchorPoint({0, 0});
        root_->setBackgroundColor(CGColor{0.95, 0.95, 0.97, 1});
        for (int i = 0; i < 14; ++i)
            addLayer();
    }
    static constexpr int kWidth = 100;
    static constexpr int kHeight = 80;

    const std::shared_ptr<CALayer>& root() const { return root_; }
    /// Changes one thing, or nothing at all; `seconds` is the time at which animations begin.
    void change(double seconds);

  private:
    using LayerRef = std::shared_ptr<CALayer>;

    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }
    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }
    bool often() { return below(3) != 0; }
    // Whole and half points are as common as anything between.
    double place(double low, double high) {
        const double value = between(low, high);
        const int kind = below(3);
        return kind == 0 ? value : kind == 1 ? std::round(value) : std::round(value * 2) / 2;
    }
    CGColor color() { return {between(0, 1), between(0, 1), between(0, 1), often() ? 1 : between(0, 1)}; }

    void addLayer();
    void animate(CALayer& layer, double seconds);
    void setLook(CALayer& layer);
    void setPlace(CALayer& layer);
    CGImageRef image();
    std::vector<LayerRef> everyLayer() const;

    std::mt19937 random_;
    LayerRef root_ = std::make_shared<CALayer>();
};

inline std::vector<std::shared_ptr<CALayer>> RandomTree::everyLayer() const {
    std::vector<LayerRef> all{root_};
    for (size_t i = 0; i < all.size(); ++i) {
        const auto sublayers = all[i]->sublayers();
        all.insert(all.end(), sublayers.begin(), sublayers.end());
    }
    return all;
}

inline CGImageRef RandomTree::image() {
    auto picture = std::make_shared<CGImage>(1 + below(24), 1 + below(24));
    for (int y = 0; y < picture->height(); ++y) {
        for (int x = 0; x < picture->width(); ++x) {
            CGColor c = color();
            picture->row(y)[x] = PixelFromColor(c);
        }
    }
    return picture;
}

inline void RandomTree::setPlace(CALayer& layer) {
    switch (below(7)) {
    case 0:
        layer.setTransform(CATransform3DIdentity);
        break;
    case 1:
        layer.setAffineTransform(CGAffineTransformMakeRotation(below(8) * 0.78539816339744831));
        break;
    case 2:
        layer.setAffineTransform(CGAffineTransformScale(CGAffineTransformMakeRotation(between(0, 7)),
                                                        between(-1.5, 1.5), between(0, 1.5)));
        break;
    case 3:
        layer.setBounds({{place(-5, 5), place(-5, 5)}, {place(0, 50), place(0, 40)}});
        break;
    case 4:
        layer.setAnchorPoint({place(0, 1), place(0, 1)});
        break;
    default:
        layer.setPosition({place(-10, 90), place(-10, 70)});
    }
}

inline void RandomTree::setLook(CALayer& layer) {
    switch (below(10)) {
    case 0:
        layer.setBackgroundColor(often() ? std::optional(color()) : std::nullopt);
        break;
    case 1:
        layer.setContents(often() ? image() : nullptr);
        break;
    case 2:
        layer.setContentsGravity(CAGravity(below(12)));
        break;
    case 3:
        layer.setBorderWidth(often() ? place(0, 4) : 0);
        break;
    case 4:
        layer.setCornerRadius(often() ? place(0, 12) : 0);
        break;
    case 5:
        layer.setMasksToBounds(below(2) == 0);
        break;
    case 6:
        layer.setOpacity(often() ? 1 : float(between(0, 1)));
        break;
    case 7:
        layer.setHidden(below(4) == 0);
        break;
    default:
        if (auto* text = dynamic_cast<CATextLayer*>(&layer)) {
            text->setString(std::string(size_t(below(9)), char('a' + below(26))) + " \u00C5y");
            text->setWrapped(below(2) == 0);
            text->setFont({between(4, 20), 400});
            text->setForegroundColor(color());
        } else if (auto* shape = dynamic_cast<CAShapeLayer*>(&layer)) {
            auto path = std::make_shared<CGPath>();
            path->moveToPoint(place(-5, 30), place(-5, 30));
            path->addLineToPoint(place(-5, 30), place(-5, 30));
            path->addCurveToPoint({place(-9, 40), place(-9, 40)}, {place(-9, 40), place(-9, 40)},
                                  {place(-5, 30), place(-5, 30)});
            shape->setPath(path);
            shape->setStrokeColor(below(2) ? std::optional(color()) : std::nullopt);
            shape->setLineWidth(between(0, 3));
        }
    }
}

inline void RandomTree::animate(CALayer& layer, double seconds) {
    const char* paths[] = {"position.x", "position",     "transform.rotation.z", "transform.scale",
                           "opacity",    "cornerRadius", "bounds.size.width",    "transform.rotation.x"};
    const int which = below(8);
    auto animation = CABasicAnimation::animationWithKeyPath(paths[which]);
    if (which == 1) {
        animation->setFromValue(CGPoint{place(0, 80), place(0, 60)});
        animation->setToValue(CGPoint{place(0, 80), place(0, 60)});
    } else {
        const double far = which == 0 || which == 6 ? 60 : which == 5 ? 10 : which == 3 || which == 4 ? 1 : 6;
        animation->setFromValue(between(0, far));
        animation->setToValue(between(0, far));
    }
    animation->setDuration(between(0.05, 0.5));
    animation->setRepeatCount(often() ? 2 : 1000);
    animation->setAutoreverses(below(2) == 0);
    animation->setFillMode(CAFillMode(below(4)));
    animation->setRemovedOnCompletion(below(2) == 0);
    animation->setBeginTime(seconds + between(-0.1, 0.3));
    layer.addAnimation(*animation, "key" + std::to_string(below(2)));
}

inline void RandomTree::addLayer() {
    const auto all = everyLayer();
    LayerRef layer;
    switch (below(3)) {
    case 0:
        layer = std::make_shared<CATextLayer>();
        break;
    case 1:
        layer = std::make_shared<CAShapeLayer>();
        break;
    default:
        layer = std::make_shared<CALayer>();
    }
    layer->setFrame({{place(-10, 90), place(-10, 70)}, {place(2, 50), place(2, 40)}});
    for (int i = 0; i < 4; ++i)
        setLook(*layer);
    const auto& parent = all[size_t(below(int(all.size())))];
    parent->insertSublayer(layer, size_t(below(4)));
}

inline void RandomTree::change(double seconds) {
    const auto all = everyLayer();
    if (all.size() < 4) return addLayer();
    const LayerRef layer = all[1 + size_t(below(int(all.size()) - 1))];
    switch (below(12)) {
    case 0:
        if (all.size() < 30) addLayer();
        break;
    case 1:
        if (layer->sublayers().size() < 3) layer->removeFromSuperlayer();
        break;
    case 2: { // to another place in the order
        CALayer* const parent = layer->superlayer();
        parent->insertSublayer(layer, size_t(below(5)));
        break;
    }
    case 3: // into another layer, where that is possible
        all[size_t(below(int(all.size())))]->insertSublayer(layer, size_t(below(3)));
        break;
    case 4:
        animate(*layer, seconds);
        break;
    case 5:
        layer->removeAllAnimations();
        break;
    case 6:
        layer->setPosition(layer->position()); // nothing at all
        break;
    case 7:
    case 8:
        setPlace(*layer);
        break;
    default:
        setLook(*layer);
    }
}

} // namespace tallyforge::test
