#include "mobileservices/CatalogCompression.h"
#include "support/CatalogueBuilder.h"

#include <gtest/gtest.h>
#include <string>
#include <zlib.h>

namespace tallyforge {
namespace {

using test::ByteWriter;

std::vector<uint8_t> Text(std::string_view text) {
    return {text.begin(), text.end()};
}

/// What it unpacks to, or "broken".
std::string Unpacked(CatalogPacking packing, const std::vector<uint8_t>& packed, size_t most = 1000) {
    auto out = Unpack(packing, packed, most);
    return out ? std::string(out->begin(), out->end()) : "broken";
}
std::string FromLZVN(const std::vector<uint8_t>& packed, size_t most = 1000) {
    return Unpacked(CatalogPacking::lzvn, packed, most);
}
std::string FromLZFSE(const std::vector<uint8_t>& packed, size_t most = 1000) {
    return Unpacked(CatalogPacking::lzfse, packed, most);
}

std::vector<uint8_t> Deflated(std::string_view text, int windowBits) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY), Z_OK);
    auto bytes = Text(text);
    std::vector<uint8_t> out(1000);
    stream.next_in = bytes.data();
    stream.avail_in = uInt(bytes.size());
    stream.next_out = out.data();
    stream.avail_out = uInt(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

/// A compressed block that codes four literals "a" and one copy by tables with a single symbol each, which
/// take no bits: 4 literals, then `match` (at most 15) bytes from `distanceSymbol` back.
struct TinyBlock {
    uint32_t rawBytes = 12;
    uint32_t literals = 4;
    uint32_t matches = 1;
    int lengthSymbol = 4;
    int matchSymbol = 8;
    int distanceSymbol = 1;
    uint32_t literalFrequency = 1024;
    uint32_t lengthState = 5;

    std::vector<uint8_t> bytes() const {
        std::vector<bool> bits;
        auto put = [&bits](uint32_t value, int count) {
            for (int i = 0; i < count; i++)
                bits.push_back(value >> i & 1);
        };
        // 14 bits: four ones, then what is above 24.
        auto table = [&put](int symbols, int used, uint32_t frequency) {
            for (int i = 0; i < symbols; i++)
                i == used ? put(15 | (frequency - 24) << 4, 14) : put(0, 2);
        };
        table(20, lengthSymbol, 64);
        table(20, matchSymbol, 64);
        table(64, distanceSymbol, 256);
        table(256, 'a', literalFrequency);
        ByteWriter tables;
        for (size_t i = 0; i < bits.size(); i += 8) {
            uint32_t byte = 0;
            for (size_t j = 0; j < 8 && i + j < bits.size(); j++)
                byte |= uint32_t(bits[i + j]) << j;
            tables.little(byte, 1);
        }
        constexpr uint64_t kNoUnusedBits = uint64_t(7) << 60;
        ByteWriter out;
        out.text("bvx2").little(rawBytes, 4);
        out.little(kNoUnusedBits | uint64_t(matches) << 40 | literals, 8);
        out.little(kNoUnusedBits, 8);
        out.little((32 + tables.bytes.size()) | uint64_t(lengthState) << 32, 8);
        return out.append(tables.bytes).text("bvx$").bytes;
    }
};

TEST(Unpack, TakesPlainBytesAsTheyAre) {
    EXPECT_EQ(Unpacked(CatalogPacking::none, Text("rows")), "rows");
    EXPECT_EQ(Unpacked(CatalogPacking::none, Text("rows"), 3), "broken");
}

TEST(Unpack, RefusesUnknownPackings) {
    for (uint32_t packing : {1u, 5u, 6u, 7u, 9u, 10u, 11u, 12u, 0xFFFFFFFFu})
        EXPECT_EQ(Unpacked(CatalogPacking{packing}, Text("rows")), "broken") << packing;
}

TEST(Unpack, InflatesGzipZlibAndBareStreams) {
    std::string text = "rows and rows and rows and rows";
    for (int windowBits : {MAX_WBITS + 16, MAX_WBITS, -MAX_WBITS}) {
        auto packed = Deflated(text, windowBits);
        EXPECT_EQ(Unpacked(CatalogPacking::zip, packed), text);
        EXPECT_EQ(Unpacked(CatalogPacking::zip, packed, text.size()), text);
        EXPECT_EQ(Unpacked(CatalogPacking::zip, packed, text.size() - 1), "broken");
        packed.resize(packed.size() / 2);
        EXPECT_EQ(Unpacked(CatalogPacking::zip, packed), "broken");
    }
    EXPECT_EQ(Unpacked(CatalogPacking::zip, {}), "broken");
}

// The end of a stream is 06 and seven zeros.
const std::vector<uint8_t> kEnd = {6, 0, 0, 0, 0, 0, 0, 0};

std::vector<uint8_t> Instructions(ByteWriter instructions) {
    return instructions.append(kEnd).bytes;
}

TEST(LZVN, CopiesLiterals) {
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0xE3, 1).text("abc"))), "abc");
    std::string long20 = "abcdefghijklmnopqrst";
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0xE0, 1).little(4, 1).text(long20))), long20);
    EXPECT_EQ(FromLZVN(kEnd), "");
}

