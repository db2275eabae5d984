// The effects of what is done on the screens, exactly and in order.

#include "DriveFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace tallyforge::test {
namespace {

class TraceTest : public DriveTest {
  protected:
    static const Lines& announced() {
        static const Lines lines{"synchronize-defaults", kReload, "darwin com.quillon.tallyforge.prefs"};
        return lines;
    }
    /// A setting and how it is written: by its row, or directly.
    struct Written {
        const char* key;
        bool row;
        const char* value; // for reset
    };
    static Lines bulk(const std::vector<Written>& settings) {
        Lines lines;
        for (const Written& setting : settings) {
            lines.push_back(std::string("set com.quillon.tallyforge ") + setting.key + " " + setting.value);
            if (setting.row) lines.push_back(std::string("reload-specifier ") + setting.key);
        }
        lines.push_back("synchronize com.quillon.tallyforge");
        lines.insert(lines.end(), announced().begin(), announced().end());
        return lines;
    }
    /// The same lines with "*" for each value.
    static Lines withoutValues(Lines lines) {
        for (std::string& line : lines) {
            if (line.starts_with("set ")) line = line.substr(0, line.rfind(' ')) + " *";
        }
        return lines;
    }
};

TEST_F(TraceTest, ASliderWritesShowsSynchronisesAndAnnounces) {
    EXPECT_EQ(traceOn("badge", "slide Size 1.25\n"), change("badgesize", "1.25"));
    EXPECT_EQ(traceOn("closebox", "slide Rotation 90\n"), change("closeboxrotation", "90"));
    EXPECT_EQ(traceOn("newdotcolor", "slide Opacity 50\n"), change("newdotalpha", "50"));
    EXPECT_EQ(traceOn("badgeanim", "slide Cycle 0.2\n"), change("badgeanimspd", "0.2"));
}

TEST_F(TraceTest, AChoiceWritesShowsSynchronisesAndAnnounces) {
    EXPECT_EQ(traceOn("badge", "tap Shape\ntap Star\n"), change("badgeshape", "4"));
    EXPECT_EQ(traceOn("closebox", "tap Show\ntap \"Cross only\"\n"), change("presetcloseboxbg", "98"));
    EXPECT_EQ(traceOn("newdotanim", "tap Animation\ntap Shake\n"), change("newdotanimtype", "12"));
}

TEST_F(TraceTest, GoingBackFromTheChoicesShowsThePaneAgain) {
    EXPECT_EQ(traceOn("badge", "tap Shape\ntap Star\nback\n"),
              joined({change("badgeshape", "4"), {kReload}}));
}

TEST_F(TraceTest, TheSameValueTwiceIsWrittenAndToldTwice) {
    EXPECT_EQ(traceOn("badge", "tap Shape\ntap Star\ntap Star\n"),
              joined({change("badgeshape", "4"), change("badgeshape", "4")}));
}

TEST_F(TraceTest, RomanNumeralsTellTwoWhenOnAndThreeWhenOff) {
    Lines off = change("convertbadgeroman", "0");
    off.push_back("darwin com.quillon.tallyforge.convertArabic");
    EXPECT_EQ(traceOn("badge", "tap \"Roman numerals\"\n"), change("convertbadgeroman", "1"));
    EXPECT_EQ(traceOn("badge", "tap \"Roman numerals\"\n"), off);
    EXPECT_EQ(traceOn("badge", "tap \"Roman numerals\"\ntap \"Roman numerals\"\n"),
              joined({change("convertbadgeroman", "1"), off}));
}

TEST_F(TraceTest, ResetOfTheBadge) {
    EXPECT_EQ(traceOn("badge", "tap Reset\n"), bulk({{"badgeshape", true, "0"},
                                                     {"convertbadgeroman", true, "0"},
                                                     {"badgesize", true, "0"},
                                                     {"badgerotation", true, "0"},
                                                     {"badgepos", true, "2"},
                                                     {"badgeoffsetX", true, "0"},
                                                     {"badgeoffsetY", true, "0"},
                                                     {"badgebgcol", false, "#FF0000"},
                                                     {"badgealpha", false, "100"},
                                                     {"badgetxtcol", false, "#FFFFFF"},
                                                     {"badgetxtsize", false, "0"},
                                                     {"badgetxtoffsetX", false, "0"},
                                                     {"badgetxtoffsetY", false, "0"},
                                                     {"badgebordercol", false, "#FF0000"},
                                                     {"badgebordersize", false, "0"},
                                                     {"badgeglowcol", false, "#00FF00"},
                                                     {"badgeglowalpha", false, "0"},
                                                     {"badgeanimtype", false, "0"},
                                                     {"badgeanimspd", false, "1"}}));
}

TEST_F(TraceTest, ResetOfTheCloseBox) {
    EXPECT_EQ(traceOn("closebox", "tap Reset\n"), bulk({{"closeboxshape", true, "10"},
                                                        {"closeboxsize", true, "0"},
                                                        {"closeboxrotation", true, "0"},
                                                        {"closeboxpos", true, "0"},
                                                        {"closeboxoffsetX", true, "0"},
                                                        {"closeboxoffsetY", true, "0"},
                                                        {"closeboxbgcol", false, "#FFFFFF"},
                                                        {"closeboxalpha", false, "100"},
                                                        {"closeboxtxtcol", false, "#FFFFFF"},
                                                        {"closeboxtxtsize", false, "0"},
                                                        {"closeboxtxtoffsetX", false, "0"},
                                                        {"closeboxtxtoffsetY", false, "0"},
                                                        {"closeboxbordercol", false, "#000000"},
                                                        {"closeboxbordersize", false, "0"},
                                                        {"closeboxglowcol", false, "#FF0000"},
                                                        {"closeboxglowalpha", false, "0"},
                                                        {"closeboxanimtype", false, "0"},
                                                        {"closeboxanimspd", false, "1"}}));
}

TEST_F(TraceTest, ResetOfTheNewDot) {
    EXPECT_EQ(traceOn("newdot", "tap Reset\n"), bulk({{"newdotshape", true, "0"},
                                                      {"newdotsize", true, "0"},
                                                      {"newdotpos", true, "0"},
                                                      {"newdotoffsetX", true, "0"},
                                                      {"newdotoffsetY", true, "0"},
                                                      {"newdotbgcol", false, "none"},
                                                      {"newdotalpha", false, "100"},
                                                      {"newdotanimtype", false, "0"},
                                                      {"newdotanimspd", false, "1"}}));
}

/// What one setting may become by a draw. A colour has no bounds.
struct Drawn {
    const char* key;
    bool row;
    enum { code, fraction, color } kind;
    double min = 0, max = 0;
};

class RandomiseTraceTest : public TraceTest {
  protected:
    void expectDraws(const std::string& pane, const std::vector<Drawn>& table) {
        const Lines lines = traceOn(pane, "tap Randomise\n");
        std::vector<Written> order;
        for (const Drawn& setting : table)
            order.push_back({setting.key, setting.row, "*"});
        EXPECT_EQ(withoutValues(lines), bulk(order));
        auto setting = table.begin();
        for (const std::string& line : lines) {
            if (!line.starts_with("set ") || setting == table.end()) continue;
            const std::string value = line.substr(line.rfind(' ') + 1);
            SCOPED_TRACE(line);
            if (setting->kind == Drawn::color) {
                EXPECT_THAT(value,
                            testing::MatchesRegex("#[0-9A-F][0-9A-F][0-9A-F][0-9A-F][0-9A-F][0-9A-F]"));
            } else {
                const double number = std::stod(value);
                EXPECT_GE(number, static_cast<double>(static_cast<float>(setting->min)) - 1e-6);
                if (setting->kind == Drawn::code) {
                    EXPECT_LE(number, setting->max);
                    EXPECT_EQ(number, std::floor(number));
                } else {
                    EXPECT_LT(number, setting->max);
                }
            }
            ++setting;
        }
        EXPECT_EQ(setting, table.end());
    }
};

TEST_F(RandomiseTraceTest, Badge) {
    expectDraws("badge", {{"convertbadgeroman", true, Drawn::code, 0, 1},
                          {"badgeshape", true, Drawn::code, 0, 4},
                          {"badgesize", true, Drawn::fraction, -1.5, 2.25},
                          {"badgerotation", true, Drawn::fraction, 0, 360},
                          {"badgepos", true, Drawn::code, 0, 8},
                          {"badgeoffsetX", true, Drawn::fraction, -20, 20},
                          {"badgeoffsetY", true, Drawn::fraction, -20, 20},
                          {"badgebgcol", false, Drawn::color},
                          {"badgealpha", false, Drawn::fraction, 0, 100},
                          {"badgetxtcol", false, Drawn::color},
                          {"badgetxtsize", false, Drawn::fraction, -1.5, 2.25},
                          {"badgetxtoffsetX", false, Drawn::fraction, -20, 20},
                          {"badgetxtoffsetY", false, Drawn::fraction, -20, 20},
                          {"badgebordercol", false, Drawn::color},
                          {"badgebordersize", false, Drawn::fraction, 0, 5},
                          {"badgeglowcol", false, Drawn::color},
                          {"badgeglowalpha", false, Drawn::fraction, 0, 100},
                          {"badgeanimtype", false, Drawn::code, 0, 12},
                          {"badgeanimspd", false, Drawn::fraction, 0.2, 4}});
}

TEST_F(RandomiseTraceTest, CloseBox) {
    expectDraws("closebox", {{"closeboxshape", true, Drawn::code, 0, 4},
                             {"closeboxsize", true, Drawn::fraction, -1.5, 1.5},
                             {"closeboxrotation", true, Drawn::fraction, 0, 360},
                             {"closeboxpos", true, Drawn::code, 0, 8},
                             {"closeboxoffsetX", true, Drawn::fraction, -20, 20},
                             {"closeboxoffsetY", true, Drawn::fraction, -20, 20},
                             {"closeboxbgcol", false, Drawn::color},
                             {"closeboxalpha", false, Drawn::fraction, 0, 100},
                             {"closeboxtxtcol", false, Drawn::color},
                             {"closeboxtxtsize", false, Drawn::fraction, -1.5, 2.25},
                             {"closeboxtxtoffsetX", false, Drawn::fraction, -20, 20},
                             {"closeboxtxtoffsetY", false, Drawn::fraction, -20, 20},
                             {"closeboxbordercol", false, Drawn::color},
                             {"closeboxbordersize", false, Drawn::fraction, 0, 6},
                             {"closeboxglowcol", false, Drawn::color},
                             {"closeboxglowalpha", false, Drawn::fraction, 0, 100},
                             {"closeboxanimtype", false, Drawn::code, 0, 12},
                             {"closeboxanimspd", false, Drawn::fraction, 0.2, 4}});
}

TEST_F(RandomiseTraceTest, NewDot) {
    expectDraws("newdot", {{"newdotshape", true, Drawn::code, 0, 3},
                           {"newdotsize", true, Drawn::fraction, -1, 1},
                           {"newdotpos", true, Drawn::code, 0, 3},
                           {"newdotoffsetX", true, Drawn::fraction, -20, 20},
                           {"newdotoffsetY", true, Drawn::fraction, -20, 20},
                           {"newdotbgcol", false, Drawn::color},
                           {"newdotalpha", false, Drawn::fraction, 0, 100},
                           {"newdotanimtype", false, Drawn::code, 0, 12},
                           {"newdotanimspd", false, Drawn::fraction, 0.2, 4}});
}

TEST_F(TraceTest, RandomiseThenResetNeverTellsOfArabicNumbers) {
    for (int i = 0; i < 8; ++i) {
        const Lines lines = traceOn("badge", "tap Randomise\ntap Reset\n");
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "darwin com.quillon.tallyforge.convertArabic"), 0);
        EXPECT_EQ(domain()["convertbadgeroman"], 0);
    }
}

