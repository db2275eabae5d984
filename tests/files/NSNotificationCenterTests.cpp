#include "foundation/NSNotificationCenter.h"

#include <gtest/gtest.h>
#include <optional>

namespace tallyforge {

namespace {

using Observation = NSNotificationCenter::Observation;

class NSNotificationCenterTests : public testing::Test {
  protected:
    [[nodiscard]] Observation observe(const std::string& name, const std::string& word) {
        return center_.addObserver(name, [this, word] { said_ += word; });
    }
    NSNotificationCenter center_;
    std::string said_;
};

TEST_F(NSNotificationCenterTests, TellsThoseWhoObserveTheNameInTheirOrder) {
    const auto a = observe("x", "a");
    const auto b = observe("y", "b");
    const auto c = observe("x", "c");
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "ac");
    center_.postNotificationName("z");
    EXPECT_EQ(said_, "ac");
}

TEST_F(NSNotificationCenterTests, AnObservationLastsAsLongAsItLives) {
    auto kept = observe("x", "k");
    {
        const auto short_ = observe("x", "s");
        center_.postNotificationName("x");
    }
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "ksk");
    Observation moved = std::move(kept);
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "kskk");
    moved = observe("x", "n"); // ends what it held before
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "kskkn");
    moved = Observation();
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "kskkn");
}

TEST_F(NSNotificationCenterTests, WhoIsRemovedDuringAPostIsNotTold) {
    std::optional<Observation> second;
    const auto first = center_.addObserver("x", [&] {
        said_ += "1";
        second.reset();
    });
    second = observe("x", "2");
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "1");
}

TEST_F(NSNotificationCenterTests, AnObserverMayRemoveItself) {
    std::optional<Observation> self;
    const std::string word = "a word that is too long to stand in the function object itself";
    self = center_.addObserver("x", [&, word] {
        self.reset();
        said_ += word; // the action still has what it captured
    });
    center_.postNotificationName("x");
    center_.postNotificationName("x");
    EXPECT_EQ(said_, word);
}

TEST_F(NSNotificationCenterTests, RemovalInAnInnerPostHoldsForTheWholeOfIt) {
    std::optional<Observation> outer;
    int depth = 0;
    outer = center_.addObserver("x", [&] {
        said_ += "o";
        if (depth++ > 0) return;
        outer.reset();
        center_.postNotificationName("x");
    });
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "o");
}

TEST_F(NSNotificationCenterTests, WhoIsAddedDuringAPostHearsTheNextOne) {
    std::vector<Observation> added;
    const auto adder = center_.addObserver("x", [&] {
        for (int i = 0; i < 100; ++i)
            added.push_back(observe("x", "n"));
    });
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "");
    center_.postNotificationName("x");
    EXPECT_EQ(said_, std::string(100, 'n'));
}

TEST_F(NSNotificationCenterTests, TheTraceHearsEveryPostFirst) {
    center_.setTrace([this](std::string_view name) { said_.append("[").append(name).append("]"); });
    const auto a = observe("x", "a");
    center_.postNotificationName("x");
    center_.postNotificationName("nobody");
    center_.setTrace({});
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "[x]a[nobody]a");
}

TEST_F(NSNotificationCenterTests, AnEmptyActionAndAnEmptyObservationDoNoHarm) {
    const Observation none;
    const auto empty = center_.addObserver("x", {});
    const auto a = observe("x", "a");
    center_.postNotificationName("x");
    EXPECT_EQ(said_, "a");
}

TEST_F(NSNotificationCenterTests, AnObservationMayOutliveItsCenter) {
    std::optional<Observation> observation;
    {
        NSNotificationCenter shortLived;
        observation = shortLived.addObserver("x", [] {});
    }
    observation.reset();
    EXPECT_EQ(&NSNotificationCenter::defaultCenter(), &NSNotificationCenter::defaultCenter());
}

} // namespace

} // namespace tallyforge
