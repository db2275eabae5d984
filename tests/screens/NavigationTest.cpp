// Screens that slide in and out, and what they hear of it.
#include "ScreenFixture.h"
#include "uikit/UIControl.h"
#include "uikit/UILabel.h"
#include "uikit/UINavigationController.h"

#include <cmath>

namespace tallyforge::test {
namespace {

class Screen final : public UIViewController {
  public:
    Screen(std::string name, Log& log) : name_(std::move(name)), log_(log) { setTitle(name_); }
    void viewDidLoad() override { note("loaded"); }
    void viewWillAppear(bool) override { note("will appear", whenWillAppear); }
    void viewDidAppear(bool) override { note("appeared", whenAppeared); }
    void viewWillDisappear(bool) override { note("will go", whenWillGo); }
    void viewDidDisappear(bool) override { note("gone"); }
    std::function<void()> whenWillAppear, whenAppeared, whenWillGo;

  private:
    void note(const char* what, const std::function<void()>& then = {}) {
        log_.push_back(name_ + " " + what);
        if (then) then();
    }
    std::string name_;
    Log& log_;
};

constexpr CGFloat kMiddle = 187.5;

class NavigationTest : public ScreenFixture {
  protected:
    NavigationTest() {
        window_->setRootViewController(navigation_);
        window_->layoutIfNeeded();
        log_.clear();
    }
    ~NavigationTest() override { window_->setRootViewController(nullptr); }
    std::shared_ptr<Screen> screen(const std::string& name) { return std::make_shared<Screen>(name, log_); }
    Log takeLog() { return std::exchange(log_, {}); }
    static CGFloat shownX(UIViewController& controller, double seconds) {
        return CAPresentationAt(*controller.view()->layer(), seconds).position.x;
    }
    size_t depth() const { return navigation_->viewControllers().size(); }
    std::string top() const { return navigation_->topViewController()->title(); }
    bool onScreen(UIViewController& controller) const { return controller.view()->window() == window_.get(); }
    /// The bar's labels by their texts.
    UILabel* label(const std::string& text, UIView* in = nullptr) const {
        if (!in) in = window_.get();
        if (auto* found = dynamic_cast<UILabel*>(in); found && found->text() == text) return found;
        for (const auto& view : in->subviews()) {
            if (auto* found = label(text, view.get())) return found;
        }
        return nullptr;
    }
    static CGRect placeOf(const UILabel& label) { return label.convertRectToView(label.bounds(), nullptr); }

