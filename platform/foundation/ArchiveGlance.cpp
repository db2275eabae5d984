#include "foundation/ArchiveGlance.h"

#include "foundation/BinaryPropertyListMarker.h"
#include "foundation/PropertyListFormat.h"
#include "foundation/UTFText.h"

#include <algorithm>
#include <array>

namespace tallyforge {

namespace {

// Up to here no archive in the layout below can reach a limit of the unarchiver, however much it shares.
constexpr size_t kMostBytes = 16'384;
constexpr size_t kMostReferences = 512;
constexpr size_t kMostObjects = 1'024;
constexpr size_t kHeaderSize = 8;
constexpr size_t kTrailerSize = 32;

uint64_t BigEndian(const uint8_t* bytes, size_t size) {
    if (size == 1) return *bytes;
    if (size == 2) return uint64_t{bytes[0]} << 8 | bytes[1];
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[i];
    return value;
}

/// Walks over one file in place. It gives up at whatever it does not know for sure that the unarchiver takes.
class Walk {
  public:
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): see the arrays
    explicit Walk(std::span<const uint8_t> bytes) : bytes_(bytes) {}
    bool run(std::string_view key);
    std::optional<std::string> text() const;

  private:
    /// An object in its place: `count` bytes of a number, characters of a string, entries of a container.
    struct Item {
        uint8_t kind = 0;
        const uint8_t* at = nullptr;
        size_t count = 0;
        bool isText() const { return kind == kASCIIText || kind == kUTF16Text; }
        bool isLeaf() const { return kind != kUID && kind != kArray && kind != kDictionary; }
        std::string_view ascii() const {
            return kind == kASCIIText ? std::string_view(reinterpret_cast<const char*>(at), count)
                                      : std::string_view();
        }
    };

    bool readTrailer();
    bool readOffsets(uint64_t table);
    /// The object's first byte; nullptr when there is no such object.
    const uint8_t* locate(uint64_t object) const {
        return object < count_ ? bytes_.data() + offsets_[object] : nullptr;
    }
    bool item(uint64_t object, Item& out);
    bool itemOfSize(Item& out, size_t size) const;
    bool itemOfLength(Item& out, uint8_t marker) const;
    uint64_t reference(const Item& container, size_t index) const {
        return BigEndian(container.at + index * referenceSize_, referenceSize_);
    }
    /// The values of a dictionary that has exactly these keys.
    template <size_t size>
    bool values(const Item& dictionary, const std::array<std::string_view, size>& keys,
                std::array<Item, size>& out);
    /// Which of the archive's objects the UID names; 0 when it names none.
    uint64_t indexOf(const Item& uid) const {
        const uint64_t index = uid.kind == kUID ? BigEndian(uid.at, uid.count) : 0;
        return index < objects_.count ? index : 0;
    }
    uint64_t indexOfUID(uint64_t object) const {
        const uint8_t* at = locate(object);
        if (!at) return 0;
        if (*at == kUID && end_ - at > 1)
            return at[1] < objects_.count ? at[1] : 0; // of one byte, as most are
        if ((*at & 0xF8) != kUID) return 0;
        const size_t size = size_t{*at & 0x07U} + 1;
        if (size >= static_cast<size_t>(end_ - at)) return 0;
        const uint64_t index = BigEndian(at + 1, size);
        return index < objects_.count ? index : 0;
    }
    bool shortText(uint64_t object, std::string_view& text) const;
    bool checkObjects(uint64_t root);
    bool checkClass(const Item& record);
    bool isDictionaryClass(const Item& uid);
    // Of objects that have been checked.
    bool isKeyAndLeaf(uint64_t name, uint64_t value) const {
        return (markers_[name] & 0xF0) == kASCIIText && (markers_[value] & 0xF0) != kDictionary;
    }
    bool isText(uint64_t index, std::string_view text) {
        const uint64_t object = reference(objects_, index);
        std::string_view own;
        if (shortText(object, own)) return own == text;
        Item each;
        return (markers_[index] & 0xF0U) == kASCIIText && item(object, each) && each.ascii() == text;
    }
    bool checkRoot(const Item& root, std::string_view key);

