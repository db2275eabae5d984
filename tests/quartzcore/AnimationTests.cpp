#include "quartzcore/CALayer.h"
#include "quartzcore/Presentation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace tallyforge {
namespace {

constexpr double pi = std::numbers::pi;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr float forever = std::numeric_limits<float>::infinity();
constexpr double start = 100; // when the animations of these tests begin

class Animated : public testing::Test {
  protected:
    Animated() {
        layer_->setBounds({{0, 0}, {40, 20}});
        layer_->setPosition({30, 60});
    }

    void add(CAAnimation& animation, const char* key = "a") {
        animation.setBeginTime(start);
        layer_->addAnimation(animation, key);
    }
    CAPresentation at(double elapsed) const { return CAPresentationAt(*layer_, start + elapsed); }

    std::shared_ptr<CALayer> layer_ = std::make_shared<CALayer>();
};

std::shared_ptr<CABasicAnimation> fade(double from, double to, double duration) {
    auto animation = CABasicAnimation::animationWithKeyPath("opacity");
    animation->setFromValue(from);
    animation->setToValue(to);
    animation->setDuration(duration);
    return animation;
}

std::shared_ptr<CABasicAnimation> to(const char* keyPath, double value, double duration) {
    auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
    animation->setToValue(value);
    animation->setDuration(duration);
    return animation;
}

TEST_F(Animated, WithoutAnimationsTheModelShows) {
    layer_->setOpacity(0.5F);
    layer_->setCornerRadius(4);
    layer_->setBorderWidth(2);
    layer_->setAnchorPoint({0, 1});
    layer_->setTransform(CATransform3DMakeScale(2, 3, 4));
    const CAPresentation p = at(0);
    EXPECT_EQ(p.bounds, layer_->bounds());
    EXPECT_EQ(p.position, (CGPoint{30, 60}));
    EXPECT_EQ(p.anchorPoint, (CGPoint{0, 1}));
    EXPECT_EQ(p.transform, CATransform3DMakeScale(2, 3, 4));
    EXPECT_EQ(p.opacity, 0.5);
    EXPECT_EQ(p.cornerRadius, 4);
    EXPECT_EQ(p.borderWidth, 2);
}

TEST_F(Animated, RunsLinearlyAndThenTheModelShowsAgain) {
    add(*fade(0.2, 0.6, 2));
    EXPECT_EQ(at(-0.1).opacity, 1);
    EXPECT_NEAR(at(0).opacity, 0.2, 1e-12);
    EXPECT_NEAR(at(0.5).opacity, 0.3, 1e-12);
    EXPECT_NEAR(at(1.5).opacity, 0.5, 1e-12);
    EXPECT_EQ(at(2).opacity, 1);
    EXPECT_EQ(at(50).opacity, 1);
}

TEST_F(Animated, DurationZeroIsAQuarterSecond) {
    for (const double duration : {0.0, -3.0, std::numeric_limits<double>::quiet_NaN(), -infinity}) {
        add(*fade(0, 1, duration));
        EXPECT_NEAR(at(0.125).opacity, 0.5, 1e-9);
        EXPECT_NEAR(at(0.2).opacity, 0.8, 1e-9);
        EXPECT_EQ(at(0.25).opacity, 1);
    }
}

TEST_F(Animated, OddDurationsAndTimesAreSurvived) {
    for (const double duration : {1e-320, 1e-300, 1e300, infinity}) {
        for (const float repeat :
             {0.0F, 1.5F, 3e38F, forever, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
            auto animation = fade(0, 1, duration);
            animation->setRepeatCount(repeat);
            animation->setAutoreverses(true);
            animation->setCumulative(true);
            add(*animation);
            for (const double elapsed : {-1e300, -1.0, 0.0, 1.0, 1e300, infinity, -infinity})
                EXPECT_FALSE(std::isnan(at(elapsed).opacity)) << duration << ' ' << repeat << ' ' << elapsed;
            EXPECT_EQ(CAPresentationAt(*layer_, std::numeric_limits<double>::quiet_NaN()).opacity, 1);
        }
    }
}

TEST_F(Animated, TheTimingFunctionPacesIt) {
    auto animation = fade(0, 1, 4);
    animation->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn));
    add(*animation);
    EXPECT_NEAR(at(1).opacity, 0.093465, 1e-6);
    EXPECT_NEAR(at(2).opacity, 0.315357, 1e-6);
    EXPECT_NEAR(at(3).opacity, 0.621861, 1e-6);
}