TEST_F(TraceTest, ATapOnThePreviewWritesItsConfiguration) {
    const Lines lines = traceOn("badge", "tap \"App Store\"\n");
    ASSERT_FALSE(lines.empty());
    const std::string file = "/var/mobile/Documents/Tallyforge/Config/config.tfc";
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "write " + file), 1);
    for (const std::string& line : lines) // and nothing else
        EXPECT_TRUE(line.starts_with("write /var/mobile/Documents/Tallyforge")) << line;
    EXPECT_TRUE(std::filesystem::exists(device.file(file)));
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(TraceTest, FollowAndDonateOpenTheirPages) {
    EXPECT_EQ(traceOn("tallyforge", "tap \"Follow us\"\n"),
              (Lines{"open-url https://tallyforge.example/profile"}));
    EXPECT_EQ(traceOn("tallyforge", "tap Donate\n"), (Lines{"open-url https://tallyforge.example/donate"}));
}

TEST_F(TraceTest, ShowingAMarkPaneReloadsThePreviewOnceAndOtherScreensNever) {
    for (const std::string& pane : kMarkPanes) {
        const Lines once = appearance(pane);
        EXPECT_EQ(once.front(), kReload);
        EXPECT_EQ(trace("open " + pane + "\n"), once) << pane;
        EXPECT_EQ(trace("open " + pane + "\n", {"--idiom", "pad"}), once) << pane;
        EXPECT_EQ(trace("open " + pane + "\nopen " + pane + "\nwait 2\n"), once) << pane << " stays";
        EXPECT_EQ(trace("open " + pane + "\nopen tallyforge\nopen " + pane + "\n"), joined({once, once}))
            << pane;
    }
    for (const std::string& pane : kOtherPanes)
        EXPECT_EQ(trace("open " + pane + "\nopen tallyforge\nopen " + pane + "\nwait 1\n"), Lines{}) << pane;
}

