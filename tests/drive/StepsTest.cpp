// Each kind of step, by what it does to the screen.

#include "DriveFixture.h"

namespace tallyforge::test {
namespace {

class StepsTest : public DriveTest {
  protected:
    /// The screen after a script that has to succeed.
    Json after(const std::string& script) const {
        Ended ended = drive(script + "inspect\n");
        EXPECT_EQ(ended.status, 0) << script << ended.errors;
        return Json::parse(ended.output, nullptr, false);
    }
    void expectStops(const std::string& script, const std::string& says) const {
        Ended ended = drive(script);
        EXPECT_EQ(ended.status, 1) << script;
        EXPECT_NE(ended.errors.find(says), std::string::npos) << ended.errors;
    }
    static Dictionary link(const char* label, const char* detail = "badgeListController") {
        Dictionary row;
        row.setObjectForKey(PropertyList::string("PSLinkCell"), "cell");
        row.setObjectForKey(PropertyList::string(label), "label");
        row.setObjectForKey(PropertyList::string(detail), "detail");
        return row;
    }
    /// As the device's own list has it, but called otherwise.
    static Dictionary slider(const char* label, const char* key) {
        Dictionary row;
        for (const Dictionary& own : rowsOfList("badge")) {
            if (text(own, "key") == key) row = own;
        }
        row.setObjectForKey(PropertyList::string(label), "label");
        return row;
    }
    /// Makes these the rows of the pane.
    void writeRows(const std::string& pane, const std::vector<Dictionary>& rows) const {
        PropertyList::Array items;
        for (const Dictionary& row : rows)
            items.push_back(PropertyList::dictionary(row));
        Dictionary list;
        list.setObjectForKey(PropertyList::array(items), "items");
        device.write(kBundle + pane + "prefs.plist",
                     BinaryPropertyList::Serialize(PropertyList::dictionary(list)));
    }
    static CGPoint middle(const Json& row) {
        const Json& frame = row["frame"];
        return {frame["x"].get<double>() + frame["width"].get<double>() / 2,
                frame["y"].get<double>() + frame["height"].get<double>() / 2};
    }
    static std::string at(const CGPoint& point) {
        return std::to_string(point.x) + " " + std::to_string(point.y);
    }
    /// Where the row that shows the title has its top.
    static double top(const Json& screen, const std::string& title) {
        const Json* entry = row(screen, title);
        return entry ? (*entry)["frame"]["y"].get<double>() : -1e9;
    }
};

TEST_F(StepsTest, OpenGoesFromTheRootByTheWayOfRows) {
    EXPECT_EQ(after("")["stack"], Json({"Tallyforge"}));
    EXPECT_EQ(after("open badgecolor\n")["stack"], Json({"Tallyforge", "Badge", "Colour & opacity"}));
    EXPECT_EQ(after("open badgecolor\nopen themes\n")["stack"], Json({"Tallyforge", "Themes"}));
    EXPECT_EQ(after("open badgecolor\nopen tallyforge\n")["stack"], Json({"Tallyforge"}));
    EXPECT_EQ(after("open badge\nopen badge\n")["stack"], Json({"Tallyforge", "Badge"}));
}

TEST_F(StepsTest, BackGoesOneScreenBack) {
    EXPECT_EQ(after("open badgecolor\nback\n")["stack"], Json({"Tallyforge", "Badge"}));
    EXPECT_EQ(after("open badgecolor\nback\nback\n")["stack"], Json({"Tallyforge"}));
    expectStops("open badgecolor\nback\nback\nback\n", "line 4: this is the first screen");
}

TEST_F(StepsTest, TapTakesTextsAnywhereOnTheScreenAndScrollsToThem) {
    EXPECT_EQ(after("open badge\ntap Animation\n")["title"], "Animation");        // far below
    EXPECT_EQ(after("open badge\ntap Animation\ntap Badge\n")["title"], "Badge"); // the way back
    EXPECT_EQ(after("open badge\ntap \"Top right\"\n")["title"], "Position");     // the value of a row
}

TEST_F(StepsTest, TapTakesAPoint) {
    const CGPoint closeBox = middle(*row(after(""), "Close box"));
    EXPECT_EQ(after("tap " + at(closeBox) + "\n")["title"], "Close box");
    EXPECT_EQ(after("tap 5 70\ntap -5 -5\ntap 5000 5000\n")["title"], "Tallyforge"); // on nothing
}

TEST_F(StepsTest, ATextThatTwoRowsShowMeansTheUpperOne) {
    writeRows("tallyforge",
              {link("Same"), link("Same", "themesListController"), link("Same", "newdotListController")});
    EXPECT_EQ(after("tap Same\n")["rows"].size(), rowsOfList("badge").size());
}

TEST_F(StepsTest, TapRefusesATextThatIsNothingToTouch) {
    expectStops("tap Tallyforge\n", "line 1: 'Tallyforge' is no row, button or other control"); // the bar
    expectStops("open badge\ntap SIZE\n", "line 2: nothing on the screen shows 'SIZE'");
    const std::string footer = "Writes the count the Roman way: VI in place of 6.";
    expectStops("open badge\ntap \"" + footer + "\"\n", "line 2: '" + footer + "' is no row");
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(StepsTest, TapMeansARowFurtherDownRatherThanTheTitleAbove) {
    std::vector<Dictionary> rows(20, link("Other"));
    rows.push_back(link("Badge"));
    writeRows("badge", rows);
    EXPECT_EQ(after("open badge\ntap Badge\n")["stack"], Json({"Tallyforge", "Badge", "Badge"}));
}

TEST_F(StepsTest, SlideIsRefusedByADisabledRow) {
    Dictionary row = slider("Size", "badgesize");
    row.setObjectForKey(PropertyList::boolean(false), "enabled");
    writeRows("badge", {row});
    expectStops("open badge\nslide Size 1\n", "line 2: the slider 'Size' takes no touches");
    expectStops("open badge\nslide Size 1 hold\n", "line 2: the slider 'Size' takes no touches");
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

// Told when it is let go, a row whose getter reads nothing shows its least value again.
TEST_F(StepsTest, SlideIsRefusedWhereTheValueDoesNotStay) {
    Dictionary row = slider("Size", "badgesize");
    row.setObjectForKey(PropertyList::string("readNothing:"), "get");
    row.setObjectForKey(PropertyList::boolean(false), "isContinuous");
    writeRows("badge", {row});
    expectStops("open badge\nslide Size 1\n", "line 2: the slider 'Size' stands at -1.5");
}

TEST_F(StepsTest, SlideLandsOnTheValueExactly) {
    for (const char* value : {"-1.5", "2.25", "0", "0.1", "-0.7", "1.2", "0.33333334"}) {
        EXPECT_EQ(drive(std::string("open badge\nslide Size 1\nslide Size ") + value + "\n").status, 0);
        EXPECT_EQ(domain()["badgesize"], static_cast<double>(std::stof(value))) << value;
        std::filesystem::remove(domainFile());
    }
    for (int value = -20; value <= 20; ++value) {
        if (value == 7) continue;
        EXPECT_EQ(traceOn("badge", "slide \"Horizontal offset\" 7\nslide \"Horizontal offset\" " +
                                       std::to_string(value) + "\n")[5],
                  "set com.quillon.tallyforge badgeoffsetX " + std::to_string(value));
        std::filesystem::remove(domainFile());
    }
}

TEST_F(StepsTest, SlideIsOneMovementAndNoneWhereItStandsAlready) {
    EXPECT_EQ(traceOn("badge", "slide Size 1\n"), change("badgesize", "1"));
    EXPECT_EQ(traceOn("badge", "slide Size 1\nslide Size 1\n"), Lines{});
}

TEST_F(StepsTest, SlideWithHoldKeepsTheFingerDown) {
    EXPECT_EQ(traceOn("badge", "slide Size 1 hold\nslide Size 2 hold\nslide Size 0.5\nslide Rotation 90\n"),
              joined({change("badgesize", "1"), change("badgesize", "2"), change("badgesize", "0.5"),
                      change("badgerotation", "90")}));
    const std::string held = "open badge\nslide Size 1 hold\n";
    for (const char* next :
         {"tap Shape", "tap 10 300", "back", "open closebox", "drag 100 500 100 200", "slide Rotation 90"})
        expectStops(held + next + "\n", "line 3: a finger is still down");
    EXPECT_EQ(domain(), (Json{{"badgesize", 1.0}, {"badgerotation", 90.0}})); // the latter from before
}

// The finger stays where it is whatever is looked at meanwhile, even far down a pane.
TEST_F(StepsTest, LookingDoesNotDisturbAHeldSlider) {
    const std::string picture = (scratch / "p.png").string(), json = (scratch / "j.json").string();
    EXPECT_EQ(traceOn("badge", "slide \"Vertical offset\" 5 hold\ninspect \"" + json + "\"\nrender \"" +
                                   picture + "\"\nwait 1\nslide \"Vertical offset\" 9\n"),
              joined({change("badgeoffsetY", "5"), change("badgeoffsetY", "9")}));
    EXPECT_EQ((*row(Json::parse(bytesOf(json)), "Vertical offset"))["value"], 5);
}

TEST_F(StepsTest, DragScrollsTheScreen) {
    const Json before = after("open badge\n");
    const Json moved = after("open badge\ndrag 180 500 180 400 1\nwait 3\n");
    EXPECT_LT(top(moved, "Shape"), top(before, "Shape") - 50);
    EXPECT_GT(top(moved, "Shape"), top(before, "Shape") - 150);
    // Back down, past the upper end: the screen comes back to its place.
    const Json back = after("open badge\ndrag 180 500 180 400 1\nwait 3\ndrag 180 200 180 600 1\nwait 5\n");
    EXPECT_NEAR(top(back, "Shape"), top(before, "Shape"), 1e-6);
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(StepsTest, DragTakesTheTimeItIsGiven) {
    EXPECT_NEAR(after("drag 10 600 10 590 2.5\n")["time"].get<double>(), 2.5, 1e-6);
    EXPECT_NEAR(after("drag 10 600 10 590\n")["time"].get<double>(), 0.3, 1e-6);
    EXPECT_NEAR(after("drag 10 600 10 590 0\n")["time"].get<double>(), 0, 1e-9);
}

TEST_F(StepsTest, DragMovesASlider) {
    Json before = after("open badgecolor\n");
    const Json frame = (*row(before, "Opacity"))["frame"];
    // The thumb stands at the right end; dragging it past the left end makes the least.
    const double y = frame["y"].get<double>() + 50.5;
    after("open badgecolor\ndrag 346 " + std::to_string(y) + " 2 " + std::to_string(y) + "\n");
    EXPECT_EQ(domain()["badgealpha"], 0.0);
}

TEST_F(StepsTest, DragFromTheLeftEdgeGoesBack) {
    EXPECT_EQ(after("open badge\ndrag 5 400 340 400\nwait 1\n")["title"], "Tallyforge");
    EXPECT_EQ(after("open badge\ndrag 5 400 60 400 1\nwait 1\n")["title"], "Badge");
    EXPECT_EQ(after("open badge\ndrag 100 400 340 400\nwait 1\n")["title"], "Badge");
}

TEST_F(StepsTest, ScrollBringsTheTextOnScreenAndNoFurtherThanNeeded) {
    const Json before = after("open badge\n");
    EXPECT_GT(top(before, "Reset"), 667);
    const Json below = after("open badge\nscroll Reset\n");
    EXPECT_GE(top(below, "Reset"), 64);
    EXPECT_LE(top(below, "Reset") + 44, 667);
    EXPECT_EQ(top(after("open badge\nscroll Size\n"), "Shape"), top(before, "Shape")); // it was on screen
    const Json up = after("open badge\nscroll Reset\nscroll Shape\n");
    EXPECT_GE(top(up, "Shape"), 64);
    // A footer is a text as well.
    const Json foot = after("open badge\nscroll \"Writes the count the Roman way: VI in place of 6.\"\n");
    EXPECT_LE(top(foot, "Roman numerals") + 44, 667);
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(StepsTest, AFailedSearchLeavesTheScreenWhereItWas) {
    const std::string json = (scratch / "j.json").string();
    Ended ended = drive("open badge\nscroll Reset\ninspect \"" + json + "\"\nscroll Nowhere\n");
    EXPECT_EQ(ended.status, 1);
    EXPECT_LE(top(Json::parse(bytesOf(json)), "Reset"), 667 - 44);
}

TEST_F(StepsTest, WaitLetsTheClockRun) {
    EXPECT_EQ(after("")["time"], 0);
    EXPECT_EQ(after("wait 0\n")["time"], 0);
    EXPECT_NEAR(after("wait 1.5\nwait 0.25\n")["time"].get<double>(), 1.75, 1e-9);
    EXPECT_EQ(after("wait 3600\n")["time"], 3600);
}

TEST_F(StepsTest, RenderWritesAPictureAtTheScale) {
    auto sizeOf = [](const std::string& png) { // from the header chunk
        auto number = [&](size_t at) {
            unsigned value = 0;
            for (size_t i = 0; i < 4; ++i)
                value = value << 8 | static_cast<unsigned char>(png.at(at + i));
            return value;
        };
        return std::pair(number(16), number(20));
    };
    const std::string file = (scratch / "p.png").string();
    EXPECT_EQ(drive("render \"" + file + "\"\n").status, 0);
    EXPECT_EQ(sizeOf(bytesOf(file)), std::pair(750U, 1334U));
    EXPECT_EQ(drive("render \"" + file + "\"\n", {"--idiom", "pad", "--scale", "1"}).status, 0);
    EXPECT_EQ(sizeOf(bytesOf(file)), std::pair(768U, 1024U));
    const std::string other = (scratch / "q.png").string();
    EXPECT_EQ(drive("render \"" + file + "\"\nopen badge\nrender \"" + other + "\"\n").status, 0);
    EXPECT_NE(bytesOf(file), bytesOf(other));
}

TEST_F(StepsTest, FilesThatCannotBeWrittenStopTheRunAndLeaveNothing) {
    const std::string nowhere = (scratch / "no" / "p").string();
    expectStops("render \"" + nowhere + "\"\n", "line 1: ");
    expectStops("inspect \"" + nowhere + "\"\n", "line 1: ");
    expectStops("render \"" + scratch.string() + "\"\n", "line 1: ");
    expectStops("inspect \"" + scratch.string() + "\"\n", "line 1: ");
    EXPECT_FALSE(std::filesystem::exists(nowhere));
    for (const auto& entry : std::filesystem::directory_iterator(scratch))
        EXPECT_EQ(entry.path().filename(), "script");
}

TEST_F(StepsTest, InspectGoesToStandardOutputOrIntoAFile) {
    const std::string file = (scratch / "j.json").string();
    Ended ended = drive("inspect\ninspect \"" + file + "\"\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, bytesOf(file));
    EXPECT_EQ(Json::parse(ended.output, nullptr, false)["title"], "Tallyforge");
}

TEST_F(StepsTest, LookingAtAScreenTwiceShowsTheSame) {
    for (const char* script : {"open badge\n", "open badge\nscroll Reset\n", "open badge\ntap Shape\n",
                               "open badge\nslide Size 1 hold\n"}) {
        const std::string first = (scratch / "1").string(), second = (scratch / "2").string();
        Ended ended = drive(std::string(script) + "inspect \"" + first + "\"\ninspect \"" + second + "\"\n");
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(bytesOf(first), bytesOf(second)) << script;
        EXPECT_GT(bytesOf(first).size(), 1000U);
    }
}

// A list's choices keep what they stand for when they have been looked at.
TEST_F(StepsTest, ChoicesCanBeChosenAfterTheyWereInspected) {
    const std::string json = (scratch / "j.json").string();
    EXPECT_EQ(traceOn("badge", "tap Shape\ninspect \"" + json + "\"\ntap Star\n"), change("badgeshape", "4"));
}

} // namespace
} // namespace tallyforge::test
