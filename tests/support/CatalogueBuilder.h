#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyforge::test {

/// Bytes one after the other.
struct ByteWriter {
    std::vector<uint8_t> bytes;

    ByteWriter& little(uint64_t value, int count) {
        for (int i = 0; i < count; i++)
            bytes.push_back(uint8_t(value >> (8 * i)));
        return *this;
    }
    ByteWriter& big(uint64_t value, int count) {
        for (int i = count - 1; i >= 0; i--)
            bytes.push_back(uint8_t(value >> (8 * i)));
        return *this;
    }
    ByteWriter& text(std::string_view letters) {
        bytes.insert(bytes.end(), letters.begin(), letters.end());
        return *this;
    }
    ByteWriter& append(const std::vector<uint8_t>& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return *this;
    }
    ByteWriter& zeros(size_t count) {
        bytes.resize(bytes.size() + count);
        return *this;
    }
};

/// Writes compiled asset catalogues: plain ones with a line for each picture, odd ones piece by piece.
class CatalogueBuilder {
  public:
    using Key = std::map<uint16_t, uint16_t>; ///< attribute to value
    static constexpr uint16_t kElement = 1, kPart = 2, kAppearance = 7, kScale = 12, kIdiom = 15,
                              kSubtype = 16, kIdentifier = 17, kHorizontalClass = 20, kVerticalClass = 21;
    static constexpr uint16_t kUniversal = 0, kPhone = 1, kPad = 2;

    /// A rendition's own record. The format's letters stand as they are spoken ("ARGB").
    struct Rendition {
        uint32_t width = 0;
        uint32_t height = 0;
        uint32_t scalePercent = 100;
        std::string format = "ARGB";
        uint32_t layout = 12;
        std::string name = "picture.png";
        std::vector<uint8_t> info;
        std::vector<uint8_t> data;

        std::vector<uint8_t> record() const {
            ByteWriter out;
            out.text("ISTC").little(1, 4).little(0, 4).little(width, 4).little(height, 4).little(scalePercent,
                                                                                                 4);
            out.text(std::string(format.rbegin(), format.rend())).little(1, 4).little(0, 4).little(layout, 4);
            out.text(name.substr(0, 127)).zeros(128 - std::min<size_t>(name.size(), 127));
            out.little(info.size(), 4).little(1, 4).little(0, 4).little(data.size(), 4);
            return out.append(info).append(data).bytes;
        }
    };

    /// The data of a bitmap whose rows are packed as a whole.
    static std::vector<uint8_t> bitmapData(uint32_t packing, const std::vector<uint8_t>& packed) {
        return ByteWriter()
            .text("MLEC")
            .little(0, 4)
            .little(packing, 4)
            .little(packed.size(), 4)
            .append(packed)
            .bytes;
    }
    static std::vector<uint8_t> info(uint32_t kind, const std::vector<uint8_t>& value) {
        return ByteWriter().little(kind, 4).little(value.size(), 4).append(value).bytes;
    }
    /// The information that makes a rendition a part of another one; y counts upwards.
    static std::vector<uint8_t> linkInfo(uint32_t x, uint32_t y, uint32_t width, uint32_t height,
                                         const Key& key) {
        ByteWriter link;
        link.text("KLNI").little(0, 4).little(x, 4).little(y, 4).little(width, 4).little(height, 4);
        link.little(12, 2).little(key.size() * 4 + 4, 4);
        for (auto [attribute, value] : key)
            link.little(attribute, 2).little(value, 2);
        return info(1010, link.little(0, 4).bytes);
    }

    /// A picture made up from its pixels, 0xAARRGGBB and premultiplied.
    CatalogueBuilder& picture(std::string_view name, uint16_t scale, uint16_t idiom, uint32_t width,
                              uint32_t height, const std::function<uint32_t(uint32_t x, uint32_t y)>& pixel) {
        ByteWriter rows;
        for (uint32_t y = 0; y < height; y++) {
            for (uint32_t x = 0; x < width; x++)
                rows.little(pixel(x, y), 4);
        }
        Rendition rendition;
        rendition.width = width;
        rendition.height = height;
        rendition.scalePercent = scale * 100u;
        rendition.data = bitmapData(0, rows.bytes);
        return add(name, {{kScale, scale}, {kIdiom, idiom}}, rendition);
    }

    /// A rendition of that name; the key says what is special about it.
    CatalogueBuilder& add(std::string_view name, Key key, const Rendition& rendition) {
        key[kIdentifier] = identifierOf(name);
        key[kElement] = 85;
        key[kPart] = 181;
        return addHidden(key, rendition.record());
    }
    /// A rendition without a name, under its whole key.
    CatalogueBuilder& addHidden(const Key& key, const std::vector<uint8_t>& record) {
        renditions_.emplace_back(key, record);
        return *this;
    }
    CatalogueBuilder& entriesPerPage(size_t count) {
        entriesPerPage_ = count;
        return *this;
    }

