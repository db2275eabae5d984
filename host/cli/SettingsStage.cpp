#include "cli/SettingsStage.h"

#include "cli/StagePicture.h"
#include "foundation/Dispatch.h"
#include "quartzcore/CADisplayLink.h"
#include "uikit/UIDevice.h"
#include "uikit/UIViewAnimation.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr int64_t kFrame = NSEC_PER_SEC / 60;

} // namespace

SettingsStage::SettingsStage(const std::optional<CGSize>& screen, double scale) : scale_(scale) {
    MainQueue::main().setClock(&clock_);
    UIScreen::mainScreen().setScale(scale);
    UIScreen::mainScreen().setSize(screen);
    UIViewSetAnimationsEnabled(false);
    app_ = std::make_unique<SettingsApp>();
}

SettingsStage::~SettingsStage() {
    app_.reset();
    MainQueue::main().clear();
    MainQueue::main().setClock(nullptr);
    UIScreen::mainScreen().setSize(std::nullopt);
    UIViewSetAnimationsEnabled(true);
}

void SettingsStage::wait(double seconds) {
    const int64_t end = clock_.nanoseconds() + std::llround(seconds * static_cast<double>(NSEC_PER_SEC));
    app_->step();
    while (clock_.nanoseconds() < end) {
        int64_t next = end;
        if (CADisplayLink::anyRunning())
            next = clock_.nanoseconds() + kFrame;
        else if (auto job = MainQueue::main().nextDeadline())
            next = *job; // from then on something may move
        MainQueue::main().runUntil(clock_, std::min(end, next));
        app_->step();
    }
}

double SettingsStage::time() const {
    return static_cast<double>(clock_.nanoseconds()) / NSEC_PER_SEC;
}

Result<std::shared_ptr<CGImage>> SettingsStage::picture() const {
    app_->step();
    return StagePicture(app_->layer(), app_->size(), time(), scale_);
}

} // namespace tallyforge
