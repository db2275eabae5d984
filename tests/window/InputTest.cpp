// Real clicks and keys.

#include "WindowFixture.h"
#include "settings/SettingsKeys.h"

namespace tallyforge::test {

namespace {

constexpr double kThumb = 28;

/// Where the middle of the thumb is for a value.
CGPoint thumbAt(const CGRect& slider, const SettingKey& key, double value) {
    const double share = (value - key.min) / (double(key.max) - key.min);
    return {slider.origin.x + kThumb / 2 + (slider.size.width - kThumb) * share, CGRectGetMidY(slider)};
}

/// The settings that one pixel of the slider stands for.
double pixelOf(const CGRect& slider, const SettingKey& key) {
    return (double(key.max) - key.min) / (slider.size.width - kThumb);
}

class WindowInputTest : public WindowTest {
  protected:
    void openBadge() {
        openWindow();
        clickAt(middleOf(rowFrame("tallyforge", "Badge")));
        expectScreen("badge");
    }
    const SettingKey& size = *FindSettingKey("badgesize");
};

TEST_F(WindowInputTest, AClickOpensAPaneAndEscapeLeavesIt) {
    openBadge();
    key("Escape");
    expectScreen("tallyforge");
}

TEST_F(WindowInputTest, DraggingTheSizeSliderWritesTheDomainAndChangesThePreview) {
    openBadge();
    const CGRect preview = rowFrame("badge", ""), slider = sliderFrame("badge", "Size");
    const CGImage before = server->screen();
    const CGPoint from = thumbAt(slider, size, 0);
    EXPECT_FALSE(setting("badgesize"));
    server->xdo({"mousemove", text(from.x), text(from.y), "mousedown", "1"});
    for (int step = 1; step <= 10; ++step)
        server->xdo({"mousemove", text(from.x + 12 * step), text(from.y)});
    const double wanted = 120 * pixelOf(slider, size);
    EXPECT_TRUE(waitFor([&] {
        const auto value = setting("badgesize");
        return value && std::fabs(*value - wanted) < 2 * pixelOf(slider, size);
    })) << "before the button is let go: "
        << setting("badgesize").value_or(-99) << " and not " << wanted;
    server->xdo({"mouseup", "1"});
    expectScreen("badge");
    const CGImage after = server->screen();
    int changed = 0;
    for (int y = int(CGRectGetMinY(preview)); y < int(CGRectGetMaxY(preview)); ++y) {
        for (int x = 0; x < int(preview.size.width); ++x)
            changed += before.pixel(x, y) != after.pixel(x, y);
    }
    EXPECT_GT(changed, 50) << "the preview's badge has not grown";
}

TEST_F(WindowInputTest, TheKeyboardAloneCanDoTheSame) {
    openWindow();
    const CGImage root = server->screen();
    key("Down"); // the first row, which is the badge's
    key("Return");
    ASSERT_TRUE(waitFor([&] { return server->screen().pixels() != root.pixels(); }));
    // From row to row until the size changes.
    for (int i = 0; i < 6 && !setting("badgesize"); ++i) {
        key("Down");
        key("Right");
        waitFor([&] { return setting("badgesize").has_value(); }, 1);
    }
    ASSERT_TRUE(setting("badgesize"));
    EXPECT_GT(*setting("badgesize"), 0);
    const double once = *setting("badgesize");
    key("Right");
    EXPECT_TRUE(waitFor([&] { return setting("badgesize") > once; }));
    for (int i = 0; i < 2; ++i)
        key("Left");
    EXPECT_TRUE(waitFor([&] { return std::fabs(setting("badgesize").value_or(-99)) < 1e-6; }));
    key("Escape");
    EXPECT_TRUE(waitFor([&] {
        const CGImage shown = server->screen();
        return std::equal(shown.row(60), shown.row(60) + 375, root.row(60)); // the bar of the first screen
    }));
}

TEST_F(WindowInputTest, TheWheelScrolls) {
    openBadge();
    const CGImage before = server->screen();
    server->xdo({"mousemove", "180", "500", "click", "5", "click", "5"});
    EXPECT_TRUE(waitFor([&] { return server->screen().pixels() != before.pixels(); }));
    server->xdo({"click", "4", "click", "4", "click", "4", "click", "4"});
    expectScreen("badge");
}

TEST_F(WindowInputTest, ClosingEndsWithSuccess) {
    openWindow();
    server->close(window);
    const Ended ended = program->wait(10);
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
    EXPECT_EQ(ended.output, "");
}

TEST_F(WindowInputTest, ControlQEndsWithSuccess) {
    openWindow();
    key("ctrl+q");
    const Ended ended = program->wait(10);
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
}

TEST_F(WindowInputTest, AfterTenSecondsOfDraggingNothingIsMissedAndNothingKept) {
    openBadge();
    const CGRect slider = sliderFrame("badge", "Size");
    const CGPoint from = thumbAt(slider, size, 0);
    // 100 moves a second to and fro between 100 pixels left and right of the middle.
    const auto drag = [&](int moves) {
        std::vector<std::string> words;
        for (int i = 1; i <= moves; ++i) {
            const int along = (i * 7) % 400;
            const int away = along < 100 ? along : along < 300 ? 200 - along : along - 400;
            words.insert(words.end(), {"mousemove", text(from.x + away), text(from.y), "sleep", "0.01"});
        }
        server->xdo(words);
    };
    server->xdo({"mousemove", text(from.x), text(from.y), "mousedown", "1"});
    drag(200);
    const long before = statusOf("VmRSS");
    const auto begun = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - begun < std::chrono::seconds(10))
        drag(100);
    server->xdo({"mousemove", text(from.x + 77), text(from.y), "mouseup", "1"});
    const double wanted = 77 * pixelOf(slider, size);
    EXPECT_TRUE(waitFor([&] {
        const auto value = setting("badgesize");
        return value && std::fabs(*value - wanted) < 2 * pixelOf(slider, size);
    })) << setting("badgesize").value_or(-99)
        << " and not " << wanted;
    expectScreen("badge");
    const long grown = statusOf("VmRSS") - before;
    RecordProperty("kilobytes", int(grown));
#if !ADDRESS_SANITIZER // which keeps what is freed for a while, to find out who still uses it
    EXPECT_LT(grown, 2048);
#endif
}

} // namespace

} // namespace tallyforge::test
