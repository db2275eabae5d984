#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "corefoundation/CFPreferences.h"
#include "foundation/DeviceRoot.h"
#include "foundation/PropertyListFormat.h"
#include "settings/SettingsKeys.h"
#include "uikit/UIImage.h"

#include <unistd.h>

namespace tallyforge::test {

/// A device of the test's own in a temporary folder, which is the device root as long as this lives.
class TestDevice {
  public:
    TestDevice() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
        use();
    }
    ~TestDevice() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    TestDevice(const TestDevice&) = delete;
    TestDevice& operator=(const TestDevice&) = delete;

    void use() const {
        if (!DeviceRoot::set(root_)) std::abort();
        CFPreferencesForgetAll();
        UIImageForgetFiles();
    }
    const std::filesystem::path& root() const { return root_; }
    /// The file of this machine behind a device path.
    std::filesystem::path file(const std::string& devicePath) const { return root_ / devicePath.substr(1); }
    void write(const std::string& devicePath, const std::vector<uint8_t>& bytes) const {
        std::filesystem::create_directories(file(devicePath).parent_path());
        std::ofstream(file(devicePath), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    /// Makes this dictionary the whole settings domain.
    void writeDomain(const Dictionary& domain) const {
        write("/var/mobile/Library/Preferences/" + std::string(kSettingsDomain) + ".plist",
              BinaryPropertyList::Serialize(PropertyList::dictionary(domain)));
    }
    /// Puts the stock device's files here.
    void furnish() const {
        std::filesystem::copy(TALLYFORGE_RESOURCES "/stock", root_,
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
    }

  private:
    std::filesystem::path root_;
};

} // namespace tallyforge::test
