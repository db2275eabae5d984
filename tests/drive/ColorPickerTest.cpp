// The colour picker as it is reached from the panes, driven by scripts, with its effects written down.

#include "DriveFixture.h"

#include <gmock/gmock.h>

#include <map>

namespace tallyforge::test {
namespace {

/// A colour row: where it stands, and what makes sense for it.
struct ColorRow {
    const char* pane;
    const char* key;
    const char* fallback;
    bool automatic, transparent;
};
const std::vector<ColorRow> kColorRows{
    {"badgecolor", "badgebgcol", "#00FF00", true, true},
    {"badgelabel", "badgetxtcol", "#FFFFFF", true, true},
    {"badgeborder", "badgebordercol", "#FF0000", true, false},
    {"badgeglow", "badgeglowcol", "#00FF00", true, false},
    {"closeboxcolor", "closeboxbgcol", "#FFA500", true, false},
    {"closeboxlabel", "closeboxtxtcol", "#FFFFFF", true, false},
    {"closeboxborder", "closeboxbordercol", "#000000", true, false},
    {"closeboxglow", "closeboxglowcol", "#FF0000", true, false},
    {"newdotcolor", "newdotbgcol", "#FF0000", true, false},
};

class DrivenPickerTest : public DriveTest {
  protected:
    Json screen(const std::string& script, const Lines& words = {}) const {
        Ended ended = drive(script + "inspect\n", words);
        EXPECT_EQ(ended.status, 0) << script << ended.errors;
        return Json::parse(ended.output, nullptr, false);
    }
    /// What happens in the picker of the badge's fill colour.
    Lines inPicker(const std::string& script) const {
        Lines all = trace("open badgebgcol\nwait 0\n" + script);
        Lines opening = trace("open badgebgcol\nwait 0\n");
        EXPECT_TRUE(std::equal(opening.begin(), opening.end(), all.begin()));
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(opening.size()));
        return all;
    }
    static Lines chosen(const std::string& key, const std::string& value) {
        return {"set com.quillon.tallyforge " + key + " " + value, kSynchronise, kReload,
                "darwin com.quillon.tallyforge.prefs"};
    }
    static Lines checked(const Json& shown) {
        Lines titles;
        for (const Json& entry : shown["rows"]) {
            if (entry["accessory"] == "checkmark") titles.push_back(entry["title"]);
        }
        return titles;
    }
    static std::string labelOf(const ColorRow& color) {
        for (const Dictionary& row : rowsOfList(color.pane)) {
            if (text(row, "key") == color.key) return text(row, "label");
        }
        return {};
    }
    /// Puts another list of the badge's colour screen on the device.
    void rewriteList(const std::string& from, const std::string& to) const {
        const std::filesystem::path file = device.file(kBundle + "badgecolorprefs.plist");
        std::string list = bytesOf(file);
        const size_t at = list.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        std::ofstream(file, std::ios::binary) << list.replace(at, from.size(), to);
    }
    void store(const char* key, const PropertyList& value) const {
        Dictionary domain;
        domain.setObjectForKey(value, key);
        device.writeDomain(domain);
    }
    /// The view of that tag anywhere below.
    static const Json* tagged(const Json& view, int tag) {
        if (view["tag"] == tag) return &view;
        for (const Json& below : view["subviews"]) {
            if (const Json* found = tagged(below, tag)) return found;
        }
        return nullptr;
    }
};

TEST_F(DrivenPickerTest, EveryColourRowOpensItsPickerAndShowsTheChoice) {
    for (const char* idiom : {"phone", "pad"}) {
        for (const ColorRow& color : kColorRows) {
            const std::string label = labelOf(color), open = std::string("open ") + color.pane + "\n";
            Json pane = screen(open, {"--idiom", idiom});
            ASSERT_NE(row(pane, label), nullptr) << color.key;
            EXPECT_EQ((*row(pane, label))["cell"], "QuillonColorPickerLinkCell");
            EXPECT_EQ((*row(pane, label))["enabled"], true);
            EXPECT_EQ((*row(pane, label))["accessory"], "disclosureIndicator");
            EXPECT_EQ((*row(pane, label))["detail"], color.fallback) << color.key;

            Json picker = screen(open + "tap \"" + label + "\"\n", {"--idiom", idiom});
            EXPECT_EQ(picker["title"], label);
            ASSERT_EQ(picker["rows"].size(), 64U);
            for (int i = 0; i < 5; ++i) {
                const bool allowed = i == 0 || (i == 1 ? color.transparent : color.automatic);
                EXPECT_EQ(picker["rows"][static_cast<size_t>(i)]["enabled"], allowed) << color.key << i;
            }
            Json after = screen(open + "tap \"" + label + "\"\ntap Grape\nback\n", {"--idiom", idiom});
            EXPECT_EQ((*row(after, label))["detail"], "#8000FF");
            EXPECT_EQ(domain()[color.key], "#8000FF");
            std::filesystem::remove(domainFile());
        }
    }
}

TEST_F(DrivenPickerTest, TheFirstRowSaysWhatNoneMeansForEachColour) {
    for (const ColorRow& color : kColorRows) {
        Json picker = screen(std::string("open ") + color.key + "\n");
        const Json& none = picker["rows"][0];
        EXPECT_NE(none["title"], "None") << color.key;
        EXPECT_NE(none["detail"], "*default color") << color.key;
        EXPECT_EQ(inspect({"--pane", color.key})["title"], labelOf(color));
    }
}

TEST_F(DrivenPickerTest, TheRowsIdentifierOpensItDirectly) {
    EXPECT_EQ(screen("open badgebgcol\n")["stack"],
              Json({"Tallyforge", "Badge", "Colour & opacity", "Fill colour"}));
    Json shown = inspect({"--pane", "newdotbgcol", "--idiom", "pad"});
    EXPECT_EQ(shown["rows"].size(), 64U);
    const std::string picture = (scratch / "picker.png").string();
    EXPECT_EQ(tallyforge({"render", picture, "--pane", "badgebgcol"}).status, 0);
    EXPECT_GT(std::filesystem::file_size(picture), 1000U);
    Ended wrong = tallyforge({"render", picture, "--pane", "badgebgcolour"});
    EXPECT_NE(wrong.status, 0);
    EXPECT_EQ(wrong.errorLines(), 1U) << wrong.errors;
}

TEST_F(DrivenPickerTest, AChoiceIsWrittenSynchronisedAndToldInThisOrder) {
    EXPECT_EQ(inPicker("tap \"System Blue\"\n"), chosen("badgebgcol", "#007AFF"));
    EXPECT_EQ(domain(), Json({{"badgebgcol", "#007AFF"}}));
}

TEST_F(DrivenPickerTest, EverySpecialWordIsWritten) {
    const std::pair<const char*, const char*> words[] = {
        {"System colour", "none"},
        {"Transparent", "transparent"},
        {"Automatic", "automatic"},
        {"Automatic - only dark colors", "automatic_dark"},
        {"Automatic - only bright colors", "automatic_bright"}};
    for (const auto& [title, word] : words) {
        EXPECT_EQ(inPicker(std::string("tap \"") + title + "\"\n"), chosen("badgebgcol", word));
        EXPECT_EQ(checked(screen("open badgebgcol\n")), Lines{title});
        Json pane = screen("open badgecolor\n");
        EXPECT_EQ((*row(pane, "Fill colour"))["detail"], word);
    }
}

TEST_F(DrivenPickerTest, TheCheckedRowAgainWritesNothing) {
    EXPECT_EQ(inPicker("tap \"Pink\"\ntap \"Pink\"\n"), chosen("badgebgcol", "#FF2D55"));
    EXPECT_EQ(inPicker("tap \"Pink\"\n"), Lines{});
}

TEST_F(DrivenPickerTest, DisabledRowsWriteNothing) {
    for (const char* key : {"badgebordercol", "newdotbgcol"}) {
        Lines opening = trace(std::string("open ") + key + "\nwait 0\n");
        EXPECT_EQ(trace(std::string("open ") + key + "\nwait 0\ntap Transparent\n"), opening);
    }
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(DrivenPickerTest, WithoutAutomaticItsThreeRowsWriteNothing) {
    rewriteList("<key>allowAutomatic</key>\n\t\t\t<true/>", "<key>allowAutomatic</key>\n\t\t\t<false/>");
    EXPECT_EQ(inPicker("tap Automatic\ntap \"Automatic - only dark colors\"\n"
                       "tap \"Automatic - only bright colors\"\n"),
              Lines{});
    EXPECT_EQ(inPicker("tap Transparent\n"), chosen("badgebgcol", "transparent"));
}

TEST_F(DrivenPickerTest, WithoutADomainOnlyTheNotificationsAreSent) {
    rewriteList("<key>defaults</key>\n\t\t\t<string>com.quillon.tallyforge</string>", "");
    EXPECT_EQ(inPicker("tap Pink\n"), (Lines{kReload, "darwin com.quillon.tallyforge.prefs"}));
    EXPECT_EQ(checked(screen("open badgebgcol\n")), Lines{"Spring"}) << "the default";
    EXPECT_FALSE(std::filesystem::exists(domainFile()));
}

TEST_F(DrivenPickerTest, WithoutNotificationsAChoiceIsSilent) {
    rewriteList("<key>PostNotification</key>\n\t\t\t<string>com.quillon.tallyforge.prefs</string>", "");
    EXPECT_EQ(inPicker("tap Pink\n"),
              (Lines{"set com.quillon.tallyforge badgebgcol #FF2D55", kSynchronise, kReload}));
    rewriteList("<key>PreviewNotification</key>\n\t\t\t<string>reloadTallyforgePreviewNotify</string>", "");
    EXPECT_EQ(inPicker("tap Orange\n"),
              (Lines{"set com.quillon.tallyforge badgebgcol #FF9500", kSynchronise}));
}

TEST_F(DrivenPickerTest, LeavingReadsAgainAndWritesNothing) {
    Lines opening = trace("open badgebgcol\nwait 0\n");
    Lines all = trace("open badgebgcol\nwait 0\nback\n");
    ASSERT_GT(all.size(), opening.size());
    EXPECT_EQ(Lines(all.begin() + static_cast<std::ptrdiff_t>(opening.size()), all.end()),
              appearance("badgecolor"));
}

TEST_F(DrivenPickerTest, ThePickerThatIsThereStaysWhenItIsOpenedAgain) {
    EXPECT_EQ(inPicker("open badgebgcol\n"), Lines{});
}

TEST_F(DrivenPickerTest, ListsOfChoicesOpenByTheirRowToo) {
    Json shapes = screen("open badgeshape\n");
    EXPECT_EQ(shapes["stack"], Json({"Tallyforge", "Badge", "Shape"}));
    EXPECT_EQ(inspect({"--pane", "newdotpos"})["rows"].size(), 4U);
}

TEST_F(DrivenPickerTest, TheSlidersFollowAChoiceAndAWordIsBlack) {
    Json blue = screen("open badgebgcol\ntap \"System Blue\"\nscroll Custom\n");
    EXPECT_EQ((*tagged(blue["view"], 201))["value"], 0.0);
    EXPECT_EQ((*tagged(blue["view"], 202))["value"], 122.0);
    EXPECT_EQ((*tagged(blue["view"], 203))["value"], 255.0);
    EXPECT_EQ(blue["rows"][63]["detail"], "#007AFF");
    EXPECT_EQ(checked(blue), Lines{"System Blue"});
    EXPECT_EQ(inPicker("tap Automatic\ntap Custom\n"),
              joined({chosen("badgebgcol", "automatic"), chosen("badgebgcol", "#000000")}));
    EXPECT_EQ(inPicker("scroll Custom\nslide Red 18\ntap Custom\n"), chosen("badgebgcol", "#120000"))
        << "the checked row again";
}

// A value of a wrong kind is not read again and again while another row's slider moves.
TEST_F(DrivenPickerTest, AWrongKindCostsNoReadsWhileASliderMoves) {
    store("badgebgcol", PropertyList::integer(12));
    EXPECT_EQ(traceOn("badgecolor", "slide Opacity 50\nslide Opacity 60\n"),
              joined({change("badgealpha", "50"), change("badgealpha", "60")}));
}

TEST_F(DrivenPickerTest, SlidersWriteOnlyWhenTheCustomRowIsChosenAndTheFingerLifts) {
    store("badgebgcol", PropertyList::string("#FF0000")); // a palette row
    EXPECT_EQ(inPicker("scroll Custom\nslide Green 51\nslide Blue 255\n"), Lines{});
    EXPECT_EQ(domain()["badgebgcol"], "#FF0000");
    EXPECT_EQ(inPicker("scroll Custom\nslide Green 51\ntap Custom\n"), chosen("badgebgcol", "#FF3300"));
    EXPECT_EQ(inPicker("scroll Custom\nslide Red 1 hold\nslide Red 2 hold\n"), Lines{});
    EXPECT_EQ(inPicker("scroll Custom\nslide Red 1 hold\nslide Red 2 hold\nslide Red 18\n"),
              chosen("badgebgcol", "#123300"));
    EXPECT_EQ(checked(screen("open badgebgcol\n")), Lines{"Custom"});
}

TEST_F(DrivenPickerTest, ThePreviewAndItsPaneShowTheChoiceOnTheWayBack) {
    auto pictureAfter = [&](const std::string& script) {
        const std::string file = (scratch / "pane.png").string();
        EXPECT_EQ(drive(script + "render " + file + "\n").errors, "");
        return bytesOf(file);
    };
    const std::string before = pictureAfter("open badgecolor\n");
    const std::string after = pictureAfter("open badgecolor\ntap \"Fill colour\"\ntap Grape\nback\n");
    EXPECT_TRUE(before != after);
    EXPECT_TRUE(after == pictureAfter("open badgecolor\n")) << "as if it had been so from the start";
    EXPECT_THAT(
        trace("open badgecolor\ntap \"Fill colour\"\ntap Pink\nback\n"),
        testing::IsSupersetOf({std::string("set com.quillon.tallyforge badgebgcol #FF2D55"), kReload}));
}

TEST_F(DrivenPickerTest, StoredValuesThatArePresetsOrNot) {
    const struct {
        PropertyList value;
        const char* checked;
        const char* custom;
    } cases[] = {
        {PropertyList::string("automatic"), "Automatic", "automatic"},
        {PropertyList::string("#FFFFFF"), "Snow", "#FFFFFF"},
        {PropertyList::string("#ffffff"), "Custom", "#ffffff"},
        {PropertyList::string("spotted"), "Custom", "spotted"},
        {PropertyList::integer(12), "Custom", "12"},
        {PropertyList::array({}), "Custom", nullptr},
        {PropertyList::string(std::string(5000, '#')), "Custom", nullptr},
    };
    for (const auto& [value, title, custom] : cases) {
        store("badgebgcol", value);
        for (const char* idiom : {"phone", "pad"}) {
            Json shown = screen("open badgebgcol\n", {"--idiom", idiom});
            EXPECT_EQ(checked(shown), Lines{title});
            if (custom) {
                EXPECT_EQ(shown["rows"][63]["detail"], custom);
            }
            EXPECT_EQ(drive("open badgebgcol\nscroll Custom\nrender " + (scratch / "p.png").string() + "\n",
                            {"--idiom", idiom})
                          .status,
                      0);
        }
    }
}

TEST_F(DrivenPickerTest, AWrongKindInTheDomainLeavesTheRowAtItsDefault) {
    store("badgebgcol", PropertyList::integer(12));
    Json pane = screen("open badgecolor\n");
    EXPECT_EQ((*row(pane, "Fill colour"))["detail"], "#00FF00");
}

TEST_F(DrivenPickerTest, InspectTellsTheSlidersByTheirTags) {
    store("badgebgcol", PropertyList::string("#123456"));
    Json shown = screen("open badgebgcol\nscroll Custom\n");
    const std::map<int, double> values{{201, 0x12}, {202, 0x34}, {203, 0x56}};
    for (const auto& [tag, value] : values) {
        const Json* slider = tagged(shown["view"], tag);
        ASSERT_NE(slider, nullptr) << tag;
        EXPECT_EQ((*slider)["class"], "UISlider");
        EXPECT_EQ((*slider)["value"], value);
    }
    const Json* panel = tagged(shown["view"], 204);
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ((*panel)["frame"], Json({{"x", 160.0}, {"y", 0.0}, {"width", 220.0}, {"height", 130.0}}));
    ASSERT_NE(tagged(shown["view"], 205), nullptr);
    Json pad = Json::parse(drive("open badgebgcol\nscroll Custom\ninspect\n", {"--idiom", "pad"}).output);
    EXPECT_EQ((*tagged(pad["view"], 204))["frame"]["width"], 300.0);
}

TEST_F(DrivenPickerTest, ColorsPrintsThePalettesForPeopleAndPrograms) {
    Ended plain = tallyforge({"colors"});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.errors, "");
    Lines lines = linesOf(plain.output);
    ASSERT_EQ(lines.size(), 64U);
    EXPECT_EQ(lines.front(), "Special\tNone\tnone");
    EXPECT_EQ(lines[6], "iOS Palette\tSystem Blue\t#007AFF");
    EXPECT_EQ(lines[27], "Crayons\tMarascino\t#FF0000");
    EXPECT_EQ(lines.back(), "Custom\tCustom\tcustom");
    EXPECT_EQ(tallyforge({"colours"}).output, plain.output) << "the other spelling";

    Json list = Json::parse(tallyforge({"colors", "--json"}).output, nullptr, false);
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[2]["title"], "Crayons");
    EXPECT_EQ(list[2]["colors"].size(), 48U);
    EXPECT_EQ(list[2]["colors"][43], Json({{"name", "Asperagus"}, {"hex", "#808000"}}));
    EXPECT_EQ(tallyforge({"colors", "--root", "/nowhere/at/all"}).status, 0) << "needs no device";
    expectRefused(tallyforge({"colors", "red"}), 2, "colors");
}

} // namespace
} // namespace tallyforge::test
