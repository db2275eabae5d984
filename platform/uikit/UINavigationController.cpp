#include "uikit/UINavigationController.h"

#include "foundation/Dispatch.h"
#include "uikit/ControlDrawing.h"
#include "uikit/ShapeView.h"
#include "uikit/UIControl.h"
#include "uikit/UIDevice.h"
#include "uikit/UILabel.h"
#include "uikit/UIViewAnimation.h"
#include "uikit/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tallyforge {

namespace {

constexpr double kSlide = 0.35;        // seconds
constexpr CGFloat kParallax = 1.0 / 3; // of the width, by which the screen below moves
constexpr CGFloat kEdge = 24;          // points from the left within which a swipe back begins
constexpr CGFloat kFlick = 300;        // points a second that finish a swipe
constexpr CGFloat kBackX = 8;
constexpr CGFloat kPressedAlpha = 0.3;

constexpr uint32_t kBarColor = 0xF8F8F8;
constexpr uint32_t kHairline = 0xB2B2B2;
constexpr uint32_t kBackground = 0xEFEFF4;

/// The chevron and the former screen's title; paler while it is pressed.
class BackButton final : public UIControl {
  public:
    using UIControl::UIControl;
    const char* className() const override { return "UINavigationBackButton"; }
    void setHighlighted(bool highlighted) override {
        UIControl::setHighlighted(highlighted);
        setAlpha(highlighted ? kPressedAlpha : 1);
    }
    bool pressKey(UIKey key) override {
        if (key != UIKey::enter && key != UIKey::space) return false;
        sendActionsForControlEvents(UIControlEventTouchUpInside);
        return true;
    }
    std::string accessibilityLabel() const override {
        for (const auto& view : subviews()) {
            if (std::string text = view->accessibilityLabel(); !text.empty()) return text;
        }
        return {};
    }
};

std::shared_ptr<UIView> makeChevron() {
    CGPath path;
    path.moveToPoint(11.5, 1.2);
    path.addLineToPoint(2, 10.5);
    path.addLineToPoint(11.5, 19.8);
    return MakeStrokedShape(CGRectMake(kBackX, 11.5, 13, 21), std::move(path), ControlColor(kControlTint),
                            2.6);
}

std::shared_ptr<UIView> makeBattery(CGFloat right) {
    CGPath path;
    path.addRoundedRect(CGRectMake(0, 0, 18, 8), 1.6, 1.6);
    path.addRoundedRect(CGRectMake(19, 2.5, 1.6, 3), 0.8, 0.8);
    return MakeFilledShape(CGRectMake(right - 26, 6, 21, 8), std::move(path), UIColor::blackColor());
}

// With a line below that is as wide as a pixel of the screen is by then.
class Bar final : public UIView {
  public:
    explicit Bar(const CGRect& frame) : UIView(frame), line_(std::make_shared<UIView>()) {
        setBackgroundColor(ControlColor(kBarColor));
        line_->setBackgroundColor(ControlColor(kHairline));
        addSubview(line_);
    }
    void layoutSubviews() override {
        const CGSize size = bounds().size;
        line_->setFrame(AlignedToPixels(
            *this, CGRectMake(0, size.height - HairlineWidth(), size.width, HairlineWidth())));
    }

  private:
    std::shared_ptr<UIView> line_;
};

} // namespace

struct UINavigationController::Transition {
    std::shared_ptr<UIViewController> from, to;
    bool push = false;
    bool animated = false;
    bool arrives = true; // false: it is being taken back, or the finger may still do so
};

UINavigationController::UINavigationController(std::shared_ptr<UIViewController> root) {
    root->navigation_ = this;
    stack_.push_back(std::move(root));
}

UINavigationController::~UINavigationController() {
    for (const auto& controller : stack_)
        controller->navigation_ = nullptr;
    if (transition_) transition_->from->navigation_ = nullptr;
    // The views may outlive this.
    if (swipe_) swipe_->setEnabled(false);
    if (backButton_) backButton_->removeAllTargets();
}

