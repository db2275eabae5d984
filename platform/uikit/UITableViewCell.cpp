#include "uikit/UITableViewCell.h"

#include "uikit/ControlDrawing.h"
#include "uikit/ShapeView.h"
#include "uikit/UIDevice.h"
#include "uikit/UIImageView.h"
#include "uikit/UILabel.h"
#include "uikit/UIViewAnimation.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kSideInset = 15;
constexpr CGFloat kGap = 8; // between title, detail and accessory
constexpr CGFloat kImageGap = 15;
constexpr double kFade = 0.3; // seconds

constexpr uint32_t kLine = 0xC8C7CC;
constexpr uint32_t kPressed = 0xD9D9D9;
constexpr uint32_t kChevron = 0xC7C7CC;
constexpr uint32_t kDetail = 0x8E8E93;

std::shared_ptr<UIView> makeLine(const CGSize& size, std::initializer_list<CGPoint> points, uint32_t color) {
    CGPath path;
    path.moveToPoint(points.begin()->x, points.begin()->y);
    for (const auto* point = points.begin() + 1; point != points.end(); ++point)
        path.addLineToPoint(point->x, point->y);
    return MakeStrokedShape({{0, 0}, size}, std::move(path), ControlColor(color), 2);
}

std::shared_ptr<UIView> makeMark(UITableViewCellAccessoryType type) {
    if (type == UITableViewCellAccessoryType::checkmark)
        return makeLine({13, 10}, {{1, 5.4}, {4.6, 9}, {12, 1}}, kControlTint);
    return makeLine({10, 20}, {{1.9, 4.2}, {7.8, 10}, {1.9, 15.8}}, kChevron);
}

} // namespace

UITableViewCell::UITableViewCell() : UIView(CGRectMake(0, 0, 320, 44)) {
    setBackgroundColor(UIColor::whiteColor());
}

UITableViewCell::UITableViewCell(int style, std::string reuseIdentifier) : UITableViewCell() {
    initWithStyleReuseIdentifier(style, std::move(reuseIdentifier));
}

UITableViewCell::~UITableViewCell() = default;

bool UITableViewCell::initWithStyleReuseIdentifier(int style, std::string reuseIdentifier) {
    style_ = style;
    reuseIdentifier_ = std::move(reuseIdentifier);
    return true;
}

const std::shared_ptr<UIView>& UITableViewCell::contentView() {
    if (!contentView_) {
        contentView_ = std::make_shared<UIView>(bounds());
        insertSubviewAtIndex(contentView_, 0);
    }
    return contentView_;
}

UILabel& UITableViewCell::textLabel() {
    if (!textLabel_) {
        textLabel_ = std::make_shared<UILabel>(CGRectZero);
        textLabel_->setFont(UIFont::systemFontOfSize(17));
        contentView()->addSubview(textLabel_);
    }
    setNeedsLayout();
    return *textLabel_;
}

UILabel& UITableViewCell::detailTextLabel() {
    if (!detailLabel_) {
        detailLabel_ = std::make_shared<UILabel>(CGRectZero);
        detailLabel_->setFont(UIFont::systemFontOfSize(style_ == UITableViewCellStyleSubtitle ? 12 : 17));
        detailLabel_->setTextColor(style_ == UITableViewCellStyleSubtitle ? UIColor::blackColor()
                                                                          : ControlColor(kDetail));
        contentView()->addSubview(detailLabel_);
    }
    setNeedsLayout();
    return *detailLabel_;
}

UIImageView& UITableViewCell::imageView() {
    if (!imageView_) {
        imageView_ = std::make_shared<UIImageView>(UIImage());
        imageView_->setContentMode(UIViewContentModeScaleAspectFit);
        contentView()->addSubview(imageView_);
    }
    setNeedsLayout();
    return *imageView_;
}

std::string UITableViewCell::titleText() const {
    return textLabel_ ? textLabel_->text() : std::string();
}

std::string UITableViewCell::detailText() const {
    return detailLabel_ ? detailLabel_->text() : std::string();
}

void UITableViewCell::setAccessoryType(UITableViewCellAccessoryType type) {
    if (type == accessoryType_) return;
    accessoryType_ = type;
    if (accessoryMark_) accessoryMark_->removeFromSuperview();
    accessoryMark_ = type == UITableViewCellAccessoryType::none ? nullptr : makeMark(type);
    if (accessoryMark_) addSubview(accessoryMark_);
    setNeedsLayout();
}

void UITableViewCell::setAccessoryView(std::shared_ptr<UIView> view) {
    if (accessoryView_) accessoryView_->removeFromSuperview();
    accessoryView_ = std::move(view);
    if (accessoryView_) addSubview(accessoryView_);
    setNeedsLayout();
}

void UITableViewCell::setHighlighted(bool highlighted, bool animated) {
    if (highlighted == highlighted_) return;
    highlighted_ = highlighted;
    if (highlighted) {
        released_ = backgroundColor();
        setBackgroundColor(ControlColor(kPressed));
        return;
    }
    setBackgroundColor(released_);
    if (!animated || !UIViewAnimationsEnabled()) return;
    // Colours are not animated by the layer: a grey sheet fades instead.
    if (fading_) fading_->removeFromSuperview();
    fading_ = std::make_shared<UIView>(bounds());
    fading_->setBackgroundColor(ControlColor(kPressed));
    fading_->setUserInteractionEnabled(false);
    insertSubviewAtIndex(fading_, 0);
    UIViewAnimateAlpha(*fading_, 0, kFade);
}

