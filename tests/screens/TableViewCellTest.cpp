// One row: where its texts, image and accessory stand, and their colours.
#include "ScreenFixture.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"
#include "uikit/UISwitch.h"
#include "uikit/UITableViewCell.h"

#include <cmath>

namespace tallyforge::test {
namespace {

const char* const kLong = "A text that is much too long for one row of a phone, however small it is written";

class TableViewCellTest : public ScreenFixture {
  protected:
    std::shared_ptr<UITableViewCell> row(int style, const std::string& title = {},
                                         const std::string& detail = {}, CGFloat height = 44) {
        auto cell = std::make_shared<UITableViewCell>(style, "row");
        if (!title.empty()) cell->textLabel().setText(title);
        if (!detail.empty()) cell->detailTextLabel().setText(detail);
        cell->setFrame(CGRectMake(0, 0, 375, height));
        return show(cell);
    }
    static CGFloat widthOf(UILabel& label) {
        return std::ceil(NSStringBoundingSize(label.text(), {10000, 44}, label.font()).width);
    }
    static UIImage image(int width, int height) { // of scale 1
        auto bitmap = std::make_shared<CGImage>(width, height);
        for (int y = 0; y < height; ++y)
            std::fill_n(bitmap->row(y), width, 0xFFFF0000U);
        return UIImage::imageWithCGImage(bitmap, 1, UIImageOrientationUp);
    }
    /// Pixels of exactly this colour in a rectangle (points).
    int count(uint32_t color, const CGRect& in) {
        const CGFloat scale = UIScreen::mainScreen().scale();
        const auto drawn = picture();
        int found = 0;
        for (int y = static_cast<int>(in.origin.y * scale); y < CGRectGetMaxY(in) * scale; ++y) {
            for (int x = static_cast<int>(in.origin.x * scale); x < CGRectGetMaxX(in) * scale; ++x)
                found += (drawn->pixel(x, y) & 0xFFFFFFU) == color;
        }
        return found;
    }
};

TEST_F(TableViewCellTest, IsMade320WideAnd44HighWithNothingInIt) {
    UITableViewCell cell(UITableViewCellStyleValue1, "id");
    EXPECT_EQ(cell.frame(), CGRectMake(0, 0, 320, 44));
    EXPECT_EQ(cell.reuseIdentifier(), "id");
    EXPECT_EQ(cell.style(), UITableViewCellStyleValue1);
    EXPECT_TRUE(cell.subviews().empty());
    EXPECT_EQ(cell.titleText(), "");
    EXPECT_EQ(cell.detailText(), "");
    EXPECT_FALSE(cell.hasImageView());
    EXPECT_TRUE(cell.subviews().empty()); // asking made none
    EXPECT_EQ(UITableViewCell().style(), UITableViewCellStyleDefault);
}

TEST_F(TableViewCellTest, TheDefaultStyleHasItsTitleAtTheLeft) {
    auto cell = row(UITableViewCellStyleDefault, "Title");
    EXPECT_EQ(cell->textLabel().font().pointSize(), 17);
    EXPECT_EQ(cell->textLabel().frame(), CGRectMake(15, 0, widthOf(cell->textLabel()), 44));
    EXPECT_FALSE(truncated(cell->textLabel()));
}

TEST_F(TableViewCellTest, TheValueStyleHasItsDetailAtTheRight) {
    auto cell = row(UITableViewCellStyleValue1, "Title", "Value");
    const CGRect detail = cell->detailTextLabel().frame();
    EXPECT_EQ(CGRectGetMaxX(detail), 360);
    EXPECT_EQ(detail.size.width, widthOf(cell->detailTextLabel()));
    EXPECT_EQ(detail.size.height, 44);
    EXPECT_EQ(cell->detailTextLabel().font().pointSize(), 17);
    EXPECT_EQ(cell->detailTextLabel().textColor(),
              UIColor::colorWithRed(0x8E / 255.0, 0x8E / 255.0, 0x93 / 255.0, 1));
}

TEST_F(TableViewCellTest, TheSecondValueStyleHasItsDetailBesideTheTitle) {
    auto cell = row(UITableViewCellStyleValue2, "Title", "Value");
    EXPECT_EQ(cell->detailTextLabel().frame().origin.x, CGRectGetMaxX(cell->textLabel().frame()) + 8);
}

TEST_F(TableViewCellTest, TheSubtitleStyleHasItsDetailBelow) {
    auto cell = row(UITableViewCellStyleSubtitle, "Title", "Subtitle");
    const CGRect title = cell->textLabel().frame(), detail = cell->detailTextLabel().frame();
    EXPECT_EQ(title.origin.x, 15);
    EXPECT_EQ(detail.origin.x, 15);
    EXPECT_EQ(CGRectGetMaxY(title), detail.origin.y);
    // Both together in the middle of the row.
    EXPECT_NEAR(title.origin.y, 44 - CGRectGetMaxY(detail), 1);
    EXPECT_EQ(cell->detailTextLabel().font().pointSize(), 12);
    EXPECT_EQ(cell->detailTextLabel().textColor(), UIColor::blackColor());
    // Without a subtitle the title has the row to itself.
    cell->detailTextLabel().setText("");
    window_->layoutIfNeeded();
    EXPECT_EQ(cell->textLabel().frame().size.height, 44);
    // A high row has both in its middle too.
    auto high = row(UITableViewCellStyleSubtitle, "Title", "Subtitle", 120);
    EXPECT_NEAR(high->textLabel().frame().origin.y, 120 - CGRectGetMaxY(high->detailTextLabel().frame()), 1);
}

TEST_F(TableViewCellTest, LongTextsNeverOverlapAndEndInAnEllipsis) {
    const struct {
        std::string title, detail;
    } texts[] = {{kLong, "Value"}, {"Title", kLong}, {kLong, kLong}, {"", kLong}, {kLong, ""}};
    for (const int style : {UITableViewCellStyleDefault, UITableViewCellStyleValue1,
                            UITableViewCellStyleValue2, UITableViewCellStyleSubtitle}) {
        for (const auto& [title, detail] : texts) {
            for (const auto type :
                 {UITableViewCellAccessoryType::none, UITableViewCellAccessoryType::disclosureIndicator}) {
                SCOPED_TRACE(testing::Message() << style << " " << title << " " << detail);
                auto cell = row(style, title, detail);
                cell->setAccessoryType(type);
                window_->layoutIfNeeded();
                // 15 from the right; with a chevron 8 from its box of 10.
                const CGFloat right = type == UITableViewCellAccessoryType::none ? 360 : 375 - 15 - 10 - 8;
                for (UILabel* label : {&cell->textLabel(), &cell->detailTextLabel()}) {
                    if (label->text().empty()) continue;
                    EXPECT_GE(label->frame().origin.x, 15);
                    EXPECT_LE(CGRectGetMaxX(label->frame()), right + 1e-9);
                    EXPECT_EQ(truncated(*label), label->text() == kLong);
                    EXPECT_GT(label->frame().size.width, 25);
                }
                if (title.empty() || detail.empty()) continue;
                const CGRect both =
                    CGRectIntersection(cell->textLabel().frame(), cell->detailTextLabel().frame());
                EXPECT_TRUE(CGRectIsEmpty(both));
            }
        }
    }
}

TEST_F(TableViewCellTest, AnEllipsisIsWhatIsDrawn) {
    const auto lines = CALayOutText(kLong, UIFont::systemFontOfSize(17).face(), {345, 44}, false);
    ASSERT_EQ(lines->lines.size(), 1u);
    EXPECT_TRUE(lines->lines[0].text.ends_with("\u2026"));
    EXPECT_LE(lines->lines[0].width, 345);
}

TEST_F(TableViewCellTest, ATooNarrowRowHasNoNegativeSizes) {
    auto cell = row(UITableViewCellStyleValue1, kLong, kLong);
    cell->setAccessoryType(UITableViewCellAccessoryType::disclosureIndicator);
    for (const CGFloat width : {0.0, 10.0, 40.0, 60.0}) {
        cell->setFrame(CGRectMake(0, 0, width, 44));
        window_->layoutIfNeeded();
        EXPECT_GE(cell->textLabel().bounds().size.width, 0);
        EXPECT_GE(cell->detailTextLabel().bounds().size.width, 0);
    }
}

TEST_F(TableViewCellTest, ATitleThatChangesIsPlacedAnew) {
    auto cell = row(UITableViewCellStyleValue1, "A", "B");
    cell->textLabel().setText("A longer title");
    cell->detailTextLabel().setText("Longer too");
    window_->layoutIfNeeded();
    EXPECT_FALSE(truncated(cell->textLabel()));
    EXPECT_FALSE(truncated(cell->detailTextLabel()));
    EXPECT_EQ(CGRectGetMaxX(cell->detailTextLabel().frame()), 360);
}

TEST_F(TableViewCellTest, MarksStandFifteenFromTheRightInTheMiddle) {
    for (const CGFloat scale : kScales) {
        SCOPED_TRACE(scale);
        UIScreen::mainScreen().setScale(scale);
        auto cell = row(UITableViewCellStyleDefault, "Title");
        EXPECT_EQ(count(0xC7C7CC, CGRectMake(330, 0, 45, 44)), 0);
        cell->setAccessoryType(UITableViewCellAccessoryType::disclosureIndicator);
        window_->layoutIfNeeded();
        // In a box of 10 x 20 that ends 15 from the right.
        EXPECT_GT(count(0xC7C7CC, CGRectMake(350, 12, 10, 20)), 4);
        EXPECT_EQ(count(0xFFFFFF, CGRectMake(360, 0, 14, 44)), 14 * scale * 44 * scale);
        EXPECT_EQ(count(0xFFFFFF, CGRectMake(340, 0, 10, 44)), 10 * scale * 44 * scale);
        // It points to the right: its tip is in the middle, at the right.
        EXPECT_NE(pixel({357.2, 22}), 0xFFFFFFU);
        EXPECT_EQ(pixel({352.2, 22}), 0xFFFFFFU);
        EXPECT_NE(pixel({352.6, 16.8}), 0xFFFFFFU);

        cell->setAccessoryType(UITableViewCellAccessoryType::checkmark);
        window_->layoutIfNeeded();
        EXPECT_EQ(count(0xC7C7CC, cell->bounds()), 0);
        EXPECT_GT(count(0x007AFF, CGRectMake(347, 17, 13, 10)), 4);
        EXPECT_EQ(count(0xFFFFFF, CGRectMake(360, 0, 14, 44)), 14 * scale * 44 * scale);
        EXPECT_NE(pixel({351, 25.6}), 0xFFFFFFU); // where its two strokes meet
        EXPECT_NE(pixel({358.5, 18.6}), 0xFFFFFFU);
        EXPECT_EQ(pixel({349, 19}), 0xFFFFFFU);

        cell->setAccessoryType(UITableViewCellAccessoryType::none);
        EXPECT_EQ(count(0x007AFF, cell->bounds()), 0);
    }
}

TEST_F(TableViewCellTest, AnAccessoryViewStandsInTheMiddleInsteadOfTheMark) {
    auto cell = row(UITableViewCellStyleDefault, "Title", {}, 51);
    cell->setAccessoryType(UITableViewCellAccessoryType::disclosureIndicator);
    auto toggle = std::make_shared<UISwitch>();
    cell->setAccessoryView(toggle);
    window_->layoutIfNeeded();
    EXPECT_EQ(toggle->frame(), CGRectMake(375 - 15 - 51, 10, 51, 31));
    EXPECT_EQ(count(0xC7C7CC, cell->bounds()), 0);
    cell->setAccessoryView(nullptr);
    window_->layoutIfNeeded();
    EXPECT_EQ(toggle->superview(), nullptr);
    EXPECT_GT(count(0xC7C7CC, cell->bounds()), 4);
    cell->setAccessoryView(toggle);
    auto other = std::make_shared<UIView>(CGRectMake(0, 0, 20, 20));
    cell->setAccessoryView(other);
    EXPECT_EQ(toggle->superview(), nullptr);
    EXPECT_EQ(other->superview(), cell.get());
}

TEST_F(TableViewCellTest, AnAccessoryNeedsNoTexts) {
    auto cell = row(UITableViewCellStyleDefault);
    auto toggle = std::make_shared<UISwitch>();
    cell->setAccessoryView(toggle);
    window_->layoutIfNeeded();
    EXPECT_EQ(toggle->frame().origin.x, 309);
}

TEST_F(TableViewCellTest, ImagesStandAtTheLeftAndShiftTextsAndSeparator) {
    auto cell = row(UITableViewCellStyleDefault, "Title");
    EXPECT_EQ(cell->textInset(), 15);
    cell->imageView().setImage(image(29, 29));
    window_->layoutIfNeeded();
    EXPECT_EQ(cell->imageView().frame(), CGRectMake(15, 8, 29, 29));
    EXPECT_EQ(cell->textLabel().frame().origin.x, 15 + 29 + 15);
    EXPECT_EQ(cell->textInset(), 59);
    // A high one is shrunk to a point less than the row at both sides.
    cell->imageView().setImage(image(84, 84));
    window_->layoutIfNeeded();
    EXPECT_EQ(cell->imageView().frame(), CGRectMake(15, 1, 42, 42));
    EXPECT_EQ(cell->textLabel().frame().origin.x, 72);
    EXPECT_EQ(cell->textInset(), 72);
    cell->setSeparators(UITableViewCell::Edge::none, UITableViewCell::Edge::inset);
    window_->layoutIfNeeded();
    EXPECT_EQ(cell->subviews().back()->frame(), CGRectMake(72, 43.5, 303, 0.5));
    cell->imageView().setImage(UIImage());
    window_->layoutIfNeeded();
    EXPECT_EQ(cell->textLabel().frame().origin.x, 15);
}

TEST_F(TableViewCellTest, ColoursOfTextsAreWhatIsDrawn) {
    for (const CGFloat scale : kScales) {
        SCOPED_TRACE(scale);
        UIScreen::mainScreen().setScale(scale);
        auto cell = row(UITableViewCellStyleValue1, "HHHH", "HHHH");
        EXPECT_GT(count(0x000000, cell->textLabel().frame()), 3);
        EXPECT_GT(count(0x8E8E93, cell->detailTextLabel().frame()), 3);
        EXPECT_EQ(pixel({180, 22}), 0xFFFFFFU);
        cell->setHighlighted(true);
        EXPECT_EQ(pixel({180, 22}), 0xD9D9D9U);
    }
}

TEST_F(TableViewCellTest, AfterAPressTheCellHasItsOwnBackgroundAgain) {
    auto cell = row(UITableViewCellStyleDefault, "Title");
    cell->setBackgroundColor(UIColor::redColor());
    cell->setHighlighted(true);
    cell->setHighlighted(true);
    EXPECT_EQ(pixel({300, 22}), 0xD9D9D9U);
    cell->setHighlighted(false);
    EXPECT_EQ(pixel({300, 22}), 0xFF0000U);
    cell->setBackgroundColor(std::nullopt);
    cell->setHighlighted(true);
    cell->prepareForReuse();
    EXPECT_EQ(cell->backgroundColor(), std::nullopt);
    EXPECT_FALSE(cell->highlighted());
}

TEST_F(TableViewCellTest, AFadeLeavesNothingBehindForReuse) {
    auto cell = row(UITableViewCellStyleDefault, "Title");
    const size_t before = cell->subviews().size();
    for (int i = 0; i < 5; ++i) {
        cell->setHighlighted(true);
        cell->setHighlighted(false, true);
    }
    EXPECT_LE(cell->subviews().size(), before + 1);
    cell->prepareForReuse();
    EXPECT_EQ(cell->subviews().size(), before);
    EXPECT_EQ(pixel({300, 22}), 0xFFFFFFU);
}

TEST_F(TableViewCellTest, SettlesInOneLayout) {
    class Counting final : public UITableViewCell {
      public:
        Counting() : UITableViewCell(UITableViewCellStyleValue1, "") {}
        void layoutSubviews() override {
            UITableViewCell::layoutSubviews();
            ++times;
        }
        int times = 0;
    };
    auto cell = std::make_shared<Counting>();
    cell->textLabel().setText("Title");
    cell->detailTextLabel().setText("Detail");
    show(cell);
    EXPECT_EQ(cell->times, 1);
    cell->setSeparators(UITableViewCell::Edge::none, UITableViewCell::Edge::none); // as it is
    window_->layoutIfNeeded();
    EXPECT_EQ(cell->times, 1);
    cell->detailTextLabel().setText("Other");
    window_->layoutIfNeeded();
    EXPECT_EQ(cell->times, 2);
}

} // namespace
} // namespace tallyforge::test
