// What all controls share: which events come, in which order, and that targets may do what they like.
#include "ControlFixture.h"

namespace tallyforge::test {
namespace {

class UIControlTest : public ControlFixture {
  protected:
    UIControlTest() {
        window_->addSubview(control_);
        record(*control_, events_);
    }
    std::shared_ptr<UIControl> control_ = std::make_shared<UIControl>(CGRectMake(100, 100, 40, 40));
    Events events_;
};

TEST_F(UIControlTest, TellsOfDownAndUp) {
    press({120, 120});
    EXPECT_EQ(events_, (Events{"down"}));
    EXPECT_TRUE(control_->tracking());
    EXPECT_TRUE(control_->highlighted());
    lift({120, 120});
    EXPECT_EQ(events_, (Events{"down", "inside"}));
    EXPECT_FALSE(control_->tracking());
    EXPECT_FALSE(control_->highlighted());
}

TEST_F(UIControlTest, AFingerMayStraySeventyPoints) {
    press({120, 120});
    move({209, 120}); // the right edge is at 140
    EXPECT_TRUE(control_->highlighted());
    move({211, 120});
    EXPECT_FALSE(control_->highlighted());
    lift({209, 31});
    EXPECT_EQ(events_, (Events{"down", "inside"}));
    press({120, 120});
    lift({120, 29});
    EXPECT_EQ(events_, (Events{"down", "inside", "down", "outside"}));
}

TEST_F(UIControlTest, ACancelledTouchIsNoClick) {
    press({120, 120});
    touch(UITouchPhase::cancelled, {120, 120});
    lift({120, 120});
    EXPECT_EQ(events_, (Events{"down", "cancel"}));
    EXPECT_FALSE(control_->highlighted());
}

TEST_F(UIControlTest, DisabledItTakesNothing) {
    control_->setEnabled(false);
    tap({120, 120});
    EXPECT_TRUE(events_.empty());
    EXPECT_FALSE(control_->canBecomeFocused());
}

TEST_F(UIControlTest, DisablingUnderTheFingerCancels) {
    press({120, 120});
    control_->setEnabled(false);
    lift({120, 120});
    EXPECT_EQ(events_, (Events{"down", "cancel"}));
}

TEST_F(UIControlTest, OneActionMayServeSeveralEvents) {
    int calls = 0;
    control_->addTargetForControlEvents([&](UIControl&) { ++calls; },
                                        UIControlEventTouchUpInside | UIControlEventTouchUpOutside);
    tap({120, 120});
    press({120, 120});
    lift({300, 300});
    EXPECT_EQ(calls, 2);
    control_->removeAllTargets();
    tap({120, 120});
    EXPECT_EQ(calls, 2);
}

TEST_F(UIControlTest, ATargetMayEndTheControl) {
    std::weak_ptr<UIControl> watched = control_;
    control_->addTargetForControlEvents([](UIControl& sender) { sender.removeFromSuperview(); },
                                        UIControlEventTouchUpInside);
    control_.reset();
    tap({120, 120});
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(events_, (Events{"down", "inside"}));
}

TEST_F(UIControlTest, TargetsTakenAwayMeanwhileAreNotCalled) {
    Events calls;
    control_->removeAllTargets();
    control_->addTargetForControlEvents(
        [&](UIControl& sender) {
            calls.emplace_back("first");
            sender.removeAllTargets();
            sender.addTargetForControlEvents([&](UIControl&) { calls.emplace_back("later"); },
                                             UIControlEventTouchDown);
        },
        UIControlEventTouchDown);
    control_->addTargetForControlEvents([&](UIControl&) { calls.emplace_back("second"); },
                                        UIControlEventTouchDown);
    press({120, 120});
    EXPECT_EQ(calls, (Events{"first"}));
}

TEST_F(UIControlTest, NoActionIsNoTarget) {
    control_->addTargetForControlEvents(nullptr, UIControlEventTouchDown);
    press({120, 120});
    EXPECT_EQ(events_, (Events{"down"}));
}

} // namespace
} // namespace tallyforge::test
