#pragma once

#include <functional>
#include <memory>

namespace tallyforge {

/// Work that is done once a frame as long as it lives and is not paused: scrolling, wheels. The host steps
/// all of them before it paints; while none runs it need not wake up.
class CADisplayLink {
  public:
    /// Called with the main queue's time in seconds.
    explicit CADisplayLink(std::function<void(double seconds)> step);
    ~CADisplayLink();
    CADisplayLink(const CADisplayLink&) = delete;
    CADisplayLink& operator=(const CADisplayLink&) = delete;

    bool paused() const { return paused_; }
    void setPaused(bool paused);

    static bool anyRunning();
    static void stepAll(double seconds);
    /// Called when the first link starts to run, so that the host can begin to make frames; empty removes it.
    static void setWakeUp(std::function<void()> wakeUp);

  private:
    std::function<void(double)> step_;
    bool paused_ = true;
};

} // namespace tallyforge
