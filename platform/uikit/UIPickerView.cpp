#include "uikit/UIPickerView.h"

#include "quartzcore/Presentation.h"
#include "uikit/ControlDrawing.h"
#include "uikit/UIGestureRecognizer.h"
#include "uikit/UILabel.h"
#include "uikit/UIScrollView.h"
#include "uikit/UIViewAnimation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tallyforge {

namespace {

constexpr CGFloat kFontSize = 21;
constexpr CGFloat kPadding = 9;    // beside the titles
constexpr CGFloat kSteepest = 1.4; // radians: rows turned further away are not shown
constexpr uint32_t kLineGrey = 0xC7C7CC;
constexpr CGFloat kSlowingRate = 3.5; // share of the speed that momentum loses, a second
constexpr CGFloat kTurningRate = 14;  // how fast it gets to a row that was asked for
constexpr CGFloat kThere = 0.004;     // rows

} // namespace

UIPickerView::UIPickerView(const CGRect& frame)
    : UIView(frame), link_([this](double seconds) { step(seconds); }),
      pan_(std::make_shared<UIPanGestureRecognizer>([this] { pan(); },
                                                    UIPanGestureRecognizer::Direction::vertical)),
      wheel_(std::make_shared<UIView>()) {
    wheel_->setClipsToBounds(true);
    wheel_->setUserInteractionEnabled(false);
    addSubview(wheel_);
    for (int i = 0; i < 2; ++i) {
        indicator_.push_back(std::make_shared<UIView>());
        indicator_.back()->setUserInteractionEnabled(false);
        addSubview(indicator_.back());
    }
    setShowsSelectionIndicator(false);
    setFocused(false);
    addGestureRecognizer(pan_);
}

UIPickerView::~UIPickerView() = default;

void UIPickerView::setDataSource(UIPickerViewDataSource* source) {
    dataSource_ = source;
    if (!source) return; // the rows that are shown stay
    loaded_ = false;
    setNeedsLayout();
}

void UIPickerView::setDelegate(UIPickerViewDelegate* delegate) {
    delegate_ = delegate;
    if (!delegate) return;
    loaded_ = false;
    setNeedsLayout();
}

void UIPickerView::setShowsSelectionIndicator(bool shows) {
    showsIndicator_ = shows;
    for (const auto& line : indicator_)
        line->setHidden(!shows);
}

void UIPickerView::reloadAllComponents() {
    loaded_ = false;
    setNeedsLayout();
}

// Titles are kept, so that a wheel which still turns asks nobody who may be gone.
void UIPickerView::load() {
    if (loaded_) return;
    loaded_ = true;
    titles_.clear();
    const int count = dataSource_ ? std::max(dataSource_->pickerViewNumberOfRowsInComponent(*this, 0), 0) : 0;
    titles_.reserve(static_cast<size_t>(count));
    for (int row = 0; row < count; ++row)
        titles_.push_back(delegate_ ? delegate_->pickerViewTitleForRow(*this, row, 0) : std::string());
    const int last = std::max(count - 1, 0);
    selected_ = std::min(selected_, last);
    target_ = std::min(target_, last);
    offset_ = std::clamp(offset_, 0.0, static_cast<CGFloat>(last));
    from_ = std::clamp(from_, 0.0, static_cast<CGFloat>(last));
    setNeedsLayout();
}

int UIPickerView::rows() const {
    const_cast<UIPickerView*>(this)->load(); // when they are fetched is nothing that a caller sees
    return static_cast<int>(titles_.size());
}

int UIPickerView::numberOfRowsInComponent(int component) const {
    return component == 0 ? rows() : 0;
}

std::string UIPickerView::titleForRow(int row) const {
    return row >= 0 && row < rows() ? titles_[static_cast<size_t>(row)] : std::string();
}

int UIPickerView::selectedRowInComponent(int component) const {
    return component == 0 && rows() > 0 ? selected_ : -1;
}

void UIPickerView::selectRowInComponent(int row, int component, bool animated) {
    if (component != 0 || rows() == 0) return;
    turnTo(std::clamp(row, 0, rows() - 1), animated ? kTurningRate : 0, false);
}

void UIPickerView::setFocused(bool focused) {
    UIView::setFocused(focused);
    for (const auto& line : indicator_)
        line->setBackgroundColor(ControlColor(focused ? kControlTint : kLineGrey));
}

