#include "coregraphics/Canvas.h"
#include "mobileservices/AssetCatalog.h"
#include "rastergraphics/RasterGraphics.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace tallyforge {
namespace {

namespace fs = std::filesystem;

/// One line of a source folder: a file and the devices it is for.
struct Source {
    fs::path file;
    std::string idiom;
    int scale = 0;          // 0 for documents, which have none
    bool isSpecial = false; // for some devices of the idiom only
    QJsonObject resizing;
};

using Sources = std::map<std::string, std::vector<Source>>; // by name

fs::path Folder() {
    return fs::path(TALLYFORGE_FIXTURES) / "car";
}

std::vector<uint8_t> BytesOf(const fs::path& path) {
    QFile file(QString::fromStdString(path.string()));
    if (!file.open(QIODevice::ReadOnly)) return {};
    QByteArray bytes = file.readAll();
    return {bytes.begin(), bytes.end()};
}

Sources ReadSources() {
    Sources sources;
    for (const auto& entry : fs::recursive_directory_iterator(Folder() / "Images.xcassets")) {
        if (entry.path().extension() != ".imageset") continue;
        auto bytes = BytesOf(entry.path() / "Contents.json");
        QJsonDocument json = QJsonDocument::fromJson(
            QByteArray(reinterpret_cast<const char*>(bytes.data()), int(bytes.size())));
        for (const QJsonValue& value : json["images"].toArray()) {
            QJsonObject image = value.toObject();
            if (!image.contains("filename")) continue;
            Source source;
            source.file = entry.path() / image["filename"].toString().toStdString();
            source.idiom = image["idiom"].toString().toStdString();
            source.scale = image["scale"].toString("0x").chopped(1).toInt();
            source.resizing = image["resizing"].toObject();
            for (const char* key :
                 {"subtype", "screen-width", "width-class", "height-class", "memory", "graphics-feature-set"})
                source.isSpecial |= image.contains(key);
            sources[entry.path().stem().string()].push_back(source);
        }
    }
    return sources;
}

/// Which columns (or rows) of a source a catalogue keeps. The second number is the neighbour that may stand
/// there instead.
using Kept = std::vector<std::pair<int, int>>;

// A picture that stretches is kept without what stretching repeats: the first cap, the centre, the last cap.
// Where they meet the maker lets one run over the last line of the other; which one depends on its version.
Kept KeptOf(int count, bool stretches, int firstCap, int centre, int lastCap) {
    Kept kept;
    for (int i = 0; i < count; i++) {
        if (!stretches || i < firstCap + centre || i >= count - lastCap) kept.emplace_back(i, i);
    }
    if (!stretches) return kept;
    for (int seam : {firstCap, firstCap + centre}) {
        auto& before = kept[size_t(seam - 1)];
        auto& after = kept[size_t(seam)];
        before.second = after.first;
        after.second = before.first;
    }
    return kept;
}

CGImageRef Decoded(const fs::path& file) {
    static std::map<fs::path, CGImageRef> known;
    auto& image = known[file];
    if (!image) image = Graphics::current()->decodeImage(BytesOf(file));
    return image;
}

int Difference(uint32_t a, uint32_t b) {
    int largest = 0;
    for (int shift = 0; shift < 32; shift += 8)
        largest = std::max(largest, std::abs(int(a >> shift & 0xFF) - int(b >> shift & 0xFF)));
    return largest;
}

/// The largest difference of any channel between a picture and what is kept of its file, or 256 when the
/// sizes differ.
int DifferenceFrom(const Source& source, const CGImage& picture) {
    CGImageRef whole = Decoded(source.file);
    if (!whole) return 256;
    QString mode = source.resizing["mode"].toString();
    QJsonObject caps = source.resizing["cap-insets"].toObject();
    QJsonObject centre = source.resizing["center"].toObject();
    Kept columns = KeptOf(whole->width(), mode == "3-part-horizontal" || mode == "9-part",
                          caps["left"].toInt(), centre["width"].toInt(), caps["right"].toInt());
    Kept rows = KeptOf(whole->height(), mode == "3-part-vertical" || mode == "9-part", caps["top"].toInt(),
                       centre["height"].toInt(), caps["bottom"].toInt());
    if (picture.width() != int(columns.size()) || picture.height() != int(rows.size())) return 256;
    int largest = 0;
    for (size_t y = 0; y < rows.size(); y++) {
        for (size_t x = 0; x < columns.size(); x++) {
            int least = 256;
            for (int column : {columns[x].first, columns[x].second}) {
                for (int row : {rows[y].first, rows[y].second})
                    least =
                        std::min(least, Difference(picture.pixel(int(x), int(y)), whole->pixel(column, row)));
            }
            largest = std::max(largest, least);
        }
    }
    return largest;
}

struct Product {
    const char* file;
    std::set<std::string> idioms; // of the sources that apply
    std::map<uint16_t, std::string> idiomNumbers;
};

const std::vector<Product>& Products() {
    static const std::vector<Product> products = {
        {"assets.car", {"universal", "iphone", "ipad"}, {{0, "universal"}, {1, "iphone"}, {2, "ipad"}}},
        {"assets_ios.car", {"universal", "iphone", "ipad"}, {{0, "universal"}, {1, "iphone"}, {2, "ipad"}}},
        {"assets_iphone.car", {"universal", "iphone"}, {{0, "universal"}, {1, "iphone"}}},
        {"assets_ipad.car", {"universal", "ipad"}, {{0, "universal"}, {2, "ipad"}}},
        {"assets_tv.car", {"universal", "tv"}, {{0, "universal"}, {3, "tv"}}},
        {"assets_watch.car", {"universal", "watch"}, {{0, "universal"}, {5, "watch"}}},
        // Keys of the desktop name no idiom.
        {"assets_mac.car", {"universal", "mac"}, {{0, ""}}},
    };
    return products;
}

class CatalogueFixture : public testing::Test {
  protected:
    void SetUp() override {
        if (!fs::exists(Folder() / "assets.car")) GTEST_SKIP() << "the fixture catalogues are not here";
        Graphics::install(MakeRasterGraphics());
        sources_ = ReadSources();
        ASSERT_EQ(sources_.size(), 33u);
    }
    void TearDown() override { Graphics::install(nullptr); }

