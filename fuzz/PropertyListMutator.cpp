#include "PropertyListMutator.h"

#include "foundation/PropertyListFormat.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

namespace tallyforge::fuzz {

namespace {

class TreeMutator {
  public:
    TreeMutator(unsigned seed, std::span<const std::string_view> words) : random_(seed), words_(words) {}

    size_t below(size_t count) { return std::uniform_int_distribution<size_t>(0, count - 1)(random_); }

    /// One change somewhere in the tree.
    void change(PropertyList& value) {
        std::vector<PropertyList*> all;
        collect(value, all);
        PropertyList& chosen = *all[below(all.size())];
        if (chosen.asArray() && below(2) == 0) return changeArray(*chosen.asArray(), *all[below(all.size())]);
        if (chosen.asDictionary() && below(4) != 0)
            return changeDictionary(*chosen.asDictionary(), *all[below(all.size())]);
        chosen = below(3) == 0 ? PropertyList(*all[below(all.size())]) : varied(chosen);
    }

  private:
    static void collect(PropertyList& value, std::vector<PropertyList*>& all) {
        all.push_back(&value);
        if (auto* array = value.asArray()) {
            for (PropertyList& item : *array)
                collect(item, all);
        } else if (auto* dictionary = value.asDictionary()) {
            for (const auto& entry : dictionary->entries())
                collect(*dictionary->objectForKey(entry.key), all);
        }
    }

    void changeArray(PropertyList::Array& array, const PropertyList& other) {
        PropertyList copy = other;
        const size_t at = below(array.size() + 1);
        if (at == array.size() || below(2) == 0)
            array.insert(array.begin() + static_cast<std::ptrdiff_t>(at), std::move(copy));
        else
            array.erase(array.begin() + static_cast<std::ptrdiff_t>(at));
    }

    void changeDictionary(Dictionary& dictionary, const PropertyList& other) {
        PropertyList copy = below(2) == 0 ? PropertyList(other) : scalar();
        if (dictionary.empty() || below(3) == 0) return dictionary.setObjectForKey(std::move(copy), word());
        const std::string key = dictionary.entries()[below(dictionary.count())].key;
        if (below(3) == 0)
            dictionary.removeObjectForKey(key);
        else
            dictionary.setObjectForKey(std::move(copy), key);
    }

    std::string word() {
        if (words_.empty() || below(8) == 0) return text({});
        return std::string(words_[below(words_.size())]);
    }

    std::string text(std::string from) {
        from.resize(from.size() + 8);
        from.resize(LLVMFuzzerMutate(reinterpret_cast<uint8_t*>(from.data()), from.size() - 8, from.size()));
        return from;
    }

    double number() {
        constexpr double kNumbers[] = {0,   1,    -1,   0.5,  -0.0,  2,      10,    100,          255,
                                       1e9, -1e9, 1e38, 1e39, 1e300, 5e-324, 65535, 2147483648.0, -20};
        switch (below(8)) {
        case 0:
            return std::numeric_limits<double>::quiet_NaN();
        case 1:
            return below(2) == 0 ? INFINITY : -INFINITY;
        default:
            return kNumbers[below(std::size(kNumbers))];
        }
    }

    PropertyList scalar() {
        switch (below(8)) {
        case 0:
            return PropertyList::boolean(below(2) == 0);
        case 1:
            return PropertyList::integer(static_cast<int64_t>(random_()));
        case 2:
            return PropertyList::floatNumber(static_cast<float>(number()));
        case 3:
            return PropertyList::doubleNumber(number());
        case 4:
            return PropertyList::data({1, 2, 3});
        case 5:
            return PropertyList::uid(below(64));
        case 6:
            return PropertyList::integer(static_cast<int64_t>(below(32)));
        default:
            return PropertyList::string(word());
        }
    }

    PropertyList varied(const PropertyList& value) {
        if (below(3) == 0) return scalar();
        if (value.isString()) return PropertyList::string(below(2) == 0 ? word() : text(*value.asString()));
        if (const auto uid = value.asUID()) return PropertyList::uid(*uid + 3 - below(6));
        if (value.isNumber()) {
            if (below(2) == 0)
                return PropertyList::integer(value.intValue() + int64_t{2} - int64_t(below(5)));
            return PropertyList::floatNumber(static_cast<float>(number()));
        }
        return scalar();
    }

    std::minstd_rand random_;
    std::span<const std::string_view> words_;
};

} // namespace

size_t MutatePropertyList(uint8_t* data, size_t size, size_t most, unsigned seed,
                          std::span<const std::string_view> words) {
    TreeMutator mutator(seed, words);
    if (mutator.below(2) == 0) return LLVMFuzzerMutate(data, size, most);
    auto value = DeserializePropertyList({data, size});
    if (!value) return LLVMFuzzerMutate(data, size, most);
    for (size_t changes = 1 + mutator.below(3); changes > 0; --changes)
        mutator.change(*value);
    const bool binary = BinaryPropertyList::Identify({data, size});
    const auto bytes = binary ? BinaryPropertyList::Serialize(*value) : XMLPropertyList::Serialize(*value);
    if (bytes.size() > most) return LLVMFuzzerMutate(data, size, most);
    std::memcpy(data, bytes.data(), bytes.size());
    return bytes.size();
}

} // namespace tallyforge::fuzz