    std::span<const uint8_t> bytes_;
    const uint8_t* end_ = nullptr; // of the objects
    size_t offsetSize_ = 0, referenceSize_ = 0, references_ = 0;
    uint64_t count_ = 0, top_ = 0;
    // Not cleared, for that would cost as much as filling them: only the first `count_` are of any meaning,
    std::array<uint16_t, kMostObjects> offsets_; // of all objects of the file
    // and of these only as many as the archive has objects.
    std::array<uint8_t, kMostReferences> markers_;
    Item objects_;
    Item found_;
};

bool Walk::readTrailer() {
    if (bytes_.size() > kMostBytes || bytes_.size() < kHeaderSize + 2 + kTrailerSize ||
        !BinaryPropertyList::Identify(bytes_))
        return false;
    const uint8_t* trailer = bytes_.data() + bytes_.size() - kTrailerSize;
    offsetSize_ = trailer[6];
    referenceSize_ = trailer[7];
    count_ = BigEndian(trailer + 8, 8);
    top_ = BigEndian(trailer + 16, 8);
    const uint64_t table = BigEndian(trailer + 24, 8);
    const size_t beforeTrailer = bytes_.size() - kTrailerSize;
    if (offsetSize_ < 1 || offsetSize_ > 2 || referenceSize_ < 1 || referenceSize_ > 2) return false;
    if (table <= kHeaderSize || table > beforeTrailer || count_ > (beforeTrailer - table) / offsetSize_)
        return false;
    end_ = bytes_.data() + table;
    return readOffsets(table);
}

bool Walk::readOffsets(uint64_t table) {
    if (count_ == 0 || count_ > kMostObjects) return false;
    for (size_t i = 0; i < count_; ++i)
        offsets_[i] =
            offsetSize_ == 1 ? uint16_t{end_[i]} : static_cast<uint16_t>(end_[2 * i] << 8 | end_[2 * i + 1]);
    // Without a way out of the loop, so that it takes many at once. What is too small becomes very large.
    const auto most = static_cast<uint16_t>(table - kHeaderSize);
    uint16_t outside = 0;
    for (size_t i = 0; i < count_; ++i)
        outside |= static_cast<uint16_t>(offsets_[i] - kHeaderSize) >= most ? 1 : 0;
    return outside == 0;
}

bool Walk::itemOfSize(Item& out, size_t size) const {
    out.count = size;
    return size <= static_cast<size_t>(end_ - out.at);
}

bool Walk::itemOfLength(Item& out, uint8_t marker) const {
    uint64_t length = marker & 0x0F;
    if (length == 0x0F) {
        if (end_ - out.at < 3 || (*out.at & 0xFE) != kInteger) return false; // one or two bytes
        const size_t size = size_t{1} << (*out.at & 0x0F);
        length = BigEndian(out.at + 1, size);
        out.at += 1 + size;
    }
    const size_t unit = out.kind == kASCIIText   ? 1
                        : out.kind == kUTF16Text ? 2
                        : out.kind == kArray     ? referenceSize_
                                                 : 2 * referenceSize_;
    out.count = static_cast<size_t>(length);
    return out.count <= static_cast<size_t>(end_ - out.at) / unit;
}

bool Walk::item(uint64_t object, Item& out) {
    const uint8_t* at = locate(object);
    if (!at) return false;
    const uint8_t marker = *at;
    out.kind = marker & 0xF0;
    out.at = at + 1;
    switch (out.kind) {
    case 0x00:
        return marker == kTrue || marker == kFalse;
    case kInteger:
        return (marker & 0x0F) <= 3 && itemOfSize(out, size_t{1} << (marker & 0x0F));
    case kReal:
        return (marker == (kReal | 2) || marker == (kReal | 3)) &&
               itemOfSize(out, size_t{1} << (marker & 0x0F));
    case kUID:
        return (marker & 0x0F) < 8 && itemOfSize(out, size_t{marker & 0x0FU} + 1);
    case kASCIIText:
        return itemOfLength(out, marker) && IsASCII(out.at, out.count);
    case kUTF16Text:
        return itemOfLength(out, marker);
    case kArray:
    case kDictionary:
        if (!itemOfLength(out, marker)) return false;
        references_ += out.count;
        return references_ <= kMostReferences;
    default:
        return false;
    }
}

template <size_t size>
bool Walk::values(const Item& dictionary, const std::array<std::string_view, size>& keys,
                  std::array<Item, size>& out) {
    if (dictionary.kind != kDictionary || dictionary.count != size) return false;
    std::array<bool, size> seen{};
    for (size_t i = 0; i < size; ++i) {
        Item name;
        if (!item(reference(dictionary, i), name)) return false;
        const auto known = std::find(keys.begin(), keys.end(), name.ascii());
        if (known == keys.end()) return false;
        const auto place = static_cast<size_t>(known - keys.begin());
        if (seen[place] || !item(reference(dictionary, size + i), out[place])) return false;
        seen[place] = true;
    }
    return true;
}

bool Walk::checkClass(const Item& record) {
    std::array<Item, 2> parts;
    if (!values(record, std::array<std::string_view, 2>{"$classname", "$classes"}, parts)) return false;
    if (parts[0].kind != kASCIIText || parts[1].kind != kArray) return false;
    for (size_t i = 0; i < parts[1].count; ++i) {
        Item name;
        if (!item(reference(parts[1], i), name) || !name.isText()) return false;
    }
    return true;
}

// Whether the object is text of less than 256 characters of one byte, as most are; they may not all be ASCII.
bool Walk::shortText(uint64_t object, std::string_view& text) const {
    const uint8_t* at = locate(object);
    if (!at || (*at & 0xF0) != kASCIIText) return false;
    size_t length = *at++ & 0x0F;
    if (length == 0x0F) {
        if (end_ - at < 2 || *at != kInteger) return false;
        length = at[1];
        at += 2;
    }
    text = {reinterpret_cast<const char*>(at), length};
    return length <= static_cast<size_t>(end_ - at);
}

// Whatever is in the archive has to be whole, whether or not the root leads there.
bool Walk::checkObjects(uint64_t root) {
    for (size_t i = 0; i < objects_.count; ++i) {
        const uint64_t object = reference(objects_, i);
        std::string_view text;
        if (shortText(object, text)) {
            if (!IsASCII(text.data(), text.size())) return false;
            markers_[i] = *locate(object);
            continue;
        }
        Item each;
        if (!item(object, each)) return false;
        markers_[i] = *locate(object);
        if (i == root) continue;
        if (each.kind == kDictionary ? !checkClass(each) : !each.isLeaf()) return false;
    }
    return true;
}

bool Walk::isDictionaryClass(const Item& uid) {
    Item record;
    std::array<Item, 2> parts;
    const uint64_t index = indexOf(uid);
    if (index == 0 || !item(reference(objects_, index), record) ||
        !values(record, std::array<std::string_view, 2>{"$classname", "$classes"}, parts))
        return false;
    return parts[0].ascii() == "NSDictionary" || parts[0].ascii() == "NSMutableDictionary";
}

bool Walk::checkRoot(const Item& root, std::string_view key) {
    std::array<Item, 3> parts;
    if (!values(root, std::array<std::string_view, 3>{"NS.keys", "NS.objects", "$class"}, parts))
        return false;
    const auto& [names, contents, cls] = parts;
    if (names.kind != kArray || contents.kind != kArray || names.count != contents.count) return false;
    if (!isDictionaryClass(cls)) return false;
    uint64_t last = 0; // of a key that comes twice the last value counts
    for (size_t i = 0; i < names.count; ++i) {
        const uint64_t name = indexOfUID(reference(names, i)), value = indexOfUID(reference(contents, i));
        if (name == 0 || value == 0 || !isKeyAndLeaf(name, value)) return false;
        if (isText(name, key)) last = value;
    }
    return last == 0 || item(reference(objects_, last), found_);
}

bool Walk::run(std::string_view key) {
    Item archive, root;
    std::array<Item, 4> parts;
    std::array<Item, 1> top;
    if (!readTrailer() || !item(top_, archive)) return false;
    if (!values(archive, std::array<std::string_view, 4>{"$version", "$archiver", "$top", "$objects"}, parts))
        return false;
    const auto& [version, archiver, tops, objects] = parts;
    if (version.kind != kInteger || BigEndian(version.at, version.count) != 100'000) return false;
    if (archiver.ascii() != "NSKeyedArchiver" || objects.kind != kArray) return false;
    if (!values(tops, std::array<std::string_view, 1>{"root"}, top)) return false;
    objects_ = objects;
    const uint64_t index = indexOf(top[0]);
    if (index == 0 || !item(reference(objects_, index), root)) return false;
    return checkObjects(index) && checkRoot(root, key);
}

std::optional<std::string> Walk::text() const {
    if (found_.kind == kASCIIText) return std::string(found_.ascii());
    if (found_.kind == kUTF16Text) return UTF8FromUTF16(found_.at, found_.count);
    return std::nullopt;
}

} // namespace

ArchiveGlance GlanceAtArchivedDictionary(std::span<const uint8_t> bytes, std::string_view key) {
    Walk walk(bytes);
    if (!walk.run(key)) return {};
    return {true, walk.text()};
}

} // namespace tallyforge
