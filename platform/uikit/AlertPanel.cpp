#include "uikit/AlertPanel.h"

#include "quartzcore/CAAnimation.h"
#include "quartzcore/TextLayout.h"
#include "uikit/ControlDrawing.h"
#include "uikit/UILabel.h"
#include "uikit/UIScrollView.h"
#include "uikit/UITextField.h"
#include "uikit/UIViewAnimation.h"
#include "uikit/UIWindow.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kWidth = 270;
constexpr CGFloat kRadius = 13;
constexpr CGFloat kSide = 16; // beside texts, field and button titles
constexpr CGFloat kTop = 19;
constexpr CGFloat kBottom = 19;
constexpr CGFloat kTitleToMessage = 4;
constexpr CGFloat kToField = 14;
constexpr CGFloat kFieldHeight = 26;
constexpr CGFloat kToAccessory = 4;
constexpr CGFloat kBelowAccessory = 8;
constexpr CGFloat kButtonHeight = 44;
constexpr CGFloat kWindowMargin = 24; // least distance from the window's top and bottom
constexpr size_t kMostText = 2000;    // bytes that are shown
constexpr CGFloat kTitleSize = 17, kMessageSize = 13, kButtonSize = 17, kLeastButtonSize = 12;
constexpr double kAppearTime = 0.25; // seconds
constexpr uint32_t kRed = 0xFF3B30, kPaper = 0xF9F9F9, kLineGrey = 0xC4C4C8, kFieldBorder = 0xA9A9AE;

// Never destroyed: what is on screen when the program ends need not be taken apart in order.
std::vector<std::shared_ptr<AlertPanel>>& shownPanels() {
    static auto* const panels = new std::vector<std::shared_ptr<AlertPanel>>;
    return *panels;
}

CGFloat widthOf(const std::string& text, const UIFont& font) {
    return NSStringBoundingSize(text, {1e6, 1e6}, font).width;
}

CGFloat heightOf(const std::string& text, const UIFont& font, CGFloat width) {
    const auto lines = CALayOutText(text, font.face(), {width, 1e5}, true);
    return std::ceil(lines->lineHeight * static_cast<CGFloat>(lines->lines.size()));
}

std::string shownText(const std::string& text) {
    if (text.size() <= kMostText) return text;
    size_t end = kMostText;
    while (end > 0 && (static_cast<uint8_t>(text[end]) & 0xC0U) == 0x80)
        --end;
    return text.substr(0, end) + "\u2026";
}

std::shared_ptr<UILabel> centredLabel(const std::string& text, const UIFont& font) {
    auto label = std::make_shared<UILabel>(CGRectZero);
    label->setText(text);
    label->setFont(font);
    label->setTextAlignment(NSTextAlignmentCenter);
    label->setNumberOfLines(0);
    label->setUserInteractionEnabled(false);
    return label;
}

class AlertButton final : public UIControl {
  public:
    explicit AlertButton(const AlertPanel::Button& button)
        : UIControl(CGRectZero), font_(button.bold ? UIFont::semiboldSystemFontOfSize(kButtonSize)
                                                   : UIFont::systemFontOfSize(kButtonSize)),
          label_(centredLabel(button.title, font_)) {
        label_->setNumberOfLines(1);
        label_->setTextColor(ControlColor(button.destructive ? kRed : kControlTint));
        addSubview(label_);
    }

    const char* className() const override { return "AlertButton"; }
    std::string accessibilityLabel() const override { return label_->text(); }
    const UIFont& font() const { return font_; }

    void setHighlighted(bool highlighted) override {
        UIControl::setHighlighted(highlighted);
        setBackgroundColor(highlighted ? std::optional(UIColor::colorWithWhite(0, 0.1)) : std::nullopt);
    }

    void layoutSubviews() override {
        const CGFloat room = std::max(bounds().size.width - kSide, 1.0);
        const CGFloat width = widthOf(label_->text(), font_);
        const CGFloat size =
            width > room ? std::max(std::floor(kButtonSize * room / width), kLeastButtonSize) : kButtonSize;
        const bool bold = font_ == UIFont::semiboldSystemFontOfSize(kButtonSize);
        label_->setFont(bold ? UIFont::semiboldSystemFontOfSize(size) : UIFont::systemFontOfSize(size));
        label_->setFrame(CGRectInset(bounds(), kSide / 2, 0));
    }

    bool pressKey(UIKey key) override {
        if (key != UIKey::space && key != UIKey::enter) return false;
        sendActionsForControlEvents(UIControlEventTouchUpInside);
        return true;
    }

  private:
    UIFont font_;
    std::shared_ptr<UILabel> label_;
};

} // namespace

std::shared_ptr<AlertPanel> FrontAlertPanel() {
    return shownPanels().empty() ? nullptr : shownPanels().back();
}

