#pragma once

#include <functional>
#include <string>

namespace tallyforge {

/// The running program as others see it: what it can ask the system to open.
class UIApplication {
  public:
    static UIApplication& sharedApplication();

    /// Whether some program on this machine takes the URL.
    bool canOpenURL(const std::string& url) const;
    /// False when nobody takes it.
    bool openURL(const std::string& url);

    /// How the host does it; without an opener nothing can be opened.
    struct Opener {
        std::function<bool(const std::string&)> canOpen;
        std::function<bool(const std::string&)> open;
    };
    void setOpener(Opener opener) { opener_ = std::move(opener); }
    /// Hears of every URL that is to be opened, before it is; for traces. Empty removes it.
    void setTrace(std::function<void(const std::string&)> trace) { trace_ = std::move(trace); }

  private:
    Opener opener_;
    std::function<void(const std::string&)> trace_;
};

} // namespace tallyforge
