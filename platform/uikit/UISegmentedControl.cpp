#include "uikit/UISegmentedControl.h"

#include "uikit/ControlDrawing.h"
#include "uikit/UILabel.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr CGFloat kHeight = 29;
constexpr CGFloat kRadius = 4;
constexpr CGFloat kLine = 1;
constexpr CGFloat kFontSize = 13;
constexpr CGFloat kLeastFontSize = 9;
constexpr CGFloat kPadding = 4; // between a title and its segment's sides
constexpr CGFloat kPressedAlpha = 0.15;
constexpr uint32_t kDisabledTint =
    0x99CAFF; // the tint at 40 % on white; solid, as lines lie on filled segments

CGFloat fontSizeFor(const std::vector<std::string>& titles, CGFloat room) {
    CGFloat widest = 0;
    for (const std::string& title : titles)
        widest = std::max(widest,
                          NSStringBoundingSize(title, {1e6, 1e6}, UIFont::systemFontOfSize(kFontSize)).width);
    if (widest <= room) return kFontSize;
    return std::clamp(kFontSize * room / widest, kLeastFontSize, kFontSize);
}

} // namespace

UISegmentedControl::UISegmentedControl(std::vector<std::string> titles)
    : UIControl(CGRectMake(0, 0, 0, kHeight)), outline_(std::make_shared<UIView>()) {
    layer()->setCornerRadius(kRadius);
    setClipsToBounds(true);
    outline_->setUserInteractionEnabled(false);
    outline_->layer()->setCornerRadius(kRadius);
    setTitles(std::move(titles));
}

void UISegmentedControl::setTitles(std::vector<std::string> titles) {
    titles_ = std::move(titles);
    pressed_ = -1;
    removeAllSubviews();
    segments_.clear();
    dividers_.clear();
    labels_.clear();
    for (const std::string& title : titles_) {
        auto segment = std::make_shared<UIView>();
        auto label = std::make_shared<UILabel>(CGRectZero);
        label->setText(title);
        label->setTextAlignment(NSTextAlignmentCenter);
        segment->addSubview(label);
        segments_.push_back(segment);
        labels_.push_back(label);
        if (segments_.size() > 1) dividers_.push_back(std::make_shared<UIView>());
    }
    for (const auto* views : {&segments_, &dividers_}) {
        for (const auto& view : *views) {
            view->setUserInteractionEnabled(false);
            addSubview(view);
        }
    }
    addSubview(outline_);
    setSelectedSegmentIndex(selected_);
    setNeedsLayout();
}

void UISegmentedControl::setSelectedSegmentIndex(int index) {
    selected_ = index >= 0 && index < static_cast<int>(titles_.size()) ? index : -1;
    show();
}

CGRect UISegmentedControl::rectForSegment(int index) const {
    const CGRect box = bounds();
    const auto count = static_cast<CGFloat>(titles_.size());
    if (index < 0 || index >= count) return CGRectZero;
    const CGFloat width = box.size.width / count;
    return CGRectMake(box.origin.x + width * index, box.origin.y, width, box.size.height);
}

void UISegmentedControl::setEnabled(bool enabled) {
    UIControl::setEnabled(enabled);
    show();
}

void UISegmentedControl::layoutSubviews() {
    outline_->setFrame(bounds());
    outline_->layer()->setBorderWidth(AlignedToPixels(*this, CGRectMake(0, 0, kLine, kLine)).size.width);
    if (titles_.empty()) return;
    const CGFloat room = std::max(rectForSegment(0).size.width - 2 * kPadding, 1.0);
    const UIFont font = UIFont::systemFontOfSize(fontSizeFor(titles_, room));
    for (size_t i = 0; i < segments_.size(); ++i) {
        const CGRect rect = AlignedToPixels(*this, rectForSegment(static_cast<int>(i)));
        segments_[i]->setFrame(rect);
        labels_[i]->setFont(font);
        labels_[i]->setFrame(
            CGRectMake(kPadding, 0, std::max(rect.size.width - 2 * kPadding, 1.0), rect.size.height));
        if (i > 0)
            dividers_[i - 1]->setFrame(AlignedToPixels(
                *this, CGRectMake(rect.origin.x - kLine / 2, rect.origin.y, kLine, rect.size.height)));
    }
    // No gap where the whole pixels of two neighbours do not meet.
    for (size_t i = 0; i + 1 < segments_.size(); ++i) {
        CGRect rect = segments_[i]->frame();
        rect.size.width = segments_[i + 1]->frame().origin.x - rect.origin.x;
        segments_[i]->setFrame(rect);
    }
    CGRect last = segments_.back()->frame();
    last.size.width = CGRectGetMaxX(bounds()) - last.origin.x;
    segments_.back()->setFrame(last);
    show();
}

bool UISegmentedControl::pressKey(UIKey key) {
    if (!enabled() || titles_.empty() || (key != UIKey::left && key != UIKey::right)) return false;
    const int last = static_cast<int>(titles_.size()) - 1;
    const int wanted = key == UIKey::right ? selected_ + 1 : selected_ < 0 ? last : selected_ - 1;
    choose(std::clamp(wanted, 0, last));
    return true;
}

bool UISegmentedControl::beginTracking(const UITouch& touch) {
    pressed_ = segmentAt(touch);
    show();
    return pressed_ >= 0;
}

void UISegmentedControl::continueTracking(const UITouch& touch) {
    pressed_ = isTouchInside(touch) ? segmentAt(touch) : -1;
    show();
}

void UISegmentedControl::endTracking(const UITouch& touch) {
    continueTracking(touch);
    const int chosen = pressed_;
    pressed_ = -1;
    show();
    if (chosen >= 0) choose(chosen);
}

void UISegmentedControl::cancelTracking() {
    pressed_ = -1;
    show();
}

// The nearest one, for a finger beside the control.
int UISegmentedControl::segmentAt(const UITouch& touch) const {
    const CGRect box = bounds();
    if (titles_.empty() || !(box.size.width > 0)) return -1;
    const CGFloat share = (touch.locationInView(*this).x - box.origin.x) / box.size.width;
    const auto last = static_cast<CGFloat>(titles_.size() - 1);
    return static_cast<int>(std::clamp(share * (last + 1), 0.0, last));
}

void UISegmentedControl::choose(int index) {
    if (index == selected_) return;
    setSelectedSegmentIndex(index);
    sendActionsForControlEvents(UIControlEventValueChanged);
}

void UISegmentedControl::show() {
    const UIColor tint = ControlColor(enabled() ? kControlTint : kDisabledTint);
    outline_->layer()->setBorderColor(tint.cgColor());
    for (const auto& divider : dividers_)
        divider->setBackgroundColor(tint);
    for (int i = 0; i < static_cast<int>(segments_.size()); ++i) {
        UIView& segment = *segments_[static_cast<size_t>(i)];
        const bool selected = i == selected_;
        if (selected)
            segment.setBackgroundColor(tint);
        else if (i == pressed_)
            segment.setBackgroundColor(tint.colorWithAlphaComponent(kPressedAlpha));
        else
            segment.setBackgroundColor(std::nullopt);
        labels_[static_cast<size_t>(i)]->setTextColor(selected ? UIColor::whiteColor() : tint);
    }
}

} // namespace tallyforge