AlertPanel::AlertPanel(Contents contents, std::function<void(int)> pressed)
    : UIView(CGRectZero), contents_(std::move(contents)), pressed_(std::move(pressed)),
      panel_(std::make_shared<UIView>()), texts_(std::make_shared<UIScrollView>(CGRectZero)),
      title_(centredLabel(shownText(contents_.title), UIFont::semiboldSystemFontOfSize(kTitleSize))),
      message_(centredLabel(shownText(contents_.message), UIFont::systemFontOfSize(kMessageSize))),
      buttonArea_(std::make_shared<UIScrollView>(CGRectZero)) {
    setBackgroundColor(UIColor::colorWithWhite(0, 0.4));
    panel_->setBackgroundColor(ControlColor(kPaper));
    panel_->layer()->setCornerRadius(kRadius);
    panel_->setClipsToBounds(true);
    addSubview(panel_);
    texts_->addSubview(title_);
    texts_->addSubview(message_);
    panel_->addSubview(texts_);
    if (contents_.textField) {
        textField_ = std::make_shared<UITextField>(CGRectMake(0, 0, kWidth - 2 * kSide, kFieldHeight));
        textField_->setBackgroundColor(UIColor::whiteColor());
        textField_->layer()->setBorderColor(ControlColor(kFieldBorder).cgColor());
        panel_->addSubview(textField_);
    }
    if (contents_.accessory) panel_->addSubview(contents_.accessory);
    panel_->addSubview(buttonArea_);
    for (size_t i = 0; i < contents_.buttons.size(); ++i) {
        auto button = std::make_shared<AlertButton>(contents_.buttons[i]);
        button->addTargetForControlEvents([this, i](UIControl&) { press(static_cast<int>(i)); },
                                          UIControlEventTouchUpInside);
        buttons_.push_back(button);
        buttonArea_->addSubview(button);
        lines_.push_back(std::make_shared<UIView>());
        lines_.back()->setBackgroundColor(ControlColor(kLineGrey));
        lines_.back()->setUserInteractionEnabled(false);
    }
    for (const auto& line : lines_)
        buttonArea_->addSubview(line);
}

UIControl* AlertPanel::button(size_t index) const {
    return index < buttons_.size() ? buttons_[index].get() : nullptr;
}

bool AlertPanel::present() {
    const auto self = std::static_pointer_cast<AlertPanel>(shared_from_this());
    shownPanels().push_back(self);
    UIWindow* const window = UIWindow::keyWindow();
    if (!window) return false;
    if (UITextField* const field = window->editedField()) field->endEditing();
    window->presentOverlay(self);
    layoutIfNeeded();
    if (textField_) textField_->beginEditing();
    appear();
    return true;
}

// It fades in while it shrinks to its place.
void AlertPanel::appear() {
    if (!UIViewAnimationsEnabled()) return;
    const auto run = [](CALayer& layer, const char* keyPath, CGFloat from, CGFloat to) {
        const auto animation = CABasicAnimation::animationWithKeyPath(keyPath);
        animation->setFromValue(from);
        animation->setToValue(to);
        animation->setDuration(kAppearTime);
        animation->setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseOut));
        layer.addAnimation(*animation, keyPath);
    };
    run(*layer(), "opacity", 0, 1);
    run(*panel_->layer(), "transform.scale", 1.2, 1);
}

void AlertPanel::press(int index) {
    if (index >= 0 && static_cast<size_t>(index) < buttons_.size()) finish(index);
}

void AlertPanel::finish(int index) {
    if (done_) return;
    done_ = true;
    const auto self = weak_from_this().lock(); // the window lets go of it
    if (textField_) textField_->endEditing();
    std::erase_if(shownPanels(), [this](const auto& panel) { return panel.get() == this; });
    if (UIWindow* const in = window()) in->dismissOverlay(*this);
    if (pressed_) pressed_(index);
}

int AlertPanel::defaultButton() const {
    for (size_t i = 0; i < contents_.buttons.size(); ++i) {
        if (contents_.buttons[i].bold) return static_cast<int>(i);
    }
    return static_cast<int>(contents_.buttons.size()) - 1;
}

int AlertPanel::cancelButton() const {
    for (size_t i = 0; i < contents_.buttons.size(); ++i) {
        if (contents_.buttons[i].cancels) return static_cast<int>(i);
    }
    return contents_.buttons.size() == 1 ? 0 : -1;
}

bool AlertPanel::pressKey(UIKey key) {
    switch (key) {
    case UIKey::enter:
        contents_.buttons.empty() ? finish(-1) : press(defaultButton());
        return true;
    case UIKey::escape:
        contents_.buttons.empty() ? finish(-1) : press(cancelButton());
        return true;
    case UIKey::up:
    case UIKey::down:
    case UIKey::home:
    case UIKey::end:
        return contents_.accessory && contents_.accessory->pressKey(key);
    case UIKey::pageUp:
    case UIKey::pageDown:
        if (contents_.accessory && contents_.accessory->pressKey(key)) return true;
        texts_->scrollBy(texts_->bounds().size.height * (key == UIKey::pageDown ? 0.8 : -0.8));
        return true;
    default:
        return false;
    }
}

