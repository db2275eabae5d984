#include "quartzcore/DamageList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyforge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

DamageList listOf(const std::vector<CGRect>& rects) {
    DamageList list;
    for (const CGRect& rect : rects)
        list.add(rect);
    return list;
}

TEST(Damage, LeavesEmptyAreasOut) {
    EXPECT_THAT(listOf({{{5, 5}, {0, 10}}, {{5, 5}, {10, 0}}, {}}).rects(), IsEmpty());
}

TEST(Damage, KeepsWhatLiesFarApart) {
    const CGRect a{{0, 0}, {20, 20}}, b{{300, 400}, {20, 20}};
    EXPECT_THAT(listOf({a, b}).rects(), UnorderedElementsAre(a, b));
}

TEST(Damage, JoinsWhatOverlapsOrLiesSideBySide) {
    EXPECT_THAT(listOf({{{0, 0}, {100, 100}}, {{90, 90}, {100, 100}}}).rects(),
                ElementsAre(CGRect{{0, 0}, {190, 190}}));
    EXPECT_THAT(listOf({{{0, 0}, {50, 50}}, {{50, 0}, {50, 50}}}).rects(),
                ElementsAre(CGRect{{0, 0}, {100, 50}}));
    EXPECT_THAT(listOf({{{0, 0}, {50, 50}}, {{10, 10}, {5, 5}}}).rects(),
                ElementsAre(CGRect{{0, 0}, {50, 50}}));
}

TEST(Damage, JoinsAllThatAJoinedAreaReaches) {
    // The third joins the first two, whose common area then reaches the fourth.
    EXPECT_THAT(
        listOf({{{0, 0}, {10, 200}}, {{200, 0}, {10, 200}}, {{100, 100}, {10, 10}}, {{0, 0}, {200, 5}}})
            .rects(),
        ElementsAre(CGRect{{0, 0}, {210, 200}}));
}

TEST(Damage, StaysShortAndCoversEverything) {
    DamageList list;
    std::vector<CGRect> added;
    for (int i = 0; i < 64; ++i) {
        added.push_back({{CGFloat(i % 8 * 500), CGFloat(i / 8 * 500)}, {40, 40}});
        list.add(added.back());
        EXPECT_LE(list.rects().size(), 8U);
    }
    for (const CGRect& rect : added) {
        int holders = 0;
        for (const CGRect& kept : list.rects())
            holders += CGRectUnion(kept, rect) == kept;
        EXPECT_EQ(holders, 1); // one that holds it whole, and no other
    }
}

} // namespace
} // namespace tallyforge
