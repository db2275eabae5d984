#include "window/FrameTrace.h"

#include <cinttypes>
#include <cstdlib>

namespace tallyforge {

FrameTrace::FrameTrace() {
    const char* path = std::getenv("TALLYFORGE_TRACE_FRAMES");
    if (path && *path) file_.reset(std::fopen(path, "we"));
    if (file_) std::setvbuf(file_.get(), nullptr, _IOLBF, 4096);
}

void FrameTrace::input(int64_t at) {
    if (file_) std::fprintf(file_.get(), "input %" PRId64 "\n", at);
}

void FrameTrace::frame(const Frame& frame, const std::vector<CGRect>& painted) {
    if (!file_) return;
    double pixels = 0;
    for (const CGRect& rect : painted)
        pixels += rect.size.width * rect.size.height;
    std::fprintf(file_.get(), "frame %" PRId64 " %" PRId64 " %" PRId64 " %" PRId64 " %zu %.0f\n", frame.begun,
                 frame.stepped, frame.painted, frame.shown, painted.size(), pixels);
}

} // namespace tallyforge
