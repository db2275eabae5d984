#include "mobileservices/CatalogRendition.h"

#include "coregraphics/Canvas.h"
#include "mobileservices/CatalogCompression.h"

#include <algorithm>
#include <memory>

namespace tallyforge {

namespace {

// Four letters are numbers in the catalogue, so they stand in the file back to front.
constexpr uint32_t kRendition = FourLetters("ISTC");
constexpr uint32_t kBitmapData = FourLetters("MLEC");
constexpr uint32_t kRowsOfBitmap = FourLetters("KCBC");
constexpr uint32_t kRawData = FourLetters("DWAR");
constexpr uint32_t kLinkData = FourLetters("KLNI");
constexpr uint32_t kFormatARGB = FourLetters("BGRA");
constexpr uint32_t kFormatGrey = FourLetters(" 8AG");
constexpr uint32_t kFormatJPEG = FourLetters("GEPJ");
constexpr uint32_t kFormatHEIF = FourLetters("FIEH");

constexpr uint32_t kInfoBytesPerRow = 1007;
constexpr uint32_t kInfoLink = 1010;
constexpr size_t kNameBytes = 128;
constexpr uint32_t kMostRowPadding = 1024;
constexpr uint32_t kMostKeyPairs = 64;
constexpr uint32_t kPaletteMagic = 0xCAFEF00D;

uint32_t BytesPerPixel(uint32_t format) {
    return format == kFormatGrey ? 2 : 4;
}

std::optional<CatalogRendition::Link> ReadLink(Bytes bytes) {
    ByteReader in(bytes);
    CatalogRendition::Link link;
    uint32_t magic = in.little32();
    in.little32();
    link.x = in.little32();
    link.bottom = in.little32();
    link.width = in.little32();
    link.height = in.little32();
    in.little16(); // the layout that the link stands for
    in.little32(); // length of the key
    if (!in.ok() || magic != kLinkData) return std::nullopt;
    for (uint32_t i = 0; i < kMostKeyPairs; i++) {
        uint16_t attribute = in.little16();
        uint16_t value = in.little16();
        if (!in.ok()) return std::nullopt;
        if (attribute == 0) return link;
        link.key.set(attribute, value);
    }
    return std::nullopt;
}

uint32_t Premultiplied(uint32_t alpha, uint32_t red, uint32_t green, uint32_t blue) {
    return alpha << 24 | std::min(red, alpha) << 16 | std::min(green, alpha) << 8 | std::min(blue, alpha);
}

/// Unpacks the rows of one bitmap.
class BitmapRows {
  public:
    explicit BitmapRows(const CatalogRendition& rendition) : rendition_(rendition) {
        pixelBytes_ = rendition.width * BytesPerPixel(rendition.pixelFormat);
        rowBytes_ = rendition.bytesPerRow ? rendition.bytesPerRow : pixelBytes_;
    }

    CGImageRef decode() const {
        if (rowBytes_ < pixelBytes_ || rowBytes_ > pixelBytes_ + kMostRowPadding) return nullptr;
        ByteReader in(rendition_.data);
        uint32_t magic = in.little32();
        uint32_t version = in.little32();
        CatalogPacking packing{in.little32()};
        uint32_t count = in.little32(); // of bytes, or of parts
        if (!in.ok() || magic != kBitmapData) return nullptr;
        if (packing == CatalogPacking::palette) return fromPalette(in.take(count));
        bool inParts = version != 0 && ByteReader(in.left()).little32() == kRowsOfBitmap;
        auto rows =
            inParts ? rowsFromParts(in, packing, count) : Unpack(packing, in.take(count), bytesOfRows());
        if (!in.ok() || !rows || rows->size() != bytesOfRows()) return nullptr;
        return pixelsOf(*rows);
    }

  private:
    size_t bytesOfRows() const { return size_t(rowBytes_) * rendition_.height; }

    // Large bitmaps are packed some rows at a time.
    std::optional<std::vector<uint8_t>> rowsFromParts(ByteReader& in, CatalogPacking packing,
                                                      uint32_t parts) const {
        if (parts > rendition_.height) return std::nullopt;
        std::vector<uint8_t> all;
        for (uint32_t i = 0; i < parts; i++) {
            uint32_t magic = in.little32();
            in.little32();
            in.little32();
            uint64_t rows = in.little32();
            Bytes packed = in.take(in.little32());
            size_t expected = size_t(rows * rowBytes_);
            if (!in.ok() || magic != kRowsOfBitmap || expected > bytesOfRows() - all.size())
                return std::nullopt;
            auto part = Unpack(packing, packed, expected);
            if (!part || part->size() != expected) return std::nullopt;
            all.insert(all.end(), part->begin(), part->end());
        }
        return all;
    }

