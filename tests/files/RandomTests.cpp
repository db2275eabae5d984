#include "foundation/Random.h"

#include <array>
#include <gtest/gtest.h>
#include <set>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tallyforge {

namespace {

class RandomTests : public testing::Test {
  protected:
    void TearDown() override { UnseedRandomSource(); }
};

// The published first outputs of splitmix64 for the seed 1234567.
TEST_F(RandomTests, ASeedGivesTheUpperHalvesOfSplitmix64) {
    constexpr std::array<uint64_t, 5> published = {6457827717110365317u, 3203168211198807973u,
                                                   9817491932198370423u, 4593380528125082431u,
                                                   16408922859458223821u};
    SeedRandomSource(1234567);
    for (const uint64_t whole : published)
        EXPECT_EQ(tallyforge::arc4random(), static_cast<uint32_t>(whole >> 32));
}

TEST_F(RandomTests, TheSameSeedGivesTheSameDraws) {
    SeedRandomSource(99);
    const std::array first = {tallyforge::arc4random(), tallyforge::arc4random()};
    SeedRandomSource(99);
    EXPECT_EQ(tallyforge::arc4random(), first[0]);
    EXPECT_EQ(tallyforge::arc4random(), first[1]);
}

TEST_F(RandomTests, BoundsOfNothingAndOneGiveZeroWithoutADraw) {
    SeedRandomSource(5);
    const uint32_t first = tallyforge::arc4random();
    SeedRandomSource(5);
    EXPECT_EQ(tallyforge::arc4random_uniform(0), 0u);
    EXPECT_EQ(tallyforge::arc4random_uniform(1), 0u);
    EXPECT_EQ(tallyforge::arc4random(), first);
}

TEST_F(RandomTests, DrawsBelowTheRemainderAreRejected) {
    // For the bound 3 * 2^30 a quarter of all draws, those below 2^30, would make the lowest third too
    // likely.
    constexpr uint32_t bound = 3u << 30;
    SeedRandomSource(2024);
    std::vector<uint32_t> expected;
    while (expected.size() < 100) {
        const uint32_t drawn = tallyforge::arc4random();
        if (drawn >= 1u << 30) expected.push_back(drawn % bound);
    }
    SeedRandomSource(2024);
    for (const uint32_t value : expected)
        EXPECT_EQ(tallyforge::arc4random_uniform(bound), value);
}

TEST_F(RandomTests, TheSystemsDrawsAreUniform) {
    constexpr int draws = 160'000;
    std::array<int, 16> counts{};
    for (int i = 0; i < draws; ++i)
        ++counts.at(tallyforge::arc4random_uniform(16));
    double chiSquared = 0;
    for (const int count : counts)
        chiSquared += (count - draws / 16.0) * (count - draws / 16.0) / (draws / 16.0);
    EXPECT_LT(chiSquared, 62.0); // 15 degrees of freedom: exceeded by chance once in ten million runs
}

TEST_F(RandomTests, AChildDrawsOtherNumbersThanItsParent) {
    tallyforge::arc4random(); // a block is fetched, most of it unused
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const uint64_t drawn = uint64_t{tallyforge::arc4random()} << 32 | tallyforge::arc4random();
        _exit(write(ends[1], &drawn, sizeof drawn) == sizeof drawn ? 0 : 1);
    }
    const uint64_t own = uint64_t{tallyforge::arc4random()} << 32 | tallyforge::arc4random();
    uint64_t childs = own;
    ASSERT_EQ(read(ends[0], &childs, sizeof childs), static_cast<ssize_t>(sizeof childs));
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_NE(own, childs);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(RandomTests, UnseedingReturnsToTheSystem) {
    std::set<uint64_t> seen;
    for (int i = 0; i < 4; ++i) {
        SeedRandomSource(7);
        UnseedRandomSource();
        const uint64_t high = tallyforge::arc4random();
        seen.insert(high << 32 | tallyforge::arc4random());
    }
    EXPECT_EQ(seen.size(), 4u);
}

} // namespace

} // namespace tallyforge
