#include "Png.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <vector>
#include <zlib.h>

namespace tallyforge {

using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr int filterCount = 5;
constexpr int adaptive = filterCount;

struct Pixels {
    int width, height, channels;
    std::vector<Bytes> rows;
};

void append32(QByteArray& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.append(static_cast<char>((value >> shift) & 0xff));
    }
}

void appendChunk(QByteArray& out, const char* type, const QByteArray& data) {
    append32(out, static_cast<std::uint32_t>(data.size()));
    const QByteArray body = QByteArray(type, 4) + data;
    out.append(body);
    const std::string plain = body.toStdString();
    const Bytes bytes(plain.begin(), plain.end());
    append32(out, static_cast<std::uint32_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size()))));
}

int paeth(int left, int up, int upLeft) {
    const int guess = left + up - upLeft;
    const int toLeft = std::abs(guess - left);
    const int toUp = std::abs(guess - up);
    const int toUpLeft = std::abs(guess - upLeft);
    if (toLeft <= toUp && toLeft <= toUpLeft) return left;
    return toUp <= toUpLeft ? up : upLeft;
}

Bytes filtered(const Bytes& row, const Bytes& above, int channels, int filter) {
    Bytes out(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
        const auto back = static_cast<std::size_t>(channels);
        const int left = i >= back ? row[i - back] : 0;
        const int up = above[i];
        const int upLeft = i >= back ? above[i - back] : 0;
        const std::array<int, filterCount> guesses = {0, left, up, (left + up) / 2, paeth(left, up, upLeft)};
        out[i] = static_cast<std::uint8_t>(row[i] - guesses[static_cast<std::size_t>(filter)]);
    }
    return out;
}

/// The sum of the bytes as signed distances from zero: small means easily packed.
long roughness(const Bytes& row) {
    long sum = 0;
    for (std::uint8_t byte : row) {
        sum += byte < 128 ? byte : 256 - byte;
    }
    return sum;
}

Bytes filteredRows(const Pixels& pixels, int choice) {
    Bytes out;
    Bytes above(pixels.rows.front().size(), 0);
    for (const Bytes& row : pixels.rows) {
        int filter = choice == adaptive ? 0 : choice;
        Bytes best = filtered(row, above, pixels.channels, filter);
        for (int other = 1; choice == adaptive && other < filterCount; ++other) {
            Bytes candidate = filtered(row, above, pixels.channels, other);
            if (roughness(candidate) < roughness(best)) {
                best = std::move(candidate);
                filter = other;
            }
        }
        out.push_back(static_cast<std::uint8_t>(filter));
        out.insert(out.end(), best.begin(), best.end());
        above = row;
    }
    return out;
}

Bytes deflated(Bytes input, int level, int strategy) {
    z_stream stream{};
    if (deflateInit2(&stream, level, Z_DEFLATED, MAX_WBITS, MAX_MEM_LEVEL, strategy) != Z_OK) {
        throw std::runtime_error("the compressor did not start");
    }
    Bytes out(deflateBound(&stream, static_cast<uLong>(input.size())));
    stream.next_in = input.data();
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw std::runtime_error("the compressor did not finish");
    return out;
}

Pixels unpacked(const QImage& image) {
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    bool opaque = true;
    for (int y = 0; y < straight.height(); ++y) {
        for (int x = 0; x < straight.width(); ++x) {
            opaque = opaque && qAlpha(straight.pixel(x, y)) == 255;
        }
    }
    Pixels pixels{straight.width(), straight.height(), opaque ? 3 : 4, {}};
    for (int y = 0; y < straight.height(); ++y) {
        Bytes row;
        for (int x = 0; x < straight.width(); ++x) {
            const QRgb p = straight.pixel(x, y);
            for (int channel : {qRed(p), qGreen(p), qBlue(p)}) {
                row.push_back(static_cast<std::uint8_t>(channel));
            }
            if (!opaque) row.push_back(static_cast<std::uint8_t>(qAlpha(p)));
        }
        pixels.rows.push_back(std::move(row));
    }
    return pixels;
}

} // namespace

QByteArray encodePng(const QImage& image) {
    const Pixels pixels = unpacked(image);
    // A quick trial picks the filter; only its rows are packed with full effort.
    constexpr int quick = 4;
    Bytes rows;
    std::size_t smallest = 0;
    for (int filter = 0; filter <= adaptive; ++filter) {
        Bytes candidate = filteredRows(pixels, filter);
        const std::size_t size = deflated(candidate, quick, Z_DEFAULT_STRATEGY).size();
        if (rows.empty() || size < smallest) {
            smallest = size;
            rows = std::move(candidate);
        }
    }
    const Bytes best = deflated(std::move(rows), Z_BEST_COMPRESSION, Z_DEFAULT_STRATEGY);

    QByteArray header;
    append32(header, static_cast<std::uint32_t>(pixels.width));
    append32(header, static_cast<std::uint32_t>(pixels.height));
    const char trueColour = pixels.channels == 3 ? 2 : 6;
    for (char byte : {char{8}, trueColour, char{0}, char{0}, char{0}}) {
        header.append(byte);
    }
    QByteArray body;
    for (std::uint8_t byte : best) {
        body.append(static_cast<char>(byte));
    }
    QByteArray file = QByteArray::fromHex("89504e470d0a1a0a");
    appendChunk(file, "IHDR", header);
    appendChunk(file, "IDAT", body);
    appendChunk(file, "IEND", {});
    return file;
}

} // namespace tallyforge
