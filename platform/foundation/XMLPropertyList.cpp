#include "foundation/DecimalText.h"
#include "foundation/PropertyListFormat.h"
#include "foundation/UTFText.h"
#include "foundation/XMLGuard.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <pugixml.hpp>

namespace tallyforge {

namespace {

constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUIDKey = "CF$UID";
constexpr std::array<std::string_view, 7> kLeaves = {"string", "integer", "real", "true",
                                                     "false",  "date",    "data"};
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr size_t kBase64LineLength = 76;
constexpr int64_t kSecondsFrom1970To2001 = 978'307'200;

std::string_view Trimmed(std::string_view text) {
    text = SkipWhiteSpace(text);
    while (!text.empty() && IsWhiteSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

template <class Integer>
bool ReadWhole(std::string_view text, Integer& value, int base = 10) {
    const auto outcome = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return outcome.ec == std::errc() && outcome.ptr == text.data() + text.size();
}

bool ReadInteger(std::string_view text, PropertyList& out) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    uint64_t size = 0;
    if (!ReadWhole(text, size, hexadecimal ? 16 : 10) || (negative && size > uint64_t{1} << 63)) return false;
    out = negative ? PropertyList::integer(static_cast<int64_t>(~size + 1))
                   : PropertyList::unsignedInteger(size);
    return true;
}

bool ReadReal(std::string_view text, PropertyList& out) {
    double value = 0;
    if (const size_t length = ReadDecimal(text, value); length > 0 && length == text.size()) {
        out = PropertyList::doubleNumber(value);
        return true;
    }
    std::string name;
    for (const char c : text)
        name.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c);
    const bool negative = name.starts_with('-');
    if (negative || name.starts_with('+')) name.erase(0, 1);
    if (name == "inf" || name == "infinity")
        value = std::numeric_limits<double>::infinity();
    else if (name == "nan")
        value = std::numeric_limits<double>::quiet_NaN();
    else
        return false;
    out = PropertyList::doubleNumber(negative ? -value : value);
    return true;
}

// "2001-01-01T00:00:00Z"
bool ReadDate(std::string_view text, PropertyList& out) {
    constexpr std::string_view form = "dddd-dd-ddTdd:dd:ddZ";
    if (text.size() != form.size()) return false;
    for (size_t i = 0; i < form.size(); ++i) {
        if (form[i] == 'd' ? !IsDecimalDigit(text[i]) : text[i] != form[i]) return false;
    }
    const auto field = [&text](size_t at, size_t size) {
        int value = 0;
        ReadWhole(text.substr(at, size), value);
        return value;
    };
    const std::chrono::year_month_day day(std::chrono::year(field(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(field(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(field(8, 2))));
    if (!day.ok() || field(0, 4) == 0 || field(11, 2) > 23 || field(14, 2) > 59 || field(17, 2) > 59)
        return false;
    const int64_t days = std::chrono::sys_days(day).time_since_epoch().count();
    const int64_t seconds =
        days * 86'400 + field(11, 2) * int64_t{3'600} + field(14, 2) * int64_t{60} + field(17, 2);
    out = PropertyList::date(static_cast<double>(seconds - kSecondsFrom1970To2001));
    return true;
}

std::array<int8_t, 256> Base64Values() {
    std::array<int8_t, 256> values;
    values.fill(-1);
    for (size_t i = 0; i < kBase64.size(); ++i)
        values[static_cast<uint8_t>(kBase64[i])] = static_cast<int8_t>(i);
    return values;
}

bool ReadBase64(std::string_view text, PropertyList::Data& data) {
    static const std::array<int8_t, 256> values = Base64Values();
    data.reserve(text.size() / 4 * 3);
    uint32_t group = 0;
    size_t digits = 0, padding = 0;
    for (const char c : text) {
        if (IsWhiteSpace(c)) continue;
        const int8_t value = c == '=' ? int8_t{0} : values[static_cast<uint8_t>(c)];
        padding += c == '=' ? 1 : 0;
        if (value < 0 || (padding > 0 && c != '=') || padding > 2) return false;
        group = group << 6 | static_cast<uint32_t>(value);
        if (++digits % 4 == 0) {
            for (const int shift : {16, 8, 0})
                data.push_back(static_cast<uint8_t>(group >> shift));
            group = 0;
        }
    }
    if (digits % 4 != 0 || padding > data.size()) return false;
    data.resize(data.size() - padding);
    return true;
}

/// Makes values of the parser's tree.
class Reader {
  public:
    explicit Reader(const PropertyListLimits& limits) : limits_(limits) {}
    bool readRoot(const pugi::xml_node& root, PropertyList& out);
    const char* reason() const { return reason_; }

  private:
    bool fail(const char* reason) {
        reason_ = reason;
        return false;
    }
    bool read(const pugi::xml_node& element, PropertyList& out, size_t depth);
    bool readArray(const pugi::xml_node& element, PropertyList& out, size_t depth);
    bool readDictionary(const pugi::xml_node& element, PropertyList& out, size_t depth);
    bool readLeaf(std::string_view name, const std::string& text, PropertyList& out);
    bool leafText(const pugi::xml_node& element, std::string& text);
    bool nextElement(pugi::xml_node& child);

    const PropertyListLimits& limits_;
    const char* reason_ = "";
};

// Moves on to the first element from `child` on; there may be none, but no text either.
bool Reader::nextElement(pugi::xml_node& child) {
    for (; child && child.type() != pugi::node_element; child = child.next_sibling()) {
        const bool blank = child.type() == pugi::node_pcdata && SkipWhiteSpace(child.value()).empty();
        if (!blank) return fail("text between the elements of a container");
    }
    return true;
}

bool Reader::leafText(const pugi::xml_node& element, std::string& text) {
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() == pugi::node_element) return fail("element inside of a value");
        text += child.value();
    }
    return true;
}

bool Reader::readRoot(const pugi::xml_node& root, PropertyList& out) {
    if (std::string_view(root.name()) != "plist") return read(root, out, 1);
    pugi::xml_node child = root.first_child();
    if (!nextElement(child)) return false;
    if (!child) return fail("no value in the property list");
    pugi::xml_node rest = child.next_sibling();
    if (!nextElement(rest)) return false;
    if (rest) return fail("more than one value in the property list");
    return read(child, out, 1);
}

bool Reader::read(const pugi::xml_node& element, PropertyList& out, size_t depth) {
    const std::string_view name = element.name();
    if (name == "dict" || name == "array") {
        if (depth > limits_.depth) return fail("containers nested too deep");
        return name == "dict" ? readDictionary(element, out, depth) : readArray(element, out, depth);
    }
    if (name == "key") return fail("key outside of a dictionary");
    if (std::find(kLeaves.begin(), kLeaves.end(), name) == kLeaves.end())
        return fail("unknown kind of element");
    std::string text;
    return leafText(element, text) && readLeaf(name, text, out);
}

bool Reader::readLeaf(std::string_view name, const std::string& text, PropertyList& out) {
    if (name == "string") {
        out = PropertyList::string(text);
        return true;
    }
    if (name == "true" || name == "false") {
        out = PropertyList::boolean(name == "true");
        return Trimmed(text).empty() || fail("boolean with a text");
    }
    if (name == "integer") return ReadInteger(Trimmed(text), out) || fail("integer that cannot be read");
    if (name == "real") return ReadReal(Trimmed(text), out) || fail("real that cannot be read");
    if (name == "date") return ReadDate(Trimmed(text), out) || fail("date that cannot be read");
    PropertyList::Data data;
    if (!ReadBase64(text, data)) return fail("data that cannot be read");
    out = PropertyList::data(std::move(data));
    return true;
}

bool Reader::readArray(const pugi::xml_node& element, PropertyList& out, size_t depth) {
    PropertyList::Array array;
    for (pugi::xml_node child = element.first_child();; child = child.next_sibling()) {
        if (!nextElement(child)) return false;
        if (!child) break;
        array.push_back(PropertyList::boolean(false));
        if (!read(child, array.back(), depth + 1)) return false;
    }
    out = PropertyList::array(std::move(array));
    return true;
}

bool Reader::readDictionary(const pugi::xml_node& element, PropertyList& out, size_t depth) {
    Dictionary dictionary;
    std::string key;
    for (pugi::xml_node child = element.first_child();; child = child.next_sibling()) {
        if (!nextElement(child)) return false;
        if (!child) break;
        if (std::string_view(child.name()) != "key") return fail("value without a key");
        key.clear();
        if (!leafText(child, key)) return false;
        child = child.next_sibling();
        if (!nextElement(child)) return false;
        if (!child) return fail("key without a value");
        if (!read(child, dictionary.placeForKey(key), depth + 1)) return false;
    }
    const PropertyList* uid = dictionary.count() == 1 ? dictionary.objectForKey(kUIDKey) : nullptr;
    if (uid && uid->kind() == PropertyList::Kind::integer &&
        (uid->integerBits() >= 0 || uid->isLargeUnsigned()))
        out = PropertyList::uid(static_cast<uint64_t>(uid->integerBits()));
    else
        out = PropertyList::dictionary(std::move(dictionary));
    return true;
}

/// Writes one value as indented XML.
class Writer {
  public:
    std::string write(const PropertyList& root);

