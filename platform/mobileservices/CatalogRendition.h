#pragma once

#include "coregraphics/CGImage.h"
#include "mobileservices/ByteReader.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace tallyforge {

/// What a rendition's key may say, by the catalogue's numbers. Others occur and count as "something special".
enum class CatalogAttribute : uint16_t { element = 1, part = 2, scale = 12, idiom = 15, identifier = 17 };

/// The values of a key, by attribute. 0 is "any" or "plain" of each.
class CatalogKey {
  public:
    static constexpr uint16_t kAttributes = 32;

    uint16_t operator[](CatalogAttribute attribute) const { return values_[size_t(attribute)]; }
    uint16_t value(uint16_t attribute) const { return attribute < kAttributes ? values_[attribute] : 0; }
    void set(uint16_t attribute, uint16_t value) {
        if (attribute < kAttributes) values_[attribute] = value;
    }
    bool operator==(const CatalogKey&) const = default;

  private:
    std::array<uint16_t, kAttributes> values_{};
};

/// A rendition as it lies in the catalogue: what it says of itself, and its data not yet unpacked.
struct CatalogRendition {
    static constexpr uint32_t kMostPixels = 4096; ///< along each side

    /// A rectangle of another rendition, in its pixels.
    struct Link {
        uint32_t x = 0;
        uint32_t bottom = 0; ///< from the lower edge of the other one to that of the rectangle
        uint32_t width = 0;
        uint32_t height = 0;
        CatalogKey key;
    };

    /// Nothing when the bytes are no rendition, are cut short, or it is larger than kMostPixels.
    static std::optional<CatalogRendition> parse(Bytes bytes);

    uint32_t width = 0;  ///< pixels
    uint32_t height = 0; ///< pixels
    double scale = 0;    ///< pixels a point, 0 for those without
    uint32_t pixelFormat = 0;
    uint32_t bytesPerRow = 0; ///< 0 when it does not say
    std::string name;         ///< of the file it was made from
    Bytes data;
    std::optional<Link> link;

    /// A link, or in a format that this system makes pixels of.
    bool isPicture() const;
    /// The pixels of a rendition that has its own; nullptr when it is a link, is broken, or is packed or
    /// formatted in a way that is not known here.
    CGImageRef decode() const;
};

} // namespace tallyforge
