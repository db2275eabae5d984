#pragma once

#include "support/DeviceFixture.h"
#include "support/Program.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tallyforge::test {

/// The program on a device of the test's own, without a session bus.
class CommandTest : public testing::Test {
  protected:
    Ended tallyforge(std::vector<std::string> words) const {
        words.insert(words.begin(), TALLYFORGE_BIN "/tallyforge");
        return RunProgram(words, {{"TALLYFORGE_ROOT", device.root().string()},
                                  {"DBUS_SESSION_BUS_ADDRESS", ""},
                                  {"XDG_RUNTIME_DIR", ""}});
    }
    std::filesystem::path domainFile() const {
        return device.file("/var/mobile/Library/Preferences/com.quillon.tallyforge.plist");
    }
    static std::string bytesOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void expectComplaint(const Ended& ended, int status) {
        EXPECT_EQ(ended.status, status) << ended.errors;
        EXPECT_EQ(ended.errorLines(), 1U) << ended.errors;
        EXPECT_TRUE(ended.errors.starts_with("tallyforge: ")) << ended.errors;
    }
    TestDevice device;
};

} // namespace tallyforge::test