bool AlertPanel::buttonsFitSideBySide() const {
    return buttons_.size() == 2 && std::all_of(buttons_.begin(), buttons_.end(), [](const auto& button) {
               const auto& font = static_cast<const AlertButton&>(*button).font();
               return widthOf(button->accessibilityLabel(), font) <= kWidth / 2 - kSide;
           });
}

CGFloat AlertPanel::buttonsHeight() const {
    return kButtonHeight * (buttonsFitSideBySide() ? 1 : static_cast<CGFloat>(buttons_.size()));
}

// Title and message one below the other; returns how much height they take.
CGFloat AlertPanel::placeTexts() {
    const CGFloat width = kWidth - 2 * kSide;
    CGFloat y = kTop;
    for (const auto& label : {title_, message_}) {
        const CGFloat height = heightOf(label->text(), label->font(), width);
        if (height > 0 && y > kTop) y += kTitleToMessage;
        label->setFrame(CGRectMake(kSide, y, width, height));
        y += height;
    }
    return y;
}

void AlertPanel::layoutSubviews() {
    const CGFloat hairline = HairlineWidth();
    const bool onlyTexts = !textField_ && !contents_.accessory;
    const CGFloat textsHeight = placeTexts() + (onlyTexts ? kBottom : 0);
    const CGSize accessory = contents_.accessory ? contents_.accessory->frame().size : CGSizeZero;
    CGFloat between = onlyTexts ? 0 : contents_.accessory ? kBelowAccessory : kBottom;
    if (textField_) between += kToField + kFieldHeight;
    if (contents_.accessory) between += kToAccessory + accessory.height;

    // What is too high for the window scrolls: the buttons keep half of the room, the texts get the rest.
    const CGFloat room = std::max(bounds().size.height - 2 * kWindowMargin - between, 2 * kButtonHeight);
    const CGFloat buttons = std::min(buttonsHeight(), std::max(room - textsHeight, room / 2));
    const CGFloat texts = std::min(textsHeight, room - buttons);
    const CGFloat height = texts + between + buttons;
    panel_->setFrame(AlignedToPixels(*this, CGRectMake((bounds().size.width - kWidth) / 2,
                                                       (bounds().size.height - height) / 2, kWidth, height)));

    texts_->setFrame(CGRectMake(0, 0, kWidth, texts));
    texts_->setContentSize({kWidth, textsHeight});
    texts_->setScrollEnabled(textsHeight > texts);
    CGFloat y = texts;
    if (textField_) {
        y += kToField;
        textField_->layer()->setBorderWidth(hairline);
        textField_->setFrame(
            AlignedToPixels(*panel_, CGRectMake(kSide, y, kWidth - 2 * kSide, kFieldHeight)));
        y += kFieldHeight;
    }
    if (contents_.accessory) {
        y += kToAccessory;
        contents_.accessory->setFrame(
            CGRectMake(std::round((kWidth - accessory.width) / 2), y, accessory.width, accessory.height));
    }
    placeButtons(height - buttons, buttons);
}

void AlertPanel::placeButtons(CGFloat top, CGFloat height) {
    buttonArea_->setFrame(CGRectMake(0, top, kWidth, height));
    buttonArea_->setContentSize({kWidth, buttonsHeight()});
    buttonArea_->setScrollEnabled(buttonsHeight() > height);
    const CGFloat hairline = HairlineWidth();
    const bool beside = buttonsFitSideBySide();
    // The cancelling button stands at the left of two, and below all others.
    std::vector<size_t> order;
    for (const bool cancelling : {beside, !beside}) {
        for (size_t i = 0; i < buttons_.size(); ++i) {
            if (contents_.buttons[i].cancels == cancelling) order.push_back(i);
        }
    }
    for (size_t place = 0; place < order.size(); ++place) {
        const auto at = static_cast<CGFloat>(place);
        UIView& line = *lines_[place];
        if (beside) {
            buttons_[order[place]]->setFrame(CGRectMake(at * kWidth / 2, 0, kWidth / 2, kButtonHeight));
            line.setFrame(AlignedToPixels(*buttonArea_,
                                          place == 0 ? CGRectMake(0, 0, kWidth, hairline)
                                                     : CGRectMake(kWidth / 2, 0, hairline, kButtonHeight)));
        } else {
            buttons_[order[place]]->setFrame(CGRectMake(0, at * kButtonHeight, kWidth, kButtonHeight));
            line.setFrame(AlignedToPixels(*buttonArea_, CGRectMake(0, at * kButtonHeight, kWidth, hairline)));
        }
    }
}

} // namespace tallyforge
