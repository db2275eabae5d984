#pragma once

#include "foundation/Dispatch.h"
#include "quartzcore/CADisplayLink.h"
#include "quartzcore/Presentation.h"
#include "quartzcore/RenderServer.h"
#include "rastergraphics/RasterGraphics.h"
#include "uikit/UIDevice.h"
#include "uikit/UIViewAnimation.h"
#include "uikit/UIWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace tallyforge::test {

inline constexpr CGFloat kScales[] = {1, 1.5, 2, 3};

/// A phone's window with a finger and a clock that only the test moves.
class TouchFixture : public testing::Test {
  protected:
    explicit TouchFixture(bool animations) {
        Graphics::install(MakeRasterGraphics());
        UIScreen::mainScreen().setScale(2);
        UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
        MainQueue::main().clear();
        MainQueue::main().setClock(&clock_);
        UIViewSetAnimationsEnabled(animations);
        window_->makeKeyWindow();
    }
    ~TouchFixture() override {
        window_.reset();
        MainQueue::main().clear();
        MainQueue::main().setClock(nullptr);
        UIScreen::mainScreen().setScale(2);
        UIViewSetAnimationsEnabled(true);
    }

    double now() const { return static_cast<double>(clock_.nanoseconds()) / 1e9; }
    /// Lets this much time pass: jobs run, and frames are made, 60 a second.
    void pass(double seconds) {
        const int64_t end = clock_.nanoseconds() + static_cast<int64_t>(seconds * 1e9);
        while (clock_.nanoseconds() < end) {
            MainQueue::main().runUntil(clock_, std::min(end, clock_.nanoseconds() + NSEC_PER_SEC / 60));
            CADisplayLink::stepAll(now());
            window_->layoutIfNeeded();
            CARemoveFinishedAnimations(*window_->layer(), now());
        }
    }

    void touch(UITouchPhase phase, const CGPoint& inWindow) {
        window_->sendTouch({phase, inWindow, clock_.nanoseconds()});
    }
    void press(const CGPoint& at) { touch(UITouchPhase::began, at); }
    void move(const CGPoint& to) { touch(UITouchPhase::moved, to); }
    void lift(const CGPoint& at) { touch(UITouchPhase::ended, at); }
    void tap(const CGPoint& at) {
        press(at);
        lift(at);
    }
    static CGPoint middleOf(const UIView& view) {
        return view.convertPointToView({CGRectGetMidX(view.bounds()), CGRectGetMidY(view.bounds())}, nullptr);
    }
    std::shared_ptr<CGImage> picture(CGFloat scale) {
        window_->layoutIfNeeded();
        return RenderServer::render(*window_->layer(), now(), scale);
    }

    VirtualClock clock_;
    std::shared_ptr<UIWindow> window_ = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
};

} // namespace tallyforge::test
