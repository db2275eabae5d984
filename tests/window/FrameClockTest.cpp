#include "window/FrameClock.h"
#include "EventFixture.h"
#include "foundation/Dispatch.h"

namespace tallyforge {

namespace {

class FrameClockTest : public test::EventTest {
  protected:
    FrameClockTest() { MainQueue::main().clear(); }
    ~FrameClockTest() override { MainQueue::main().clear(); }

    MonotonicClock clock;
    int frames = 0;
    int jobs = 0;
    FrameClock frameClock{clock, [this] { ++frames; },
                          [this] {
                              ++jobs;
                              MainQueue::main().runDue();
                          }};
};

TEST_F(FrameClockTest, MakesNoFrameUnlessAsked) {
    run(60);
    EXPECT_EQ(frames, 0);
    frameClock.askForFrame();
    frameClock.askForFrame();
    run(60);
    EXPECT_EQ(frames, 1);
    EXPECT_EQ(jobs, 0);
}

TEST_F(FrameClockTest, CanForgetAFrame) {
    frameClock.askForFrame();
    frameClock.forgetFrame();
    run(60);
    EXPECT_EQ(frames, 0);
}

TEST_F(FrameClockTest, KeepsTheDisplaysPace) {
    frameClock.setFramesPerSecond(60);
    const int64_t begun = clock.nanoseconds();
    int made = 0;
    while (made < 31) {
        frameClock.askForFrame();
        run(0);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        made = frames;
    }
    const double took = double(clock.nanoseconds() - begun) / 1e9;
    EXPECT_GT(took, 30 / 60.0 - 0.005); // the first one comes at once
    EXPECT_LT(took, 30 / 60.0 * 2);     // on a busy machine
}

TEST_F(FrameClockTest, IsThereWhenAJobIsDueAndNotBefore) {
    bool done = false;
    const int64_t due = clock.nanoseconds() + 50'000'000;
    int64_t at = 0;
    MainQueue::main().after(due, [&] {
        done = true;
        at = clock.nanoseconds();
    });
    frameClock.followMainQueue();
    run(30);
    EXPECT_EQ(jobs, 0);
    run(200);
    EXPECT_TRUE(done);
    EXPECT_EQ(jobs, 1);
    EXPECT_GE(at, due);
}

TEST_F(FrameClockTest, FollowsAnEarlierJobAndForgetsOneThatIsGone) {
    bool early = false;
    const int64_t now = clock.nanoseconds();
    MainQueue::main().after(now + 3'600'000'000'000, [] {});
    frameClock.followMainQueue();
    MainQueue::main().after(now + 20'000'000, [&] { early = true; });
    frameClock.followMainQueue();
    run(200);
    EXPECT_TRUE(early);
    MainQueue::main().after(clock.nanoseconds() + 30'000'000, [] {});
    frameClock.followMainQueue();
    MainQueue::main().clear();
    frameClock.followMainQueue();
    run(100);
    EXPECT_EQ(jobs, 1);
}

} // namespace

} // namespace tallyforge
