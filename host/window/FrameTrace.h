#pragma once

#include "coregraphics/CGGeometry.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace tallyforge {

/// Writes down when the window made frames and how long their parts took, into the file that
/// TALLYFORGE_TRACE_FRAMES names; without it nothing is written. Times are nanoseconds of the machine's
/// monotonic clock.
class FrameTrace {
  public:
    FrameTrace();

    /// A touch, key or turn of the wheel has come.
    void input(int64_t at);
    struct Frame {
        int64_t begun = 0;   ///< the app is stepped
        int64_t stepped = 0; ///< what has changed is painted
        int64_t painted = 0; ///< it is handed to the display
        int64_t shown = 0;
    };
    void frame(const Frame& frame, const std::vector<CGRect>& painted);

  private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file_;
};

} // namespace tallyforge
