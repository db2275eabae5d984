#include "preview/animation/MarkAnimation.h"

#include "PreviewFixture.h"

#include <limits>

namespace tallyforge::test {
namespace {

constexpr CGFloat kTurn = 6.2831855f;
constexpr float kForever = std::numeric_limits<float>::infinity();

// A layer 30 x 20 at (40, 50), animated with a duration of 2.5, a scale of 1.5 and an alpha of 0.85.
class AnimationTest : public PreviewFixture {
  protected:
    AnimationTest() {
        layer_->setBounds(CGRectMake(0, 0, 30, 20));
        layer_->setPosition(CGPointMake(40, 50));
    }
    void apply(int32_t type, MarkKind kind = MarkKind::closeBox, float scale = 1.5f) const {
        ApplyMarkAnimation(layer_, type, 2.5f, scale, 0.85f, kind);
    }
    const CAAnimation* animation() const { return layer_->animationForKey("badgeAnim"); }
    const CABasicAnimation& basic() const { return dynamic_cast<const CABasicAnimation&>(*animation()); }
    const CAKeyframeAnimation& keyframes() const {
        return dynamic_cast<const CAKeyframeAnimation&>(*animation());
    }
    /// One cycle of 2.5 s for ever, and all else as the platform has it.
    static void expectPlain(const CAAnimation& a, CAFillMode fill = kCAFillModeRemoved,
                            std::string_view timing = "linear", bool autoreverses = false) {
        EXPECT_EQ(a.duration(), 2.5);
        EXPECT_EQ(a.repeatCount(), kForever);
        EXPECT_EQ(a.autoreverses(), autoreverses);
        EXPECT_EQ(a.fillMode(), fill);
        EXPECT_EQ(a.timingFunction() ? a.timingFunction()->name() : "linear", timing);
    }
    static void expectProperty(const CAPropertyAnimation& a, std::string_view keyPath,
                               bool cumulative = false, bool additive = false) {
        EXPECT_EQ(a.keyPath(), keyPath);
        EXPECT_EQ(a.cumulative(), cumulative);
        EXPECT_EQ(a.additive(), additive);
    }
    static CGFloat numberOf(const CAValue& value) { return std::get<CGFloat>(value); }
    static bool isNothing(const CAValue& value) { return std::holds_alternative<std::monostate>(value); }
    /// From (40, 50) 30 up and back.
    static void expectHop(const CAAnimation& animation) {
        auto& hop = dynamic_cast<const CAKeyframeAnimation&>(animation);
        expectPlain(hop, kCAFillModeRemoved, "easeOut");
        expectProperty(hop, "position");
        EXPECT_TRUE(hop.values().empty());
        EXPECT_TRUE(hop.keyTimes().empty());
        ASSERT_TRUE(hop.path());
        const auto& elements = hop.path()->elements();
        ASSERT_EQ(elements.size(), 3u);
        EXPECT_EQ(elements[0].verb, CGPath::Verb::move);
        EXPECT_EQ(elements[0].points[0], CGPointMake(40, 50));
        EXPECT_EQ(elements[1].verb, CGPath::Verb::line);
        EXPECT_EQ(elements[1].points[0], CGPointMake(40, 20));
        EXPECT_EQ(elements[2].verb, CGPath::Verb::line);
        EXPECT_EQ(elements[2].points[0], CGPointMake(40, 50));
    }