    Log log_;
    std::shared_ptr<Screen> root_ = screen("Root");
    std::shared_ptr<UINavigationController> navigation_ = std::make_shared<UINavigationController>(root_);
};

TEST_F(NavigationTest, TheFirstScreenAppearsOnceWithTheWindow) {
    Log log;
    auto first = std::make_shared<Screen>("First", log);
    auto navigation = std::make_shared<UINavigationController>(first);
    EXPECT_TRUE(log.empty());
    auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
    window->setRootViewController(navigation);
    EXPECT_EQ(log, (Log{"First loaded", "First will appear", "First appeared"}));
    EXPECT_EQ(first->view()->frame(), CGRectMake(0, 64, 375, 603));
    EXPECT_EQ(first->navigationController(), navigation.get());
    log.clear();
    window->setRootViewController(nullptr);
    EXPECT_EQ(log, (Log{"First will go", "First gone"}));
    EXPECT_EQ(first->view()->window(), nullptr);
}

TEST_F(NavigationTest, ScreensThatArePushedBeforeTheWindowShowsThemHearNothingTwice) {
    Log log;
    auto first = std::make_shared<Screen>("First", log), second = std::make_shared<Screen>("Second", log);
    auto navigation = std::make_shared<UINavigationController>(first);
    navigation->pushViewController(second, true);
    auto window = std::make_shared<UIWindow>(CGRectMake(0, 0, 375, 667));
    window->setRootViewController(navigation);
    EXPECT_EQ(log, (Log{"Second loaded", "Second will appear", "Second appeared"}));
    log.clear();
    EXPECT_TRUE(navigation->popViewController(false));
    EXPECT_EQ(log,
              (Log{"First loaded", "Second will go", "First will appear", "Second gone", "First appeared"}));
    window->setRootViewController(nullptr);
}

TEST_F(NavigationTest, APushSlidesInAThirdOfASecondOverTheScreenBelow) {
    auto next = screen("Next");
    const double start = now();
    navigation_->pushViewController(next, true);
    EXPECT_TRUE(navigation_->transitioning());
    EXPECT_EQ(takeLog(), (Log{"Next loaded", "Root will go", "Next will appear"}));
    // Ease in, ease out: half of the way at half the time; at a quarter 0.129162 of it.
    EXPECT_NEAR(shownX(*next, start), kMiddle + 375, 1e-6);
    EXPECT_NEAR(shownX(*root_, start), kMiddle, 1e-6);
    EXPECT_NEAR(shownX(*next, start + 0.35 / 4), kMiddle + 375 * (1 - 0.129162), 0.01);
    EXPECT_NEAR(shownX(*root_, start + 0.35 / 4), kMiddle - 125 * 0.129162, 0.01);
    EXPECT_NEAR(shownX(*next, start + 0.175), kMiddle + 187.5, 0.01);
    EXPECT_NEAR(shownX(*root_, start + 0.175), kMiddle - 62.5, 0.01);
    pass(0.34);
    EXPECT_TRUE(navigation_->transitioning());
    EXPECT_TRUE(onScreen(*root_));
    EXPECT_TRUE(log_.empty());
    pass(0.02);
    EXPECT_FALSE(navigation_->transitioning());
    EXPECT_FALSE(onScreen(*root_));
    EXPECT_EQ(next->view()->frame(), CGRectMake(0, 64, 375, 603));
    EXPECT_EQ(takeLog(), (Log{"Root gone", "Next appeared"}));
    EXPECT_FALSE(CAIsAnimating(*window_->layer(), now()));
}

TEST_F(NavigationTest, APopSlidesTheOtherWayAndLetsTheScreenGo) {
    auto next = screen("Next");
    navigation_->pushViewController(next, false);
    takeLog();
    const double start = now();
    EXPECT_TRUE(navigation_->popViewController(true));
    EXPECT_NEAR(shownX(*next, start), kMiddle, 1e-6);
    EXPECT_NEAR(shownX(*root_, start), kMiddle - 125, 1e-6);
    EXPECT_NEAR(shownX(*next, start + 0.175), kMiddle + 187.5, 0.01);
    EXPECT_NEAR(shownX(*root_, start + 0.175), kMiddle - 62.5, 0.01);
    std::weak_ptr<Screen> gone = next;
    next.reset();
    EXPECT_FALSE(gone.expired());
    pass(0.4);
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(takeLog(), (Log{"Next will go", "Root will appear", "Next gone", "Root appeared"}));
    EXPECT_FALSE(navigation_->popViewController(true));
    EXPECT_TRUE(log_.empty());
}

TEST_F(NavigationTest, APoppedScreenKnowsNoNavigationAnyMore) {
    auto next = screen("Next");
    navigation_->pushViewController(next, false);
    EXPECT_EQ(next->navigationController(), navigation_.get());
    navigation_->popViewController(false);
    EXPECT_EQ(next->navigationController(), nullptr);
    next->setTitle("Elsewhere");
    EXPECT_EQ(label("Elsewhere"), nullptr);
}

TEST_F(NavigationTest, WithoutAnimationItIsThereAtOnce) {
    for (const bool enabled : {true, false}) {
        UIViewSetAnimationsEnabled(enabled);
        auto next = screen("Next");
        navigation_->pushViewController(next, !enabled);
        EXPECT_FALSE(navigation_->transitioning());
        EXPECT_EQ(takeLog(),
                  (Log{"Next loaded", "Root will go", "Next will appear", "Root gone", "Next appeared"}));
        EXPECT_FALSE(CAIsAnimating(*window_->layer(), now()));
        navigation_->popViewController(!enabled);
        EXPECT_EQ(takeLog(), (Log{"Next will go", "Root will appear", "Next gone", "Root appeared"}));
        EXPECT_FALSE(onScreen(*next));
    }
}

TEST_F(NavigationTest, NothingIsTouchedWhileScreensSlide) {
    Log touches;
    auto below = std::make_shared<TouchedView>("below", CGRectMake(0, 0, 375, 603), touches);
    auto above = std::make_shared<TouchedView>("above", CGRectMake(0, 0, 375, 603), touches);
    auto next = screen("Next");
    root_->view()->addSubview(below);
    next->view()->addSubview(above);
    navigation_->pushViewController(next, true);
    tap({100, 300});
    tap(middleOf(*navigation_->backButton()));
    drag({5, 300}, {300, 300}, 0.1);
    EXPECT_TRUE(touches.empty());
    EXPECT_EQ(depth(), 2u);
    pass(0.5);
    tap({100, 300});
    EXPECT_EQ(touches, (Log{"above began", "above ended"}));
}

TEST_F(NavigationTest, TheBackButtonGoesBack) {
    navigation_->pushViewController(screen("Next"), false);
    EXPECT_FALSE(navigation_->backButton()->hidden());
    EXPECT_EQ(navigation_->backButton()->accessibilityLabel(), "Root");
    const CGPoint at = middleOf(*navigation_->backButton());
    press(at);
    EXPECT_NEAR(navigation_->backButton()->alpha(), 0.3, 1e-6);
    lift(at);
    EXPECT_EQ(navigation_->backButton()->alpha(), 1);
    pass(0.5);
    EXPECT_EQ(top(), "Root");
    EXPECT_TRUE(navigation_->backButton()->hidden());
}

TEST_F(NavigationTest, ASwipeFromTheEdgeFollowsTheFingerAndFinishes) {
    auto next = screen("Next");
    navigation_->pushViewController(next, false);
    takeLog();
    press({5, 300});
    move({105, 300});
    EXPECT_TRUE(navigation_->transitioning());
    EXPECT_NEAR(next->view()->center().x, kMiddle + 100, 1e-9);
    EXPECT_NEAR(root_->view()->center().x, kMiddle - 125 + 100 / 3.0, 1e-9);
    move({215, 300}); // more than half of the way
    clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC);
    EXPECT_EQ(takeLog(), (Log{"Next will go", "Root will appear"}));
    lift({215, 300});
    EXPECT_TRUE(navigation_->transitioning());
    pass(0.4);
    EXPECT_EQ(depth(), 1u);
    EXPECT_EQ(takeLog(), (Log{"Next gone", "Root appeared"}));
    EXPECT_EQ(root_->view()->frame(), CGRectMake(0, 64, 375, 603));
    EXPECT_EQ(next->navigationController(), nullptr);
}

TEST_F(NavigationTest, ASwipeThatIsNotFarEnoughIsTakenBack) {
    auto next = screen("Next");
    navigation_->pushViewController(next, false);
    takeLog();
    press({5, 300});
    move({150, 300});
    clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC);
    lift({150, 300});
    EXPECT_TRUE(navigation_->transitioning());
    pass(0.4);
    EXPECT_EQ(depth(), 2u);
    EXPECT_EQ(top(), "Next");
    EXPECT_EQ(takeLog(), (Log{"Next will go", "Root will appear", "Root will go", "Next will appear",
                              "Root gone", "Next appeared"}));
    EXPECT_EQ(next->view()->frame(), CGRectMake(0, 64, 375, 603));
    EXPECT_FALSE(onScreen(*root_));
    EXPECT_EQ(next->navigationController(), navigation_.get());
    EXPECT_EQ(navigation_->backButton()->accessibilityLabel(), "Root");
}