bool UIPickerView::pressKey(UIKey key) {
    if (rows() == 0) return false;
    const int page = std::max(static_cast<int>(bounds().size.height / kRowHeight) - 1, 1);
    int wanted = motion_ == Motion::momentum ? target_ : selected_;
    switch (key) {
    case UIKey::up:
        wanted -= 1;
        break;
    case UIKey::down:
        wanted += 1;
        break;
    case UIKey::pageUp:
        wanted -= page;
        break;
    case UIKey::pageDown:
        wanted += page;
        break;
    case UIKey::home:
        wanted = 0;
        break;
    case UIKey::end:
        wanted = rows() - 1;
        break;
    default:
        return false;
    }
    wanted = std::clamp(wanted, 0, rows() - 1);
    if (motion_ != Motion::finger && wanted != selected_) turnTo(wanted, kTurningRate, true);
    return true;
}

void UIPickerView::turnBy(CGFloat points) {
    if (!std::isfinite(points)) return;
    if (points * turned_ < 0) turned_ = 0;
    turned_ += points;
    const CGFloat whole = std::trunc(turned_ / kRowHeight);
    turned_ -= whole * kRowHeight;
    if (whole == 0 || rows() == 0 || motion_ == Motion::finger) return;
    const int from = motion_ == Motion::none ? selected_ : target_;
    const int row = static_cast<int>(std::clamp<CGFloat>(from + whole, 0, rows() - 1));
    if (row != from) turnTo(row, kTurningRate, true);
}

void UIPickerView::fingerCameDown() {
    turned_ = 0;
    caught_ = motion_ != Motion::none;
    if (!caught_) return;
    motion_ = Motion::finger;
    link_.setPaused(true);
    selected_ = rowInMiddle();
}

void UIPickerView::touchesEnded(const UITouch& touch) {
    if (rows() == 0) return;
    if (caught_) return letGo(0);
    const CGFloat sine = (touch.locationInView(*this).y - CGRectGetMidY(bounds())) / radius();
    if (!(std::abs(sine) < 1)) return;
    const CGFloat row = std::round(offset_ + std::asin(sine) * radius() / kRowHeight);
    if (row >= 0 && row < rows() && row != selected_) turnTo(static_cast<int>(row), kTurningRate, true);
}

void UIPickerView::touchesCancelled(const UITouch&) {
    const bool turning = pan_->state() == UIGestureRecognizerState::began ||
                         pan_->state() == UIGestureRecognizerState::changed;
    if (caught_ && !turning) letGo(0);
}

void UIPickerView::pan() {
    if (rows() == 0) return;
    const CGFloat last = rows() - 1;
    switch (pan_->state()) {
    case UIGestureRecognizerState::began:
        motion_ = Motion::finger;
        link_.setPaused(true);
        dragFrom_ = offset_ + pan_->translation().y / kRowHeight; // what it took to begin does not move
        [[fallthrough]];
    case UIGestureRecognizerState::changed: {
        const CGFloat wanted = dragFrom_ - pan_->translation().y / kRowHeight;
        const CGFloat held = std::clamp(wanted, 0.0, last);
        const CGFloat height = bounds().size.height;
        const CGFloat past =
            UIScrollView::RubberBandDistance(std::abs(wanted - held) * kRowHeight, height) / kRowHeight;
        offset_ = held + (wanted < held ? -past : past);
        selected_ = rowInMiddle();
        show();
        break;
    }
    case UIGestureRecognizerState::ended:
        letGo(-pan_->velocity().y / kRowHeight);
        break;
    case UIGestureRecognizerState::cancelled:
        letGo(0);
        break;
    default:
        break;
    }
}

// Momentum that loses the same share of its speed all the time gets speed / rate far; it is led to a whole
// row.
void UIPickerView::letGo(CGFloat rowsPerSecond) {
    const auto self = weak_from_this().lock();
    caught_ = false;
    const CGFloat last = std::max(rows() - 1, 0);
    const CGFloat reach = std::clamp(offset_ + rowsPerSecond / kSlowingRate, 0.0, last);
    const CGFloat row = std::round(reach);
    const CGFloat way = row - offset_;
    const CGFloat rate = way * rowsPerSecond > 0 ? rowsPerSecond / way : kTurningRate;
    turnTo(static_cast<int>(row), std::clamp(rate, kSlowingRate, kTurningRate), true);
    if (motion_ != Motion::turn) return;
    motion_ = Motion::momentum;
    selected_ = rowInMiddle();
}

