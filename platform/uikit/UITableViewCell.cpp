#include "uikit/UITableViewCell.h"

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

const CGColor kLine{200.0 / 255, 199.0 / 255, 204.0 / 255, 1};
const CGColor kPressed{217.0 / 255, 217.0 / 255, 217.0 / 255, 1};
const CGColor kChevron{199.0 / 255, 199.0 / 255, 204.0 / 255, 1};
const CGColor kTint{0, 122.0 / 255, 1, 1};

UIColor color(const CGColor& c) {
    return UIColor::colorWithRed(c.red, c.green, c.blue, c.alpha);
}

// An open line with round ends through three points.
class StrokeView final : public UIView {
  public:
    StrokeView(const CGSize& size, const CGPoint& a, const CGPoint& b, const CGPoint& c, CGFloat width,
               const CGColor& stroke)
        : UIView(CGRect{{0, 0}, size}, std::make_shared<CAShapeLayer>()) {
        CGPath path;
        path.moveToPoint(a.x, a.y);
        path.addLineToPoint(b.x, b.y);
        path.addLineToPoint(c.x, c.y);
        auto& shape = static_cast<CAShapeLayer&>(*layer());
        shape.setPath(std::make_shared<CGPath>(path));
        shape.setFillColor(std::nullopt);
        shape.setStrokeColor(stroke);
        shape.setLineWidth(width);
        setUserInteractionEnabled(false);
    }
};

std::shared_ptr<UIView> makeMark(UITableViewCellAccessoryType type) {
    if (type == UITableViewCellAccessoryType::checkmark)
        return std::make_shared<StrokeView>(CGSize{14, 12}, CGPoint{1, 6.5}, CGPoint{4.8, 10.2},
                                            CGPoint{13, 1.2}, 2, kTint);
    return std::make_shared<StrokeView>(CGSize{8, 13}, CGPoint{0.9, 0.7}, CGPoint{6.8, 6.5},
                                        CGPoint{0.9, 12.3}, 2, kChevron);
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
        detailLabel_->setTextColor(style_ == UITableViewCellStyleSubtitle
                                       ? UIColor::blackColor()
                                       : UIColor::colorWithRed(142.0 / 255, 142.0 / 255, 147.0 / 255, 1));
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
    layer()->removeAnimationForKey("highlight");
    if (highlighted) {
        setBackgroundColor(color(kPressed));
        return;
    }
    setBackgroundColor(UIColor::whiteColor());
    if (!animated || !UIViewAnimationsEnabled()) return;
    // Colours are not animated by the layer: a grey sheet fades instead.
    auto sheet = std::make_shared<UIView>(bounds());
    sheet->setBackgroundColor(color(kPressed));
    sheet->setUserInteractionEnabled(false);
    insertSubviewAtIndex(sheet, 0);
    UIViewAnimateAlpha(*sheet, 0, kFade);
    if (fading_) fading_->removeFromSuperview();
    fading_ = std::move(sheet);
}

void UITableViewCell::prepareForReuse() {
    setHighlighted(false);
    if (fading_) fading_->removeFromSuperview();
    fading_ = nullptr;
}

void UITableViewCell::setSeparators(Edge top, Edge bottom) {
    topEdge_ = top;
    bottomEdge_ = bottom;
    setNeedsLayout();
}

void UITableViewCell::setFocused(bool focused) {
    UIView::setFocused(focused);
}

CGFloat UITableViewCell::textInset() const {
    if (!imageView_ || !imageView_->image()) return kSideInset;
    return kSideInset + imageView_->image().size().width + kImageGap;
}

