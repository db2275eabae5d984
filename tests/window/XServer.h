#pragma once

#include "coregraphics/CGImage.h"
#include "support/Program.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <xcb/xcb.h>

namespace tallyforge::test {

inline bool waitFor(const std::function<bool()>& holds, double seconds = 20) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

/// An X server of the test's own, whose screen is a file in memory that anyone can read.
class XServer {
  public:
    XServer()
        : folder_(makeFolder()), program_({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1400x24",
                                           "-nolisten", "tcp", "-fbdir", folder_.string(), "-noreset"}) {
        waitFor([this] { return program_.output().ends_with('\n'); });
        std::istringstream(program_.output()) >> number_;
    }
    ~XServer() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    bool runs() const { return number_ >= 0; }
    std::string display() const { return ":" + std::to_string(number_); }

    /// What xdotool says to these words.
    Ended xdo(std::vector<std::string> words) const {
        words.insert(words.begin(), "xdotool");
        return RunProgram(words, {{"DISPLAY", display()}});
    }

    /// Asks a window to close, as window managers do when its button is clicked.
    void close(const std::string& window) const {
        xcb_connection_t* const connection = xcb_connect(display().c_str(), nullptr);
        const auto atom = [connection](const std::string& name) {
            const auto cookie = xcb_intern_atom(connection, 0, uint16_t(name.size()), name.c_str());
            xcb_intern_atom_reply_t* const reply = xcb_intern_atom_reply(connection, cookie, nullptr);
            const xcb_atom_t known = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
            std::free(reply);
            return known;
        };
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = xcb_window_t(std::stoul(window));
        message.type = atom("WM_PROTOCOLS");
        message.data.data32[0] = atom("WM_DELETE_WINDOW");
        xcb_send_event(connection, 0, message.window, 0, reinterpret_cast<const char*>(&message));
        // The server forgets what it has not read of a client that is gone: an answer says that it has.
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
        xcb_disconnect(connection);
    }

    /// What is on the screen now.
    CGImage screen() const {
        std::ifstream file(folder_ / "Xvfb_screen0", std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        const auto word = [&bytes](size_t index) { // the header's numbers stand with the highest byte first
            uint32_t value = 0;
            for (size_t i = 0; i < 4; ++i)
                value = value << 8 | static_cast<unsigned char>(bytes.at(index * 4 + i));
            return value;
        };
        const size_t pixels = word(0) + word(19) * 12; // after the header and the colours
        const size_t stride = word(12);
        CGImage image(int(word(4)), int(word(5)));
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                uint32_t value = 0xFF;
                for (size_t i = 3; i-- > 0;)
                    value = value << 8 | static_cast<unsigned char>(
                                             bytes.at(pixels + size_t(y) * stride + size_t(x) * 4 + i));
                image.row(y)[x] = value;
            }
        }
        return image;
    }

  private:
    static std::filesystem::path makeFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tallyforge-x-XXXXXX").string();
        return mkdtemp(pattern.data());
    }
    std::filesystem::path folder_;
    Program program_;
    int number_ = -1;
};

} // namespace tallyforge::test