TEST_F(TraceTest, EachScreenOnTheWayShowsOnce) {
    EXPECT_EQ(trace("tap Badge\ntap Number\nback\nback\n"),
              joined({appearance("badge"), appearance("badgelabel"), appearance("badge")}));
    EXPECT_EQ(trace("tap Themes\nback\ntap \"Per-app themes\"\nback\n"), Lines{});
}

TEST_F(TraceTest, AScriptsTraceGoesIntoAFile) {
    const std::string file = (scratch / "trace").string();
    std::ofstream(file) << "an old trace that is longer than the new one will be\n" << std::string(4096, 'x');
    Ended ended = drive("open badge\nslide Size 2\n", {"--trace", file});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(linesOf(bytesOf(file)), joined({{kReload}, change("badgesize", "2")}));
    EXPECT_TRUE(bytesOf(file).ends_with("\n"));
}

TEST_F(TraceTest, TheEffectsBeforeAWrongStepAreInTheTrace) {
    const std::string file = (scratch / "trace").string();
    EXPECT_EQ(drive("open badge\nslide Size 2\njump\n", {"--trace", file}).status, 1);
    EXPECT_EQ(linesOf(bytesOf(file)), joined({{kReload}, change("badgesize", "2")}));
}

TEST_F(TraceTest, WithoutATraceNothingIsWrittenDown) {
    Ended ended = drive("open badge\nslide Size 2\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output + ended.errors, "");
}

} // namespace
} // namespace tallyforge::test
