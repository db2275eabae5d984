// watch: the notifications of other processes, heard on a private session bus.

#include "CommandFixture.h"
#include "support/PrivateBus.h"

namespace tallyforge::test {

class WatchTest : public CommandTest {
  protected:
    std::map<std::string, std::string> environment() const {
        return {{"TALLYFORGE_ROOT", device.root().string()}, {"DBUS_SESSION_BUS_ADDRESS", bus.address()}};
    }
    PrivateBus bus;
};

TEST_F(WatchTest, HearsWhatAnotherProcessSets) {
    ASSERT_NE(bus.address(), "") << "dbus-daemon is needed";
    Program watch({TALLYFORGE_BIN "/tallyforge", "watch", "--count", "3", "--timeout", "30"}, environment());
    // The watcher may not be there yet when the first change is made; later ones are heard.
    Ended heard;
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(RunProgram({TALLYFORGE_BIN "/tallyforge", "set", "badgesize", "1", "badgealpha", "50"},
                             environment())
                      .status,
                  0);
        heard = watch.wait(0.05);
        if (heard.status != -1) break;
    }
    EXPECT_EQ(heard.status, 0) << heard.errors;
    EXPECT_EQ(heard.output,
              "com.quillon.tallyforge.prefs\ncom.quillon.tallyforge.prefs\ncom.quillon.tallyforge.prefs\n");
}

TEST_F(WatchTest, EndsWhenTheTimeIsUp) {
    ASSERT_NE(bus.address(), "") << "dbus-daemon is needed";
    Ended all = RunProgram({TALLYFORGE_BIN "/tallyforge", "watch", "--timeout", "0.2"}, environment());
    EXPECT_EQ(all.status, 0) << all.errors;
    EXPECT_EQ(all.output, "");
    expectComplaint(RunProgram({TALLYFORGE_BIN "/tallyforge", "watch", "--timeout", "0.2", "--count", "1"},
                               environment()),
                    1);
}

TEST_F(CommandTest, WatchSaysWhatIsMissingWithoutABus) {
    Ended ended = tallyforge({"watch", "--timeout", "1"});
    expectComplaint(ended, 1);
    EXPECT_NE(ended.errors.find("bus"), std::string::npos) << ended.errors;
}

} // namespace tallyforge::test