TEST_F(Animated, RepeatsAndEndsInMidCycle) {
    auto animation = fade(0, 0.8, 2);
    animation->setRepeatCount(2.5F);
    animation->setFillMode(kCAFillModeForwards);
    animation->setRemovedOnCompletion(false);
    add(*animation);
    EXPECT_NEAR(at(1).opacity, 0.4, 1e-9);
    EXPECT_NEAR(at(2).opacity, 0, 1e-9);
    EXPECT_NEAR(at(3).opacity, 0.4, 1e-9);
    EXPECT_NEAR(at(4.5).opacity, 0.2, 1e-9);
    EXPECT_NEAR(at(5).opacity, 0.4, 1e-9);
    EXPECT_NEAR(at(900).opacity, 0.4, 1e-9);
}

TEST_F(Animated, LoopsForever) {
    auto animation = fade(0, 0.8, 2);
    animation->setRepeatCount(forever);
    add(*animation);
    EXPECT_NEAR(at(2e6 + 0.5).opacity, 0.2, 1e-6);
}

TEST_F(Animated, AutoreverseDoublesTheCycle) {
    auto animation = fade(0.85, 0, 2);
    animation->setAutoreverses(true);
    animation->setRepeatCount(forever);
    add(*animation);
    EXPECT_NEAR(at(0).opacity, 0.85, 1e-9);
    EXPECT_NEAR(at(1).opacity, 0.425, 1e-9);
    EXPECT_NEAR(at(2).opacity, 0, 1e-9);
    EXPECT_NEAR(at(3).opacity, 0.425, 1e-9); // one and a half runs: half the way back
    EXPECT_NEAR(at(4).opacity, 0.85, 1e-9);
    EXPECT_NEAR(at(5).opacity, 0.425, 1e-9);
}

TEST_F(Animated, AutoreverseMirrorsThePace) {
    auto animation = fade(0, 1, 1);
    animation->setAutoreverses(true);
    animation->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn));
    add(*animation);
    EXPECT_NEAR(at(0.25).opacity, 0.093465, 1e-6);
    EXPECT_NEAR(at(1.75).opacity, 0.093465, 1e-6);
}

TEST_F(Animated, AutoreverseEndsWhereItBegan) {
    auto animation = fade(0.3, 0.9, 1);
    animation->setAutoreverses(true);
    animation->setFillMode(kCAFillModeForwards);
    animation->setRemovedOnCompletion(false);
    add(*animation);
    EXPECT_NEAR(at(1.99).opacity, 0.306, 1e-9);
    EXPECT_NEAR(at(2).opacity, 0.3, 1e-9);
    EXPECT_NEAR(at(7).opacity, 0.3, 1e-9);
}

TEST_F(Animated, TheFillModeCountsOutside) {
    const struct {
        CAFillMode mode;
        double before, after;
    } cases[] = {{kCAFillModeRemoved, 1, 1},
                 {kCAFillModeForwards, 1, 0.6},
                 {kCAFillModeBackwards, 0.2, 1},
                 {kCAFillModeBoth, 0.2, 0.6}};
    for (const auto& c : cases) {
        auto animation = fade(0.2, 0.6, 2);
        animation->setFillMode(c.mode);
        animation->setRemovedOnCompletion(false);
        add(*animation);
        EXPECT_NEAR(at(-5).opacity, c.before, 1e-9);
        EXPECT_NEAR(at(2).opacity, c.after, 1e-9);
        EXPECT_NEAR(at(9).opacity, c.after, 1e-9);
        animation->setRemovedOnCompletion(true); // gone after its end whatever the fill mode
        add(*animation);
        EXPECT_NEAR(at(-5).opacity, c.before, 1e-9);
        EXPECT_EQ(at(9).opacity, 1);
    }
}

