// Where views are in each other, and which of them a finger finds.
#include "ScreenFixture.h"

#include <cmath>
#include <numbers>

namespace tallyforge::test {
namespace {

std::shared_ptr<UIView> view(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return std::make_shared<UIView>(CGRectMake(x, y, width, height));
}

void expectPoint(const CGPoint& got, CGFloat x, CGFloat y) {
    EXPECT_NEAR(got.x, x, 1e-9);
    EXPECT_NEAR(got.y, y, 1e-9);
}

class ViewGeometryTest : public ScreenFixture {};

TEST_F(ViewGeometryTest, AFrameIsCentreAndBoundsAndMovesNeitherOrigin) {
    UIView v(CGRectMake(10, 20, 100, 40));
    v.setBounds(CGRectMake(5, 7, 60, 30));
    expectPoint(v.center(), 60, 40);
    EXPECT_EQ(v.frame(), CGRectMake(30, 25, 60, 30));
    v.setFrame(CGRectMake(0, 0, 10, 10));
    EXPECT_EQ(v.bounds(), CGRectMake(5, 7, 10, 10));
}

TEST_F(ViewGeometryTest, PointsGoThroughBoundsOriginsAndPositions) {
    auto outer = view(10, 20, 200, 200);
    auto inner = view(30, 40, 50, 50);
    outer->setBounds(CGRectMake(0, 100, 200, 200)); // scrolled by 100
    outer->addSubview(inner);
    window_->addSubview(outer);
    // (1, 2) in inner is (31, 42) in outer, which shows from 100: (31 + 10, 42 - 100 + 20) in the window.
    expectPoint(inner->convertPointToView({1, 2}, nullptr), 41, -38);
    expectPoint(inner->convertPointFromView({41, -38}, nullptr), 1, 2);
    expectPoint(inner->convertPointToView({1, 2}, outer.get()), 31, 42);
    expectPoint(outer->convertPointToView({31, 42}, inner.get()), 1, 2);
    EXPECT_EQ(inner->convertRectToView(CGRectMake(1, 2, 3, 4), outer.get()), CGRectMake(31, 42, 3, 4));
}

TEST_F(ViewGeometryTest, PointsGoThroughTransformsAboutTheCentre) {
    auto turned = view(100, 100, 40, 20); // centre 120, 110
    turned->setTransform(CGAffineTransformMakeRotation(std::numbers::pi / 2));
    window_->addSubview(turned);
    // A quarter turn clockwise on screen: the top left corner goes to the top right of the upright box.
    expectPoint(turned->convertPointToView({0, 0}, nullptr), 130, 90);
    expectPoint(turned->convertPointFromView({130, 90}, nullptr), 0, 0);
    const CGRect box = turned->convertRectToView(turned->bounds(), nullptr);
    expectPoint(box.origin, 110, 90);
    EXPECT_NEAR(box.size.width, 20, 1e-9);
    EXPECT_NEAR(box.size.height, 40, 1e-9);

    auto doubled = view(0, 0, 10, 10);
    doubled->setTransform(CGAffineTransformMakeScale(2, 2));
    window_->addSubview(doubled);
    expectPoint(doubled->convertPointToView({10, 10}, nullptr), 15, 15);
}

TEST_F(ViewGeometryTest, AFingerFindsTheDeepestAndFrontmost) {
    auto back = view(0, 0, 100, 100), front = view(50, 0, 100, 100), child = view(10, 10, 20, 20);
    back->addSubview(child);
    window_->addSubview(back);
    window_->addSubview(front);
    EXPECT_EQ(window_->hitTest({15, 15}), child.get());
    EXPECT_EQ(window_->hitTest({5, 5}), back.get());
    EXPECT_EQ(window_->hitTest({60, 5}), front.get());
    EXPECT_EQ(window_->hitTest({200, 200}), window_.get());
    EXPECT_EQ(window_->hitTest({-1, 5}), nullptr);
    // The right and lower edges belong to what is beside.
    EXPECT_EQ(window_->hitTest({150, 5}), window_.get());
    EXPECT_EQ(window_->hitTest({149.9, 99.9}), front.get());
}

TEST_F(ViewGeometryTest, WhatSticksOutOfItsSuperviewIsNotFound) {
    auto box = view(0, 0, 50, 50), outside = view(40, 0, 50, 50);
    box->addSubview(outside);
    window_->addSubview(box);
    EXPECT_EQ(window_->hitTest({45, 5}), outside.get());
    EXPECT_EQ(window_->hitTest({60, 5}), window_.get());
}

TEST_F(ViewGeometryTest, AFingerFindsThroughTransformsAndScrolledBounds) {
    auto outer = view(0, 0, 100, 100), inner = view(0, 150, 100, 20);
    outer->setBounds(CGRectMake(0, 140, 100, 100));
    outer->addSubview(inner);
    window_->addSubview(outer);
    EXPECT_EQ(window_->hitTest({50, 9}), outer.get());
    EXPECT_EQ(window_->hitTest({50, 10}), inner.get());
    EXPECT_EQ(window_->hitTest({50, 30}), outer.get());

    auto turned = view(200, 200, 100, 10); // centre 250, 205; upright once turned
    turned->setTransform(CGAffineTransformMakeRotation(std::numbers::pi / 2));
    window_->addSubview(turned);
    EXPECT_EQ(window_->hitTest({250, 160}), turned.get());
    EXPECT_EQ(window_->hitTest({210, 205}), window_.get());
}

TEST_F(ViewGeometryTest, WhatIsSqueezedToNothingTakesNoTouches) {
    auto gone = view(0, 0, 100, 100);
    gone->setTransform(CGAffineTransformMakeScale(0, 0));
    window_->addSubview(gone);
    EXPECT_EQ(window_->hitTest({50, 50}), window_.get());
    gone->setTransform(CGAffineTransformMakeScale(1, 0));
    EXPECT_EQ(window_->hitTest({50, 50}), window_.get());
}

TEST_F(ViewGeometryTest, HiddenFaintAndDeafViewsTakeNoTouchesNorDoesAnythingInThem) {
    auto outer = view(0, 0, 100, 100), inner = view(0, 0, 50, 50);
    outer->addSubview(inner);
    window_->addSubview(outer);
    auto found = [&] { return window_->hitTest({10, 10}); };
    outer->setHidden(true);
    EXPECT_EQ(found(), window_.get());
    outer->setHidden(false);
    outer->setAlpha(0.009);
    EXPECT_EQ(found(), window_.get());
    outer->setAlpha(0.01);
    EXPECT_EQ(found(), inner.get());
    outer->setAlpha(std::nan(""));
    EXPECT_EQ(found(), window_.get());
    outer->setAlpha(1);
    outer->setUserInteractionEnabled(false);
    EXPECT_EQ(found(), window_.get());
    outer->setUserInteractionEnabled(true);
    inner->setUserInteractionEnabled(false);
    EXPECT_EQ(found(), outer.get());
}

TEST_F(ViewGeometryTest, ViewsAndLayersKeepTheSameOrder) {
    auto top = std::make_shared<UIView>();
    auto a = view(0, 0, 1, 1), b = view(0, 0, 1, 1), c = view(0, 0, 1, 1);
    auto bare = std::make_shared<CALayer>();
    top->addSubview(a);
    top->layer()->addSublayer(bare);
    top->addSubview(b);
    top->insertSubviewAtIndex(c, 1);
    EXPECT_EQ(top->subviews(), (std::vector{a, c, b}));
    EXPECT_EQ(top->layer()->sublayers(), (std::vector{a->layer(), bare, c->layer(), b->layer()}));
    top->addSubview(a); // to the front
    EXPECT_EQ(top->subviews(), (std::vector{c, b, a}));
    top->insertSubviewAtIndex(a, 99);
    EXPECT_EQ(top->subviews(), (std::vector{c, b, a}));
    top->insertSubviewAtIndex(a, 0);
    EXPECT_EQ(top->subviews(), (std::vector{a, c, b}));
    EXPECT_EQ(top->layer()->sublayers(), (std::vector{bare, a->layer(), c->layer(), b->layer()}));
}

TEST_F(ViewGeometryTest, NoViewIsWithinItselfOrInTwoPlaces) {
    auto a = view(0, 0, 1, 1), b = view(0, 0, 1, 1), c = view(0, 0, 1, 1);
    a->addSubview(b);
    b->addSubview(c);
    c->addSubview(a);
    c->addSubview(c);
    c->addSubview(nullptr);
    EXPECT_TRUE(c->subviews().empty());
    EXPECT_EQ(a->superview(), nullptr);
    a->addSubview(c);
    EXPECT_TRUE(b->subviews().empty());
    EXPECT_EQ(c->superview(), a.get());
    EXPECT_TRUE(c->isDescendantOf(*a));
    EXPECT_TRUE(c->isDescendantOf(*c));
    EXPECT_FALSE(c->isDescendantOf(*b));
    EXPECT_EQ(c->window(), nullptr);
    window_->addSubview(a);
    EXPECT_EQ(c->window(), window_.get());
    EXPECT_EQ(window_->window(), window_.get());
}

TEST_F(ViewGeometryTest, AViewThatOutlivesItsSuperviewHasNone) {
    auto child = view(0, 0, 1, 1);
    {
        auto parent = view(0, 0, 5, 5);
        parent->addSubview(child);
    }
    EXPECT_EQ(child->superview(), nullptr);
    child->removeFromSuperview();
    window_->addSubview(child);
    EXPECT_EQ(child->superview(), window_.get());
}

} // namespace
} // namespace tallyforge::test
