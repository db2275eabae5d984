#include "foundation/PropertyList.h"

#include "foundation/DecimalText.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <sys/random.h>

namespace tallyforge {

namespace {

// Below this a walk over the entries is quicker than a hash.
constexpr size_t kEntriesWithoutSlots = 8;

// Keys come from files that anybody may have written, so the hash depends on numbers nobody knows beforehand.
struct HashSecret {
    uint64_t words[3] = {0x9E3779B97F4A7C15u, 0xD1B54A32D192ED03u, 0x8CB92BA72F3D8DD7u};
    HashSecret() {
        uint64_t random[3] = {};
        if (getrandom(random, sizeof random, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof random))
            random[0] = reinterpret_cast<uintptr_t>(this);
        for (int i = 0; i < 3; ++i)
            words[i] ^= random[i];
    }
};

uint64_t Fold(uint64_t a, uint64_t b) {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

uint64_t WordAt(const char* bytes, size_t size) {
    uint64_t word = 0;
    std::memcpy(&word, bytes, size);
    return word;
}

uint64_t HashOfKey(std::string_view key) {
    static const HashSecret secret;
    const auto& [a, b, c] = secret.words;
    const size_t size = key.size();
    const char* bytes = key.data();
    uint64_t hash = a ^ size;
    const auto take = [&, b = b, c = c](uint64_t word) { hash = Fold(word ^ b, hash ^ c); };
    // The last word laps over the one before it; the size is in the hash already.
    if (size >= 8) {
        for (size_t at = 0; at + 8 < size; at += 8)
            take(WordAt(bytes + at, 8));
        take(WordAt(bytes + size - 8, 8));
    } else if (size >= 4) {
        take(WordAt(bytes, 4) | WordAt(bytes + size - 4, 4) << 32);
    } else if (size > 0) {
        take(WordAt(bytes, 1) | WordAt(bytes + size / 2, 1) << 8 | WordAt(bytes + size - 1, 1) << 16);
    }
    return Fold(hash, b);
}

bool SameBits(float a, float b) {
    return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b);
}

bool SameBits(double a, double b) {
    return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

int32_t HeldTo32Bits(double value) {
    if (std::isnan(value)) return 0;
    return static_cast<int32_t>(
        std::clamp<double>(value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

template <class Real>
std::string ShortestDigits(Real value) {
    if (std::isnan(value)) return "nan";
    const Real size = std::abs(value);
    const bool plain = size == 0 || (size >= Real(1e-5) && size < Real(1e15));
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value,
                                   plain ? std::chars_format::fixed : std::chars_format::scientific);
    return std::string(text, end.ptr);
}

// Midnight of 1 January of the years 1 and 10000, as seconds since 2001.
constexpr double kFirstDate = -63'113'904'000.0;
constexpr double kEndOfDates = 252'423'993'600.0;

} // namespace

Dictionary::Dictionary() = default;
Dictionary::Dictionary(const Dictionary&) = default;
Dictionary::Dictionary(Dictionary&&) noexcept = default;
Dictionary& Dictionary::operator=(const Dictionary&) = default;
Dictionary& Dictionary::operator=(Dictionary&&) noexcept = default;
Dictionary::~Dictionary() = default;

size_t Dictionary::slotFor(std::string_view key) const {
    const size_t mask = slots_.size() - 1;
    size_t slot = HashOfKey(key) & mask;
    while (slots_[slot] != 0 && entries_[slots_[slot] - 1].key != key)
        slot = (slot + 1) & mask;
    return slot;
}

size_t Dictionary::find(std::string_view key) const {
    if (!slots_.empty()) {
        const uint32_t taken = slots_[slotFor(key)];
        return taken == 0 ? entries_.size() : taken - 1;
    }
    size_t index = 0;
    while (index < entries_.size() && entries_[index].key != key)
        ++index;
    return index;
}

void Dictionary::rehash(size_t expected) {
    slots_.clear();
    if (expected <= kEntriesWithoutSlots) return;
    slots_.resize(std::bit_ceil(expected * 2));
    for (size_t i = 0; i < entries_.size(); ++i)
        slots_[slotFor(entries_[i].key)] = static_cast<uint32_t>(i + 1);
}

void Dictionary::reserve(size_t count) {
    entries_.reserve(count);
    if (count * 2 > slots_.size()) rehash(count);
}

const PropertyList* Dictionary::objectForKey(std::string_view key) const {
    const size_t index = find(key);
    return index < entries_.size() ? &entries_[index].value : nullptr;
}

PropertyList* Dictionary::objectForKey(std::string_view key) {
    const size_t index = find(key);
    return index < entries_.size() ? &entries_[index].value : nullptr;
}

PropertyList& Dictionary::placeForKey(std::string_view key) {
    size_t slot = 0;
    if (slots_.empty()) {
        const size_t index = find(key);
        if (index < entries_.size()) return entries_[index].value;
    } else {
        slot = slotFor(key);
        if (slots_[slot] != 0) return entries_[slots_[slot] - 1].value;
    }
    entries_.push_back(Entry{std::string(key), PropertyList::boolean(false)});
    if (entries_.size() * 2 > slots_.size())
        rehash(entries_.size() > kEntriesWithoutSlots ? entries_.size() * 2 : 0);
    else
        slots_[slot] = static_cast<uint32_t>(entries_.size());
    return entries_.back().value;
}

void Dictionary::setObjectForKey(PropertyList value, std::string_view key) {
    placeForKey(key) = std::move(value);
}

bool Dictionary::removeObjectForKey(std::string_view key) {
    const size_t index = find(key);
    if (index == entries_.size()) return false;
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
    rehash(entries_.size());
    return true;
}

bool Dictionary::operator==(const Dictionary& other) const {
    if (count() != other.count()) return false;
    return std::all_of(begin(), end(), [&other](const Entry& entry) {
        const PropertyList* theirs = other.objectForKey(entry.key);
        return theirs && *theirs == entry.value;
    });
}

PropertyList::PropertyList(Storage storage) : storage_(std::move(storage)) {}

PropertyList PropertyList::boolean(bool value) {
    return PropertyList(value);
}
PropertyList PropertyList::integer(int64_t value) {
    return PropertyList(Integer{value, false});
}
PropertyList PropertyList::unsignedInteger(uint64_t value) {
    return PropertyList(Integer{static_cast<int64_t>(value), value > INT64_MAX});
}
PropertyList PropertyList::floatNumber(float value) {
    return PropertyList(value);
}
PropertyList PropertyList::doubleNumber(double value) {
    return PropertyList(value);
}
PropertyList PropertyList::string(std::string value) {
    return PropertyList(Storage(std::move(value)));
}
PropertyList PropertyList::data(Data value) {
    return PropertyList(Storage(std::move(value)));
}
PropertyList PropertyList::array(Array value) {
    return PropertyList(Storage(std::move(value)));
}
PropertyList PropertyList::dictionary(Dictionary value) {
    return PropertyList(Storage(std::move(value)));
}
PropertyList PropertyList::uid(uint64_t value) {
    return PropertyList(UID{value});
}

PropertyList PropertyList::date(double secondsSince2001) {
    if (std::isnan(secondsSince2001)) return PropertyList(Date{0});
    return PropertyList(
        Date{std::clamp(secondsSince2001, kFirstDate, std::nextafter(kEndOfDates, kFirstDate))});
}

bool IsPropertyListDate(double secondsSince2001) {
    return secondsSince2001 >= kFirstDate && secondsSince2001 < kEndOfDates;
}

PropertyList::Kind PropertyList::kind() const {
    return static_cast<Kind>(storage_.index());
}
bool PropertyList::isNumber() const {
    return kind() <= Kind::doubleNumber;
}

double PropertyList::doubleValue() const {
    switch (kind()) {
    case Kind::boolean:
        return std::get<bool>(storage_) ? 1 : 0;
    case Kind::integer:
        return isLargeUnsigned() ? static_cast<double>(static_cast<uint64_t>(integerBits()))
                                 : static_cast<double>(integerBits());
    case Kind::floatNumber:
        return std::get<float>(storage_);
    case Kind::doubleNumber:
        return std::get<double>(storage_);
    case Kind::string:
        return NSStringDoubleValue(*asString());
    default:
        return 0;
    }
}

float PropertyList::floatValue() const {
    switch (kind()) {
    case Kind::integer: // by way of a double it would be rounded twice
        return isLargeUnsigned() ? static_cast<float>(static_cast<uint64_t>(integerBits()))
                                 : static_cast<float>(integerBits());
    case Kind::floatNumber:
        return std::get<float>(storage_);
    case Kind::string:
        return NSStringFloatValue(*asString());
    default:
        return static_cast<float>(doubleValue());
    }
}

int32_t PropertyList::intValue() const {
    switch (kind()) {
    case Kind::boolean:
        return std::get<bool>(storage_) ? 1 : 0;
    case Kind::integer:
        return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(integerBits())));
    case Kind::string:
        return NSStringIntValue(*asString());
    default:
        return HeldTo32Bits(doubleValue());
    }
}

bool PropertyList::boolValue() const {
    if (const std::string* text = asString()) return NSStringBoolValue(*text);
    return doubleValue() != 0;
}

const std::string* PropertyList::asString() const {
    return std::get_if<std::string>(&storage_);
}
const PropertyList::Data* PropertyList::asData() const {
    return std::get_if<Data>(&storage_);
}
const PropertyList::Array* PropertyList::asArray() const {
    return std::get_if<Array>(&storage_);
}
const Dictionary* PropertyList::asDictionary() const {
    return std::get_if<Dictionary>(&storage_);
}
PropertyList::Array* PropertyList::asArray() {
    return std::get_if<Array>(&storage_);
}
Dictionary* PropertyList::asDictionary() {
    return std::get_if<Dictionary>(&storage_);
}

std::optional<uint64_t> PropertyList::asUID() const {
    const UID* uid = std::get_if<UID>(&storage_);
    return uid ? std::optional(uid->value) : std::nullopt;
}

std::optional<double> PropertyList::asDate() const {
    const Date* date = std::get_if<Date>(&storage_);
    return date ? std::optional(date->seconds) : std::nullopt;
}

int64_t PropertyList::integerBits() const {
    const Integer* integer = std::get_if<Integer>(&storage_);
    return integer ? integer->bits : 0;
}

bool PropertyList::isLargeUnsigned() const {
    const Integer* integer = std::get_if<Integer>(&storage_);
    return integer && integer->largeUnsigned;
}

bool PropertyList::operator==(const PropertyList& other) const {
    if (kind() != other.kind()) return false;
    switch (kind()) {
    case Kind::floatNumber:
        return SameBits(std::get<float>(storage_), std::get<float>(other.storage_));
    case Kind::doubleNumber:
        return SameBits(std::get<double>(storage_), std::get<double>(other.storage_));
    case Kind::boolean:
        return std::get<bool>(storage_) == std::get<bool>(other.storage_);
    case Kind::integer:
        return std::get<Integer>(storage_) == std::get<Integer>(other.storage_);
    case Kind::string:
        return *asString() == *other.asString();
    case Kind::data:
        return *asData() == *other.asData();
    case Kind::date:
        return SameBits(*asDate(), *other.asDate());
    case Kind::array:
        return *asArray() == *other.asArray();
    case Kind::dictionary:
        return *asDictionary() == *other.asDictionary();
    case Kind::uid:
        return asUID() == other.asUID();
    }
    return false;
}

std::string PropertyList::description() const {
    switch (kind()) {
    case Kind::boolean:
        return std::get<bool>(storage_) ? "1" : "0";
    case Kind::integer:
        return isLargeUnsigned() ? std::to_string(static_cast<uint64_t>(integerBits()))
                                 : std::to_string(integerBits());
    case Kind::floatNumber:
        return ShortestDigits(std::get<float>(storage_));
    case Kind::doubleNumber:
        return ShortestDigits(std::get<double>(storage_));
    case Kind::string:
        return *asString();
    case Kind::data:
        return "data";
    case Kind::date:
        return "date";
    case Kind::array:
        return "array";
    case Kind::dictionary:
        return "dictionary";
    case Kind::uid:
        return "uid";
    }
    return {};
}

int32_t NSStringIntValue(std::string_view text) {
    text = SkipWhiteSpace(text);
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
    int64_t value = 0;
    for (size_t i = 0; i < text.size() && IsDecimalDigit(text[i]); ++i)
        value = std::min<int64_t>(value * 10 + (text[i] - '0'), int64_t{1} << 31);
    value = negative ? -value : value;
    return static_cast<int32_t>(std::min<int64_t>(value, INT32_MAX));
}

float NSStringFloatValue(std::string_view text) {
    float value = 0;
    ReadDecimal(SkipWhiteSpace(text), value);
    return value;
}

double NSStringDoubleValue(std::string_view text) {
    double value = 0;
    ReadDecimal(SkipWhiteSpace(text), value);
    return value;
}

bool NSStringBoolValue(std::string_view text) {
    text = SkipWhiteSpace(text);
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
    const size_t first = text.find_first_not_of('0');
    if (first == std::string_view::npos) return false;
    return std::string_view("YyTt123456789").find(text[first]) != std::string_view::npos;
}

} // namespace tallyforge