TEST_F(Animated, WithoutAFromValueItRunsFromTheLiveModel) {
    add(*to("opacity", 0, 2));
    EXPECT_NEAR(at(0).opacity, 1, 1e-9);
    EXPECT_NEAR(at(1).opacity, 0.5, 1e-9);
    layer_->setOpacity(0.5F);
    EXPECT_NEAR(at(1).opacity, 0.25, 1e-9);
}

TEST_F(Animated, WithoutAToValueItRunsToTheModel) {
    layer_->setOpacity(0.5F);
    auto animation = CABasicAnimation::animationWithKeyPath("opacity");
    animation->setFromValue(0.0);
    animation->setDuration(1);
    add(*animation);
    EXPECT_NEAR(at(0.5).opacity, 0.25, 1e-9);
    add(*CABasicAnimation::animationWithKeyPath("opacity"));
    EXPECT_EQ(at(0.1).opacity, 0.5);
}

TEST_F(Animated, AdditiveAddsToWhatIsThere) {
    auto animation = CABasicAnimation::animationWithKeyPath("position.x");
    animation->setFromValue(0.0);
    animation->setToValue(10.0);
    animation->setDuration(1);
    animation->setAdditive(true);
    add(*animation);
    EXPECT_NEAR(at(0.5).position.x, 35, 1e-9);
    EXPECT_EQ(at(0.5).position.y, 60);
    add(*animation, "second"); // on top of the first
    EXPECT_NEAR(at(0.5).position.x, 40, 1e-9);
}

TEST_F(Animated, AdditiveTransformsAreAppliedFirst) {
    layer_->setTransform(CATransform3DMakeScale(2, 2, 1));
    auto animation = CABasicAnimation::animationWithKeyPath("transform");
    animation->setFromValue(CATransform3DIdentity);
    animation->setToValue(CATransform3DMakeTranslation(8, 0, 0));
    animation->setDuration(1);
    animation->setAdditive(true);
    add(*animation);
    EXPECT_NEAR(at(0.5).transform.m41, 8, 1e-9); // 4, then doubled by the model
    EXPECT_NEAR(at(0.5).transform.m11, 2, 1e-9);
}

TEST_F(Animated, CumulativeAddsTheEndOncePerRepeat) {
    auto animation = CABasicAnimation::animationWithKeyPath("position.x");
    animation->setFromValue(1.0);
    animation->setToValue(5.0);
    animation->setDuration(1);
    animation->setCumulative(true);
    animation->setRepeatCount(3);
    animation->setFillMode(kCAFillModeForwards);
    animation->setRemovedOnCompletion(false);
    add(*animation);
    EXPECT_NEAR(at(0.5).position.x, 3, 1e-9);
    EXPECT_NEAR(at(1.5).position.x, 8, 1e-9);
    EXPECT_NEAR(at(2.5).position.x, 13, 1e-9);
    EXPECT_NEAR(at(3).position.x, 15, 1e-9);
    EXPECT_NEAR(at(30).position.x, 15, 1e-9);
}

TEST_F(Animated, CumulativeTransformsFollowEachOther) {
    auto animation = CABasicAnimation::animationWithKeyPath("transform");
    animation->setFromValue(CATransform3DIdentity);
    animation->setToValue(CATransform3DMakeTranslation(0, 6, 0));
    animation->setDuration(1);
    animation->setCumulative(true);
    animation->setRepeatCount(forever);
    add(*animation);
    EXPECT_NEAR(at(5.5).transform.m42, 33, 1e-6);
    EXPECT_NEAR(at(1000.25).transform.m42, 6001.5, 1e-6);
}

