// Where no window can be opened there is one line that says so, and pictures.

#include "support/DeviceFixture.h"
#include "support/Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyforge::test {

namespace {

using testing::HasSubstr;

class NoDisplayTest : public testing::Test {
  protected:
    Ended run(std::map<std::string, std::string> display) {
        device.furnish();
        std::map<std::string, std::string> environment{{"TALLYFORGE_ROOT", device.root().string()},
                                                       {"DISPLAY", ""},
                                                       {"XDG_DATA_HOME", (device.root() / "data").string()},
                                                       {"WAYLAND_DISPLAY", ""},
                                                       {"DBUS_SESSION_BUS_ADDRESS", ""},
                                                       {"XDG_RUNTIME_DIR", ""},
                                                       {"QT_QPA_PLATFORM", ""}};
        for (const auto& [name, value] : display)
            environment[name] = value;
        return RunProgram({TALLYFORGE_BIN "/tallyforge"}, environment);
    }
    static void expectPictures(const Ended& ended, const std::string& reason) {
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.errorLines(), 1U) << ended.errors;
        EXPECT_THAT(ended.errors, testing::StartsWith("tallyforge: no window: "));
        EXPECT_THAT(ended.errors, HasSubstr(reason));
        size_t pictures = 0;
        std::istringstream lines(ended.output);
        for (std::string line; std::getline(lines, line); ++pictures)
            EXPECT_TRUE(std::filesystem::exists(line)) << line;
        EXPECT_GT(pictures, 0U);
    }
    TestDevice device;
};

TEST_F(NoDisplayTest, NoneIsNamed) {
    expectPictures(run({}), "neither DISPLAY nor WAYLAND_DISPLAY is set");
}

TEST_F(NoDisplayTest, TheXServerIsGone) {
    expectPictures(run({{"DISPLAY", ":987"}}), "the X display :987 cannot be reached");
}

TEST_F(NoDisplayTest, TheNameIsNoDisplay) {
    expectPictures(run({{"DISPLAY", "nonsense"}}), "the X display nonsense cannot be reached");
}

TEST_F(NoDisplayTest, TheWaylandServerIsGone) {
    expectPictures(run({{"WAYLAND_DISPLAY", "/nowhere/wayland-7"}}), "wayland");
}

} // namespace

} // namespace tallyforge::test