TEST_F(NavigationTest, AFlickFinishesAndAFlickBackDoesNot) {
    navigation_->pushViewController(screen("Next"), false);
    drag({5, 300}, {65, 300}, 0.1); // 600 points a second
    pass(0.4);
    EXPECT_EQ(depth(), 1u);
    navigation_->pushViewController(screen("Next"), false);
    press({5, 300});
    move({300, 300});
    clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC);
    for (int i = 1; i <= 5; ++i) {
        clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC / 100);
        move({300.0 - 10 * i, 300});
    }
    lift({250, 300});
    pass(0.4);
    EXPECT_EQ(depth(), 2u);
}

TEST_F(NavigationTest, OnlyASwipeToTheRightFromTheEdgeOfAScreenThatHasOneBelow) {
    drag({5, 300}, {300, 300}, 0.1);
    EXPECT_FALSE(navigation_->transitioning());
    navigation_->pushViewController(screen("Next"), false);
    drag({30, 300}, {300, 300}, 0.1);
    EXPECT_FALSE(navigation_->transitioning());
    drag({20, 300}, {0, 300}, 0.1);
    EXPECT_FALSE(navigation_->transitioning());
    drag({5, 300}, {5, 500}, 0.1);
    EXPECT_FALSE(navigation_->transitioning());
    EXPECT_EQ(depth(), 2u);
}

