#include "UIKitFixture.h"

#include "uikit/UILabel.h"
#include "uikit/UITableViewCell.h"

namespace tallyforge::test {
namespace {

using UILabelTest = UIKitFixture;

const CATextLayer& textLayer(const UILabel& label) {
    return dynamic_cast<const CATextLayer&>(*label.layer());
}

TEST_F(UILabelTest, IsBlackSeventeenPointsFromTheLeft) {
    UILabel label(CGRectMake(1, 2, 30, 40));
    EXPECT_EQ(label.frame(), CGRectMake(1, 2, 30, 40));
    EXPECT_EQ(label.text(), "");
    EXPECT_EQ(label.font(), UIFont::systemFontOfSize(17));
    EXPECT_EQ(label.textColor(), UIColor::blackColor());
    EXPECT_EQ(label.textAlignment(), NSTextAlignment::left);
    EXPECT_EQ(textLayer(label).font(), (FontFace{17, 400}));
    EXPECT_FALSE(label.backgroundColor());
    EXPECT_STREQ(label.className(), "UILabel");
}

TEST_F(UILabelTest, TellsItsLayerWhatToShow) {
    UILabel label(CGRectZero);
    label.setText("App Store");
    label.setFont(UIFont::semiboldSystemFontOfSize(12));
    label.setTextColor(UIColor::colorWithRed(0.25, 0.5, 0.75, 1));
    label.setTextAlignment(NSTextAlignmentCenter);

    EXPECT_EQ(label.text(), "App Store");
    EXPECT_EQ(textLayer(label).string(), "App Store");
    EXPECT_EQ(textLayer(label).font(), (FontFace{12, 600}));
    EXPECT_EQ(label.font().pointSize(), 12);
    EXPECT_EQ(textLayer(label).foregroundColor(), (CGColor{0.25, 0.5, 0.75, 1}));
    EXPECT_EQ(label.textColor(), UIColor::colorWithRed(0.25, 0.5, 0.75, 1));
    EXPECT_EQ(static_cast<int>(label.textAlignment()), 1);
    EXPECT_EQ(textLayer(label).alignmentMode(), CATextAlignment::center);
    label.setTextAlignment(NSTextAlignment::right);
    EXPECT_EQ(textLayer(label).alignmentMode(), CATextAlignment::right);
    label.setTextAlignment(NSTextAlignment::left);
    EXPECT_EQ(textLayer(label).alignmentMode(), CATextAlignment::left);
}

TEST_F(UILabelTest, TextTakesItsOwnSizeUpToTheBox) {
    UIFont font = UIFont::systemFontOfSize(17);
    TextMeasure measure = Graphics::current()->measureText("Hello", font.face());
    ASSERT_GT(measure.width, 10);
    EXPECT_EQ(NSStringBoundingSize("Hello", CGSizeMake(1000, 1000), font),
              CGSizeMake(measure.width, measure.lineHeight()));
    EXPECT_EQ(NSStringBoundingSize("Hello", CGSizeMake(10, 1000), font).width, 10);
    EXPECT_GT(NSStringBoundingSize("HelloHello", CGSizeMake(1000, 1000), font).width, measure.width);
    EXPECT_EQ(NSStringBoundingSize("", CGSizeMake(1000, 1000), font).width, 0);
    Graphics::install(nullptr);
    EXPECT_EQ(NSStringBoundingSize("Hello", CGSizeMake(1000, 1000), font), CGSizeZero);
}

TEST_F(UILabelTest, TableCellsAreCreatedAtTheirUsualSize) {
    class Cell final : public UITableViewCell {
      public:
        using UITableViewCell::initWithStyleReuseIdentifier;
    } cell;
    EXPECT_EQ(cell.frame(), CGRectMake(0, 0, 320, 44));
    EXPECT_TRUE(cell.initWithStyleReuseIdentifier(3, "row"));
    EXPECT_EQ(cell.style(), 3);
    EXPECT_EQ(cell.reuseIdentifier(), "row");
    EXPECT_STREQ(cell.className(), "UITableViewCell");
}

} // namespace
} // namespace tallyforge::test
