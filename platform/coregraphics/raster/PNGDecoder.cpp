#include "rastergraphics/PNGDecoder.h"

#include "rastergraphics/ImageFiles.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tallyforge {

namespace {

constexpr size_t kSignature = 8;

uint32_t bigEndian(const uint8_t* p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}

struct Header {
    int width = 0;
    int height = 0;
    int depth = 0;     ///< bits a channel
    int colorType = 0; ///< 0 grey, 2 RGB, 3 palette, 4 grey and alpha, 6 RGB and alpha
    bool interlaced = false;
    bool device = false; ///< of the device's own kind

    int channels() const { return colorType == 2 ? 3 : colorType == 4 ? 2 : colorType == 6 ? 4 : 1; }
    size_t pixelBits() const { return size_t(channels()) * size_t(depth); }
    size_t rowBytes(int pixels) const { return (size_t(pixels) * pixelBits() + 7) / 8; }
};

struct Chunk {
    std::string_view type;
    std::span<const uint8_t> data;
};

/// Chunks in order. One that is cut, or an indispensable one with a wrong checksum, ends the reading; others
/// with a wrong checksum are passed over.
class ChunkReader {
  public:
    explicit ChunkReader(std::span<const uint8_t> bytes) : rest_(bytes.subspan(kSignature)) {}
    std::optional<Chunk> next() {
        while (rest_.size() >= 12) {
            size_t length = bigEndian(rest_.data());
            if (length > rest_.size() - 12) return std::nullopt;
            uLong checksum = crc32(0, rest_.data() + 4, uInt(length + 4));
            bool sound = checksum == bigEndian(rest_.data() + 8 + length);
            bool dispensable = (rest_[4] & 0x20) != 0;
            if (!sound && !dispensable) return std::nullopt;
            Chunk chunk{{reinterpret_cast<const char*>(rest_.data() + 4), 4}, rest_.subspan(8, length)};
            rest_ = rest_.subspan(12 + length);
            if (sound) return chunk;
        }
        return std::nullopt;
    }

