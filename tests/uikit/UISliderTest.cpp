// Sliders: the thumb and the finger agree about values, and what scrolls below is left alone.
#include "ControlFixture.h"

#include "uikit/UIScrollView.h"
#include "uikit/UISlider.h"

#include <cmath>
#include <limits>

namespace tallyforge::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

class UISliderTest : public ControlFixture {
  protected:
    UISliderTest() {
        slider_->setMaximumValue(255);
        window_->addSubview(slider_);
        record(*slider_, events_);
    }
    CGPoint thumb(float value) const {
        return slider_->convertPointToView(slider_->thumbCentreForValue(value), nullptr);
    }
    std::shared_ptr<UISlider> slider_ = std::make_shared<UISlider>(CGRectMake(100, 300, 170, 10));
    Events events_;
};

TEST_F(UISliderTest, BeginsAsThePlatformsDo) {
    const UISlider slider;
    EXPECT_EQ(slider.frame().size, CGSizeMake(118, 31));
    EXPECT_EQ(slider.value(), 0);
    EXPECT_EQ(slider.minimumValue(), 0);
    EXPECT_EQ(slider.maximumValue(), 1);
    EXPECT_TRUE(slider.continuous());
}

TEST_F(UISliderTest, KeepsEveryValueThatItIsGiven) {
    for (int v = 0; v <= 255; ++v) {
        slider_->setValue(static_cast<float>(v));
        EXPECT_EQ(slider_->value(), static_cast<float>(v));
    }
    slider_->setValue(0.1F);
    EXPECT_EQ(slider_->value(), 0.1F);
}

// The thumb is 28 wide: its centre goes from 14 to 156 of 170 points.
TEST_F(UISliderTest, ThumbGoesFromEndToEnd) {
    EXPECT_EQ(slider_->thumbCentreForValue(0), CGPointMake(14, 5));
    EXPECT_EQ(slider_->thumbCentreForValue(255), CGPointMake(156, 5));
    EXPECT_EQ(slider_->thumbCentreForValue(127.5F), CGPointMake(85, 5));
    EXPECT_EQ(slider_->thumbCentreForValue(1000), CGPointMake(156, 5));
    EXPECT_EQ(slider_->thumbCentreForValue(kNaN), CGPointMake(14, 5));
}

TEST_F(UISliderTest, DraggingToAValuesPlaceGivesTheValue) {
    for (int v = 0; v <= 255; ++v) {
        slider_->setValue(static_cast<float>((v + 128) % 256));
        press(thumb(slider_->value()));
        move(thumb(static_cast<float>(v)));
        lift(thumb(static_cast<float>(v)));
        EXPECT_NEAR(slider_->value(), v, 1e-4);
        EXPECT_EQ(static_cast<int>(slider_->value()), v); // whoever cuts off decimals gets the same number
    }
}

TEST_F(UISliderTest, KeepsTheFingersGrip) {
    slider_->setValue(100);
    CGPoint finger = thumb(100);
    finger.x += 15;
    press(finger);
    EXPECT_EQ(slider_->value(), 100);
    move({finger.x + 71, finger.y - 60}); // half of the way, and upwards does not matter
    EXPECT_NEAR(slider_->value(), 227.5, 1e-4);
    move({finger.x + 400, finger.y});
    EXPECT_EQ(slider_->value(), 255);
    move({finger.x - 400, finger.y});
    EXPECT_EQ(slider_->value(), 0);
    lift({finger.x, finger.y});
    EXPECT_NEAR(slider_->value(), 100, 1e-4);
}

TEST_F(UISliderTest, OnlyTheThumbCanBeGrabbed) {
    slider_->setValue(0);
    CGPoint beside = thumb(0);
    beside.x += 23;
    press(beside);
    move({beside.x + 50, beside.y});
    lift({beside.x + 50, beside.y});
    EXPECT_EQ(slider_->value(), 0);
    EXPECT_TRUE(events_.empty());
    beside.x -= 2;
    press(beside);
    EXPECT_TRUE(slider_->tracking());
}

// The control is 10 points high, from 300 to 310; a finger needs 44.
TEST_F(UISliderTest, IsHighEnoughForAFinger) {
    slider_->setValue(0);
    for (const CGFloat y : {283.5, 326.5}) {
        press({114, y});
        EXPECT_TRUE(slider_->tracking()) << y;
        lift({114, y});
    }
    for (const CGFloat y : {282.5, 327.5}) {
        press({114, y});
        EXPECT_FALSE(slider_->tracking()) << y;
        lift({114, y});
    }
    press({93, 305}); // left of the control, still at the thumb
    EXPECT_TRUE(slider_->tracking());
}

TEST_F(UISliderTest, TellsOfEveryChangeAndOfTheEnd) {
    press(thumb(0));
    move(thumb(100));
    move(thumb(100));
    move(thumb(200));
    lift(thumb(200));
    EXPECT_EQ(events_, (Events{"down", "value", "value", "inside"}));
}