    // Up to 256 colours, then a byte for each pixel.
    CGImageRef fromPalette(Bytes packed) const {
        constexpr size_t kHeadBytes = 10;
        size_t pixelCount = size_t(rendition_.width) * rendition_.height;
        auto bytes = Unpack(CatalogPacking::palette, packed, kHeadBytes + size_t{256} * 4 + pixelCount);
        if (!bytes || rendition_.pixelFormat != kFormatARGB) return nullptr;
        ByteReader in(*bytes);
        uint32_t magic = in.little32();
        uint32_t version = in.little32();
        uint16_t colours = in.little16();
        Bytes palette = in.take(size_t(colours) * 4);
        if (!in.ok() || magic != kPaletteMagic || version != 1 || in.left().size() != pixelCount)
            return nullptr;
        auto image = std::make_shared<CGImage>(int(rendition_.width), int(rendition_.height));
        uint32_t* pixel = image->row(0);
        for (uint8_t index : in.left()) {
            if (index >= colours) return nullptr;
            *pixel++ = pixelOf(&palette[size_t(index) * 4]);
        }
        return image;
    }

    CGImageRef pixelsOf(const std::vector<uint8_t>& rows) const {
        auto image = std::make_shared<CGImage>(int(rendition_.width), int(rendition_.height));
        uint32_t step = BytesPerPixel(rendition_.pixelFormat);
        for (uint32_t y = 0; y < rendition_.height; y++) {
            const uint8_t* bytes = rows.data() + size_t(y) * rowBytes_;
            uint32_t* row = image->row(int(y));
            for (uint32_t x = 0; x < rendition_.width; x++, bytes += step)
                row[x] = pixelOf(bytes);
        }
        return image;
    }

    // Colours are already premultiplied. A broken file's that are not are brought down to their alpha.
    uint32_t pixelOf(const uint8_t* bytes) const {
        if (rendition_.pixelFormat == kFormatGrey)
            return Premultiplied(bytes[1], bytes[0], bytes[0], bytes[0]);
        return Premultiplied(bytes[3], bytes[2], bytes[1], bytes[0]);
    }

    const CatalogRendition& rendition_;
    uint32_t pixelBytes_ = 0;
    uint32_t rowBytes_ = 0;
};

CGImageRef DecodeRawImage(Bytes data) {
    ByteReader in(data);
    uint32_t magic = in.little32();
    in.little32();
    Bytes file = in.take(in.little32());
    if (!in.ok() || magic != kRawData || !Graphics::current()) return nullptr;
    return Graphics::current()->decodeImage(file);
}

} // namespace

std::optional<CatalogRendition> CatalogRendition::parse(Bytes bytes) {
    ByteReader in(bytes);
    CatalogRendition rendition;
    uint32_t magic = in.little32();
    in.little32(); // version
    in.little32(); // flags
    rendition.width = in.little32();
    rendition.height = in.little32();
    rendition.scale = in.little32() / 100.0;
    rendition.pixelFormat = in.little32();
    in.little32(); // colour space
    in.little32(); // time
    in.little32(); // layout
    Bytes name = in.take(kNameBytes);
    rendition.name.assign(name.begin(), std::find(name.begin(), name.end(), 0));
    uint32_t infoBytes = in.little32();
    uint32_t bitmaps = in.little32();
    in.little32();
    uint32_t dataBytes = in.little32();
    ByteReader info(in.take(infoBytes));
    rendition.data = in.take(dataBytes);
    if (!in.ok() || magic != kRendition || bitmaps > 1) return std::nullopt;
    if (rendition.width > kMostPixels || rendition.height > kMostPixels) return std::nullopt;

    // The other kinds of information say how the picture stretches and aligns, which nobody asks for here.
    while (info.ok() && !info.left().empty()) {
        uint32_t kind = info.little32();
        Bytes value = info.take(info.little32());
        if (info.ok() && kind == kInfoBytesPerRow) rendition.bytesPerRow = ByteReader(value).little32();
        if (info.ok() && kind == kInfoLink) rendition.link = ReadLink(value);
    }
    return rendition;
}

bool CatalogRendition::isPicture() const {
    return link || pixelFormat == kFormatARGB || pixelFormat == kFormatGrey || pixelFormat == kFormatJPEG ||
           pixelFormat == kFormatHEIF;
}

CGImageRef CatalogRendition::decode() const {
    if (link || width == 0 || height == 0) return nullptr;
    if (pixelFormat == kFormatARGB || pixelFormat == kFormatGrey) return BitmapRows(*this).decode();
    if (pixelFormat == kFormatJPEG || pixelFormat == kFormatHEIF) return DecodeRawImage(data);
    return nullptr;
}

} // namespace tallyforge
