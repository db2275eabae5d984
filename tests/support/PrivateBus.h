#pragma once

#include "support/Program.h"

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tallyforge::test {

/// A session bus of the test's own.
class PrivateBus {
  public:
    /// The words come before the daemon's own: a program that starts it as another user.
    explicit PrivateBus(std::vector<std::string> words = {}) : daemon_(Daemon(std::move(words))) {
        for (int i = 0; i < 500 && daemon_.output().find('\n') == std::string::npos; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        address_ = daemon_.output();
        address_ = address_.substr(0, address_.find('\n'));
    }
    /// Empty when there is no dbus-daemon.
    const std::string& address() const { return address_; }

  private:
    static std::vector<std::string> Daemon(std::vector<std::string> words) {
        words.insert(words.end(), {"dbus-daemon", "--session", "--nofork", "--print-address"});
        return words;
    }
    Program daemon_;
    std::string address_;
};

} // namespace tallyforge::test