  private:
    void writeValue(const PropertyList& value, size_t depth);
    void writeText(std::string_view element, std::string_view text, size_t depth);
    void writeData(const PropertyList::Data& data, size_t depth);
    void writeDictionary(const Dictionary& dictionary, size_t depth);
    void indent(size_t depth) { out_.append(depth, '\t'); }
    void line(size_t depth, std::string_view text) {
        indent(depth);
        out_.append(text).push_back('\n');
    }

    std::string out_;
};

std::string RealText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
    std::array<char, 32> text;
    return std::string(text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr);
}

std::string DateText(double secondsSince2001) {
    const int64_t seconds = static_cast<int64_t>(std::floor(secondsSince2001)) + kSecondsFrom1970To2001;
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    const auto midnight = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day day(midnight);
    const auto rest = static_cast<unsigned>((time - midnight).count());
    const std::array<std::pair<unsigned, size_t>, 6> fields = {{{static_cast<unsigned>(int{day.year()}), 4},
                                                                {unsigned{day.month()}, 2},
                                                                {unsigned{day.day()}, 2},
                                                                {rest / 3'600, 2},
                                                                {rest / 60 % 60, 2},
                                                                {rest % 60, 2}}};
    constexpr std::string_view after = "--T::Z";
    std::string text;
    for (size_t i = 0; i < fields.size(); ++i) {
        const std::string digits = std::to_string(fields[i].first);
        text.append(fields[i].second - digits.size(), '0').append(digits).push_back(after[i]);
    }
    return text;
}

void Writer::writeText(std::string_view element, std::string_view text, size_t depth) {
    indent(depth);
    out_.append("<").append(element).append(">");
    while (!text.empty()) {
        const char32_t c = TakeUTF8(text);
        if (c == '&')
            out_ += "&amp;";
        else if (c == '<')
            out_ += "&lt;";
        else if (c == '>')
            out_ += "&gt;";
        else if (c == '\r') // as it is, it would be read as a line feed
            out_ += "&#13;";
        else
            AppendUTF8(out_, IsXMLCharacter(c) ? c : 0xFFFD);
    }
    out_.append("</").append(element).append(">\n");
}

void Writer::writeData(const PropertyList::Data& data, size_t depth) {
    line(depth, "<data>");
    std::string text;
    for (size_t i = 0; i < data.size(); i += 3) {
        const size_t count = std::min<size_t>(3, data.size() - i);
        uint32_t group = 0;
        for (size_t j = 0; j < 3; ++j)
            group = group << 8 | (j < count ? data[i + j] : 0u);
        for (size_t j = 0; j < 4; ++j)
            text.push_back(j <= count ? kBase64[(group >> (18 - 6 * j)) & 0x3F] : '=');
    }
    for (size_t i = 0; i < text.size(); i += kBase64LineLength)
        line(depth, std::string_view(text).substr(i, kBase64LineLength));
    line(depth, "</data>");
}

void Writer::writeDictionary(const Dictionary& dictionary, size_t depth) {
    if (dictionary.empty()) {
        line(depth, "<dict/>");
        return;
    }
    line(depth, "<dict>");
    for (const Dictionary::Entry& entry : dictionary) {
        writeText("key", entry.key, depth + 1);
        writeValue(entry.value, depth + 1);
    }
    line(depth, "</dict>");
}

void Writer::writeValue(const PropertyList& value, size_t depth) {
    switch (value.kind()) {
    case PropertyList::Kind::boolean:
        line(depth, value.boolValue() ? "<true/>" : "<false/>");
        return;
    case PropertyList::Kind::integer:
        writeText("integer", value.description(), depth);
        return;
    case PropertyList::Kind::floatNumber:
    case PropertyList::Kind::doubleNumber:
        writeText("real", RealText(value.doubleValue()), depth);
        return;
    case PropertyList::Kind::string:
        writeText("string", *value.asString(), depth);
        return;
    case PropertyList::Kind::data:
        writeData(*value.asData(), depth);
        return;
    case PropertyList::Kind::date:
        writeText("date", DateText(*value.asDate()), depth);
        return;
    case PropertyList::Kind::array:
        if (value.asArray()->empty()) {
            line(depth, "<array/>");
            return;
        }
        line(depth, "<array>");
        for (const PropertyList& element : *value.asArray())
            writeValue(element, depth + 1);
        line(depth, "</array>");
        return;
    case PropertyList::Kind::dictionary:
        writeDictionary(*value.asDictionary(), depth);
        return;
    case PropertyList::Kind::uid: {
        Dictionary uid;
        uid.setObjectForKey(PropertyList::unsignedInteger(*value.asUID()), kUIDKey);
        writeDictionary(uid, depth);
        return;
    }
    }
}

std::string Writer::write(const PropertyList& root) {
    out_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n";
    writeValue(root, 0);
    out_ += "</plist>\n";
    return std::move(out_);
}

bool HasUTF16Mark(std::span<const uint8_t> bytes) {
    return bytes.size() >= 2 &&
           ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE));
}

