// inspect --pane: a screen as JSON.

#include "DriveFixture.h"

#include <cmath>
#include <functional>

namespace tallyforge::test {
namespace {

class ScreenJsonTest : public DriveTest {
  protected:
    static void eachView(const Json& view, const std::function<void(const Json&)>& visit) {
        visit(view);
        for (const Json& subview : view["subviews"])
            eachView(subview, visit);
    }
    static void expectFields(const Json& object, const Lines& fields) {
        ASSERT_TRUE(object.is_object()) << object;
        for (const std::string& field : fields)
            EXPECT_TRUE(object.contains(field)) << field << " in " << object.dump().substr(0, 200);
    }
    static void expectRect(const Json& rect) {
        expectFields(rect, {"x", "y", "width", "height"});
        for (const Json& number : rect)
            EXPECT_TRUE(number.is_number()) << rect;
    }
};

TEST_F(ScreenJsonTest, HasEveryFieldOfTheScreen) {
    for (const std::string& pane : allPanes()) {
        for (const char* idiom : {"phone", "pad"}) {
            SCOPED_TRACE(pane + " " + idiom);
            Json screen = inspect({"--pane", pane, "--idiom", idiom});
            expectFields(screen, {"idiom", "time", "title", "stack", "rows", "alert", "view"});
            EXPECT_EQ(screen["idiom"], idiom);
            EXPECT_EQ(screen["time"], 0);
            EXPECT_EQ(screen["stack"].back(), screen["title"]);
            EXPECT_EQ(screen["stack"][0], "Tallyforge");
            EXPECT_TRUE(screen["alert"].is_null());
            EXPECT_EQ(screen["view"]["class"], "UIWindow");
        }
    }
}

TEST_F(ScreenJsonTest, EveryRowIsThereEvenThoseOffTheScreen) {
    bool below = false;
    for (const std::string& pane : allPanes()) {
        SCOPED_TRACE(pane);
        Json screen = inspect({"--pane", pane});
        const auto wanted = rowsOfList(pane);
        ASSERT_EQ(screen["rows"].size(), wanted.size());
        for (size_t i = 0; i < wanted.size(); ++i) {
            const Json& row = screen["rows"][i];
            expectFields(row, {"section", "row", "header", "title", "detail", "id", "cell", "value",
                               "enabled", "accessory", "frame"});
            for (const char* field : {"header", "title", "detail", "id", "cell", "accessory"})
                EXPECT_TRUE(row[field].is_string()) << field;
            EXPECT_TRUE(row["section"].is_number_integer());
            EXPECT_TRUE(row["row"].is_number_integer());
            EXPECT_TRUE(row["enabled"].is_boolean());
            expectRect(row["frame"]);
            EXPECT_EQ(row["id"], text(wanted[i], "id"));
            EXPECT_EQ(row["title"], text(wanted[i], "label"));
            below = below || row["frame"]["y"].get<double>() > 667;
        }
    }
    EXPECT_TRUE(below) << "some row has to be off the screen";
}

TEST_F(ScreenJsonTest, RowsSayWhatTheyShow) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1.2", "badgeshape", "4", "convertbadgeroman", "1",
                          "badgeoffsetX", "-3.5"})
                  .status,
              0);
    Json badge = inspect({"--pane", "badge"});
    const Json& size = *row(badge, "Size");
    EXPECT_EQ(size["header"], "Shape and size");
    EXPECT_EQ(size["section"], 1);
    EXPECT_EQ(size["row"], 1);
    EXPECT_EQ(size["id"], "badgesize");
    EXPECT_EQ(size["cell"], "PSSliderTableCell");
    EXPECT_EQ(size["value"], 1.2);
    EXPECT_EQ(size["detail"], "1.2");
    EXPECT_EQ(size["enabled"], true);
    EXPECT_EQ(size["accessory"], "none");
    const Json& shape = *row(badge, "Shape");
    EXPECT_EQ(shape["cell"], "PSTableCell");
    EXPECT_EQ(shape["value"], 4);
    EXPECT_EQ(shape["detail"], "Star");
    EXPECT_EQ(shape["accessory"], "disclosureIndicator");
    const Json& roman = *row(badge, "Roman numerals");
    EXPECT_EQ(roman["cell"], "TallyforgeSwitchTableCell");
    EXPECT_EQ(roman["value"], 1);
    EXPECT_EQ(roman["accessory"], "UISwitch");
    EXPECT_EQ((*row(badge, "Horizontal offset"))["detail"], "\u22123.5 pt");
    EXPECT_EQ((*row(badge, "Rotation"))["value"], 0); // what counts where nothing is set
    const Json& randomise = *row(badge, "Randomise");
    EXPECT_EQ(randomise["cell"], "PSTableCell");
    EXPECT_TRUE(randomise["value"].is_null());
    EXPECT_EQ(randomise["accessory"], "none");
    EXPECT_EQ(badge["rows"][0]["cell"], "PreviewCell");
    EXPECT_EQ(badge["rows"][0]["header"], "");
}

