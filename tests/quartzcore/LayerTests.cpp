#include "foundation/Dispatch.h"
#include "quartzcore/CALayer.h"
#include "quartzcore/Presentation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace tallyforge {
namespace {

constexpr double pi = std::numbers::pi;

std::shared_ptr<CALayer> makeLayer(CGRect frame = {{0, 0}, {100, 50}}) {
    auto layer = std::make_shared<CALayer>();
    layer->setFrame(frame);
    return layer;
}

void expectNear(const CGRect& actual, const CGRect& expected, double tolerance = 1e-9) {
    EXPECT_NEAR(actual.origin.x, expected.origin.x, tolerance);
    EXPECT_NEAR(actual.origin.y, expected.origin.y, tolerance);
    EXPECT_NEAR(actual.size.width, expected.size.width, tolerance);
    EXPECT_NEAR(actual.size.height, expected.size.height, tolerance);
}

TEST(LayerFrame, FollowsFromPositionAnchorAndSize) {
    CALayer layer;
    layer.setBounds({{5, 6}, {100, 50}});
    layer.setPosition({200, 300});
    EXPECT_EQ(layer.frame(), (CGRect{{150, 275}, {100, 50}}));
    layer.setAnchorPoint({0, 1});
    EXPECT_EQ(layer.position(), (CGPoint{200, 300}));
    EXPECT_EQ(layer.frame(), (CGRect{{200, 250}, {100, 50}}));
}

TEST(LayerFrame, IsTheBoxAroundTheTransformedBounds) {
    const auto layer = makeLayer({{0, 0}, {100, 50}}); // position 50, 25
    layer->setAffineTransform(CGAffineTransformMakeScale(2, 3));
    expectNear(layer->frame(), {{-50, -50}, {200, 150}});
    layer->setAffineTransform(CGAffineTransformMakeRotation(pi / 2));
    expectNear(layer->frame(), {{25, -25}, {50, 100}});
    layer->setAffineTransform(CGAffineTransformMakeRotation(pi / 4));
    const double side = 150 / std::numbers::sqrt2;
    expectNear(layer->frame(), {{50 - side / 2, 25 - side / 2}, {side, side}});
    layer->setTransform(CATransform3DMakeRotation(pi / 3, 0, 1, 0));
    expectNear(layer->frame(), {{25, 0}, {50, 50}});
}

TEST(LayerFrame, TheTransformActsAboutTheAnchorPoint) {
    const auto layer = makeLayer();
    layer->setAnchorPoint({0, 0}); // which moves the layer to 50, 25
    layer->setAffineTransform(CGAffineTransformMakeScale(2, 2));
    EXPECT_EQ(layer->frame(), (CGRect{{50, 25}, {200, 100}}));
}

TEST(LayerFrame, SettingKeepsBoundsOriginAndAnchor) {
    CALayer layer;
    layer.setBounds({{7, 8}, {1, 1}});
    layer.setAnchorPoint({0.25, 1});
    layer.setFrame({{10, 20}, {40, 60}});
    EXPECT_EQ(layer.bounds(), (CGRect{{7, 8}, {40, 60}}));
    EXPECT_EQ(layer.position(), (CGPoint{20, 80}));
    EXPECT_EQ(layer.frame(), (CGRect{{10, 20}, {40, 60}}));
}

TEST(LayerFrame, SettingUndoesTheTransform) {
    CALayer layer;
    layer.setAffineTransform(CGAffineTransformMakeScale(2, 4));
    layer.setFrame({{10, 20}, {40, 60}});
    expectNear(layer.bounds(), {{0, 0}, {20, 15}});
    EXPECT_EQ(layer.position(), (CGPoint{30, 50}));
    expectNear(layer.frame(), {{10, 20}, {40, 60}});

    layer.setAffineTransform(CGAffineTransformMakeRotation(pi / 2));
    layer.setFrame({{10, 20}, {40, 60}});
    expectNear(layer.bounds(), {{0, 0}, {60, 40}});
    expectNear(layer.frame(), {{10, 20}, {40, 60}});

    layer.setAffineTransform({-1, 0, 0, 1, 5, 6});
    layer.setFrame({{10, 20}, {40, 60}});
    expectNear(layer.bounds(), {{0, 0}, {40, 60}});
    expectNear(layer.frame(), {{10, 20}, {40, 60}});
}

TEST(LayerFrame, SettingWorksWhereNoSizeFits) {
    // No box turned by 45 degrees fills an oblong one: the inverse's box is taken, centred in the frame.
    CALayer layer;
    layer.setAffineTransform(CGAffineTransformMakeRotation(pi / 4));
    layer.setFrame({{0, 0}, {40, 60}});
    const double side = 100 / std::numbers::sqrt2;
    expectNear(layer.bounds(), {{0, 0}, {side, side}});
    expectNear(layer.frame(), {{0, 0}, {100, 100}});
    layer.setTransform(CATransform3DMakeScale(0, 0, 1));
    layer.setFrame({{10, 20}, {40, 60}});
    EXPECT_EQ(layer.bounds().size, (CGSize{40, 60}));
    EXPECT_EQ(layer.frame().origin, (CGPoint{10, 20}));
}

TEST(LayerFrame, SettingMakesSizesPositive) {
    CALayer layer;
    layer.setFrame({{10, 20}, {-4, -6}});
    EXPECT_EQ(layer.frame(), (CGRect{{6, 14}, {4, 6}}));
}

TEST(LayerFrame, OddNumbersAreSurvived) {
    for (const double odd :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e308}) {
        CALayer layer;
        layer.setTransform(CATransform3DMakeScale(odd, 1, 1));
        layer.setFrame({{10, 20}, {40, 60}});
        EXPECT_EQ(layer.bounds().size.height, 60);
        layer.setFrame({{odd, odd}, {odd, odd}});
        layer.frame();
    }
}

