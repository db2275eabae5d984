#pragma once

#include <functional>

namespace tallyforge {

/// The standard user defaults; only its synchronise is called. It writes whatever domains of this process
/// still have unsynchronised keys.
class NSUserDefaults {
  public:
    static NSUserDefaults& standardUserDefaults();
    bool synchronize();
    /// Hears of every call; for traces. Empty removes it.
    void setTrace(std::function<void()> trace);

  private:
    std::function<void()> trace_;
};

} // namespace tallyforge
