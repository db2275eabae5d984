#include "foundation/BinaryPropertyListMarker.h"
#include "foundation/PropertyListFormat.h"
#include "foundation/UTFText.h"

#include <array>
#include <bit>
#include <cstddef>
#include <memory_resource>
#include <string_view>
#include <unordered_map>

namespace tallyforge {

namespace {

/// Writes one value: first every object gets its number, then all are written out in that order.
class Writer {
  public:
    std::vector<uint8_t> write(const PropertyList& root);

  private:
    using Kind = PropertyList::Kind;

    /// One object of the file. Keys of dictionaries are objects too, so a string is known by its text.
    struct Object {
        const PropertyList* value;
        const std::string* text;
        size_t firstReference;
    };
    struct Scalar {
        Kind kind;
        bool largeUnsigned; // has the bits of a negative integer
        uint64_t bits;
        bool operator==(const Scalar&) const = default;
    };
    struct ScalarHash {
        size_t operator()(const Scalar& scalar) const {
            return std::hash<uint64_t>()(scalar.bits * 0x9E3779B97F4A7C15u +
                                         static_cast<uint64_t>(scalar.kind));
        }
    };

    uint32_t number(const PropertyList& value);
    uint32_t numberText(const std::string& text);
    uint32_t numberScalar(const PropertyList& value, uint64_t bits);
    uint32_t add(Object object) {
        objects_.push_back(object);
        return static_cast<uint32_t>(objects_.size() - 1);
    }

    void writeObject(const Object& object);
    void writeText(const std::string& text);
    void writeLength(uint8_t marker, uint64_t length);
    void writeInteger(uint64_t bits, bool negative, bool large);
    void writeBigEndian(uint64_t value, size_t size);