    std::shared_ptr<CALayer> layer_ = std::make_shared<CALayer>();
};

TEST_F(AnimationTest, NoneStopsAllThatRuns) {
    apply(1);
    layer_->addAnimation(*CABasicAnimation::animationWithKeyPath("opacity"), "another");
    ASSERT_EQ(layer_->animations().size(), 2u);
    apply(0);
    EXPECT_TRUE(layer_->animations().empty());
}

TEST_F(AnimationTest, UnknownTypesLeaveAllThatRuns) {
    apply(1);
    const CAAnimation* running = animation();
    for (int32_t type :
         {13, -1, 100, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()}) {
        apply(type);
        advance(1);
        ASSERT_EQ(layer_->animations().size(), 1u) << type;
        EXPECT_EQ(animation(), running) << type;
    }
}

TEST_F(AnimationTest, SpinClockwise) {
    apply(1);
    expectPlain(basic());
    expectProperty(basic(), "transform.rotation.z");
    EXPECT_EQ(numberOf(basic().fromValue()), 0);
    EXPECT_EQ(numberOf(basic().toValue()), kTurn);
}

TEST_F(AnimationTest, SpinAnticlockwise) {
    apply(2);
    expectPlain(basic());
    expectProperty(basic(), "transform.rotation.z");
    EXPECT_EQ(numberOf(basic().fromValue()), 0);
    EXPECT_EQ(numberOf(basic().toValue()), -kTurn);
}

TEST_F(AnimationTest, FlipAboutTheXAxis) {
    apply(3);
    expectPlain(basic(), kCAFillModeForwards);
    expectProperty(basic(), "transform.rotation.x", true);
    EXPECT_TRUE(isNothing(basic().fromValue()));
    EXPECT_EQ(numberOf(basic().toValue()), kTurn);
}

TEST_F(AnimationTest, FlipAboutTheYAxis) {
    apply(4);
    expectPlain(basic(), kCAFillModeForwards);
    expectProperty(basic(), "transform.rotation.y", true);
    EXPECT_TRUE(isNothing(basic().fromValue()));
    EXPECT_EQ(numberOf(basic().toValue()), -kTurn);
}

TEST_F(AnimationTest, Hop) {
    apply(5);
    ASSERT_TRUE(animation());
    expectHop(*animation());
}

TEST_F(AnimationTest, BounceKeepsTheSizeOfACloseBoxAndADot) {
    // In 128ths of the height, which is 20.
    const int heights[] = {0,  60, 83, 100, 114, 124, 128, 128, 124, 114, 100,
                           83, 60, 32, 0,   0,   18,  28,  32,  28,  18,  0};
    for (MarkKind kind : {MarkKind::closeBox, MarkKind::newDot, MarkKind::badge}) {
        apply(6, kind);
        expectPlain(keyframes(), kCAFillModeForwards);
        expectProperty(keyframes(), "transform");
        EXPECT_TRUE(keyframes().keyTimes().empty());
        EXPECT_FALSE(keyframes().path());
        ASSERT_EQ(keyframes().values().size(), 22u);
        for (size_t i = 0; i < 22; ++i) {
            auto t = std::get<CATransform3D>(keyframes().values()[i]);
            EXPECT_NEAR(t.m42, -20 * heights[i] / 128.0, 1e-5) << i;
            CGFloat scale = kind == MarkKind::badge ? 1 : 1.5;
            CATransform3D rest = CATransform3DMakeScale(scale, scale, 1);
            rest.m42 = t.m42;
            EXPECT_EQ(t, rest) << i;
        }
    }
}

TEST_F(AnimationTest, BounceGoesByTheFrameNotTheBounds) {
    layer_->setAffineTransform(CGAffineTransformMakeScale(2, 2));
    apply(6, MarkKind::badge);
    EXPECT_NEAR(std::get<CATransform3D>(keyframes().values()[7]).m42, -40, 1e-5);
}

TEST_F(AnimationTest, HopAndSpin) {
    apply(7);
    auto& group = dynamic_cast<const CAAnimationGroup&>(*animation());
    expectPlain(group);
    ASSERT_EQ(group.animations().size(), 2u);
    expectHop(*group.animations()[0]);
    auto& spin = dynamic_cast<const CABasicAnimation&>(*group.animations()[1]);
    expectPlain(spin);
    expectProperty(spin, "transform.rotation.z", true);
    EXPECT_TRUE(isNothing(spin.fromValue()));
    EXPECT_EQ(numberOf(spin.toValue()), kTurn);
}

TEST_F(AnimationTest, PulsesComeAFifthOfASecondLater) {
    for (auto [type, end] : {std::pair(8, 1.5f + 1.5f * 0.3f), std::pair(9, 1.5f + 1.5f * -0.3f)}) {
        layer_->removeAllAnimations();
        int64_t now = clock_.nanoseconds();
        apply(type);
        EXPECT_FALSE(animation());
        EXPECT_EQ(MainQueue::main().nextDeadline(), now + 200'000'000);
        MainQueue::main().runUntil(clock_, now + 199'999'999);
        EXPECT_FALSE(animation());
        MainQueue::main().runUntil(clock_, now + 200'000'000);
        ASSERT_TRUE(animation());
        expectPlain(basic(), kCAFillModeRemoved, "linear", true);
        expectProperty(basic(), "transform.scale");
        EXPECT_EQ(numberOf(basic().fromValue()), 1.5f);
        EXPECT_EQ(numberOf(basic().toValue()), end);
        EXPECT_NEAR(basic().beginTime(), CGFloat(now) / 1e9 + 0.2, 1e-9);
    }
}

TEST_F(AnimationTest, PulsesOfAScaleOfOne) {
    apply(8, MarkKind::badge, 1);
    advance(0.2);
    EXPECT_EQ(numberOf(basic().fromValue()), 1);
    EXPECT_EQ(numberOf(basic().toValue()), 1.3f);
    apply(9, MarkKind::badge, 1);
    advance(0.2);
    EXPECT_EQ(numberOf(basic().fromValue()), 1);
    EXPECT_EQ(numberOf(basic().toValue()), 1.f + 1.f * -0.3f);
}

TEST_F(AnimationTest, ARemovedMarkStillGetsItsPulse) {
    auto made = cell({{"badgeanimtype", number(8)}});
    std::weak_ptr<CALayer> old = made->badgeView()->layer();
    made->reloadBadge();
    ASSERT_FALSE(old.expired()) << "the waiting job holds the layer";
    auto layer = old.lock();
    EXPECT_EQ(layer->superlayer(), nullptr);
    EXPECT_FALSE(layer->animationForKey("badgeAnim"));
    advance(0.2);
    EXPECT_TRUE(layer->animationForKey("badgeAnim"));
    EXPECT_TRUE(made->badgeView()->layer()->animationForKey("badgeAnim"));
    layer.reset();
    EXPECT_TRUE(old.expired());
}

TEST_F(AnimationTest, APulseIsNotCancelledByNone) {
    apply(8);
    apply(0);
    advance(0.2);
    EXPECT_TRUE(animation());
}

TEST_F(AnimationTest, Squeeze) {
    apply(10);
    expectPlain(keyframes(), kCAFillModeBoth, "easeIn");
    expectProperty(keyframes(), "transform.scale");
    ASSERT_EQ(keyframes().values().size(), 3u);
    EXPECT_EQ(numberOf(keyframes().values()[0]), 1);
    EXPECT_NEAR(numberOf(keyframes().values()[1]), 0.7, 1e-7);
    EXPECT_EQ(numberOf(keyframes().values()[2]), 1);
    EXPECT_EQ(keyframes().keyTimes(), (std::vector<CGFloat>{0, 0.5, 1}));
}

TEST_F(AnimationTest, Blink) {
    apply(11);
    expectPlain(basic(), kCAFillModeRemoved, "linear", true);
    expectProperty(basic(), "opacity");
    EXPECT_EQ(numberOf(basic().fromValue()), 0.85f);
    EXPECT_EQ(numberOf(basic().toValue()), 0);
}

TEST_F(AnimationTest, Shake) {
    apply(12);
    expectPlain(keyframes());
    expectProperty(keyframes(), "position.x", false, true);
    const CGFloat values[] = {0, 8, -8, 4, 0};
    const CGFloat times[] = {0, 1.0 / 6, 0.5, 5.0 / 6, 1};
    ASSERT_EQ(keyframes().values().size(), 5u);
    ASSERT_EQ(keyframes().keyTimes().size(), 5u);
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(numberOf(keyframes().values()[i]), values[i]);
        EXPECT_NEAR(keyframes().keyTimes()[i], times[i], 1e-7);
    }
}

TEST_F(AnimationTest, EveryTypeIsAddedUnderTheOneKey) {
    for (int32_t type = 1; type <= 12; ++type) {
        apply(type);
        advance(0.2);
        ASSERT_EQ(layer_->animations().size(), 1u) << type;
        EXPECT_EQ(layer_->animations()[0].key, "badgeAnim") << type;
    }
}

TEST_F(AnimationTest, ADurationOfNothingIsPassedOn) {
    ApplyMarkAnimation(layer_, 1, 0, 1, 1, MarkKind::badge);
    EXPECT_EQ(basic().duration(), 0);
    ApplyMarkAnimation(layer_, 1, 0.1f, 1, 1, MarkKind::badge);
    EXPECT_EQ(basic().duration(), double(0.1f)) << "widened, not read again";
}

TEST_F(AnimationTest, TypesAreTruncatedTowardsZero) {
    EXPECT_TRUE(cell({{"badgeanimtype", number(-0.9f)}})->badgeView()->layer()->animations().empty());
    auto made =
        cell({{"newdotanimtype", text("12.7x")}, {"closeboxanimtype", PropertyList::doubleNumber(2.99)}});
    auto shake = made->newDotView()->layer()->animationForKey("badgeAnim");
    ASSERT_TRUE(shake);
    EXPECT_EQ(dynamic_cast<const CAKeyframeAnimation&>(*shake).keyPath(), "position.x");
    auto spin = made->closeBoxView()->layer()->animationForKey("badgeAnim");
    ASSERT_TRUE(spin);
    EXPECT_EQ(numberOf(dynamic_cast<const CABasicAnimation&>(*spin).toValue()), -kTurn);
    EXPECT_TRUE(cell({{"badgeanimtype", number(1e20f)}})->badgeView()->layer()->animations().empty());
    // An integer beyond 32 bits is not cut to its low bits: it is read as a float number.
    EXPECT_TRUE(cell({{"badgeanimtype", PropertyList::integer((int64_t(1) << 32) + 1)}})
                    ->badgeView()
                    ->layer()
                    ->animations()
                    .empty());
}

} // namespace
} // namespace tallyforge::test
