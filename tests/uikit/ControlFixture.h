#pragma once

#include "foundation/Dispatch.h"
#include "quartzcore/CADisplayLink.h"
#include "quartzcore/Presentation.h"
#include "quartzcore/RenderServer.h"
#include "rastergraphics/RasterGraphics.h"
#include "uikit/UIControl.h"
#include "uikit/UIDevice.h"
#include "uikit/UIViewAnimation.h"
#include "uikit/UIWindow.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace tallyforge::test {

/// A white window of a phone on which a finger can be put, with a clock that only the test moves.
class ControlFixture : public testing::Test {
  protected:
    ControlFixture() {
        Graphics::install(MakeRasterGraphics());
        UIScreen::mainScreen().setScale(2);
        MainQueue::main().clear();
        MainQueue::main().setClock(&clock_);
        UIViewSetAnimationsEnabled(false);
        window_->setBackgroundColor(UIColor::whiteColor());
        window_->makeKeyWindow();
    }
    ~ControlFixture() override {
        window_.reset();
        MainQueue::main().clear();
        MainQueue::main().setClock(nullptr);
        UIViewSetAnimationsEnabled(true);
        UIScreen::mainScreen().setScale(2);
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

    /// Lets this much time pass: jobs run, and frames are made, 60 a second.
    void pass(double seconds) {
        const int64_t end = clock_.nanoseconds() + static_cast<int64_t>(seconds * 1e9);
        while (clock_.nanoseconds() < end) {
            MainQueue::main().runUntil(clock_, std::min(end, clock_.nanoseconds() + NSEC_PER_SEC / 60));
            CADisplayLink::stepAll(CACurrentMediaTime());
            window_->layoutIfNeeded();
            CARemoveFinishedAnimations(*window_->layer(), CACurrentMediaTime());
        }
    }

    std::shared_ptr<CGImage> picture(CGFloat scale = 2) {
        window_->layoutIfNeeded();
        return RenderServer::render(*window_->layer(), CACurrentMediaTime(), scale);
    }
    static uint32_t at(const CGImage& image, CGFloat scale, const CGPoint& point) {
        return image.pixel(static_cast<int>(point.x * scale), static_cast<int>(point.y * scale)) & 0xFFFFFFU;
    }
    /// The greatest difference of a channel.
    static int difference(uint32_t a, uint32_t b) {
        int most = 0;
        for (const unsigned shift : {0U, 8U, 16U})
            most = std::max(most, std::abs(int(a >> shift & 255U) - int(b >> shift & 255U)));
        return most;
    }
    /// Writes down the events of the control, in the order in which they come.
    static void record(UIControl& control, std::vector<std::string>& events) {
        const std::pair<uint32_t, const char*> names[] = {
            {UIControlEventTouchDown, "down"},         {UIControlEventTouchUpInside, "inside"},
            {UIControlEventTouchUpOutside, "outside"}, {UIControlEventTouchCancel, "cancel"},
            {UIControlEventValueChanged, "value"},     {UIControlEventEditingChanged, "editing"}};
        for (const auto& [event, name] : names)
            control.addTargetForControlEvents(
                [&events, name = name](UIControl&) { events.emplace_back(name); }, event);
    }

    VirtualClock clock_;
    std::shared_ptr<UIWindow> window_ = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
};

using Events = std::vector<std::string>;
inline constexpr CGFloat kScales[] = {1, 1.5, 2, 3};

} // namespace tallyforge::test
