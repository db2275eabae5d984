#pragma once

#include "foundation/Dispatch.h"
#include "quartzcore/CADisplayLink.h"
#include "quartzcore/Presentation.h"
#include "quartzcore/RenderServer.h"
#include "quartzcore/TextLayout.h"
#include "rastergraphics/RasterGraphics.h"
#include "support/DeviceFixture.h"
#include "uikit/UIDevice.h"
#include "uikit/UILabel.h"
#include "uikit/UIViewAnimation.h"
#include "uikit/UIViewController.h"
#include "uikit/UIWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace tallyforge::test {

using Log = std::vector<std::string>;

/// A phone with a finger, a keyboard and a clock that only the test moves. Animations are on.
class ScreenFixture : public testing::Test {
  protected:
    ScreenFixture() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device_.root().c_str(), 1);
        Graphics::install(MakeRasterGraphics());
        UIScreen::mainScreen().setScale(2);
        UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
        MainQueue::main().clear();
        MainQueue::main().setClock(&clock_);
        clock_.advanceTo(NSEC_PER_SEC);
        UIViewSetAnimationsEnabled(true);
        window_ = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
        window_->makeKeyWindow();
    }
    ~ScreenFixture() override {
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

    void touch(UITouchPhase phase, const CGPoint& at) {
        window_->sendTouch({phase, at, clock_.nanoseconds()});
    }
    void press(const CGPoint& at) { touch(UITouchPhase::began, at); }
    void move(const CGPoint& to) { touch(UITouchPhase::moved, to); }
    void lift(const CGPoint& at) { touch(UITouchPhase::ended, at); }
    void tap(const CGPoint& at) {
        press(at);
        lift(at);
    }
    /// From one place to the other in this time, evenly, and lifted there; without time it rests first.
    void drag(const CGPoint& from, const CGPoint& to, double seconds) {
        constexpr int kSteps = 20;
        press(from);
        for (int i = 1; i <= kSteps; ++i) {
            clock_.advanceTo(clock_.nanoseconds() + static_cast<int64_t>(seconds * 1e9 / kSteps));
            const double share = double(i) / kSteps;
            move({from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share});
        }
        if (seconds == 0) clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC);
        lift(to);
    }
    bool press(UIKey key) { return window_->sendKey(key); }
    static CGPoint middleOf(const UIView& view) {
        return view.convertPointToView({CGRectGetMidX(view.bounds()), CGRectGetMidY(view.bounds())}, nullptr);
    }
    /// Makes the view the only one in the window.
    template <class View>
    std::shared_ptr<View> show(std::shared_ptr<View> view) {
        window_->removeAllSubviews();
        window_->addSubview(view);
        window_->layoutIfNeeded();
        return view;
    }

    /// Whether the label has to leave some of its text out.
    static bool truncated(const UILabel& label) {
        const bool wrapped = label.numberOfLines() != 1;
        return CALayOutText(label.text(), label.font().face(), label.bounds().size, wrapped)->truncated;
    }

    /// What is at a point of the screen now, without its alpha: 0xRRGGBB.
    uint32_t pixel(const CGPoint& point) {
        const CGFloat scale = UIScreen::mainScreen().scale();
        window_->layoutIfNeeded();
        const auto image = RenderServer::render(*window_->layer(), now(), scale);
        return image->pixel(static_cast<int>(point.x * scale), static_cast<int>(point.y * scale)) & 0xFFFFFFU;
    }
    std::shared_ptr<CGImage> picture() {
        window_->layoutIfNeeded();
        return RenderServer::render(*window_->layer(), now(), UIScreen::mainScreen().scale());
    }

    TestDevice device_;
    VirtualClock clock_;
    std::shared_ptr<UIWindow> window_;
};

inline constexpr CGFloat kScales[] = {1, 1.5, 2, 3};

/// Writes down which touches reach it, as "name began".
class TouchedView : public UIView {
  public:
    TouchedView(std::string name, const CGRect& frame, Log& log)
        : UIView(frame), name_(std::move(name)), log_(log) {}
    void touchesBegan(const UITouch& touch) override { note("began", touch); }
    void touchesMoved(const UITouch& touch) override { note("moved", touch); }
    void touchesEnded(const UITouch& touch) override { note("ended", touch); }
    void touchesCancelled(const UITouch& touch) override { note("cancelled", touch); }
    void fingerCameDown() override { ++fingers; }

    int fingers = 0;
    std::function<void()> whenTouched; // at every touch

  private:
    void note(const char* what, const UITouch&) {
        log_.push_back(name_ + " " + what);
        if (whenTouched) whenTouched();
    }
    std::string name_;
    Log& log_;
};

} // namespace tallyforge::test
