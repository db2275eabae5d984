#pragma once

#include "coregraphics/CGImage.h"
#include "foundation/PropertyList.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tallyforge::test {

/// A colour as a mark should have it.
struct ModelColor {
    CGColor color;
    /// Computed from an icon with more pixels than points, so that a step or two of 255 may differ.
    bool rough = false;
};

/// A domain as the renderers should read it, written down once more and apart from them.
class ModelReading {
  public:
    /// `automatic` are the icon's averages: of all pixels, without bright ones, without dark ones.
    ModelReading(const Dictionary& domain, std::array<ModelColor, 3> automatic)
        : domain_(domain), automatic_(automatic) {}

    bool has(std::string_view key) const { return domain_.objectForKey(key) != nullptr; }
    float number(std::string_view key, float absent) const;
    int32_t code(std::string_view key, int32_t absent) const;
    /// A float number cut towards zero; 99 for what no 32-bit number holds.
    int32_t animationType(std::string_view key) const;
    bool flag(std::string_view key) const;
    bool isText(std::string_view key, std::string_view text) const;
    /// Nothing for "none".
    std::optional<ModelColor> color(std::string_view key) const;
    /// 1 + v, or 1 + v / 2 for shrinking.
    float growth(std::string_view key, float absent) const;

  private:
    const Dictionary& domain_;
    std::array<ModelColor, 3> automatic_;
};

/// The opaque colour that a colour string's hexadecimal number stands for.
CGColor ModelColorFromText(std::string_view text);

/// The icon's averages, from its bitmap with `scale` pixels a point.
std::array<ModelColor, 3> ModelAutomaticColors(const CGImage& icon, int scale);

} // namespace tallyforge::test