TEST_F(ScreenJsonTest, FramesArePointsOfTheWindow) {
    Json badge = inspect({"--pane", "badge"});
    // The bar takes 64 points, the gap above the first group 35; the preview is 150 high.
    EXPECT_EQ(badge["rows"][0]["frame"], (Json{{"x", 0}, {"y", 99}, {"width", 375}, {"height", 150}}));
    Json pad = inspect({"--pane", "badge", "--idiom", "pad"});
    EXPECT_EQ(pad["rows"][0]["frame"]["y"], 99);
    EXPECT_EQ(pad["rows"][0]["frame"]["x"].get<double>() * 2 + pad["rows"][0]["frame"]["width"].get<double>(),
              768);
    // After scrolling they are where the rows are now.
    Ended ended = drive("open badge\nscroll Reset\ninspect\n");
    Json scrolled = Json::parse(ended.output, nullptr, false);
    const double moved =
        badge["rows"][0]["frame"]["y"].get<double>() - scrolled["rows"][0]["frame"]["y"].get<double>();
    EXPECT_GT(moved, 0);
    for (size_t i = 0; i < badge["rows"].size(); ++i)
        EXPECT_NEAR(badge["rows"][i]["frame"]["y"].get<double>() -
                        scrolled["rows"][i]["frame"]["y"].get<double>(),
                    moved, 1e-9);
}

TEST_F(ScreenJsonTest, EveryViewHasItsFields) {
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "1"}).status, 0);
    size_t texts = 0, sliders = 0, switches = 0, images = 0, animated = 0;
    Json screen = inspect({"--pane", "badge", "--size", "375x2400"});
    eachView(screen["view"], [&](const Json& view) {
        expectFields(view, {"class", "frame", "bounds", "center", "anchorPoint", "transform", "alpha",
                            "hidden", "tag", "backgroundColor", "layer", "animations", "subviews"});
        expectRect(view["frame"]);
        expectRect(view["bounds"]);
        expectFields(view["center"], {"x", "y"});
        expectFields(view["anchorPoint"], {"x", "y"});
        expectFields(view["transform"], {"a", "b", "c", "d", "tx", "ty"});
        expectFields(view["layer"], {"borderWidth", "borderColor", "cornerRadius"});
        if (view["class"] == "UILabel") {
            ++texts;
            expectFields(view, {"text", "font", "textColor"});
            EXPECT_TRUE(view["font"]["size"].is_number());
        }
        if (view["class"] == "UISlider") {
            ++sliders;
            EXPECT_TRUE(view["value"].is_number());
            EXPECT_TRUE(view["enabled"].is_boolean());
        }
        if (view["class"] == "UISwitch") {
            ++switches;
            EXPECT_EQ(view["on"], false);
            EXPECT_EQ(view["enabled"], true);
        }
        if (view.contains("image")) {
            ++images;
            expectFields(view["image"], {"size", "scale", "pixels"});
        }
        animated += view["animations"].contains("badgeAnim");
    });
    EXPECT_GT(texts, 20U);
    EXPECT_EQ(sliders, 4U);
    EXPECT_EQ(switches, 1U);
    EXPECT_GT(images, 3U);
    EXPECT_EQ(animated, 1U);
}

TEST_F(ScreenJsonTest, NothingIsNotANumber) {
    device.write(kDomainPath, {});
    ASSERT_EQ(
        RunProgram({"python3", "-c",
                    "import plistlib, sys\n"
                    "keys = {k: float('nan') for k in ('badgesize', 'badgerotation', 'badgeoffsetX', "
                    "'badgealpha')}\n"
                    "keys.update({k: float('inf') for k in ('badgeoffsetY', 'newdotsize', 'closeboxsize')})\n"
                    "plistlib.dump(keys, open(sys.argv[1], 'wb'), fmt=plistlib.FMT_BINARY)",
                    domainFile().string()})
            .status,
        0);
    for (const char* pane : {"badge", "closebox", "newdot", "badgecolor"}) {
        Ended ended = tallyforge({"inspect", "--pane", pane});
        EXPECT_EQ(ended.status, 0) << pane << ended.errors;
        EXPECT_FALSE(Json::parse(ended.output, nullptr, false).is_discarded()) << pane;
        EXPECT_EQ(ended.output.find("nan"), std::string::npos) << pane;
    }
    Json badge = inspect({"--pane", "badge"});
    eachView(badge["view"], [&](const Json& view) {
        if (view["class"] != "UISlider") return;
        EXPECT_TRUE(view["value"].is_number()); // a slider always stands somewhere
        for (const Json& number : view["frame"])
            EXPECT_TRUE(number.is_number());
    });
    EXPECT_TRUE((*row(badge, "Size"))["value"].is_null());
}

