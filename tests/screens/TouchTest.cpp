// The way of a finger: to the deepest view and up from it, past the recognisers first.
#include "ScreenFixture.h"
#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIScrollView.h"
#include "uikit/UISlider.h"
#include "uikit/UITextField.h"

#include <cmath>

namespace tallyforge::test {
namespace {

using Direction = UIPanGestureRecognizer::Direction;

class TouchTest : public ScreenFixture {
  protected:
    std::shared_ptr<TouchedView> view(const char* name, const CGRect& frame, UIView& in) {
        auto made = std::make_shared<TouchedView>(name, frame, log_);
        in.addSubview(made);
        return made;
    }
    std::shared_ptr<UIPanGestureRecognizer> pan(UIView& on, Direction direction = Direction::any) {
        auto made = std::make_shared<UIPanGestureRecognizer>([this] { log_.emplace_back("pan"); }, direction);
        on.addGestureRecognizer(made);
        return made;
    }
    Log takeLog() { return std::exchange(log_, {}); }
    Log log_;
};

TEST_F(TouchTest, TheDeepestViewGetsTheTouchUntilItIsLifted) {
    auto outer = view("outer", CGRectMake(0, 0, 200, 200), *window_);
    auto inner = view("inner", CGRectMake(0, 0, 50, 50), *outer);
    press({10, 10});
    move({190, 190}); // it keeps it even outside
    lift({190, 190});
    EXPECT_EQ(log_, (Log{"inner began", "inner moved", "inner ended"}));
    EXPECT_EQ(inner->fingers, 1);
    EXPECT_EQ(outer->fingers, 1);
    EXPECT_FALSE(window_->touching());
}

TEST_F(TouchTest, AViewThatHasNoUseForItHandsItUp) {
    auto outer = view("outer", CGRectMake(0, 0, 200, 200), *window_);
    auto between = std::make_shared<UIView>(CGRectMake(0, 0, 100, 100));
    auto plain = std::make_shared<UIView>(CGRectMake(0, 0, 50, 50));
    outer->addSubview(between);
    between->addSubview(plain);
    press({10, 10});
    move({11, 10});
    touch(UITouchPhase::cancelled, {11, 10});
    EXPECT_EQ(log_, (Log{"outer began", "outer moved", "outer cancelled"}));
    EXPECT_FALSE(window_->touching());
}

TEST_F(TouchTest, OneFingerAtATime) {
    auto a = view("a", CGRectMake(0, 0, 100, 100), *window_);
    auto b = view("b", CGRectMake(100, 0, 100, 100), *window_);
    press({10, 10});
    EXPECT_TRUE(window_->touching());
    press({110, 10});
    lift({10, 10});
    lift({110, 10});
    move({110, 10});
    EXPECT_EQ(takeLog(), (Log{"a began", "a ended"}));
    tap({110, 10});
    EXPECT_EQ(log_, (Log{"b began", "b ended"}));
    EXPECT_EQ(b->fingers, 1);
    EXPECT_EQ(a->fingers, 1);
}

TEST_F(TouchTest, TheLayoutIsSettledBeforeTheFingerFindsAnything) {
    class Placing : public UIView {
      public:
        using UIView::UIView;
        void layoutSubviews() override { subviews().front()->setFrame(CGRectMake(100, 100, 50, 50)); }
    };
    auto placing = std::make_shared<Placing>(window_->bounds());
    auto placed = view("placed", CGRectZero, *placing);
    window_->addSubview(placing);
    tap({120, 120});
    EXPECT_EQ(log_, (Log{"placed began", "placed ended"}));
}

TEST_F(TouchTest, ATapIsLiftedWithinTenPointsOfWhereItCameDown) {
    auto target = view("target", CGRectMake(0, 0, 200, 200), *window_);
    target->addGestureRecognizer(
        std::make_shared<UITapGestureRecognizer>([this] { log_.emplace_back("tap"); }));
    press({50, 50});
    move({56, 58}); // exactly ten away
    lift({56, 58});
    EXPECT_EQ(takeLog(), (Log{"target began", "target moved", "tap", "target cancelled"}));
    press({50, 50});
    move({60.5, 50});
    move({50, 50}); // too late
    lift({50, 50});
    EXPECT_EQ(takeLog(), (Log{"target began", "target moved", "target moved", "target ended"}));
    press({50, 50});
    lift({80, 50});
    EXPECT_EQ(takeLog(), (Log{"target began", "target ended"}));
    press({50, 50});
    touch(UITouchPhase::cancelled, {50, 50});
    EXPECT_EQ(takeLog(), (Log{"target began", "target cancelled"}));
    tap({50, 50}); // none of it hinders the next
    EXPECT_EQ(takeLog(), (Log{"target began", "tap", "target cancelled"}));
}

TEST_F(TouchTest, APanBeginsTenPointsAwayAndTakesTheTouchFromTheView) {
    auto target = view("target", CGRectMake(0, 0, 200, 200), *window_);
    auto recognizer = pan(*target);
    press({50, 50});
    move({57, 57}); // 9.9
    EXPECT_EQ(recognizer->state(), UIGestureRecognizerState::possible);
    EXPECT_EQ(takeLog(), (Log{"target began", "target moved"}));
    move({50, 60});
    EXPECT_EQ(recognizer->state(), UIGestureRecognizerState::began);
    EXPECT_EQ(takeLog(), (Log{"pan", "target cancelled"}));
    move({50, 61});
    EXPECT_EQ(recognizer->state(), UIGestureRecognizerState::changed);
    EXPECT_EQ(recognizer->translation(), (CGPoint{0, 11}));
    EXPECT_EQ(recognizer->startInWindow(), (CGPoint{50, 50}));
    lift({50, 70});
    EXPECT_EQ(recognizer->translation(), (CGPoint{0, 20}));
    EXPECT_EQ(takeLog(), (Log{"pan", "pan"}));
    EXPECT_EQ(recognizer->state(), UIGestureRecognizerState::possible);
}

TEST_F(TouchTest, ACancelledPanSaysSoAndOneThatHasNotBegunSaysNothing) {
    auto target = view("target", CGRectMake(0, 0, 200, 200), *window_);
    std::vector<UIGestureRecognizerState> states;
    std::shared_ptr<UIPanGestureRecognizer> recognizer;
    recognizer = std::make_shared<UIPanGestureRecognizer>([&] { states.push_back(recognizer->state()); });
    target->addGestureRecognizer(recognizer);
    press({50, 50});
    move({80, 50});
    touch(UITouchPhase::cancelled, {80, 50});
    EXPECT_EQ(states, (std::vector{UIGestureRecognizerState::began, UIGestureRecognizerState::cancelled}));
    states.clear();
    press({50, 50});
    move({55, 50});
    touch(UITouchPhase::cancelled, {55, 50});
    tap({50, 50});
    EXPECT_TRUE(states.empty());
}

TEST_F(TouchTest, APanOfOneDirectionLeavesTheOther) {
    auto target = view("target", CGRectMake(0, 0, 200, 200), *window_);
    auto vertical = pan(*target, Direction::vertical);
    press({50, 50});
    move({61, 50});
    EXPECT_EQ(vertical->state(), UIGestureRecognizerState::failed);
    move({61, 150}); // the first ten points have decided
    EXPECT_EQ(vertical->state(), UIGestureRecognizerState::failed);
    lift({61, 150});
    EXPECT_EQ(takeLog(), (Log{"target began", "target moved", "target moved", "target ended"}));

    vertical->setEnabled(false);
    auto horizontal = pan(*target, Direction::horizontal);
    press({50, 50});
    move({61, 55});
    EXPECT_EQ(horizontal->state(), UIGestureRecognizerState::began);
    lift({61, 55});
    EXPECT_EQ(takeLog(), (Log{"target began", "pan", "target cancelled", "pan"}));
}

TEST_F(TouchTest, TheInnerRecogniserWins) {
    auto outer = view("outer", CGRectMake(0, 0, 200, 200), *window_);
    auto inner = view("inner", CGRectMake(0, 0, 100, 100), *outer);
    auto far = pan(*outer), near = pan(*inner);
    press({50, 50});
    move({80, 50});
    EXPECT_EQ(near->state(), UIGestureRecognizerState::began);
    EXPECT_EQ(far->state(), UIGestureRecognizerState::possible);
    lift({80, 50});
    near->shouldBegin = [](const UIGestureRecognizer&) { return false; };
    press({50, 50});
    move({80, 50});
    EXPECT_EQ(near->state(), UIGestureRecognizerState::failed);
    EXPECT_EQ(far->state(), UIGestureRecognizerState::began);
    lift({80, 50});
}

TEST_F(TouchTest, VelocityIsThatOfTheLastTenthOfASecond) {
    auto target = view("target", CGRectMake(0, 0, 375, 667), *window_);
    auto recognizer = pan(*target);
    CGPoint last;
    auto other = std::make_shared<UIPanGestureRecognizer>([] {});
    recognizer->shouldBegin = [&](const UIGestureRecognizer&) { return true; };
    auto at = [&](int milliseconds, CGFloat y) {
        window_->sendTouch({UITouchPhase::moved, {100, y}, 2 * NSEC_PER_SEC + milliseconds * 1'000'000LL});
        last = recognizer->velocity();
    };
    window_->sendTouch({UITouchPhase::began, {100, 100}, 2 * NSEC_PER_SEC});
    at(100, 200); // 100 points in 0.1 s
    EXPECT_NEAR(last.y, 1000, 1e-6);
    EXPECT_NEAR(last.x, 0, 1e-9);
    at(150, 210); // since 100 ms: 10 points in 0.05 s
    EXPECT_NEAR(last.y, 200, 1e-6);
    at(400, 210); // it has rested
    EXPECT_EQ(last, (CGPoint{0, 0}));
    for (int i = 1; i <= 500; ++i) // a mouse that tells every millisecond: 0.1 points each
        at(400 + i, 210 + i * 0.1);
    EXPECT_NEAR(last.y, 100, 1e-6);
    window_->sendTouch({UITouchPhase::ended, {100, 260}, 3 * NSEC_PER_SEC});
}

TEST_F(TouchTest, AHeldSliderKeepsTheScrollViewStill) {
    auto scroll = show(std::make_shared<UIScrollView>(window_->bounds()));
    scroll->setContentSize({375, 2000});
    auto slider = std::make_shared<UISlider>(CGRectMake(20, 300, 300, 31));
    slider->setValue(0.5F);
    scroll->addSubview(slider);
    const CGPoint thumb = slider->convertPointToView(slider->thumbCentreForValue(0.5F), nullptr);
    drag(thumb, {thumb.x + 40, thumb.y + 100}, 0.2);
    EXPECT_EQ(scroll->contentOffset().y, 0);
    EXPECT_NEAR(slider->value(), 0.5 + 40.0 / (300 - 28), 1e-5);
    // Beside the thumb the finger scrolls.
    drag({thumb.x - 120, thumb.y}, {thumb.x - 120, thumb.y - 100}, 0);
    EXPECT_NEAR(scroll->contentOffset().y, 90, 1e-9); // less the ten that it took to begin
}

TEST_F(TouchTest, AViewThatGoesWhileItIsTouchedSeesItsTouchCancelledAndNobodyGetsTheRest) {
    auto outer = view("outer", CGRectMake(0, 0, 200, 200), *window_);
    auto inner = view("inner", CGRectMake(0, 0, 100, 100), *outer);
    press({10, 10});
    inner->removeFromSuperview();
    move({11, 10});
    outer->addSubview(inner);
    move({12, 10});
    lift({12, 10});
    EXPECT_EQ(takeLog(), (Log{"inner began", "inner cancelled"}));
    press({10, 10});
    inner->removeFromSuperview();
    inner = nullptr;
    move({11, 10});
    lift({11, 10});
    EXPECT_EQ(takeLog(), (Log{"inner began"}));
    tap({10, 10});
    EXPECT_EQ(takeLog(), (Log{"outer began", "outer ended"}));
}

TEST_F(TouchTest, AViewMayEndItselfAndAllAboveItInItsOwnTouch) {
    for (const UITouchPhase phase : {UITouchPhase::began, UITouchPhase::moved, UITouchPhase::ended}) {
        std::weak_ptr<UIView> gone;
        {
            auto outer = view("outer", CGRectMake(0, 0, 200, 200), *window_);
            auto inner = view("inner", CGRectMake(0, 0, 100, 100), *outer);
            gone = inner;
            inner->addSubview(std::make_shared<UIView>(CGRectMake(0, 0, 100, 100))); // hands it up
            int touches = 0;
            inner->whenTouched = [this, &touches, phase] {
                if (touches++ == static_cast<int>(phase)) window_->removeAllSubviews();
            };
            outer.reset();
            inner.reset();
            press({10, 10});
            move({11, 10});
            lift({11, 10});
        }
        EXPECT_TRUE(gone.expired());
    }
}

TEST_F(TouchTest, ARecogniserMayEndItsOwnView) {
    std::weak_ptr<UIView> gone;
    {
        auto target = view("target", CGRectMake(0, 0, 200, 200), *window_);
        gone = target;
        target->addGestureRecognizer(
            std::make_shared<UITapGestureRecognizer>([this] { window_->removeAllSubviews(); }));
        pan(*target);
    }
    tap({10, 10});
    EXPECT_TRUE(gone.expired());
}

TEST_F(TouchTest, APanWhoseViewGoesIsCancelled) {
    auto target = view("target", CGRectMake(0, 0, 200, 200), *window_);
    auto recognizer = pan(*target);
    press({10, 10});
    move({40, 10});
    takeLog();
    target->removeFromSuperview();
    move({50, 10});
    move({60, 10});
    lift({60, 10});
    EXPECT_EQ(takeLog(), (Log{"pan"})); // once, to be told of its end
}

TEST_F(TouchTest, AnOverlayTakesEverything) {
    auto below = view("below", window_->bounds(), *window_);
    auto first = std::make_shared<TouchedView>("first", CGRectZero, log_);
    auto second = std::make_shared<TouchedView>("second", CGRectZero, log_);
    window_->presentOverlay(first);
    EXPECT_EQ(first->frame(), window_->bounds());
    tap({10, 10});
    window_->presentOverlay(second);
    EXPECT_EQ(window_->frontOverlay(), second);
    tap({10, 10});
    second->setUserInteractionEnabled(false); // even then nothing below it is touched
    tap({10, 10});
    EXPECT_EQ(takeLog(), (Log{"first began", "first ended", "second began", "second ended"}));
    window_->dismissOverlay(*first);
    EXPECT_EQ(window_->frontOverlay(), second);
    window_->dismissOverlay(*second);
    window_->dismissOverlay(*second);
    EXPECT_EQ(window_->frontOverlay(), nullptr);
    tap({10, 10});
    EXPECT_EQ(takeLog(), (Log{"below began", "below ended"}));
    EXPECT_EQ(below->fingers, 1);
}

TEST_F(TouchTest, AnOverlayThatComesDuringATouchCancelsIt) {
    auto below = view("below", window_->bounds(), *window_);
    press({10, 10});
    window_->presentOverlay(std::make_shared<TouchedView>("overlay", CGRectZero, log_));
    move({20, 20});
    lift({20, 20});
    EXPECT_EQ(takeLog(), (Log{"below began", "below cancelled"}));

    window_->dismissOverlay(*window_->frontOverlay());
    auto scroll = show(std::make_shared<UIScrollView>(window_->bounds()));
    scroll->setContentSize({375, 3000});
    press({10, 500});
    move({10, 450});
    move({10, 400});
    EXPECT_TRUE(scroll->dragging());
    window_->presentOverlay(std::make_shared<UIView>());
    move({10, 300});
    EXPECT_FALSE(scroll->dragging());
    const CGFloat offset = scroll->contentOffset().y;
    move({10, 200});
    lift({10, 100});
    EXPECT_EQ(scroll->contentOffset().y, offset);
}

TEST_F(TouchTest, TheWheelTurnsWhatIsUnderThePointer) {
    auto scroll = show(std::make_shared<UIScrollView>(CGRectMake(0, 100, 375, 400)));
    scroll->setContentSize({375, 1000});
    auto child = view("child", CGRectMake(0, 0, 375, 1000), *scroll);
    window_->scrollBy({10, 200}, 30);
    EXPECT_EQ(scroll->contentOffset().y, 30);
    window_->scrollBy({10, 50}, 30); // above it
    EXPECT_EQ(scroll->contentOffset().y, 30);
    window_->scrollBy({10, 200}, 5000);
    EXPECT_EQ(scroll->contentOffset().y, 600);
    window_->scrollBy({10, 200}, -5000);
    EXPECT_EQ(scroll->contentOffset().y, 0);
    press({10, 200});
    window_->scrollBy({10, 200}, 30); // a finger is on it
    EXPECT_EQ(scroll->contentOffset().y, 0);
    lift({10, 200});
    window_->presentOverlay(std::make_shared<UIView>());
    window_->scrollBy({10, 200}, 30);
    EXPECT_EQ(scroll->contentOffset().y, 0);
}

TEST_F(TouchTest, ATouchElsewhereEndsEditing) {
    auto field = std::make_shared<UITextField>(CGRectMake(0, 0, 200, 30));
    window_->addSubview(field);
    tap({50, 15});
    EXPECT_EQ(window_->editedField(), field.get());
    tap({60, 15});
    EXPECT_EQ(window_->editedField(), field.get());
    EXPECT_TRUE(window_->insertText("abc"));
    EXPECT_EQ(field->text(), "abc");
    tap({50, 300});
    EXPECT_EQ(window_->editedField(), nullptr);
    EXPECT_FALSE(window_->insertText("def"));
    EXPECT_EQ(field->text(), "abc");
}

TEST_F(TouchTest, AnOverlayEndsTheEditingOfAFieldBelowIt) {
    auto field = std::make_shared<UITextField>(CGRectMake(0, 0, 200, 30));
    window_->addSubview(field);
    tap({50, 15});
    ASSERT_EQ(window_->editedField(), field.get());
    window_->presentOverlay(std::make_shared<UIView>());
    EXPECT_FALSE(window_->insertText("abc"));
    EXPECT_EQ(field->text(), "");
}

} // namespace
} // namespace tallyforge::test
