// When views are laid out: once for each change, and never otherwise.
#include "ScreenFixture.h"

namespace tallyforge::test {
namespace {

class CountingView : public UIView {
  public:
    using UIView::UIView;
    void layoutSubviews() override {
        ++times;
        if (whenLaidOut) whenLaidOut();
    }
    int times = 0;
    std::function<void()> whenLaidOut;
};

std::shared_ptr<CountingView> counting() {
    return std::make_shared<CountingView>(CGRectMake(0, 0, 10, 10));
}

class LayoutTest : public ScreenFixture {
  protected:
    LayoutTest() {
        top_->addSubview(middle_);
        middle_->addSubview(leaf_);
        window_->addSubview(top_);
        window_->layoutIfNeeded();
        forget();
    }
    void forget() { top_->times = middle_->times = leaf_->times = 0; }
    std::vector<int> times() {
        window_->layoutIfNeeded();
        return {top_->times, middle_->times, leaf_->times};
    }
    std::shared_ptr<CountingView> top_ = counting(), middle_ = counting(), leaf_ = counting();
};

TEST_F(LayoutTest, ANewTreeIsLaidOutOnce) {
    auto a = counting(), b = counting();
    a->addSubview(b);
    a->layoutIfNeeded();
    EXPECT_EQ(a->times, 1);
    EXPECT_EQ(b->times, 1);
    a->layoutIfNeeded();
    EXPECT_EQ(a->times, 1);
}

TEST_F(LayoutTest, OnlyWhatAskedIsLaidOutHoweverDeepAndHoweverOftenItAsked) {
    EXPECT_EQ(times(), (std::vector{0, 0, 0}));
    leaf_->setNeedsLayout();
    leaf_->setNeedsLayout();
    EXPECT_EQ(times(), (std::vector{0, 0, 1}));
    EXPECT_EQ(times(), (std::vector{0, 0, 1}));
    top_->setNeedsLayout();
    EXPECT_EQ(times(), (std::vector{1, 0, 1}));
}

TEST_F(LayoutTest, AChangeOfSizeAsksAndAMoveDoesNot) {
    middle_->setFrame(CGRectMake(50, 50, 10, 10));
    middle_->setCenter({1, 1});
    middle_->setTransform(CGAffineTransformMakeRotation(1));
    middle_->setBounds(CGRectMake(0, 30, 10, 10));
    EXPECT_EQ(times(), (std::vector{0, 0, 0}));
    middle_->setTransform(CGAffineTransform{});
    middle_->setFrame(CGRectMake(50, 50, 11, 10));
    EXPECT_EQ(times(), (std::vector{0, 1, 0}));
    middle_->setBounds(CGRectMake(0, 0, 11, 12));
    EXPECT_EQ(times(), (std::vector{0, 2, 0}));
}

TEST_F(LayoutTest, AddingAndRemovingAsksTheSuperview) {
    auto added = counting();
    added->layoutIfNeeded(); // it has been laid out elsewhere
    middle_->addSubview(added);
    EXPECT_EQ(times(), (std::vector{0, 1, 0}));
    EXPECT_EQ(added->times, 2);
    added->removeFromSuperview();
    EXPECT_EQ(times(), (std::vector{0, 2, 0}));
    EXPECT_EQ(added->times, 2);
}

TEST_F(LayoutTest, ATreeThatAskedBeforeItWasPutInIsReached) {
    auto branch = counting(), twig = counting();
    branch->addSubview(twig);
    twig->setNeedsLayout();
    leaf_->addSubview(branch);
    twig->setNeedsLayout();
    window_->layoutIfNeeded();
    EXPECT_EQ(twig->times, 1);
    EXPECT_EQ(branch->times, 1);
}

TEST_F(LayoutTest, ADeepTreeIsReachedAtItsEnd) {
    std::shared_ptr<CountingView> last = leaf_;
    for (int i = 0; i < 200; ++i) {
        auto next = counting();
        last->addSubview(next);
        last = next;
    }
    window_->layoutIfNeeded();
    EXPECT_EQ(last->times, 1);
    last->setNeedsLayout();
    window_->layoutIfNeeded();
    EXPECT_EQ(last->times, 2);
    EXPECT_EQ(leaf_->times, 1);
}

TEST_F(LayoutTest, WhatALayoutResizesFollowsInTheSamePass) {
    top_->whenLaidOut = [&] { middle_->setFrame(CGRectMake(0, 0, 33, 33)); };
    middle_->whenLaidOut = [&] { leaf_->setFrame(CGRectMake(0, 0, 22, 22)); };
    top_->setNeedsLayout();
    EXPECT_EQ(times(), (std::vector{1, 1, 1}));
}

TEST_F(LayoutTest, ALayoutThatAsksAboveIsHeard) {
    bool asked = false;
    leaf_->whenLaidOut = [&] {
        if (!std::exchange(asked, true)) top_->setNeedsLayout();
    };
    leaf_->setNeedsLayout();
    EXPECT_EQ(times(), (std::vector{1, 0, 1}));
    EXPECT_EQ(times(), (std::vector{1, 0, 1}));
}

TEST_F(LayoutTest, ALayoutThatNeverSettlesDoesNotHang) {
    leaf_->whenLaidOut = [&] { leaf_->setNeedsLayout(); };
    leaf_->setNeedsLayout();
    window_->layoutIfNeeded();
    EXPECT_GE(leaf_->times, 1);
    EXPECT_LE(leaf_->times, 1000);
}

TEST_F(LayoutTest, AViewMayEndItselfAndOthersWhileItIsLaidOut) {
    middle_->whenLaidOut = [&] {
        middle_->removeFromSuperview();
        middle_ = nullptr;
        leaf_ = nullptr;
    };
    std::weak_ptr<UIView> middle = middle_, leaf = leaf_;
    middle_->setNeedsLayout();
    leaf_->setNeedsLayout();
    window_->layoutIfNeeded();
    EXPECT_TRUE(middle.expired());
    EXPECT_TRUE(leaf.expired());
    EXPECT_TRUE(top_->subviews().empty());
}

} // namespace
} // namespace tallyforge::test