    std::vector<Object> objects_;
    std::vector<uint32_t> references_;
    // Before the tables, which lie in it and are thrown away all at once; enough for those of a theme.
    std::array<std::byte, 16'384> near_;
    std::pmr::monotonic_buffer_resource memory_{near_.data(), near_.size()};
    std::pmr::unordered_map<std::string_view, uint32_t> texts_{&memory_};
    std::pmr::unordered_map<std::string_view, uint32_t> data_{&memory_};
    std::pmr::unordered_map<Scalar, uint32_t, ScalarHash> scalars_{&memory_};
    size_t referenceSize_ = 1;
    std::vector<uint8_t> out_;
};

size_t SmallestSize(uint64_t value) {
    return value < 0x100 ? 1 : value < 0x10000 ? 2 : value < 0x100000000u ? 4 : 8;
}

uint32_t Writer::numberText(const std::string& text) {
    const auto [known, added] = texts_.try_emplace(text, static_cast<uint32_t>(objects_.size()));
    return added ? add({nullptr, &text, 0}) : known->second;
}

uint32_t Writer::numberScalar(const PropertyList& value, uint64_t bits) {
    const auto [known, added] = scalars_.try_emplace(Scalar{value.kind(), value.isLargeUnsigned(), bits},
                                                     static_cast<uint32_t>(objects_.size()));
    // The device's writer leaves a copy behind for a UID that comes again; archives keep its bytes this way.
    if (added || value.kind() == Kind::uid) add({&value, nullptr, 0});
    return known->second;
}

uint32_t Writer::number(const PropertyList& value) {
    switch (value.kind()) {
    case Kind::string:
        return numberText(*value.asString());
    case Kind::data: {
        const PropertyList::Data& data = *value.asData();
        const std::string_view bytes(reinterpret_cast<const char*>(data.data()), data.size());
        const auto [known, added] = data_.try_emplace(bytes, static_cast<uint32_t>(objects_.size()));
        return added ? add({&value, nullptr, 0}) : known->second;
    }
    case Kind::boolean:
        return numberScalar(value, value.boolValue());
    case Kind::integer:
        return numberScalar(value, static_cast<uint64_t>(value.integerBits()));
    case Kind::floatNumber:
        return numberScalar(value, std::bit_cast<uint32_t>(value.floatValue()));
    case Kind::doubleNumber:
        return numberScalar(value, std::bit_cast<uint64_t>(value.doubleValue()));
    case Kind::date:
        return numberScalar(value, std::bit_cast<uint64_t>(*value.asDate()));
    case Kind::uid:
        return numberScalar(value, *value.asUID());
    case Kind::array:
    case Kind::dictionary:
        break;
    }

    size_t at = references_.size();
    const uint32_t self = add({&value, nullptr, at});
    if (const PropertyList::Array* array = value.asArray()) {
        references_.resize(at + array->size());
        for (const PropertyList& element : *array) {
            const uint32_t child = number(element);
            references_[at++] = child;
        }
        return self;
    }
    const Dictionary& dictionary = *value.asDictionary();
    references_.resize(at + 2 * dictionary.count());
    for (const Dictionary::Entry& entry : dictionary) {
        const uint32_t child = numberText(entry.key);
        references_[at++] = child;
    }
    for (const Dictionary::Entry& entry : dictionary) {
        const uint32_t child = number(entry.value);
        references_[at++] = child;
    }
    return self;
}

void Writer::writeBigEndian(uint64_t value, size_t size) {
    std::array<uint8_t, 8> bytes{};
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(value >> 8 * (7 - i));
    out_.insert(out_.end(), bytes.end() - static_cast<ptrdiff_t>(size), bytes.end());
}

void Writer::writeInteger(uint64_t bits, bool negative, bool large) {
    if (large) {
        out_.push_back(kInteger | 4);
        writeBigEndian(0, 8);
        writeBigEndian(bits, 8);
        return;
    }
    const size_t size = negative ? 8 : SmallestSize(bits);
    out_.push_back(static_cast<uint8_t>(kInteger | std::countr_zero(size)));
    writeBigEndian(bits, size);
}

void Writer::writeLength(uint8_t marker, uint64_t length) {
    if (length < 0x0F) {
        out_.push_back(static_cast<uint8_t>(marker | length));
        return;
    }
    out_.push_back(marker | 0x0F);
    writeInteger(length, false, false);
}

void Writer::writeText(const std::string& text) {
    if (IsASCII(text.data(), text.size())) {
        writeLength(kASCIIText, text.size());
        out_.insert(out_.end(), text.begin(), text.end());
        return;
    }
    std::u16string units;
    units.reserve(text.size());
    for (std::string_view rest = text; !rest.empty();) {
        const char32_t c = TakeUTF8(rest);
        if (c >= 0x10000) {
            units.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            units.push_back(static_cast<char16_t>(c));
        }
    }
    writeLength(kUTF16Text, units.size());
    for (const char16_t unit : units)
        writeBigEndian(unit, 2);
}

void Writer::writeObject(const Object& object) {
    if (object.text) {
        writeText(*object.text);
        return;
    }
    const PropertyList& value = *object.value;
    size_t references = 0;
    switch (value.kind()) {
    case Kind::boolean:
        out_.push_back(value.boolValue() ? kTrue : kFalse);
        return;
    case Kind::integer:
        writeInteger(static_cast<uint64_t>(value.integerBits()), value.integerBits() < 0,
                     value.isLargeUnsigned());
        return;
    case Kind::floatNumber:
        out_.push_back(kReal | 2);
        writeBigEndian(std::bit_cast<uint32_t>(value.floatValue()), 4);
        return;
    case Kind::doubleNumber:
        out_.push_back(kReal | 3);
        writeBigEndian(std::bit_cast<uint64_t>(value.doubleValue()), 8);
        return;
    case Kind::date:
        out_.push_back(kDate);
        writeBigEndian(std::bit_cast<uint64_t>(*value.asDate()), 8);
        return;
    case Kind::data:
        writeLength(kData, value.asData()->size());
        out_.insert(out_.end(), value.asData()->begin(), value.asData()->end());
        return;
    case Kind::uid: {
        const size_t size = SmallestSize(*value.asUID());
        out_.push_back(static_cast<uint8_t>(kUID | (size - 1)));
        writeBigEndian(*value.asUID(), size);
        return;
    }
    case Kind::array:
        references = value.asArray()->size();
        writeLength(kArray, references);
        break;
    case Kind::dictionary:
        references = 2 * value.asDictionary()->count();
        writeLength(kDictionary, value.asDictionary()->count());
        break;
    case Kind::string:
        return; // has been written as text
    }
    for (size_t i = 0; i < references; ++i)
        writeBigEndian(references_[object.firstReference + i], referenceSize_);
}

std::vector<uint8_t> Writer::write(const PropertyList& root) {
    // As much as a theme takes.
    objects_.reserve(256);
    references_.reserve(512);
    texts_.reserve(128);
    scalars_.reserve(128);
    out_.reserve(4096);
    number(root);
    referenceSize_ = SmallestSize(objects_.size());
    out_.assign({'b', 'p', 'l', 'i', 's', 't', '0', '0'});
    std::vector<uint64_t> offsets;
    offsets.reserve(objects_.size());
    for (const Object& object : objects_) {
        offsets.push_back(out_.size());
        writeObject(object);
    }
    const uint64_t table = out_.size();
    const size_t offsetSize = SmallestSize(table);
    for (const uint64_t offset : offsets)
        writeBigEndian(offset, offsetSize);
    out_.insert(out_.end(), 6, 0);
    out_.push_back(static_cast<uint8_t>(offsetSize));
    out_.push_back(static_cast<uint8_t>(referenceSize_));
    writeBigEndian(objects_.size(), 8);
    writeBigEndian(0, 8);
    writeBigEndian(table, 8);
    return std::move(out_);
}

} // namespace

std::vector<uint8_t> BinaryPropertyList::Serialize(const PropertyList& value) {
    Writer writer; // not Writer(), which would clear the memory of the tables first
    return writer.write(value);
}

} // namespace tallyforge
