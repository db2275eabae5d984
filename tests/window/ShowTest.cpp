// What the window shows, and when.

#include "WindowFixture.h"

namespace tallyforge::test {

namespace {

TEST_F(WindowTest, OpensAtThePhonesSizeWithItsTitle) {
    openWindow(); // found by its title; shows what `render` draws
    EXPECT_NE(server->xdo({"getwindowgeometry", window}).output.find("Geometry: 375x667"), std::string::npos);
}

TEST_F(WindowTest, OpensATablet) {
    openWindow({"--idiom", "pad"});
    EXPECT_NE(server->xdo({"getwindowgeometry", window}).output.find("Geometry: 768x1024"),
              std::string::npos);
}

TEST_F(WindowTest, GrowsSharply) {
    openWindow();
    server->xdo({"windowsize", "--sync", window, "750", "1334"});
    expectScreen("tallyforge", 2);
}

TEST_F(WindowTest, KeepsTheScreensProportionsInTheMiddle) {
    openWindow();
    // Twice as wide as is needed: 187 and a half pixels are left on either side, whole ones of them.
    server->xdo({"windowsize", "--sync", window, "750", "667"});
    const uint32_t around = 0xFF1C1C1E, bar = 0xFFF8F8F8;
    EXPECT_TRUE(waitFor([&] {
        const CGImage shown = server->screen();
        return shown.pixel(0, 30) == around && shown.pixel(186, 30) == around &&
               shown.pixel(188, 30) == bar && shown.pixel(561, 30) == bar && shown.pixel(563, 30) == around &&
               shown.pixel(749, 666) == around;
    }));
    const CGRect row = rowFrame("tallyforge", "Badge");
    clickAt({row.origin.x + 187 + 30, CGRectGetMidY(row)}); // touches are moved along
    EXPECT_TRUE(waitFor([&] {
        const std::string file = (device.root() / "badge.png").string();
        if (tallyforge({"render", file, "--pane", "badge", "--scale", "1"}).status != 0) return false;
        std::ifstream stream(file, std::ios::binary);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
        const CGImageRef wanted = Graphics::current()->decodeImage(bytes);
        const CGImage shown = server->screen();
        for (int y = 0; y < wanted->height(); ++y) {
            if (!std::equal(wanted->row(y), wanted->row(y) + wanted->width(), shown.row(y) + 187))
                return false;
        }
        return true;
    }));
}

TEST_F(WindowTest, FollowsWhatAnotherProcessSets) {
    openWindow();
    clickAt(middleOf(rowFrame("tallyforge", "Badge")));
    expectScreen("badge");
    const CGImage before = server->screen();
    ASSERT_EQ(tallyforge({"set", "badgesize", "2", "badgeshape", "4"}).status, 0);
    expectScreen("badge"); // drawn with the new settings
    EXPECT_NE(server->screen().pixels(), before.pixels());
    ASSERT_EQ(tallyforge({"unset", "badgesize", "badgeshape"}).status, 0);
    expectScreen("badge");
    EXPECT_EQ(server->screen().pixels(), before.pixels());
}

TEST_F(WindowTest, FollowsTheFirstSettingOfADeviceThatHadNone) {
    std::filesystem::remove_all(device.file("/var/mobile/Library"));
    openWindow();
    clickAt(middleOf(rowFrame("tallyforge", "Badge")));
    expectScreen("badge");
    const CGImage before = server->screen();
    ASSERT_EQ(tallyforge({"set", "badgesize", "2"}).status, 0);
    expectScreen("badge");
    EXPECT_NE(server->screen().pixels(), before.pixels());
}

} // namespace

} // namespace tallyforge::test