void UITableViewCell::prepareForReuse() {
    setHighlighted(false);
    if (fading_) fading_->removeFromSuperview();
    fading_ = nullptr;
}

void UITableViewCell::setSeparators(Edge top, Edge bottom) {
    if (top == topEdge_ && bottom == bottomEdge_) return;
    topEdge_ = top;
    bottomEdge_ = bottom;
    setNeedsLayout();
}

// A high picture is shrunk into its row.
CGSize UITableViewCell::shownImageSize() const {
    const CGSize image = imageView_ ? imageView_->image().size() : CGSizeZero;
    const CGFloat most = std::max<CGFloat>(0, bounds().size.height - 2);
    const CGFloat share = image.height > most ? most / image.height : 1;
    return {image.width * share, image.height * share};
}

CGFloat UITableViewCell::textInset() const {
    if (!imageView_ || !imageView_->image()) return kSideInset;
    return kSideInset + shownImageSize().width + kImageGap;
}

void UITableViewCell::layoutSubviews() {
    const CGFloat right = layoutAccessory();
    if (contentView_) layoutContent(right);
    showLine(topLine_, topEdge_, 0);
    showLine(bottomLine_, bottomEdge_, bounds().size.height - HairlineWidth());
}

void UITableViewCell::layoutContent(CGFloat right) {
    const CGFloat height = bounds().size.height;
    contentView_->setFrame(CGRectMake(0, 0, right, height));
    if (imageView_) {
        const CGSize image = shownImageSize();
        imageView_->setFrame(
            CGRectMake(kSideInset, std::round((height - image.height) / 2), image.width, image.height));
    }
    const CGFloat left = textInset();
    const CGFloat end = right - (accessoryView_ || accessoryMark_ ? kGap : kSideInset);
    layoutTexts(CGRectMake(left, 0, std::max<CGFloat>(0, end - left), height));
}

void UITableViewCell::showLine(std::shared_ptr<UIView>& line, Edge edge, CGFloat y) {
    if (edge == Edge::none) {
        if (line) line->removeFromSuperview();
        line = nullptr;
        return;
    }
    if (!line) {
        line = std::make_shared<UIView>(CGRectZero);
        line->setBackgroundColor(ControlColor(kLine));
        line->setUserInteractionEnabled(false);
        addSubview(line);
    }
    const CGFloat from = edge == Edge::full ? 0 : textInset();
    const CGFloat width = std::max<CGFloat>(0, bounds().size.width - from);
    line->setFrame(AlignedToPixels(*this, CGRectMake(from, y, width, HairlineWidth())));
}

// Where the content ends at the right.
CGFloat UITableViewCell::layoutAccessory() {
    const CGSize size = bounds().size;
    if (accessoryMark_) accessoryMark_->setHidden(accessoryView_ != nullptr);
    UIView* const view = accessoryView_ ? accessoryView_.get() : accessoryMark_.get();
    if (!view) return size.width;
    const CGSize own = view->bounds().size;
    const CGFloat left = size.width - kSideInset - own.width;
    view->setFrame(CGRectMake(left, std::round(size.height - own.height) / 2, own.width, own.height));
    return left;
}

void UITableViewCell::layoutTexts(const CGRect& room) {
    auto widthOf = [&](const std::shared_ptr<UILabel>& label) {
        const CGSize most{10000, room.size.height};
        return label ? std::ceil(NSStringBoundingSize(label->text(), most, label->font()).width) : 0.0;
    };
    const CGFloat left = room.origin.x, height = room.size.height;
    CGFloat title = std::min(widthOf(textLabel_), room.size.width);
    CGFloat detail = std::min(widthOf(detailLabel_), room.size.width);
    if (style_ == UITableViewCellStyleSubtitle && detail > 0) {
        const CGFloat titleHeight = textLabel_ ? std::ceil(textLabel_->font().pointSize() * 1.22) : 0;
        const CGFloat detailHeight = std::ceil(detailLabel_->font().pointSize() * 1.25);
        const CGFloat top = std::floor((height - titleHeight - detailHeight) / 2);
        if (textLabel_) textLabel_->setFrame(CGRectMake(left, top, title, titleHeight));
        detailLabel_->setFrame(CGRectMake(left, top + titleHeight, detail, detailHeight));
        return;
    }
    // The title goes first; the detail takes what is left, and at least a third of the room when it is long.
    if (title > 0 && detail > 0 && title + kGap + detail > room.size.width) {
        const CGFloat least = std::min(detail, room.size.width / 3);
        title = std::max<CGFloat>(0, std::min(title, room.size.width - least - kGap));
        detail = std::max<CGFloat>(0, room.size.width - title - kGap);
    }
    if (textLabel_) textLabel_->setFrame(CGRectMake(left, 0, title, height));
    if (detailLabel_) {
        const bool beside = style_ == UITableViewCellStyleValue2;
        const CGFloat x = beside ? left + (title > 0 ? title + kGap : 0) : left + room.size.width - detail;
        detailLabel_->setFrame(CGRectMake(x, 0, detail, height));
    }
}

} // namespace tallyforge