TEST_F(Animated, ASpinIsAQuarterTurnAfterAQuarter) {
    for (const double g : {0.5, 1.0, 1.5}) {
        layer_->setTransform(CATransform3DScale(CATransform3DMakeRotation(0.3, 0, 0, 1), g, g, 1));
        auto spin = to("transform.rotation.z", 2 * pi, 2);
        spin->setFromValue(0.0);
        spin->setRepeatCount(forever);
        add(*spin);
        const CATransform3D quarter = at(0.5).transform;
        EXPECT_NEAR(quarter.m11, 0, 1e-9);
        EXPECT_NEAR(quarter.m12, g, 1e-9);
        EXPECT_NEAR(quarter.m21, -g, 1e-9);
        EXPECT_NEAR(quarter.m22, 0, 1e-9);
        EXPECT_NEAR(at(4.5).transform.m12, g, 1e-9);
        spin->setToValue(-2 * pi);
        add(*spin);
        EXPECT_NEAR(at(0.5).transform.m12, -g, 1e-9);
    }
}

TEST_F(Animated, AFlipSqueezesAndGoesOn) {
    auto flip = to("transform.rotation.x", 2 * pi, 3);
    flip->setCumulative(true);
    flip->setRepeatCount(forever);
    flip->setFillMode(kCAFillModeForwards);
    layer_->setTransform(CATransform3DMakeScale(1.5, 1.5, 1));
    add(*flip);
    for (const double elapsed : {0.0, 0.5, 1.0, 1.5, 2.0, 3.5, 4.0, 7.25, 301.0}) {
        const CGAffineTransform t = CATransform3DGetAffineTransform(at(elapsed).transform);
        EXPECT_NEAR(t.a, 1.5, 1e-9) << elapsed;
        EXPECT_NEAR(t.d, 1.5 * std::cos(2 * pi * elapsed / 3), 1e-7) << elapsed;
        EXPECT_NEAR(t.b, 0, 1e-9) << elapsed;
        EXPECT_NEAR(t.c, 0, 1e-9) << elapsed;
    }
    auto other = to("transform.rotation.y", -2 * pi, 3);
    other->setCumulative(true);
    other->setRepeatCount(forever);
    add(*other);
    EXPECT_NEAR(at(0.5).transform.m11, 1.5 * std::cos(pi / 3), 1e-9);
    EXPECT_NEAR(at(0.5).transform.m22, 1.5, 1e-9);
    EXPECT_NEAR(at(3.5).transform.m11, 1.5 * std::cos(pi / 3), 1e-9);
}

TEST_F(Animated, CumulativeFlipsGoOnFromTheModelsAngle) {
    layer_->setTransform(CATransform3DMakeRotation(0.4, 0, 0, 1));
    auto flip = to("transform.rotation.z", 2 * pi, 1);
    flip->setCumulative(true);
    flip->setRepeatCount(forever);
    add(*flip);
    // From 0.4 to a whole turn, and the same once more after a whole turn.
    const double half = (0.4 + 2 * pi) / 2;
    EXPECT_NEAR(at(0.5).transform.m11, std::cos(half), 1e-9);
    EXPECT_NEAR(at(1.5).transform.m11, std::cos(half + 2 * pi), 1e-9);
    EXPECT_NEAR(at(1.5).transform.m12, std::sin(half), 1e-9);
}

TEST_F(Animated, KeyframesAreEvenlySpaced) {
    auto animation = CAKeyframeAnimation::animationWithKeyPath("opacity");
    animation->setValues({0.0, 0.9, 0.3, 0.6});
    animation->setDuration(3);
    add(*animation);
    EXPECT_NEAR(at(0.5).opacity, 0.45, 1e-9);
    EXPECT_NEAR(at(1).opacity, 0.9, 1e-9);
    EXPECT_NEAR(at(1.5).opacity, 0.6, 1e-9);
    EXPECT_NEAR(at(2.5).opacity, 0.45, 1e-9);
}

TEST_F(Animated, KeyTimesSpaceThem) {
    auto shake = CAKeyframeAnimation::animationWithKeyPath("position.x");
    shake->setValues({0.0, 8.0, -8.0, 4.0, 0.0});
    shake->setKeyTimes({0, 1.0 / 6, 0.5, 5.0 / 6, 1});
    shake->setAdditive(true);
    shake->setDuration(6);
    shake->setRepeatCount(forever);
    add(*shake);
    const std::pair<double, double> expected[] = {{0, 30}, {0.5, 34}, {1, 38},   {2, 30},  {3, 22},
                                                  {4, 28}, {5, 34},   {5.5, 32}, {6.5, 34}};
    for (const auto& [elapsed, x] : expected)
        EXPECT_NEAR(at(elapsed).position.x, x, 1e-9) << elapsed;
    EXPECT_EQ(at(1).position.y, 60);
}