    static std::shared_ptr<const AssetCatalog> open(const char* file) {
        auto catalog = AssetCatalog::open(BytesOf(Folder() / file));
        EXPECT_TRUE(catalog) << file << ": " << catalog.reason();
        return catalog ? *catalog : nullptr;
    }
    const Sources& sources() const { return sources_; }

  private:
    Sources sources_;
};

TEST_F(CatalogueFixture, NamesAreThoseOfTheSourcesForTheDevice) {
    for (const Product& product : Products()) {
        std::vector<std::string> expected;
        for (const auto& [name, all] : sources()) {
            if (std::ranges::any_of(
                    all, [&](const Source& source) { return product.idioms.contains(source.idiom); }))
                expected.push_back(name);
        }
        auto catalog = open(product.file);
        ASSERT_TRUE(catalog);
        EXPECT_EQ(catalog->facetNames(), expected) << product.file;
    }
}

// Each rendition is compared with the file it is named after. Documents were drawn by the maker of the
// catalogue; there is no such file, so only their size is known: 22 points.
TEST_F(CatalogueFixture, EveryRenditionHasThePixelsOfItsFile) {
    for (const Product& product : Products()) {
        auto catalog = open(product.file);
        ASSERT_TRUE(catalog);
        std::map<uint16_t, std::string> namesByIdentifier;
        size_t compared = 0;
        size_t drawn = 0;
        size_t documents = 0;
        for (const auto& indexed : catalog->renditions()) {
            auto rendition = CatalogRendition::parse(indexed.bytes);
            ASSERT_TRUE(rendition);
            CGImageRef bitmap = catalog->bitmapOf(*rendition);
            if (indexed.key[CatalogAttribute::identifier] == 0) {
                EXPECT_TRUE(bitmap) << "a packed picture of " << product.file;
                continue;
            }
            int scale = indexed.key[CatalogAttribute::scale];
            if (scale == 0) {
                EXPECT_FALSE(bitmap) << "a document";
                documents++;
                continue;
            }
            ASSERT_TRUE(bitmap) << product.file << " " << rendition->name;
            if (rendition->name.ends_with(".pdf")) {
                EXPECT_EQ(bitmap->width(), 22 * scale);
                EXPECT_EQ(bitmap->height(), 22 * scale);
                drawn++;
                continue;
            }
            // Files of one name and scale are the same in all folders but where they stretch.
            int best = 256;
            for (const auto& [name, all] : sources()) {
                for (const Source& source : all) {
                    if (best > 2 && source.file.filename() == rendition->name && source.scale == scale)
                        best = std::min(best, DifferenceFrom(source, *bitmap));
                }
            }
            EXPECT_LE(best, 2) << product.file << " " << rendition->name;
            compared++;
        }
        EXPECT_GT(compared, 50u) << product.file;
        EXPECT_GT(drawn, 3u) << product.file;
        EXPECT_GT(documents, 2u) << product.file;
        RecordProperty(product.file, int(compared));
    }
}

// The lookup by name, against the same choice made among the sources.
TEST_F(CatalogueFixture, EveryNameGivesTheFileForDeviceAndScale) {
    struct Device {
        const char* file;
        CatalogIdiom idiom;
        const char* name;
    };
    for (const Device& device : {Device{"assets.car", CatalogIdiom::phone, "iphone"},
                                 Device{"assets.car", CatalogIdiom::pad, "ipad"},
                                 Device{"assets_ios.car", CatalogIdiom::phone, "iphone"},
                                 Device{"assets_iphone.car", CatalogIdiom::phone, "iphone"},
                                 Device{"assets_ipad.car", CatalogIdiom::pad, "ipad"}}) {
        auto catalog = open(device.file);
        ASSERT_TRUE(catalog);
        int compared = 0;
        for (const auto& [name, all] : sources()) {
            if (name.starts_with("v_")) // drawn from documents that are not here
                continue;
            for (int screen = 1; screen <= 3; screen++) {
                std::vector<Source> plain;
                for (const char* idiom : {device.name, "universal"}) {
                    if (plain.empty())
                        std::ranges::copy_if(all, std::back_inserter(plain), [&](const Source& source) {
                            return source.idiom == idiom && !source.isSpecial;
                        });
                }
                // Own scale first, sharper ones next (the nearest first), coarser ones last (the nearest
                // first).
                std::ranges::sort(plain, {}, [screen](const Source& source) {
                    return source.scale >= screen ? source.scale - screen : 100 + screen - source.scale;
                });
                auto picture = catalog->pictureNamed(name, device.idiom, screen);
                std::string what =
                    std::string(device.file) + " " + device.name + " " + name + " " + std::to_string(screen);
                if (plain.empty()) {
                    EXPECT_FALSE(picture.bitmap) << what;
                    continue;
                }
                ASSERT_TRUE(picture.bitmap) << what;
                EXPECT_EQ(picture.scale, plain.front().scale) << what;
                EXPECT_LE(DifferenceFrom(plain.front(), *picture.bitmap), 2) << what;
                compared++;
            }
        }
        EXPECT_GT(compared, 60) << device.file;
    }
}

TEST_F(CatalogueFixture, VectorPicturesComeAsDrawnForTheScreen) {
    auto catalog = open("assets.car");
    ASSERT_TRUE(catalog);
    for (int scale = 1; scale <= 3; scale++) {
        auto picture = catalog->pictureNamed("v_universal", CatalogIdiom::phone, scale);
        ASSERT_TRUE(picture.bitmap);
        EXPECT_EQ(picture.scale, scale);
        EXPECT_EQ(picture.bitmap->width(), 22 * scale);
    }
}

} // namespace
} // namespace tallyforge
