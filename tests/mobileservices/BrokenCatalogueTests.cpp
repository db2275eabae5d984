#include "coregraphics/Canvas.h"
#include "mobileservices/AssetCatalog.h"
#include "support/CatalogueBuilder.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>

namespace tallyforge {
namespace {

using test::ByteWriter;
using test::CatalogueBuilder;

constexpr double kMostTime = 50; // milliseconds
constexpr size_t kAllNames = 1000;
constexpr size_t kSomeNames = 3;

/// Opens the bytes and decodes the pictures of at most so many names. How many came out.
size_t TryNames(std::vector<uint8_t> bytes, size_t most, size_t first = 0) {
    auto catalog = AssetCatalog::open(std::move(bytes));
    if (!catalog) return 0;
    std::vector<std::string> names = (*catalog)->facetNames();
    size_t pictures = 0;
    for (size_t i = 0; i < std::min(most, names.size()); i++) {
        const std::string& name = names[(first + i) % names.size()];
        pictures += (*catalog)->pictureNamed(name, CatalogIdiom::phone, 2).bitmap != nullptr;
    }
    return pictures;
}

/// The most time that one of many tries took of the processor, whatever else the machine does.
class Stopwatch {
  public:
    template <class Work>
    auto time(Work work) {
        std::clock_t start = std::clock();
        auto result = work();
        slowest_ = std::max(slowest_, 1000.0 * double(std::clock() - start) / CLOCKS_PER_SEC);
        return result;
    }
    double slowest() const { return slowest_; } // milliseconds