TEST_F(Animated, UnusableKeyTimesAreLeftAside) {
    const std::vector<std::vector<double>> unusable = {{0, 1},
                                                       {0, 0.9, 0.4, 1},
                                                       {0, 0.5, 2, 3},
                                                       {0, std::numeric_limits<double>::quiet_NaN(), 0.5, 1},
                                                       {-1, 0, 0.5, 1}};
    for (const auto& keyTimes : unusable) {
        auto animation = CAKeyframeAnimation::animationWithKeyPath("opacity");
        animation->setValues({0.0, 0.9, 0.3, 0.6});
        animation->setKeyTimes(keyTimes);
        animation->setDuration(3);
        add(*animation);
        EXPECT_NEAR(at(0.5).opacity, 0.45, 1e-9);
        EXPECT_NEAR(at(1.5).opacity, 0.6, 1e-9);
    }
}

TEST_F(Animated, EqualKeyTimesJump) {
    auto animation = CAKeyframeAnimation::animationWithKeyPath("opacity");
    animation->setValues({0.0, 0.2, 0.8, 1.0});
    animation->setKeyTimes({0, 0.5, 0.5, 1});
    animation->setDuration(2);
    add(*animation);
    EXPECT_NEAR(at(0.999999).opacity, 0.2, 1e-5);
    EXPECT_NEAR(at(1).opacity, 0.8, 1e-9);
    EXPECT_NEAR(at(1.5).opacity, 0.9, 1e-9);
}

TEST_F(Animated, KeyTimesNeedNotFillTheWholeTime) {
    auto animation = CAKeyframeAnimation::animationWithKeyPath("opacity");
    animation->setValues({0.2, 0.6});
    animation->setKeyTimes({0.25, 0.75});
    animation->setDuration(4);
    add(*animation);
    EXPECT_NEAR(at(0.5).opacity, 0.2, 1e-9);
    EXPECT_NEAR(at(2).opacity, 0.4, 1e-9);
    EXPECT_NEAR(at(3.5).opacity, 0.6, 1e-9);
}

TEST_F(Animated, ASqueezeFillsBothWaysWhatTheModelsScale) {
    layer_->setTransform(CATransform3DMakeScale(1.5, 1.5, 1));
    auto squeeze = CAKeyframeAnimation::animationWithKeyPath("transform.scale");
    squeeze->setValues({1.0, 0.7, 1.0});
    squeeze->setKeyTimes({0, 0.5, 1});
    squeeze->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn));
    squeeze->setFillMode(kCAFillModeBoth);
    squeeze->setDuration(4);
    squeeze->setRepeatCount(forever);
    add(*squeeze);
    EXPECT_NEAR(at(-1).transform.m11, 1, 1e-9);
    EXPECT_NEAR(at(0).transform.m11, 1, 1e-9);
    // The pace is applied to the whole: at half the time .315357 of the way are done.
    EXPECT_NEAR(at(2).transform.m11, 1 - 0.3 * 0.315357 / 0.5, 1e-6);
    EXPECT_NEAR(at(3).transform.m22, 0.7 + 0.3 * (0.621861 - 0.5) / 0.5, 1e-6);
}

TEST_F(Animated, FewOrWrongValuesAreSurvived) {
    auto animation = CAKeyframeAnimation::animationWithKeyPath("opacity");
    animation->setDuration(1);
    add(*animation);
    EXPECT_EQ(at(0.5).opacity, 1);
    animation->setValues({0.25});
    add(*animation);
    EXPECT_EQ(at(0.5).opacity, 0.25);
    animation->setValues({0.25, CGPoint{1, 2}});
    add(*animation);
    EXPECT_EQ(at(0.5).opacity, 1);
    animation->setValues({CAValue{}, CAValue{}});
    add(*animation);
    EXPECT_EQ(at(0.5).opacity, 1);
    animation->setValues({std::numeric_limits<double>::quiet_NaN(), infinity});
    add(*animation);
    EXPECT_EQ(at(0.5).opacity, 1);
}

