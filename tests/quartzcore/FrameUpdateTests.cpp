// Which areas are painted again, by hand.

#include "foundation/Dispatch.h"
#include "quartzcore/FrameUpdate.h"
#include "rastergraphics/RasterGraphics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyforge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const CGColor red{1, 0, 0, 1};

std::shared_ptr<CALayer> box(CGRect frame) {
    auto layer = std::make_shared<CALayer>();
    layer->setFrame(frame);
    layer->setBackgroundColor(red);
    return layer;
}

class FrameUpdate : public testing::Test {
  protected:
    FrameUpdate() {
        Graphics::install(MakeRasterGraphics());
        root_->addSublayer(box_);
        root_->addSublayer(other_);
        update();
    }
    ~FrameUpdate() override { Graphics::install(nullptr); }

    std::vector<CGRect> update(double seconds = 0) {
        return updater_.update(*root_, seconds, {2, 0, 0, 2, 0, 0}, bitmap_);
    }
    std::shared_ptr<CALayer> root_ = box({{0, 0}, {200, 200}});
    std::shared_ptr<CALayer> box_ = box({{10, 20}, {10, 10}});
    std::shared_ptr<CALayer> other_ = box({{150, 150}, {20, 10}});
    CGImage bitmap_{400, 400};
    CAFrameUpdater updater_;
};

// At 2 pixels a point.
const CGRect boxPixels{{20, 40}, {20, 20}};
const CGRect otherPixels{{300, 300}, {40, 20}};
const CGRect allPixels{{0, 0}, {400, 400}};

TEST_F(FrameUpdate, PaintsNothingWhenNothingHasChanged) {
    EXPECT_THAT(update(), IsEmpty());
    EXPECT_THAT(update(1), IsEmpty());
}

TEST_F(FrameUpdate, PaintsNothingWhenValuesAreSetThatAreThere) {
    const uint64_t revision = root_->revision();
    box_->setFrame(box_->frame());
    box_->setBackgroundColor(red);
    box_->setHidden(false);
    box_->setTransform({});
    EXPECT_EQ(root_->revision(), revision);
    EXPECT_THAT(update(), IsEmpty());
}

TEST_F(FrameUpdate, PaintsNothingWhenAChangeWasTakenBack) {
    box_->setPosition({90, 90});
    box_->setPosition({15, 25});
    box_->setHidden(true);
    box_->setHidden(false);
    EXPECT_THAT(update(), IsEmpty());
}

TEST_F(FrameUpdate, PaintsWhereALayerWasAndWhereItIs) {
    box_->setPosition({105, 25}); // 90 points to the right
    EXPECT_THAT(update(), UnorderedElementsAre(boxPixels, CGRect{{200, 40}, {20, 20}}));
    EXPECT_THAT(update(), IsEmpty());
}

TEST_F(FrameUpdate, PaintsALayerThatLooksDifferent) {
    box_->setBackgroundColor(CGColor{0, 1, 0, 1});
    EXPECT_THAT(update(), ElementsAre(boxPixels));
    EXPECT_EQ(bitmap_.pixel(25, 45), 0xFF00FF00U);
    box_->setBorderWidth(1);
    EXPECT_THAT(update(), ElementsAre(boxPixels));
    box_->setOpacity(0.5F);
    EXPECT_THAT(update(), ElementsAre(boxPixels));
}

TEST_F(FrameUpdate, TakesFractionsOfPixelsAsWholeOnes) {
    box_->setPosition({15.2, 25.2}); // from 20.4 to 40.4 and from 40.4 to 60.4 in pixels
    EXPECT_THAT(update(), ElementsAre(CGRect{{20, 40}, {21, 21}}));
}

TEST_F(FrameUpdate, PaintsWhatComesAndGoes) {
    box_->removeFromSuperlayer();
    EXPECT_THAT(update(), ElementsAre(boxPixels));
    EXPECT_EQ(bitmap_.pixel(25, 45), 0xFFFF0000U);
    root_->addSublayer(box_);
    EXPECT_THAT(update(), ElementsAre(boxPixels));
    box_->setHidden(true);
    EXPECT_THAT(update(), ElementsAre(boxPixels));
    box_->setHidden(false);
    EXPECT_THAT(update(), ElementsAre(boxPixels));
    const auto replacement = box(box_->frame()); // the same look in another layer
    box_->removeFromSuperlayer();
    root_->addSublayer(replacement);
    EXPECT_THAT(update(), ElementsAre(boxPixels));
}

