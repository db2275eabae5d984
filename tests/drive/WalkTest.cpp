// Every row of every pane, operated by a script on phone and tablet.

#include "DriveFixture.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tallyforge::test {
namespace {

class WalkTest : public DriveTest, public testing::WithParamInterface<const char*> {
  protected:
    Lines idiom() const { return {"--idiom", GetParam()}; }
    void run(const std::string& script) const {
        Ended ended = drive(script, idiom());
        EXPECT_EQ(ended.status, 0) << script << ended.errors;
        EXPECT_EQ(ended.errors, "");
    }
    Json screen(const std::string& script) const {
        Ended ended = drive(script + "inspect\n", idiom());
        EXPECT_EQ(ended.status, 0) << script << ended.errors;
        return Json::parse(ended.output, nullptr, false);
    }
    void forget() const { std::filesystem::remove(domainFile()); }
    static std::vector<Dictionary> rowsOfKind(const std::string& pane, const char* kind) {
        std::vector<Dictionary> rows = rowsOfList(pane);
        std::erase_if(rows, [&](const Dictionary& row) { return text(row, "cell") != kind; });
        return rows;
    }
};

// Under the address checker each of the many programs takes ten times as long: one walk has to do.
#ifdef __SANITIZE_ADDRESS__
const auto kWalks = testing::Values("phone");
#else
const auto kWalks = testing::Values("phone", "pad");
#endif
INSTANTIATE_TEST_SUITE_P(Idioms, WalkTest, kWalks,
                         [](const auto& which) { return std::string(which.param); });

TEST_P(WalkTest, EveryPaneOpensWithTheRowsOfItsList) {
    size_t rows = 0;
    for (const std::string& pane : allPanes()) {
        Json shown = screen("open " + pane + "\n");
        const auto wanted = rowsOfList(pane);
        ASSERT_EQ(shown["rows"].size(), wanted.size()) << pane;
        for (size_t i = 0; i < wanted.size(); ++i) {
            EXPECT_EQ(shown["rows"][i]["id"], text(wanted[i], "id")) << pane;
            EXPECT_EQ(shown["rows"][i]["title"], text(wanted[i], "label")) << pane;
        }
        rows += wanted.size();
    }
    EXPECT_GE(rows, 46U + 15U); // a row for each setting, and a preview in each mark's pane
}

TEST_P(WalkTest, EverySliderGoesToItsEndsAndBetween) {
    size_t sliders = 0;
    for (const std::string& pane : kMarkPanes) {
        const auto rows = rowsOfKind(pane, "PSSliderCell");
        sliders += rows.size();
        if (rows.empty()) continue;
        for (double share : {0.0, 1.0, 0.3, 0.5, 0.77}) {
            // Where the slider stands already there would be nothing to write.
            std::string script = "open " + pane + "\n";
            std::map<std::string, float> wanted;
            for (const Dictionary& row : rows) {
                const double min = row.objectForKey("min")->doubleValue(),
                             max = row.objectForKey("max")->doubleValue();
                const auto value = static_cast<float>(min + share * (max - min));
                const auto aside = static_cast<float>(min + (share < 0.9 ? 0.9 : 0.1) * (max - min));
                const std::string slide = "slide \"" + text(row, "label") + "\" ";
                script += slide + digits(aside) + "\n" + slide + digits(value) + "\n";
                wanted[text(row, "key")] = value;
            }
            forget();
            run(script);
            const Json held = domain();
            EXPECT_EQ(held.size(), wanted.size()) << pane;
            for (const auto& [key, value] : wanted)
                EXPECT_EQ(held.value(key, NAN), static_cast<double>(value))
                    << pane << ' ' << key << ' ' << share;
        }
    }
    EXPECT_EQ(sliders, 11U + 11U + 5U); // of badge, close box and new dot
}

TEST_P(WalkTest, EveryChoiceOfEveryListIsWritten) {
    size_t lists = 0;
    for (const std::string& pane : kMarkPanes) {
        for (const Dictionary& row : rowsOfKind(pane, "PSLinkListCell")) {
            ++lists;
            const auto& values = *row.objectForKey("validValues")->asArray();
            const auto& titles = *row.objectForKey("validTitles")->asArray();
            ASSERT_EQ(values.size(), titles.size());
            std::string script = "open " + pane + "\ntap \"" + text(row, "label") + "\"\n";
            Lines wanted;
            for (size_t i = 0; i < values.size(); ++i) {
                script += "tap \"" + *titles[i].asString() + "\"\n";
                for (const std::string& line : change(text(row, "key"), digits(values[i].floatValue())))
                    wanted.push_back(line);
            }
            Lines lines = trace(script, idiom());
            ASSERT_FALSE(lines.empty());
            lines.erase(lines.begin()); // the pane's own appearance
            EXPECT_EQ(lines, wanted) << pane << ' ' << text(row, "key");
            EXPECT_EQ(domain()[text(row, "key")], values.back().doubleValue());

            Json list = screen("open " + pane + "\ntap \"" + text(row, "label") + "\"\n");
            EXPECT_EQ(list["title"], text(row, "label"));
            ASSERT_EQ(list["rows"].size(), values.size());
            for (size_t i = 0; i < values.size(); ++i) {
                EXPECT_EQ(list["rows"][i]["value"], values[i].intValue());
                EXPECT_EQ(list["rows"][i]["accessory"], i + 1 == values.size() ? "checkmark" : "none");
            }
            Json after = screen("open " + pane + "\n");
            EXPECT_EQ((*this->row(after, text(row, "label")))["detail"], *titles.back().asString());
        }
    }
    EXPECT_EQ(lists, 10U); // shape, position and animation of three marks, and the close box's plate
}

TEST_P(WalkTest, EverySwitchGoesOnAndOff) {
    size_t switches = 0;
    for (const std::string& pane : allPanes()) {
        for (const Dictionary& row : rowsOfKind(pane, "PSSwitchCell")) {
            ++switches;
            const std::string tap = "open " + pane + "\ntap \"" + text(row, "label") + "\"\n";
            run(tap);
            EXPECT_EQ(domain()[text(row, "key")], 1.0);
            run(tap);
            EXPECT_EQ(domain()[text(row, "key")], 0.0);
        }
    }
    EXPECT_EQ(switches, 1U);
}

TEST_P(WalkTest, EveryWayLeadsThereAndBack) {
    size_t ways = 0;
    for (const std::string& pane : allPanes()) {
        const std::string title = screen("open " + pane + "\n")["title"];
        const auto rows = rowsOfList(pane);
        for (const Dictionary& row : rows) {
            const std::string kind = text(row, "cell"), label = text(row, "label");
            if (kind != "PSLinkCell" && kind != "PSLinkListCell") continue;
            Json shown = screen("open " + pane + "\n");
            if (!(*this->row(shown, label))["enabled"]) { // a screen that is not there
                EXPECT_EQ(screen("open " + pane + "\ntap \"" + label + "\"\n")["title"], title) << label;
                continue;
            }
            ++ways;
            Json there = screen("open " + pane + "\ntap \"" + label + "\"\n");
            ASSERT_GE(there["stack"].size(), 2U) << pane << ' ' << label;
            EXPECT_EQ(there["stack"][there["stack"].size() - 2], title);
            EXPECT_EQ(there["title"], label) << pane;
            EXPECT_EQ(screen("open " + pane + "\ntap \"" + label + "\"\nback\n")["title"], title) << label;
            EXPECT_EQ(screen("open " + pane + "\ntap \"" + label + "\"\ntap \"" + title + "\"\n")["title"],
                      title);
        }
    }
    EXPECT_GE(ways, 5U + 12U + 10U); // from the root, to the parts of marks, to choices
}

TEST_P(WalkTest, RowsWithoutAScreenStayWithoutEffect) {
    for (const std::string& pane : kMarkPanes) {
        Json before = screen("open " + pane + "\n");
        for (const Json& entry : before["rows"]) {
            if (entry["enabled"] || entry["title"] == "") continue;
            const std::string script =
                "open " + pane + "\ntap \"" + entry["title"].get<std::string>() + "\"\n";
            EXPECT_EQ(trace(script, idiom()), Lines{kReload}) << script;
            EXPECT_EQ(screen(script)["stack"], before["stack"]) << script;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_P(WalkTest, RandomiseAndResetStandInThreePanesAndCoverTheirMarks) {
    const std::map<std::string, size_t> settings{{"badge", 19}, {"closebox", 18}, {"newdot", 9}};
    for (const auto& [pane, count] : settings) {
        forget();
        run("open " + pane + "\ntap Randomise\n");
        EXPECT_EQ(domain().size(), count);
        run("open " + pane + "\ntap Reset\n");
        EXPECT_EQ(domain().size(), count);
        EXPECT_EQ(domain()[pane + "alpha"], 100);
        EXPECT_EQ(domain()[pane + "size"], 0);
    }
}

} // namespace
} // namespace tallyforge::test
