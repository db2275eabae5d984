#include "mobileservices/BOMStore.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr size_t kBlockRecord = 8;
constexpr uint32_t kMostNames = 1024;

std::string_view AsText(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The head of a page of a tree; pairs of block numbers follow it.
struct TreePage {
    bool isLeaf = false;
    uint16_t count = 0;
    uint32_t next = 0; // the page to the right, 0 at the end
    ByteReader pairs;

    explicit TreePage(Bytes page) : pairs(page) {
        isLeaf = pairs.big16() != 0;
        count = pairs.big16();
        next = pairs.big32();
        pairs.big32(); // the page to the left
    }
};

} // namespace

Result<BOMStore> BOMStore::open(Bytes file) {
    ByteReader header(file);
    if (AsText(header.take(8)) != "BOMStore") return Error{"not a catalogue"};
    uint32_t version = header.big32();
    header.big32(); // how many blocks are in use
    uint32_t tableOffset = header.big32();
    uint32_t tableLength = header.big32();
    uint32_t namesOffset = header.big32();
    uint32_t namesLength = header.big32();
    if (!header.ok() || version != 1) return Error{"a catalogue of an unknown version"};

    BOMStore store;
    store.file_ = file;

    ByteReader table(PartOf(file, tableOffset, tableLength));
    uint32_t blocks = table.big32();
    if (!table.ok() || blocks > table.left().size() / kBlockRecord)
        return Error{"the catalogue's table of blocks lies outside it"};
    store.blockTable_ = table.take(size_t(blocks) * kBlockRecord);

    ByteReader names(PartOf(file, namesOffset, namesLength));
    uint32_t count = names.big32();
    if (!names.ok() || count > kMostNames) return Error{"the catalogue's table of names lies outside it"};
    for (uint32_t i = 0; i < count; i++) {
        uint32_t number = names.big32();
        Bytes name = names.take(names.u8());
        if (!names.ok()) return Error{"the catalogue's table of names is cut short"};
        store.names_.emplace_back(AsText(name), number);
    }
    return store;
}

Bytes BOMStore::block(uint32_t number) const {
    ByteReader record(PartOf(blockTable_, uint64_t(number) * kBlockRecord, kBlockRecord));
    uint32_t offset = record.big32();
    uint32_t length = record.big32();
    return record.ok() ? PartOf(file_, offset, length) : Bytes();
}

bool BOMStore::contains(std::string_view name) const {
    return std::any_of(names_.begin(), names_.end(),
                       [name](const auto& known) { return known.first == name; });
}

Bytes BOMStore::blockNamed(std::string_view name) const {
    for (const auto& [known, number] : names_) {
        if (known == name) return block(number);
    }
    return {};
}

Result<std::vector<BOMStore::Entry>> BOMStore::entriesOfTree(std::string_view name) const {
    ByteReader head(blockNamed(name));
    if (AsText(head.take(4)) != "tree") return Error{"the catalogue has no tree " + std::string(name)};
    head.big32(); // version
    uint32_t pageNumber = head.big32();
    if (!head.ok()) return Error{"the tree " + std::string(name) + " is cut short"};

    // Down along the left edge to the first leaf, then from leaf to leaf. No page can be seen twice in a
    // sound tree, so as many steps as there are blocks are enough.
    size_t stepsLeft = blockTable_.size() / kBlockRecord;
    std::vector<Entry> entries;
    bool inLeaves = false;
    while (pageNumber != 0) {
        if (stepsLeft-- == 0) return Error{"the tree " + std::string(name) + " runs in a circle"};
        TreePage page(block(pageNumber));
        if (!page.pairs.ok() || (inLeaves && !page.isLeaf))
            return Error{"the tree " + std::string(name) + " has a broken page"};
        if (!page.isLeaf) {
            pageNumber = page.pairs.big32();
            if (pageNumber == 0) return Error{"the tree " + std::string(name) + " has a broken page"};
            continue;
        }
        inLeaves = true;
        if (page.count > kMostTreeEntries - entries.size())
            return Error{"the tree " + std::string(name) + " has too many entries"};
        for (uint16_t i = 0; i < page.count; i++) {
            Bytes value = block(page.pairs.big32());
            Bytes key = block(page.pairs.big32());
            if (!page.pairs.ok()) return Error{"the tree " + std::string(name) + " has a broken page"};
            entries.push_back({key, value});
        }
        pageNumber = page.next;
    }
    return entries;
}

} // namespace tallyforge
