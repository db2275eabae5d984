// Archives that nobody here wrote: the device's own, and captures from devices.

#include "PropertyListTesting.h"

#include "foundation/NSKeyedArchiver.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace tallyforge::testing {
namespace {

namespace fs = std::filesystem;

const fs::path kFolder = fs::path(TALLYFORGE_FIXTURES) / "keyed-archives";

class KeyedArchiveFixturesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!fs::exists(kFolder)) GTEST_SKIP() << "no archives in " << kFolder;
    }
};

// In the order of the paths, as the Python side numbers them.
std::vector<fs::path> Entries() {
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kFolder))
        entries.push_back(entry.path());
    std::sort(entries.begin(), entries.end(),
              [](const fs::path& a, const fs::path& b) { return a.string() < b.string(); });
    return entries;
}

TEST_F(KeyedArchiveFixturesTest, EveryArchiveIsReadAsPythonResolvesItOrRefused) {
    const ScratchFolder folder;
    const std::vector<fs::path> entries = Entries();
    for (size_t i = 0; i < entries.size(); ++i) {
        if (!fs::is_regular_file(entries[i])) continue;
        const Result<PropertyList> value = NSKeyedUnarchiver::unarchiveObjectWithData(FileBytes(entries[i]));
        if (value) {
            WriteFile(folder / (std::to_string(i) + ".plist"), BinaryPropertyList::Serialize(*value));
        } else {
            EXPECT_FALSE(value.reason().empty());
            WriteFile(folder / (std::to_string(i) + ".refused"), BytesOf(value.reason()));
        }
    }
    RunOracle("archives '" + kFolder.string() + "' '" + folder.path().string() + "'");
}

// Numbering, shared values and sizes are right when a file of the device comes out as it went in.
TEST_F(KeyedArchiveFixturesTest, FilesOfTheDeviceComeOutAsTheyWentIn) {
    for (const char* name :
         {"device-captures/dict.bin", "device-captures/ax_statechange.bin",
          "device-captures/nestedarrays.bin", "device-captures/int64-value-in-nskeyedarchive.bin",
          "device-captures/onevalue.bin", "macos-10.14/NSMutableSet-Numbers.archive",
          "unarchiver/NSKeyedUnarchiver-ComplexTest.plist"}) {
        const Bytes bytes = FileBytes(kFolder / name);
        const Result<PropertyList> value = BinaryPropertyList::Deserialize(bytes);
        ASSERT_TRUE(value) << name << ": " << value.reason();
        EXPECT_EQ(BinaryPropertyList::Serialize(*value), bytes) << name;
    }
}

// The archiver's layout: unarchived and archived again, a dictionary of the device has the device's bytes.
TEST_F(KeyedArchiveFixturesTest, ADictionaryOfTheDeviceIsArchivedAsTheDeviceDoes) {
    for (const char* name :
         {"device-captures/int64-value-in-nskeyedarchive.bin", "device-captures/ax_statechange.bin"}) {
        const Bytes bytes = FileBytes(kFolder / name);
        const Result<PropertyList> value = NSKeyedUnarchiver::unarchiveObjectWithData(bytes);
        ASSERT_TRUE(value) << name << ": " << value.reason();
        EXPECT_EQ(NSKeyedArchiver::archivedDataWithRootObject(*value, ArchivedDictionaryClass::NSDictionary),
                  bytes)
            << name;
    }
}

} // namespace
} // namespace tallyforge::testing
