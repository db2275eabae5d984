// The rows of a settings screen: which cell shows each, what it shows, and what it sets.
#include "SettingsFixture.h"
#include "uikit/UIImageView.h"

#include <cmath>
#include <limits>

namespace tallyforge::test {
namespace {

const PropertyList kStrange[] = {PropertyList::array({PropertyList::integer(1)}),
                                 PropertyList::dictionary({}),
                                 PropertyList::data({1, 2, 3}),
                                 PropertyList::string("words"),
                                 PropertyList::boolean(true),
                                 PropertyList::doubleNumber(std::nan("")),
                                 PropertyList::doubleNumber(1e300),
                                 PropertyList::doubleNumber(-INFINITY),
                                 PropertyList::integer(std::numeric_limits<int64_t>::min())};

const char* const kKinds[] = {"PSGroupCell",      "PSLinkCell",    "PSLinkListCell", "PSSwitchCell",
                              "PSSliderCell",     "PSSegmentCell", "PSButtonCell",   "PSTitleValueCell",
                              "PSStaticTextCell", "NoSuchCell"};

class CellsOfSettingsTest : public SettingsFixture {};

TEST_F(CellsOfSettingsTest, GroupsBeginSections) {
    Pane& pane =
        open({{{"cell", text("PSButtonCell")}, {"label", text("before")}},
              {{"cell", text("PSGroupCell")}, {"label", text("First")}, {"footerText", text("Foot")}},
              {{"label", text("a")}},
              {{"label", text("b")}},
              {{"cell", text("PSGroupCell")}},
              {{"cell", text("PSGroupCell")}, {"label", number(5)}, {"footerText", flag(true)}},
              {{"label", text("c")}}});
    UITableView& table = *pane.table();
    ASSERT_EQ(table.numberOfSections(), 4);
    EXPECT_EQ(pane.groups()[0].group, nullptr);
    EXPECT_EQ(table.numberOfRowsInSection(0), 1);
    EXPECT_EQ(table.numberOfRowsInSection(1), 2);
    EXPECT_EQ(table.numberOfRowsInSection(2), 0);
    EXPECT_EQ(table.titleForHeaderInSection(1), "First");
    EXPECT_EQ(table.titleForHeaderInSection(3), ""); // a number is no text
    EXPECT_EQ(cell(3, 0)->titleText(), "c");
    EXPECT_EQ(pane.specifierAtIndexPath({1, 1})->name(), "b");
    EXPECT_EQ(pane.specifierAtIndexPath({1, 2}), nullptr);
    EXPECT_EQ(pane.specifierAtIndexPath({9, 0}), nullptr);
    EXPECT_EQ(pane.specifierAtIndexPath({-1, -1}), nullptr);
    EXPECT_EQ(pane.indexPathForSpecifier(pane.specifiers()[3]), (NSIndexPath{1, 1}));
    EXPECT_EQ(pane.indexPathForSpecifier(pane.specifiers()[1]), std::nullopt); // a group is no row
    EXPECT_EQ(pane.indexPathForSpecifier(nullptr), std::nullopt);
}

TEST_F(CellsOfSettingsTest, EveryKindHasItsCell) {
    open({{{"cell", text("PSSwitchCell")}, {"label", text("a")}},
          {{"cell", text("PSSliderCell")}, {"label", text("b")}},
          {{"cell", text("PSSegmentCell")}, {"label", text("c")}},
          {{"cell", text("PSLinkCell")}, {"label", text("d")}, {"detail", text("EmptyScreen")}},
          {{"cell", text("PSButtonCell")}, {"label", text("e")}},
          {{"cell", text("Unknown")}, {"label", text("f")}},
          {{"label", text("g")}}});
    EXPECT_NE(cell<PSSwitchTableCell>(0, 0), nullptr);
    EXPECT_NE(cell<PSSliderTableCell>(0, 1), nullptr);
    EXPECT_NE(cell<PSSegmentTableCell>(0, 2), nullptr);
    for (int row = 3; row < 7; ++row)
        EXPECT_STREQ(cell(0, row)->className(), "PSTableCell");
    EXPECT_EQ(cell(0, 3)->accessoryType(), UITableViewCellAccessoryType::disclosureIndicator);
    EXPECT_EQ(cell(0, 4)->accessoryType(), UITableViewCellAccessoryType::none);
    EXPECT_EQ(cell(0, 4)->textLabel().textColor(), UIColor::colorWithRed(0, 0x7A / 255.0, 1, 1));
    EXPECT_EQ(cell(0, 5)->textLabel().textColor(), UIColor::blackColor());
    for (int row = 0; row < 7; ++row) {
        EXPECT_EQ(pane_->specifiers()[static_cast<size_t>(row)]->objectForKey("cellObject"), cell(0, row));
        EXPECT_EQ(cell(0, row)->titleText(), std::string(1, static_cast<char>('a' + row)));
    }
    EXPECT_EQ(pane_->specifiers()[0]->objectForKey("control").get(),
              cell<PSSwitchTableCell>(0, 0)->control());
    EXPECT_EQ(pane_->specifiers()[3]->objectForKey("control"), nullptr);
}

class OwnCell final : public PSTableCell {
  public:
    const char* className() const override { return "OwnCell"; }
};
class NoCell final : public PSTableCell {
  public:
    bool initWithStyleReuseIdentifierSpecifier(int, std::string, std::shared_ptr<PSSpecifier>) override {
        return false;
    }
};

TEST_F(CellsOfSettingsTest, CellsByClassName) {
    RegisterClass("OwnCell", {[] { return std::make_shared<OwnCell>(); }});
    RegisterClass("NoCell", {[] { return std::make_shared<NoCell>(); }});
    open({{{"cellClass", text("OwnCell")}, {"label", text("a")}, {"height", number(120)}},
          {{"cellClass", text("NoSuchClass")}, {"cell", text("PSSwitchCell")}},
          {{"cellClass", text("EmptyScreen")}, {"cell", text("PSSliderCell")}}, // known, but no cell
          {{"cellClass", text("NoCell")}},                                      // does not want to be one
          {{"cellClass", number(5)}, {"label", text("e")}}});
    EXPECT_STREQ(cell(0, 0)->className(), "OwnCell");
    EXPECT_EQ(cell(0, 0)->frame().size.height, 120);
    EXPECT_NE(cell<PSSwitchTableCell>(0, 1), nullptr);
    EXPECT_NE(cell<PSSliderTableCell>(0, 2), nullptr);
    EXPECT_EQ(cell(0, 3), nullptr);
    EXPECT_EQ(cell(0, 4)->titleText(), "e");
}

TEST_F(CellsOfSettingsTest, HeightsAreTheRowsOwnWhereTheyMakeSense) {
    const struct {
        PropertyList given;
        CGFloat height;
    } rows[] = {{number(100), 100}, {PropertyList::integer(60), 60}, {number(0), 44},  {number(-5), 44},
                {number(2001), 44}, {number(std::nan("")), 44},      {text("80"), 44}, {flag(false), 44}};
    std::vector<Row> all;
    for (const auto& row : rows)
        all.push_back({{"height", row.given}});
    all.push_back({{"cell", text("PSSliderCell")}, {"label", text("Size")}});
    all.push_back({{"cell", text("PSSliderCell")}});
    all.push_back({{"cell", text("PSSliderCell")}, {"label", text("Size")}, {"height", number(90)}});
    Pane& pane = open(all);
    auto height = [&](int row) { return pane.table()->rectForRowAtIndexPath({0, row}).size.height; };
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(height(i), rows[i].height) << i;
    EXPECT_EQ(height(8), 72); // room for title and value above the slider
    EXPECT_EQ(height(9), 44);
    EXPECT_EQ(height(10), 90);
}

TEST_F(CellsOfSettingsTest, ValuesOfLinksAndTitlesAreShown) {
    store("shape", PropertyList::integer(2));
    store("odd", PropertyList::integer(77));
    store("plain", text("a text"));
    store("size", PropertyList::floatNumber(1.5F));
    const PropertyList values =
        PropertyList::array({PropertyList::integer(1), PropertyList::doubleNumber(2)});
    const PropertyList titles = PropertyList::array({text("Round"), text("Square")});
    const Row choices{{"validValues", values}, {"validTitles", titles}, {"detail", text("EmptyScreen")}};
    open({kept("PSLinkListCell", "shape", choices), kept("PSLinkListCell", "odd", choices),
          kept("PSTitleValueCell", "plain"), kept("PSTitleValueCell", "size"),
          kept("PSTitleValueCell", "unset"), kept("PSTitleValueCell", "unset", {{"default", text("given")}}),
          kept("PSLinkCell", "plain", {{"detail", text("EmptyScreen")}})});
    EXPECT_EQ(cell(0, 0)->detailText(), "Square"); // 2 is 2, whatever its kind
    EXPECT_EQ(cell(0, 1)->detailText(), "");       // no choice has it
    EXPECT_EQ(cell(0, 2)->detailText(), "a text");
    EXPECT_EQ(cell(0, 3)->detailText(), "1.5");
    EXPECT_EQ(cell(0, 4)->detailText(), "");
    EXPECT_EQ(cell(0, 5)->detailText(), "given");
    EXPECT_EQ(cell(0, 6)->detailText(), "");
}

TEST_F(CellsOfSettingsTest, ASwitchShowsAndSetsItsValueOnce) {
    store("on", flag(true));
    Pane& pane =
        open({kept("PSSwitchCell", "on", {{"set", text("keep:for:")}}), kept("PSSwitchCell", "off")});
    auto first = cell<PSSwitchTableCell>(0, 0), second = cell<PSSwitchTableCell>(0, 1);
    EXPECT_TRUE(first->switchControl()->isOn());
    EXPECT_FALSE(second->switchControl()->isOn());
    tap(middleOf(*first->switchControl()));
    pass(0.5);
    EXPECT_EQ(pane.log, (Log{"keep on 0"}));
    EXPECT_EQ(stored("on"), flag(false));
    EXPECT_FALSE(first->switchControl()->isOn());
    tap(middleOf(*second->switchControl()));
    EXPECT_EQ(stored("off"), flag(true));
    tapRow(0, 0); // the row itself is no button
    EXPECT_FALSE(first->highlighted());
    EXPECT_EQ(stored("on"), flag(false));
    store("on", flag(true)); // from elsewhere
    pane.refreshRows();
    EXPECT_TRUE(first->switchControl()->isOn());
}

TEST_F(CellsOfSettingsTest, ASwitchWithoutATitleStandsAtTheRight) {
    open({{{"cell", text("PSSwitchCell")}}});
    const auto toggle = cell<PSSwitchTableCell>(0, 0)->switchControl();
    EXPECT_EQ(CGRectGetMaxX(toggle->frame()), 360);
}

TEST_F(CellsOfSettingsTest, ASliderShowsItsRangeAndValueAndSetsIt) {
    store("size", PropertyList::floatNumber(25));
    Pane& pane = open({kept(
        "PSSliderCell", "size",
        {{"min", number(10)}, {"max", number(60)}, {"unit", text(" pt")}, {"set", text("keep:for:")}})});
    auto row = cell<PSSliderTableCell>(0, 0);
    UISlider& slider = *row->slider();
    EXPECT_EQ(slider.minimumValue(), 10);
    EXPECT_EQ(slider.maximumValue(), 60);
    EXPECT_EQ(slider.value(), 25);
    EXPECT_EQ(row->detailText(), "25 pt");
    const CGPoint thumb = slider.convertPointToView(slider.thumbCentreForValue(25), nullptr);
    drag(thumb, {375, thumb.y}, 0.2);
    EXPECT_EQ(stored("size"), PropertyList::floatNumber(60));
    EXPECT_EQ(row->detailText(), "60 pt");
    EXPECT_GT(pane.log.size(), 5u); // told while it moved
    EXPECT_EQ(std::count(pane.log.begin(), pane.log.end(), "keep size 60"), 1);
}

TEST_F(CellsOfSettingsTest, ASliderThatIsNotContinuousSetsOnce) {
    Pane& pane =
        open({kept("PSSliderCell", "size", {{"isContinuous", flag(false)}, {"set", text("keep:for:")}})});
    UISlider& slider = *cell<PSSliderTableCell>(0, 0)->slider();
    const CGPoint thumb = slider.convertPointToView(slider.thumbCentreForValue(0), nullptr);
    drag(thumb, {375, thumb.y}, 0.2);
    EXPECT_EQ(pane.log, (Log{"keep size 1"}));
}

TEST_F(CellsOfSettingsTest, AValueThatGrowsIsNotCutWhileTheThumbMoves) {
    store("size", PropertyList::floatNumber(0));
    open({kept("PSSliderCell", "size", {{"max", number(10000)}, {"unit", text(" points")}})});
    auto row = cell<PSSliderTableCell>(0, 0);
    UISlider& slider = *row->slider();
    const CGPoint thumb = slider.convertPointToView(slider.thumbCentreForValue(0), nullptr);
    press(thumb);
    move({375, thumb.y});
    window_->layoutIfNeeded();
    EXPECT_EQ(row->detailText(), "10000 points");
    for (const auto& view : row->contentView()->subviews()) {
        auto* label = dynamic_cast<UILabel*>(view.get());
        if (!label || label->text() != "10000 points") continue;
        EXPECT_FALSE(truncated(*label));
        EXPECT_EQ(CGRectGetMaxX(label->frame()), 360);
    }
    lift({375, thumb.y});
}

TEST_F(CellsOfSettingsTest, SliderTextsHaveTheDigitsTheirRangeNeeds) {
    const struct {
        double min, max;
        float value;
        const char* shown;
    } cases[] = {{0, 1, 0.5F, "0.5"},
                 {0, 1, 0.25F, "0.25"},
                 {0, 1, 0.126F, "0.13"},
                 {0, 1, 1, "1"},
                 {0, 1, 0, "0"},
                 {0, 20, 7.254F, "7.25"},
                 {0, 20.5, 7.26F, "7.3"},
                 {0, 50, 7.26F, "7.3"},
                 {0, 51, 7.26F, "7"},
                 {0, 100, 50, "50"},
                 {0, 1000, 500, "500"},
                 {-10, 10, -2.5F, "\u22122.5"},
                 {-100, 100, -0.3F, "0"},
                 {-10, 10, -0.001F, "0"},
                 {-15, 15, -0.04F, "0"},
                 {0, 100, 1e6F, "1000000"},
                 {-180, 180, -90, "\u221290"},
                 {0, 1, -0.0F, "0"}};
    for (const auto& [min, max, value, shown] : cases) {
        SCOPED_TRACE(std::to_string(min) + " " + std::to_string(max) + " " + std::to_string(value));
        store("size", PropertyList::floatNumber(value));
        open({kept("PSSliderCell", "size", {{"min", number(min)}, {"max", number(max)}})});
        EXPECT_EQ(cell(0, 0)->detailText(), shown);
    }
}

TEST_F(CellsOfSettingsTest, ASliderShowsWhatItStandsAtForWhatIsNoNumber) {
    for (const PropertyList& value :
         {PropertyList::floatNumber(std::nanf("")), PropertyList::doubleNumber(-INFINITY),
          PropertyList::array({}), text("words")}) {
        store("size", value);
        open({kept("PSSliderCell", "size", {{"min", number(0)}, {"max", number(30)}})});
        EXPECT_EQ(cell<PSSliderTableCell>(0, 0)->slider()->value(), 0);
        EXPECT_EQ(cell(0, 0)->detailText(), "0");
    }
    store("size", PropertyList::doubleNumber(INFINITY));
    open({kept("PSSliderCell", "size", {{"min", number(0)}, {"max", number(30)}})});
    EXPECT_EQ(cell(0, 0)->detailText(), "30");
    // Without any value it stands at its least.
    open({kept("PSSliderCell", "nothing", {{"min", number(5)}, {"max", number(30)}})});
    EXPECT_EQ(cell(0, 0)->detailText(), "5");
}

TEST_F(CellsOfSettingsTest, TitleValueAndSliderHaveTheirPlaces) {
    store("A slider with a title that is far too long for its row", PropertyList::floatNumber(1));
    open({kept("PSSliderCell", "A slider with a title that is far too long for its row"),
          {{"cell", text("PSSliderCell")}},
          {{"cell", text("PSSliderCell")}, {"showValue", flag(false)}},
          {{"cell", text("PSSliderCell")}, {"showValue", flag(false)}, {"label", text("Hidden")}}});
    auto row = cell<PSSliderTableCell>(0, 0);
    EXPECT_EQ(row->slider()->frame(), CGRectMake(15, 35, 345, 31));
    EXPECT_EQ(row->textLabel().frame().origin.x, 15);
    EXPECT_LE(CGRectGetMaxX(row->textLabel().frame()), 360 - 8 - 1);
    EXPECT_LE(CGRectGetMaxY(row->slider()->frame()), row->bounds().size.height);
    EXPECT_EQ(cell<PSSliderTableCell>(0, 1)->slider()->frame(), CGRectMake(15, 6.5, 281, 31));
    EXPECT_EQ(cell<PSSliderTableCell>(0, 2)->slider()->frame(), CGRectMake(15, 6.5, 345, 31));
    EXPECT_EQ(cell(0, 3)->textLabel().frame(), CGRectMake(15, 0, 345, 40)); // the value takes no room
}

TEST_F(CellsOfSettingsTest, ASliderRowSettlesInOneLayout) {
    open({kept("PSSliderCell", "size")});
    class Counting final : public PSSliderTableCell {
      public:
        void layoutSubviews() override {
            PSSliderTableCell::layoutSubviews();
            ++times;
        }
        int times = 0;
    };
    auto row = std::make_shared<Counting>();
    row->initWithStyleReuseIdentifierSpecifier(0, "", pane_->specifiers()[0]);
    row->refreshCellContents();
    show(std::shared_ptr<UIView>(row));
    EXPECT_EQ(row->times, 1);
    window_->layoutIfNeeded();
    EXPECT_EQ(row->times, 1);
}

TEST_F(CellsOfSettingsTest, SegmentsShowAndSetTheirChoice) {
    const PropertyList values = PropertyList::array(
        {PropertyList::integer(3), PropertyList::integer(1), text("x"), PropertyList::integer(9)});
    const PropertyList titles = PropertyList::array({text("Three"), text("One"), text("X")});
    store("mode", PropertyList::doubleNumber(1));
    open({kept("PSSegmentCell", "mode", {{"validValues", values}, {"validTitles", titles}}),
          kept("PSSegmentCell", "none", {{"validValues", values}, {"validTitles", titles}}),
          kept("PSSegmentCell", "bare")});
    UISegmentedControl& segments = *cell<PSSegmentTableCell>(0, 0)->segmentedControl();
    EXPECT_EQ(segments.titles(), (Log{"Three", "One", "X"})); // as many as both lists have
    EXPECT_EQ(segments.selectedSegmentIndex(), 1);
    EXPECT_EQ(cell<PSSegmentTableCell>(0, 1)->segmentedControl()->selectedSegmentIndex(), -1);
    EXPECT_TRUE(cell<PSSegmentTableCell>(0, 2)->segmentedControl()->titles().empty());
    const CGRect frame = segments.convertRectToView(segments.bounds(), nullptr);
    tap({frame.origin.x + frame.size.width * 5 / 6, CGRectGetMidY(frame)});
    EXPECT_EQ(stored("mode"), text("x"));
    tap({frame.origin.x + frame.size.width / 6, CGRectGetMidY(frame)});
    EXPECT_EQ(stored("mode"), PropertyList::integer(3));
    // The title stands beside them.
    const CGRect title = cell(0, 0)->textLabel().frame();
    EXPECT_GE(segments.frame().origin.x, CGRectGetMaxX(title) + 12);
    EXPECT_EQ(CGRectGetMaxX(segments.frame()), 360);
}

TEST_F(CellsOfSettingsTest, ButtonsCallTheirAction) {
    Pane& pane =
        open({{{"cell", text("PSButtonCell")}, {"label", text("Go")}, {"action", text("tap:")}},
              {{"cell", text("PSButtonCell")}, {"label", text("Missing")}, {"action", text("no:")}},
              {{"cell", text("PSButtonCell")},
               {"label", text("Off")},
               {"action", text("tap:")},
               {"enabled", flag(false)}},
              {{"cell", text("PSButtonCell")},
               {"label", text("Delete")},
               {"action", text("tap:")},
               {"destructive", flag(true)}},
              {{"cell", text("PSStaticTextCell")}, {"label", text("Text")}, {"action", text("tap:")}}});
    for (int row = 0; row < 5; ++row)
        tapRow(0, row);
    EXPECT_EQ(pane.log, (Log{"tap Go", "tap Delete"}));
    EXPECT_EQ(pane.table()->selectedRow(), std::nullopt);
    EXPECT_EQ(cell(0, 3)->textLabel().textColor(), UIColor::colorWithRed(1, 59.0 / 255, 48.0 / 255, 1));
    EXPECT_FALSE(cell(0, 2)->cellEnabled());
    EXPECT_NEAR(cell(0, 2)->textLabel().alpha(), 0.4, 1e-6);
    EXPECT_EQ(cell(0, 0)->textLabel().alpha(), 1);
}

TEST_F(CellsOfSettingsTest, AnActionMayEndItsOwnScreen) {
    Pane& pane = open({{{"cell", text("PSButtonCell")}, {"label", text("Go")}, {"action", text("leave")}}});
    std::weak_ptr<Pane> gone = pane_;
    pane.whenLeft = [this] {
        pane_.reset();
        navigation_.reset();
        window_->setRootViewController(nullptr);
    };
    tapRow(0, 0);
    EXPECT_TRUE(gone.expired());
}

TEST_F(CellsOfSettingsTest, LinksOpenTheirScreenAndThoseThatLeadNowhereAreOff) {
    open({{{"cell", text("PSLinkCell")}, {"label", text("Go")}, {"detail", text("EmptyScreen")}},
          {{"cell", text("PSLinkCell")}, {"label", text("Nowhere")}, {"detail", text("NoSuchScreen")}},
          {{"cell", text("PSLinkCell")}, {"label", text("Nothing")}},
          {{"cell", text("PSLinkListCell")}, {"label", text("Odd")}, {"detail", number(4)}}});
    auto expectOff = [&] {
        for (int row = 1; row < 4; ++row) {
            EXPECT_FALSE(cell(0, row)->cellEnabled()) << row;
            EXPECT_NEAR(cell(0, row)->textLabel().alpha(), 0.4, 1e-6);
        }
        EXPECT_TRUE(cell(0, 0)->cellEnabled());
    };
    expectOff();
    pane_->refreshRows(); // they stay off
    pane_->reloadSpecifier(pane_->specifiers()[1]);
    expectOff();
    for (int row = 1; row < 4; ++row)
        tapRow(0, row);
    EXPECT_EQ(navigation_->viewControllers().size(), 1u);
    tapRow(0, 0);
    pass(0.5);
    ASSERT_EQ(navigation_->viewControllers().size(), 2u);
    auto opened = std::dynamic_pointer_cast<EmptyScreen>(navigation_->topViewController());
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(opened->title(), "Go");
    EXPECT_EQ(opened->specifier(), pane_->specifiers()[0]);
    EXPECT_TRUE(cell(0, 0)->highlighted()); // until one comes back
    navigation_->popViewController(true);
    EXPECT_FALSE(cell(0, 0)->highlighted());
    pass(1);
}

TEST_F(CellsOfSettingsTest, DisabledControlsAreGreyAndTakeNoTouches) {
    open({kept("PSSwitchCell", "a", {{"enabled", flag(false)}}),
          kept("PSSliderCell", "b", {{"enabled", flag(false)}}),
          kept("PSSegmentCell", "c",
               {{"enabled", flag(false)},
                {"validValues", PropertyList::array({PropertyList::integer(1)})},
                {"validTitles", PropertyList::array({text("One")})}})});
    EXPECT_FALSE(cell<PSSwitchTableCell>(0, 0)->switchControl()->enabled());
    EXPECT_FALSE(cell<PSSliderTableCell>(0, 1)->slider()->enabled());
    EXPECT_FALSE(cell<PSSegmentTableCell>(0, 2)->segmentedControl()->enabled());
    for (int row = 0; row < 3; ++row) {
        tap(middleOf(*cell(0, row)->control()));
        EXPECT_EQ(cell(0, row)->control()->window()->hitTest(middleOf(*cell(0, row)->control())),
                  pane_->table());
    }
    EXPECT_EQ(stored("a"), std::nullopt);
    EXPECT_EQ(stored("c"), std::nullopt);
    // The value is as pale as the title, and there is no second, empty one.
    int labels = 0;
    for (const auto& view : cell(0, 1)->contentView()->subviews()) {
        auto* label = dynamic_cast<UILabel*>(view.get());
        if (!label) continue;
        ++labels;
        EXPECT_NEAR(label->alpha(), 0.4, 1e-6) << label->text();
    }
    EXPECT_EQ(labels, 2);
    EXPECT_FALSE(press(UIKey::tab)); // nor does the keyboard reach them
    pane_->specifiers()[1]->setPropertyForKey(flag(true), "enabled");
    pane_->reloadSpecifier(pane_->specifiers()[1]);
    EXPECT_TRUE(cell<PSSliderTableCell>(0, 1)->slider()->enabled());
    EXPECT_TRUE(press(UIKey::tab));
}

TEST_F(CellsOfSettingsTest, ACellThatIsUsedAgainShowsNothingOfItsFormerRow) {
    device_.write("/Library/Test.bundle/red.png", [] {
        CGImage image(29, 29);
        for (int y = 0; y < 29; ++y)
            std::fill_n(image.row(y), 29, 0xFFFF0000U);
        return Graphics::current()->encodePNG(image);
    }());
    // Rows of all kinds in turn, every second one of a kind with everything, the others bare.
    std::vector<Row> rows;
    const char* const kinds[] = {"PSButtonCell",
                                 "PSLinkCell",
                                 "PSTitleValueCell",
                                 "PSSwitchCell",
                                 "PSSliderCell",
                                 "PSSegmentCell",
                                 ""};
    store("full", PropertyList::integer(1));
    for (int i = 0; i < 420; ++i) {
        const bool full = (i / 7) % 2 == 0;
        Row row{{"cell", text(kinds[i % 7])}, {"detail", text("EmptyScreen")}};
        if (full) {
            row.insert(row.end(), {{"label", text("Full")},
                                   {"key", text("full")},
                                   {"defaults", text("com.example.one")},
                                   {"icon", text("red.png")},
                                   {"enabled", flag(false)},
                                   {"destructive", flag(true)},
                                   {"min", number(-5)},
                                   {"max", number(1)},
                                   {"unit", text(" pt")},
                                   {"isContinuous", flag(false)},
                                   {"showValue", flag(false)},
                                   {"validValues", PropertyList::array({PropertyList::integer(1)})},
                                   {"validTitles", PropertyList::array({text("One")})}});
        } else {
            row.insert(row.end(), {{"min", number(std::nan(""))}, {"max", text("no number")}});
        }
        rows.push_back(std::move(row));
    }
    Pane& pane = open(rows);
    UITableView& table = *pane.table();
    ASSERT_TRUE(cell(0, 0)->imageView().image());
    int bare = 0;
    for (CGFloat offset = 0; offset < table.maximumOffset(); offset += 250) {
        table.setContentOffset({0, offset});
        window_->layoutIfNeeded();
        for (const NSIndexPath path : table.indexPathsForVisibleRows()) {
            auto row = cell(0, path.row);
            SCOPED_TRACE(path.row);
            const bool full = (path.row / 7) % 2 == 0;
            EXPECT_EQ(row->specifier(), pane.specifierAtIndexPath(path));
            EXPECT_EQ(row->cellEnabled(), !full);
            EXPECT_EQ(row->userInteractionEnabled(), !full);
            EXPECT_EQ(row->titleText(), full ? "Full" : "");
            EXPECT_EQ(row->textInset(), full ? 15 + 29 + 15 : 15);
            if (full) continue;
            ++bare;
            EXPECT_EQ(row->accessoryType(), path.row % 7 == 1
                                                ? UITableViewCellAccessoryType::disclosureIndicator
                                                : UITableViewCellAccessoryType::none);
            EXPECT_FALSE(row->hasImageView() && row->imageView().image());
            const UIColor blue = UIColor::colorWithRed(0, 0x7A / 255.0, 1, 1);
            EXPECT_EQ(row->textLabel().textColor(), path.row % 7 == 0 ? blue : UIColor::blackColor());
            if (auto* toggle = dynamic_cast<UISwitch*>(row->control())) {
                EXPECT_FALSE(toggle->isOn());
                EXPECT_TRUE(toggle->enabled());
            } else if (auto* slider = dynamic_cast<UISlider*>(row->control())) {
                EXPECT_EQ(slider->minimumValue(), 0);
                EXPECT_EQ(slider->maximumValue(), 1);
                EXPECT_TRUE(slider->continuous());
                EXPECT_TRUE(slider->enabled());
                EXPECT_EQ(row->detailText(), "0");
            } else if (auto* segments = dynamic_cast<UISegmentedControl*>(row->control())) {
                EXPECT_TRUE(segments->titles().empty());
                EXPECT_TRUE(segments->enabled());
            } else {
                EXPECT_EQ(row->detailText(), "");
            }
        }
    }
    EXPECT_GT(bare, 100);
    // A row whose cell shows another by now does not name it as its own.
    for (const PSSpecifierRef& specifier : pane.specifiers()) {
        auto own = std::dynamic_pointer_cast<PSTableCell>(specifier->objectForKey("cellObject"));
        EXPECT_TRUE(!own || own->specifier() == specifier);
        EXPECT_TRUE(own || !specifier->objectForKey("control"));
    }
}

TEST_F(CellsOfSettingsTest, IconsComeFromTheBundleAndMissingOnesLeaveNoGap) {
    CGImage image(29, 29);
    for (int y = 0; y < 29; ++y)
        std::fill_n(image.row(y), 29, 0xFF00FF00U);
    device_.write("/Library/Test.bundle/green.png", Graphics::current()->encodePNG(image));
    Pane& pane = open({{{"label", text("a")}, {"icon", text("green.png")}},
                       {{"label", text("b")}, {"icon", text("missing.png")}},
                       {{"label", text("c")}, {"icon", number(3)}},
                       {{"label", text("d")}, {"icon", text("../../etc/passwd")}}});
    EXPECT_EQ(cell(0, 0)->textLabel().frame().origin.x, 59);
    for (int row = 1; row < 4; ++row)
        EXPECT_EQ(cell(0, row)->textLabel().frame().origin.x, 15);
    const CGPoint at = cell(0, 0)->convertPointToView({20, 22}, nullptr);
    EXPECT_EQ(pixel(at), 0x00FF00U);
    pane.specifiers()[0]->removePropertyForKey("icon");
    pane.reloadSpecifier(pane.specifiers()[0]);
    EXPECT_EQ(pixel(at), 0xFFFFFFU);
    window_->layoutIfNeeded();
    EXPECT_EQ(cell(0, 0)->textLabel().frame().origin.x, 15);
}

TEST_F(CellsOfSettingsTest, WrongKindsOfPropertiesAndValuesDoNoHarm) {
    const char* const keys[] = {
        "label",     "id",           "key",         "defaults",    "default",     "icon",
        "enabled",   "height",       "min",         "max",         "step",        "unit",
        "showValue", "isContinuous", "validValues", "validTitles", "destructive", "cellClass",
        "detail",    "action",       "get",         "set",         "footerText",  "valuesDataSource"};
    for (const PropertyList& strange : kStrange) {
        for (const char* kind : kKinds) {
            Row all{{"cell", text(kind)}};
            for (const char* key : keys)
                all.emplace_back(key, strange);
            store("kept", strange);
            Pane& pane = open({{{"cell", text("PSGroupCell")}},
                               all,
                               kept(kind, "kept"),
                               {{"cell", strange}, {"label", text("Label")}}});
            const int sections = pane.table()->numberOfSections();
            const bool group = std::string(kind) == "PSGroupCell";
            EXPECT_EQ(sections, group ? 3 : 1);
            const int last = sections - 1;
            const int lastRow = pane.table()->numberOfRowsInSection(last) - 1;
            EXPECT_EQ(cell(last, lastRow)->titleText(), "Label");
            for (int row = 0; row <= lastRow; ++row) {
                EXPECT_TRUE(std::isfinite(cell(last, row)->frame().size.height));
                tapRow(last, row);
            }
            picture();
        }
    }
}

TEST_F(CellsOfSettingsTest, AWideScreenHasItsRowsInAColumn) {
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPad);
    const CGSize screen = UIScreen::mainScreen().size();
    window_ = std::make_shared<UIWindow>(CGRect{{0, 0}, screen});
    open({{{"label", text("a")}}});
    EXPECT_EQ(cell(0, 0)->frame().size.width, 460);
    EXPECT_EQ(cell(0, 0)->frame().origin.x, (768 - 460) / 2.0);
    EXPECT_EQ(cell(0, 0)->textLabel().frame().origin.x, 15);
    window_->setRootViewController(nullptr);
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
}

TEST_F(CellsOfSettingsTest, AScreenThatGoesLeavesItsRowsWithoutTarget) {
    open({kept("PSSwitchCell", "a")});
    const PSSpecifierRef row = pane_->specifiers()[0];
    window_->setRootViewController(nullptr);
    navigation_.reset();
    pane_.reset();
    EXPECT_EQ(row->target(), nullptr);
    EXPECT_EQ(row->performGetter(), std::nullopt);
    row->performSetter(flag(true));
    EXPECT_EQ(row->objectForKey("cellObject"), nullptr);
}

} // namespace
} // namespace tallyforge::test