CGRect UINavigationController::contentFrame() const {
    CGSize size = UIScreen::mainScreen().size();
    CGFloat top = kStatusBarHeight + kBarHeight;
    return CGRectMake(0, top, size.width, size.height - top);
}

void UINavigationController::loadView() {
    UIViewController::loadView();
    auto root = UIViewController::view();
    screens_ = std::make_shared<UIView>(root->bounds());
    screens_->setBackgroundColor(ControlColor(kBackground));
    root->addSubview(screens_);
    makeBar();
    root->addSubview(bar_);

    swipe_ = std::make_shared<UIPanGestureRecognizer>([this] { swipe(); },
                                                      UIPanGestureRecognizer::Direction::horizontal);
    swipe_->shouldBegin = [this](const UIGestureRecognizer&) {
        return !transition_ && stack_.size() > 1 && swipe_->startInWindow().x < kEdge &&
               swipe_->translation().x > 0;
    };
    root->addGestureRecognizer(swipe_);

    topViewController()->view()->setFrame(contentFrame());
    screens_->addSubview(topViewController()->view());
    updateBar();
}

void UINavigationController::makeBar() {
    const CGFloat width = UIScreen::mainScreen().size().width;
    const CGFloat height = kStatusBarHeight + kBarHeight;
    bar_ = std::make_shared<Bar>(CGRectMake(0, 0, width, height));

    auto time = std::make_shared<UILabel>(CGRectMake(0, 0, width, kStatusBarHeight));
    time->setFont(UIFont::semiboldSystemFontOfSize(12));
    time->setTextAlignment(NSTextAlignmentCenter);
    time->setText("9:41");
    bar_->addSubview(time);
    bar_->addSubview(makeBattery(width));

    titleLabel_ = std::make_shared<UILabel>(CGRectZero);
    titleLabel_->setFont(UIFont::semiboldSystemFontOfSize(17));
    titleLabel_->setTextAlignment(NSTextAlignmentCenter);
    bar_->addSubview(titleLabel_);

    backButton_ = std::make_shared<BackButton>(CGRectZero);
    backButton_->addSubview(makeChevron());
    backLabel_ = std::make_shared<UILabel>(CGRectZero);
    backLabel_->setTextColor(ControlColor(kControlTint));
    backButton_->addSubview(backLabel_);
    backButton_->addTargetForControlEvents([this](UIControl&) { popViewController(true); },
                                           UIControlEventTouchUpInside);
    bar_->addSubview(backButton_);
}

// The title in the middle where there is room for it, the way back at the left, shortened before the title
// is.
void UINavigationController::updateBar() {
    if (!bar_) return;
    const CGFloat width = bar_->bounds().size.width;
    const CGSize most{10000, kBarHeight};
    const std::string& title = topViewController()->title();
    CGFloat titleWidth =
        std::min(std::ceil(NSStringBoundingSize(title, most, titleLabel_->font()).width) + 1, width - 16);
    CGFloat titleX = (width - titleWidth) / 2;

    backButton_->setHidden(stack_.size() < 2);
    if (stack_.size() > 1) {
        constexpr CGFloat kTextX = kBackX + 19;
        auto fits = [&](const std::string& text) {
            return std::ceil(NSStringBoundingSize(text, most, backLabel_->font()).width) + 1;
        };
        std::string former = stack_[stack_.size() - 2]->title();
        if (former.empty()) former = "Back";
        CGFloat backWidth = fits(former);
        if (kTextX + backWidth + 6 > titleX && kTextX + backWidth + 6 + titleWidth > width - 8) {
            former = "Back"; // a shorter word rather than a cut one
            backWidth = fits(former);
        }
        backWidth = std::min(backWidth, width - 16 - kTextX);
        backLabel_->setText(former);
        backLabel_->setFrame(CGRectMake(kTextX, 0, backWidth, kBarHeight));
        backButton_->setFrame(CGRectMake(0, kStatusBarHeight, kTextX + backWidth + 4, kBarHeight));
        CGFloat left = kTextX + backWidth + 6;
        if (titleX < left) titleX = left;
        titleWidth = std::min(titleWidth, width - 8 - titleX);
    }
    titleLabel_->setText(title);
    titleLabel_->setFrame(CGRectMake(titleX, kStatusBarHeight, std::max<CGFloat>(0, titleWidth), kBarHeight));
}

