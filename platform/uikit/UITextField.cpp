#include "uikit/UITextField.h"

#include "foundation/Dispatch.h"
#include "foundation/UTFText.h"
#include "uikit/ControlDrawing.h"
#include "uikit/UILabel.h"
#include "uikit/UIWindow.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kPadding = 6; // between the sides and the text
constexpr CGFloat kCaretWidth = 2;
constexpr size_t kMostText = 2000; // bytes
constexpr int64_t kBlink = NSEC_PER_SEC / 2;
constexpr uint32_t kPlaceholderGrey = 0xC7C7CD;

bool isControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

// What fits into one line of valid text: bytes that are no characters, and characters that are no text, go,
// and so does what is more than there is room for (bytes).
std::string cleaned(std::string_view utf8, size_t room = kMostText) {
    constexpr char32_t kInvalid = 0xFFFFFFFF;
    std::string text;
    while (!utf8.empty()) {
        const size_t before = text.size();
        const char32_t c = TakeUTF8(utf8, kInvalid);
        if (c != kInvalid && !isControl(c) && !IsHighSurrogate(c) && !IsLowSurrogate(c)) AppendUTF8(text, c);
        if (text.size() > room) {
            text.resize(before);
            break;
        }
    }
    return text;
}

std::vector<size_t> boundariesOf(std::string_view text) {
    if (Graphics* const graphics = Graphics::current()) return graphics->characterBoundaries(text);
    std::vector<size_t> boundaries;
    for (size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<uint8_t>(text[i]) & 0xC0U) != 0x80) boundaries.push_back(i);
    }
    boundaries.push_back(text.size());
    return boundaries;
}

CGFloat widthOf(std::string_view text, const UIFont& font) {
    Graphics* const graphics = Graphics::current();
    return graphics && !text.empty() ? graphics->measureText(text, font.face()).width : 0;
}

} // namespace

UITextField::UITextField(const CGRect& frame)
    : UIControl(frame), clip_(std::make_shared<UIView>()), label_(std::make_shared<UILabel>(CGRectZero)),
      underline_(std::make_shared<UIView>()), caretView_(std::make_shared<UIView>()) {
    clip_->setClipsToBounds(true);
    clip_->setUserInteractionEnabled(false);
    underline_->setBackgroundColor(UIColor::blackColor());
    caretView_->setBackgroundColor(ControlColor(kControlTint));
    caretView_->layer()->setCornerRadius(kCaretWidth / 2);
    caretView_->setHidden(true);
    clip_->addSubview(label_);
    clip_->addSubview(underline_);
    clip_->addSubview(caretView_);
    addSubview(clip_);
    setFont(font_);
}

UITextField::~UITextField() = default;

void UITextField::setText(std::string text) {
    text_ = cleaned(text);
    marked_.clear();
    caret_ = text_.size();
    scroll_ = 0;
    showCaret();
}

void UITextField::setPlaceholder(std::string text) {
    placeholder_ = cleaned(text);
    setNeedsLayout();
}

void UITextField::setFont(const UIFont& font) {
    font_ = font;
    label_->setFont(font);
    setNeedsLayout();
}

std::string UITextField::accessibilityLabel() const {
    return text_.empty() ? placeholder_ : text_;
}

void UITextField::beginEditing() {
    if (editing_ || !enabled()) return;
    editing_ = true;
    if (UIWindow* const in = window()) {
        if (UITextField* const other = in->editedField(); other && other != this) other->endEditing();
        in->setEditedField(shared_from_this());
    }
    showCaret();
}

void UITextField::endEditing() {
    if (!editing_) return;
    editing_ = false;
    marked_.clear();
    if (UIWindow* const in = window(); in && in->editedField() == this) in->setEditedField(nullptr);
    showCaret();
}

void UITextField::setEnabled(bool enabled) {
    if (!enabled) endEditing();
    UIControl::setEnabled(enabled);
    setNeedsLayout();
}

void UITextField::insertText(std::string_view utf8) {
    if (!enabled()) return;
    const std::string added = cleaned(utf8, kMostText - text_.size());
    const bool wasMarked = !marked_.empty();
    marked_.clear();
    text_.insert(caret_, added);
    // The new text may join what is behind it to one character.
    caret_ = boundaryAtOrAfter(caret_ + added.size());
    if (!added.empty())
        changed();
    else if (wasMarked)
        showCaret();
}

void UITextField::setMarkedText(std::string_view utf8) {
    if (!enabled()) return;
    marked_ = cleaned(utf8, kMostText - text_.size());
    showCaret();
}

CGRect UITextField::caretRectInWindow() const {
    const_cast<UITextField*>(this)->layoutSubviews(); // a field's place of the caret depends on nothing else
    return clip_->convertRectToView(caretView_->frame(), nullptr);
}

