#include "foundation/NSKeyedArchiver.h"

#include <algorithm>

namespace tallyforge {

namespace {

using Kind = PropertyList::Kind;

constexpr int kArchiveVersion = 100'000;
constexpr size_t kManyNodes = 4096; // no theme comes near it

enum class ArchivedClass : uint8_t { notLookedAt, dictionary, array, string, date, other };

ArchivedClass ClassNamed(std::string_view name) {
    if (name == "NSDictionary" || name == "NSMutableDictionary") return ArchivedClass::dictionary;
    if (name == "NSArray" || name == "NSMutableArray") return ArchivedClass::array;
    if (name == "NSString" || name == "NSMutableString") return ArchivedClass::string;
    if (name == "NSDate") return ArchivedClass::date;
    return ArchivedClass::other;
}

/// Follows the UIDs of one archive from the root. Entries that nothing refers to are never looked at.
class Decoder {
  public:
    Decoder(const PropertyList::Array& objects, const PropertyListLimits& limits)
        : objects_(objects), limits_(limits), classes_(objects.size(), ArchivedClass::notLookedAt) {}

    bool decodeRoot(const PropertyList* root, PropertyList& out) {
        root_ = root;
        return decode(root, out);
    }
    const char* reason() const { return reason_; }

  private:
    bool fail(const char* reason) {
        reason_ = reason;
        return false;
    }
    bool decode(const PropertyList* reference, PropertyList& out);
    const PropertyList* entry(const PropertyList* reference, uint64_t& index);
    ArchivedClass classOf(const Dictionary& object);
    bool countText(size_t bytes);
    bool decodeObject(uint64_t index, const Dictionary& object, PropertyList& out);
    bool decodeContainer(ArchivedClass cls, const Dictionary& object, PropertyList& out);
    bool decodeArray(const PropertyList::Array& values, PropertyList& out);
    bool decodeDictionary(const PropertyList::Array& keys, const PropertyList::Array& values,
                          PropertyList& out);
    const std::string* decodeKey(const PropertyList& reference);

    /// What an object comes to once shared ones are followed.
    struct Weight {
        size_t nodes = 0;
        size_t text = 0;
        bool known = false;
        void add(const Weight& other) {
            constexpr size_t kMost = SIZE_MAX / 2; // the sum of two fits
            nodes = std::min(nodes + other.nodes, kMost);
            text = std::min(text + other.text, kMost);
        }
    };
    bool rootIsTooHeavy();
    Weight weigh(const PropertyList& reference, size_t depth);
    void weighAll(const PropertyList* list, size_t depth, Weight& sum);