TEST(LZVN, RepeatsByEachKindOfInstruction) {
    // 01 000 000, distance 1: one literal, three repeated
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0x40, 1).little(1, 1).text("a"))), "aaaa");
    // 10 001 111, two bytes of distance: two literals, four repeated
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0x8F, 1).little(2, 2).text("ab"))), "ababab");
    // 101 11 001, D = 3, M = 001 10: three literals, nine repeated
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0xB9, 1).little(3 << 2 | 2, 2).text("abc"))),
              "abcabcabcabc");
    // 01 000 110: one literal, three repeated from as far back as before
    EXPECT_EQ(
        FromLZVN(Instructions(ByteWriter().little(0x40, 1).little(1, 1).text("a").little(0x46, 1).text("b"))),
        "aaaabbbb");
    // 1111 0010: two more; 1111 0000 and a byte: that and sixteen more
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0x40, 1).little(1, 1).text("a").little(0xF2, 1))),
              "aaaaaa");
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0x40, 1).little(1, 1).text("a").little(0x01F0, 2))),
              std::string(4 + 17, 'a'));
    // 00 000 001, 0x00: 256 back
    std::string alphabet;
    for (int i = 0; i < 256; i++)
        alphabet += char('A' + i % 7);
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0xF0E0, 2).text(alphabet).little(0x0001, 2))),
              alphabet + alphabet.substr(0, 3));
}

TEST(LZVN, PassesOverInstructionsThatDoNothing) {
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0x0E, 1).little(0xE1, 1).text("a").little(0x16, 1))),
              "a");
}

TEST(LZVN, RefusesBrokenStreams) {
    EXPECT_EQ(FromLZVN({}), "broken");
    EXPECT_EQ(FromLZVN(ByteWriter().little(0xE3, 1).text("abc").bytes), "broken") << "no end";
    EXPECT_EQ(FromLZVN(ByteWriter().little(0xE9, 1).text("abc").bytes), "broken") << "too few literals";
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0x40, 1).little(2, 1).text("a"))), "broken")
        << "too far back";
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0x40, 1).little(0, 1).text("a"))), "broken")
        << "no distance";
    EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(0xE1, 1).text("a").little(0xF2, 1))), "broken")
        << "as before, with nothing before";
    for (int unknown : {0x1E, 0x26, 0x2E, 0x36, 0x3E, 0x70, 0x7F, 0xD0, 0xDF})
        EXPECT_EQ(FromLZVN(Instructions(ByteWriter().little(uint64_t(unknown), 1))), "broken") << unknown;
}

TEST(LZVN, StopsAtTheLimit) {
    auto packed = Instructions(ByteWriter().little(0x40, 1).little(1, 1).text("a").little(0xFFF0, 2));
    EXPECT_EQ(FromLZVN(packed, 4 + 271), std::string(4 + 271, 'a'));
    EXPECT_EQ(FromLZVN(packed, 4 + 270), "broken");
}

TEST(LZFSE, ReadsPlainBlocks) {
    auto two = ByteWriter()
                   .text("bvx-")
                   .little(2, 4)
                   .text("ab")
                   .text("bvx-")
                   .little(1, 4)
                   .text("c")
                   .text("bvx$")
                   .bytes;
    EXPECT_EQ(FromLZFSE(two), "abc");
    EXPECT_EQ(FromLZFSE(two, 2), "broken");
    EXPECT_EQ(FromLZFSE(ByteWriter().text("bvx-").little(9, 4).text("ab").bytes), "broken");
}

