// Every row of every pane, operated by a script on phone and tablet.

#include "DriveFixture.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tallyforge::test {
namespace {

/// A script in the making, with the screens that are looked at on its way.
class Script {
  public:
    explicit Script(std::filesystem::path looks) : looks_(std::move(looks)) {}
    Script& open(const std::string& pane) { return step("open " + pane); }
    Script& tap(const std::string& shown) { return step("tap \"" + shown + "\""); }
    Script& slide(const std::string& row, float value) {
        return step("slide \"" + row + "\" " + digits(value));
    }
    Script& back() { return step("back"); }
    /// Returns the number of the look.
    size_t look() {
        step("inspect " + fileOf(count_).string());
        return count_++;
    }
    const std::string& text() const { return text_; }
    /// What was seen, in order, after the script has run.
    std::vector<Json> seen() const {
        std::vector<Json> screens;
        for (size_t i = 0; i < count_; ++i)
            screens.push_back(Json::parse(bytesOf(fileOf(i)), nullptr, false));
        return screens;
    }

  private:
    Script& step(const std::string& line) {
        text_ += line + '\n';
        return *this;
    }
    std::filesystem::path fileOf(size_t look) const {
        return looks_ / ("look-" + std::to_string(look) + ".json");
    }
    std::filesystem::path looks_;
    std::string text_;
    size_t count_ = 0;
};

/// Starts the program once for a pane, or for all of them, and not for every row: that is what takes long.
class WalkTest : public DriveTest, public testing::WithParamInterface<const char*> {
  protected:
    Lines idiom() const { return {"--idiom", GetParam()}; }
    Script script() const { return Script(scratch); }
    void run(const std::string& script) const {
        Ended ended = drive(script, idiom());
        EXPECT_EQ(ended.status, 0) << script << ended.errors;
        EXPECT_EQ(ended.errors, "");
    }
    /// The screens that the script looks at.
    std::vector<Json> screens(const Script& script) const {
        run(script.text());
        return script.seen();
    }
    /// Each pane as it opens.
    std::map<std::string, Json> everyPane() const {
        Script all = script();
        for (const std::string& pane : allPanes())
            all.open(pane).look();
        const std::vector<Json> seen = screens(all);
        std::map<std::string, Json> shown;
        for (size_t i = 0; i < seen.size(); ++i)
            shown[allPanes()[i]] = seen[i];
        return shown;
    }
    void forget() const { std::filesystem::remove(domainFile()); }
    static std::vector<Dictionary> rowsOfKind(const std::string& pane, const char* kind) {
        std::vector<Dictionary> rows = rowsOfList(pane);
        std::erase_if(rows, [&](const Dictionary& row) { return text(row, "cell") != kind; });
        return rows;
    }
    void goEveryWay(const std::string& pane, const Json& shown, size_t& ways) const;
};

INSTANTIATE_TEST_SUITE_P(Idioms, WalkTest, testing::Values("phone", "pad"),
                         [](const auto& which) { return std::string(which.param); });

TEST_P(WalkTest, EveryPaneOpensWithTheRowsOfItsList) {
    size_t rows = 0;
    for (auto& [pane, shown] : everyPane()) {
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
    constexpr double kShares[] = {0.9, 0.0, 1.0, 0.3, 0.5, 0.77}; // no slider stands at 0.9 of its way
    const auto at = [](const Dictionary& row, double share) {
        const double min = row.objectForKey("min")->doubleValue(),
                     max = row.objectForKey("max")->doubleValue();
        return static_cast<float>(min + share * (max - min));
    };
    size_t sliders = 0;
    for (const std::string& pane : kMarkPanes) {
        const auto rows = rowsOfKind(pane, "PSSliderCell");
        sliders += rows.size();
        if (rows.empty()) continue;
        Script script = this->script();
        script.open(pane);
        Lines wanted;
        for (double share : kShares) {
            for (const Dictionary& row : rows) {
                script.slide(text(row, "label"), at(row, share));
                wanted.push_back("set com.quillon.tallyforge " + text(row, "key") + ' ' +
                                 digits(at(row, share)));
            }
            script.look();
        }
        forget();
        Lines written = trace(script.text(), idiom());
        std::erase_if(written, [](const std::string& line) { return !line.starts_with("set "); });
        EXPECT_EQ(written, wanted) << pane;
        const std::vector<Json> seen = script.seen();
        const Json held = domain();
        EXPECT_EQ(held.size(), rows.size()) << pane;
        for (const Dictionary& row : rows) {
            const std::string key = text(row, "key");
            for (size_t i = 0; i < seen.size(); ++i)
                EXPECT_EQ((*this->row(seen[i], text(row, "label")))["value"].get<float>(),
                          at(row, kShares[i]))
                    << pane << ' ' << key << ' ' << kShares[i];
            EXPECT_EQ(held.value(key, NAN), static_cast<double>(at(row, std::end(kShares)[-1])))
                << pane << ' ' << key;
        }
    }
    EXPECT_EQ(sliders, 11U + 11U + 5U); // of badge, close box and new dot
}

TEST_P(WalkTest, EveryChoiceOfEveryListIsWritten) {
    size_t lists = 0;
    for (const std::string& pane : kMarkPanes) {
        const auto rows = rowsOfKind(pane, "PSLinkListCell");
        lists += rows.size();
        if (rows.empty()) continue;
        Script choose = script(), lookAgain = script();
        Lines wanted;
        for (const Dictionary& row : rows) {
            const std::string label = text(row, "label");
            const auto& values = *row.objectForKey("validValues")->asArray();
            const auto& titles = *row.objectForKey("validTitles")->asArray();
            ASSERT_EQ(values.size(), titles.size());
            choose.open(pane).tap(label);
            wanted.push_back(kReload); // the pane's own appearance
            for (size_t i = 0; i < values.size(); ++i) {
                choose.tap(*titles[i].asString());
                for (const std::string& line : change(text(row, "key"), digits(values[i].floatValue())))
                    wanted.push_back(line);
            }
            lookAgain.open(pane).look();
            lookAgain.tap(label).look();
        }
        EXPECT_EQ(trace(choose.text(), idiom()), wanted) << pane;
        const Json held = domain();
        const std::vector<Json> seen = screens(lookAgain);
        for (size_t at = 0; at < rows.size(); ++at) {
            const std::string label = text(rows[at], "label");
            const auto& values = *rows[at].objectForKey("validValues")->asArray();
            EXPECT_EQ(held.value(text(rows[at], "key"), NAN), values.back().doubleValue()) << label;
            EXPECT_EQ((*this->row(seen[2 * at], label))["detail"],
                      *rows[at].objectForKey("validTitles")->asArray()->back().asString());
            const Json& list = seen[2 * at + 1];
            EXPECT_EQ(list["title"], label);
            ASSERT_EQ(list["rows"].size(), values.size());
            for (size_t i = 0; i < values.size(); ++i) {
                EXPECT_EQ(list["rows"][i]["value"], values[i].intValue());
                EXPECT_EQ(list["rows"][i]["accessory"], i + 1 == values.size() ? "checkmark" : "none");
            }
        }
    }
    EXPECT_EQ(lists, 10U); // shape, position and animation of three marks, and the close box's plate
}

TEST_P(WalkTest, EverySwitchGoesOnAndOff) {
    size_t switches = 0;
    for (const std::string& pane : allPanes()) {
        for (const Dictionary& row : rowsOfKind(pane, "PSSwitchCell")) {
            ++switches;
            const std::string tap = script().open(pane).tap(text(row, "label")).text();
            run(tap);
            EXPECT_EQ(domain()[text(row, "key")], 1.0);
            run(tap);
            EXPECT_EQ(domain()[text(row, "key")], 0.0);
        }
    }
    EXPECT_EQ(switches, 1U);
}

void WalkTest::goEveryWay(const std::string& pane, const Json& shown, size_t& ways) const {
    const std::string title = shown["title"];
    Lines there, nowhere;
    for (const Dictionary& row : rowsOfList(pane)) {
        const std::string kind = text(row, "cell"), label = text(row, "label");
        if (kind != "PSLinkCell" && kind != "PSLinkListCell") continue;
        const bool leads = (*this->row(shown, label))["enabled"]; // or a screen that is not there
        (leads ? there : nowhere).push_back(label);
    }
    ways += there.size();
    Script script = this->script();
    for (const std::string& label : nowhere)
        script.open(pane).tap(label).look();
    for (const std::string& label : there) {
        script.open(pane).tap(label).look();
        script.back().look();
        script.open(pane).tap(label).tap(title).look();
    }
    const std::vector<Json> seen = screens(script);
    auto screen = seen.begin();
    for (const std::string& label : nowhere)
        EXPECT_EQ((*screen++)["title"], title) << label;
    for (const std::string& label : there) {
        const Json& stack = (*screen)["stack"];
        ASSERT_GE(stack.size(), 2U) << pane << ' ' << label;
        EXPECT_EQ(stack[stack.size() - 2], title);
        EXPECT_EQ((*screen++)["title"], label) << pane;
        EXPECT_EQ((*screen++)["title"], title) << label;
        EXPECT_EQ((*screen++)["title"], title) << label;
    }
}

TEST_P(WalkTest, EveryWayLeadsThereAndBack) {
    size_t ways = 0;
    for (const auto& [pane, shown] : everyPane())
        goEveryWay(pane, shown, ways);
    EXPECT_GE(ways, 5U + 12U + 10U); // from the root, to the parts of marks, to choices
}

// On a device whose lists name screens that this system does not have.
TEST_P(WalkTest, RowsWithoutAScreenStayWithoutEffect) {
    const std::filesystem::path file = device.file(kBundle + "badgeprefs.plist");
    std::string rows = bytesOf(file);
    for (const char* name : {"badgecolorListController", "badgeglowListController"})
        rows.replace(rows.find(name), std::string(name).size(), "noListController");
    std::ofstream(file, std::ios::binary) << rows;

    Script script = this->script();
    script.open("badge").look();
    script.tap("Colour & opacity").look();
    script.tap("Glow").look();
    EXPECT_EQ(trace(script.text(), idiom()), Lines{kReload});
    const std::vector<Json> seen = script.seen();
    for (const char* label : {"Colour & opacity", "Glow"}) {
        ASSERT_NE(row(seen[0], label), nullptr);
        EXPECT_EQ((*row(seen[0], label))["enabled"], false);
    }
    for (const Json& screen : seen)
        EXPECT_EQ(screen["stack"], seen[0]["stack"]);
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_P(WalkTest, RandomiseAndResetStandInThreePanesAndCoverTheirMarks) {
    const std::map<std::string, size_t> settings{{"badge", 19}, {"closebox", 18}, {"newdot", 9}};
    for (const auto& [pane, count] : settings) {
        forget();
        run(script().open(pane).tap("Randomise").text());
        EXPECT_EQ(domain().size(), count);
        run(script().open(pane).tap("Reset").text());
        const Json held = domain();
        EXPECT_EQ(held.size(), count);
        EXPECT_EQ(held.value(pane + "alpha", NAN), 100);
        EXPECT_EQ(held.value(pane + "size", NAN), 0);
    }
}

} // namespace
} // namespace tallyforge::test