// The whole file as UTF-8 without a mark; what is no text is left for the guard to find.
std::string TextOf(std::span<const uint8_t> bytes) {
    if (HasUTF16Mark(bytes)) return UTF8FromUTF16(bytes.data() + 2, (bytes.size() - 2) / 2, bytes[0] == 0xFE);
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with(kUTF8Mark)) text.remove_prefix(kUTF8Mark.size());
    return std::string(text);
}

} // namespace

bool XMLPropertyList::Identify(std::span<const uint8_t> bytes) {
    if (HasUTF16Mark(bytes)) return true;
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with(kUTF8Mark)) text.remove_prefix(kUTF8Mark.size());
    return SkipWhiteSpace(text).starts_with('<');
}

Result<PropertyList> XMLPropertyList::Deserialize(std::span<const uint8_t> bytes,
                                                  const PropertyListLimits& limits) {
    if (bytes.size() > limits.bytes) return Error{"file too large"};
    if (!Identify(bytes)) return Error{"not an XML property list"};
    std::string text = TextOf(bytes);
    if (const char* reason = XMLGuard(text, limits).reasonAgainst()) return Error{reason};

    constexpr unsigned options =
        pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol | pugi::parse_ws_pcdata;
    pugi::xml_document document;
    if (!document.load_buffer_inplace(text.data(), text.size(), options, pugi::encoding_utf8))
        return Error{"XML that cannot be read"};
    PropertyList root = PropertyList::boolean(false);
    Reader reader(limits);
    if (!reader.readRoot(document.document_element(), root)) return Error{reader.reason()};
    return root;
}

std::vector<uint8_t> XMLPropertyList::Serialize(const PropertyList& value) {
    const std::string text = Writer().write(value);
    return std::vector<uint8_t>(text.begin(), text.end());
}

} // namespace tallyforge
