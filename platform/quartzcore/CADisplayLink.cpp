#include "quartzcore/CADisplayLink.h"

#include <algorithm>
#include <vector>

namespace tallyforge {
namespace {

// Main thread only, as everything that moves on screen.
struct RunningLinks {
    std::vector<CADisplayLink*> links; // in the order in which they began to run
    std::function<void()> wakeUp;
};

// Never destroyed: links of other statics may outlive any object here.
RunningLinks& running() {
    static auto* const all = new RunningLinks;
    return *all;
}

} // namespace

CADisplayLink::CADisplayLink(std::function<void(double seconds)> step) : step_(std::move(step)) {}

CADisplayLink::~CADisplayLink() {
    std::erase(running().links, this);
}

void CADisplayLink::setPaused(bool paused) {
    if (paused_ == paused) return;
    paused_ = paused;
    auto& [links, wakeUp] = running();
    if (paused) {
        std::erase(links, this);
        return;
    }
    links.push_back(this);
    if (links.size() == 1 && wakeUp) wakeUp();
}

bool CADisplayLink::anyRunning() {
    return !running().links.empty();
}

void CADisplayLink::stepAll(double seconds) {
    // A step may pause, end or begin any link. Those that begin have their first step in the next frame.
    const std::vector<CADisplayLink*> atBeginning = running().links;
    for (CADisplayLink* link : atBeginning) {
        const auto& links = running().links;
        if (std::find(links.begin(), links.end(), link) == links.end()) continue;
        const auto step = link->step_; // the link may be gone before its step has returned
        if (step) step(seconds);
    }
}

void CADisplayLink::setWakeUp(std::function<void()> wakeUp) {
    running().wakeUp = std::move(wakeUp);
}

} // namespace tallyforge
