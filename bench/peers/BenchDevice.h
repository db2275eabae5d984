#pragma once

#include "foundation/DeviceRoot.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tallyforge::bench {

/// Ends the program when what was to be measured has not been done.
inline void Demand(bool done, const char* what) {
    if (done) return;
    std::fprintf(stderr, "tallyforge: bench: %s\n", what);
    std::exit(1);
}

inline void WriteFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    Demand(file.flush().good(), "a file of the device could not be written");
}

/// An empty device root on the disk that TMPDIR names; gone with the object.
class BenchDevice {
  public:
    BenchDevice() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-bench-XXXXXX").string();
        Demand(mkdtemp(pattern.data()) && DeviceRoot::set(pattern), "no folder for a device");
        root_ = pattern;
    }
    ~BenchDevice() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    BenchDevice(const BenchDevice&) = delete;
    BenchDevice& operator=(const BenchDevice&) = delete;

    const std::string& root() const { return root_; }

  private:
    std::string root_;
};

} // namespace tallyforge::bench