    std::vector<uint8_t> build() const {
        Blocks blocks;
        std::vector<std::pair<std::string, uint32_t>> names;
        ByteWriter header;
        header.text("RATC").little(374, 4).little(11, 4).zeros(4).little(renditions_.size(), 4).zeros(416);
        names.emplace_back("CARHEADER", blocks.add(header.bytes));

        ByteWriter format;
        format.text("tmfk").little(0, 4).little(kKeyFormat.size(), 4);
        for (uint16_t attribute : kKeyFormat)
            format.little(attribute, 4);
        names.emplace_back("KEYFORMAT", blocks.add(format.bytes));

        Entries facets;
        for (const auto& [name, identifier] : identifiers_) {
            ByteWriter facet;
            facet.zeros(4).little(3, 2).little(kElement, 2).little(85, 2).little(kPart, 2).little(181, 2);
            facet.little(kIdentifier, 2).little(identifier, 2);
            facets.emplace_back(ByteWriter().text(name).bytes, facet.bytes);
        }
        names.emplace_back("FACETKEYS", addTree(blocks, facets));

        Entries renditions;
        for (const auto& [key, record] : renditions_) {
            ByteWriter packedKey;
            for (uint16_t attribute : kKeyFormat)
                packedKey.little(key.contains(attribute) ? key.at(attribute) : 0, 2);
            renditions.emplace_back(packedKey.bytes, record);
        }
        names.emplace_back("RENDITIONS", addTree(blocks, renditions));
        return blocks.container(names);
    }

  private:
    using Entries = std::vector<std::pair<std::vector<uint8_t>, std::vector<uint8_t>>>;
    inline static const std::vector<uint16_t> kKeyFormat = {
        kScale, kIdiom, kSubtype, kAppearance, kHorizontalClass, kVerticalClass, kIdentifier, kElement,
        kPart,  10,     8};

    /// Numbered blocks; number 0 is nothing.
    struct Blocks {
        std::vector<std::vector<uint8_t>> all = {{}};

        uint32_t add(std::vector<uint8_t> block) {
            all.push_back(std::move(block));
            return uint32_t(all.size() - 1);
        }
        std::vector<uint8_t> container(const std::vector<std::pair<std::string, uint32_t>>& names) const {
            constexpr size_t kStart = 512;
            ByteWriter body;
            ByteWriter table;
            table.big(all.size(), 4);
            for (const auto& block : all) {
                table.big(block.empty() ? 0 : kStart + body.bytes.size(), 4).big(block.size(), 4);
                body.append(block);
            }
            ByteWriter nameTable;
            nameTable.big(names.size(), 4);
            for (const auto& [name, number] : names)
                nameTable.big(number, 4).big(name.size(), 1).text(name);

            size_t tableOffset = kStart + body.bytes.size();
            ByteWriter file;
            file.text("BOMStore")
                .big(1, 4)
                .big(all.size() - 1, 4)
                .big(tableOffset, 4)
                .big(table.bytes.size(), 4);
            file.big(tableOffset + table.bytes.size(), 4).big(nameTable.bytes.size(), 4);
            file.zeros(kStart - file.bytes.size());
            return file.append(body.bytes).append(table.bytes).append(nameTable.bytes).bytes;
        }
    };

    uint16_t identifierOf(std::string_view name) {
        auto next = uint16_t(1000 + identifiers_.size());
        return identifiers_.try_emplace(std::string(name), next).first->second;
    }

    // Leaves in a row, and above them, when there are several, a page that knows the first key of each.
    uint32_t addTree(Blocks& blocks, const Entries& entries) const {
        std::vector<ByteWriter> leaves;
        std::vector<uint32_t> firstKeys;
        for (size_t start = 0; start == 0 || start < entries.size(); start += entriesPerPage_) {
            ByteWriter pairs;
            size_t end = std::min(entries.size(), start + entriesPerPage_);
            for (size_t i = start; i < end; i++) {
                uint32_t value = blocks.add(entries[i].second);
                uint32_t key = blocks.add(entries[i].first);
                pairs.big(value, 4).big(key, 4);
                if (i == start) firstKeys.push_back(key);
            }
            leaves.push_back(pairs);
        }
        auto first = uint32_t(blocks.all.size());
        for (size_t i = 0; i < leaves.size(); i++) {
            ByteWriter page;
            page.big(1, 2).big(leaves[i].bytes.size() / 8, 2);
            page.big(i + 1 < leaves.size() ? first + i + 1 : 0, 4).big(i > 0 ? first + i - 1 : 0, 4);
            blocks.add(page.append(leaves[i].bytes).bytes);
        }
        uint32_t root = first;
        if (leaves.size() > 1) {
            ByteWriter page;
            page.big(0, 2).big(leaves.size(), 2).big(0, 8);
            for (size_t i = 0; i < leaves.size(); i++)
                page.big(first + i, 4).big(firstKeys[i], 4);
            root = blocks.add(page.bytes);
        }
        return blocks.add(ByteWriter()
                              .text("tree")
                              .big(1, 4)
                              .big(root, 4)
                              .big(4096, 4)
                              .big(entries.size(), 4)
                              .zeros(1)
                              .bytes);
    }

    std::map<std::string, uint16_t> identifiers_;
    std::vector<std::pair<Key, std::vector<uint8_t>>> renditions_;
    size_t entriesPerPage_ = 256;
};

/// A catalogue with the system's marks, plain squares of 30 points, at the scales 1, 2 and 3. The three
/// pictures of a name differ in the alpha of all their pixels: 255 at scale 1, 254 at 2, 253 at 3.
inline std::vector<uint8_t> CatalogueOfSystemMarks() {
    CatalogueBuilder builder;
    for (uint16_t scale = 1; scale <= 3; scale++) {
        uint32_t side = 30u * scale;
        uint32_t alpha = (256u - scale) << 24;
        builder.picture("IconBadgeAndCloseBox", scale, CatalogueBuilder::kUniversal, side, side,
                        [alpha](uint32_t x, uint32_t y) { return alpha | x << 16 | y << 8 | 0x10; });
        builder.picture("IconCloseBoxX", scale, CatalogueBuilder::kUniversal, side, side,
                        [alpha](uint32_t x, uint32_t y) { return alpha | y << 16 | x << 8 | 0x20; });
    }
    return builder.build();
}

} // namespace tallyforge::test
