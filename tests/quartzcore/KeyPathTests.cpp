#include "quartzcore/CALayer.h"
#include "quartzcore/Presentation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace tallyforge {
namespace {

constexpr double pi = std::numbers::pi;

// Scaled 2 and 3, turned by 0.5, moved by 7 and 8.
CATransform3D modelTransform() {
    CATransform3D t = CATransform3DScale(CATransform3DMakeRotation(0.5, 0, 0, 1), 2, 3, 1);
    t.m41 = 7;
    t.m42 = 8;
    return t;
}

std::shared_ptr<CALayer> makeLayer() {
    auto layer = std::make_shared<CALayer>();
    layer->setBounds({{1, 2}, {40, 20}});
    layer->setPosition({30, 60});
    layer->setTransform(modelTransform());
    return layer;
}

// What the layer shows while the key path is held at the value.
CAPresentation held(const CALayer& model, const char* keyPath, const CAValue& value) {
    CALayer layer;
    layer.setBounds(model.bounds());
    layer.setPosition(model.position());
    layer.setTransform(model.transform());
    const auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
    animation->setFromValue(value);
    animation->setToValue(value);
    animation->setBeginTime(1);
    animation->setDuration(1);
    layer.addAnimation(*animation, "k");
    return CAPresentationAt(layer, 1.5);
}

// What is shown halfway from the model's value to the value.
CAPresentation halfway(const char* keyPath, const CAValue& value) {
    const auto layer = makeLayer();
    const auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
    animation->setToValue(value);
    animation->setBeginTime(1);
    animation->setDuration(1);
    layer->addAnimation(*animation, "k");
    return CAPresentationAt(*layer, 1.5);
}

TEST(KeyPaths, ReachThePlainValues) {
    const auto layer = makeLayer();
    EXPECT_EQ(held(*layer, "position", CGPoint{5, 6}).position, (CGPoint{5, 6}));
    EXPECT_EQ(held(*layer, "position.x", 5.0).position, (CGPoint{5, 60}));
    EXPECT_EQ(held(*layer, "position.y", 5.0).position, (CGPoint{30, 5}));
    EXPECT_EQ(held(*layer, "anchorPoint", CGPoint{0, 1}).anchorPoint, (CGPoint{0, 1}));
    EXPECT_EQ(held(*layer, "opacity", 0.25).opacity, 0.25);
    EXPECT_EQ(held(*layer, "cornerRadius", 3.0).cornerRadius, 3);
    EXPECT_EQ(held(*layer, "borderWidth", 2.0).borderWidth, 2);
    EXPECT_EQ(held(*layer, "bounds.size.width", 9.0).bounds, (CGRect{{1, 2}, {9, 20}}));
    EXPECT_EQ(held(*layer, "bounds.size.height", 9.0).bounds, (CGRect{{1, 2}, {40, 9}}));
    EXPECT_EQ(held(*layer, "bounds.size", CGPoint{3, 4}).bounds, (CGRect{{1, 2}, {3, 4}}));
    EXPECT_EQ(held(*layer, "bounds.origin", CGPoint{3, 4}).bounds, (CGRect{{3, 4}, {40, 20}}));
    EXPECT_EQ(held(*layer, "transform", CATransform3DMakeScale(4, 5, 6)).transform,
              CATransform3DMakeScale(4, 5, 6));
}

TEST(KeyPaths, SetOneComponentOfTheTransformOnly) {
    const auto layer = makeLayer();
    for (const char* keyPath : {"transform.rotation.z", "transform.rotation"}) {
        const CATransform3D t = held(*layer, keyPath, pi / 2).transform;
        EXPECT_NEAR(t.m11, 0, 1e-12);
        EXPECT_NEAR(t.m12, 2, 1e-12);
        EXPECT_NEAR(t.m21, -3, 1e-12);
        EXPECT_NEAR(t.m22, 0, 1e-12);
        EXPECT_EQ(t.m41, 7);
        EXPECT_EQ(t.m42, 8);
    }
    const CATransform3D scaled = held(*layer, "transform.scale", 10.0).transform;
    EXPECT_NEAR(scaled.m11, 10 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(scaled.m12, 10 * std::sin(0.5), 1e-12);
    EXPECT_NEAR(scaled.m22, 10 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(scaled.m33, 10, 1e-12);
    EXPECT_EQ(scaled.m41, 7);
    const CATransform3D wide = held(*layer, "transform.scale.x", 10.0).transform;
    EXPECT_NEAR(wide.m11, 10 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(wide.m22, 3 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(held(*layer, "transform.scale.y", 10.0).transform.m22, 10 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(held(*layer, "transform.scale.z", 10.0).transform.m33, 10, 1e-12);
    EXPECT_EQ(held(*layer, "transform.translation.x", 1.0).transform.m41, 1);
    EXPECT_EQ(held(*layer, "transform.translation.y", 1.0).transform.m42, 1);
    EXPECT_EQ(held(*layer, "transform.translation.z", 1.0).transform.m43, 1);
    const CATransform3D moved = held(*layer, "transform.translation", CGPoint{1, 2}).transform;
    EXPECT_EQ(moved.m41, 1);
    EXPECT_EQ(moved.m42, 2);
    EXPECT_NEAR(moved.m11, 2 * std::cos(0.5), 1e-12);
}

TEST(KeyPaths, AFlipTurnsTheScaledLayerBeforeItsRotation) {
    // About its own x axis by 60 degrees: half as high, then turned by 0.5.
    const CATransform3D t = held(*makeLayer(), "transform.rotation.x", pi / 3).transform;
    EXPECT_NEAR(t.m11, 2 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(t.m12, 2 * std::sin(0.5), 1e-12);
    EXPECT_NEAR(t.m21, -1.5 * std::sin(0.5), 1e-12);
    EXPECT_NEAR(t.m22, 1.5 * std::cos(0.5), 1e-12);
    const CATransform3D u = held(*makeLayer(), "transform.rotation.y", pi / 3).transform;
    EXPECT_NEAR(u.m11, 1 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(u.m12, 1 * std::sin(0.5), 1e-12);
    EXPECT_NEAR(u.m22, 3 * std::cos(0.5), 1e-12);
}

TEST(KeyPaths, RunFromTheModelsComponent) {
    EXPECT_NEAR(halfway("transform.rotation.z", 1.5).transform.m11, 2 * std::cos(1.0), 1e-12);
    EXPECT_NEAR(halfway("transform.scale.x", 4.0).transform.m11, 3 * std::cos(0.5), 1e-12);
    // The mean of 2, 3 and 1 is 2; halfway to 6 are 4.
    EXPECT_NEAR(halfway("transform.scale", 6.0).transform.m11, 4 * std::cos(0.5), 1e-12);
    EXPECT_NEAR(halfway("transform.translation", CGPoint{9, 0}).transform.m41, 8, 1e-12);
    EXPECT_EQ(halfway("bounds.size", CGPoint{60, 40}).bounds.size, (CGSize{50, 30}));
    EXPECT_EQ(halfway("position", CGPoint{40, 80}).position, (CGPoint{35, 70}));
}

TEST(KeyPaths, ComponentsOfSeveralAnimationsMeet) {
    const auto layer = std::make_shared<CALayer>();
    const auto hold = [&layer](const char* keyPath, double value) {
        const auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
        animation->setFromValue(value);
        animation->setToValue(value);
        animation->setBeginTime(1);
        animation->setDuration(1);
        layer->addAnimation(*animation, keyPath);
    };
    hold("transform.rotation.y", 2.0); // beyond a quarter turn, where taking apart would answer otherwise
    hold("transform.rotation.z", 0.5);
    hold("transform.scale", 3.0);
    const CATransform3D expected = CATransform3DConcat(
        CATransform3DConcat(CATransform3DMakeScale(3, 3, 3), CATransform3DMakeRotation(2, 0, 1, 0)),
        CATransform3DMakeRotation(0.5, 0, 0, 1));
    const CATransform3D t = CAPresentationAt(*layer, 1.5).transform;
    EXPECT_NEAR(t.m11, expected.m11, 1e-12);
    EXPECT_NEAR(t.m12, expected.m12, 1e-12);
    EXPECT_NEAR(t.m21, expected.m21, 1e-12);
    EXPECT_NEAR(t.m22, expected.m22, 1e-12);
}

TEST(KeyPaths, TheWholeTransformReplacesEarlierComponents) {
    const auto layer = makeLayer();
    const auto hold = [&layer](const char* keyPath, const CAValue& value) {
        const auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
        animation->setFromValue(value);
        animation->setToValue(value);
        animation->setBeginTime(1);
        animation->setDuration(1);
        layer->addAnimation(*animation, keyPath);
    };
    hold("transform.scale", 5.0);
    hold("transform", CATransform3DMakeTranslation(1, 2, 3));
    EXPECT_EQ(CAPresentationAt(*layer, 1.5).transform, CATransform3DMakeTranslation(1, 2, 3));
    hold("transform.scale.x", 4.0); // and components change the whole one again
    EXPECT_EQ(CAPresentationAt(*layer, 1.5).transform.m41, 1);
    EXPECT_EQ(CAPresentationAt(*layer, 1.5).transform.m11, 4);
    EXPECT_EQ(CAPresentationAt(*layer, 1.5).transform.m22, 1);
}

TEST(KeyPaths, UnknownOnesAndWrongKindsChangeNothing) {
    const auto layer = makeLayer();
    const auto expectModel = [&layer](const CAPresentation& p) {
        EXPECT_EQ(p.position, layer->position());
        EXPECT_EQ(p.bounds, layer->bounds());
        EXPECT_EQ(p.opacity, 1);
        EXPECT_NEAR(p.transform.m11, layer->transform().m11, 1e-12);
        EXPECT_NEAR(p.transform.m21, layer->transform().m21, 1e-12);
    };
    for (const char* keyPath :
         {"", "x", "position.z", "transform.", "transform.rotation.w", "Opacity", "opacity "}) {
        expectModel(held(*layer, keyPath, 0.5));
        expectModel(halfway(keyPath, 0.5));
    }
    expectModel(held(*layer, "position", 5.0));
    expectModel(held(*layer, "position.x", CGPoint{5, 5}));
    expectModel(held(*layer, "transform", 5.0));
    expectModel(held(*layer, "opacity", CATransform3DIdentity));
    expectModel(held(*layer, "transform.scale", CGPoint{5, 5}));
    expectModel(halfway("opacity", CGPoint{5, 5}));
}

TEST(KeyPaths, AZeroScaleStaysZero) {
    const auto layer = makeLayer();
    layer->setTransform(CATransform3DMakeScale(0, 0, 1));
    const CATransform3D t = held(*layer, "transform.rotation.z", 1.0).transform;
    EXPECT_EQ(t.m11, 0);
    EXPECT_EQ(t.m12, 0);
    EXPECT_EQ(t.m22, 0);
    // And grows again when it is the scale that is animated.
    EXPECT_NEAR(held(*layer, "transform.scale", 2.0).transform.m11, 2, 1e-12);
}

} // namespace
} // namespace tallyforge