void UIPickerView::turnTo(int row, CGFloat rate, bool tell) {
    target_ = row;
    selected_ = row;
    tellWhenThere_ = tell;
    if (rate <= 0 || !UIViewAnimationsEnabled() || std::abs(offset_ - row) < kThere) return comeToRest();
    motion_ = Motion::turn;
    from_ = offset_;
    rate_ = rate;
    turnStart_ = CACurrentMediaTime();
    link_.setPaused(false);
}

void UIPickerView::step(double seconds) {
    const CGFloat away = (from_ - target_) * std::exp(-rate_ * std::max(seconds - turnStart_, 0.0));
    if (std::abs(away) < kThere) return comeToRest();
    offset_ = target_ + away;
    if (motion_ == Motion::momentum) selected_ = rowInMiddle();
    show();
}

void UIPickerView::comeToRest() {
    const auto self = weak_from_this().lock(); // whoever is told may end the picker
    motion_ = Motion::none;
    link_.setPaused(true);
    offset_ = selected_ = target_;
    show();
    const bool tell = tellWhenThere_;
    tellWhenThere_ = false;
    if (tell && delegate_ && rows() > 0) delegate_->pickerViewDidSelectRow(*this, selected_, 0);
}

int UIPickerView::rowInMiddle() const {
    return static_cast<int>(std::lround(std::clamp<CGFloat>(offset_, 0, std::max(rows() - 1, 0))));
}

std::string UIPickerView::accessibilityLabel() const {
    return titleForRow(selectedRowInComponent(0));
}

std::optional<CGFloat> UIPickerView::middleOfRow(int row) const {
    const CGFloat angle = (row - offset_) * kRowHeight / radius();
    if (row < 0 || row >= rows() || std::abs(angle) > kSteepest) return std::nullopt;
    return CGRectGetMidY(bounds()) + radius() * std::sin(angle);
}

// The wheel's edge lies a little beyond the view's.
CGFloat UIPickerView::radius() const {
    return std::max(bounds().size.height / 2, kRowHeight) * 1.02;
}

void UIPickerView::layoutSubviews() {
    const CGRect box = bounds();
    wheel_->setFrame(box);
    for (int i = 0; i < 2; ++i) {
        const CGFloat y = CGRectGetMidY(box) + (i == 0 ? -kRowHeight / 2 : kRowHeight / 2);
        indicator_[static_cast<size_t>(i)]->setFrame(
            AlignedToPixels(*this, CGRectMake(box.origin.x, y, box.size.width, HairlineWidth())));
    }
    show();
}

void UIPickerView::show() {
    const int count = rows();
    const CGFloat span = kSteepest * radius() / kRowHeight; // rows from the middle to the last one shown
    const int first = std::clamp(static_cast<int>(std::ceil(offset_ - span)), 0, count);
    const int end = std::clamp(static_cast<int>(std::floor(offset_ + span)) + 1, first, count);
    const auto needed = static_cast<size_t>(end - first);
    while (labels_.size() < needed) {
        labels_.push_back(std::make_shared<UILabel>(CGRectZero));
        labels_.back()->setFont(UIFont::systemFontOfSize(kFontSize));
        labels_.back()->setTextAlignment(NSTextAlignmentCenter);
        wheel_->addSubview(labels_.back());
    }
    for (size_t i = 0; i < labels_.size(); ++i) {
        UILabel& label = *labels_[i];
        label.setHidden(i >= needed);
        if (i >= needed) continue;
        const int row = first + static_cast<int>(i);
        const CGFloat angle = (row - offset_) * kRowHeight / radius();
        showRow(label, row, CGRectGetMidY(bounds()) + radius() * std::sin(angle), angle);
    }
}

// A row on the wheel: lower the further it is turned away, a little smaller, and fainter.
void UIPickerView::showRow(UILabel& label, int row, CGFloat middle, CGFloat angle) {
    const CGFloat upright = std::cos(angle);
    const CGFloat fromMiddle = std::min(std::abs(row - offset_), 1.0);
    label.setText(titles_[static_cast<size_t>(row)]);
    label.setTransform(CGAffineTransformMakeScale(1, 1));
    label.setBounds(CGRectMake(0, 0, std::max(bounds().size.width - 2 * kPadding, 1.0), kRowHeight));
    label.setCenter({CGRectGetMidX(bounds()), middle});
    const CGFloat width = (0.9 + 0.1 * upright) * (1 - 0.06 * fromMiddle);
    label.setTransform(CGAffineTransformMakeScale(width, upright * (1 - 0.06 * fromMiddle)));
    label.setAlpha(std::max(upright, 0.0) * (1 - 0.45 * fromMiddle));
}

} // namespace tallyforge
