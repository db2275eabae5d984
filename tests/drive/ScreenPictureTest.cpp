// render --pane: a screen as a picture.

#include "DriveFixture.h"

namespace tallyforge::test {
namespace {

class ScreenPictureTest : public DriveTest {
  protected:
    ScreenPictureTest() : file_((scratch / "p.png").string()) {}
    /// The picture's bytes.
    std::string render(Lines words) const {
        std::filesystem::remove(file_);
        words.insert(words.begin(), {"render", file_});
        Ended ended = tallyforge(words);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.output + ended.errors, "");
        return bytesOf(file_);
    }
    static std::pair<unsigned, unsigned> sizeOf(const std::string& png) { // from the header chunk
        if (png.size() < 24) return {};
        auto number = [&](size_t at) {
            unsigned value = 0;
            for (size_t i = 0; i < 4; ++i)
                value = value << 8 | static_cast<unsigned char>(png[at + i]);
            return value;
        };
        return {number(16), number(20)};
    }
    std::string file_;
};

TEST_F(ScreenPictureTest, IsTheScreenTimesTheScale) {
    using Size = std::pair<unsigned, unsigned>;
    EXPECT_EQ(sizeOf(render({"--pane", "badge"})), (Size{750, 1334}));
    EXPECT_EQ(sizeOf(render({"--pane", "badge", "--scale", "1"})), (Size{375, 667}));
    EXPECT_EQ(sizeOf(render({"--pane", "badge", "--scale", "1.5", "--size", "400x600"})), (Size{600, 900}));
    EXPECT_EQ(sizeOf(render({"--pane", "badge", "--scale", "3"})), (Size{1125, 2001}));
    EXPECT_EQ(sizeOf(render({"--pane", "badge", "--idiom", "pad"})), (Size{1536, 2048}));
    EXPECT_EQ(sizeOf(render({"--pane", "tallyforge", "--size", "320x480"})), (Size{640, 960}));
}

TEST_F(ScreenPictureTest, PanesDifferAndRepeat) {
    const std::string badge = render({"--pane", "badge", "--scale", "1"});
    EXPECT_EQ(render({"--pane", "badge", "--scale", "1"}), badge);
    EXPECT_NE(render({"--pane", "closebox", "--scale", "1"}), badge);
    EXPECT_NE(render({"--pane", "tallyforge", "--scale", "1"}), badge);
}

TEST_F(ScreenPictureTest, AnAnimatedPaneMovesWithTheTimeAndAStillOneDoesNot) {
    const std::string still = render({"--pane", "badge", "--scale", "1"});
    EXPECT_EQ(render({"--pane", "badge", "--scale", "1", "--time", "0.3"}), still);
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "5", "badgeanimspd", "1"}).status, 0);
    const std::string start = render({"--pane", "badge", "--scale", "1"});
    const std::string later = render({"--pane", "badge", "--scale", "1", "--time", "0.3"});
    EXPECT_NE(start, later);
}

TEST_F(ScreenPictureTest, SettingsAreSeen) {
    const std::string before = render({"--pane", "badge", "--scale", "1"});
    ASSERT_EQ(tallyforge({"set", "badgesize", "1"}).status, 0);
    EXPECT_NE(render({"--pane", "badge", "--scale", "1"}), before);
}

TEST_F(ScreenPictureTest, PicturesThatCannotBeMadeAreRefused) {
    std::filesystem::remove(file_);
    expectRefused(tallyforge({"render", file_, "--pane", "badge", "--size", "4096x4096", "--scale", "3"}), 1,
                  "4096");
    EXPECT_FALSE(std::filesystem::exists(file_));
    expectRefused(tallyforge({"render", file_, "--pane", "badge", "--size", "0x5"}), 2, "size");
    expectRefused(tallyforge({"render", (scratch / "no" / "p.png").string(), "--pane", "badge"}), 1,
                  "no such folder");
    EXPECT_EQ(sizeOf(render({"--pane", "badge", "--size", "1x1", "--scale", "1"})),
              (std::pair<unsigned, unsigned>{1, 1}));
}

} // namespace
} // namespace tallyforge::test
