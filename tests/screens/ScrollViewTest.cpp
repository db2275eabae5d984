// Scrolling: the finger, the rubber band, momentum, and coming to rest.
#include "ScreenFixture.h"
#include "uikit/UIScrollView.h"

#include <cmath>
#include <numbers>

namespace tallyforge::test {
namespace {

class ScrollViewTest : public ScreenFixture {
  protected:
    ScrollViewTest() {
        show(scroll_);
        scroll_->setContentSize({375, 2000});
        pass(2);
    }
    ~ScrollViewTest() override { scroll_.reset(); }
    CGFloat offset() const { return scroll_->contentOffset().y; }
    /// The finger goes evenly by this speed (points a second, up is positive) for a tenth of a second.
    void fling(CGFloat speed) {
        press({100, 300});
        for (int i = 1; i <= 10; ++i) {
            clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC / 100);
            move({100, 300 - speed * i / 100});
        }
        lift({100, 300 - speed / 10});
    }
    const UIView* indicator() const {
        return scroll_->subviews().empty() ? nullptr : scroll_->subviews().back().get();
    }
    std::shared_ptr<UIScrollView> scroll_ = std::make_shared<UIScrollView>(CGRectMake(0, 67, 375, 600));
};

TEST_F(ScrollViewTest, TheEndsFollowFromContentAndInset) {
    EXPECT_EQ(scroll_->minimumOffset(), 0);
    EXPECT_EQ(scroll_->maximumOffset(), 1400);
    scroll_->setTopInset(64);
    EXPECT_EQ(scroll_->minimumOffset(), -64);
    EXPECT_EQ(offset(), -64); // it was at the top and stays there
    EXPECT_EQ(scroll_->maximumOffset(), 1400);
    scroll_->setContentSize({375, 10});
    EXPECT_EQ(scroll_->maximumOffset(), -64);
    scroll_->setTopInset(0);
    EXPECT_EQ(offset(), 0);
}

TEST_F(ScrollViewTest, TheContentFollowsTheFingerOnceItHasMovedTenPoints) {
    press({100, 500});
    move({100, 491});
    EXPECT_EQ(offset(), 0);
    EXPECT_FALSE(scroll_->dragging());
    move({100, 488}); // it begins without a jump
    EXPECT_TRUE(scroll_->dragging());
    EXPECT_EQ(offset(), 0);
    move({100, 400});
    EXPECT_EQ(offset(), 88);
    move({300, 450});
    EXPECT_EQ(offset(), 38);
    pass(0.5);
    lift({300, 450});
    EXPECT_FALSE(scroll_->dragging());
    EXPECT_FALSE(scroll_->decelerating());
    EXPECT_EQ(offset(), 38);
}

TEST_F(ScrollViewTest, RubberBandByHand) {
    // (1 - 1 / (x * 0.55 / d + 1)) * d
    EXPECT_NEAR(UIScrollView::RubberBandDistance(0, 600), 0, 1e-12);
    EXPECT_NEAR(UIScrollView::RubberBandDistance(100, 550), 50, 1e-9);   // 1 - 1 / 1.1 = 1 / 11
    EXPECT_NEAR(UIScrollView::RubberBandDistance(1000, 550), 275, 1e-9); // 1 - 1 / 2
    EXPECT_NEAR(UIScrollView::RubberBandDistance(1e12, 600), 600, 1e-3); // never further than the view
    EXPECT_EQ(UIScrollView::RubberBandDistance(100, 0), 0);
}

TEST_F(ScrollViewTest, PastTheEndsTheContentFollowsByTheRubberBand) {
    scroll_->setFrame(CGRectMake(0, 67, 375, 550));
    press({100, 100});
    move({100, 110});
    move({100, 210}); // 100 past the top
    EXPECT_NEAR(offset(), -50, 1e-9);
    move({100, 110});
    EXPECT_NEAR(offset(), 0, 1e-9);
    pass(0.5);
    lift({100, 110});
    scroll_->setContentOffset({0, scroll_->maximumOffset()});
    press({100, 600});
    move({100, 590});
    move({100, 490});
    EXPECT_NEAR(offset(), 1450 + 50, 1e-9);
    pass(0.2);
    lift({100, 490});
    pass(2);
    EXPECT_EQ(offset(), 1450);
}

TEST_F(ScrollViewTest, ADragThatBeginsBeyondAnEndDoesNotJump) {
    press({100, 100});
    move({100, 110});
    move({100, 410});
    pass(0.2);
    lift({100, 410});
    pass(0.05); // on its way back
    const CGFloat before = offset();
    ASSERT_LT(before, -20);
    press({100, 300});
    move({100, 310});
    EXPECT_NEAR(offset(), before, 1e-6);
    move({100, 310.001});
    EXPECT_NEAR(offset(), before, 0.01);
    lift({100, 310});
}

TEST_F(ScrollViewTest, MomentumLosesTwoThousandthsAMillisecond) {
    scroll_->setContentSize({375, 100000});
    fling(2000);
    const double start = now();
    const CGFloat from = offset();
    ASSERT_TRUE(scroll_->decelerating());
    // The speed of 2000 points a second times 0.998 to the milliseconds, summed in steps of a hundredth of
    // one.
    auto summed = [&](double seconds) {
        double way = 0;
        const int steps = static_cast<int>(std::lround(seconds * 1e5));
        for (int i = 0; i < steps; ++i)
            way += 2000 * std::pow(0.998, (i + 0.5) / 100) * 1e-5;
        return from + way;
    };
    for (const double seconds : {0.1, 0.25, 0.5, 1.0, 2.0}) {
        CADisplayLink::stepAll(start + seconds);
        EXPECT_NEAR(offset(), summed(seconds), 0.02) << seconds;
    }
    // 10 of 2000 points a second are left after ln(0.005) / ln(0.998) milliseconds: 2646.5.
    CADisplayLink::stepAll(start + 2.64);
    EXPECT_TRUE(scroll_->decelerating());
    CADisplayLink::stepAll(start + 2.65);
    EXPECT_FALSE(scroll_->decelerating());
}

TEST_F(ScrollViewTest, ASlowFingerLeavesNoMomentum) {
    fling(39);
    EXPECT_FALSE(scroll_->decelerating());
    fling(-3000); // towards the top, where it is already: springs
    pass(3);
    EXPECT_EQ(offset(), 0);
}

TEST_F(ScrollViewTest, MomentumThatRunsPastAnEndSpringsBackToIt) {
    scroll_->setContentOffset({0, 1300});
    fling(3000); // 300 points by the finger alone
    CGFloat farthest = 0;
    for (int i = 0; i < 180; ++i) {
        pass(1.0 / 60);
        farthest = std::max(farthest, offset());
    }
    EXPECT_GT(farthest, 1400 + 50);
    EXPECT_LT(farthest, 1400 + 600);
    EXPECT_EQ(offset(), 1400);
    EXPECT_FALSE(scroll_->decelerating());
}

TEST_F(ScrollViewTest, TheWayPastAnEndDoesNotDependOnTheFrames) {
    scroll_->setContentOffset({0, 500});
    scroll_->setContentSize({375, 1400}); // up to 800
    fling(2000);                          // by the finger to 680
    const double start = now();
    const CGFloat from = offset();
    ASSERT_NEAR(from, 680, 1e-9);
    // The end comes when 2000 (e^kt - 1) / k is the rest of the way; then a critically damped spring of 12.
    const double k = 1000 * std::log(0.998);
    const double crossing = std::log(1 + k * (800 - from) / 2000) / k;
    const double speed = 2000 * std::exp(k * crossing);
    const double t = 0.2 - crossing;
    ASSERT_GT(t, 0.05);
    CADisplayLink::stepAll(start + 0.2); // one frame only
    EXPECT_NEAR(offset(), 800 + speed * t * std::exp(-12 * t), 1e-6);
}

TEST_F(ScrollViewTest, AFingerCatchesIt) {
    scroll_->setContentSize({375, 100000});
    Log log;
    auto child = std::make_shared<TouchedView>("child", CGRectMake(0, 0, 375, 100000), log);
    scroll_->addSubview(child);
    fling(2000);
    pass(0.2);
    log.clear();
    const CGFloat caught = offset();
    press({100, 300});
    EXPECT_FALSE(scroll_->decelerating());
    pass(0.3);
    lift({100, 300});
    EXPECT_EQ(offset(), caught);
    EXPECT_TRUE(log.empty()); // it has only stopped it
    tap({100, 300});
    EXPECT_EQ(log, (Log{"child began", "child ended"}));
}

TEST_F(ScrollViewTest, AnimatedOffsetsArriveInThreeTenthsOfASecond) {
    scroll_->setContentOffsetAnimated({0, 400});
    EXPECT_EQ(offset(), 0);
    const double start = now();
    CADisplayLink::stepAll(start + 0.15);
    EXPECT_NEAR(offset(), 200, 1e-9); // half the way at half the time
    CADisplayLink::stepAll(start + 0.29);
    EXPECT_LT(offset(), 400);
    EXPECT_GT(offset(), 390);
    CADisplayLink::stepAll(start + 0.3001);
    EXPECT_EQ(offset(), 400);
    EXPECT_FALSE(scroll_->decelerating());
    UIViewSetAnimationsEnabled(false);
    scroll_->setContentOffsetAnimated({0, 100});
    EXPECT_EQ(offset(), 100);
}

TEST_F(ScrollViewTest, NotchesAddUpToOneSmoothWay) {
    scroll_->scrollSmoothlyBy(60);
    EXPECT_EQ(offset(), 0);
    pass(0.15);
    EXPECT_GT(offset(), 0);
    EXPECT_LT(offset(), 60);
    scroll_->scrollSmoothlyBy(60);
    scroll_->scrollSmoothlyBy(-20);
    pass(0.4);
    EXPECT_EQ(offset(), 100);
    scroll_->scrollSmoothlyBy(-5000);
    pass(0.4);
    EXPECT_EQ(offset(), 0);
}

TEST_F(ScrollViewTest, ComesToRestOnWholePixels) {
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        const auto pixelsAway = [&] { return std::abs(offset() * scale - std::round(offset() * scale)); };
        scroll_->setContentSize({375, 5000.4});
        scroll_->setContentOffset({0, 500.123});
        fling(777);
        pass(8);
        EXPECT_FALSE(scroll_->decelerating());
        EXPECT_LT(pixelsAway(), 1e-6) << scale;
        drag({100, 300}, {100, 250.29}, 0); // without momentum
        EXPECT_LT(pixelsAway(), 1e-6) << scale;
        scroll_->setContentOffsetAnimated({0, 777.77});
        pass(1);
        EXPECT_LT(pixelsAway(), 1e-6) << scale;
        scroll_->setContentOffset({0, scroll_->maximumOffset() - 50});
        fling(3000);
        pass(8);
        EXPECT_EQ(offset(), scroll_->maximumOffset());
        EXPECT_LT(pixelsAway(), 1e-6) << scale;
    }
}

