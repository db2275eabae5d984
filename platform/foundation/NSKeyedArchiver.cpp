#include "foundation/NSKeyedArchiver.h"

#include <unordered_map>

namespace tallyforge {

namespace {

using Kind = PropertyList::Kind;

PropertyList Text(std::string_view text) {
    return PropertyList::string(std::string(text));
}

/// Fills "$objects". A container's entry is taken before its contents, so that entry 1 is the root, and
/// written once they have their places.
class Encoder {
  public:
    explicit Encoder(ArchivedDictionaryClass dictionaryClass) : dictionaryClass_(dictionaryClass) {
        objects_.push_back(Text("$null"));
    }

    PropertyList encodeRoot(const PropertyList& root) {
        // Most are a flat dictionary.
        const size_t count = root.asDictionary() ? root.asDictionary()->count() : 0;
        objects_.reserve(2 * count + 3);
        texts_.reserve(2 * count);
        return encode(root);
    }
    PropertyList::Array takeObjects() { return std::move(objects_); }
    bool metUID() const { return metUID_; }

  private:
    PropertyList encode(const PropertyList& value) { return PropertyList::uid(entryOf(value)); }

    uint64_t entryOf(const PropertyList& value) {
        switch (value.kind()) {
        case Kind::array:
            return entryOfArray(*value.asArray());
        case Kind::dictionary:
            return entryOfDictionary(*value.asDictionary());
        case Kind::date:
            return entryOfDate(*value.asDate());
        case Kind::string:
            return entryOfText(*value.asString());
        case Kind::uid:
            metUID_ = true;
            return 0;
        default:
            return entryOfLeaf(value);
        }
    }

    uint64_t add(PropertyList value) {
        objects_.push_back(std::move(value));
        return objects_.size() - 1;
    }

    uint64_t entryOfText(std::string_view text) {
        const auto [known, added] = texts_.try_emplace(text, objects_.size());
        return added ? add(Text(text)) : known->second;
    }

    // Numbers, booleans and data, told apart by their kind and their bytes.
    uint64_t entryOfLeaf(const PropertyList& value) {
        std::string key(1, static_cast<char>(value.kind()));
        if (const PropertyList::Data* data = value.asData()) {
            key.append(data->begin(), data->end());
        } else if (value.kind() == Kind::integer) {
            key += value.description();
        } else {
            const double number = value.doubleValue(); // holds every float as it is
            key.append(reinterpret_cast<const char*>(&number), sizeof number);
        }
        const auto [known, added] = leaves_.try_emplace(std::move(key), objects_.size());
        return added ? add(value) : known->second;
    }

    uint64_t entryOfDate(double seconds) {
        const uint64_t entry = add(PropertyList::boolean(false));
        Dictionary object;
        object.setObjectForKey(PropertyList::doubleNumber(seconds), "NS.time");
        object.setObjectForKey(classRecord({"NSDate", "NSObject"}), "$class");
        objects_[entry] = PropertyList::dictionary(std::move(object));
        return entry;
    }

    uint64_t entryOfArray(const PropertyList::Array& array) {
        const uint64_t entry = add(PropertyList::boolean(false));
        PropertyList::Array elements;
        elements.reserve(array.size());
        for (const PropertyList& element : array)
            elements.push_back(encode(element));
        Dictionary object;
        object.setObjectForKey(PropertyList::array(std::move(elements)), "NS.objects");
        object.setObjectForKey(classRecord({"NSArray", "NSObject"}), "$class");
        objects_[entry] = PropertyList::dictionary(std::move(object));
        return entry;
    }

    uint64_t entryOfDictionary(const Dictionary& dictionary) {
        const uint64_t entry = add(PropertyList::boolean(false));
        PropertyList::Array keys, values;
        keys.reserve(dictionary.count());
        values.reserve(dictionary.count());
        for (const Dictionary::Entry& pair : dictionary)
            keys.push_back(PropertyList::uid(entryOfText(pair.key)));
        for (const Dictionary::Entry& pair : dictionary)
            values.push_back(encode(pair.value));
        Dictionary object;
        object.setObjectForKey(PropertyList::array(std::move(keys)), "NS.keys");
        object.setObjectForKey(PropertyList::array(std::move(values)), "NS.objects");
        object.setObjectForKey(dictionaryClass_ == ArchivedDictionaryClass::NSMutableDictionary
                                   ? classRecord({"NSMutableDictionary", "NSDictionary", "NSObject"})
                                   : classRecord({"NSDictionary", "NSObject"}),
                               "$class");
        objects_[entry] = PropertyList::dictionary(std::move(object));
        return entry;
    }

    PropertyList classRecord(std::initializer_list<std::string_view> classes) {
        const std::string_view name = *classes.begin();
        const auto [known, added] = classes_.try_emplace(name, objects_.size());
        if (added) {
            PropertyList::Array names;
            for (const std::string_view each : classes)
                names.push_back(Text(each));
            Dictionary record;
            record.setObjectForKey(Text(name), "$classname");
            record.setObjectForKey(PropertyList::array(std::move(names)), "$classes");
            add(PropertyList::dictionary(std::move(record)));
        }
        return PropertyList::uid(known->second);
    }

    const ArchivedDictionaryClass dictionaryClass_;
    PropertyList::Array objects_;
    std::unordered_map<std::string_view, uint64_t> texts_; // views into the value that is archived
    std::unordered_map<std::string, uint64_t> leaves_;
    std::unordered_map<std::string_view, uint64_t> classes_;
    bool metUID_ = false;
};

} // namespace

std::vector<uint8_t> NSKeyedArchiver::archivedDataWithRootObject(const PropertyList& root,
                                                                 ArchivedDictionaryClass cls) {
    Encoder encoder(cls);
    Dictionary top;
    top.setObjectForKey(encoder.encodeRoot(root), "root");
    if (encoder.metUID()) return {};
    Dictionary archive;
    archive.setObjectForKey(PropertyList::integer(100'000), "$version");
    archive.setObjectForKey(Text("NSKeyedArchiver"), "$archiver");
    archive.setObjectForKey(PropertyList::dictionary(std::move(top)), "$top");
    archive.setObjectForKey(PropertyList::array(encoder.takeObjects()), "$objects");
    return BinaryPropertyList::Serialize(PropertyList::dictionary(std::move(archive)));
}

} // namespace tallyforge
