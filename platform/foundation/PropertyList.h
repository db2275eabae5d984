#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tallyforge {

class PropertyList;

/// A dictionary that keeps its entries in the order in which they came. Keys are unique.
class Dictionary {
  public:
    struct Entry;

    Dictionary();
    Dictionary(const Dictionary&);
    Dictionary(Dictionary&&) noexcept;
    Dictionary& operator=(const Dictionary&);
    Dictionary& operator=(Dictionary&&) noexcept;
    ~Dictionary();

    /// The value under the key, or nullptr.
    const PropertyList* objectForKey(std::string_view key) const;
    PropertyList* objectForKey(std::string_view key);
    /// Sets the value; a new key goes to the end, a known one keeps its place.
    void setObjectForKey(PropertyList value, std::string_view key);
    /// The place of the key's value, which a reader fills; a new key goes to the end and holds false.
    PropertyList& placeForKey(std::string_view key);
    void reserve(size_t count);
    /// True when the key was there.
    bool removeObjectForKey(std::string_view key);
    size_t count() const;
    bool empty() const { return entries_.empty(); }
    const std::vector<Entry>& entries() const { return entries_; }
    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }
    /// Equal when they hold equal values under the same keys, in whatever order.
    bool operator==(const Dictionary&) const;

  private:
    std::vector<Entry> entries_;
    // Open-addressing slots (index + 1; 0 is free), only once there are more than a handful of entries.
    std::vector<uint32_t> slots_;
    // The entry's index, or count() when there is none.
    size_t find(std::string_view key) const;
    // The slot that holds the key, or the free one where it belongs.
    size_t slotFor(std::string_view key) const;
    void rehash(size_t expected);
};

/// One value of a property list, with its kind. The kind is part of the value: a float number 1 and an
/// integer 1 are written differently and are not equal.
///
/// Strings are UTF-8; a lone surrogate of a UTF-16 source is kept as its three-byte form, an embedded NUL
/// as it is, so that a string written again has the bytes it was read with.
class PropertyList {
  public:
    enum class Kind {
        boolean,
        integer,
        floatNumber,
        doubleNumber,
        string,
        data,
        date,
        array,
        dictionary,
        uid
    };
    using Array = std::vector<PropertyList>;
    using Data = std::vector<uint8_t>;

    static PropertyList boolean(bool value);
    static PropertyList integer(int64_t value);
    static PropertyList unsignedInteger(uint64_t value); ///< above 2^63 - 1 it takes 16 bytes in a file
    static PropertyList floatNumber(float value);
    static PropertyList doubleNumber(double value);
    static PropertyList string(std::string value);
    static PropertyList data(Data value);
    /// Held to the years 1 to 9999, which is what every form of a file can carry; not a number is 0.
    static PropertyList date(double secondsSince2001);
    static PropertyList array(Array value);
    static PropertyList dictionary(Dictionary value);
    static PropertyList uid(uint64_t value);

    Kind kind() const;
    bool isNumber() const; ///< boolean, integer, float or double
    bool isString() const { return kind() == Kind::string; }

    /// How NSNumber and NSString answer; other kinds read as 0.
    /// A string's `intValue`: white space, one sign, digits, held to 32 bits; `floatValue`: the longest
    /// decimal prefix, no hexadecimal, infinity or NaN; `boolValue`: Y, y, T, t or a digit other than 0 after
    /// white space, sign and zeros.
    /// A number's `intValue` of a real: truncated towards zero, held to 32 bits, NaN is 0; of an integer: its
    /// low 32 bits.
    float floatValue() const;
    double doubleValue() const;
    int32_t intValue() const;
    bool boolValue() const;

    /// The text when this is a string, else nullptr.
    const std::string* asString() const;
    const Data* asData() const;
    const Array* asArray() const;
    const Dictionary* asDictionary() const;
    Array* asArray();
    Dictionary* asDictionary();
    std::optional<uint64_t> asUID() const;
    std::optional<double> asDate() const; ///< seconds since 1 January 2001, UTC

    /// The integer as a signed value, and whether it is an unsigned one above 2^63 - 1 (then the bits of it).
    int64_t integerBits() const;
    bool isLargeUnsigned() const;

    /// Same kind and same value (floats by bits, so that NaN equals itself).
    bool operator==(const PropertyList&) const;

    /// The number or string as people read it: the shortest digits that give the same number of its kind
    /// back, "1" or "0" for a boolean; data, dates, arrays and dictionaries as the kind's name.
    std::string description() const;

  private:
    struct Integer {
        int64_t bits;
        bool largeUnsigned;
        bool operator==(const Integer&) const = default;
    };
    struct Date {
        double seconds;
    };
    struct UID {
        uint64_t value;
        bool operator==(const UID&) const = default;
    };
    using Storage =
        std::variant<bool, Integer, float, double, std::string, Data, Date, Array, Dictionary, UID>;

    explicit PropertyList(Storage storage);
    Storage storage_;
};

struct Dictionary::Entry {
    std::string key;
    PropertyList value;
};

inline size_t Dictionary::count() const {
    return entries_.size();
}

/// True for what PropertyList::date takes as it is.
bool IsPropertyListDate(double secondsSince2001);

/// `NSString` readings of a text, also used by PropertyList. White space is ASCII's.
int32_t NSStringIntValue(std::string_view text);
float NSStringFloatValue(std::string_view text);
double NSStringDoubleValue(std::string_view text);
bool NSStringBoolValue(std::string_view text);

} // namespace tallyforge
