// Views: geometry, and the tree of views and of their layers.
#include "uikit/UIView.h"
#include "uikit/UIGestureRecognizer.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tallyforge {
namespace {

std::shared_ptr<UIView> makeView() {
    return std::make_shared<UIView>(CGRectMake(0, 0, 10, 10));
}

// The tree of layers is the tree of views.
void expectOrder(const UIView& parent, const std::vector<std::shared_ptr<UIView>>& expected) {
    EXPECT_EQ(parent.subviews(), expected);
    std::vector<std::shared_ptr<CALayer>> layers;
    for (const auto& view : expected) {
        layers.push_back(view->layer());
        EXPECT_EQ(view->superview(), &parent);
        EXPECT_EQ(view->layer()->superlayer(), parent.layer().get());
    }
    EXPECT_EQ(parent.layer()->sublayers(), layers);
}

TEST(UIView, BeginsPlain) {
    UIView view;
    EXPECT_EQ(view.frame(), CGRectZero);
    EXPECT_EQ(view.alpha(), 1);
    EXPECT_FALSE(view.hidden());
    EXPECT_FALSE(view.backgroundColor());
    EXPECT_EQ(static_cast<int>(view.contentMode()), 0);
    EXPECT_EQ(view.tag(), 0);
    EXPECT_EQ(view.superview(), nullptr);
    EXPECT_TRUE(view.subviews().empty());
    EXPECT_STREQ(view.className(), "UIView");
}

TEST(UIView, FrameBoundsAndCenterBelongTogether) {
    UIView view(CGRectMake(10, 20, 30, 40));
    EXPECT_EQ(view.bounds(), CGRectMake(0, 0, 30, 40));
    EXPECT_EQ(view.center(), CGPointMake(25, 40));
    view.setCenter({0, 0});
    EXPECT_EQ(view.frame(), CGRectMake(-15, -20, 30, 40));
    view.setBounds(CGRectMake(0, 0, 50, 10));
    EXPECT_EQ(view.frame(), CGRectMake(-25, -5, 50, 10));
    view.setFrame(CGRectMake(1, 2, 4, 6));
    EXPECT_EQ(view.center(), CGPointMake(3, 5));
    EXPECT_EQ(view.bounds().size, CGSizeMake(4, 6));
}

TEST(UIView, FrameIsTheBoxAroundTheTransformedView) {
    UIView view(CGRectMake(10, 20, 30, 40));
    view.setTransform(CGAffineTransformMakeScale(2, 0.5));
    EXPECT_EQ(view.frame(), CGRectMake(-5, 30, 60, 20));
    EXPECT_EQ(view.bounds(), CGRectMake(0, 0, 30, 40));
    EXPECT_EQ(view.center(), CGPointMake(25, 40));
    view.setTransform({0, 1, -1, 0, 0, 0}); // a quarter turn
    EXPECT_EQ(view.frame(), CGRectMake(5, 25, 40, 30));
    EXPECT_EQ(view.transform(), (CGAffineTransform{0, 1, -1, 0, 0, 0}));
}

TEST(UIView, AnchorPointMovesTheViewAndKeepsTheCenter) {
    UIView view(CGRectMake(10, 20, 30, 40));
    view.layer()->setAnchorPoint({0, 0});
    EXPECT_EQ(view.center(), CGPointMake(25, 40));
    EXPECT_EQ(view.frame(), CGRectMake(25, 40, 30, 40));
}

TEST(UIView, LooksAreItsLayers) {
    UIView view;
    view.setBackgroundColor(UIColor::colorWithRed(0.25, 0.5, 0.75, 0.5));
    EXPECT_EQ(view.layer()->backgroundColor(), (CGColor{0.25, 0.5, 0.75, 0.5}));
    EXPECT_EQ(view.backgroundColor(), UIColor::colorWithRed(0.25, 0.5, 0.75, 0.5));
    view.setBackgroundColor(std::nullopt);
    EXPECT_FALSE(view.layer()->backgroundColor());
    view.setAlpha(0.25);
    EXPECT_EQ(view.layer()->opacity(), 0.25f);
    view.setHidden(true);
    EXPECT_TRUE(view.layer()->hidden());
    view.setTag(17);
    EXPECT_EQ(view.tag(), 17);
}

TEST(UIView, SubviewsKeepTheOrderInWhichTheyCame) {
    UIView parent;
    auto a = makeView(), b = makeView(), c = makeView();
    for (const auto& view : {a, b, c})
        parent.addSubview(view);
    expectOrder(parent, {a, b, c});
    parent.addSubview(a);
    expectOrder(parent, {b, c, a});
    parent.addSubview(nullptr);
    expectOrder(parent, {b, c, a});
}

TEST(UIView, InsertsAtAnIndex) {
    UIView parent;
    auto a = makeView(), b = makeView(), c = makeView(), d = makeView();
    parent.insertSubviewAtIndex(a, 0);
    parent.insertSubviewAtIndex(b, 0);
    expectOrder(parent, {b, a});
    parent.insertSubviewAtIndex(c, 1);
    expectOrder(parent, {b, c, a});
    parent.insertSubviewAtIndex(d, 99);
    expectOrder(parent, {b, c, a, d});
    parent.insertSubviewAtIndex(d, 0);
    expectOrder(parent, {d, b, c, a});
    parent.insertSubviewAtIndex(d, 2);
    expectOrder(parent, {b, c, d, a});
}

TEST(UIView, LayersThatAreNoViewsStayWhereTheyAre) {
    UIView parent;
    auto below = std::make_shared<CALayer>(), above = std::make_shared<CALayer>();
    auto a = makeView(), b = makeView(), c = makeView();
    parent.layer()->addSublayer(below);
    parent.addSubview(a);
    parent.layer()->addSublayer(above);
    parent.insertSubviewAtIndex(b, 0);
    parent.addSubview(c);
    EXPECT_EQ(parent.layer()->sublayers(),
              (std::vector<std::shared_ptr<CALayer>>{below, b->layer(), a->layer(), above, c->layer()}));
}

TEST(UIView, CannotBeWithinItself) {
    auto outer = std::make_shared<UIView>();
    auto inner = std::make_shared<UIView>();
    outer->addSubview(inner);
    inner->addSubview(outer);
    outer->addSubview(outer);
    EXPECT_EQ(outer->superview(), nullptr);
    EXPECT_TRUE(inner->subviews().empty());
    EXPECT_EQ(outer->subviews().size(), 1U);
}

TEST(UIView, LeavesTheFormerSuperview) {
    UIView first, second;
    auto view = makeView();
    first.addSubview(view);
    second.addSubview(view);
    expectOrder(first, {});
    expectOrder(second, {view});
}

TEST(UIView, RemovingTakesTheLayerAlong) {
    UIView parent;
    auto a = makeView(), b = makeView();
    parent.addSubview(a);
    parent.addSubview(b);
    a->removeFromSuperview();
    expectOrder(parent, {b});
    EXPECT_EQ(a->superview(), nullptr);
    EXPECT_EQ(a->layer()->superlayer(), nullptr);
    a->removeFromSuperview();
    EXPECT_EQ(a->superview(), nullptr);
}

TEST(UIView, RemovingEndsAViewThatNobodyElseHolds) {
    UIView parent;
    auto view = makeView();
    std::weak_ptr<UIView> watched = view;
    parent.addSubview(view);
    view.reset();
    ASSERT_FALSE(watched.expired());
    watched.lock()->removeFromSuperview();
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(parent.subviews().empty());
    EXPECT_TRUE(parent.layer()->sublayers().empty());
}

TEST(UIView, OwnsItsSubviews) {
    auto parent = std::make_shared<UIView>();
    auto view = makeView();
    std::weak_ptr<UIView> watched = view;
    parent->addSubview(view);
    view.reset();
    EXPECT_FALSE(watched.expired());
    parent.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(UIView, KnowsItsSuperviewOnlyAsLongAsThatLives) {
    auto parent = std::make_shared<UIView>();
    auto view = makeView();
    parent->addSubview(view);
    parent.reset();
    EXPECT_EQ(view->superview(), nullptr);
    EXPECT_EQ(view->layer()->superlayer(), nullptr);
    UIView other;
    other.addSubview(view);
    expectOrder(other, {view});
}

TEST(UIView, RecognizersTellTheirTarget) {
    UIView view;
    int taps = 0;
    view.addGestureRecognizer(std::make_shared<UITapGestureRecognizer>([&] { ++taps; }));
    view.addGestureRecognizer(std::make_shared<UITapGestureRecognizer>(nullptr));
    ASSERT_EQ(view.gestureRecognizers().size(), 2u);
    for (const auto& recognizer : view.gestureRecognizers())
        recognizer->fire();
    EXPECT_EQ(taps, 1);
}

TEST(UIColor, NamedColoursAndAlpha) {
    EXPECT_EQ(UIColor::blackColor(), UIColor::colorWithRed(0, 0, 0, 1));
    EXPECT_EQ(UIColor::whiteColor(), UIColor::colorWithRed(1, 1, 1, 1));
    EXPECT_EQ(UIColor::grayColor(), UIColor::colorWithRed(0.5, 0.5, 0.5, 1));
    EXPECT_EQ(UIColor::redColor(), UIColor::colorWithRed(1, 0, 0, 1));
    EXPECT_EQ(UIColor::clearColor(), UIColor::colorWithRed(0, 0, 0, 0));
    EXPECT_EQ(UIColor::redColor().colorWithAlphaComponent(0.3), UIColor::colorWithRed(1, 0, 0, 0.3));
}

} // namespace
} // namespace tallyforge