TEST_F(Animated, APathTakesTheSameTimeForEachLine) {
    const CGMutablePathRef path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, 30, 60);
    CGPathAddLineToPoint(path, nullptr, 30, 30);
    CGPathAddLineToPoint(path, nullptr, 30, 160);
    auto animation = CAKeyframeAnimation::animationWithKeyPath("position");
    animation->setPath(path);
    animation->setValues({CGPoint{900, 900}, CGPoint{901, 901}}); // the path goes first
    animation->setDuration(2);
    add(*animation);
    EXPECT_NEAR(at(0.5).position.y, 45, 1e-9);
    EXPECT_NEAR(at(1).position.y, 30, 1e-9);
    EXPECT_NEAR(at(1.5).position.y, 95, 1e-9);
    EXPECT_EQ(at(1.5).position.x, 30);
}

TEST_F(Animated, AHopEasesOut) {
    const CGMutablePathRef path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, 30, 60);
    CGPathAddLineToPoint(path, nullptr, 30, 30);
    CGPathAddLineToPoint(path, nullptr, 30, 60);
    auto hop = CAKeyframeAnimation::animationWithKeyPath("position");
    hop->setPath(path);
    hop->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseOut));
    hop->setDuration(2);
    hop->setRepeatCount(forever);
    add(*hop);
    // .378139 of the way at a quarter, .684643 at half the time.
    EXPECT_NEAR(at(0.5).position.y, 60 - 30 * 2 * 0.378139, 1e-4);
    EXPECT_NEAR(at(1).position.y, 60 - 30 * 2 * (1 - 0.684643), 1e-4);
    EXPECT_NEAR(at(3).position.y, 60 - 30 * 2 * (1 - 0.684643), 1e-4);
}

TEST_F(Animated, PathsMayCurveCloseAndStandStill) {
    auto path = CGPathCreateMutable();
    path->moveToPoint(0, 0);
    path->addCurveToPoint({0, 8}, {8, 8}, {8, 0});
    path->closeSubpath();
    auto animation = CAKeyframeAnimation::animationWithKeyPath("position");
    animation->setPath(path);
    animation->setDuration(2);
    add(*animation);
    EXPECT_NEAR(at(0.5).position.x, 4, 1e-9); // the middle of the curve
    EXPECT_NEAR(at(0.5).position.y, 6, 1e-9);
    EXPECT_NEAR(at(1.5).position.x, 4, 1e-9);
    EXPECT_NEAR(at(1.5).position.y, 0, 1e-9);

    auto still = CGPathCreateMutable();
    still->moveToPoint(5, 6);
    animation->setPath(still);
    add(*animation);
    EXPECT_EQ(at(1.2).position, (CGPoint{5, 6}));
    animation->setPath(CGPathCreateMutable());
    add(*animation);
    EXPECT_EQ(at(1.2).position, (CGPoint{30, 60}));
}

TEST_F(Animated, ABounceReplacesTheTransform) {
    layer_->setTransform(CATransform3DMakeScale(1.5, 1.5, 1));
    auto bounce = CAKeyframeAnimation::animationWithKeyPath("transform");
    std::vector<CAValue> values;
    for (const double height : {0.0, 60.0, 83.0})
        values.emplace_back(CATransform3DScale(CATransform3DMakeTranslation(0, -height, 0), 1.5, 1.5, 1));
    bounce->setValues(values);
    bounce->setDuration(2);
    add(*bounce);
    EXPECT_NEAR(at(0.5).transform.m42, -30, 1e-9);
    EXPECT_NEAR(at(1.5).transform.m42, -71.5, 1e-9);
    EXPECT_NEAR(at(1.5).transform.m11, 1.5, 1e-9);
    EXPECT_NEAR(at(1.5).transform.m22, 1.5, 1e-9);
}