TEST_F(UISliderTest, LiftingElsewhereCountsToo) {
    press(thumb(0));
    lift({114, 600});
    EXPECT_EQ(events_, (Events{"down", "outside"}));
    press(thumb(0));
    lift(thumb(50)); // without a movement in between
    EXPECT_EQ(events_, (Events{"down", "outside", "down", "value", "inside"}));
}

TEST_F(UISliderTest, NotContinuousItTellsAtTheEndOnly) {
    slider_->setContinuous(false);
    press(thumb(0));
    move(thumb(100));
    EXPECT_NEAR(slider_->value(), 100, 1e-4);
    EXPECT_EQ(events_, (Events{"down"}));
    lift(thumb(100));
    EXPECT_EQ(events_, (Events{"down", "value", "inside"}));
    events_.clear();
    tap(thumb(100));
    EXPECT_EQ(events_, (Events{"down", "inside"}));
    press(thumb(100));
    move(thumb(200));
    touch(UITouchPhase::cancelled, thumb(200));
    EXPECT_NEAR(slider_->value(), 100, 1e-4); // nobody has heard of 200
}

TEST_F(UISliderTest, HoldsTheThumbAgainstScrolling) {
    auto scroll = std::make_shared<UIScrollView>(CGRectMake(0, 0, 375, 667));
    scroll->setContentSize({375, 2000});
    window_->addSubview(scroll);
    scroll->addSubview(slider_);
    slider_->setValue(0);
    press({114, 305});
    move({118, 255});
    move({120, 205});
    EXPECT_EQ(scroll->contentOffset().y, 0);
    EXPECT_TRUE(slider_->tracking());
    lift({120, 205});

    press({220, 305}); // on the slider, beside the thumb
    move({220, 285});
    move({220, 205});
    lift({220, 205});
    EXPECT_GT(scroll->contentOffset().y, 50);
}

TEST_F(UISliderTest, HoldsToItsBounds) {
    slider_->setValue(300);
    EXPECT_EQ(slider_->value(), 255);
    slider_->setValue(-1);
    EXPECT_EQ(slider_->value(), 0);
    slider_->setValue(kInfinity);
    EXPECT_EQ(slider_->value(), 255);
    slider_->setValue(-kInfinity);
    EXPECT_EQ(slider_->value(), 0);
    slider_->setValue(7);
    slider_->setValue(kNaN);
    EXPECT_EQ(slider_->value(), 0);
    slider_->setValue(200);
    slider_->setMaximumValue(100);
    EXPECT_EQ(slider_->value(), 100);
    slider_->setMinimumValue(50);
    slider_->setValue(0);
    EXPECT_EQ(slider_->value(), 50);
}

TEST_F(UISliderTest, BoundsThatPassEachOtherGoTogether) {
    slider_->setMinimumValue(300);
    EXPECT_EQ(slider_->maximumValue(), 300);
    EXPECT_EQ(slider_->value(), 300);
    slider_->setMaximumValue(-5);
    EXPECT_EQ(slider_->minimumValue(), -5);
    EXPECT_EQ(slider_->value(), -5);
    EXPECT_EQ(slider_->thumbCentreForValue(-5).x, 14); // no range: at the left
    press(thumb(-5));
    move({300, 305});
    lift({300, 305});
    EXPECT_EQ(slider_->value(), -5);
    slider_->setMinimumValue(kNaN);
    slider_->setMaximumValue(kInfinity);
    EXPECT_EQ(slider_->minimumValue(), -5);
    EXPECT_EQ(slider_->maximumValue(), -5);
}

TEST_F(UISliderTest, TheWidestRangeDoesNotOverflow) {
    constexpr float kMost = std::numeric_limits<float>::max();
    slider_->setMinimumValue(-kMost);
    slider_->setMaximumValue(kMost);
    EXPECT_EQ(slider_->thumbCentreForValue(0).x, 85);
    slider_->setValue(0);
    press(thumb(0));
    move(thumb(kMost));
    EXPECT_EQ(slider_->value(), kMost);
    lift(thumb(-kMost));
    EXPECT_EQ(slider_->value(), -kMost);
    EXPECT_TRUE(slider_->pressKey(UIKey::end));
    EXPECT_EQ(slider_->value(), kMost);
    EXPECT_TRUE(slider_->pressKey(UIKey::left));
    EXPECT_TRUE(std::isfinite(slider_->value()));
    EXPECT_LT(slider_->value(), kMost);
}

TEST_F(UISliderTest, NarrowerThanItsThumbItStaysInTheMiddle) {
    slider_->setFrame(CGRectMake(100, 300, 20, 10));
    EXPECT_EQ(slider_->thumbCentreForValue(200), CGPointMake(10, 5));
    slider_->setValue(200);
    press({110, 305});
    move({200, 305});
    lift({200, 305});
    EXPECT_EQ(slider_->value(), 200);
}

