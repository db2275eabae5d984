// A window that nobody touches and that shows nothing moving does nothing at all.

#include "WindowFixture.h"

namespace tallyforge::test {

namespace {

class WindowQuietTest : public WindowTest {
  protected:
    /// How often the program was woken up in three seconds.
    long wakeUpsInThreeSeconds() {
        std::this_thread::sleep_for(std::chrono::milliseconds(1500)); // what fades has faded
        const long before = wakeUps();
        std::this_thread::sleep_for(std::chrono::seconds(3));
        return wakeUps() - before;
    }
};

TEST_F(WindowQuietTest, SleepsOnTheFirstScreen) {
    openWindow();
    EXPECT_EQ(wakeUpsInThreeSeconds(), 0);
}

TEST_F(WindowQuietTest, SleepsAfterUse) {
    openWindow();
    clickAt(middleOf(rowFrame("tallyforge", "Badge")));
    expectScreen("badge");
    server->xdo({"mousemove", "180", "500", "click", "5"});
    server->xdo({"mousemove", "1200", "1300"});
    EXPECT_EQ(wakeUpsInThreeSeconds(), 0);
}

TEST_F(WindowQuietTest, MovesWhileAMarkIsAnimated) {
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "1"}).status, 0);
    openWindow();
    clickAt(middleOf(rowFrame("tallyforge", "Badge")));
    const CGRect preview = rowFrame("badge", "");
    const auto look = [&] {
        const CGImage shown = server->screen();
        return std::vector<uint32_t>(shown.row(int(CGRectGetMinY(preview))),
                                     shown.row(int(CGRectGetMaxY(preview))));
    };
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const auto first = look();
    EXPECT_TRUE(waitFor([&] { return look() != first; }));
    EXPECT_GT(wakeUpsInThreeSeconds(), 30);
    // And sleeps again when the animation is taken away.
    ASSERT_EQ(tallyforge({"unset", "badgeanimtype"}).status, 0);
    EXPECT_EQ(wakeUpsInThreeSeconds(), 0);
}

} // namespace

} // namespace tallyforge::test
