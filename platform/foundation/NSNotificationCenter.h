#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// Tells the observers inside this process about named events, in the order in which they began to observe.
/// Main thread only. An observer may add or remove observers, itself too, while it is told.
class NSNotificationCenter {
  public:
    /// Observes as long as it lives; destroying it ends the observation.
    class Observation {
      public:
        Observation() = default;
        Observation(Observation&&) noexcept;
        Observation& operator=(Observation&&) noexcept;
        ~Observation();

      private:
        friend class NSNotificationCenter;
        struct Entry;
        explicit Observation(std::shared_ptr<Entry> entry);
        std::shared_ptr<Entry> entry_;
    };

    static NSNotificationCenter& defaultCenter();

    [[nodiscard]] Observation addObserver(std::string_view name, std::function<void()> action);
    void postNotificationName(std::string_view name);

    /// Hears every post before the observers do; for traces. Replaces the former one; empty removes it.
    void setTrace(std::function<void(std::string_view name)> trace);

  private:
    std::vector<std::weak_ptr<Observation::Entry>> entries_;
    std::function<void(std::string_view)> trace_;
};

} // namespace tallyforge