TEST_F(NavigationTest, ACancelledSwipeIsTakenBack) {
    navigation_->pushViewController(screen("Next"), false);
    press({5, 300});
    move({300, 300});
    touch(UITouchPhase::cancelled, {300, 300});
    pass(0.4);
    EXPECT_EQ(depth(), 2u);
    EXPECT_FALSE(navigation_->transitioning());
}

TEST_F(NavigationTest, AChangeDuringASwipeTakesItBackFirst) {
    navigation_->pushViewController(screen("Next"), false);
    press({5, 300});
    move({300, 300});
    EXPECT_TRUE(press(UIKey::escape)); // back by one screen, not by two
    pass(0.4);
    EXPECT_EQ(top(), "Root");
    move({310, 300});
    lift({310, 300});
    pass(0.4);
    EXPECT_EQ(top(), "Root");

    navigation_->pushViewController(screen("Next"), false);
    press({5, 300});
    move({100, 300});
    clock_.advanceTo(clock_.nanoseconds() + NSEC_PER_SEC);
    lift({100, 300}); // it is on its way back to where it was
    navigation_->pushViewController(screen("Third"), false);
    EXPECT_EQ(depth(), 3u);
    pass(1);
    EXPECT_EQ(depth(), 3u);
}

TEST_F(NavigationTest, WithoutAnimationASwipeIsDoneWhenItIsLetGo) {
    UIViewSetAnimationsEnabled(false);
    navigation_->pushViewController(screen("Next"), true);
    drag({5, 300}, {300, 300}, 0.2);
    EXPECT_FALSE(navigation_->transitioning());
    EXPECT_EQ(top(), "Root");
}

TEST_F(NavigationTest, APopDuringAPushAndRapidPushesEndWhatRuns) {
    auto a = screen("A"), b = screen("B"), c = screen("C");
    navigation_->pushViewController(a, true);
    pass(0.1);
    EXPECT_TRUE(navigation_->popViewController(true));
    EXPECT_EQ(takeLog(), (Log{"A loaded", "Root will go", "A will appear", "Root gone", "A appeared",
                              "A will go", "Root will appear"}));
    pass(0.3); // the first one's time is over, and means nothing
    EXPECT_TRUE(navigation_->transitioning());
    pass(0.1);
    EXPECT_EQ(takeLog(), (Log{"A gone", "Root appeared"}));
    for (const auto& next : {a, b, c})
        navigation_->pushViewController(next, true);
    EXPECT_EQ(depth(), 4u);
    pass(1);
    EXPECT_EQ(top(), "C");
    for (const auto& each : {a, b, c}) {
        const std::string name = each->title();
        EXPECT_EQ(std::count(log_.begin(), log_.end(), name + " will appear"), 1);
        EXPECT_EQ(std::count(log_.begin(), log_.end(), name + " appeared"), 1);
        EXPECT_EQ(std::count(log_.begin(), log_.end(), name + " gone"), each == c ? 0 : 1);
        EXPECT_EQ(onScreen(*each), each == c);
    }
    while (navigation_->popViewController(true)) {
    }
    pass(1);
    EXPECT_EQ(top(), "Root");
    EXPECT_TRUE(onScreen(*root_));
}

TEST_F(NavigationTest, NoScreenAndOneThatIsThereAlreadyAreNotPushed) {
    navigation_->pushViewController(nullptr, true);
    navigation_->pushViewController(root_, true);
    EXPECT_EQ(depth(), 1u);
    EXPECT_FALSE(navigation_->transitioning());
    EXPECT_TRUE(log_.empty());
}