TEST(LayerTree, AddsInsertsAndRemoves) {
    const auto root = makeLayer(), a = makeLayer(), b = makeLayer(), c = makeLayer();
    root->addSublayer(a);
    root->addSublayer(b);
    root->insertSublayer(c, 1);
    EXPECT_EQ(root->sublayers(), (std::vector<std::shared_ptr<CALayer>>{a, c, b}));
    EXPECT_EQ(c->superlayer(), root.get());
    root->insertSublayer(a, 99); // moves to the end
    EXPECT_EQ(root->sublayers(), (std::vector<std::shared_ptr<CALayer>>{c, b, a}));
    b->removeFromSuperlayer();
    EXPECT_EQ(b->superlayer(), nullptr);
    EXPECT_EQ(root->sublayers(), (std::vector<std::shared_ptr<CALayer>>{c, a}));
    b->removeFromSuperlayer(); // again: nothing happens
    EXPECT_EQ(root->sublayers().size(), 2U);
}

TEST(LayerTree, ALayerHasOneSuperlayer) {
    const auto first = makeLayer(), second = makeLayer(), child = makeLayer();
    first->addSublayer(child);
    second->addSublayer(child);
    EXPECT_TRUE(first->sublayers().empty());
    EXPECT_EQ(child->superlayer(), second.get());
}

TEST(LayerTree, NeverBecomesARing) {
    const auto root = makeLayer(), child = makeLayer(), grandchild = makeLayer();
    root->addSublayer(child);
    child->addSublayer(grandchild);
    grandchild->addSublayer(root);
    root->addSublayer(root);
    root->addSublayer(nullptr);
    EXPECT_EQ(root->superlayer(), nullptr);
    EXPECT_TRUE(grandchild->sublayers().empty());
    EXPECT_EQ(root->sublayers().size(), 1U);
}

TEST(LayerTree, RemovedLayersMayLiveOnOrGo) {
    const auto root = makeLayer();
    root->addSublayer(makeLayer());
    root->sublayers()[0]->removeFromSuperlayer(); // nobody else holds it
    EXPECT_TRUE(root->sublayers().empty());

    const auto held = makeLayer();
    {
        const auto gone = makeLayer();
        gone->addSublayer(held);
    }
    EXPECT_EQ(held->superlayer(), nullptr);
    held->setOpacity(0.5F); // must not reach for the superlayer
    EXPECT_EQ(held->opacity(), 0.5F);
}

TEST(LayerRevision, GoesUpForAllAncestorsOnly) {
    const auto root = makeLayer(), child = makeLayer(), sibling = makeLayer(), grandchild = makeLayer();
    root->addSublayer(child);
    root->addSublayer(sibling);
    child->addSublayer(grandchild);
    const auto before =
        std::array{root->revision(), child->revision(), sibling->revision(), grandchild->revision()};
    grandchild->setOpacity(0.25F);
    EXPECT_GT(root->revision(), before[0]);
    EXPECT_GT(child->revision(), before[1]);
    EXPECT_EQ(sibling->revision(), before[2]);
    EXPECT_GT(grandchild->revision(), before[3]);
    const auto later = grandchild->revision();
    root->setHidden(true);
    EXPECT_EQ(grandchild->revision(), later);
}

