// Ten thousand generated property lists, half of them Python's and half of them ours, in both forms: each is
// read, written and read again, and both sides agree on what it holds.

#include "PropertyListTesting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tallyforge::testing {
namespace {

constexpr size_t kFiles = 5000; // of each side
constexpr unsigned kSeed = 20140917;

/// Many files in one: each follows its length in four bytes.
std::vector<Bytes> Unpacked(const Bytes& packed) {
    std::vector<Bytes> files;
    for (size_t at = 0; at + 4 <= packed.size();) {
        size_t length = 0;
        for (int i = 0; i < 4; ++i)
            length = length << 8 | packed[at++];
        if (length > packed.size() - at) break;
        files.emplace_back(packed.begin() + static_cast<std::ptrdiff_t>(at),
                           packed.begin() + static_cast<std::ptrdiff_t>(at + length));
        at += length;
    }
    return files;
}

Bytes Packed(const std::vector<Bytes>& files) {
    Bytes packed;
    for (const Bytes& file : files) {
        const Bytes length = BigEndian(file.size(), 4);
        packed.insert(packed.end(), length.begin(), length.end());
        packed.insert(packed.end(), file.begin(), file.end());
    }
    return packed;
}

Bytes Written(const PropertyList& value, bool binary) {
    return binary ? BinaryPropertyList::Serialize(value) : XMLPropertyList::Serialize(value);
}

class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    /// What the XML form holds too, or anything.
    PropertyList value(bool binary, int depth = 0) {
        switch (below(depth < 4 ? 12 : 9)) {
        case 0:
            return PropertyList::boolean(below(2) == 0);
        case 1:
            return PropertyList::integer(static_cast<int64_t>(wide()));
        case 2:
            return below(4) == 0 ? PropertyList::unsignedInteger(wide() | uint64_t{1} << 63)
                                 : PropertyList::integer(static_cast<int64_t>(below(300)) - 150);
        case 3:
            return PropertyList::doubleNumber(real());
        case 4:
            return binary ? PropertyList::floatNumber(static_cast<float>(real()))
                          : PropertyList::doubleNumber(real());
        case 5:
            return PropertyList::data(data());
        case 6: // from the year 1 on, and whole seconds
            return PropertyList::date(static_cast<double>(wide() % 252'423'993'600) - 63'113'904'000.0);
        case 7:
            return binary ? PropertyList::uid(wide() >> below(64)) : PropertyList::string(text());
        case 8:
            return PropertyList::string(text());
        case 9: {
            PropertyList::Array array;
            for (size_t count = below(6); count > 0; --count)
                array.push_back(value(binary, depth + 1));
            return PropertyList::array(std::move(array));
        }
        default: {
            Dictionary dictionary;
            for (size_t count = below(8); count > 0; --count)
                dictionary.setObjectForKey(value(binary, depth + 1), text());
            return PropertyList::dictionary(std::move(dictionary));
        }
        }
    }

  private:
    size_t below(size_t count) { return std::uniform_int_distribution<size_t>(0, count - 1)(random_); }
    uint64_t wide() { return std::uniform_int_distribution<uint64_t>()(random_) >> below(64); }

    // Never the negative zero: to Python it equals the other one, and one stands for both in its files.
    double real() {
        const auto digits = static_cast<double>(wide() % 1'000'000'007) + 1;
        return (below(2) == 0 ? -digits : digits) / std::pow(10.0, static_cast<double>(below(30)));
    }

    Bytes data() {
        Bytes bytes(below(40));
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(below(256));
        return bytes;
    }

    std::string text() {
        constexpr std::string_view pieces[] = {"a",      "badge",  "#FF8800", "<",          "&amp;", "]]>",
                                               "\"",     "'",      "\t",      "\n",         "\r",    " ",
                                               "\u00F6", "\u20AC", "\uFFFD",  "\U0001F600", "\u202E"};
        std::string text;
        for (size_t count = below(below(20) == 0 ? 40 : 6); count > 0; --count)
            text += pieces[below(std::size(pieces))];
        return text;
    }

    std::mt19937_64 random_;
};

// Python has reals of one precision only.
PropertyList InDoublePrecision(const PropertyList& value) {
    if (value.kind() == PropertyList::Kind::floatNumber)
        return PropertyList::doubleNumber(value.doubleValue());
    if (const auto* array = value.asArray()) {
        PropertyList::Array items;
        for (const PropertyList& item : *array)
            items.push_back(InDoublePrecision(item));
        return PropertyList::array(std::move(items));
    }
    if (const auto* dictionary = value.asDictionary()) {
        Dictionary entries;
        for (const auto& entry : *dictionary)
            entries.setObjectForKey(InDoublePrecision(entry.value), entry.key);
        return PropertyList::dictionary(std::move(entries));
    }
    return value;
}

std::string OracleArguments(const char* task, const ScratchFolder& folder) {
    return std::string(task) + " '" + folder.path().string() + "' " + std::to_string(kSeed) + " " +
           std::to_string(kFiles);
}

TEST(GeneratedPropertyListTest, PythonsFilesAreReadAndComeBackToItTheSame) {
    const ScratchFolder folder;
    RunOracle(OracleArguments("generate", folder));
    const std::vector<Bytes> files = Unpacked(FileBytes(folder / "python.files"));
    ASSERT_EQ(files.size(), kFiles);
    std::vector<Bytes> ours;
    for (const Bytes& file : files) {
        const bool binary = BinaryPropertyList::Identify(file);
        const auto value = DeserializePropertyList(file);
        ASSERT_TRUE(value) << value.reason() << " in file " << ours.size();
        ours.push_back(Written(*value, binary));
        ASSERT_TRUE(!binary || ours.back() == file) << "file " << ours.size() - 1;
        const auto again = DeserializePropertyList(ours.back());
        ASSERT_TRUE(again) << again.reason() << " in file " << ours.size() - 1;
        ASSERT_EQ(*again, *value) << "file " << ours.size() - 1;
    }
    WriteFile(folder / "ours.files", Packed(ours));
    RunOracle(OracleArguments("compare", folder));
}

TEST(GeneratedPropertyListTest, OurFilesAreReadByPythonAndComeBackTheSame) {
    const ScratchFolder folder;
    Generator generator(kSeed);
    std::vector<PropertyList> values;
    std::vector<Bytes> ours;
    while (ours.size() < kFiles) {
        const bool binary = ours.size() % 2 == 0;
        values.push_back(generator.value(binary));
        ours.push_back(Written(values.back(), binary));
        const auto again = DeserializePropertyList(ours.back());
        ASSERT_TRUE(again) << again.reason() << " in file " << ours.size() - 1;
        ASSERT_EQ(*again, values.back()) << "file " << ours.size() - 1;
        ASSERT_EQ(Written(*again, binary), ours.back()) << "file " << ours.size() - 1;
    }
    WriteFile(folder / "ours.files", Packed(ours));
    RunOracle(OracleArguments("answer", folder));
    const std::vector<Bytes> answers = Unpacked(FileBytes(folder / "python.files"));
    ASSERT_EQ(answers.size(), kFiles);
    for (size_t i = 0; i < kFiles; ++i) {
        const auto answer = BinaryPropertyList::Deserialize(answers[i]);
        ASSERT_TRUE(answer) << answer.reason() << " in file " << i;
        ASSERT_EQ(*answer, InDoublePrecision(values[i])) << "file " << i;
    }
}

} // namespace
} // namespace tallyforge::testing