TEST_F(NavigationTest, AStackIsReplacedAtOnceAndOnlyItsLastScreenAppears) {
    auto a = screen("A"), b = screen("B"), c = screen("C");
    navigation_->pushViewController(a, false);
    takeLog();
    navigation_->setViewControllers({root_, nullptr, b, c});
    EXPECT_EQ(takeLog(), (Log{"C loaded", "A will go", "C will appear", "A gone", "C appeared"}));
    EXPECT_EQ(depth(), 3u);
    EXPECT_EQ(a->navigationController(), nullptr);
    EXPECT_EQ(b->navigationController(), navigation_.get());
    EXPECT_FALSE(b->isViewLoaded());
    EXPECT_EQ(navigation_->backButton()->accessibilityLabel(), "B");
    navigation_->setViewControllers({root_, c}); // the front one stays
    EXPECT_TRUE(log_.empty());
    EXPECT_EQ(b->navigationController(), nullptr);
    EXPECT_EQ(navigation_->backButton()->accessibilityLabel(), "Root");
    navigation_->setViewControllers({});
    EXPECT_EQ(depth(), 2u);
    std::weak_ptr<Screen> gone = b;
    b.reset();
    EXPECT_TRUE(gone.expired());
}

TEST_F(NavigationTest, ScreensMayChangeTheStackWhenTheyHearOfIt) {
    auto a = screen("A"), b = screen("B");
    a->whenWillAppear = [&] { navigation_->popViewController(false); };
    navigation_->pushViewController(a, true);
    pass(1);
    EXPECT_EQ(top(), "Root");
    EXPECT_TRUE(onScreen(*root_));
    EXPECT_FALSE(onScreen(*a));
    EXPECT_FALSE(navigation_->transitioning());

    a->whenWillAppear = {};
    a->whenAppeared = [&] {
        if (depth() == 2) navigation_->pushViewController(b, true);
    };
    navigation_->pushViewController(a, true);
    pass(2);
    EXPECT_EQ(top(), "B");
    EXPECT_TRUE(onScreen(*b));
    a->whenAppeared = {};
    b->whenWillGo = [&] { navigation_->setViewControllers({root_}); };
    navigation_->popViewController(true);
    pass(1);
    EXPECT_EQ(top(), "Root");
    EXPECT_TRUE(onScreen(*root_));
    EXPECT_FALSE(onScreen(*b));
}

TEST_F(NavigationTest, ItMayEndWhileItSlides) {
    auto next = screen("Next"), last = screen("Last");
    navigation_->pushViewController(next, false);
    navigation_->pushViewController(last, true);
    navigation_->popViewController(true);
    window_->setRootViewController(nullptr);
    std::weak_ptr<UINavigationController> gone = navigation_;
    navigation_.reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(last->navigationController(), nullptr);
    EXPECT_EQ(next->navigationController(), nullptr);
    last->setTitle("Still there");
    pass(1);
    // Neither may a screen's own end of the window hurt.
    navigation_ = std::make_shared<UINavigationController>(screen("New"));
    window_->setRootViewController(navigation_);
    auto ending = screen("Ending");
    ending->whenAppeared = [&] {
        window_->setRootViewController(nullptr);
        navigation_.reset();
    };
    navigation_->pushViewController(ending, true);
    pass(1);
    EXPECT_EQ(navigation_, nullptr);
    EXPECT_EQ(ending->navigationController(), nullptr);
}

TEST_F(NavigationTest, ATitleStandsInTheMiddleAndTheFormerOneAtTheLeft) {
    UILabel* title = label("Root");
    ASSERT_NE(title, nullptr);
    EXPECT_NEAR(CGRectGetMidX(placeOf(*title)), kMiddle, 1);
    EXPECT_EQ(placeOf(*title).origin.y, 20);
    EXPECT_EQ(placeOf(*title).size.height, 44);
    navigation_->pushViewController(screen("Next"), false);
    window_->layoutIfNeeded();
    EXPECT_NEAR(CGRectGetMidX(placeOf(*label("Next"))), kMiddle, 1);
    EXPECT_EQ(placeOf(*label("Root")).origin.x, 27);
    EXPECT_FALSE(truncated(*label("Root")));
    navigation_->topViewController()->setTitle("Renamed");
    EXPECT_NE(label("Renamed"), nullptr);
    EXPECT_EQ(label("Next"), nullptr);
    root_->setTitle("Also renamed");
    EXPECT_NE(label("Also renamed"), nullptr);
}

