#pragma once

#include "quartzcore/TextLayout.h"
#include "support/DeviceFixture.h"
#include "support/TouchFixture.h"
#include "uikit/UILabel.h"
#include "uikit/UIViewController.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tallyforge::test {

using Log = std::vector<std::string>;

/// With a device behind the window, and a keyboard. Animations are on.
class ScreenFixture : public TouchFixture {
  protected:
    ScreenFixture() : TouchFixture(true) {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device_.root().c_str(), 1);
        clock_.advanceTo(NSEC_PER_SEC);
    }

    using TouchFixture::press;
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
        const auto image = picture();
        return image->pixel(static_cast<int>(point.x * scale), static_cast<int>(point.y * scale)) & 0xFFFFFFU;
    }
    std::shared_ptr<CGImage> picture() { return TouchFixture::picture(UIScreen::mainScreen().scale()); }

    TestDevice device_;
};

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
