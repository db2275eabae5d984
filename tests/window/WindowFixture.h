#pragma once

#include "XServer.h"
#include "coregraphics/Canvas.h"
#include "foundation/PropertyListFormat.h"
#include "rastergraphics/RasterGraphics.h"
#include "support/DeviceFixture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

namespace tallyforge::test {

using Json = nlohmann::json;

/// The program in a window of a display of the test's own, with a device of its own and without a bus.
class WindowTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { server = std::make_unique<XServer>(); }
    static void TearDownTestSuite() { server.reset(); }

    void SetUp() override {
        ASSERT_TRUE(server->runs()) << "there is no Xvfb";
        Graphics::install(MakeRasterGraphics());
        device.furnish();
        std::filesystem::create_directories(device.file("/var/mobile/Library/Preferences"));
    }

    std::map<std::string, std::string> environment() const {
        return {{"TALLYFORGE_ROOT", device.root().string()},
                {"DISPLAY", server->display()},
                {"WAYLAND_DISPLAY", ""},
                {"QT_QPA_PLATFORM", ""},
                {"DBUS_SESSION_BUS_ADDRESS", ""},
                {"XDG_RUNTIME_DIR", ""}};
    }

    /// Opens the window and waits until it shows the first screen.
    void openWindow(std::vector<std::string> words = {}) {
        words.insert(words.begin(), TALLYFORGE_BIN "/tallyforge");
        program = std::make_unique<Program>(words, environment());
        ASSERT_TRUE(waitFor([this] {
            window = server->xdo({"search", "--onlyvisible", "--name", "^Tallyforge$"}).output;
            window = window.substr(0, window.find('\n'));
            return !window.empty();
        })) << "no window: "
            << program->wait(0).errors;
        server->xdo({"windowmove", "--sync", window, "0", "0", "windowfocus", "--sync", window});
        pad_ = std::find(words.begin(), words.end(), "pad") != words.end();
        expectScreen("tallyforge");
    }

    Ended tallyforge(std::vector<std::string> words) const {
        words.insert(words.begin(), TALLYFORGE_BIN "/tallyforge");
        return RunProgram(words, environment());
    }

    void key(const std::string& name) { server->xdo({"key", "--clearmodifiers", name}); }
    void clickAt(const CGPoint& p) { server->xdo({"mousemove", text(p.x), text(p.y), "click", "1"}); }

    /// The screen of that name as `inspect` tells of it.
    Json inspect(const std::string& pane) const {
        std::vector<std::string> words{"inspect", "--pane", pane};
        if (pad_) words.insert(words.end(), {"--idiom", "pad"});
        const Ended ended = tallyforge(words);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return Json::parse(ended.output);
    }
    /// In points, which are pixels here.
    CGRect rowFrame(const std::string& pane, const std::string& title) const {
        const Json screen = inspect(pane);
        for (const Json& row : screen["rows"]) {
            if (row["title"] == title) return rectFrom(row["frame"]);
        }
        ADD_FAILURE() << "no row " << title << " in " << pane;
        return {};
    }
    static CGPoint middleOf(const CGRect& rect) { return {CGRectGetMidX(rect), CGRectGetMidY(rect)}; }

    /// Where a row's slider is on the screen.
    CGRect sliderFrame(const std::string& pane, const std::string& title) const {
        const CGRect row = rowFrame(pane, title);
        const Json screen = inspect(pane);
        const auto found = findSlider(screen["view"], {0, 0}, row);
        EXPECT_TRUE(found) << "no slider in the row " << title;
        return found.value_or(CGRect{});
    }

    /// Waits until the window shows exactly what `render` draws of that screen.
    void expectScreen(const std::string& pane, int scale = 1) {
        const std::string file = (device.root() / "expected.png").string();
        std::vector<std::string> words{"render", file, "--pane", pane, "--scale", std::to_string(scale)};
        if (pad_) words.insert(words.end(), {"--idiom", "pad"});
        int different = -1;
        EXPECT_TRUE(waitFor([&] {
            if (tallyforge(words).status != 0) return false;
            different = differences(file);
            return different == 0;
        })) << different
            << " pixels are not those of the screen " << pane;
    }

    std::optional<double> setting(const std::string& key) const {
        const auto domain = readDomain();
        if (!domain) return std::nullopt;
        const PropertyList* value = domain->objectForKey(key);
        return value ? std::optional(value->doubleValue()) : std::nullopt;
    }

    /// How often the program has been woken up, and what it holds in memory, as the system counts it.
    long statusOf(const std::string& field) const {
        std::ifstream file("/proc/" + std::to_string(program->id()) + "/status");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(field + ":")) return std::stol(line.substr(field.size() + 1));
        }
        ADD_FAILURE() << "no " << field;
        return -1;
    }
    long wakeUps() const {
        long all = 0;
        for (const auto& task :
             std::filesystem::directory_iterator("/proc/" + std::to_string(program->id()) + "/task")) {
            std::ifstream file(task.path() / "status");
            for (std::string line; std::getline(file, line);) {
                if (line.starts_with("voluntary_ctxt_switches:")) all += std::stol(line.substr(24));
            }
        }
        return all;
    }

    static std::string text(double number) { return std::to_string(std::lround(number)); }
    static CGRect rectFrom(const Json& frame) {
        return {{frame["x"], frame["y"]}, {frame["width"], frame["height"]}};
    }

    static inline std::unique_ptr<XServer> server;
    TestDevice device;
    std::unique_ptr<Program> program;
    std::string window;

  private:
    // The origin is that of the view's superview, in the window.
    static std::optional<CGRect> findSlider(const Json& view, CGPoint origin, const CGRect& row) {
        const CGRect frame = rectFrom(view["frame"]), bounds = rectFrom(view["bounds"]);
        const CGPoint corner{origin.x + frame.origin.x, origin.y + frame.origin.y};
        if (view["class"] == "UISlider" && CGRectContainsPoint(row, corner))
            return CGRect{corner, frame.size};
        for (const Json& subview : view["subviews"]) {
            const CGPoint inside{corner.x - bounds.origin.x, corner.y - bounds.origin.y};
            if (const auto found = findSlider(subview, inside, row)) return found;
        }
        return std::nullopt;
    }

    std::optional<Dictionary> readDomain() const;

    int differences(const std::string& file) const {
        std::ifstream stream(file, std::ios::binary);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
        const CGImageRef wanted = Graphics::current()->decodeImage(bytes);
        const CGImage shown = server->screen();
        if (!wanted || wanted->width() > shown.width() || wanted->height() > shown.height()) return -1;
        int different = 0;
        for (int y = 0; y < wanted->height(); ++y) {
            for (int x = 0; x < wanted->width(); ++x)
                different += wanted->pixel(x, y) != shown.pixel(x, y);
        }
        return different;
    }

    bool pad_ = false;
};

inline std::optional<Dictionary> WindowTest::readDomain() const {
    std::ifstream file(device.file("/var/mobile/Library/Preferences/com.quillon.tallyforge.plist"),
                       std::ios::binary);
    const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    auto list = BinaryPropertyList::Deserialize(bytes);
    if (!list || !list->asDictionary()) return std::nullopt;
    return *list->asDictionary();
}

} // namespace tallyforge::test