TEST_F(ScrollViewTest, WithoutAnimationsAFlingIsAtItsEndAtOnce) {
    scroll_->setContentSize({375, 100000});
    UIViewSetAnimationsEnabled(false);
    fling(2000);
    const CGFloat there = offset();
    EXPECT_FALSE(scroll_->decelerating());
    EXPECT_FALSE(CADisplayLink::anyRunning());
    // 180 points by the finger, then until 10 points a second are left.
    EXPECT_NEAR(there, 180 + (2000 - 10) / (-1000 * std::log(0.998)), 0.25); // the nearest pixel
    scroll_->setContentOffset({0, 0});
    press({100, 100});
    move({100, 110});
    move({100, 300});
    EXPECT_LT(offset(), 0);
    lift({100, 300});
    EXPECT_EQ(offset(), 0);
}

TEST_F(ScrollViewTest, TheIndicatorShowsTheShareAndGoes) {
    ASSERT_EQ(indicator(), nullptr);
    scroll_->scrollBy(700); // half of the way
    ASSERT_NE(indicator(), nullptr);
    EXPECT_EQ(indicator()->alpha(), 1);
    // Room of 594 points; 600 of 2000 are shown: 178.2 points, half of the rest above.
    const CGRect bar = indicator()->frame();
    EXPECT_NEAR(bar.size.height, 594 * 0.3, 1e-9);
    EXPECT_NEAR(bar.origin.y, 700 + 3 + (594 - 594 * 0.3) / 2, 1e-9);
    EXPECT_NEAR(CGRectGetMaxX(bar), 372, 1e-9);
    EXPECT_EQ(scroll_->hitTest({370, CGRectGetMidY(bar)}), scroll_.get()); // it takes no touches
    EXPECT_TRUE(CADisplayLink::anyRunning());
    pass(0.7);
    EXPECT_EQ(indicator()->alpha(), 1);
    pass(0.2);
    EXPECT_EQ(indicator()->alpha(), 0);
    EXPECT_FALSE(CADisplayLink::anyRunning());
    pass(0.3);
    EXPECT_FALSE(CAIsAnimating(*window_->layer(), now()));
}

