#pragma once

#include "cli/Command.h"
#include "coregraphics/CGImage.h"
#include "foundation/Clock.h"
#include "foundation/Result.h"
#include "settings_app/SettingsApp.h"

#include <memory>
#include <optional>

namespace tallyforge {

/// The Settings app on a virtual clock that begins at 0 and moves only when it is told to. Screens come and
/// go at once.
class SettingsStage {
  public:
    /// The screen's size is the idiom's unless one is given.
    SettingsStage(const std::optional<CGSize>& screen, double scale);
    ~SettingsStage();

    SettingsApp& app() const { return *app_; }
    /// Lets the clock run, frame by frame where something moves.
    void wait(double seconds);
    double time() const;
    int64_t nanoseconds() const { return clock_.nanoseconds(); }
    Result<std::shared_ptr<CGImage>> picture() const;

  private:
    VirtualClock clock_;
    double scale_;
    std::unique_ptr<SettingsApp> app_;
};

} // namespace tallyforge
