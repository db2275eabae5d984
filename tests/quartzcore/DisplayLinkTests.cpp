#include "quartzcore/CADisplayLink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tallyforge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DisplayLinks : public testing::Test {
  protected:
    void TearDown() override { CADisplayLink::setWakeUp({}); }
    std::unique_ptr<CADisplayLink> link(const std::string& name) {
        return std::make_unique<CADisplayLink>(
            [this, name](double seconds) { steps_.push_back(name + std::to_string(int(seconds))); });
    }
    std::vector<std::string> steps_;
};

TEST_F(DisplayLinks, StepOnlyWhileTheyRun) {
    const auto a = link("a"), b = link("b");
    EXPECT_TRUE(a->paused());
    EXPECT_FALSE(CADisplayLink::anyRunning());
    CADisplayLink::stepAll(1);
    EXPECT_THAT(steps_, IsEmpty());

    b->setPaused(false);
    a->setPaused(false);
    EXPECT_TRUE(CADisplayLink::anyRunning());
    CADisplayLink::stepAll(2);
    EXPECT_THAT(steps_, ElementsAre("b2", "a2"));

    b->setPaused(true);
    CADisplayLink::stepAll(3);
    EXPECT_THAT(steps_, ElementsAre("b2", "a2", "a3"));
    a->setPaused(true);
    EXPECT_FALSE(CADisplayLink::anyRunning());
}

TEST_F(DisplayLinks, StopWhenTheyAreGone) {
    auto a = link("a");
    a->setPaused(false);
    a.reset();
    EXPECT_FALSE(CADisplayLink::anyRunning());
    CADisplayLink::stepAll(1);
    EXPECT_THAT(steps_, IsEmpty());
}

TEST_F(DisplayLinks, WakeTheHostOnceWhenTheFirstBegins) {
    int woken = 0;
    CADisplayLink::setWakeUp([&woken] { ++woken; });
    const auto a = link("a"), b = link("b");
    EXPECT_EQ(woken, 0);
    a->setPaused(false);
    EXPECT_EQ(woken, 1);
    a->setPaused(false); // runs already
    b->setPaused(false);
    EXPECT_EQ(woken, 1);
    a->setPaused(true);
    a->setPaused(false); // b has been running all the time
    EXPECT_EQ(woken, 1);
    a->setPaused(true);
    b->setPaused(true);
    b->setPaused(false);
    EXPECT_EQ(woken, 2);
    CADisplayLink::setWakeUp({});
    b->setPaused(true);
    b->setPaused(false);
    EXPECT_EQ(woken, 2);
}

TEST_F(DisplayLinks, MayEndOthersAndThemselvesInAStep) {
    auto later = link("later");
    std::unique_ptr<CADisplayLink> first;
    first = std::make_unique<CADisplayLink>([&](double) {
        steps_.emplace_back("first");
        later.reset();
        first.reset();
    });
    first->setPaused(false);
    later->setPaused(false);
    CADisplayLink::stepAll(1);
    EXPECT_THAT(steps_, ElementsAre("first"));
    EXPECT_FALSE(CADisplayLink::anyRunning());
}

TEST_F(DisplayLinks, ThatBeginInAStepWaitForTheNextFrame) {
    const auto second = link("second");
    CADisplayLink first([&](double) {
        steps_.emplace_back("first");
        second->setPaused(false);
    });
    first.setPaused(false);
    CADisplayLink::stepAll(1);
    EXPECT_THAT(steps_, ElementsAre("first"));
    CADisplayLink::stepAll(2);
    EXPECT_THAT(steps_, ElementsAre("first", "first", "second2"));
}

} // namespace
} // namespace tallyforge
