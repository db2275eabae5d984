#pragma once

#include "foundation/PropertyListFormat.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge::testing {

using Bytes = std::vector<uint8_t>;

Bytes BytesOf(std::string_view text);
/// "d1 01 02" and the like; everything but hexadecimal digits is skipped.
Bytes Hex(std::string_view digits);
Bytes operator+(Bytes a, const Bytes& b);
/// `value` in `size` bytes, the highest first.
Bytes BigEndian(uint64_t value, size_t size);

/// A binary property list put together by hand, object 0 the top one.
struct BinaryFile {
    std::vector<Bytes> objects;
    size_t referenceSize = 1;
    size_t offsetSize = 4;
    uint64_t top = 0;
    Bytes bytes() const;
};

/// What reading took: processor time, and the most memory held at once beyond what was held before.
struct Cost {
    double milliseconds;
    size_t peakBytes;
};
Cost CostOf(const std::function<void()>& act);

/// Holds a refusal to its rules: refused for the reason, in one line, within 50 ms and 64 MiB.
void ExpectRefused(const std::function<Result<PropertyList>()>& read, std::string_view reason);

/// A folder of its own that goes with the object.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

Bytes FileBytes(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const Bytes& bytes);

/// Runs the Python side of the comparison and fails the test with its output when it fails.
void RunOracle(const std::string& arguments);

} // namespace tallyforge::testing