TEST_F(ScreenJsonTest, LookingChangesNothing) {
    ASSERT_EQ(tallyforge({"set", "badgesize", "1.2"}).status, 0);
    auto files = [&] {
        std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>> all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(device.root())) {
            if (entry.is_regular_file())
                all[entry.path().string()] = {bytesOf(entry.path()), entry.last_write_time()};
        }
        return all;
    };
    const auto before = files();
    for (const std::string& pane : allPanes()) {
        Ended first = tallyforge({"inspect", "--pane", pane}),
              second = tallyforge({"inspect", "--pane", pane});
        EXPECT_EQ(first.status, 0);
        EXPECT_EQ(first.output, second.output) << pane;
    }
    EXPECT_EQ(files(), before);
}

TEST_F(ScreenJsonTest, TimeRunsUpToTheOneThatIsAsked) {
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "8"}).status, 0);
    auto animated = [&](const char* time) {
        size_t count = 0;
        Json screen = inspect({"--pane", "badge", "--time", time});
        EXPECT_EQ(screen["time"], std::stod(time));
        eachView(screen["view"],
                 [&](const Json& view) { count += view["animations"].contains("badgeAnim"); });
        return count;
    };
    EXPECT_EQ(animated("0"), 0U); // the pulse comes 0.2 s later
    EXPECT_EQ(animated("0.5"), 1U);
}

TEST_F(ScreenJsonTest, SizeIsTheScreens) {
    Json screen = inspect({"--pane", "badge", "--size", "320x480"});
    EXPECT_EQ(screen["view"]["bounds"], (Json{{"x", 0}, {"y", 0}, {"width", 320}, {"height", 480}}));
    EXPECT_EQ(screen["rows"][0]["frame"]["width"], 320);
    for (const char* tiny : {"1x1", "40x40", "4096x1", "1x4096"})
        EXPECT_EQ(inspect({"--pane", "badge", "--size", tiny})["rows"].size(), rowsOfList("badge").size())
            << tiny;
}

TEST_F(ScreenJsonTest, AnUnknownPaneIsAWrongWord) {
    for (const char* name : {"nosuch", "", "Badge", "badgeprefs", "../badge"}) {
        const Ended ended = tallyforge({"inspect", "--pane", name});
        expectRefused(ended, 2, "there is no pane");
        const Ended help = tallyforge({"inspect", "--help"});
        for (const std::string& pane : allPanes()) {
            EXPECT_NE(ended.errors.find(pane), std::string::npos) << pane;
            EXPECT_NE(help.output.find(pane), std::string::npos) << pane;
        }
        const std::string file = (scratch / "p.png").string();
        expectRefused(tallyforge({"render", file, "--pane", name}), 2, "there is no pane");
        EXPECT_FALSE(std::filesystem::exists(file));
    }
}

// A mounted device that lacks the bundle: the lists that came with the program serve.
TEST_F(ScreenJsonTest, ADeviceWithoutTheBundleShowsTheProgramsOwnLists) {
    std::filesystem::remove_all(device.file(kBundle));
    for (const std::string& pane : allPanes())
        EXPECT_EQ(inspect({"--pane", pane})["rows"].size(), rowsOfList(pane).size()) << pane;
    EXPECT_EQ(traceOn("badge", "slide Size 1\n"), change("badgesize", "1"));
    EXPECT_EQ(tallyforge({"render", (scratch / "p.png").string(), "--pane", "badge"}).status, 0);
}

// A list that is there and cannot be read is the device's own fault, and said.
TEST_F(ScreenJsonTest, AnUnreadableListIsAnEmptyScreenAndOneLine) {
    device.write(kBundle + "badgeprefs.plist", {'n', 'o', ' ', 'l', 'i', 's', 't'});
    Ended ended = tallyforge({"inspect", "--pane", "badge"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errorLines(), 1U) << ended.errors;
    EXPECT_NE(ended.errors.find("no readable list"), std::string::npos) << ended.errors;
    Json screen = Json::parse(ended.output, nullptr, false);
    EXPECT_EQ(screen["rows"], Json::array());
    EXPECT_EQ(screen["stack"].size(), 2U);

    const std::string file = (scratch / "p.png").string();
    ended = tallyforge({"render", file, "--pane", "badge"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errorLines(), 1U) << ended.errors;
    EXPECT_TRUE(std::filesystem::exists(file));
    ended = drive("open badge\nback\n");
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errorLines(), 1U) << ended.errors;
}

TEST_F(ScreenJsonTest, AnUnreadableRootListStillLetsPanesOpen) {
    device.write(kBundle + "tallyforgeprefs.plist", {'?'});
    Json badge = inspect({"--pane", "badge"});
    EXPECT_EQ(badge["title"], "Badge");
    EXPECT_EQ(badge["stack"], Json({"Tallyforge", "Badge"}));
    EXPECT_EQ(tallyforge({"inspect", "--pane", "nosuch"}).status, 2);
}

} // namespace
} // namespace tallyforge::test