TEST_F(Animated, TransformsTurnTheShortWayWithoutShrinking) {
    auto turn = CABasicAnimation::animationWithKeyPath("transform");
    turn->setFromValue(CATransform3DMakeRotation(-2.9, 0, 0, 1));
    turn->setToValue(CATransform3DMakeRotation(2.9, 0, 0, 1));
    turn->setDuration(2);
    add(*turn);
    const CATransform3D half = at(1).transform; // through the half turn
    EXPECT_NEAR(half.m11, -1, 1e-9);
    EXPECT_NEAR(half.m12, 0, 1e-9);
    turn->setFromValue(CATransform3DIdentity);
    turn->setToValue(CATransform3DScale(CATransform3DMakeRotation(pi / 2, 0, 0, 1), 3, 3, 1));
    add(*turn);
    EXPECT_NEAR(at(1).transform.m11, 2 * std::cos(pi / 4), 1e-9);
    EXPECT_NEAR(at(1).transform.m12, 2 * std::sin(pi / 4), 1e-9);
    turn->setToValue(CATransform3DMakeRotation(2, 1, 0, 0));
    add(*turn);
    EXPECT_NEAR(at(1).transform.m22, std::cos(1), 1e-9);
    EXPECT_NEAR(at(1).transform.m23, std::sin(1), 1e-9);
}

std::shared_ptr<CAAnimationGroup> hopAndSpin(double d) {
    const CGMutablePathRef path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, 30, 60);
    CGPathAddLineToPoint(path, nullptr, 30, 30);
    CGPathAddLineToPoint(path, nullptr, 30, 60);
    auto hop = CAKeyframeAnimation::animationWithKeyPath("position");
    hop->setPath(path);
    hop->setDuration(d);
    hop->setRepeatCount(forever);
    auto spin = to("transform.rotation.z", 2 * pi, d);
    spin->setCumulative(true);
    spin->setRepeatCount(forever);
    auto group = CAAnimationGroup::animation();
    group->setAnimations({hop, spin});
    group->setDuration(d);
    group->setRepeatCount(forever);
    return group;
}

TEST_F(Animated, AGroupRunsItsChildrenTogether) {
    layer_->setTransform(CATransform3DMakeScale(1.2, 1.2, 1));
    add(*hopAndSpin(2));
    for (const double cycle : {0.0, 2.0, 8.0}) {
        const CAPresentation quarter = at(cycle + 0.5);
        EXPECT_NEAR(quarter.position.y, 45, 1e-9);
        EXPECT_NEAR(quarter.transform.m11, 0, 1e-9);
        EXPECT_NEAR(quarter.transform.m12, 1.2, 1e-9);
        EXPECT_NEAR(at(cycle + 1).position.y, 30, 1e-9);
        EXPECT_NEAR(at(cycle + 1.5).position.y, 45, 1e-9);
    }
}

TEST_F(Animated, AGroupClipsAndChildrenRepeatWithinIt) {
    auto slow = fade(0, 1, 10), quick = to("position.x", 130, 1);
    quick->setRepeatCount(forever);
    auto late = to("position.y", 160, 1);
    late->setBeginTime(2);
    auto group = CAAnimationGroup::animation();
    group->setAnimations({slow, quick, late});
    group->setDuration(4);
    group->setRepeatCount(2);
    add(*group);
    EXPECT_NEAR(at(3).opacity, 0.3, 1e-9);
    EXPECT_NEAR(at(4.5).opacity, 0.05, 1e-9); // begins again before it is done
    EXPECT_NEAR(at(2.5).position.x, 80, 1e-9);
    EXPECT_EQ(at(1.5).position.y, 60);
    EXPECT_NEAR(at(2.5).position.y, 110, 1e-9);
    EXPECT_EQ(at(3.5).position.y, 60); // over, and it fills nothing
    EXPECT_NEAR(at(6.5).position.y, 110, 1e-9);
    EXPECT_EQ(at(8).opacity, 1);
}

