#include "foundation/PropertyListFormat.h"

#include "foundation/BinaryPropertyListMarker.h"
#include "foundation/UTFText.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tallyforge {

namespace {

constexpr std::string_view kMagic = "bplist0";
constexpr size_t kHeaderSize = 8;
constexpr size_t kTrailerSize = 32;
// From here on a file is measured before more of it is built.
constexpr size_t kNodesBuiltUnmeasured = 4'096;

uint64_t BigEndian(const uint8_t* bytes, size_t size) {
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[i];
    return value;
}

/// Reads one file. Every place, length and count is held against the bytes that are there before it is used,
/// and what is built is held against the limits before it is built.
class Reader {
  public:
    Reader(std::span<const uint8_t> bytes, const PropertyListLimits& limits)
        : bytes_(bytes), limits_(limits) {}

    Result<PropertyList> read() {
        PropertyList root = PropertyList::boolean(false);
        if (readTrailer() && readObject(top_, root)) return root;
        return Error{reason_};
    }

  private:
    /// A container's place in the file: `count` references, for a dictionary its keys and then its values.
    struct References {
        const uint8_t* first;
        size_t count;
    };

    bool fail(const char* reason) {
        reason_ = reason;
        return false;
    }

    bool readTrailer();
    bool readObject(uint64_t object, PropertyList& out);
    bool readInteger(const uint8_t* at, unsigned power, PropertyList& out);
    bool readReal(const uint8_t* at, uint8_t marker, PropertyList& out);
    bool readUID(const uint8_t* at, size_t size, PropertyList& out);
    bool readContainer(uint64_t object, const uint8_t* at, PropertyList& out);
    bool readArray(References references, PropertyList& out);
    bool readDictionary(References references, PropertyList& out);
    bool readKey(uint64_t object, std::string_view& key);
    bool locate(uint64_t object, const uint8_t*& at);
    bool readLength(const uint8_t*& at, size_t unit, size_t& length);
    bool readReferences(const uint8_t* at, References& references);
    bool measure(uint64_t object, size_t& nodes, size_t depth);
    bool countNodes(size_t more);
    bool countText(size_t more);

    size_t remaining(const uint8_t* at) const { return static_cast<size_t>(objectsEnd_ - at); }
    uint64_t reference(References references, size_t index) const {
        const uint8_t* at = references.first + index * referenceSize_;
        return referenceSize_ == 1 ? *at : BigEndian(at, referenceSize_);
    }

