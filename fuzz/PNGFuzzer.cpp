// The bytes of a picture file, up to pixels and back to a file.

#include "FuzzDevice.h"

#include "coregraphics/CGImage.h"
#include "rastergraphics/ImageFiles.h"
#include "rastergraphics/PNGDecoder.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <random>

using namespace tallyforge;
using fuzz::Require;

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

namespace {

constexpr size_t kSignature = 8;

uint32_t BigEndian(const uint8_t* bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

void PutBigEndian(uint8_t* bytes, uint32_t number) {
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<uint8_t>(number >> (24 - 8 * i));
}

bool SamePixels(const CGImage& a, const CGImage& b) {
    return a.width() == b.width() && a.height() == b.height() && a.pixels() == b.pixels();
}

struct Chunk {
    std::string type;
    std::vector<uint8_t> contents;
};

std::vector<Chunk> ChunksOf(std::span<const uint8_t> bytes) {
    std::vector<Chunk> chunks;
    for (bytes = bytes.subspan(kSignature); bytes.size() >= 12;) {
        const size_t length = std::min<size_t>(BigEndian(bytes.data()), bytes.size() - 12);
        const auto contents = bytes.subspan(8, length);
        chunks.push_back(
            {{reinterpret_cast<const char*>(bytes.data()) + 4, 4}, {contents.begin(), contents.end()}});
        bytes = bytes.subspan(12 + length);
    }
    return chunks;
}

std::vector<uint8_t> FileOf(const std::vector<Chunk>& chunks) {
    std::vector<uint8_t> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const Chunk& chunk : chunks) {
        const size_t at = file.size();
        file.resize(at + 12 + chunk.contents.size());
        PutBigEndian(file.data() + at, static_cast<uint32_t>(chunk.contents.size()));
        std::memcpy(file.data() + at + 4, chunk.type.data(), 4);
        std::copy(chunk.contents.begin(), chunk.contents.end(),
                  file.begin() + static_cast<std::ptrdiff_t>(at) + 8);
        PutBigEndian(file.data() + file.size() - 4,
                     static_cast<uint32_t>(
                         crc32(0, file.data() + at + 4, static_cast<uInt>(chunk.contents.size() + 4))));
    }
    return file;
}

void MutateBytes(std::vector<uint8_t>& bytes, size_t room) {
    const size_t size = bytes.size();
    bytes.resize(size + room);
    bytes.resize(LLVMFuzzerMutate(bytes.data(), size, bytes.size()));
}

// The rows behind the pixel chunk change, not their packing.
void MutateRows(std::vector<uint8_t>& packed, bool bare) {
    std::vector<uint8_t> rows(16'384);
    z_stream stream{};
    if (inflateInit2(&stream, bare ? -MAX_WBITS : MAX_WBITS) != Z_OK) return;
    stream.next_in = packed.data();
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = rows.data();
    stream.avail_out = static_cast<uInt>(rows.size());
    inflate(&stream, Z_SYNC_FLUSH);
    rows.resize(rows.size() - stream.avail_out);
    inflateEnd(&stream);
    MutateBytes(rows, 64);
    if (deflateInit2(&stream, 1, Z_DEFLATED, bare ? -MAX_WBITS : MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return;
    packed.resize(deflateBound(&stream, rows.size()) + 16);
    stream.next_in = rows.data();
    stream.avail_in = static_cast<uInt>(rows.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(packed.size() - stream.avail_out);
    deflateEnd(&stream);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const CGImageRef image = DecodePNG({data, size});
    const CGImageRef asFile = DecodeImageFile({data, size});
    if (!image) {
        // Other kinds of picture begin otherwise.
        constexpr uint8_t kPNG[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        const bool looksLikePNG = size >= kSignature && std::memcmp(data, kPNG, kSignature) == 0;
        Require(!asFile || !looksLikePNG, "a file that is refused is refused everywhere");
        return asFile ? -1 : 0;
    }
    Require(asFile && SamePixels(*image, *asFile), "a file is read as what it is");
    const auto chunks = ChunksOf({data, size});
    const auto header = std::ranges::find(chunks, "IHDR", &Chunk::type);
    Require(header != chunks.end() && header->contents.size() == 13, "a picture has a header");
    Require(uint32_t(image->width()) == BigEndian(header->contents.data()) &&
                uint32_t(image->height()) == BigEndian(header->contents.data() + 4),
            "a picture has the size that its header says");
    Require(image->width() <= kLargestImageSide && image->height() <= kLargestImageSide,
            "a picture has a bound");
    for (const uint32_t pixel : image->pixels()) {
        const uint32_t alpha = pixel >> 24;
        Require((pixel >> 16 & 255) <= alpha && (pixel >> 8 & 255) <= alpha && (pixel & 255) <= alpha,
                "colours are premultiplied");
    }
    const CGImageRef again = DecodePNG(EncodePNGFile(*image));
    Require(again && SamePixels(*again, *image), "a picture is read as it was written");
    // Large pictures are slow, and teach no more than small ones.
    return image->pixels().size() > 4096 ? -1 : 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    std::minstd_rand random(seed);
    if (size < kSignature + 12 || random() % 8 == 0) return LLVMFuzzerMutate(data, size, most);
    auto chunks = ChunksOf({data, size});
    if (chunks.empty()) return LLVMFuzzerMutate(data, size, most);
    const bool bare = chunks[0].type == "CgBI";
    const size_t at = random() % chunks.size();
    switch (random() % 10) {
    case 0:
        chunks.erase(chunks.begin() + static_cast<std::ptrdiff_t>(at));
        break;
    case 1:
        chunks.insert(chunks.begin() + static_cast<std::ptrdiff_t>(at),
                      Chunk(chunks[random() % chunks.size()]));
        break;
    case 2:
        std::swap(chunks[at], chunks[random() % chunks.size()]);
        break;
    case 3:
        MutateBytes(chunks[at].contents, 16);
        break;
    default:
        if (chunks[at].type == "IDAT")
            MutateRows(chunks[at].contents, bare);
        else if (chunks[at].type == "IHDR" && chunks[at].contents.size() == 13 && random() % 4 != 0) {
            // Small sizes and real kinds, more often than not.
            const uint8_t kinds[] = {0, 2, 3, 4, 6};
            const uint8_t depths[] = {1, 2, 4, 8, 16};
            auto& contents = chunks[at].contents;
            PutBigEndian(contents.data() + 4 * (random() % 2), 1 + static_cast<uint32_t>(random() % 20));
            if (random() % 2 == 0) contents[8] = depths[random() % 5];
            if (random() % 2 == 0) contents[9] = kinds[random() % 5];
            contents[12] = random() % 2;
        } else
            MutateBytes(chunks[at].contents, 16);
    }
    const auto file = FileOf(chunks);
    if (file.size() > most) return LLVMFuzzerMutate(data, size, most);
    std::memcpy(data, file.data(), file.size());
    return file.size();
}
