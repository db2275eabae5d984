#include "cli/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace tallyforge {

namespace {

constexpr int kCells = 30;

} // namespace

ProgressBar::ProgressBar(std::string what)
    : what_(std::move(what)), terminal_(::isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
    if (shown_ >= 0) std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(double share) {
    int percent = std::clamp(static_cast<int>(share * 100), 0, 100);
    if (!terminal_ || percent == shown_) return;
    shown_ = percent;
    std::string bar(static_cast<size_t>(percent * kCells / 100), '#');
    bar.resize(kCells, '.');
    std::fprintf(stderr, "\r%s [%s] %3d %%", what_.c_str(), bar.c_str(), percent);
}

} // namespace tallyforge
