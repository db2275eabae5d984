#pragma once

#include "foundation/Clock.h"

#include <QTimer>

#include <functional>

namespace tallyforge {

/// Says when the window has something to do: a frame, at the display's pace and only when one was asked for,
/// and the main queue's jobs when they are due. In between nothing wakes up.
class FrameClock {
  public:
    /// Neither is called from within a member of this class.
    FrameClock(const Clock& clock, std::function<void()> frame, std::function<void()> jobsDue);

    void setFramesPerSecond(double frames);
    /// At once when the last one is long enough ago.
    void askForFrame();
    void forgetFrame() { frameTimer_.stop(); }
    /// Waits for the main queue's next job as it is now.
    void followMainQueue();

  private:
    const Clock& clock_;
    QTimer frameTimer_;
    QTimer jobTimer_;
    int64_t interval_ = 16'666'667;
    int64_t frameAt_ = 0; // of the last frame, as it was planned
    int64_t jobAt_ = 0;   // that the timer is set for
};

} // namespace tallyforge