    std::span<const uint8_t> bytes_;
    const PropertyListLimits& limits_;
    const char* reason_ = "";
    const uint8_t* objectsEnd_ = nullptr; // also the beginning of the offset table
    size_t offsetSize_ = 0;
    size_t referenceSize_ = 0;
    uint64_t objects_ = 0;
    uint64_t top_ = 0;
    std::vector<uint64_t> open_; // the containers being read, outermost first
    std::string keyText_;
    size_t nodes_ = 1;
    size_t text_ = 0;
    bool measured_ = false;
    size_t measuringSteps_ = 0;
    std::vector<uint32_t> measuredNodes_; // by object; 0 is not measured yet
};

bool Reader::readTrailer() {
    if (bytes_.size() > limits_.bytes) return fail("file too large");
    if (!BinaryPropertyList::Identify(bytes_)) return fail("not a binary property list");
    if (bytes_.size() < kHeaderSize + 2 + kTrailerSize) return fail("file too short");
    const uint8_t* trailer = bytes_.data() + bytes_.size() - kTrailerSize;
    offsetSize_ = trailer[6];
    referenceSize_ = trailer[7];
    objects_ = BigEndian(trailer + 8, 8);
    top_ = BigEndian(trailer + 16, 8);
    const uint64_t table = BigEndian(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8)
        return fail("trailer with an impossible size of offsets or references");
    if (objects_ == 0) return fail("no objects");
    if (objects_ > limits_.objects) return fail("too many objects");
    if (top_ >= objects_) return fail("top object beyond the last");
    const size_t beforeTrailer = bytes_.size() - kTrailerSize;
    if (table <= kHeaderSize || table > beforeTrailer || objects_ > (beforeTrailer - table) / offsetSize_)
        return fail("offset table outside the file");
    objectsEnd_ = bytes_.data() + table;
    return true;
}

bool Reader::countNodes(size_t more) {
    if (more > limits_.nodes - std::min(nodes_, limits_.nodes))
        return fail("too many objects once shared ones are followed");
    nodes_ += more;
    if (nodes_ <= kNodesBuiltUnmeasured || measured_) return true;
    measured_ = true;
    measuredNodes_.assign(objects_, 0);
    size_t all = 0;
    return measure(top_, all, 1);
}

bool Reader::countText(size_t more) {
    if (more > limits_.text - std::min(text_, limits_.text))
        return fail("too much text and data once shared objects are followed");
    text_ += more;
    return true;
}

// How many nodes the object is once shared references are followed; every object is looked at once, so that a
// small file which would grow without end is told from a large one without growing it.
bool Reader::measure(uint64_t object, size_t& nodes, size_t depth) {
    const uint8_t* at = nullptr;
    if (!locate(object, at)) return false;
    const uint8_t kind = *at & 0xF0;
    nodes = 1;
    // Without a cycle there are no more references in all than there are nodes.
    if (++measuringSteps_ > limits_.nodes) return fail("too many objects once shared ones are followed");
    if (kind != kArray && kind != kDictionary) return true;
    if (measuredNodes_[object] != 0) {
        nodes = measuredNodes_[object];
        return true;
    }
    if (depth > limits_.depth) return fail("containers nested too deep");
    References references;
    if (!readReferences(at, references)) return false;
    for (size_t i = 0; i < references.count; ++i) {
        size_t child = 0;
        if (!measure(reference(references, i), child, depth + 1)) return false;
        nodes += child;
        if (nodes > limits_.nodes) return fail("too many objects once shared ones are followed");
    }
    measuredNodes_[object] = static_cast<uint32_t>(nodes);
    return true;
}

bool Reader::locate(uint64_t object, const uint8_t*& at) {
    if (object >= objects_) return fail("reference to an object beyond the last");
    const uint64_t offset = BigEndian(objectsEnd_ + object * offsetSize_, offsetSize_);
    if (offset < kHeaderSize || offset >= static_cast<uint64_t>(objectsEnd_ - bytes_.data()))
        return fail("offset outside the objects");
    at = bytes_.data() + offset;
    return true;
}

// Reads the length that belongs to the marker at `at` and moves past both; `unit` is what one of them takes.
bool Reader::readLength(const uint8_t*& at, size_t unit, size_t& length) {
    uint64_t count = *at++ & 0x0F;
    if (count == 0x0F) {
        if (remaining(at) < 1) return fail("object cut short");
        const uint8_t marker = *at++;
        if ((marker & 0xF0) != kInteger || (marker & 0x0F) > 3) return fail("length that is no integer");
        const size_t size = size_t{1} << (marker & 0x0F);
        if (remaining(at) < size) return fail("object cut short");
        count = BigEndian(at, size);
        at += size;
    }
    if (count > remaining(at) / unit) return fail("length beyond the end");
    length = static_cast<size_t>(count);
    return true;
}

bool Reader::readReferences(const uint8_t* at, References& references) {
    const size_t each = (*at & 0xF0) == kDictionary ? 2 : 1;
    size_t count = 0;
    if (!readLength(at, referenceSize_ * each, count)) return false;
    references = {at, count * each};
    return true;
}

bool Reader::readObject(uint64_t object, PropertyList& out) {
    const uint8_t* at = nullptr;
    if (!locate(object, at)) return false;
    const uint8_t marker = *at;
    size_t length = 0;
    switch (marker & 0xF0) {
    case 0x00:
        if (marker != kTrue && marker != kFalse) return fail("unknown kind of object");
        out = PropertyList::boolean(marker == kTrue);
        return true;
    case kInteger:
        return readInteger(at + 1, marker & 0x0F, out);
    case kReal:
    case kDate & 0xF0:
        return readReal(at + 1, marker, out);
    case kData:
        if (!readLength(at, 1, length) || !countText(length)) return false;
        out = PropertyList::data(PropertyList::Data(at, at + length));
        return true;
    case kASCIIText:
    case kUTF16Text: {
        std::string_view text;
        if (!readKey(object, text)) return false;
        out = PropertyList::string(std::string(text));
        return true;
    }
    case kUID:
        return readUID(at + 1, size_t{marker & 0x0Fu} + 1, out);
    case kArray:
    case kDictionary:
        return readContainer(object, at, out);
    default:
        return fail("unknown kind of object");
    }
}

bool Reader::readInteger(const uint8_t* at, unsigned power, PropertyList& out) {
    if (power > 4) return fail("integer of an unknown size");
    const size_t size = size_t{1} << power;
    if (remaining(at) < size) return fail("object cut short");
    if (size <= 8) {
        out = PropertyList::integer(static_cast<int64_t>(BigEndian(at, size)));
        return true;
    }
    const uint64_t high = BigEndian(at, 8), low = BigEndian(at + 8, 8);
    const bool lowIsNegative = low >> 63 != 0;
    if (high == 0)
        out = PropertyList::unsignedInteger(low);
    else if (high == UINT64_MAX && lowIsNegative)
        out = PropertyList::integer(static_cast<int64_t>(low));
    else
        return fail("integer of more than 64 bits");
    return true;
}

bool Reader::readReal(const uint8_t* at, uint8_t marker, PropertyList& out) {
    const size_t size = marker == (kReal | 2) ? 4 : 8;
    if (marker != (kReal | 2) && marker != (kReal | 3) && marker != kDate)
        return fail("real or date of an unknown size");
    if (remaining(at) < size) return fail("object cut short");
    const uint64_t bits = BigEndian(at, size);
    if (size == 4) {
        out = PropertyList::floatNumber(std::bit_cast<float>(static_cast<uint32_t>(bits)));
        return true;
    }
    const double value = std::bit_cast<double>(bits);
    if (marker == kDate && !IsPropertyListDate(value)) return fail("date outside the years 1 to 9999");
    out = marker == kDate ? PropertyList::date(value) : PropertyList::doubleNumber(value);
    return true;
}

bool Reader::readUID(const uint8_t* at, size_t size, PropertyList& out) {
    if (remaining(at) < size) return fail("object cut short");
    for (; size > 8; --size, ++at) {
        if (*at != 0) return fail("UID of more than 64 bits");
    }
    out = PropertyList::uid(BigEndian(at, size));
    return true;
}

// The text of a string object, valid until the next call.
bool Reader::readKey(uint64_t object, std::string_view& key) {
    const uint8_t* at = nullptr;
    if (!locate(object, at)) return false;
    const uint8_t kind = *at & 0xF0;
    size_t length = 0;
    if (kind == kASCIIText) {
        if (!readLength(at, 1, length)) return false;
        if (!IsASCII(at, length)) return fail("ASCII string with other characters");
        key = std::string_view(reinterpret_cast<const char*>(at), length);
        return countText(length);
    }
    if (kind != kUTF16Text) return fail("key that is no string");
    if (!readLength(at, 2, length) || !countText(length)) return false;
    keyText_ = UTF8FromUTF16(at, length);
    key = keyText_;
    return countText(keyText_.size() - std::min(keyText_.size(), length));
}

bool Reader::readContainer(uint64_t object, const uint8_t* at, PropertyList& out) {
    if (std::find(open_.begin(), open_.end(), object) != open_.end())
        return fail("container that holds itself");
    if (open_.size() >= limits_.depth) return fail("containers nested too deep");
    References references;
    if (!readReferences(at, references) || !countNodes(references.count)) return false;
    open_.push_back(object);
    const bool read = (*at & 0xF0) == kArray ? readArray(references, out) : readDictionary(references, out);
    open_.pop_back();
    return read;
}

bool Reader::readArray(References references, PropertyList& out) {
    PropertyList::Array array;
    array.reserve(references.count);
    for (size_t i = 0; i < references.count; ++i) {
        array.push_back(PropertyList::boolean(false));
        if (!readObject(reference(references, i), array.back())) return false;
    }
    out = PropertyList::array(std::move(array));
    return true;
}

bool Reader::readDictionary(References references, PropertyList& out) {
    const size_t count = references.count / 2;
    Dictionary dictionary;
    dictionary.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        std::string_view key;
        if (!readKey(reference(references, i), key) ||
            !readObject(reference(references, count + i), dictionary.placeForKey(key)))
            return false;
    }
    out = PropertyList::dictionary(std::move(dictionary));
    return true;
}

} // namespace

bool BinaryPropertyList::Identify(std::span<const uint8_t> bytes) {
    return bytes.size() >= kHeaderSize && std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) == 0;
}

Result<PropertyList> BinaryPropertyList::Deserialize(std::span<const uint8_t> bytes,
                                                     const PropertyListLimits& limits) {
    return Reader(bytes, limits).read();
}

Result<PropertyList> DeserializePropertyList(std::span<const uint8_t> bytes,
                                             const PropertyListLimits& limits) {
    if (BinaryPropertyList::Identify(bytes)) return BinaryPropertyList::Deserialize(bytes, limits);
    if (XMLPropertyList::Identify(bytes)) return XMLPropertyList::Deserialize(bytes, limits);
    return Error{"not a property list"};
}

} // namespace tallyforge
