#include "ControlFixture.h"

#include "uikit/UILabel.h"
#include "uikit/UISegmentedControl.h"

namespace tallyforge::test {
namespace {

class UISegmentedControlTest : public ControlFixture {
  protected:
    UISegmentedControlTest() {
        control_->setFrame(CGRectMake(30, 100, 300, 29));
        window_->addSubview(control_);
        record(*control_, events_);
    }
    // The labels, in the order of the segments.
    std::vector<const UILabel*> labels() const {
        window_->layoutIfNeeded();
        std::vector<const UILabel*> found;
        for (const auto& view : control_->subviews()) {
            for (const auto& below : view->subviews())
                found.push_back(dynamic_cast<const UILabel*>(below.get()));
        }
        return found;
    }
    std::shared_ptr<UISegmentedControl> control_ =
        std::make_shared<UISegmentedControl>(std::vector<std::string>{"One", "Two", "Three"});
    Events events_;
};

TEST_F(UISegmentedControlTest, BeginsWithNoneChosen) {
    const UISegmentedControl control({"A", "B"});
    EXPECT_EQ(control.frame().size.height, 29);
    EXPECT_EQ(control.selectedSegmentIndex(), -1);
    EXPECT_EQ(control.titles(), (std::vector<std::string>{"A", "B"}));
}

TEST_F(UISegmentedControlTest, ATapChooses) {
    tap({30 + 150, 114});
    EXPECT_EQ(control_->selectedSegmentIndex(), 1);
    EXPECT_EQ(events_, (Events{"down", "value", "inside"}));
    tap({30 + 150, 114});
    EXPECT_EQ(events_, (Events{"down", "value", "inside", "down", "inside"})) << "it was chosen already";
    tap({31, 114});
    EXPECT_EQ(control_->selectedSegmentIndex(), 0);
    tap({329, 114});
    EXPECT_EQ(control_->selectedSegmentIndex(), 2);
}

TEST_F(UISegmentedControlTest, TheSegmentWhereTheFingerLiftsCounts) {
    press({40, 114});
    move({320, 114});
    EXPECT_EQ(control_->selectedSegmentIndex(), -1);
    lift({320, 114});
    EXPECT_EQ(control_->selectedSegmentIndex(), 2);
    press({40, 114});
    lift({40, 300});
    EXPECT_EQ(control_->selectedSegmentIndex(), 2);
    press({40, 114});
    touch(UITouchPhase::cancelled, {40, 114});
    EXPECT_EQ(control_->selectedSegmentIndex(), 2);
}

TEST_F(UISegmentedControlTest, AnIndexThatThereIsNotSelectsNone) {
    control_->setSelectedSegmentIndex(2);
    EXPECT_EQ(control_->selectedSegmentIndex(), 2);
    for (const int index : {3, -1, -7, 1000000}) {
        control_->setSelectedSegmentIndex(1);
        control_->setSelectedSegmentIndex(index);
        EXPECT_EQ(control_->selectedSegmentIndex(), -1) << index;
    }
    EXPECT_TRUE(events_.empty());
    control_->setSelectedSegmentIndex(2);
    control_->setTitles({"Only", "Two"});
    EXPECT_EQ(control_->selectedSegmentIndex(), -1);
}

TEST_F(UISegmentedControlTest, WithoutTitlesNothingHappens) {
    control_->setTitles({});
    tap({40, 114});
    EXPECT_EQ(control_->selectedSegmentIndex(), -1);
    EXPECT_FALSE(control_->pressKey(UIKey::right));
    EXPECT_EQ(control_->rectForSegment(0), CGRectZero);
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(picture());
}

TEST_F(UISegmentedControlTest, SegmentsAreEquallyWide) {
    EXPECT_EQ(control_->rectForSegment(0), CGRectMake(0, 0, 100, 29));
    EXPECT_EQ(control_->rectForSegment(2), CGRectMake(200, 0, 100, 29));
    EXPECT_EQ(control_->rectForSegment(3), CGRectZero);
    EXPECT_EQ(control_->rectForSegment(-1), CGRectZero);
}

TEST_F(UISegmentedControlTest, Keys) {
    EXPECT_TRUE(control_->pressKey(UIKey::right));
    EXPECT_EQ(control_->selectedSegmentIndex(), 0);
    EXPECT_TRUE(control_->pressKey(UIKey::right));
    EXPECT_EQ(control_->selectedSegmentIndex(), 1);
    EXPECT_TRUE(control_->pressKey(UIKey::left));
    EXPECT_TRUE(control_->pressKey(UIKey::left)); // no further
    EXPECT_EQ(control_->selectedSegmentIndex(), 0);
    EXPECT_EQ(events_, (Events{"value", "value", "value"}));
    control_->setSelectedSegmentIndex(-1);
    EXPECT_TRUE(control_->pressKey(UIKey::left));
    EXPECT_EQ(control_->selectedSegmentIndex(), 2);
    EXPECT_FALSE(control_->pressKey(UIKey::up));
    control_->setEnabled(false);
    EXPECT_FALSE(control_->pressKey(UIKey::left));
}

TEST_F(UISegmentedControlTest, TitlesShrinkTogetherAndNoFurtherThanNine) {
    for (const UILabel* label : labels())
        EXPECT_EQ(label->font().pointSize(), 13);
    control_->setTitles({"Short", "A title that is wide", "x"});
    const CGFloat size = labels()[0]->font().pointSize();
    EXPECT_LT(size, 13);
    EXPECT_GE(size, 9);
    for (const UILabel* label : labels()) {
        EXPECT_EQ(label->font().pointSize(), size);
        const TextMeasure measure = Graphics::current()->measureText(label->text(), label->font().face());
        EXPECT_LE(measure.width, label->frame().size.width + 1);
    }
    control_->setTitles({"a", std::string(3000, 'w')});
    EXPECT_EQ(labels()[1]->font().pointSize(), 9);
    EXPECT_TRUE(picture());
}

TEST_F(UISegmentedControlTest, LooksTheSameAtEveryScale) {
    control_->setSelectedSegmentIndex(1);
    for (const CGFloat scale : kScales) {
        UIScreen::mainScreen().setScale(scale);
        control_->setNeedsLayout();
        const auto image = picture(scale);
        EXPECT_EQ(at(*image, scale, {35, 104}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {135, 104}), 0x007AFFU) << scale;
        EXPECT_EQ(at(*image, scale, {225, 104}), 0x007AFFU) << scale;
        EXPECT_EQ(at(*image, scale, {240, 104}), 0xFFFFFFU) << scale;
        EXPECT_EQ(at(*image, scale, {80, 100.2}), 0x007AFFU) << scale << ": the outline";
        EXPECT_EQ(at(*image, scale, {30.2, 114}), 0x007AFFU) << scale;
        EXPECT_EQ(at(*image, scale, {30.1, 100.1}), 0xFFFFFFU) << scale << ": the round corner";
        EXPECT_EQ(at(*image, scale, {329.9, 128.4}), 0xFFFFFFU) << scale;
    }
}

TEST_F(UISegmentedControlTest, ShowsWhatIsPressedAndWhatIsDisabled) {
    press({35, 104});
    EXPECT_LE(difference(at(*picture(), 2, {35, 104}), 0xD9EBFFU), 1); // 15 % of the tint
    move({140, 104});
    EXPECT_EQ(at(*picture(), 2, {35, 104}), 0xFFFFFFU);
    lift({140, 104});
    control_->setEnabled(false);
    EXPECT_EQ(at(*picture(), 2, {135, 104}), 0x99CAFFU);
    EXPECT_EQ(at(*picture(), 2, {130.2, 104}), 0x99CAFFU) << "no darker where lines lie on it";
    tap({35, 104});
    EXPECT_EQ(control_->selectedSegmentIndex(), 1);
}

} // namespace
} // namespace tallyforge::test
