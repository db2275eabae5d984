#include "colorpicker/SwatchCell.h"

#include "colorpicker/SliderPanel.h"
#include "colorpicker/UIColorZintara.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr CGSize kSwatchSize{48, 24};
constexpr CGFloat kTextGap = 4; // between the texts and the sliders' values

void endAt(CGFloat right, UILabel& label) {
    CGRect frame = label.frame();
    frame.size.width = std::clamp(right - frame.origin.x, 0.0, frame.size.width);
    label.setFrame(frame);
}

} // namespace

SwatchCell::SwatchCell(std::string reuseIdentifier)
    : UITableViewCell(UITableViewCellStyleSubtitle, std::move(reuseIdentifier)) {
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    setClipsToBounds(true); // the panel of the sliders is wider than the rest of the row
    textLabel().setFont(UIFont::systemFontOfSize(14));
    textLabel().setTextColor(UIColor::blackColor());
    detailTextLabel().setFont(UIFont::systemFontOfSize(10));
    detailTextLabel().setTextColor(UIColor::colorWithWhite(0.7, 1));
}

void SwatchCell::clear() {
    textLabel().setText({});
    detailTextLabel().setText({});
    imageView().setImage({});
    imageView().layer()->setBorderWidth(0);
    setUserInteractionEnabled(true);
    setTitleEnabled(true);
    setAccessoryType(UITableViewCellAccessoryType::none);
    setTag(0);
    while (UIView* panel = viewWithTag(kSliderPanelTag))
        panel->removeFromSuperview();
}

void SwatchCell::showColor(const UIColor& color, bool bordered) {
    imageView().setImage(UIColorZintara::thumbnailWithSize(color, kSwatchSize));
    imageView().layer()->setBorderWidth(bordered ? 1 : 0);
    imageView().layer()->setBorderColor(UIColorZintara::borderColor().cgColor());
}

void SwatchCell::setTitleEnabled(bool enabled) {
    textLabel().setEnabled(enabled);
}

void SwatchCell::layoutSubviews() {
    UITableViewCell::layoutSubviews();
    if (!viewWithTag(kSliderPanelTag)) return;
    const CGFloat right = kSliderValuesLeft - kTextGap;
    endAt(right, textLabel());
    endAt(right, detailTextLabel());
}

} // namespace tallyforge
