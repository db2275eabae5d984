#pragma once

#include "ModelReading.h"

#include "coregraphics/CGAffineTransform.h"
#include "quartzcore/CAAnimation.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge::test {

/// A picture as far as it is predicted: its size and single pixels (premultiplied 0xAARRGGBB).
struct ModelPicture {
    CGSize size;
    std::optional<uint32_t> centre;
    std::optional<uint32_t> corner; ///< top left
    bool rough = false;             ///< from a rough colour
};

struct ModelAnimation {
    std::string className;
    std::string keyPath;
    CAValue from;
    CAValue to;
    std::vector<CAValue> values;
    std::vector<CGFloat> keyTimes;
    std::vector<CGPoint> path;
    CGFloat duration = 0;
    float repeatCount = std::numeric_limits<float>::infinity();
    bool autoreverses = false;
    bool cumulative = false;
    bool additive = false;
    CAFillMode fill = kCAFillModeRemoved;
    std::string timing = "linear";
    std::vector<ModelAnimation> parts;
    bool delayed = false; ///< comes 0.2 s later
};

struct ModelLabel {
    std::string text;
    CGFloat fontSize = 0;
    ModelColor color;
};

struct ModelBorder {
    CGFloat width = 0;
    CGFloat radius = 0;
    std::optional<CGColor> color;
};

/// A view of a mark as it should be.
struct ModelView {
    std::string name; ///< for messages
    std::string className = "UIView";
    CGSize size;
    CGPoint centre;
    CGPoint anchor{0.5, 0.5};
    CGAffineTransform transform;
    CGFloat alpha = 1;
    int contentMode = 0;
    std::optional<ModelPicture> picture; ///< nothing: the view shows no image
    std::optional<ModelLabel> label;
    std::optional<ModelBorder> border; ///< nothing: none at all
    std::optional<ModelAnimation> animation;
    std::vector<ModelView> children;
    /// How exactly an angle can be told at its size in single precision, for what depends on it.
    CGFloat slack = 0;
};

/// What the marks are drawn on and with. All artwork is opaque and of one colour.
struct ModelDevice {
    CGSize cell;
    CGSize icon;
    CGSize nameLabel;
    std::array<ModelColor, 3> automatic;
    CGSize plate, cross, dot, outline;
    std::array<CGSize, 6> glows; ///< circle, square, triangle, hexagon, star, icon
    uint32_t artworkColor = 0;
};

struct ModelMarks {
    ModelView badge, closeBox, newDot;
};

/// The three marks that the domain stands for.
ModelMarks PreviewModel(const Dictionary& domain, const ModelDevice& device);

} // namespace tallyforge::test
