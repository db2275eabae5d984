#include "coregraphics/Canvas.h"
#include "mobileservices/AssetCatalog.h"
#include "rastergraphics/RasterGraphics.h"
#include "support/CatalogueBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyforge {
namespace {

using test::ByteWriter;
using test::CatalogueBuilder;
using testing::ElementsAre;

std::shared_ptr<const AssetCatalog> Opened(const CatalogueBuilder& builder) {
    auto catalog = AssetCatalog::open(builder.build());
    EXPECT_TRUE(catalog) << catalog.reason();
    return *catalog;
}

auto Plain(uint32_t pixel) {
    return [pixel](uint32_t, uint32_t) { return pixel; };
}

/// The first pixel of the picture that is chosen, 0 for none.
uint32_t Chosen(const AssetCatalog& catalog, std::string_view name, CatalogIdiom idiom, double scale) {
    auto picture = catalog.pictureNamed(name, idiom, scale);
    return picture.bitmap ? picture.bitmap->pixel(0, 0) : 0;
}

/// A rendition of one colour, its rows packed as given.
CatalogueBuilder::Rendition Bitmap(uint32_t width, uint32_t height, std::vector<uint8_t> data) {
    CatalogueBuilder::Rendition rendition;
    rendition.width = width;
    rendition.height = height;
    rendition.data = std::move(data);
    return rendition;
}

CGImage::Pixels PixelsOf(const CatalogueBuilder::Rendition& rendition) {
    CatalogueBuilder builder;
    builder.add("Mark", {{CatalogueBuilder::kScale, 1}}, rendition);
    auto picture = Opened(builder)->pictureNamed("Mark", CatalogIdiom::phone, 1);
    return picture.bitmap ? picture.bitmap->pixels() : CGImage::Pixels();
}

TEST(AssetCatalog, NamesAreSortedAndComeOnce) {
    CatalogueBuilder builder;
    for (std::string_view name : {"b", "C", "a"}) {
        builder.picture(name, 1, 0, 1, 1, Plain(0xFF000000));
        builder.picture(name, 2, 0, 2, 2, Plain(0xFF000000));
    }
    EXPECT_THAT(Opened(builder)->facetNames(), ElementsAre("C", "a", "b"));
}

TEST(AssetCatalog, TreesOfManyPagesAreReadWhole) {
    CatalogueBuilder builder;
    builder.entriesPerPage(3);
    for (uint32_t i = 0; i < 100; i++)
        builder.picture("name" + std::to_string(i), 1, 0, 1, 1, Plain(0xFF000000 | i));
    auto catalog = Opened(builder);
    EXPECT_EQ(catalog->facetNames().size(), 100u);
    for (uint32_t i = 0; i < 100; i++)
        EXPECT_EQ(Chosen(*catalog, "name" + std::to_string(i), CatalogIdiom::phone, 1), 0xFF000000 | i);
}

TEST(AssetCatalog, EmptyOneHasNoNames) {
    EXPECT_TRUE(Opened(CatalogueBuilder())->facetNames().empty());
}

TEST(AssetCatalog, UnknownNameHasNoPicture) {
    CatalogueBuilder builder;
    builder.picture("Mark", 1, 0, 1, 1, Plain(0xFF000000));
    EXPECT_EQ(Opened(builder)->pictureNamed("mark", CatalogIdiom::phone, 1).bitmap, nullptr);
    EXPECT_EQ(Opened(builder)->pictureNamed("", CatalogIdiom::phone, 1).bitmap, nullptr);
}

TEST(AssetCatalog, PixelsStandWhereTheyBelong) {
    CatalogueBuilder builder;
    builder.picture("Mark", 2, 0, 3, 2, [](uint32_t x, uint32_t y) { return 0xFF000000 | x << 16 | y << 8; });
    auto picture = Opened(builder)->pictureNamed("Mark", CatalogIdiom::phone, 2);
    ASSERT_TRUE(picture.bitmap);
    EXPECT_EQ(picture.scale, 2);
    EXPECT_EQ(picture.bitmap->width(), 3);
    EXPECT_EQ(picture.bitmap->height(), 2);
    EXPECT_THAT(picture.bitmap->pixels(),
                ElementsAre(0xFF000000, 0xFF010000, 0xFF020000, 0xFF000100, 0xFF010100, 0xFF020100));
}

TEST(AssetCatalog, ScaleIsTheScreensThenTheNextSharperThenTheNextCoarser) {
    auto withScales = [](std::initializer_list<uint16_t> scales) {
        CatalogueBuilder builder;
        for (uint16_t scale : scales)
            builder.picture("Mark", scale, 0, 1, 1, Plain(0xFF000000 | scale));
        return Opened(builder);
    };
    auto scaleFor = [](const auto& catalog, double scale) {
        auto picture = catalog->pictureNamed("Mark", CatalogIdiom::phone, scale);
        EXPECT_EQ(picture.bitmap->pixel(0, 0) & 0xFF, uint32_t(picture.scale));
        return picture.scale;
    };
    auto all = withScales({1, 2, 3});
    EXPECT_EQ(scaleFor(all, 1), 1);
    EXPECT_EQ(scaleFor(all, 2), 2);
    EXPECT_EQ(scaleFor(all, 3), 3);
    EXPECT_EQ(scaleFor(all, 1.5), 2);
    EXPECT_EQ(scaleFor(all, 4), 3);
    auto outer = withScales({3, 1});
    EXPECT_EQ(scaleFor(outer, 2), 3);
    auto coarse = withScales({1, 2});
    EXPECT_EQ(scaleFor(coarse, 3), 2);
}

TEST(AssetCatalog, IdiomCountsBeforeScale) {
    CatalogueBuilder builder;
    builder.picture("Mark", 2, CatalogueBuilder::kUniversal, 1, 1, Plain(0xFF000001));
    builder.picture("Mark", 1, CatalogueBuilder::kPad, 1, 1, Plain(0xFF000002));
    auto catalog = Opened(builder);
    EXPECT_EQ(Chosen(*catalog, "Mark", CatalogIdiom::phone, 2), 0xFF000001);
    EXPECT_EQ(Chosen(*catalog, "Mark", CatalogIdiom::pad, 2), 0xFF000002);
}

TEST(AssetCatalog, PictureForAnotherIdiomOnlyIsNone) {
    CatalogueBuilder builder;
    builder.picture("Mark", 2, CatalogueBuilder::kPad, 1, 1, Plain(0xFF000001));
    EXPECT_EQ(Chosen(*Opened(builder), "Mark", CatalogIdiom::phone, 2), 0u);
}

TEST(AssetCatalog, PlainOnesCountBeforeSpecialOnes) {
    for (uint16_t special : {CatalogueBuilder::kAppearance, CatalogueBuilder::kHorizontalClass,
                             CatalogueBuilder::kVerticalClass, CatalogueBuilder::kSubtype, uint16_t(10)}) {
        CatalogueBuilder builder;
        auto dark = Bitmap(1, 1, CatalogueBuilder::bitmapData(0, {1, 0, 0, 255}));
        auto light = Bitmap(1, 1, CatalogueBuilder::bitmapData(0, {2, 0, 0, 255}));
        builder.add("Mark", {{special, 1}, {CatalogueBuilder::kScale, 2}}, dark);
        builder.add("Only", {{special, 1}, {CatalogueBuilder::kScale, 2}}, dark);
        builder.add("Mark", {{CatalogueBuilder::kScale, 1}}, light);
        auto catalog = Opened(builder);
        EXPECT_EQ(Chosen(*catalog, "Mark", CatalogIdiom::phone, 2), 0xFF000002) << special;
        EXPECT_EQ(Chosen(*catalog, "Only", CatalogIdiom::phone, 2), 0xFF000001)
            << "better than nothing " << special;
    }
}

TEST(AssetCatalog, BrokenPictureGivesWayToTheNextBest) {
    CatalogueBuilder builder;
    builder.add("Mark", {{CatalogueBuilder::kScale, 2}},
                Bitmap(1, 1, CatalogueBuilder::bitmapData(0, {1, 2})));
    builder.picture("Mark", 1, 0, 1, 1, Plain(0xFF000001));
    EXPECT_EQ(Chosen(*Opened(builder), "Mark", CatalogIdiom::phone, 2), 0xFF000001);
}

TEST(AssetCatalog, RowsMayHaveGaps) {
    auto rendition =
        Bitmap(1, 2, CatalogueBuilder::bitmapData(0, {1, 2, 3, 255, 9, 9, 9, 9, 4, 5, 6, 255, 9, 9, 9, 9}));
    rendition.info = CatalogueBuilder::info(1007, ByteWriter().little(8, 4).bytes);
    EXPECT_THAT(PixelsOf(rendition), ElementsAre(0xFF030201, 0xFF060504));
    rendition.info = CatalogueBuilder::info(1007, ByteWriter().little(3, 4).bytes);
    EXPECT_TRUE(PixelsOf(rendition).empty()) << "shorter than its pixels";
    rendition.info = {};
    EXPECT_TRUE(PixelsOf(rendition).empty()) << "more bytes than pixels";
}

TEST(AssetCatalog, GreyPicturesHaveGreyAndAlpha) {
    auto rendition = Bitmap(2, 1, CatalogueBuilder::bitmapData(0, {0x40, 0x80, 0xFF, 0xFF}));
    rendition.format = "GA8 ";
    EXPECT_THAT(PixelsOf(rendition), ElementsAre(0x80404040, 0xFFFFFFFF));
}

TEST(AssetCatalog, ColoursNeverExceedTheirAlpha) {
    EXPECT_THAT(PixelsOf(Bitmap(1, 1, CatalogueBuilder::bitmapData(0, {0x10, 0x90, 0xFF, 0x80}))),
                ElementsAre(0x80808010));
}

TEST(AssetCatalog, PaletteHoldsTheColours) {
    auto palette = [](uint32_t magic, std::vector<uint8_t> indexes) {
        ByteWriter plain;
        plain.little(magic, 4).little(1, 4).little(2, 2).little(0xFF112233, 4).little(0x80000040, 4);
        plain.append(indexes);
        return Bitmap(3, 1,
                      CatalogueBuilder::bitmapData(8, ByteWriter()
                                                          .text("bvx-")
                                                          .little(plain.bytes.size(), 4)
                                                          .append(plain.bytes)
                                                          .text("bvx$")
                                                          .bytes));
    };
    EXPECT_THAT(PixelsOf(palette(0xCAFEF00D, {1, 0, 1})), ElementsAre(0x80000040, 0xFF112233, 0x80000040));
    EXPECT_TRUE(PixelsOf(palette(0xCAFEF00D, {1, 0, 2})).empty()) << "a colour that is none";
    EXPECT_TRUE(PixelsOf(palette(0xCAFEF00D, {1, 0})).empty()) << "too few pixels";
    EXPECT_TRUE(PixelsOf(palette(0xCAFEF00E, {1, 0, 1})).empty());
}

TEST(AssetCatalog, RowsMayComeInParts) {
    auto parts = [](std::vector<std::pair<uint32_t, std::vector<uint8_t>>> all) {
        ByteWriter data;
        data.text("MLEC").little(1, 4).little(0, 4).little(all.size(), 4);
        for (const auto& [rows, bytes] : all)
            data.text("KCBC").little(0, 8).little(rows, 4).little(bytes.size(), 4).append(bytes);
        return Bitmap(1, 3, data.bytes);
    };
    std::vector<uint8_t> red = {0, 0, 255, 255};
    std::vector<uint8_t> two = {255, 0, 0, 255, 0, 255, 0, 255};
    EXPECT_THAT(PixelsOf(parts({{1, red}, {2, two}})), ElementsAre(0xFFFF0000, 0xFF0000FF, 0xFF00FF00));
    EXPECT_TRUE(PixelsOf(parts({{2, two}})).empty()) << "rows are missing";
    EXPECT_TRUE(PixelsOf(parts({{2, two}, {2, two}})).empty()) << "too many rows";
    EXPECT_TRUE(PixelsOf(parts({{1, two}, {2, two}})).empty()) << "a part of the wrong size";
    EXPECT_TRUE(PixelsOf(parts({{0xFFFFFFFF, two}})).empty());
}

TEST(AssetCatalog, LinksAreCutOutOfPackedPictures) {
    CatalogueBuilder::Key packed = {{CatalogueBuilder::kElement, 9}, {CatalogueBuilder::kPart, 181}};
    std::vector<uint8_t> bytes; // 3 x 4, blue tells the column and green the row from the top
    for (uint8_t y = 0; y < 4; y++) {
        for (uint8_t x = 0; x < 3; x++)
            bytes.insert(bytes.end(), {x, y, 0, 255});
    }
    auto linkTo = [&](uint32_t x, uint32_t bottom, uint32_t width, uint32_t height,
                      CatalogueBuilder::Key key) {
        CatalogueBuilder builder;
        builder.addHidden(packed, Bitmap(3, 4, CatalogueBuilder::bitmapData(0, bytes)).record());
        CatalogueBuilder::Rendition link;
        link.width = width;
        link.height = height;
        link.info = CatalogueBuilder::linkInfo(x, bottom, width, height, key);
        builder.add("Mark", {{CatalogueBuilder::kScale, 1}}, link);
        auto picture = Opened(builder)->pictureNamed("Mark", CatalogIdiom::phone, 1);
        return picture.bitmap ? picture.bitmap->pixels() : CGImage::Pixels();
    };
    // Column 1, from one row above the bottom: the two rows in the middle.
    EXPECT_THAT(linkTo(1, 1, 1, 2, packed), ElementsAre(0xFF000101, 0xFF000201));
    EXPECT_EQ(linkTo(0, 0, 3, 4, packed).size(), 12u);
    EXPECT_TRUE(linkTo(1, 0, 3, 1, packed).empty()) << "beyond the right edge";
    EXPECT_TRUE(linkTo(0, 3, 1, 2, packed).empty()) << "beyond the top edge";
    EXPECT_TRUE(linkTo(0xFFFFFFFF, 0xFFFFFFFF, 2, 2, packed).empty());
    EXPECT_TRUE(linkTo(0, 0, 0, 1, packed).empty());
    packed[CatalogueBuilder::kPart] = 180;
    CatalogueBuilder::Key nobody = {{CatalogueBuilder::kElement, 10}};
    EXPECT_TRUE(linkTo(0, 0, 1, 1, nobody).empty()) << "to nothing";
    // "Mark" is the first name: its own key, so that the link leads to itself.
    CatalogueBuilder::Key self = {{CatalogueBuilder::kElement, 85},
                                  {CatalogueBuilder::kPart, 181},
                                  {CatalogueBuilder::kIdentifier, 1000},
                                  {CatalogueBuilder::kScale, 1}};
    EXPECT_TRUE(linkTo(0, 0, 1, 1, self).empty()) << "to itself";
}

TEST(AssetCatalog, SizesAreBounded) {
    auto data = [](uint32_t pixels) {
        return CatalogueBuilder::bitmapData(0, std::vector<uint8_t>(pixels * 4, 255));
    };
    EXPECT_EQ(PixelsOf(Bitmap(4096, 1, data(4096))).size(), 4096u);
    EXPECT_TRUE(PixelsOf(Bitmap(4097, 1, data(4097))).empty());
    EXPECT_TRUE(PixelsOf(Bitmap(1, 4097, data(4097))).empty());
    EXPECT_TRUE(PixelsOf(Bitmap(0, 0, data(0))).empty());
    EXPECT_TRUE(PixelsOf(Bitmap(1, 0, data(0))).empty());
}

TEST(AssetCatalog, DocumentsAndUnknownFormatsAreNoPictures) {
    for (std::string format : {"PDF ", "DATA", "RGBW", "GA16"}) {
        auto rendition = Bitmap(1, 1, CatalogueBuilder::bitmapData(0, {1, 2, 3, 255}));
        rendition.format = format;
        EXPECT_TRUE(PixelsOf(rendition).empty()) << format;
    }
}

TEST(AssetCatalog, EmbeddedImageFilesAreDecoded) {
    Graphics::install(MakeRasterGraphics());
    CGImage source(2, 1);
    source.row(0)[0] = 0xFFFF0000;
    source.row(0)[1] = 0xFF00FF00;
    auto file = Graphics::current()->encodePNG(source);
    auto rendition =
        Bitmap(2, 1, ByteWriter().text("DWAR").little(0, 4).little(file.size(), 4).append(file).bytes);
    rendition.format = "JPEG"; // any file that the machine reads
    EXPECT_THAT(PixelsOf(rendition), ElementsAre(0xFFFF0000, 0xFF00FF00));
    rendition.data.resize(rendition.data.size() / 2);
    EXPECT_TRUE(PixelsOf(rendition).empty());
    Graphics::install(nullptr);
}

} // namespace
} // namespace tallyforge
