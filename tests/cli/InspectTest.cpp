// inspect: the preview as JSON.

#include "CommandFixture.h"

#include <nlohmann/json.hpp>

namespace tallyforge::test {

using Json = nlohmann::json;

class InspectTest : public CommandTest {
  protected:
    void SetUp() override { device.furnish(); }
    Json inspect(std::vector<std::string> words = {}) const {
        words.insert(words.begin(), "inspect");
        Ended ended = tallyforge(words);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return Json::parse(ended.output);
    }
    static const Json* find(const Json& view, const std::string& name) {
        if (view.value("name", "") == name) return &view;
        for (const Json& subview : view["subviews"]) {
            if (const Json* found = find(subview, name)) return found;
        }
        return nullptr;
    }
};

TEST_F(InspectTest, HasTheFieldsOfTheCellAndOfEveryView) {
    Json json = inspect();
    EXPECT_EQ(json["idiom"], "phone");
    EXPECT_EQ(json["time"], 0);
    EXPECT_EQ(json["cell"], (Json{{"width", 320}, {"height", 44}}));
    EXPECT_EQ(json["currentIcon"], 0);
    EXPECT_EQ(json["selectedAppName"], "App Store");
    EXPECT_EQ(json["view"]["class"], "PreviewCell");
    for (const char* name : {"iconView", "iconLabel", "badgeView", "closeBoxView", "newDotView"}) {
        const Json* view = find(json["view"], name);
        ASSERT_TRUE(view) << name;
        for (const char* field : {"class", "frame", "bounds", "center", "anchorPoint", "transform", "alpha",
                                  "hidden", "tag", "backgroundColor", "layer", "animations", "subviews"})
            EXPECT_TRUE(view->contains(field)) << name << ' ' << field;
    }
}

// The cell is 320 wide: the icon's centre is at 320 / 1.6 = 200, 75. The badge's right edge is 9 points
// beyond the icon's right edge, its top 9 above the icon's top.
TEST_F(InspectTest, GeometryFollowsTheRules) {
    Json json = inspect();
    EXPECT_EQ((*find(json["view"], "iconView"))["frame"],
              (Json{{"x", 170}, {"y", 45}, {"width", 60}, {"height", 60}}));
    EXPECT_EQ((*find(json["view"], "badgeView"))["frame"],
              (Json{{"x", 45}, {"y", -9}, {"width", 24}, {"height", 24}}));
    const Json& image = (*find(json["view"], "iconView"))["image"];
    EXPECT_EQ(image, (Json{{"size", {{"width", 60}, {"height", 60}}},
                           {"scale", 2},
                           {"pixels", {{"width", 120}, {"height", 120}}}}));

    Json pad = inspect({"--idiom", "pad", "--size", "400x100"});
    EXPECT_EQ((*find(pad["view"], "iconView"))["frame"],
              (Json{{"x", 212}, {"y", 37}, {"width", 76}, {"height", 76}}));
    EXPECT_EQ((*find(pad["view"], "iconLabel"))["center"], (Json{{"x", 38}, {"y", 145}}));
    EXPECT_EQ((*find(pad["view"], "iconLabel"))["font"]["size"], 14);
}

TEST_F(InspectTest, ShowsTextsAndColours) {
    ASSERT_EQ(tallyforge({"set", "convertbadgeroman", "1", "badgetxtcol", "#102030"}).status, 0);
    Json json = inspect();
    const Json& badge = *find(json["view"], "badgeView");
    const Json& label = badge["subviews"].back();
    EXPECT_EQ(label["class"], "UILabel");
    EXPECT_EQ(label["text"], "VI");
    EXPECT_EQ(label["textColor"], "#102030FF");
    EXPECT_EQ(label["backgroundColor"], "#00000000");
    EXPECT_EQ((*find(json["view"], "iconLabel"))["text"], "App Store");
}

TEST_F(InspectTest, ShowsAnimationsAsTheyAreAtThatTime) {
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "8", "closeboxanimtype", "1", "newdotanimtype", "7",
                          "closeboxanimspd", "2.5"})
                  .status,
              0);
    Json json = inspect();
    EXPECT_TRUE((*find(json["view"], "badgeView"))["animations"].empty()); // the pulse comes 0.2 s later
    const Json& spin = (*find(json["view"], "closeBoxView"))["animations"]["badgeAnim"];
    EXPECT_EQ(spin["class"], "CABasicAnimation");
    EXPECT_EQ(spin["keyPath"], "transform.rotation.z");
    EXPECT_EQ(spin["duration"], 2.5);
    EXPECT_EQ(spin["repeatCount"], "inf");
    EXPECT_EQ(spin["fromValue"], 0);
    EXPECT_EQ(spin["toValue"].get<float>(), 6.2831855F);
    EXPECT_EQ(spin["fillMode"], "removed");
    EXPECT_EQ(spin["timingFunction"], "linear");
    EXPECT_EQ(spin["autoreverses"], false);
    EXPECT_EQ(spin["cumulative"], false);
    EXPECT_EQ(spin["additive"], false);
    const Json& group = (*find(json["view"], "newDotView"))["animations"]["badgeAnim"];
    EXPECT_EQ(group["class"], "CAAnimationGroup");
    ASSERT_EQ(group["animations"].size(), 2U);
    ASSERT_EQ(group["animations"][0]["path"].size(), 3U);
    double y = group["animations"][0]["path"][0]["y"];
    EXPECT_DOUBLE_EQ(group["animations"][0]["path"][1]["y"].get<double>(), y - 30);
    EXPECT_EQ(group["animations"][1]["cumulative"], true);
    EXPECT_FALSE(group["animations"][1].contains("fromValue"));

    Json later = inspect({"--time", "0.2"});
    EXPECT_EQ((*find(later["view"], "badgeView"))["animations"]["badgeAnim"]["keyPath"], "transform.scale");
}

TEST_F(InspectTest, TransformsAreTheirSixteenNumbers) {
    ASSERT_EQ(tallyforge({"set", "badgeanimtype", "6"}).status, 0);
    Json json = inspect();
    const Json& values = (*find(json["view"], "badgeView"))["animations"]["badgeAnim"]["values"];
    ASSERT_EQ(values.size(), 22U);
    ASSERT_EQ(values[6].size(), 16U);
    EXPECT_EQ(values[6][13], -24.0); // as high as the plate: 128 of 128ths
    EXPECT_EQ(values[6][0], 1.0);
}

} // namespace tallyforge::test