TEST_F(Animated, InAGroupNothingIsRemovedEarly) {
    auto child = fade(0.2, 0.6, 1);
    child->setFillMode(kCAFillModeForwards); // removed on completion, but groups keep their children
    auto group = CAAnimationGroup::animation();
    group->setAnimations({child});
    group->setDuration(4);
    add(*group);
    EXPECT_NEAR(at(3).opacity, 0.6, 1e-9);
}

TEST_F(Animated, AFilledGroupHoldsTheLastMoment) {
    auto group = CAAnimationGroup::animation();
    group->setAnimations({fade(0.2, 0.6, 2)});
    group->setDuration(2);
    group->setFillMode(kCAFillModeForwards);
    group->setRemovedOnCompletion(false);
    add(*group);
    EXPECT_NEAR(at(5).opacity, 0.6, 1e-9);
}

TEST_F(Animated, AGroupsPaceAndReverseReachTheChildren) {
    auto group = CAAnimationGroup::animation();
    group->setAnimations({fade(0, 1, 2)});
    group->setDuration(2);
    group->setAutoreverses(true);
    group->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn));
    add(*group);
    EXPECT_NEAR(at(1).opacity, 0.315357, 1e-6);
    EXPECT_NEAR(at(3.5).opacity, 0.093465, 1e-6);
}

TEST_F(Animated, DeepGroupsEnd) {
    auto group = CAAnimationGroup::animation();
    group->setDuration(1);
    group->setAnimations({fade(0, 0, 1)});
    for (int i = 0; i < 100; ++i) {
        auto outer = CAAnimationGroup::animation();
        outer->setDuration(1);
        outer->setAnimations({group});
        group = outer;
    }
    add(*group);
    EXPECT_EQ(at(0.5).opacity, 1); // too deep to count
    EXPECT_FALSE(CAIsAnimating(*layer_, start + 0.5));
}

TEST_F(Animated, LaterAnimationsGoOnTop) {
    add(*fade(0.1, 0.1, 1), "first");
    add(*fade(0.7, 0.7, 1), "second");
    EXPECT_NEAR(at(0.5).opacity, 0.7, 1e-9);
    add(*fade(0.3, 0.3, 1), "first");
    EXPECT_NEAR(at(0.5).opacity, 0.3, 1e-9);
}

TEST_F(Animated, IsAnimatingUntilTheLastEnd) {
    EXPECT_FALSE(CAIsAnimating(*layer_, start));
    const auto root = std::make_shared<CALayer>();
    root->addSublayer(layer_);
    add(*fade(0, 1, 2));
    EXPECT_TRUE(CAIsAnimating(*root, start - 5)); // it will begin
    EXPECT_TRUE(CAIsAnimating(*root, start + 1.9));
    EXPECT_FALSE(CAIsAnimating(*root, start + 2));
    auto loop = fade(0, 1, 2);
    loop->setRepeatCount(forever);
    add(*loop);
    EXPECT_TRUE(CAIsAnimating(*root, start + 1e9));
    layer_->setHidden(true);
    EXPECT_FALSE(CAIsAnimating(*root, start + 1));
    layer_->setHidden(false);
    auto unknown = to("colour of the sky", 1, 1);
    unknown->setRepeatCount(forever);
    add(*unknown);
    EXPECT_FALSE(CAIsAnimating(*root, start + 0.5));
}

TEST_F(Animated, FinishedOnesAreTakenAwayUnlessTheyStay) {
    const auto root = std::make_shared<CALayer>();
    root->addSublayer(layer_);
    add(*fade(0, 1, 1), "short");
    add(*fade(0, 1, 3), "long");
    auto staying = fade(0, 1, 1);
    staying->setRemovedOnCompletion(false);
    add(*staying, "staying");
    add(*fade(0, 1, 1), "short too");
    CARemoveFinishedAnimations(*root, start + 0.9);
    EXPECT_EQ(layer_->animations().size(), 4U);
    CARemoveFinishedAnimations(*root, start + 1);
    ASSERT_EQ(layer_->animations().size(), 2U);
    EXPECT_EQ(layer_->animations()[0].key, "long");
    EXPECT_EQ(layer_->animations()[1].key, "staying");
}

} // namespace
} // namespace tallyforge