    const PropertyList::Array& objects_;
    const PropertyListLimits& limits_;
    const char* reason_ = "";
    std::vector<ArchivedClass> classes_; // by entry of the class record
    std::vector<uint64_t> open_;         // the containers being read, outermost first
    const PropertyList* root_ = nullptr;
    std::vector<Weight> weights_; // by entry, once there is reason to weigh
    size_t nodes_ = 0;
    size_t text_ = 0;
};

// What a UID refers to; nullptr, with the reason, when it is none or refers to nothing.
const PropertyList* Decoder::entry(const PropertyList* reference, uint64_t& index) {
    const std::optional<uint64_t> uid = reference ? reference->asUID() : std::nullopt;
    if (!uid) {
        fail("archive with something other than a UID where one belongs");
        return nullptr;
    }
    if (*uid >= objects_.size()) {
        fail("UID beyond the archive's last object");
        return nullptr;
    }
    if (*uid == 0) {
        fail("archive with nothing where an object belongs");
        return nullptr;
    }
    index = *uid;
    return &objects_[index];
}

bool Decoder::countText(size_t bytes) {
    if (bytes > limits_.text - std::min(text_, limits_.text))
        return fail("too much text and data once shared objects are followed");
    text_ += bytes;
    return true;
}

ArchivedClass Decoder::classOf(const Dictionary& object) {
    uint64_t index = 0;
    const PropertyList* found = entry(object.objectForKey("$class"), index);
    if (!found) return ArchivedClass::other;
    if (classes_[index] == ArchivedClass::notLookedAt) {
        const Dictionary* record = found->asDictionary();
        const PropertyList* name = record ? record->objectForKey("$classname") : nullptr;
        classes_[index] = name && name->isString() ? ClassNamed(*name->asString()) : ArchivedClass::other;
    }
    if (classes_[index] == ArchivedClass::other) fail("archive with an object of another class");
    return classes_[index];
}

bool Decoder::decode(const PropertyList* reference, PropertyList& out) {
    uint64_t index = 0;
    const PropertyList* found = entry(reference, index);
    if (!found) return false;
    if (++nodes_ > kManyNodes && weights_.empty() && rootIsTooHeavy()) return false;
    if (nodes_ > limits_.nodes) return fail("too many objects once shared ones are followed");
    switch (found->kind()) {
    case Kind::dictionary:
        return decodeObject(index, *found->asDictionary(), out);
    case Kind::array:
    case Kind::uid:
        return fail("archive with an entry that is no object");
    default:
        break;
    }
    const size_t size = found->isString() ? found->asString()->size()
                        : found->asData() ? found->asData()->size()
                                          : 0;
    if (!countText(size)) return false;
    out = *found;
    return true;
}

// An archive that shares much is weighed before all of it is built in vain: that looks at each entry only
// once.
bool Decoder::rootIsTooHeavy() {
    weights_.resize(objects_.size());
    const Weight whole = weigh(*root_, 0);
    if (whole.nodes > limits_.nodes) return !fail("too many objects once shared ones are followed");
    if (whole.text > limits_.text) return !fail("too much text and data once shared objects are followed");
    return false;
}

void Decoder::weighAll(const PropertyList* list, size_t depth, Weight& sum) {
    if (!list || !list->asArray()) return;
    for (const PropertyList& item : *list->asArray())
        sum.add(weigh(item, depth + 1));
}

// Whatever is broken weighs nothing here; building it comes upon it.
Decoder::Weight Decoder::weigh(const PropertyList& reference, size_t depth) {
    const std::optional<uint64_t> uid = reference.asUID();
    if (!uid || *uid >= objects_.size() || depth > limits_.depth) return {};
    const auto index = static_cast<size_t>(*uid);
    if (weights_[index].known) return weights_[index];
    weights_[index].known = true; // with nothing, for those within that hold it again
    Weight weight{1, 0, true};
    const PropertyList& found = objects_[index];
    if (const std::string* text = found.asString()) weight.text = text->size();
    if (const PropertyList::Data* data = found.asData()) weight.text = data->size();
    if (const Dictionary* object = found.asDictionary()) {
        const char* const before = reason_;
        const ArchivedClass cls = classOf(*object);
        reason_ = before;
        const PropertyList* text = object->objectForKey("NS.string");
        if (cls == ArchivedClass::string && text && text->isString()) weight.text = text->asString()->size();
        if (cls == ArchivedClass::dictionary) weighAll(object->objectForKey("NS.keys"), depth, weight);
        if (cls == ArchivedClass::dictionary || cls == ArchivedClass::array)
            weighAll(object->objectForKey("NS.objects"), depth, weight);
    }
    return weights_[index] = weight;
}

bool Decoder::decodeObject(uint64_t index, const Dictionary& object, PropertyList& out) {
    const ArchivedClass cls = classOf(object);
    switch (cls) {
    case ArchivedClass::string: {
        const PropertyList* text = object.objectForKey("NS.string");
        if (!text || !text->isString()) return fail("archived string without its text");
        out = *text;
        return countText(text->asString()->size());
    }
    case ArchivedClass::date: {
        const PropertyList* time = object.objectForKey("NS.time");
        if (!time || !time->isNumber() || !IsPropertyListDate(time->doubleValue()))
            return fail("archived date without a time in the years 1 to 9999");
        out = PropertyList::date(time->doubleValue());
        return true;
    }
    case ArchivedClass::dictionary:
    case ArchivedClass::array:
        break;
    case ArchivedClass::notLookedAt:
    case ArchivedClass::other:
        return false;
    }
    if (std::find(open_.begin(), open_.end(), index) != open_.end())
        return fail("archived container that holds itself");
    if (open_.size() >= limits_.depth) return fail("containers nested too deep");
    open_.push_back(index);
    const bool decoded = decodeContainer(cls, object, out);
    open_.pop_back();
    return decoded;
}

bool Decoder::decodeContainer(ArchivedClass cls, const Dictionary& object, PropertyList& out) {
    const PropertyList* values = object.objectForKey("NS.objects");
    if (!values || !values->asArray()) return fail("archived container without its objects");
    if (cls == ArchivedClass::array) return decodeArray(*values->asArray(), out);
    const PropertyList* keys = object.objectForKey("NS.keys");
    if (!keys || !keys->asArray()) return fail("archived dictionary without its keys");
    if (keys->asArray()->size() != values->asArray()->size())
        return fail("archived dictionary with keys and values of different counts");
    return decodeDictionary(*keys->asArray(), *values->asArray(), out);
}

bool Decoder::decodeArray(const PropertyList::Array& values, PropertyList& out) {
    if (values.size() > limits_.nodes - std::min(nodes_, limits_.nodes))
        return fail("too many objects once shared ones are followed");
    PropertyList::Array array;
    array.reserve(values.size());
    for (const PropertyList& value : values) {
        array.push_back(PropertyList::boolean(false));
        if (!decode(&value, array.back())) return false;
    }
    out = PropertyList::array(std::move(array));
    return true;
}

const std::string* Decoder::decodeKey(const PropertyList& reference) {
    uint64_t index = 0;
    const PropertyList* found = entry(&reference, index);
    if (found && found->asDictionary() && classOf(*found->asDictionary()) == ArchivedClass::string)
        found = found->asDictionary()->objectForKey("NS.string");
    if (found && found->isString() && countText(found->asString()->size())) return found->asString();
    if (*reason_ == '\0') fail("archived dictionary with a key that is no string");
    return nullptr;
}

bool Decoder::decodeDictionary(const PropertyList::Array& keys, const PropertyList::Array& values,
                               PropertyList& out) {
    if (2 * keys.size() > limits_.nodes - std::min(nodes_, limits_.nodes))
        return fail("too many objects once shared ones are followed");
    nodes_ += keys.size();
    Dictionary dictionary;
    dictionary.reserve(keys.size());
    for (size_t i = 0; i < keys.size(); ++i) {
        const std::string* key = decodeKey(keys[i]);
        if (!key || !decode(&values[i], dictionary.placeForKey(*key))) return false;
    }
    out = PropertyList::dictionary(std::move(dictionary));
    return true;
}

} // namespace

Result<PropertyList> NSKeyedUnarchiver::unarchiveObjectWithData(std::span<const uint8_t> bytes,
                                                                const PropertyListLimits& limits) {
    const Result<PropertyList> file = DeserializePropertyList(bytes, limits);
    if (!file) return file.error();
    const Dictionary* archive = file->asDictionary();
    const PropertyList* archiver = archive ? archive->objectForKey("$archiver") : nullptr;
    if (!archiver || !archiver->isString() || *archiver->asString() != "NSKeyedArchiver")
        return Error{"not a keyed archive"};
    const PropertyList* version = archive->objectForKey("$version");
    if (!version || !version->isNumber() || version->intValue() != kArchiveVersion)
        return Error{"keyed archive of an unknown version"};
    const PropertyList* top = archive->objectForKey("$top");
    const PropertyList* root =
        top && top->asDictionary() ? top->asDictionary()->objectForKey("root") : nullptr;
    if (!root) return Error{"keyed archive without a root"};
    const PropertyList* objects = archive->objectForKey("$objects");
    if (!objects || !objects->asArray()) return Error{"keyed archive without objects"};

    PropertyList value = PropertyList::boolean(false);
    Decoder decoder(*objects->asArray(), limits);
    if (!decoder.decodeRoot(root, value)) return Error{decoder.reason()};
    return value;
}

} // namespace tallyforge