void UITableViewCell::layoutSubviews() {
    const CGSize size = bounds().size;
    const CGFloat pixel = 1 / std::max(0.25, UIScreen::mainScreen().scale());
    if (contentView_) {
        CGFloat right = layoutAccessory();
        contentView_->setFrame(CGRectMake(0, 0, right, size.height));
        CGFloat left = kSideInset;
        if (imageView_ && imageView_->image()) {
            CGSize image = imageView_->image().size();
            CGFloat most = size.height - 2; // a high picture is shrunk into its row
            CGFloat share = image.height > most ? most / image.height : 1;
            imageView_->setFrame(CGRectMake(left, std::round((size.height - image.height * share) / 2),
                                            image.width * share, image.height * share));
            left += image.width * share + kImageGap;
        }
        bool hasAccessory = accessoryView_ || accessoryMark_;
        layoutTexts(CGRectMake(left, 0, right - left - (hasAccessory ? kGap : kSideInset), size.height), left);
    }

    auto line = [&](std::shared_ptr<UIView>& view, Edge edge, CGFloat y) {
        if (edge == Edge::none) {
            if (view) view->removeFromSuperview();
            view = nullptr;
            return;
        }
        if (!view) {
            view = std::make_shared<UIView>(CGRectZero);
            view->setBackgroundColor(color(kLine));
            view->setUserInteractionEnabled(false);
            addSubview(view);
        }
        CGFloat from = edge == Edge::full ? 0 : textInset();
        view->setFrame(CGRectMake(from, y, size.width - from, pixel));
    };
    line(topLine_, topEdge_, 0);
    line(bottomLine_, bottomEdge_, size.height - pixel);
}

// Where the content ends at the right.
CGFloat UITableViewCell::layoutAccessory() {
    const CGSize size = bounds().size;
    CGFloat right = size.width;
    UIView* view = accessoryView_ ? accessoryView_.get() : accessoryMark_.get();
    if (accessoryMark_) accessoryMark_->setHidden(accessoryView_ != nullptr);
    if (!view) return right;
    CGSize own = view->bounds().size;
    right -= kSideInset + own.width;
    view->setFrame(CGRectMake(right, std::round(size.height - own.height) / 2, own.width, own.height));
    return right;
}

void UITableViewCell::layoutTexts(const CGRect& content, CGFloat left) {
    if (!textLabel_ && !detailLabel_) return;
    const CGFloat height = content.size.height;
    const CGSize most{10000, height};
    auto widthOf = [&](const std::shared_ptr<UILabel>& label) {
        return label ? std::ceil(NSStringBoundingSize(label->text(), most, label->font()).width) : 0.0;
    };
    const CGFloat room = std::max<CGFloat>(0, content.size.width);
    if (style_ == UITableViewCellStyleSubtitle && detailLabel_ && !detailLabel_->text().empty()) {
        CGFloat titleHeight = textLabel_ ? std::ceil(textLabel_->font().pointSize() * 1.22) : 0;
        CGFloat detailHeight = std::ceil(detailLabel_->font().pointSize() * 1.25);
        // A high row keeps its texts at the top, beside what it is high for.
        CGFloat block = std::min<CGFloat>(height, 44);
        CGFloat top = std::floor((block - titleHeight - detailHeight) / 2);
        if (textLabel_)
            textLabel_->setFrame(CGRectMake(left, top, std::min(room, widthOf(textLabel_)), titleHeight));
        detailLabel_->setFrame(
            CGRectMake(left, top + titleHeight, std::min(room, widthOf(detailLabel_)), detailHeight));
        return;
    }
    // The title goes first; the detail takes what is left, and at least a third of the room when it is long.
    CGFloat detail = std::min(widthOf(detailLabel_), room);
    CGFloat title = std::min(widthOf(textLabel_), room);
    if (detail > 0 && title + kGap + detail > room) {
        CGFloat least = std::min(detail, room / 3);
        title = std::min(title, room - least - kGap);
        detail = room - title - kGap;
    }
    if (textLabel_) textLabel_->setFrame(CGRectMake(left, 0, title, height));
    if (detailLabel_) {
        CGFloat x = style_ == UITableViewCellStyleValue2 ? left + title + kGap : left + room - detail;
        detailLabel_->setFrame(CGRectMake(x, 0, detail, height));
    }
}

} // namespace tallyforge