void UINavigationController::viewWillAppear(bool animated) {
    appearing_ = true;
    topViewController()->viewWillAppear(animated);
}

void UINavigationController::viewDidAppear(bool animated) {
    appeared_ = true;
    topViewController()->viewDidAppear(animated);
}

void UINavigationController::viewWillDisappear(bool animated) {
    finishTransition();
    appearing_ = false;
    topViewController()->viewWillDisappear(animated);
}

void UINavigationController::viewDidDisappear(bool animated) {
    appeared_ = false;
    topViewController()->viewDidDisappear(animated);
}

void UINavigationController::pushViewController(std::shared_ptr<UIViewController> controller, bool animated) {
    finishTransition();
    if (!controller || holds(controller)) return;
    auto from = topViewController();
    controller->navigation_ = this;
    stack_.push_back(std::move(controller));
    if (begin(std::move(from), true, animated)) slide(true);
}

void UINavigationController::setViewControllers(std::vector<std::shared_ptr<UIViewController>> stack) {
    finishTransition();
    std::erase(stack, nullptr);
    if (stack.empty()) return;
    auto from = topViewController();
    auto former = std::exchange(stack_, std::move(stack));
    for (const auto& controller : stack_)
        controller->navigation_ = this;
    if (from != topViewController() && begin(std::move(from), true, false)) complete(true);
    for (const auto& controller : former) {
        if (!holds(controller)) controller->navigation_ = nullptr;
    }
    updateBar();
}

bool UINavigationController::popViewController(bool animated) {
    finishTransition();
    if (stack_.size() < 2) return false;
    auto from = std::move(stack_.back());
    stack_.pop_back();
    if (!isViewLoaded()) from->navigation_ = nullptr;
    if (begin(std::move(from), false, animated)) slide(true);
    return true;
}

// From that screen to the one on top of the stack. False when there is nothing more to do: nothing is shown
// yet, or a screen that heard of it has changed the stack again.
bool UINavigationController::begin(std::shared_ptr<UIViewController> from, bool push, bool animated) {
    if (!isViewLoaded()) return false;
    const auto to = topViewController();
    const auto self = weak_from_this().lock();
    transition_ = std::make_unique<Transition>(
        Transition{from, to, push, animated && appeared_ && UIViewAnimationsEnabled(), true});
    const uint64_t which = ++transitions_;
    auto undisturbed = [&] { return transition_ && transitions_ == which; };
    UIWindow* const in = screens_->window();
    if (UIView* focused = in ? in->focusedView() : nullptr; focused && focused->isDescendantOf(*screens_))
        in->focusView(nullptr);
    to->view()->setFrame(contentFrame());
    if (appearing_) {
        from->viewWillDisappear(transition_->animated);
        if (undisturbed()) to->viewWillAppear(transition_->animated);
        if (!undisturbed()) return false;
    }
    screens_->insertSubviewAtIndex(to->view(), push ? screens_->subviews().size() : 0);
    setTouchable(false);
    updateBar();
    place(0);
    return true;
}

void UINavigationController::setTouchable(bool touchable) {
    screens_->setUserInteractionEnabled(touchable);
    bar_->setUserInteractionEnabled(touchable);
}

