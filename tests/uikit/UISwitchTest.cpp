#include "ControlFixture.h"

#include "uikit/UIScrollView.h"
#include "uikit/UISwitch.h"

namespace tallyforge::test {
namespace {

class UISwitchTest : public ControlFixture {
  protected:
    UISwitchTest() {
        window_->addSubview(switch_);
        record(*switch_, events_);
    }
    std::shared_ptr<UISwitch> switch_ = std::make_shared<UISwitch>(CGRectMake(100, 100, 0, 0));
    Events events_;
};

TEST_F(UISwitchTest, HasItsOwnSize) {
    EXPECT_EQ(switch_->frame(), CGRectMake(100, 100, 51, 31));
    switch_->setFrame(CGRectMake(7, 8, 300, 3));
    EXPECT_EQ(switch_->frame(), CGRectMake(7, 8, 51, 31));
    EXPECT_FALSE(switch_->isOn());
    EXPECT_FALSE(switch_->onTintColor());
    EXPECT_FALSE(switch_->tintColor());
}

TEST_F(UISwitchTest, ATapTurnsItAndTellsOnce) {
    tap({110, 115});
    EXPECT_TRUE(switch_->isOn());
    EXPECT_EQ(events_, (Events{"down", "value", "inside"}));
    tap({110, 115});
    EXPECT_FALSE(switch_->isOn());
    EXPECT_EQ(events_, (Events{"down", "value", "inside", "down", "value", "inside"}));
}

TEST_F(UISwitchTest, SettingItTellsNobody) {
    switch_->setOn(true);
    switch_->setOn(false, true);
    EXPECT_TRUE(events_.empty());
}

// The middle is at 125.5.
TEST_F(UISwitchTest, DraggingOverTheMiddleTurnsIt) {
    press({112, 115});
    move({124, 115});
    move({127, 115});
    EXPECT_FALSE(switch_->isOn()) << "not before the finger lifts";
    lift({140, 115});
    EXPECT_TRUE(switch_->isOn());
    EXPECT_EQ(events_, (Events{"down", "value", "inside"}));
}

TEST_F(UISwitchTest, DraggingThereAndBackChangesNothing) {
    press({112, 115});
    move({140, 115});
    move({110, 115});
    lift({110, 115});
    EXPECT_FALSE(switch_->isOn());
    EXPECT_EQ(events_, (Events{"down", "inside"}));
}

TEST_F(UISwitchTest, DraggingTowardsWhereItStandsChangesNothing) {
    switch_->setOn(true);
    press({135, 115});
    move({150, 115});
    lift({170, 115});
    EXPECT_TRUE(switch_->isOn());
    EXPECT_EQ(events_, (Events{"down", "inside"}));
}

TEST_F(UISwitchTest, FarAwayOrCancelledItStays) {
    press({112, 115});
    lift({112, 300});
    EXPECT_FALSE(switch_->isOn());
    press({112, 115});
    move({145, 115});
    touch(UITouchPhase::cancelled, {145, 115});
    EXPECT_FALSE(switch_->isOn());
    EXPECT_EQ(events_, (Events{"down", "outside", "down", "cancel"}));
    EXPECT_EQ(at(*picture(), 2, {140, 115}), 0xFFFFFFU) << "the thumb is back";
}

TEST_F(UISwitchTest, ScrollingMayBeginOnItButNotWhileItIsDragged) {
    auto scroll = std::make_shared<UIScrollView>(CGRectMake(0, 0, 375, 667));
    scroll->setContentSize({375, 2000});
    window_->addSubview(scroll);
    scroll->addSubview(switch_);
    press({112, 115});
    move({125, 116});
    move({126, 60});
    EXPECT_EQ(scroll->contentOffset().y, 0);
    lift({126, 60});
    EXPECT_TRUE(switch_->isOn());
    press({112, 115});
    move({112, 95});
    move({112, 55});
    lift({112, 55});
    EXPECT_TRUE(switch_->isOn());
    EXPECT_GT(scroll->contentOffset().y, 20);
}

TEST_F(UISwitchTest, Keys) {
    EXPECT_TRUE(switch_->pressKey(UIKey::space));
    EXPECT_TRUE(switch_->isOn());
    EXPECT_TRUE(switch_->pressKey(UIKey::enter));
    EXPECT_FALSE(switch_->isOn());
    EXPECT_TRUE(switch_->pressKey(UIKey::left)); // it is off already
    EXPECT_TRUE(switch_->pressKey(UIKey::right));
    EXPECT_TRUE(switch_->isOn());
    EXPECT_EQ(events_, (Events{"value", "value", "value"}));
    EXPECT_FALSE(switch_->pressKey(UIKey::down));
    switch_->setEnabled(false);
    EXPECT_FALSE(switch_->pressKey(UIKey::space));
    tap({110, 115});
    EXPECT_TRUE(switch_->isOn());
}

TEST_F(UISwitchTest, LooksTheSameAtEveryScale) {
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        switch_->setOn(false);
        auto image = picture(scale);
        // Off: a rim of 1.5 points around white, the thumb at the left.
        EXPECT_LE(difference(at(*image, scale, {135, 100.4}), 0xE5E5E5U), 1) << scale;
        EXPECT_EQ(at(*image, scale, {142, 115}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {115.5, 115.5}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {150.4, 100.4}), 0xFFFFFFU) << scale << ": outside of the round end";
        switch_->setOn(true);
        image = picture(scale);
        EXPECT_EQ(at(*image, scale, {110, 115}), 0x4CD964U) << scale;
        EXPECT_EQ(at(*image, scale, {115, 101}), 0x4CD964U) << scale;
        EXPECT_EQ(at(*image, scale, {135.5, 115.5}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {100.4, 100.4}), 0xFFFFFFU) << scale;
        // The left end is as round above as below.
        const int x = static_cast<int>(102 * scale), height = static_cast<int>(31 * scale);
        if (scale != 1.5) { // there the height is no whole number of pixels
            for (int y = 0; y < height / 2; ++y) {
                const int top = static_cast<int>(100 * scale);
                EXPECT_LE(difference(image->pixel(x, top + y), image->pixel(x, top + height - 1 - y)), 2)
                    << scale;
            }
        }
    }
}

TEST_F(UISwitchTest, TakesItsColours) {
    switch_->setOnTintColor(UIColor::colorWithRed(79 / 255.0, 219 / 255.0, 148 / 255.0, 1));
    switch_->setTintColor(UIColor::redColor());
    EXPECT_EQ(at(*picture(), 2, {135, 100.4}), 0xFF0000U);
    switch_->setOn(true);
    EXPECT_EQ(at(*picture(), 2, {110, 115}), 0x4FDB94U);
    switch_->setEnabled(false);
    EXPECT_LE(difference(at(*picture(), 2, {110, 115}), 0xA7EDCAU), 1); // half of it on white
}

TEST_F(UISwitchTest, TakesTimeToTurnWhereAnimationsAreOn) {
    UIViewSetAnimationsEnabled(true);
    tap({110, 115});
    EXPECT_TRUE(switch_->isOn());
    EXPECT_TRUE(CAIsAnimating(*window_->layer(), CACurrentMediaTime()));
    EXPECT_EQ(at(*picture(), 2, {110, 115}), 0xFFFFFFU) << "the thumb is still at the left";
    pass(0.1);
    const uint32_t between = at(*picture(), 2, {103, 115});
    EXPECT_GT(difference(between, 0xFFFFFFU), 20);
    EXPECT_GT(difference(between, 0x4CD964U), 20);
    pass(0.3);
    EXPECT_FALSE(CAIsAnimating(*window_->layer(), CACurrentMediaTime()));
    EXPECT_EQ(at(*picture(), 2, {110, 115}), 0x4CD964U);
}

} // namespace
} // namespace tallyforge::test