TEST_F(NavigationTest, LongTitlesNeverOverlap) {
    const std::string shortText = "Size", middling = "Animation of the badge",
                      longer = "Position and colours",
                      endless = "A title that is so long that no phone could ever show it whole";
    for (const std::string& former : {shortText, middling, longer, endless, std::string()}) {
        for (const std::string& present : {shortText, middling, longer, endless}) {
            SCOPED_TRACE(testing::Message() << former << " / " << present);
            auto below = screen(former + "-"), above = screen(present + "-");
            below->setTitle(former);
            above->setTitle(present);
            navigation_->setViewControllers({root_, below, above});
            window_->layoutIfNeeded();
            const std::string back = navigation_->backButton()->accessibilityLabel();
            UILabel* backLabel = label(back, navigation_->backButton());
            ASSERT_NE(backLabel, nullptr);
            EXPECT_TRUE(back == "Back" || (back == former && !former.empty()));
            EXPECT_FALSE(truncated(*backLabel)); // a shorter word rather than a cut one
            navigation_->backButton()->setHidden(true);
            UILabel* title = nullptr; // the one in the bar itself
            for (const auto& view : navigation_->backButton()->superview()->subviews()) {
                auto* found = dynamic_cast<UILabel*>(view.get());
                if (found && found->text() == present) title = found;
            }
            ASSERT_NE(title, nullptr);
            EXPECT_GE(placeOf(*title).origin.x, CGRectGetMaxX(placeOf(*backLabel)) + 5);
            EXPECT_LE(CGRectGetMaxX(placeOf(*title)), 375 - 8 + 1e-9);
            EXPECT_EQ(truncated(*title), present == endless);
            EXPECT_LE(CGRectGetMaxX(navigation_->backButton()->frame()), placeOf(*title).origin.x + 1e-9);
        }
    }
    // Two that fit side by side both stay.
    auto below = screen("Root of it"), above = screen("Short");
    navigation_->setViewControllers({below, above});
    EXPECT_EQ(navigation_->backButton()->accessibilityLabel(), "Root of it");
}

TEST_F(NavigationTest, TheBarHasItsColoursAndAHairline) {
    navigation_->pushViewController(screen("Next"), false);
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        auto own = std::make_shared<UINavigationController>(screen("Own"));
        window_->setRootViewController(own);
        own->pushViewController(screen("Other"), false);
        const auto image = picture();
        auto at = [&](CGFloat x, CGFloat y) {
            return image->pixel(static_cast<int>(x * scale), static_cast<int>(y * scale)) & 0xFFFFFFU;
        };
        EXPECT_EQ(at(330, 40), 0xF8F8F8U);
        EXPECT_EQ(image->pixel(50, static_cast<int>(64 * scale) - 1) & 0xFFFFFFU, 0xB2B2B2U);
        EXPECT_EQ(image->pixel(50, static_cast<int>(64 * scale) - 2) & 0xFFFFFFU, 0xF8F8F8U);
        // The chevron: its tip at the left in the middle of the bar.
        EXPECT_EQ(at(10.7, 20 + 22), 0x007AFFU);
        EXPECT_EQ(at(17, 20 + 22), 0xF8F8F8U);
        window_->setRootViewController(nullptr);
    }
}

TEST_F(NavigationTest, TheBarsHairlineIsOnePixelWhereTheBarEndsWithinOne) {
    for (const CGFloat scale : {1.1, 1.37, 1.85}) { // as a window that was resized has it
        UIScreen::mainScreen().setScale(scale);
        auto own = std::make_shared<UINavigationController>(screen("Own"));
        window_->setRootViewController(own);
        const auto image = picture();
        int lines = 0;
        for (int y = 0; y < static_cast<int>(66 * scale); ++y)
            lines += (image->pixel(50, y) & 0xFFFFFFU) == 0xB2B2B2U;
        EXPECT_EQ(lines, 1) << scale;
        window_->setRootViewController(nullptr);
    }
}

} // namespace
} // namespace tallyforge::test