// Where both screens are after this share of the way.
void UINavigationController::place(CGFloat share) {
    const CGRect rest = contentFrame();
    const CGFloat width = rest.size.width;
    const Transition& t = *transition_;
    UIView& upper = t.push ? *t.to->view() : *t.from->view();
    UIView& lower = t.push ? *t.from->view() : *t.to->view();
    const CGFloat in = t.push ? share : 1 - share; // how far the upper one covers the lower one
    const CGPoint middle{CGRectGetMidX(rest), CGRectGetMidY(rest)};
    upper.setCenter({middle.x + width * (1 - in), middle.y});
    lower.setCenter({middle.x - width * kParallax * in, middle.y});
}

void UINavigationController::slide(bool arrive) {
    const bool swiped = !std::exchange(transition_->arrives, arrive);
    if (!transition_->animated) return complete(arrive);
    UIView& from = *transition_->from->view();
    UIView& to = *transition_->to->view();
    const CGPoint fromStart = from.center(), toStart = to.center();
    place(arrive ? 1 : 0);
    const CGPoint fromEnd = from.center(), toEnd = to.center();
    from.setCenter(fromStart);
    to.setCenter(toStart);
    UIViewAnimateCenter(from, fromEnd, kSlide);
    UIViewAnimateCenter(to, toEnd, kSlide);
    if (!swiped) {
        titleLabel_->setAlpha(0);
        UIViewAnimateAlpha(*titleLabel_, 1, kSlide);
    }
    std::weak_ptr<UIViewController> self = weak_from_this();
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, std::llround(kSlide * NSEC_PER_SEC)),
                   dispatch_get_main_queue(), [this, self, which = transitions_, arrive] {
                       const auto kept = self.lock();
                       if (kept && transition_ && transitions_ == which) complete(arrive);
                   });
}

void UINavigationController::finishTransition() {
    if (transition_) complete(transition_->arrives);
}

void UINavigationController::complete(bool arrived) {
    const auto self = weak_from_this().lock(); // a screen that hears of it may end this
    const auto t = std::move(transition_);
    const auto& shown = arrived ? t->to : t->from;
    const auto& gone = arrived ? t->from : t->to;
    for (const auto& controller : {t->from, t->to})
        controller->view()->layer()->removeAnimationForKey("center");
    gone->view()->removeFromSuperview();
    shown->view()->setFrame(contentFrame());
    if (!shown->view()->superview()) screens_->addSubview(shown->view());
    setTouchable(true);
    if (!arrived) stack_.push_back(shown);
    updateBar();
    if (appeared_ && !arrived) {
        gone->viewWillDisappear(t->animated);
        shown->viewWillAppear(t->animated);
    }
    if (appeared_) gone->viewDidDisappear(t->animated);
    if (!holds(gone)) gone->navigation_ = nullptr;
    if (appeared_) shown->viewDidAppear(t->animated);
}

bool UINavigationController::holds(const std::shared_ptr<UIViewController>& controller) const {
    return std::find(stack_.begin(), stack_.end(), controller) != stack_.end();
}

void UINavigationController::swipe() {
    const CGFloat width = contentFrame().size.width;
    switch (swipe_->state()) {
    case UIGestureRecognizerState::began: {
        auto from = std::move(stack_.back());
        stack_.pop_back();
        if (!begin(std::move(from), false, true)) break;
        transition_->arrives = false;
        [[fallthrough]];
    }
    case UIGestureRecognizerState::changed:
        if (transition_) place(std::clamp(swipe_->translation().x / width, 0.0, 1.0));
        break;
    case UIGestureRecognizerState::ended:
    case UIGestureRecognizerState::cancelled: {
        if (!transition_) break;
        const CGFloat speed = swipe_->velocity().x;
        const bool enough = speed > -kFlick && (speed > kFlick || swipe_->translation().x > width / 2);
        slide(enough && swipe_->state() == UIGestureRecognizerState::ended);
        break;
    }
    default:
        break;
    }
}

} // namespace tallyforge