TEST_F(UISliderTest, KeysMoveByAHundredthOrByTheStep) {
    slider_->setMaximumValue(200);
    EXPECT_TRUE(slider_->pressKey(UIKey::right));
    EXPECT_EQ(slider_->value(), 2);
    EXPECT_TRUE(slider_->pressKey(UIKey::right));
    EXPECT_EQ(slider_->value(), 4);
    slider_->setKeyStep(3);
    EXPECT_TRUE(slider_->pressKey(UIKey::left));
    EXPECT_EQ(slider_->value(), 1);
    EXPECT_TRUE(slider_->pressKey(UIKey::left));
    EXPECT_EQ(slider_->value(), 0);
    EXPECT_FALSE(slider_->pressKey(UIKey::up)); // on to another row
    EXPECT_FALSE(slider_->pressKey(UIKey::down));
    EXPECT_EQ(events_, (Events{"value", "inside", "value", "inside", "value", "inside", "value", "inside"}));
    events_.clear();
    EXPECT_TRUE(slider_->pressKey(UIKey::home)); // it is there already
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(slider_->pressKey(UIKey::end));
    EXPECT_EQ(slider_->value(), 200);
    EXPECT_FALSE(slider_->pressKey(UIKey::enter));
    slider_->setEnabled(false);
    EXPECT_FALSE(slider_->pressKey(UIKey::home));
    EXPECT_EQ(slider_->value(), 200);
}

TEST_F(UISliderTest, DisabledItCannotBeDragged) {
    slider_->setEnabled(false);
    press(thumb(0));
    move(thumb(100));
    lift(thumb(100));
    EXPECT_EQ(slider_->value(), 0);
    EXPECT_TRUE(events_.empty());
}

TEST_F(UISliderTest, ATargetMayRemoveItWhileItIsDragged) {
    std::weak_ptr<UISlider> watched = slider_;
    slider_->addTargetForControlEvents([](UIControl& sender) { sender.removeFromSuperview(); },
                                       UIControlEventValueChanged);
    const CGPoint from = thumb(0), to = thumb(100);
    slider_.reset();
    press(from);
    move(to);
    EXPECT_TRUE(watched.expired());
    lift(to);
}

TEST_F(UISliderTest, LooksTheSameAtEveryScale) {
    slider_->removeFromSuperview();
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        auto slider = std::make_shared<UISlider>(CGRectMake(40, 100, 170, 30));
        slider->setValue(0.5F);
        window_->addSubview(slider);
        const auto image = picture(scale);
        ASSERT_TRUE(image);
        // The track is 2 points high around 115, from 42 to 208; the thumb's middle is at 125.
        EXPECT_EQ(at(*image, scale, {60, 115}), 0x007AFFU) << scale;
        EXPECT_EQ(at(*image, scale, {190, 115}), 0xB7B8B7U) << scale;
        EXPECT_EQ(at(*image, scale, {60, 112.5}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {60, 117.5}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {41, 115}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {125, 115}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {113, 115}), 0xFFFFFFU) << scale << ": the thumb covers the track";
        // Full rows of the track only: none that is half as dark.
        int rows = 0;
        for (int y = 0; y < image->height(); ++y)
            rows += (image->pixel(static_cast<int>(60 * scale), y) & 0xFFFFFFU) != 0xFFFFFFU;
        EXPECT_EQ(rows, static_cast<int>(2 * scale));
        // A shadow below the thumb, none far away.
        EXPECT_LT(at(*image, scale, {125, 130.5}), 0xF8F8F8U) << scale;
        EXPECT_EQ(at(*image, scale, {125, 145}), 0xFFFFFFU) << scale;
        // Left and right of the thumb are mirror images, but for the tracks' rows.
        const int left = static_cast<int>(105 * scale), y = static_cast<int>(122 * scale);
        const int mirrored = static_cast<int>(250 * scale) - 1;
        for (int x = left; x < mirrored - x; ++x)
            EXPECT_LE(difference(image->pixel(x, y), image->pixel(mirrored - x, y)), 2) << scale << " " << x;
        slider->removeFromSuperview();
    }
}

TEST_F(UISliderTest, TakesItsColours) {
    slider_->setMinimumTrackTintColor(UIColor::redColor());
    slider_->setThumbTintColor(UIColor::colorWithRed(0, 1, 0, 1));
    slider_->setValue(255);
    const auto image = picture();
    EXPECT_EQ(at(*image, 2, {150, 305}), 0xFF0000U);
    EXPECT_EQ(at(*image, 2, {256, 305}), 0x00FF00U);
    slider_->setEnabled(false);
    EXPECT_LE(difference(at(*picture(), 2, {150, 305}), 0xFF8080U), 1);
    EXPECT_EQ(at(*picture(), 2, {256, 305}), 0x00FF00U);
}

} // namespace
} // namespace tallyforge::test
