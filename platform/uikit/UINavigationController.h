#pragma once

#include "uikit/UIGestureRecognizer.h"
#include "uikit/UIViewController.h"

#include <vector>

namespace tallyforge {

class UIControl;
class UILabel;

/// A stack of screens below a bar with the front one's title and the way back. A new screen slides in over
/// the old one within 0.35 seconds; a finger drawn in from the left edge slides it out again.
class UINavigationController final : public UIViewController {
  public:
    explicit UINavigationController(std::shared_ptr<UIViewController> root);
    ~UINavigationController() override;

    const char* className() const override { return "UINavigationController"; }
    const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return stack_; }
    const std::shared_ptr<UIViewController>& topViewController() const { return stack_.back(); }

    /// No controller, and one that is on the stack already, are left alone.
    void pushViewController(std::shared_ptr<UIViewController> controller, bool animated);
    /// Replaces the stack at once; only its last screen appears.
    void setViewControllers(std::vector<std::shared_ptr<UIViewController>> stack);
    /// False at the root.
    bool popViewController(bool animated);
    /// Whether a screen is sliding in or out; touches and keys wait until it is there.
    bool transitioning() const { return transition_ != nullptr; }
    /// Ends a running transition at once. A swipe that has not been let go is taken back.
    void finishTransition();

    void loadView() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void viewDidDisappear(bool animated) override;

    /// Below the bar, where screens are shown.
    CGRect contentFrame() const;
    UIControl* backButton() const { return backButton_.get(); }
    void updateBar();

    static constexpr CGFloat kStatusBarHeight = 20;
    static constexpr CGFloat kBarHeight = 44;

  private:
    struct Transition;
    bool begin(std::shared_ptr<UIViewController> from, bool push, bool animated);
    void place(CGFloat share);
    void slide(bool arrive);
    void complete(bool arrived);
    void swipe();
    void setTouchable(bool touchable);
    bool holds(const std::shared_ptr<UIViewController>& controller) const;
    void makeBar();

    std::vector<std::shared_ptr<UIViewController>> stack_;
    std::unique_ptr<Transition> transition_;
    uint64_t transitions_ = 0;
    std::shared_ptr<UIView> screens_;
    std::shared_ptr<UIView> bar_;
    std::shared_ptr<UILabel> titleLabel_;
    std::shared_ptr<UILabel> backLabel_;
    std::shared_ptr<UIControl> backButton_;
    std::shared_ptr<UIPanGestureRecognizer> swipe_;
    bool appearing_ = false; // on screen, or about to be
    bool appeared_ = false;
};

} // namespace tallyforge