  private:
    double slowest_ = 0;
};

std::vector<uint8_t> Fixture(const std::string& name) {
    std::ifstream file(std::string(TALLYFORGE_FIXTURES "/car/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void TruncateEvery(const std::vector<uint8_t>& whole, size_t step) {
    Stopwatch watch;
    for (size_t size = 0; size < whole.size(); size += step)
        watch.time([&] {
            return TryNames({whole.begin(), whole.begin() + std::ptrdiff_t(size)}, kSomeNames, size);
        });
    EXPECT_LT(watch.slowest(), kMostTime);
}

void FlipBytes(const std::vector<uint8_t>& whole, int tries) {
    std::mt19937 random(20240517);
    // Half of the flips go where the indexes and heads are, which a flip in the pixels would seldom hit.
    std::vector<size_t> interesting;
    for (size_t i = 0; i + 4 <= whole.size(); i++) {
        std::string_view letters(reinterpret_cast<const char*>(&whole[i]), 4);
        if (i < 32 || letters == "ISTC" || letters == "KLNI" || letters == "MLEC" || letters == "bvx2" ||
            letters == "tree")
            interesting.push_back(i);
    }
    Stopwatch watch;
    size_t pictures = 0;
    for (int i = 0; i < tries; i++) {
        std::vector<uint8_t> broken = whole;
        for (uint32_t flips = 1 + random() % 8; flips > 0; flips--) {
            size_t at = random() % 2 ? interesting[random() % interesting.size()] + random() % 64 : random();
            broken[at % broken.size()] = uint8_t(random());
        }
        pictures += watch.time([&] { return TryNames(std::move(broken), kSomeNames, random()); });
    }
    EXPECT_LT(watch.slowest(), kMostTime);
    testing::Test::RecordProperty("slowest_microseconds", int(watch.slowest() * 1000));
    EXPECT_GT(pictures, 0u) << "most flips leave most pictures alone";
}

TEST(BrokenCatalogue, BytesThatAreNoCatalogueAreRefused) {
    EXPECT_FALSE(AssetCatalog::open({}));
    EXPECT_FALSE(AssetCatalog::open({'B', 'O', 'M'}));
    EXPECT_FALSE(AssetCatalog::open(ByteWriter().text("BOMStore").bytes));
    EXPECT_FALSE(AssetCatalog::open(ByteWriter().text("BOMStore").big(2, 4).zeros(512).bytes));
    EXPECT_FALSE(AssetCatalog::open(ByteWriter().text("BOMStore").big(1, 4).zeros(512).bytes))
        << "empty container";
    EXPECT_FALSE(AssetCatalog::open(std::vector<uint8_t>(1000, 'x')));
}

TEST(BrokenCatalogue, EachPartIsNeeded) {
    auto whole = test::CatalogueOfSystemMarks();
    ASSERT_TRUE(AssetCatalog::open(whole));
    std::string text(whole.begin(), whole.end());
    for (std::string_view part :
         {"BOMStore", "CARHEADER", "RATC", "KEYFORMAT", "tmfk", "FACETKEYS", "RENDITIONS", "tree"}) {
        auto broken = whole;
        size_t at = text.rfind(part);
        ASSERT_NE(at, std::string::npos) << part;
        broken[at] ^= 0x20;
        EXPECT_FALSE(AssetCatalog::open(broken)) << part;
    }
}

TEST(BrokenCatalogue, TreesThatRunInACircleAreRefused) {
    auto whole = test::CatalogueOfSystemMarks();
    // The tree's block points to its first page by number; the table of blocks tells where that is.
    auto big = [&whole](size_t at) {
        return size_t(whole[at]) << 24 | size_t(whole[at + 1]) << 16 | size_t(whole[at + 2]) << 8 |
               whole[at + 3];
    };
    std::string text(whole.begin(), whole.end());
    size_t tree = text.find("tree");
    ASSERT_NE(tree, std::string::npos);
    size_t page = big(tree + 8);
    size_t pageOffset = big(big(16) + 4 + page * 8);
    ASSERT_EQ(whole[pageOffset + 1], 1) << "a leaf";
    for (size_t i = 0; i < 4; i++)
        whole[pageOffset + 4 + i] = whole[tree + 8 + i]; // the page after it is itself
    EXPECT_FALSE(AssetCatalog::open(whole));
    whole[pageOffset + 1] = 0; // no leaf any more, and it leads nowhere sound
    EXPECT_FALSE(AssetCatalog::open(whole));
}

TEST(BrokenCatalogue, TooManyEntriesAreRefused) {
    // One leaf with 30,000 entries, which is the page after itself until the steps run out: the file has a
    // great many blocks, so that only the number of entries can stop it.
    constexpr size_t kBlocks = 200000;
    ByteWriter leaf;
    leaf.big(1, 2).big(30000, 2).big(3, 4).big(0, 4);
    leaf.zeros(size_t(30000) * 8);
    ByteWriter file;
    size_t treeOffset = 32 + 24;
    size_t leafOffset = treeOffset + 24;
    size_t tableOffset = leafOffset + leaf.bytes.size();
    size_t tableLength = 4 + kBlocks * 8;
    ByteWriter names;
    names.big(1, 4).big(2, 4).big(10, 1).text("RENDITIONS");
    file.text("BOMStore").big(1, 4).big(kBlocks, 4).big(tableOffset, 4).big(tableLength, 4);
    file.big(tableOffset + tableLength, 4).big(names.bytes.size(), 4).zeros(24);
    file.text("tree").big(1, 4).big(3, 4).big(4096, 4).big(0, 4).zeros(4).append(leaf.bytes);
    file.big(kBlocks, 4).zeros(16).big(treeOffset, 4).big(24, 4).big(leafOffset, 4).big(leaf.bytes.size(), 4);
    file.zeros((kBlocks - 4) * 8).append(names.bytes);
    auto store = BOMStore::open(file.bytes);
    ASSERT_TRUE(store);
    auto entries = store->entriesOfTree("RENDITIONS");
    ASSERT_FALSE(entries);
    EXPECT_EQ(entries.reason(), "the tree RENDITIONS has too many entries");
}

TEST(BrokenCatalogue, SmallFileCannotClaimAHugePicture) {
    CatalogueBuilder builder;
    CatalogueBuilder::Rendition rendition;
    rendition.width = 4096;
    rendition.height = 4096;
    for (uint32_t packing : {0u, 2u, 3u, 4u, 8u}) {
        rendition.data = CatalogueBuilder::bitmapData(packing, {6, 0, 0, 0, 0, 0, 0, 0});
        builder.add("Mark" + std::to_string(packing), {{CatalogueBuilder::kScale, 2}}, rendition);
    }
    Stopwatch watch;
    EXPECT_EQ(watch.time([&] { return TryNames(builder.build(), kAllNames); }), 0u);
    EXPECT_LT(watch.slowest(), kMostTime);
}

TEST(BrokenCatalogue, MadeOneMayBeCutAnywhere) {
    auto whole = test::CatalogueOfSystemMarks();
    EXPECT_EQ(TryNames(whole, kAllNames), 2u);
    TruncateEvery(whole, 97);
}

TEST(BrokenCatalogue, MadeOneMayHaveAnyBytesFlipped) {
    FlipBytes(test::CatalogueOfSystemMarks(), 2000);
}

TEST(BrokenCatalogue, FixtureMayBeCutAnywhere) {
    auto whole = Fixture("assets.car");
    if (whole.empty()) GTEST_SKIP() << "the fixture catalogues are not here";
    EXPECT_GT(TryNames(whole, kAllNames), 20u);
    TruncateEvery(whole, 97);
}

TEST(BrokenCatalogue, FixturesMayHaveAnyBytesFlipped) {
    auto whole = Fixture("assets.car");
    auto mac = Fixture("assets_mac.car");
    if (whole.empty() || mac.empty()) GTEST_SKIP() << "the fixture catalogues are not here";
    FlipBytes(whole, 1000);
    FlipBytes(mac, 1000);
}

} // namespace
} // namespace tallyforge
