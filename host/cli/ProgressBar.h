#pragma once

#include <string>

namespace tallyforge {

/// A line on the terminal that shows how far long work has come; nothing where standard error is no terminal.
/// Gone when it ends.
class ProgressBar {
  public:
    explicit ProgressBar(std::string what);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(double share);

  private:
    std::string what_;
    bool terminal_;
    int shown_ = -1; // percent
};

} // namespace tallyforge