TEST_F(ScrollViewTest, NothingRunsAtRest) {
    EXPECT_FALSE(CADisplayLink::anyRunning());
    fling(1500);
    EXPECT_TRUE(CADisplayLink::anyRunning());
    pass(5);
    EXPECT_FALSE(CADisplayLink::anyRunning());
    EXPECT_FALSE(CAIsAnimating(*window_->layer(), now()));
    scroll_->setContentOffsetAnimated({0, 0});
    pass(2);
    EXPECT_FALSE(CADisplayLink::anyRunning());
    scroll_->setContentOffsetAnimated({0, 300});
    scroll_.reset();
    window_->removeAllSubviews();
    EXPECT_FALSE(CADisplayLink::anyRunning());
}

TEST_F(ScrollViewTest, ContentThatFitsOrIsEmptySpringsBack) {
    for (const CGFloat height : {0.0, 100.0, 600.0}) {
        scroll_->setContentSize({375, height});
        EXPECT_EQ(scroll_->maximumOffset(), 0);
        scroll_->scrollBy(100);
        EXPECT_EQ(offset(), 0);
        drag({100, 500}, {100, 300}, 0.2);
        EXPECT_GT(offset(), 0);
        pass(3);
        EXPECT_EQ(offset(), 0);
        EXPECT_FALSE(scroll_->decelerating());
        EXPECT_FALSE(CADisplayLink::anyRunning());
    }
}