TEST(LZFSE, ReadsLZVNBlocks) {
    auto inner = Instructions(ByteWriter().little(0x40, 1).little(1, 1).text("a"));
    auto block = [&inner](uint32_t rawBytes) {
        return ByteWriter()
            .text("bvxn")
            .little(rawBytes, 4)
            .little(inner.size(), 4)
            .append(inner)
            .text("bvx$")
            .bytes;
    };
    EXPECT_EQ(FromLZFSE(block(4)), "aaaa");
    EXPECT_EQ(FromLZVN(block(4)), "aaaa") << "the same where a bare stream is expected";
    EXPECT_EQ(FromLZFSE(block(3)), "broken");
    EXPECT_EQ(FromLZFSE(block(5)), "broken");
    EXPECT_EQ(FromLZFSE(block(4), 3), "broken");
}

TEST(LZFSE, ReadsCompressedBlocks) {
    EXPECT_EQ(FromLZFSE(TinyBlock().bytes()), std::string(12, 'a'));
    EXPECT_EQ(FromLZFSE(TinyBlock().bytes(), 12), std::string(12, 'a'));
    EXPECT_EQ(FromLZFSE(TinyBlock{.distanceSymbol = 3}.bytes()), std::string(12, 'a'));
}

TEST(LZFSE, RefusesBrokenBlocks) {
    EXPECT_EQ(FromLZFSE(TinyBlock().bytes(), 11), "broken") << "over the limit";
    EXPECT_EQ(FromLZFSE(TinyBlock{.rawBytes = 11}.bytes()), "broken");
    EXPECT_EQ(FromLZFSE(TinyBlock{.rawBytes = 13}.bytes()), "broken");
    EXPECT_EQ(FromLZFSE(TinyBlock{.literals = 5}.bytes()), "broken") << "literals come in fours";
    EXPECT_EQ(FromLZFSE(TinyBlock{.literals = 16}.bytes()), "broken") << "more literals than bytes";
    EXPECT_EQ(FromLZFSE(TinyBlock{.lengthSymbol = 5, .matchSymbol = 7}.bytes()), "broken")
        << "too few literals";
    EXPECT_EQ(FromLZFSE(TinyBlock{.distanceSymbol = 4}.bytes()), "broken")
        << "one more bit, which is not there";
    EXPECT_EQ(FromLZFSE(TinyBlock{.distanceSymbol = 0}.bytes()), "broken")
        << "as before, with nothing before";
    EXPECT_EQ(FromLZFSE(TinyBlock{.literalFrequency = 1025}.bytes()), "broken")
        << "more states than there are";
    EXPECT_EQ(FromLZFSE(TinyBlock{.lengthState = 64}.bytes()), "broken") << "a state that is none";
    EXPECT_EQ(FromLZFSE(TinyBlock{.matches = 10001}.bytes()), "broken");
    EXPECT_EQ(FromLZFSE(TinyBlock{.lengthSymbol = 0, .matchSymbol = 0}.bytes()), "broken")
        << "a step that does nothing";
    auto whole = TinyBlock().bytes();
    for (size_t size = 0; size < whole.size(); size++)
        EXPECT_EQ(FromLZFSE({whole.begin(), whole.begin() + std::ptrdiff_t(size)}), "broken") << size;
}

TEST(LZFSE, RefusesUnknownBlocksAndMissingEnds) {
    EXPECT_EQ(FromLZFSE({}), "broken");
    EXPECT_EQ(FromLZFSE(Text("bvx?")), "broken");
    EXPECT_EQ(FromLZFSE(ByteWriter().text("bvx-").little(1, 4).text("c").bytes), "broken");
    EXPECT_EQ(FromLZFSE(Text("bvx$")), "");
}

TEST(LZFSE, RefusesCrowdsOfEmptyBlocks) {
    ByteWriter crowd;
    for (int i = 0; i < 1000; i++)
        crowd.text("bvx-").little(0, 4);
    EXPECT_EQ(FromLZFSE(crowd.text("bvx$").bytes), "broken");
}

} // namespace
} // namespace tallyforge
