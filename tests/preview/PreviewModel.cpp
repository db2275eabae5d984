#include "PreviewModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tallyforge::test {

namespace {

uint32_t blend(const CGColor& color, CGFloat share, uint32_t below) {
    auto channel = [&](CGFloat value, int shift) {
        const CGFloat mixed = value * 255 * share + CGFloat(below >> shift & 255) * (1 - share);
        return uint32_t(std::lround(mixed)) << shift;
    };
    return channel(1, 24) | channel(color.red, 16) | channel(color.green, 8) | channel(color.blue, 0);
}

CGSize swapped(const CGSize& size) {
    return {size.height, size.width};
}

/// An opaque artwork with the colour over it; a clear colour leaves the artwork.
ModelPicture tinted(const ModelPicture& artwork, const ModelColor& color, CGFloat alpha) {
    ModelPicture result = artwork;
    result.corner.reset();
    result.rough = color.rough;
    if (color.color.alpha == 0) return result;
    if (alpha == 1)
        result.centre = blend(color.color, 1, 0);
    else if (artwork.centre && alpha >= 0 && alpha <= 1)
        result.centre = blend(color.color, alpha, *artwork.centre);
    else
        result.centre.reset();
    return result;
}

/// A plain shape: the centre lies inside all of them (the star is left to other tests).
ModelPicture shaped(const CGSize& size, const ModelColor& color, int shape) {
    ModelPicture result{size, 0u, 0u, color.rough};
    const uint32_t inside = color.color.alpha == 0 ? 0 : blend(color.color, 1, 0);
    if (shape == 1 || shape == 2 || shape == 3 || shape == 6) result.centre = inside;
    if (shape == 1) result.corner = inside;
    if (shape == 4) result.centre.reset();
    if (shape != 1) result.corner.reset();
    return result;
}

ModelPicture bordered(int shape, const ModelPicture& base, const ModelColor& fill,
                      const std::optional<ModelColor>& border, float borderWidth) {
    auto layer = [&](const ModelColor& color) {
        return shape == 0 || shape == 5 ? tinted(base, color, 1) : shaped(base.size, color, shape);
    };
    ModelPicture result = layer(fill);
    if (!border) return result;
    const CGFloat k = 1 - CGFloat(borderWidth) / 10;
    if (k != 1) {
        const ModelPicture below = layer(*border);
        const bool fillIsSeen = result.centre && *result.centre != 0;
        result.rough = result.rough || below.rough;
        if (borderWidth == 10 || !fillIsSeen)
            result.centre = result.centre || borderWidth == 10 ? below.centre : std::nullopt;
        if (borderWidth != 10 && (borderWidth < -5 || borderWidth > 3)) result.centre.reset();
        // The corner is the border's where that is at least a pixel and a half wide.
        result.corner = borderWidth >= 1.5f && borderWidth <= 10 ? below.corner : std::nullopt;
    }
    if (shape == 6) result.size = swapped(result.size);
    return result;
}

std::optional<ModelView> glow(const ModelDevice& device, const std::optional<ModelColor>& color, int shape,
                              CGFloat tintAlpha, CGFloat viewAlpha, CGFloat scale) {
    if (!color || tintAlpha == 0) return std::nullopt;
    ModelView view;
    view.name = "glow";
    view.className = "UIImageView";
    const size_t artwork = shape == 6 ? 2 : shape >= 1 && shape <= 5 ? size_t(shape) : 0;
    CGSize size = device.glows[artwork];
    if (shape == 6) size = swapped(size);
    if (shape == 5) size = {size.width + 1, size.height + 1};
    view.picture = tinted({size, device.artworkColor, {}, false}, *color, tintAlpha);
    view.size = size;
    const CGFloat origin = shape == 5 ? -11 : -10.5;
    view.centre = {origin + size.width / 2, origin + size.height / 2};
    view.alpha = viewAlpha;
    view.transform = {scale, 0, 0, scale, 0, 0};
    return view;
}

CGAffineTransform scaledThenTurned(CGFloat scale, CGFloat angle) {
    const CGFloat c = std::cos(angle) * scale, s = std::sin(angle) * scale;
    return {c, s, -s, c, 0, 0};
}

/// The frame's origin for one of the nine places around the icon; nothing for any other code.
std::optional<CGPoint> placeOnIcon(int32_t code, const CGSize& icon, const CGSize& mark, CGFloat x,
                                   CGFloat y) {
    if (code < 0 || code > 8) return std::nullopt;
    const CGFloat cx = (icon.width - mark.width) / 2, cy = (icon.height - mark.height) / 2;
    const CGFloat columns[] = {-9, cx, 2 * cx + 9};
    const CGFloat rows[] = {-9, icon.height - mark.height / 2, cy};
    return CGPoint{x + columns[code % 3], y + rows[code / 3]};
}

ModelAnimation hop(const CGPoint& position, CGFloat duration) {
    ModelAnimation a;
    a.className = "CAKeyframeAnimation";
    a.keyPath = "position";
    a.path = {position, {position.x, position.y - 30}, position};
    a.timing = "easeOut";
    a.duration = duration;
    return a;
}

std::optional<ModelAnimation> animation(int32_t type, CGFloat duration, float scale, float alpha, bool badge,
                                        const CGPoint& position, CGFloat frameHeight) {
    const CGFloat turn = 6.2831855f;
    ModelAnimation a;
    a.className = "CABasicAnimation";
    a.duration = duration;
    switch (type) {
    case 1:
    case 2:
        a.keyPath = "transform.rotation.z";
        a.from = 0.0;
        a.to = type == 1 ? turn : -turn;
        return a;
    case 3:
    case 4:
        a.keyPath = type == 3 ? "transform.rotation.x" : "transform.rotation.y";
        a.to = type == 3 ? turn : -turn;
        a.cumulative = true;
        a.fill = kCAFillModeForwards;
        return a;
    case 5:
        return hop(position, duration);
    case 6: {
        a.className = "CAKeyframeAnimation";
        a.keyPath = "transform";
        a.fill = kCAFillModeForwards;
        for (int v :
             {0, 60, 83, 100, 114, 124, 128, 128, 124, 114, 100, 83, 60, 32, 0, 0, 18, 28, 32, 28, 18, 0}) {
            CATransform3D t;
            t.m42 = -v / 128.0 * frameHeight;
            if (!badge) t.m11 = t.m22 = scale;
            a.values.emplace_back(t);
        }
        return a;
    }
    case 7: {
        ModelAnimation spin = a;
        spin.keyPath = "transform.rotation.z";
        spin.to = turn;
        spin.cumulative = true;
        a.className = "CAAnimationGroup";
        a.parts = {hop(position, duration), spin};
        return a;
    }
    case 8:
    case 9:
        a.keyPath = "transform.scale";
        a.from = CGFloat(scale);
        a.to = CGFloat(scale + scale * (type == 8 ? 0.3f : -0.3f));
        a.autoreverses = true;
        a.delayed = true;
        return a;
    case 10:
        a.className = "CAKeyframeAnimation";
        a.keyPath = "transform.scale";
        a.values = {1.0, 0.7, 1.0};
        a.keyTimes = {0, 0.5, 1};
        a.timing = "easeIn";
        a.fill = kCAFillModeBoth;
        return a;
    case 11:
        a.keyPath = "opacity";
        a.from = CGFloat(alpha);
        a.to = 0.0;
        a.autoreverses = true;
        return a;
    case 12:
        a.className = "CAKeyframeAnimation";
        a.keyPath = "position.x";
        a.values = {0.0, 8.0, -8.0, 4.0, 0.0};
        a.keyTimes = {0, 1.0 / 6, 0.5, 5.0 / 6, 1};
        a.additive = true;
        return a;
    default:
        return std::nullopt;
    }
}

ModelView badge(const ModelReading& read, const ModelDevice& device) {
    const int shape = read.code("badgeshape", 1);
    const float alpha = read.number("badgealpha", 100) / 100;
    const float scale = read.growth("badgesize", 0);
    const float textScale = read.growth("badgetxtsize", 0);
    const CGFloat angle = CGFloat(read.number("badgerotation", 0)) * std::numbers::pi / 180;
    const CGFloat slack = std::abs(angle) * 3e-7;
    const CGAffineTransform transform = scaledThenTurned(scale, angle);

    ModelView image;
    image.name = "plate";
    image.className = "UIImageView";
    const ModelColor red{{1, 0, 0, 1}};
    const ModelPicture base = shape == 5 ? ModelPicture{{24, 24}, {}, {}, false}
                                         : ModelPicture{device.plate, device.artworkColor, {}, false};
    image.picture = bordered(shape, base, read.color("badgebgcol").value_or(red),
                             read.color("badgebordercol"), read.number("badgebordersize", 1.5f));
    const CGSize size = image.picture->size;
    image.size = size;
    image.centre = {size.width / 2, size.height / 2};
    image.alpha = alpha;
    image.transform = transform;
    image.slack = slack;

    ModelView label;
    label.name = "number";
    label.className = "UILabel";
    const CGFloat divisor = shape == 2 ? 1.6 : shape == 4 ? 2.2 : shape == 6 ? 3 : 2;
    label.size = {std::abs(size.width * textScale), std::abs(size.height * textScale)};
    label.centre = {size.width / 2 + read.number("badgetxtoffsetX", 0),
                    size.height / divisor + read.number("badgetxtoffsetY", 0)};
    label.alpha = alpha;
    label.contentMode = 1;
    label.transform = transform;
    label.slack = slack;
    label.label = {read.flag("convertbadgeroman") ? "VI" : "6", 15 * CGFloat(textScale),
                   read.color("badgetxtcol").value_or(ModelColor{{1, 1, 1, 1}})};

    ModelView container;
    container.name = "badge";
    container.size = size;
    const CGPoint origin = placeOnIcon(read.code("badgepos", 2), device.icon, size,
                                       read.number("badgeoffsetX", 0), read.number("badgeoffsetY", 0))
                               .value_or(CGPoint{0, 0});
    container.centre = {origin.x + size.width / 2, origin.y + size.height / 2};
    container.animation = animation(read.animationType("badgeanimtype"), read.number("badgeanimspd", 1),
                                    scale, alpha, true, container.centre, size.height);
    const float strength = read.number("badgeglowalpha", 0) / 100;
    if (auto behind = glow(device, read.color("badgeglowcol"), shape, strength, alpha, scale))
        container.children.push_back(*behind);
    if (!read.isText("badgebgcol", "transparent")) container.children.push_back(image);
    container.children.push_back(label);
    return container;
}

ModelView closeBox(const ModelReading& read, const ModelDevice& device, const CGSize& badgeSize) {
    const int shape = read.code("closeboxshape", 2);
    const float alpha = read.number("closeboxalpha", 85) / 100;
    const float scale = read.growth("closeboxsize", 0);
    const float angle =
        static_cast<float>(double(read.number("closeboxrotation", 180)) / 180 * std::numbers::pi);
    const float borderWidth = read.number("closeboxbordersize", 0);
    const ModelColor fill = read.color("closeboxbgcol").value_or(ModelColor{{1, 1, 1, 1}});
    const auto border = read.color("closeboxbordercol");
    const ModelPicture artwork{device.plate, device.artworkColor, {}, false};

    ModelView back, plate, cross;
    back.name = "back plate";
    plate.name = "plate";
    cross.name = "cross";
    for (ModelView* view : {&back, &plate, &cross})
        view->className = "UIImageView";
    if (shape == 10) {
        const ModelColor grey{{207 / 255.0, 203 / 255.0, 219 / 255.0, 1}};
        back.picture = tinted(artwork, grey, alpha);
        back.size = device.plate;
        back.centre = {back.size.width / 2, back.size.height / 2};
        plate.picture = tinted(artwork, fill, 0.65f);
        plate.border = ModelBorder{borderWidth, device.plate.width / 2, {}};
        if (border)
            plate.border->color = CGColor{border->color.red, border->color.green, border->color.blue, 0.65};
    } else {
        const ModelPicture base =
            shape == 5 ? ModelPicture{device.outline, device.artworkColor, {}, false} : artwork;
        plate.picture = bordered(shape, base, fill, border, borderWidth);
    }
    plate.size = plate.picture->size;
    plate.centre = {plate.size.width / 2, plate.size.height / 2};
    plate.alpha = alpha;

    const float crossScale = read.growth("closeboxtxtsize", 0);
    cross.picture = tinted({device.cross, device.artworkColor, {}, false},
                           read.color("closeboxtxtcol").value_or(ModelColor{{0.5, 0.5, 0.5, 1}}), 1);
    cross.size = {std::abs(device.cross.width * crossScale), std::abs(device.cross.height * crossScale)};
    cross.centre = {plate.centre.x + read.number("closeboxtxtoffsetX", 0),
                    plate.centre.y + read.number("closeboxtxtoffsetY", 0)};
    cross.alpha = alpha;
    cross.contentMode = 1;

    ModelView container;
    container.name = "close box";
    container.size = plate.size;
    container.centre = {device.cell.width / 1.6, 35};
    const int32_t position = read.code("closeboxpos", 1);
    if (auto origin = placeOnIcon(position, device.icon, plate.size, read.number("closeboxoffsetX", 0),
                                  read.number("closeboxoffsetY", 0))) {
        if (position == 6) container.size.height = badgeSize.height;
        container.centre = {origin->x + container.size.width / 2, origin->y + container.size.height / 2};
    }
    container.transform = scaledThenTurned(scale, angle);
    container.slack = std::abs(angle) * 3e-7;
    const CGFloat frameHeight =
        std::abs(scale) * (container.size.width * std::abs(std::sin(CGFloat(angle))) +
                           container.size.height * std::abs(std::cos(CGFloat(angle))));
    container.animation = animation(read.animationType("closeboxanimtype"), read.number("closeboxanimspd", 1),
                                    scale, alpha, false, container.centre, frameHeight);
    const float strength = read.number("closeboxglowalpha", 100) / 100;
    if (auto behind = glow(device, read.color("closeboxglowcol"), shape, strength, alpha, 1))
        container.children.push_back(*behind);
    if (read.code("presetcloseboxbg", 0) != 98) {
        container.children.push_back(back);
        container.children.push_back(plate);
    }
    container.children.push_back(cross);
    return container;
}

ModelView newDot(const ModelReading& read, const ModelDevice& device) {
    const int shape = read.code("newdotshape", 1);
    const float alpha = read.number("newdotalpha", 100) / 100;
    const float scale = read.growth("newdotsize", 0.1f);
    const ModelColor color = read.color("newdotbgcol").value_or(ModelColor{{0, 105 / 255.0, 1, 1}});

    ModelView dot;
    dot.name = "new dot";
    dot.className = "UIImageView";
    dot.picture = tinted({device.dot, device.artworkColor, {}, false}, color, 0.6);
    if (shape >= 1 && shape <= 3) {
        dot.picture->centre = 0;
        if (color.color.alpha != 0) {
            // 0.6 of the colour, premultiplied, over nothing.
            dot.picture->centre = (blend(color.color, 0.6, 0) & 0xFFFFFF) | 153u << 24;
        }
    }
    dot.anchor = {0, 0};
    dot.size = device.dot;
    dot.centre = {device.cell.width / 1.6, 20};
    const CGFloat x = read.number("newdotoffsetX", 0), y = read.number("newdotoffsetY", 0);
    const CGSize name = device.nameLabel;
    const CGPoint places[] = {{x - 13, y + name.height / 2 - device.dot.height / 2},
                              {x + name.width + 5, y + name.height / 2 - device.dot.height / 2},
                              {x + name.width / 2 - device.dot.width / 2, y - 2 - device.icon.height},
                              {x + name.width / 2 - device.dot.width / 2, y + name.height / 1.55}};
    const int32_t position = read.code("newdotpos", 1);
    if (position >= 0 && position <= 3) {
        dot.size = swapped(device.dot);
        dot.centre = places[position];
    }
    dot.transform = {scale, 0, 0, scale, 0, 0};
    dot.alpha = alpha;
    dot.animation = animation(read.animationType("newdotanimtype"), read.number("newdotanimspd", 1), scale,
                              alpha, false, dot.centre, std::abs(scale) * dot.size.height);
    return dot;
}

} // namespace

ModelMarks PreviewModel(const Dictionary& domain, const ModelDevice& device) {
    const ModelReading read(domain, device.automatic);
    ModelMarks marks;
    marks.badge = badge(read, device);
    marks.closeBox = closeBox(read, device, marks.badge.size);
    marks.newDot = newDot(read, device);
    return marks;
}

} // namespace tallyforge::test