TEST_F(FrameUpdate, PaintsOneOfTwoThatChangePlacesInTheOrder) {
    root_->insertSublayer(other_, 0);
    EXPECT_THAT(update(), ElementsAre(boxPixels)); // which is now in front
}

TEST_F(FrameUpdate, PaintsOnlyTheSublayerThatMovesWithinALayer) {
    const auto inner = box({{0, 0}, {2, 2}});
    other_->addSublayer(inner);
    update();
    inner->setPosition({11, 1});
    EXPECT_THAT(update(), ElementsAre(CGRect{{300, 300}, {24, 4}})); // so near that both are one area
}

TEST_F(FrameUpdate, PaintsAllThatHangsOnALayerThatMoves) {
    other_->addSublayer(box({{30, 0}, {10, 10}})); // beside it
    EXPECT_THAT(update(), ElementsAre(CGRect{{360, 300}, {20, 20}}));
    other_->setPosition({160, 105}); // 50 points up
    EXPECT_THAT(update(), UnorderedElementsAre(CGRect{{300, 300}, {80, 20}}, CGRect{{300, 200}, {80, 20}}));
}

TEST_F(FrameUpdate, PaintsNothingOutsideOfAClip) {
    const auto inner = box({{-50, -50}, {200, 200}});
    other_->addSublayer(inner);
    other_->setMasksToBounds(true);
    update();
    inner->setBackgroundColor(CGColor{0, 0, 1, 1});
    EXPECT_THAT(update(), ElementsAre(otherPixels));
    inner->setPosition({500, 500}); // out of it
    EXPECT_THAT(update(), ElementsAre(otherPixels));
    inner->setPosition({600, 600}); // where it cannot be seen
    EXPECT_THAT(update(), IsEmpty());
}

TEST_F(FrameUpdate, FollowsAnimationsAsLongAsTheyLast) {
    VirtualClock clock;
    MainQueue::main().setClock(&clock);
    clock.advanceTo(NSEC_PER_SEC);
    auto slide = CABasicAnimation::animationWithKeyPath("position.x");
    slide->setFromValue(CGFloat(15));
    slide->setToValue(CGFloat(115));
    slide->setDuration(1);
    box_->addAnimation(*slide, "slide");
    MainQueue::main().setClock(nullptr);
    EXPECT_THAT(update(1), IsEmpty()); // it begins where the layer is
    EXPECT_THAT(update(1.5), UnorderedElementsAre(boxPixels, CGRect{{120, 40}, {20, 20}}));
    EXPECT_THAT(update(1.5), IsEmpty());
    EXPECT_THAT(update(2.5), UnorderedElementsAre(boxPixels, CGRect{{120, 40}, {20, 20}})); // back again
    EXPECT_THAT(update(3), IsEmpty());
}

TEST_F(FrameUpdate, PaintsEverythingForAnotherRootTransformBitmapOrTime) {
    EXPECT_THAT(update(5), IsEmpty());
    EXPECT_THAT(update(4), ElementsAre(allPixels)); // earlier
    EXPECT_THAT(updater_.update(*root_, 5, {1, 0, 0, 1, 0, 0}, bitmap_), ElementsAre(allPixels));
    const auto anotherRoot = box({{0, 0}, {200, 200}});
    EXPECT_THAT(updater_.update(*anotherRoot, 5, {1, 0, 0, 1, 0, 0}, bitmap_), ElementsAre(allPixels));
    CGImage another(100, 50);
    EXPECT_THAT(updater_.update(*anotherRoot, 5, {1, 0, 0, 1, 0, 0}, another),
                ElementsAre(CGRect{{0, 0}, {100, 50}}));
    updater_.forget();
    EXPECT_THAT(updater_.update(*anotherRoot, 5, {1, 0, 0, 1, 0, 0}, another),
                ElementsAre(CGRect{{0, 0}, {100, 50}}));
}

TEST_F(FrameUpdate, DoesNothingWithoutGraphics) {
    Graphics::install(nullptr);
    box_->setPosition({90, 90});
    EXPECT_THAT(update(), IsEmpty());
    Graphics::install(MakeRasterGraphics());
    EXPECT_THAT(update(), UnorderedElementsAre(boxPixels, CGRect{{170, 170}, {20, 20}})); // made up for
}

} // namespace
} // namespace tallyforge