  private:
    std::span<const uint8_t> rest_;
};

std::optional<Header> readHeader(std::span<const uint8_t> data) {
    if (data.size() != 13) return std::nullopt;
    uint32_t width = bigEndian(data.data());
    uint32_t height = bigEndian(data.data() + 4);
    if (width == 0 || height == 0 || width > kLargestImageSide || height > kLargestImageSide)
        return std::nullopt;
    Header header{int(width), int(height), data[8], data[9], data[12] == 1, false};
    bool smallDepth = header.depth == 1 || header.depth == 2 || header.depth == 4;
    bool allowed = false;
    switch (header.colorType) {
    case 0:
        allowed = smallDepth || header.depth == 8 || header.depth == 16;
        break;
    case 3:
        allowed = smallDepth || header.depth == 8;
        break;
    case 2:
    case 4:
    case 6:
        allowed = header.depth == 8 || header.depth == 16;
        break;
    default:
        break;
    }
    if (!allowed || data[10] != 0 || data[11] != 0 || data[12] > 1) return std::nullopt;
    return header;
}

/// One of the seven passes of an interlaced picture; an ordinary one has a single pass over everything.
struct Pass {
    int x, y, stepX, stepY;
    int columns(const Header& h) const { return (h.width - x + stepX - 1) / stepX; }
    int rows(const Header& h) const { return (h.height - y + stepY - 1) / stepY; }
    bool empty(const Header& h) const { return x >= h.width || y >= h.height; }
};

std::vector<Pass> passesOf(const Header& header) {
    if (!header.interlaced) return {{0, 0, 1, 1}};
    return {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4}, {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
}

size_t packedSize(const Header& header) {
    size_t size = 0;
    for (const Pass& pass : passesOf(header)) {
        if (!pass.empty(header))
            size += (header.rowBytes(pass.columns(header)) + 1) * size_t(pass.rows(header));
    }
    return size;
}

/// Unpacks the pixel chunks one after the other into exactly the size that the header calls for.
class Inflater {
  public:
    explicit Inflater(bool bare) { ready_ = inflateInit2(&stream_, bare ? -MAX_WBITS : MAX_WBITS) == Z_OK; }
    ~Inflater() {
        if (ready_) inflateEnd(&stream_);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    void start(uint8_t* output, size_t size) {
        stream_.next_out = output;
        stream_.avail_out = uInt(size);
    }
    /// False when the data is broken.
    bool feed(std::span<const uint8_t> data) {
        if (!ready_) return false;
        if (stream_.avail_out == 0 || data.empty()) return true;
        stream_.next_in = const_cast<Bytef*>(data.data()); // zlib only reads it
        stream_.avail_in = uInt(data.size());
        int status = inflate(&stream_, Z_NO_FLUSH);
        return status == Z_OK || status == Z_STREAM_END || status == Z_BUF_ERROR;
    }
    bool full() const { return stream_.avail_out == 0; }

  private:
    z_stream stream_{};
    bool ready_ = false;
};

uint8_t paeth(int left, int above, int corner) {
    int estimate = left + above - corner;
    int toLeft = std::abs(estimate - left);
    int toAbove = std::abs(estimate - above);
    int toCorner = std::abs(estimate - corner);
    if (toLeft <= toAbove && toLeft <= toCorner) return uint8_t(left);
    return uint8_t(toAbove <= toCorner ? above : corner);
}

/// Undoes a row's filter in place; `above` is the row before, already undone, or zeros.
bool unfilter(int filter, uint8_t* row, const uint8_t* above, size_t bytes, size_t pixelBytes) {
    switch (filter) {
    case 0:
        return true;
    case 1:
        for (size_t i = pixelBytes; i < bytes; ++i)
            row[i] = uint8_t(row[i] + row[i - pixelBytes]);
        return true;
    case 2:
        for (size_t i = 0; i < bytes; ++i)
            row[i] = uint8_t(row[i] + above[i]);
        return true;
    case 3:
        for (size_t i = 0; i < std::min(pixelBytes, bytes); ++i)
            row[i] = uint8_t(row[i] + above[i] / 2);
        for (size_t i = pixelBytes; i < bytes; ++i)
            row[i] = uint8_t(row[i] + (row[i - pixelBytes] + above[i]) / 2);
        return true;
    case 4:
        for (size_t i = 0; i < std::min(pixelBytes, bytes); ++i)
            row[i] = uint8_t(row[i] + above[i]);
        for (size_t i = pixelBytes; i < bytes; ++i)
            row[i] = uint8_t(row[i] + paeth(row[i - pixelBytes], above[i], above[i - pixelBytes]));
        return true;
    default:
        return false;
    }
}

uint32_t rounded255(uint32_t product) {
    return (product + 127) / 255;
}

/// Turns the bytes of a row into pixels.
class PixelReader {
  public:
    Header header;
    std::vector<uint32_t> palette; ///< 0xAARRGGBB, not premultiplied
    std::vector<uint8_t> transparency;

    void finishPalette() {
        for (size_t i = 0; i < palette.size() && i < transparency.size(); ++i)
            palette[i] = (palette[i] & 0xffffff) | uint32_t(transparency[i]) << 24;
    }

    /// Every step-th pixel of the result from a row. False for a palette entry that does not exist.
    bool row(const uint8_t* data, int count, uint32_t* out, int step) const {
        if (header.depth == 8 && header.colorType == 6) { // by far the most frequent kind
            for (int i = 0; i < count; ++i, data += 4)
                out[ptrdiff_t(i) * step] = color(data[0], data[1], data[2], data[3]);
            return true;
        }
        for (int i = 0; i < count; ++i) {
            std::optional<uint32_t> value = pixel(data, i);
            if (!value) return false;
            out[ptrdiff_t(i) * step] = *value;
        }
        return true;
    }

  private:
    /// A pixel, premultiplied; nothing for a palette entry that does not exist.
    std::optional<uint32_t> pixel(const uint8_t* row, int x) const {
        uint32_t value[4] = {};
        int channels = header.channels();
        for (int c = 0; c < channels; ++c)
            value[c] = sample(row, x * channels + c);
        switch (header.colorType) {
        case 3:
            if (value[0] >= palette.size()) return std::nullopt;
            return premultiplied(palette[value[0]]);
        case 0: {
            uint32_t grey = eight(value[0]);
            return isTransparentColor(value) ? 0 : 0xff000000 | grey << 16 | grey << 8 | grey;
        }
        case 4: {
            uint32_t grey = eight(value[0]);
            return color(grey, grey, grey, eight(value[1]));
        }
        case 2: // blue, green, red in the device's kind when of 8 bits
            if (isTransparentColor(value)) return 0;
            return color(eight(value[0]), eight(value[1]), eight(value[2]), 255);
        default:
            return color(eight(value[0]), eight(value[1]), eight(value[2]), eight(value[3]));
        }
    }

    uint32_t sample(const uint8_t* row, int index) const {
        if (header.depth == 8) return row[index];
        if (header.depth == 16) {
            row += ptrdiff_t(index) * 2;
            return uint32_t(row[0]) << 8 | row[1];
        }
        int perByte = 8 / header.depth;
        int shift = 8 - header.depth * (index % perByte + 1);
        return (row[index / perByte] >> shift) & ((1U << header.depth) - 1);
    }

    /// A grey or colour value in 8 bits.
    uint32_t eight(uint32_t value) const {
        if (header.depth == 8) return value;
        if (header.depth == 16) return (value * 255 + 32767) / 65535;
        return value * 255 / ((1U << header.depth) - 1);
    }

    bool isTransparentColor(const uint32_t* value) const {
        size_t channels = size_t(header.channels());
        if (transparency.size() < 2 * channels) return false;
        for (size_t c = 0; c < channels; ++c) {
            // The colour is named in the order red, green, blue whatever the order of the pixels.
            size_t at = swapped() && channels == 3 ? 2 - c : c;
            if (value[c] != (uint32_t(transparency[2 * at]) << 8 | transparency[2 * at + 1])) return false;
        }
        return true;
    }

    bool swapped() const {
        return header.device && header.depth == 8 && (header.colorType == 2 || header.colorType == 6);
    }

    uint32_t color(uint32_t first, uint32_t green, uint32_t last, uint32_t alpha) const {
        uint32_t red = swapped() ? last : first;
        uint32_t blue = swapped() ? first : last;
        if (!header.device || header.depth != 8)
            return premultiplied(alpha << 24 | red << 16 | green << 8 | blue);
        // Already premultiplied. Held to the alpha, as a broken file might not be.
        return alpha << 24 | std::min(red, alpha) << 16 | std::min(green, alpha) << 8 | std::min(blue, alpha);
    }

    static uint32_t premultiplied(uint32_t p) {
        uint32_t alpha = p >> 24;
        return alpha << 24 | rounded255(((p >> 16) & 255) * alpha) << 16 |
               rounded255(((p >> 8) & 255) * alpha) << 8 | rounded255((p & 255) * alpha);
    }
};

bool readPasses(const PixelReader& reader, uint8_t* packed, CGImage& image) {
    const Header& header = reader.header;
    size_t pixelBytes = std::max(size_t(1), header.pixelBits() / 8);
    uint8_t* at = packed;
    for (const Pass& pass : passesOf(header)) {
        if (pass.empty(header)) continue;
        size_t bytes = header.rowBytes(pass.columns(header));
        std::vector<uint8_t> zeros(bytes, 0);
        const uint8_t* above = zeros.data();
        for (int row = 0; row < pass.rows(header); ++row, at += bytes + 1) {
            uint8_t* data = at + 1;
            if (!unfilter(at[0], data, above, bytes, pixelBytes)) return false;
            above = data;
            uint32_t* out = image.row(pass.y + row * pass.stepY);
            if (!reader.row(data, pass.columns(header), out + pass.x, pass.stepX)) return false;
        }
    }
    return true;
}

} // namespace

CGImageRef DecodePNG(std::span<const uint8_t> bytes) {
    constexpr uint8_t kSignatureBytes[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    if (bytes.size() < kSignature || std::memcmp(bytes.data(), kSignatureBytes, kSignature) != 0)
        return nullptr;
    ChunkReader chunks(bytes);
    std::optional<Chunk> first = chunks.next();
    bool device = first && first->type == "CgBI";
    if (device) first = chunks.next();
    if (!first || first->type != "IHDR") return nullptr;
    std::optional<Header> header = readHeader(first->data);
    if (!header) return nullptr;
    header->device = device;
    // Deflate packs at most 1032 bytes into one; what claims more is not worth trying.
    constexpr size_t kDensest = 1032;
    if (packedSize(*header) / kDensest > bytes.size()) return nullptr;

    PixelReader reader;
    reader.header = *header;
    std::unique_ptr<uint8_t[]> packed;
    Inflater inflater(device);
    bool started = false;
    bool ended = false;
    while (!ended) {
        std::optional<Chunk> chunk = chunks.next();
        if (!chunk) return nullptr;
        if (chunk->type == "PLTE") {
            if (chunk->data.size() % 3 != 0 || chunk->data.size() > size_t(256) * 3) return nullptr;
            reader.palette.clear();
            for (size_t i = 0; i < chunk->data.size(); i += 3)
                reader.palette.push_back(0xff000000 | uint32_t(chunk->data[i]) << 16 |
                                         uint32_t(chunk->data[i + 1]) << 8 | chunk->data[i + 2]);
        } else if (chunk->type == "tRNS") {
            reader.transparency.assign(chunk->data.begin(), chunk->data.end());
        } else if (chunk->type == "IDAT") {
            if (!started) {
                // Not cleared: a size that is only claimed shall cost nothing.
                size_t size = packedSize(*header);
                packed = std::make_unique_for_overwrite<uint8_t[]>(size);
                inflater.start(packed.get(), size);
                started = true;
            }
            if (!inflater.feed(chunk->data)) return nullptr;
        } else if (chunk->type == "IEND") {
            ended = true;
        }
    }
    if (!started || !inflater.full()) return nullptr;
    reader.finishPalette();
    auto image = std::make_shared<CGImage>(header->width, header->height);
    return readPasses(reader, packed.get(), *image) ? image : nullptr;
}

} // namespace tallyforge
