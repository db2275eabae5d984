#include "foundation/NSNotificationCenter.h"

#include <utility>

namespace tallyforge {

struct NSNotificationCenter::Observation::Entry {
    std::string name;
    std::function<void()> action;
    // A post that is under way may keep the entry alive beyond its observation.
    bool observing = true;
};

NSNotificationCenter::Observation::Observation(std::shared_ptr<Entry> entry) : entry_(std::move(entry)) {}

NSNotificationCenter::Observation::Observation(Observation&&) noexcept = default;

NSNotificationCenter::Observation&
NSNotificationCenter::Observation::operator=(Observation&& other) noexcept {
    if (this == &other) return *this;
    if (entry_) entry_->observing = false;
    entry_ = std::move(other.entry_);
    return *this;
}

NSNotificationCenter::Observation::~Observation() {
    if (entry_) entry_->observing = false;
}

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter center;
    return center;
}

NSNotificationCenter::Observation NSNotificationCenter::addObserver(std::string_view name,
                                                                    std::function<void()> action) {
    std::erase_if(entries_, [](const auto& entry) { return entry.expired(); });
    auto entry = std::make_shared<Observation::Entry>();
    entry->name = name;
    entry->action = std::move(action);
    entries_.push_back(entry);
    return Observation(std::move(entry));
}

void NSNotificationCenter::postNotificationName(std::string_view name) {
    const std::string posted(name); // the caller's text may belong to an observer that goes away
    if (trace_) {
        const auto trace = trace_;
        trace(posted);
    }
    // Whoever begins to observe during this post hears only the next one.
    const auto told = entries_;
    for (const auto& weak : told) {
        const auto entry = weak.lock();
        if (entry && entry->observing && entry->name == posted && entry->action) entry->action();
    }
}

void NSNotificationCenter::setTrace(std::function<void(std::string_view)> trace) {
    trace_ = std::move(trace);
}

} // namespace tallyforge