TEST_F(ScrollViewTest, AViewThatMayNotScrollStaysPut) {
    scroll_->setScrollEnabled(false);
    drag({100, 500}, {100, 300}, 0.2);
    EXPECT_EQ(offset(), 0);
    EXPECT_FALSE(scroll_->dragging());
}

TEST_F(ScrollViewTest, ShowsARectangleByTheLeastMovement) {
    scroll_->scrollRectToVisible(CGRectMake(0, 100, 10, 50));
    EXPECT_EQ(offset(), 0);
    scroll_->scrollRectToVisible(CGRectMake(0, 900, 10, 50));
    EXPECT_EQ(offset(), 350);
    scroll_->scrollRectToVisible(CGRectMake(0, 200, 10, 50));
    EXPECT_EQ(offset(), 200);
    scroll_->scrollRectToVisible(CGRectMake(0, 500, 10, 800)); // higher than the view: its top
    EXPECT_EQ(offset(), 500);
    scroll_->scrollRectToVisible(CGRectMake(0, 1990, 10, 500));
    EXPECT_EQ(offset(), 1400);
    scroll_->setTopInset(64);
    scroll_->scrollRectToVisible(CGRectMake(0, 0, 10, 10));
    EXPECT_EQ(offset(), -64);
}

TEST_F(ScrollViewTest, EndsThatMoveTakeTheContentAlong) {
    scroll_->setContentOffset({0, 1400});
    scroll_->setContentSize({375, 1000});
    EXPECT_EQ(offset(), 400);
    scroll_->setFrame(CGRectMake(0, 0, 375, 900)); // more is shown
    EXPECT_EQ(offset(), 100);
    scroll_->setFrame(CGRectMake(0, 67, 375, 600));
    scroll_->setContentSize({375, 2000});
    scroll_->setContentOffsetAnimated({0, 1400});
    pass(0.1);
    scroll_->setContentSize({375, 1000});
    pass(1);
    EXPECT_EQ(offset(), 400);
    // While it springs to an end that moves.
    fling(2000);
    pass(0.1);
    scroll_->setContentSize({375, 900});
    pass(3);
    EXPECT_EQ(offset(), 300);
    EXPECT_FALSE(CADisplayLink::anyRunning());
}

} // namespace
} // namespace tallyforge::test