TEST(LayerRevision, GoesUpWithEveryKindOfChange) {
    const auto layer = std::make_shared<CATextLayer>();
    uint64_t last = layer->revision();
    const auto expectChange = [&](const char* what) {
        EXPECT_GT(layer->revision(), last) << what;
        last = layer->revision();
    };
    layer->setFrame({{0, 0}, {1, 1}});
    expectChange("frame");
    layer->setString("a");
    expectChange("string");
    layer->setBackgroundColor(CGColor{});
    expectChange("background");
    const auto child = makeLayer();
    layer->addSublayer(child);
    expectChange("add");
    child->removeFromSuperlayer();
    expectChange("remove");
    layer->addAnimation(CABasicAnimation(), "k");
    expectChange("animation");
    layer->removeAnimationForKey("other");
    EXPECT_EQ(layer->revision(), last);
    layer->removeAnimationForKey("k");
    expectChange("animation removed");
    layer->removeAllAnimations();
    EXPECT_EQ(layer->revision(), last);
}

class LayerAnimations : public testing::Test {
  protected:
    void SetUp() override { MainQueue::main().setClock(&clock_); }
    void TearDown() override { MainQueue::main().setClock(nullptr); }
    VirtualClock clock_;
};

TEST_F(LayerAnimations, AreCopiedAndStampedWithThePresentTime) {
    clock_.advanceTo(3'500'000'000);
    EXPECT_EQ(CACurrentMediaTime(), 3.5);
    const auto layer = makeLayer();
    const auto animation = CABasicAnimation::animationWithKeyPath("opacity");
    animation->setToValue(0.0);
    layer->addAnimation(*animation, "fade");
    EXPECT_EQ(animation->beginTime(), 0);
    animation->setToValue(0.75);
    const auto* added = dynamic_cast<const CABasicAnimation*>(layer->animationForKey("fade"));
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(added->beginTime(), 3.5);
    EXPECT_EQ(added->keyPath(), "opacity");
    EXPECT_EQ(std::get<CGFloat>(added->toValue()), 0.0);
    animation->setBeginTime(9);
    layer->addAnimation(*animation, "later");
    EXPECT_EQ(layer->animationForKey("later")->beginTime(), 9);
}

TEST_F(LayerAnimations, GroupsAreCopiedWithTheirChildren) {
    const auto child = CABasicAnimation::animationWithKeyPath("opacity");
    const auto group = CAAnimationGroup::animation();
    group->setAnimations({child, nullptr});
    const auto layer = makeLayer();
    layer->addAnimation(*group, "g");
    child->setDuration(77);
    const auto* added = dynamic_cast<const CAAnimationGroup*>(layer->animationForKey("g"));
    ASSERT_NE(added, nullptr);
    ASSERT_EQ(added->animations().size(), 1U);
    EXPECT_EQ(added->animations()[0]->duration(), 0);
}

TEST_F(LayerAnimations, TheSameKeyReplacesAndMovesToTheEnd) {
    const auto layer = makeLayer();
    CABasicAnimation first, second;
    first.setDuration(1);
    second.setDuration(2);
    layer->addAnimation(first, "a");
    layer->addAnimation(first, "b");
    layer->addAnimation(second, "a");
    ASSERT_EQ(layer->animations().size(), 2U);
    EXPECT_EQ(layer->animations()[0].key, "b");
    EXPECT_EQ(layer->animations()[1].key, "a");
    EXPECT_EQ(layer->animationForKey("a")->duration(), 2);
    layer->removeAnimationForKey("b");
    EXPECT_EQ(layer->animationForKey("b"), nullptr);
    layer->removeAllAnimations();
    EXPECT_TRUE(layer->animations().empty());
}

TEST_F(LayerAnimations, HaveThePlatformsDefaults) {
    const CABasicAnimation animation;
    EXPECT_EQ(animation.duration(), 0);
    EXPECT_EQ(animation.repeatCount(), 0);
    EXPECT_FALSE(animation.autoreverses());
    EXPECT_EQ(animation.fillMode(), kCAFillModeRemoved);
    EXPECT_TRUE(animation.removedOnCompletion());
    EXPECT_FALSE(animation.timingFunction().has_value());
    EXPECT_STREQ(animation.className(), "CABasicAnimation");
    EXPECT_STREQ(CAKeyframeAnimation().className(), "CAKeyframeAnimation");
    EXPECT_STREQ(CAAnimationGroup().className(), "CAAnimationGroup");
}

} // namespace
} // namespace tallyforge