void UITextField::layoutSubviews() {
    const CGRect box = bounds();
    const CGFloat room = std::max(box.size.width - 2 * kPadding, 0.0);
    clip_->setFrame(CGRectMake(box.origin.x + kPadding, box.origin.y, room, box.size.height));

    std::string shown = text_;
    shown.insert(caret_, marked_);
    const bool empty = shown.empty();
    const CGFloat width = widthOf(shown, font_);
    const CGFloat markStart = widthUpTo(caret_);
    const CGFloat caretX =
        marked_.empty() ? markStart : widthOf(shown.substr(0, caret_ + marked_.size()), font_);

    // As little as shows the caret, and no empty room at the right; at rest the text shows from its start.
    const CGFloat visible = std::max(room - kCaretWidth, 0.0);
    scroll_ = std::clamp(scroll_, caretX - visible, std::max(caretX, 0.0));
    scroll_ = std::clamp(scroll_, 0.0, std::max(width - visible, 0.0));
    if (!editing_) scroll_ = 0;

    label_->setText(empty ? placeholder_ : std::move(shown));
    label_->setTextColor(empty       ? ControlColor(kPlaceholderGrey)
                         : enabled() ? UIColor::blackColor()
                                     : UIColor::grayColor());
    // One that is not edited ends in an ellipsis where it is too long.
    const CGFloat labelWidth = editing_ && !empty ? std::max(width + 1, room) : room;
    label_->setFrame(CGRectMake(-scroll_, 0, labelWidth, box.size.height));

    const CGFloat height = std::min(std::round(font_.pointSize() * 1.3), box.size.height);
    caretView_->setFrame(AlignedToPixels(
        *clip_, CGRectMake(caretX - scroll_, (box.size.height - height) / 2, kCaretWidth, height)));
    underline_->setHidden(marked_.empty());
    underline_->setFrame(AlignedToPixels(
        *clip_, CGRectMake(markStart - scroll_, (box.size.height + height) / 2 - 1, caretX - markStart, 1)));
}

void UITextField::touchesEnded(const UITouch& touch) {
    const bool tapped = tracking() && isTouchInside(touch);
    const auto self = weak_from_this().lock();
    if (tapped) {
        beginEditing();
        layoutSubviews();
        placeCaretAt(touch.locationInView(*clip_).x + scroll_);
    }
    UIControl::touchesEnded(touch);
}

// At the boundary nearest to a place in the text, in points from its start.
void UITextField::placeCaretAt(CGFloat x) {
    if (!marked_.empty()) return; // an input method is not done with it
    const std::vector<size_t> boundaries = boundariesOf(text_);
    const auto right = std::partition_point(boundaries.begin(), boundaries.end(),
                                            [&](size_t boundary) { return widthUpTo(boundary) < x; });
    if (right == boundaries.begin())
        caret_ = 0;
    else if (right == boundaries.end())
        caret_ = text_.size();
    else
        caret_ = x - widthUpTo(right[-1]) < widthUpTo(*right) - x ? right[-1] : *right;
    showCaret();
}

void UITextField::setFocused(bool focused) {
    UIControl::setFocused(focused);
    if (focused) beginEditing();
}

bool UITextField::pressKey(UIKey key) {
    if (!editing_) return false;
    switch (key) {
    case UIKey::left:
        caret_ = boundaryBefore(caret_);
        break;
    case UIKey::right:
        caret_ = boundaryAfter(caret_);
        break;
    case UIKey::home:
        caret_ = 0;
        break;
    case UIKey::end:
        caret_ = text_.size();
        break;
    case UIKey::backspace:
        erase(boundaryBefore(caret_), caret_);
        return true;
    case UIKey::forwardDelete:
        erase(caret_, boundaryAfter(caret_));
        return true;
    case UIKey::tab:
    case UIKey::backTab:
    case UIKey::up:
    case UIKey::down:
        // The way round begins here, although a field that a finger chose is not focused.
        if (UIWindow* const in = window(); in && !focused()) in->focusView(this);
        return false;
    default:
        return false;
    }
    showCaret();
    return true;
}

void UITextField::erase(size_t from, size_t to) {
    if (from == to) return;
    text_.erase(from, to - from);
    caret_ = boundaryAtOrAfter(from);
    changed();
}

void UITextField::changed() {
    showCaret();
    sendActionsForControlEvents(UIControlEventEditingChanged);
}

// The caret is solid for a moment after every change, then blinks. One job at a time waits, and only while
// the field is edited in a window.
void UITextField::showCaret() {
    setNeedsLayout();
    caretView_->setHidden(!editing_);
    solidUntil_ = MainQueue::main().clock().nanoseconds() + kBlink;
    if (!editing_ || blinkWaits_ || !window()) return;
    blinkWaits_ = true;
    blinkAt(solidUntil_);
}

void UITextField::blinkAt(int64_t nanoseconds) {
    dispatch_after(nanoseconds, dispatch_get_main_queue(), [field = weak_from_this()] {
        if (const auto self = field.lock()) static_cast<UITextField&>(*self).blink();
    });
}

void UITextField::blink() {
    if (!editing_ || !window()) {
        blinkWaits_ = false;
        return;
    }
    const int64_t now = MainQueue::main().clock().nanoseconds();
    if (now < solidUntil_) return blinkAt(solidUntil_);
    caretView_->setHidden(!caretView_->hidden());
    blinkAt(now + kBlink);
}

size_t UITextField::boundaryBefore(size_t offset) const {
    const std::vector<size_t> boundaries = boundariesOf(text_);
    const auto place = std::lower_bound(boundaries.begin(), boundaries.end(), offset);
    return place == boundaries.begin() ? 0 : place[-1];
}

size_t UITextField::boundaryAfter(size_t offset) const {
    return boundaryAtOrAfter(offset + 1);
}

size_t UITextField::boundaryAtOrAfter(size_t offset) const {
    const std::vector<size_t> boundaries = boundariesOf(text_);
    const auto place = std::lower_bound(boundaries.begin(), boundaries.end(), offset);
    return place == boundaries.end() ? text_.size() : *place;
}

CGFloat UITextField::widthUpTo(size_t offset) const {
    return widthOf(std::string_view(text_).substr(0, offset), font_);
}

} // namespace tallyforge
